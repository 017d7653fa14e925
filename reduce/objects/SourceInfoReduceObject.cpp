#include "reduce/objects/SourceInfoReduceObject.h"

#include <cstring>

#include "orv/PixelType.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = sourceInfoRecord;

namespace {

constexpr uint32_t kVersion = 0x20000;
constexpr uint32_t kFirstPackedVersion = 0x10001;

void PresetFromRecord(const unsigned char* p, SPresetInfo& preset)
{
    namespace f = rec::preset;
    preset.available = GetRecordBool(p, f::available);
    preset.intTime = GetRecordValue<double>(p, f::intTime);
    preset.intTimeValid = GetRecordBool(p, f::intTimeValid);
    preset.frameRate = GetRecordValue<float>(p, f::frameRate);
    preset.frameRateValid = GetRecordBool(p, f::frameRateValid);
    preset.numFrames = GetRecordValue<uint32_t>(p, f::numFrames);
    preset.calibrated = GetRecordBool(p, f::calibrated);
    preset.minTemp = GetRecordValue<double>(p, f::minTemp);
    preset.maxTemp = GetRecordValue<double>(p, f::maxTemp);
}

void PresetToRecord(unsigned char* p, const SPresetInfo& preset)
{
    namespace f = rec::preset;
    PutRecordBool(p, f::available, preset.available);
    PutRecordValue<double>(p, f::intTime, preset.intTime);
    PutRecordBool(p, f::intTimeValid, preset.intTimeValid);
    PutRecordValue<float>(p, f::frameRate, preset.frameRate);
    PutRecordBool(p, f::frameRateValid, preset.frameRateValid);
    PutRecordValue<uint32_t>(p, f::numFrames, preset.numFrames);
    PutRecordBool(p, f::calibrated, preset.calibrated);
    PutRecordValue<double>(p, f::minTemp, preset.minTemp);
    PutRecordValue<double>(p, f::maxTemp, preset.maxTemp);
}

bool LoadPresetStream(IFile& file, SPresetInfo& preset)
{
    return file.GetBool(preset.available) && file.GetFlt64(preset.intTime) && file.GetBool(preset.intTimeValid) &&
           file.GetFlt32(preset.frameRate) && file.GetBool(preset.frameRateValid) &&
           file.GetUInt32(preset.numFrames) && file.GetBool(preset.calibrated) && file.GetFlt64(preset.minTemp) &&
           file.GetFlt64(preset.maxTemp);
}

} // namespace

bool CSourceInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<CSourceInfoReduceObject>(kName, typeID);
}

CSourceInfoReduceObject::CSourceInfoReduceObject()
{
    valid = true;
    version = kVersion;
    presets[0].available = true;
}

TSharedPtr<IReduceObject> CSourceInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CSourceInfoReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    // Everything, gps and the spare flag included; the version stays the new object's.
    const uint32_t ownVersion = target->version;
    *target = *this;
    target->version = ownVersion;
    return copy;
}

void CSourceInfoReduceObject::Default()
{
    valid = true;
    adBits = 16;
    camera = "Unknown Camera";
    presetSequencing = false;
    superframing = false;
    abated = false;
    numPresets = 4;
    for (SPresetInfo& preset : presets) preset = SPresetInfo();
    presets[0].available = true;
    dataType = dtUInt16;
    imageWidth = 0;
    imageHeight = 0;
    // offset, interlaced and pixelType keep their state: they describe the
    // source rather than a default recording.
    adBitShift = 0;
    baseUnit = unitCounts;
    baseTempType = tempCelsius;
    frameWidth = frameHeight = packetWidth = packetHeight = numFramesPerPacket = 0;
    time = CDateTime::Now();
    timeValid = false;
    for (CString* text : {&cameraModel, &cameraPartNumber, &cameraSerial, &lens, &lensPartNumber, &lensSerial,
                          &filter, &filterPartNumber, &filterSerial, &lensFilter, &lensFilterPartNumber,
                          &lensFilterSerial, &classifacation})
        *text = "";
    bandpassStart = bandpassEnd = 0;
    bandpassValid = false;
    iHFov = iVFov = 0;
    fovValid = false;
    gps.invalidate();
}

