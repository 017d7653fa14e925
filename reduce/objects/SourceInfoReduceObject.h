#pragma once
// CSourceInfoReduceObject: the recording as a whole: camera, optics, image
// geometry, pixel type, base unit and up to eight presets.
#include <cstdint>

#include "orv/DateTime.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/objects/GPSData.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

struct SPresetInfo {
    bool available = false;
    double intTime = 0;
    bool intTimeValid = false;
    float frameRate = 1.0f;
    bool frameRateValid = false;
    uint32_t numFrames = 0;
    bool calibrated = false;
    double minTemp = 0;
    double maxTemp = 0;
};

// The packed payload of version 0x20000 (2048 bytes) and of versions 0x10001
// to 0x1FFFF (the same, cut after the fourth preset: 1536 bytes).
namespace sourceInfoRecord {
inline constexpr uint32_t kSize = 2048;
inline constexpr uint32_t kSizeFourPresets = 1536;
inline constexpr uint32_t kPresetsOffset = 1024;
inline constexpr uint32_t kPresetSize = 128;
inline constexpr unsigned kMaxPresets = 8;

inline constexpr SRecordField recordSize{0, 4};
inline constexpr SRecordField version{4, 4};
inline constexpr SRecordField adBits{8, 4};
inline constexpr SRecordField camera{12, 64};
inline constexpr SRecordField presetSequencing{76, 1};
inline constexpr SRecordField superframing{77, 1};
inline constexpr SRecordField abated{78, 1};
inline constexpr SRecordField dataType{79, 1};
inline constexpr SRecordField imageWidth{80, 2};
inline constexpr SRecordField imageHeight{82, 2};
inline constexpr SRecordField offset{84, 16};
inline constexpr SRecordField interlaced{100, 1};
inline constexpr SRecordField pixelType{101, 16};
inline constexpr SRecordField adBitShift{117, 4};
inline constexpr SRecordField baseUnit{121, 1};
inline constexpr SRecordField baseTempType{122, 1};
inline constexpr SRecordField frameWidth{123, 2};
inline constexpr SRecordField frameHeight{125, 2};
inline constexpr SRecordField packetWidth{127, 2};
inline constexpr SRecordField packetHeight{129, 2};
inline constexpr SRecordField numFramesPerPacket{131, 2};
inline constexpr SRecordField time{133, 8};
inline constexpr SRecordField timeValid{141, 1};
inline constexpr SRecordField cameraModel{142, 32};
inline constexpr SRecordField cameraPartNumber{174, 16};
inline constexpr SRecordField cameraSerial{190, 16};
inline constexpr SRecordField lens{206, 32};
inline constexpr SRecordField lensPartNumber{238, 16};
inline constexpr SRecordField lensSerial{254, 16};
inline constexpr SRecordField filter{270, 32};
inline constexpr SRecordField filterPartNumber{302, 16};
inline constexpr SRecordField filterSerial{318, 16};
inline constexpr SRecordField lensFilter{334, 32};
inline constexpr SRecordField lensFilterPartNumber{366, 16};
inline constexpr SRecordField lensFilterSerial{382, 16};
inline constexpr SRecordField classifacation{398, 32};
inline constexpr SRecordField bandpassStart{430, 8};
inline constexpr SRecordField bandpassEnd{438, 8};
inline constexpr SRecordField bandpassValid{446, 1};
inline constexpr SRecordField iHFov{447, 8};
inline constexpr SRecordField iVFov{455, 8};
inline constexpr SRecordField fovValid{463, 1};
inline constexpr SRecordField numPresets{464, 1};
inline constexpr SRecordField reserved{465, 559};

inline constexpr SRecordField header[] = {
    recordSize, version, adBits, camera, presetSequencing, superframing, abated, dataType, imageWidth,
    imageHeight, offset, interlaced, pixelType, adBitShift, baseUnit, baseTempType, frameWidth, frameHeight,
    packetWidth, packetHeight, numFramesPerPacket, time, timeValid, cameraModel, cameraPartNumber,
    cameraSerial, lens, lensPartNumber, lensSerial, filter, filterPartNumber, filterSerial, lensFilter,
    lensFilterPartNumber, lensFilterSerial, classifacation, bandpassStart, bandpassEnd, bandpassValid, iHFov,
    iVFov, fovValid, numPresets, reserved};
static_assert(RecordFieldsTile(header, kPresetsOffset), "source info header fields tile 0 to 1024");

// Fields of one preset, relative to kPresetsOffset + kPresetSize * index.
namespace preset {
inline constexpr SRecordField available{0, 1};
inline constexpr SRecordField intTime{1, 8};
inline constexpr SRecordField intTimeValid{9, 1};
inline constexpr SRecordField frameRate{10, 4};
inline constexpr SRecordField frameRateValid{14, 1};
inline constexpr SRecordField numFrames{15, 4};
inline constexpr SRecordField calibrated{19, 1};
inline constexpr SRecordField minTemp{20, 8};
inline constexpr SRecordField maxTemp{28, 8};
inline constexpr SRecordField reserved{36, 92};

inline constexpr SRecordField fields[] = {available, intTime,   intTimeValid, frameRate, frameRateValid,
                                          numFrames, calibrated, minTemp,    maxTemp,   reserved};
static_assert(RecordFieldsTile(fields, kPresetSize), "preset fields tile 0 to 128");
} // namespace preset

constexpr uint32_t PresetOffset(unsigned index) { return kPresetsOffset + kPresetSize * index; }
} // namespace sourceInfoRecord

class CSourceInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{344ED254-76DC-4B4C-B47B-3548A6837C26}");
    static constexpr const char* kName = "SourceInfo";
    static constexpr SGuid kDefaultPixelType = MakeGuid("{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}");
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CSourceInfoReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Patch a stored 0x20000 payload in place after a recording ends.
    static bool UpdateNumFrames(void* data, unsigned int size, unsigned int* numFrames, unsigned char count);
    static bool UpdatePacketing(void* data, unsigned int size, unsigned short packetWidth,
                                unsigned short packetHeight, unsigned short numFramesPerPacket);

    int32_t adBits = 16;
    CString camera = "Unknown Camera";
    bool presetSequencing = false;
    bool superframing = false;
    bool abated = false;
    uint8_t numPresets = 4;
    SPresetInfo presets[8];
    EDataType dataType = dtUInt16;
    uint16_t imageWidth = 0;
    uint16_t imageHeight = 0;
    SRect offset;
    bool interlaced = false;
    SGuid pixelType = kDefaultPixelType;
    int32_t adBitShift = 0;
    EUnit baseUnit = unitCounts;
    ETempType baseTempType = tempCelsius;
    uint16_t frameWidth = 0;
    uint16_t frameHeight = 0;
    uint16_t packetWidth = 0;
    uint16_t packetHeight = 0;
    uint16_t numFramesPerPacket = 0;
    CDateTime time;
    bool timeValid = false;
    CString cameraModel;
    CString cameraPartNumber;
    CString cameraSerial;
    CString lens;
    CString lensPartNumber;
    CString lensSerial;
    CString filter;
    CString filterPartNumber;
    CString filterSerial;
    CString lensFilter;
    CString lensFilterPartNumber;
    CString lensFilterSerial;
    CString classifacation; // spelled so in files and in the flat interface
    double bandpassStart = 0;
    double bandpassEnd = 0;
    bool bandpassValid = false;
    double iHFov = 0;
    double iVFov = 0;
    bool fovValid = false;
    SGPSData gps; // neither saved nor loaded with the payload
    bool spare = false; // only cleared and copied; no reader

private:
    bool LoadTypedStream(IFile& file, unsigned int version);
    void FromRecord(const unsigned char* record);
    void ToRecord(unsigned char* record) const;
};

} // namespace orv::reduce
