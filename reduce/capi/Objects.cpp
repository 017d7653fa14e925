// The flat interface over the object array and its source info, frame info
// and object parameters. Each function forwards to the class; an empty
// handle reads as zero so that a C caller's slip is no crash.
#include <cstdlib>

#include "orv/DateTime.h"
#include "orv/Types.h"
#include "reduce/capi/Handles.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectArray.h"
#include "reduce/store/ReduceObjectFactory.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::priv;

namespace orv::reduce::priv {
template <>
struct SHandleOf<orvreduceReduceObjects> {
    using Object = CReduceObjectArray;
};
template <>
struct SHandleOf<orvreduceSourceInfo> {
    using Object = CSourceInfoReduceObject;
};
template <>
struct SHandleOf<orvreduceFrameInfo> {
    using Object = CFrameInfoReduceObject;
};
template <>
struct SHandleOf<orvreduceObjectParameters> {
    using Object = CObjectParametersReduceObject;
};
} // namespace orv::reduce::priv

// The C twins of the value types must match them field for field.
#define ORV_SAME_FIELD(C, Cpp, field) static_assert(offsetof(C, field) == offsetof(Cpp, field), #field)
static_assert(sizeof(orvSGuid) == sizeof(SGuid));
ORV_SAME_FIELD(orvSGuid, SGuid, Data1);
ORV_SAME_FIELD(orvSGuid, SGuid, Data2);
ORV_SAME_FIELD(orvSGuid, SGuid, Data3);
ORV_SAME_FIELD(orvSGuid, SGuid, Data4);
static_assert(sizeof(orvSPoint) == sizeof(SPoint));
ORV_SAME_FIELD(orvSPoint, SPoint, x);
ORV_SAME_FIELD(orvSPoint, SPoint, y);
static_assert(sizeof(orvSRect) == sizeof(SRect));
ORV_SAME_FIELD(orvSRect, SRect, left);
ORV_SAME_FIELD(orvSRect, SRect, top);
ORV_SAME_FIELD(orvSRect, SRect, right);
ORV_SAME_FIELD(orvSRect, SRect, bottom);
static_assert(sizeof(orvSDateTime) == sizeof(SDateTime));
ORV_SAME_FIELD(orvSDateTime, SDateTime, year);
ORV_SAME_FIELD(orvSDateTime, SDateTime, month);
ORV_SAME_FIELD(orvSDateTime, SDateTime, day);
ORV_SAME_FIELD(orvSDateTime, SDateTime, hour);
ORV_SAME_FIELD(orvSDateTime, SDateTime, minute);
ORV_SAME_FIELD(orvSDateTime, SDateTime, second);
ORV_SAME_FIELD(orvSDateTime, SDateTime, ticks);
ORV_SAME_FIELD(orvSDateTime, SDateTime, dayOfYear);
ORV_SAME_FIELD(orvSDateTime, SDateTime, dayOfWeek);

namespace {

template <class T>
TSharedPtr<T> CreateObject()
{
    return reduceObjectFactory().CreateByTypeID(T::typeID).template DynamicCast<T>();
}

// A preset's field; presets past the eighth read as zero.
template <class Field>
Field ReadPreset(const orvreduceSourceInfo* handle, uint8_t preset, Field SPresetInfo::*field)
{
    const CSourceInfoReduceObject* info = Shared(handle);
    return info && preset < sourceInfoRecord::kMaxPresets ? info->presets[preset].*field : Field{};
}

// Frame info queries by name and by index.
char* FrameInfoText(const orvreduceFrameInfo* handle, const char* name, CString (CFrameInfoReduceObject::*get)(const CString&))
{
    CFrameInfoReduceObject* info = Shared(handle);
    return info ? Copy((info->*get)(CString(name))) : nullptr;
}
char* FrameInfoTextAt(const orvreduceFrameInfo* handle, unsigned int index,
                      CString (CFrameInfoReduceObject::*get)(unsigned int))
{
    CFrameInfoReduceObject* info = Shared(handle);
    return info ? Copy((info->*get)(index)) : nullptr;
}

} // namespace