void CSourceInfoReduceObject::FromRecord(const unsigned char* r)
{
    adBits = GetRecordValue<int32_t>(r, rec::adBits);
    camera = GetRecordString(r, rec::camera);
    presetSequencing = GetRecordBool(r, rec::presetSequencing);
    superframing = GetRecordBool(r, rec::superframing);
    abated = GetRecordBool(r, rec::abated);
    dataType = static_cast<EDataType>(GetRecordValue<uint8_t>(r, rec::dataType));
    imageWidth = GetRecordValue<uint16_t>(r, rec::imageWidth);
    imageHeight = GetRecordValue<uint16_t>(r, rec::imageHeight);
    int32_t rect[4];
    std::memcpy(rect, r + rec::offset.offset, sizeof rect);
    offset = SRect(rect[0], rect[1], rect[2], rect[3]);
    interlaced = GetRecordBool(r, rec::interlaced);
    std::memcpy(&pixelType, r + rec::pixelType.offset, sizeof pixelType);
    adBitShift = GetRecordValue<int32_t>(r, rec::adBitShift);
    baseUnit = static_cast<EUnit>(GetRecordValue<uint8_t>(r, rec::baseUnit));
    baseTempType = static_cast<ETempType>(GetRecordValue<uint8_t>(r, rec::baseTempType));
    frameWidth = GetRecordValue<uint16_t>(r, rec::frameWidth);
    frameHeight = GetRecordValue<uint16_t>(r, rec::frameHeight);
    packetWidth = GetRecordValue<uint16_t>(r, rec::packetWidth);
    packetHeight = GetRecordValue<uint16_t>(r, rec::packetHeight);
    numFramesPerPacket = GetRecordValue<uint16_t>(r, rec::numFramesPerPacket);
    time.SetTimestamp(GetRecordValue<int64_t>(r, rec::time), 0);
    timeValid = GetRecordBool(r, rec::timeValid);
    cameraModel = GetRecordString(r, rec::cameraModel);
    cameraPartNumber = GetRecordString(r, rec::cameraPartNumber);
    cameraSerial = GetRecordString(r, rec::cameraSerial);
    lens = GetRecordString(r, rec::lens);
    lensPartNumber = GetRecordString(r, rec::lensPartNumber);
    lensSerial = GetRecordString(r, rec::lensSerial);
    filter = GetRecordString(r, rec::filter);
    filterPartNumber = GetRecordString(r, rec::filterPartNumber);
    filterSerial = GetRecordString(r, rec::filterSerial);
    lensFilter = GetRecordString(r, rec::lensFilter);
    lensFilterPartNumber = GetRecordString(r, rec::lensFilterPartNumber);
    lensFilterSerial = GetRecordString(r, rec::lensFilterSerial);
    classifacation = GetRecordString(r, rec::classifacation);
    bandpassStart = GetRecordValue<double>(r, rec::bandpassStart);
    bandpassEnd = GetRecordValue<double>(r, rec::bandpassEnd);
    bandpassValid = GetRecordBool(r, rec::bandpassValid);
    iHFov = GetRecordValue<double>(r, rec::iHFov);
    iVFov = GetRecordValue<double>(r, rec::iVFov);
    fovValid = GetRecordBool(r, rec::fovValid);
    numPresets = GetRecordValue<uint8_t>(r, rec::numPresets);
    for (unsigned i = 0; i < rec::kMaxPresets; ++i) PresetFromRecord(r + rec::PresetOffset(i), presets[i]);
}

