#include "reduce/filters/TLKHeader.h"

#include <cstring>

namespace orv::reduce {

namespace {

inline uint16_t Word(const uint8_t* p) { return uint16_t(p[0] | p[1] << 8); }
inline uint32_t DWord(const uint8_t* p) { return uint32_t(Word(p)) | uint32_t(Word(p + 2)) << 16; }
inline int32_t Signed24(uint32_t v) { return int32_t(v << 8) >> 8; }

constexpr float kZeroCelsius = 273.15f;
inline float Celsius(uint16_t hundredthsKelvin) { return float(hundredthsKelvin) / 100.0f - kZeroCelsius; }

} // namespace

void tlkDecodeHeaderRaw(SRawHeader& raw, const unsigned char* frame, uint32_t frameSize)
{
    if (frame && frameSize >= kTLKHeaderSize) {
        TLKRawHeaderTable::Read(frame, raw);
        return;
    }
    // A short frame: the fields wholly inside it are read, the others are zero.
    unsigned char bytes[kTLKHeaderSize] = {};
    for (const SRecordField& f : TLKRawHeaderTable::fields)
        if (frame && f.end() <= frameSize) std::memcpy(bytes + f.offset, frame + f.offset, f.size);
    TLKRawHeaderTable::Read(bytes, raw);
}

void tlkDecodeIRIG(const uint16_t words[4], SHeader& out, bool& lockedOut)
{
    const uint32_t irig = uint32_t(words[0]) << 16 | words[1];
    out.day = uint16_t((words[0] >> 2) & 511);
    out.hour = uint8_t((irig >> 12) & 63);
    out.minute = uint8_t((irig >> 6) & 63);
    out.second = uint8_t(words[1] & 0xFF & 63);
    lockedOut = (irig >> 31) != 0;
    const uint32_t micro = uint32_t(words[2]) << 16 | words[3];
    out.millisecond = uint16_t(micro / 1000);
    out.microsecond = uint16_t(micro % 1000);
}

void tlkHeaderFromRawHeader(SHeader& out, const SRawHeader& raw)
{
    out = SHeader{};
    out.headerID = raw.headerID;
    out.clockHz = raw.clockSelect == 1 ? 11100000u : 6250000u;
    const double ticksPerMs = raw.clockSelect == 1 ? 11100.0 : 6250.0;

    const uint16_t words[4] = {raw.irig[0], raw.irig[1], raw.subSecond[0], raw.subSecond[1]};
    tlkDecodeIRIG(words, out, out.irigLocked);

    const uint16_t s = raw.status;
    out.trigger = (s >> 15) & 1;
    out.recordStart = (s >> 14) & 1;
    out.flag13 = (s >> 13) & 1;
    out.flagInFOV = (s >> 5) & 1;
    out.videoNUCOn = (s >> 4) & 1;
    out.gigENUCOn = (s >> 3) & 1;
    out.cameraLinkNUCOn = (s >> 2) & 1;
    out.activePreset = uint8_t(s & 3);

    out.tempA = Celsius(raw.tempA);
    out.tempB = Celsius(raw.tempB);
    out.tempC = Celsius(raw.tempC);
    out.tempFPA = float(raw.tempFPA) / 100.0f; // stays in kelvin
    out.frameCounter = raw.frameCounter;
    out.integrationTime = double(raw.integrationTicks) / ticksPerMs;
    out.value28 = float(raw.value28) * 0.5f;
    out.filterID = raw.filterID;
    std::memcpy(out.fpaControl, raw.fpaControl, sizeof out.fpaControl);
    out.saturationThreshold = raw.saturationThreshold;
    out.saturatedPixels = raw.saturation & 0x7FFFFFFFu;
    out.saturationFlag = (raw.saturation >> 31) != 0;
    out.frameRate = 1.0 / (double(raw.framePeriodTicks) / double(out.clockHz));
    out.digitalGain = float(raw.digitalGain) / 16383.0f;
    out.digitalOffset = float(raw.digitalOffset) * 0.5f;
    out.detectorType = raw.detectorType;
    out.roicType = raw.roicType;
    out.cameraType = raw.cameraType;
    out.cameraSubType = raw.cameraSubType;
    out.analogOffset = float(raw.analogOffset) / 1000.0f;
    out.mainBoardTemp = Celsius(raw.mainBoardTemp);
    out.powerBoardTemp = Celsius(raw.powerBoardTemp);
    out.digitizerBoardTemp = Celsius(raw.digitizerBoardTemp);
    out.tempD = Celsius(raw.tempD);
    for (int i = 0; i < 3; ++i) out.analogIn[i] = float(raw.analogIn[i]) / 1000.0f;
    out.lockinPhase = raw.lockinPhase;
    out.lockinPeriod = raw.lockinPeriod;
    out.lockinValue = raw.lockinValue;
    out.digitalIn = raw.digitalIn;
    out.digitalOut = raw.digitalOut;
    out.adResolution = raw.adResolution;
    out.serialNumber = raw.serialNumber;
    out.lensID = raw.lensID;
    out.fpaGain = raw.fpaGain;
    out.skimmingEnabled = (raw.skimming & 1) != 0;
    out.skimmingVoltage = float(raw.skimmingVoltage) / 100.0f;
    // This sensor reports the bit 13 flag the other way round; intended.
    if (raw.roicType == 18) out.flag13 = !out.flag13;
}

void tlkDecodeHeader(SHeader& out, const unsigned char* frame, uint32_t frameSize)
{
    SRawHeader raw;
    tlkDecodeHeaderRaw(raw, frame, frameSize);
    tlkHeaderFromRawHeader(out, raw);
}

int tlkDecodeDRAVHeader(STLKLens& out, const SRawHeader& raw)
{
    // Offsets below are frame offsets less 96.
    const uint8_t* b = raw.lensBlock;
    out = STLKLens{};
    out.version = b[1];
    if (out.version == 0) {
        out.lensType = Word(b);
        out.focalLength = float(DWord(b + 2)) / 10.0f;
        out.fovEncoder = Signed24(DWord(b + 6));
        out.focusEncoder = Signed24(DWord(b + 10));
        out.analogTemp = float(int16_t(Word(b + 14))) / 10.0f;
        out.boardTemp = float(int16_t(Word(b + 16))) / 10.0f;
        out.extTemp1 = float(int16_t(Word(b + 18))) / 10.0f;
        out.extTemp2 = float(int16_t(Word(b + 20))) / 10.0f;
        out.extTemp3 = float(int16_t(Word(b + 22))) / 10.0f;
        out.carried = Word(b + 24);
        return (out.lensType & 7) == 1 ? kTLKLensOK : kTLKLensUnusable;
    }
    if (out.version != 1) return kTLKLensUnusable;
    out.lensType = b[0];
    const unsigned layout = b[0] & 7u;
    if (layout != 1 && layout != 3) return kTLKLensUnusable;
    out.focalLength = float(uint32_t(b[4]) << 16 | Word(b + 2)) / 10.0f;
    out.fovEncoder = int32_t(int8_t(b[7])) * 65536 + Word(b + 5);
    out.focusEncoder = int32_t(int8_t(b[10])) * 65536 + Word(b + 8);
    if (layout == 1) {
        out.analogTemp = float(int16_t(Word(b + 11))) / 10.0f;
        out.boardTemp = float(int16_t(Word(b + 13))) / 10.0f;
        out.extTemp1 = float(int16_t(Word(b + 15))) / 10.0f;
        out.extTemp2 = float(int16_t(Word(b + 17))) / 10.0f;
        out.extTemp3 = float(int16_t(Word(b + 19))) / 10.0f;
        out.carried = b[21];
    } else {
        // The short layout has two external temperatures and nothing else.
        out.extTemp1 = float(int16_t(Word(b + 11))) / 10.0f;
        out.extTemp2 = float(int16_t(Word(b + 13))) / 10.0f;
    }
    return kTLKLensOK;
}

int tlkDecodeMoskHeader(uint16_t& focusEncoder, const SRawHeader& raw)
{
    const uint8_t* b = raw.lensBlock;
    if (b[0] != 1 || b[1] != 2) return kTLKLensUnusable;
    focusEncoder = Word(b + 2);
    return kTLKLensOK;
}

} // namespace orv::reduce