extern "C" {

// ---- ReduceObjects

orvreduceReduceObjects* orvreduceReduceObjects_Alloc(void)
{
    return reinterpret_cast<orvreduceReduceObjects*>(new CReduceObjectArray);
}
void orvreduceReduceObjects_Free(orvreduceReduceObjects* array) { delete Direct(array); }
bool orvreduceReduceObjects_Load(orvreduceReduceObjects* array, const char* path)
{
    return array && path && LoadInfoFile(CString(path), *Direct(array));
}
orvreduceSourceInfo* orvreduceReduceObjects_GetSourceInfo(orvreduceReduceObjects* array, bool create)
{
    return array ? NewShared<orvreduceSourceInfo>(Direct(array)->GetSourceInfo(create)) : nullptr;
}
orvreduceFrameInfo* orvreduceReduceObjects_GetFrameInfo(orvreduceReduceObjects* array, unsigned char preset,
                                                        bool create)
{
    return array ? NewShared<orvreduceFrameInfo>(Direct(array)->GetFrameInfo(preset, create)) : nullptr;
}
orvreduceObjectParameters* orvreduceReduceObjects_GetObjectParameters(orvreduceReduceObjects* array, bool create)
{
    return array ? NewShared<orvreduceObjectParameters>(Direct(array)->GetObjectParameters(create)) : nullptr;
}

// ---- SourceInfo

orvreduceSourceInfo* orvreduceSourceInfo_Alloc(void)
{
    return NewSharedAlways<orvreduceSourceInfo>(CreateObject<CSourceInfoReduceObject>());
}
void orvreduceSourceInfo_Free(orvreduceSourceInfo* handle) { FreeShared(handle); }

int32_t orvreduceSourceInfo_adBits(const orvreduceSourceInfo* h) { return Read(h, &CSourceInfoReduceObject::adBits); }
char* orvreduceSourceInfo_camera(const orvreduceSourceInfo* h) { return ReadText(h, &CSourceInfoReduceObject::camera); }
bool orvreduceSourceInfo_presetSequencing(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::presetSequencing);
}
bool orvreduceSourceInfo_superframing(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::superframing);
}
bool orvreduceSourceInfo_abated(const orvreduceSourceInfo* h) { return Read(h, &CSourceInfoReduceObject::abated); }
uint8_t orvreduceSourceInfo_numPresets(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::numPresets);
}
bool orvreduceSourceInfo_presetAvailable(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::available);
}
double orvreduceSourceInfo_presetIntTime(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::intTime);
}
bool orvreduceSourceInfo_presetIntTimeValid(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::intTimeValid);
}
float orvreduceSourceInfo_presetFrameRate(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::frameRate);
}
bool orvreduceSourceInfo_presetFrameRateValid(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::frameRateValid);
}
uint32_t orvreduceSourceInfo_presetNumFrames(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::numFrames);
}
bool orvreduceSourceInfo_presetCalibrated(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::calibrated);
}
double orvreduceSourceInfo_presetMinTemp(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::minTemp);
}
double orvreduceSourceInfo_presetMaxTemp(const orvreduceSourceInfo* h, uint8_t p)
{
    return ReadPreset(h, p, &SPresetInfo::maxTemp);
}
int32_t orvreduceSourceInfo_dataType(const orvreduceSourceInfo* h)
{
    const CSourceInfoReduceObject* info = Shared(h);
    return info ? info->dataType : 0;
}
uint16_t orvreduceSourceInfo_imageWidth(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::imageWidth);
}
uint16_t orvreduceSourceInfo_imageHeight(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::imageHeight);
}
orvSRect orvreduceSourceInfo_offset(const orvreduceSourceInfo* h)
{
    return ToC<orvSRect>(Read(h, &CSourceInfoReduceObject::offset));
}
bool orvreduceSourceInfo_interlaced(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::interlaced);
}
orvSGuid orvreduceSourceInfo_pixelType(const orvreduceSourceInfo* h)
{
    return ToC<orvSGuid>(Read(h, &CSourceInfoReduceObject::pixelType));
}
int32_t orvreduceSourceInfo_adBitShift(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::adBitShift);
}
int32_t orvreduceSourceInfo_baseUnit(const orvreduceSourceInfo* h)
{
    const CSourceInfoReduceObject* info = Shared(h);
    return info ? info->baseUnit : 0;
}
int32_t orvreduceSourceInfo_baseTempType(const orvreduceSourceInfo* h)
{
    const CSourceInfoReduceObject* info = Shared(h);
    return info ? info->baseTempType : 0;
}
uint16_t orvreduceSourceInfo_frameWidth(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::frameWidth);
}
uint16_t orvreduceSourceInfo_frameHeight(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::frameHeight);
}
uint16_t orvreduceSourceInfo_packetWidth(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::packetWidth);
}
uint16_t orvreduceSourceInfo_packetHeight(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::packetHeight);
}
uint16_t orvreduceSourceInfo_numFramesPerPacket(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::numFramesPerPacket);
}
orvSDateTime orvreduceSourceInfo_time(const orvreduceSourceInfo* h)
{
    const CSourceInfoReduceObject* info = Shared(h);
    return info ? ToC<orvSDateTime>(info->time.ToStruct()) : orvSDateTime{};
}
bool orvreduceSourceInfo_timeValid(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::timeValid);
}
char* orvreduceSourceInfo_cameraModel(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::cameraModel);
}
char* orvreduceSourceInfo_cameraPartNumber(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::cameraPartNumber);
}
char* orvreduceSourceInfo_cameraSerial(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::cameraSerial);
}
char* orvreduceSourceInfo_lens(const orvreduceSourceInfo* h) { return ReadText(h, &CSourceInfoReduceObject::lens); }
char* orvreduceSourceInfo_lensPartNumber(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::lensPartNumber);
}
char* orvreduceSourceInfo_lensSerial(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::lensSerial);
}
char* orvreduceSourceInfo_filter(const orvreduceSourceInfo* h) { return ReadText(h, &CSourceInfoReduceObject::filter); }
char* orvreduceSourceInfo_filterPartNumber(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::filterPartNumber);
}
char* orvreduceSourceInfo_filterSerial(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::filterSerial);
}
char* orvreduceSourceInfo_lensFilter(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::lensFilter);
}
char* orvreduceSourceInfo_lensFilterPartNumber(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::lensFilterPartNumber);
}
char* orvreduceSourceInfo_lensFilterSerial(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::lensFilterSerial);
}
char* orvreduceSourceInfo_classifacation(const orvreduceSourceInfo* h)
{
    return ReadText(h, &CSourceInfoReduceObject::classifacation);
}
double orvreduceSourceInfo_bandpassStart(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::bandpassStart);
}
double orvreduceSourceInfo_bandpassEnd(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::bandpassEnd);
}
bool orvreduceSourceInfo_bandpassValid(const orvreduceSourceInfo* h)
{
    return Read(h, &CSourceInfoReduceObject::bandpassValid);
}
double orvreduceSourceInfo_iHFov(const orvreduceSourceInfo* h) { return Read(h, &CSourceInfoReduceObject::iHFov); }
double orvreduceSourceInfo_iVFov(const orvreduceSourceInfo* h) { return Read(h, &CSourceInfoReduceObject::iVFov); }
bool orvreduceSourceInfo_fovValid(const orvreduceSourceInfo* h) { return Read(h, &CSourceInfoReduceObject::fovValid); }