void CSourceInfoReduceObject::ToRecord(unsigned char* r) const
{
    PutRecordValue<uint32_t>(r, rec::recordSize, rec::kSize);
    PutRecordValue<uint32_t>(r, rec::version, version);
    PutRecordValue<int32_t>(r, rec::adBits, adBits);
    PutRecordString(r, rec::camera, camera);
    PutRecordBool(r, rec::presetSequencing, presetSequencing);
    PutRecordBool(r, rec::superframing, superframing);
    PutRecordBool(r, rec::abated, abated);
    PutRecordValue<uint8_t>(r, rec::dataType, static_cast<uint8_t>(dataType));
    PutRecordValue<uint16_t>(r, rec::imageWidth, imageWidth);
    PutRecordValue<uint16_t>(r, rec::imageHeight, imageHeight);
    const int32_t rect[4] = {offset.left, offset.top, offset.right, offset.bottom};
    static_assert(sizeof rect == rec::offset.size);
    std::memcpy(r + rec::offset.offset, rect, sizeof rect);
    PutRecordBool(r, rec::interlaced, interlaced);
    PutRecordValue<SGuid>(r, rec::pixelType, pixelType);
    PutRecordValue<int32_t>(r, rec::adBitShift, adBitShift);
    PutRecordValue<uint8_t>(r, rec::baseUnit, static_cast<uint8_t>(baseUnit));
    PutRecordValue<uint8_t>(r, rec::baseTempType, static_cast<uint8_t>(baseTempType));
    PutRecordValue<uint16_t>(r, rec::frameWidth, frameWidth);
    PutRecordValue<uint16_t>(r, rec::frameHeight, frameHeight);
    PutRecordValue<uint16_t>(r, rec::packetWidth, packetWidth);
    PutRecordValue<uint16_t>(r, rec::packetHeight, packetHeight);
    PutRecordValue<uint16_t>(r, rec::numFramesPerPacket, numFramesPerPacket);
    PutRecordValue<int64_t>(r, rec::time, time.GetTimestamp(0));
    PutRecordBool(r, rec::timeValid, timeValid);
    PutRecordString(r, rec::cameraModel, cameraModel);
    PutRecordString(r, rec::cameraPartNumber, cameraPartNumber);
    PutRecordString(r, rec::cameraSerial, cameraSerial);
    PutRecordString(r, rec::lens, lens);
    PutRecordString(r, rec::lensPartNumber, lensPartNumber);
    PutRecordString(r, rec::lensSerial, lensSerial);
    PutRecordString(r, rec::filter, filter);
    PutRecordString(r, rec::filterPartNumber, filterPartNumber);
    PutRecordString(r, rec::filterSerial, filterSerial);
    PutRecordString(r, rec::lensFilter, lensFilter);
    PutRecordString(r, rec::lensFilterPartNumber, lensFilterPartNumber);
    PutRecordString(r, rec::lensFilterSerial, lensFilterSerial);
    PutRecordString(r, rec::classifacation, classifacation);
    PutRecordValue<double>(r, rec::bandpassStart, bandpassStart);
    PutRecordValue<double>(r, rec::bandpassEnd, bandpassEnd);
    PutRecordBool(r, rec::bandpassValid, bandpassValid);
    PutRecordValue<double>(r, rec::iHFov, iHFov);
    PutRecordValue<double>(r, rec::iVFov, iVFov);
    PutRecordBool(r, rec::fovValid, fovValid);
    PutRecordValue<uint8_t>(r, rec::numPresets, numPresets);
    for (unsigned i = 0; i < rec::kMaxPresets; ++i) PresetToRecord(r + rec::PresetOffset(i), presets[i]);
}

