#include "reduce/objects/SourceInfoReduceObject.h"

#include <cstring>

#include "orv/PixelType.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = sourceInfoRecord;

namespace {

constexpr uint32_t kVersion = 0x20000;
constexpr uint32_t kFirstPackedVersion = 0x10001;

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

void rec::TRectCodec::Get(const unsigned char* p, SRect& v)
{
    int32_t rect[4];
    std::memcpy(rect, p, sizeof rect);
    v = SRect(rect[0], rect[1], rect[2], rect[3]);
}

void rec::TRectCodec::Put(unsigned char* p, const SRect& v)
{
    const int32_t rect[4] = {v.left, v.top, v.right, v.bottom};
    std::memcpy(p, rect, sizeof rect);
}

void rec::TTimeCodec::Get(const unsigned char* p, CDateTime& v)
{
    int64_t stamp;
    std::memcpy(&stamp, p, sizeof stamp);
    v.SetTimestamp(stamp, 0);
}

void rec::TTimeCodec::Put(unsigned char* p, const CDateTime& v)
{
    const int64_t stamp = v.GetTimestamp(0);
    std::memcpy(p, &stamp, sizeof stamp);
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
        if (Get(record, kRecordSize) != rec::kSizeFourPresets || Get(record, kRecordVersion) > 0x1FFFF)
            return false;
        rec::numPresets::Put(record, 4);
    } else {
        if (!file->ReadBytes(record, rec::kSize)) return false;
        if (Get(record, kRecordSize) != rec::kSize || Get(record, kRecordVersion) > 0x2FFFF) return false;
    }
    rec::Table::Read(record, *this);
    return true;
}

bool CSourceInfoReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    unsigned char record[rec::kSize];
    rec::Table::Write(*this, record);
    return file->WriteBytes(record, rec::kSize);
}

bool CSourceInfoReduceObject::UpdateNumFrames(void* data, unsigned int size, unsigned int* numFrames,
                                              unsigned char count)
{
    if (!data || size < rec::kSize || count > rec::kMaxPresets) return false;
    if (count == 0) return true;
    if (!numFrames) return false;
    auto* r = static_cast<unsigned char*>(data);
    const bool isAbated = rec::abated::Get(r);
    for (unsigned i = 0; i < count; ++i) {
        unsigned char* p = r + rec::PresetOffset(i);
        rec::preset::numFrames::Put(p, numFrames[i]);
        // An abated recording keeps its preset availability as written.
        if (!isAbated) rec::preset::available::Put(p, numFrames[i] != 0);
    }
    return true;
}

bool CSourceInfoReduceObject::UpdatePacketing(void* data, unsigned int size, unsigned short packetWidth,
                                              unsigned short packetHeight, unsigned short numFramesPerPacket)
{
    if (!data || size < rec::kSize) return false;
    auto* r = static_cast<unsigned char*>(data);
    rec::packetWidth::Put(r, packetWidth);
    rec::packetHeight::Put(r, packetHeight);
    rec::numFramesPerPacket::Put(r, numFramesPerPacket);
    return true;
}

} // namespace orv::reduce