// ---- FrameInfo

orvreduceFrameInfo* orvreduceFrameInfo_Alloc(void)
{
    return NewSharedAlways<orvreduceFrameInfo>(CreateObject<CFrameInfoReduceObject>());
}
void orvreduceFrameInfo_Free(orvreduceFrameInfo* handle) { FreeShared(handle); }

orvSDateTime orvreduceFrameInfo_time(const orvreduceFrameInfo* h)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? ToC<orvSDateTime>(info->time.ToStruct()) : orvSDateTime{};
}
uint64_t orvreduceFrameInfo_frame(const orvreduceFrameInfo* h)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? info->frame : 0;
}
uint8_t orvreduceFrameInfo_preset(const orvreduceFrameInfo* h)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? info->preset : 0;
}
int32_t orvreduceFrameInfo_timeSource(const orvreduceFrameInfo* h)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? info->timeSource : 0;
}
unsigned int orvreduceFrameInfo_numEntries(const orvreduceFrameInfo* h)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? info->NumEntries() : 0;
}
unsigned int orvreduceFrameInfo_GetIndex(const orvreduceFrameInfo* h, const char* name)
{
    const CFrameInfoReduceObject* info = Shared(h);
    return info ? info->GetIndex(CString(name)) : ~0u;
}
char* orvreduceFrameInfo_GetNameAt(const orvreduceFrameInfo* h, unsigned int index)
{
    return FrameInfoTextAt(h, index, &CFrameInfoReduceObject::GetNameAt);
}
char* orvreduceFrameInfo_GetValue(const orvreduceFrameInfo* h, const char* name)
{
    return FrameInfoText(h, name, &CFrameInfoReduceObject::GetValue);
}
char* orvreduceFrameInfo_GetValueAt(const orvreduceFrameInfo* h, unsigned int index)
{
    return FrameInfoTextAt(h, index, &CFrameInfoReduceObject::GetValueAt);
}
char* orvreduceFrameInfo_GetUnit(const orvreduceFrameInfo* h, const char* name)
{
    return FrameInfoText(h, name, &CFrameInfoReduceObject::GetUnit);
}
char* orvreduceFrameInfo_GetUnitAt(const orvreduceFrameInfo* h, unsigned int index)
{
    return FrameInfoTextAt(h, index, &CFrameInfoReduceObject::GetUnitAt);
}
char* orvreduceFrameInfo_GetType(const orvreduceFrameInfo* h, const char* name)
{
    return FrameInfoText(h, name, &CFrameInfoReduceObject::GetType);
}
char* orvreduceFrameInfo_GetTypeAt(const orvreduceFrameInfo* h, unsigned int index)
{
    return FrameInfoTextAt(h, index, &CFrameInfoReduceObject::GetTypeAt);
}