bool CSourceInfoReduceObject::LoadTypedStream(IFile& f, unsigned int fileVersion)
{
    uint8_t byte = 0;
    int32_t rect[4];
    if (!f.GetInt32(adBits) || !f.GetString(camera) || !f.GetBool(presetSequencing) || !f.GetBool(superframing))
        return false;
    if (!f.GetUInt8(byte)) return false;
    dataType = static_cast<EDataType>(byte);
    if (!f.GetUInt16(imageWidth) || !f.GetUInt16(imageHeight)) return false;
    // The oldest stream stores the rectangle as second, first, fourth, third field.
    if (!f.GetInt32(rect[1]) || !f.GetInt32(rect[0]) || !f.GetInt32(rect[3]) || !f.GetInt32(rect[2]))
        return false;
    offset = SRect(rect[0], rect[1], rect[2], rect[3]);
    if (!f.GetBool(interlaced)) return false;
    if (fileVersion == 0) {
        uint32_t code = 0;
        if (!f.GetUInt32(code)) return false;
        pixelType = OldPixelTypeUInt32ToNewPixelType(code);
    } else if (!f.GetGUID(pixelType)) {
        return false;
    }
    if (!f.GetInt32(adBitShift)) return false;
    if (!f.GetUInt8(byte)) return false;
    baseUnit = static_cast<EUnit>(byte);
    if (!f.GetUInt8(byte)) return false;
    baseTempType = static_cast<ETempType>(byte);
    if (!f.GetUInt16(frameWidth) || !f.GetUInt16(frameHeight) || !f.GetUInt16(packetWidth) ||
        !f.GetUInt16(packetHeight) || !f.GetUInt16(numFramesPerPacket))
        return false;
    int64_t stamp = 0;
    if (!f.GetInt64(stamp)) return false;
    time.SetTimestamp(stamp, 0);
    if (!f.GetBool(timeValid)) return false;
    for (CString* text : {&cameraModel, &cameraPartNumber, &cameraSerial, &lens, &lensPartNumber, &lensSerial,
                          &filter, &filterPartNumber, &filterSerial, &lensFilter, &lensFilterPartNumber,
                          &lensFilterSerial})
        if (!f.GetString(*text)) return false;
    for (unsigned i = 0; i < 4; ++i)
        if (!LoadPresetStream(f, presets[i])) return false;
    numPresets = 4;
    classifacation = "";
    return true;
}

bool CSourceInfoReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    if (fileVersion <= 0x10000) return LoadTypedStream(*file, fileVersion);

    unsigned char record[rec::kSize] = {};
    if (fileVersion < 0x20000) {
        if (!file->ReadBytes(record, rec::kSizeFourPresets)) return false;
        if (GetRecordValue<uint32_t>(record, rec::recordSize) != rec::kSizeFourPresets ||
            GetRecordValue<uint32_t>(record, rec::version) > 0x1FFFF)
            return false;
        PutRecordValue<uint8_t>(record, rec::numPresets, 4);
        std::memset(record + rec::kSizeFourPresets, 0, rec::kSize - rec::kSizeFourPresets);
    } else {
        if (!file->ReadBytes(record, rec::kSize)) return false;
        if (GetRecordValue<uint32_t>(record, rec::recordSize) != rec::kSize ||
            GetRecordValue<uint32_t>(record, rec::version) > 0x2FFFF)
            return false;
    }
    FromRecord(record);
    return true;
}

bool CSourceInfoReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    unsigned char record[rec::kSize] = {};
    ToRecord(record);
    return file->WriteBytes(record, rec::kSize);
}

bool CSourceInfoReduceObject::UpdateNumFrames(void* data, unsigned int size, unsigned int* numFrames,
                                              unsigned char count)
{
    if (!data || size < rec::kSize || count > rec::kMaxPresets) return false;
    if (count == 0) return true;
    if (!numFrames) return false;
    auto* r = static_cast<unsigned char*>(data);
    const bool isAbated = GetRecordBool(r, rec::abated);
    for (unsigned i = 0; i < count; ++i) {
        unsigned char* p = r + rec::PresetOffset(i);
        PutRecordValue<uint32_t>(p, rec::preset::numFrames, numFrames[i]);
        // An abated recording keeps its preset availability as written.
        if (!isAbated) PutRecordBool(p, rec::preset::available, numFrames[i] != 0);
    }
    return true;
}

bool CSourceInfoReduceObject::UpdatePacketing(void* data, unsigned int size, unsigned short packetWidth,
                                              unsigned short packetHeight, unsigned short numFramesPerPacket)
{
    if (!data || size < rec::kSize) return false;
    auto* r = static_cast<unsigned char*>(data);
    PutRecordValue<uint16_t>(r, rec::packetWidth, packetWidth);
    PutRecordValue<uint16_t>(r, rec::packetHeight, packetHeight);
    PutRecordValue<uint16_t>(r, rec::numFramesPerPacket, numFramesPerPacket);
    return true;
}

} // namespace orv::reduce
