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
};

// The packed payload of version 0x20000 (2048 bytes) and of versions 0x10001
// to 0x1FFFF (the same, cut after the fourth preset: 1536 bytes).
namespace sourceInfoRecord {
inline constexpr uint32_t kSize = 2048;
inline constexpr uint32_t kSizeFourPresets = 1536;
inline constexpr uint32_t kPresetsOffset = 1024;
inline constexpr uint32_t kPresetSize = 128;
inline constexpr unsigned kMaxPresets = 8;

// Fields of one preset, relative to kPresetsOffset + kPresetSize * index.
namespace preset {
using P = SPresetInfo;
using available = TField<&P::available, 0>;
using numFrames = TField<&P::numFrames, 15>;
using Table = TRecordTable<P, kPresetSize, available, TField<&P::intTime, 1>, TField<&P::intTimeValid, 9>,
                           TField<&P::frameRate, 10>, TField<&P::frameRateValid, 14>, numFrames,
                           TField<&P::calibrated, 19>, TField<&P::minTemp, 20>, TField<&P::maxTemp, 28>,
                           TReserved<36, 92>>;
} // namespace preset

// left, top, right, bottom as four 32-bit numbers.
struct TRectCodec {
    using Type = SRect;
    static constexpr uint32_t size = 16;
    static void Get(const unsigned char* p, SRect& v);
    static void Put(unsigned char* p, const SRect& v);
};
// The time as its 64-bit timestamp of kind 0.
struct TTimeCodec {
    using Type = CDateTime;
    static constexpr uint32_t size = 8;
    static void Get(const unsigned char* p, CDateTime& v);
    static void Put(unsigned char* p, const CDateTime& v);
};

using C = CSourceInfoReduceObject;
using abated = TField<&C::abated, 78>;
using packetWidth = TField<&C::packetWidth, 127>;
using packetHeight = TField<&C::packetHeight, 129>;
using numFramesPerPacket = TField<&C::numFramesPerPacket, 131>;
using numPresets = TField<&C::numPresets, 464>;
using Table = TRecordTable<
    C, kSize, TConst<0, uint32_t, kSize>, TWriteOnly<TField<&C::version, 4>>, TField<&C::adBits, 8>,
    TField<&C::camera, 12, TText<64>>, TField<&C::presetSequencing, 76>, TField<&C::superframing, 77>, abated,
    TField<&C::dataType, 79, TAs<uint8_t>>, TField<&C::imageWidth, 80>, TField<&C::imageHeight, 82>,
    TField<&C::offset, 84, TRectCodec>, TField<&C::interlaced, 100>, TField<&C::pixelType, 101>,
    TField<&C::adBitShift, 117>, TField<&C::baseUnit, 121, TAs<uint8_t>>,
    TField<&C::baseTempType, 122, TAs<uint8_t>>, TField<&C::frameWidth, 123>, TField<&C::frameHeight, 125>,
    packetWidth, packetHeight, numFramesPerPacket, TField<&C::time, 133, TTimeCodec>, TField<&C::timeValid, 141>,
    TField<&C::cameraModel, 142, TText<32>>, TField<&C::cameraPartNumber, 174, TText<16>>,
    TField<&C::cameraSerial, 190, TText<16>>, TField<&C::lens, 206, TText<32>>,
    TField<&C::lensPartNumber, 238, TText<16>>, TField<&C::lensSerial, 254, TText<16>>,
    TField<&C::filter, 270, TText<32>>, TField<&C::filterPartNumber, 302, TText<16>>,
    TField<&C::filterSerial, 318, TText<16>>, TField<&C::lensFilter, 334, TText<32>>,
    TField<&C::lensFilterPartNumber, 366, TText<16>>, TField<&C::lensFilterSerial, 382, TText<16>>,
    TField<&C::classifacation, 398, TText<32>>, TField<&C::bandpassStart, 430>, TField<&C::bandpassEnd, 438>,
    TField<&C::bandpassValid, 446>, TField<&C::iHFov, 447>, TField<&C::iVFov, 455>, TField<&C::fovValid, 463>,
    numPresets, TReserved<465, 559>, TField<&C::presets, kPresetsOffset, TRecords<preset::Table, kMaxPresets>>>;

constexpr uint32_t PresetOffset(unsigned index) { return kPresetsOffset + kPresetSize * index; }
} // namespace sourceInfoRecord

} // namespace orv::reduce