// ---- ObjectParameters: setters store as given, unlike the region's.

orvreduceObjectParameters* orvreduceObjectParameters_Alloc(void)
{
    return NewSharedAlways<orvreduceObjectParameters>(CreateObject<CObjectParametersReduceObject>());
}
void orvreduceObjectParameters_Free(orvreduceObjectParameters* handle) { FreeShared(handle); }

using CObjectParameters = CObjectParametersReduceObject;
bool orvreduceObjectParameters_source(const orvreduceObjectParameters* h) { return Read(h, &CObjectParameters::source); }
float orvreduceObjectParameters_emissivity(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::emissivity);
}
void orvreduceObjectParameters_setEmissivity(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::emissivity, v);
}
float orvreduceObjectParameters_distance(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::distance);
}
void orvreduceObjectParameters_setDistance(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::distance, v);
}
float orvreduceObjectParameters_reflectedTemp(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::reflectedTemp);
}
void orvreduceObjectParameters_setReflectedTemp(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::reflectedTemp, v);
}
float orvreduceObjectParameters_atmosphereTemp(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::atmosphereTemp);
}
void orvreduceObjectParameters_setAtmosphereTemp(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::atmosphereTemp, v);
}
float orvreduceObjectParameters_extOpticsTemp(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::extOpticsTemp);
}
void orvreduceObjectParameters_setExtOpticsTemp(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::extOpticsTemp, v);
}
float orvreduceObjectParameters_extOpticsTransmission(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::extOpticsTransmission);
}
void orvreduceObjectParameters_setExtOpticsTransmission(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::extOpticsTransmission, v);
}
float orvreduceObjectParameters_estAtmosphericTransmission(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::estAtmosphericTransmission);
}
void orvreduceObjectParameters_setEstAtmosphericTransmission(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::estAtmosphericTransmission, v);
}
float orvreduceObjectParameters_atmosphericTransmission(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::atmosphericTransmission);
}
float orvreduceObjectParameters_relativeHumidity(const orvreduceObjectParameters* h)
{
    return Read(h, &CObjectParameters::relativeHumidity);
}
void orvreduceObjectParameters_setRelativeHumidity(orvreduceObjectParameters* h, float v)
{
    Write(h, &CObjectParameters::relativeHumidity, v);
}

} // extern "C"
