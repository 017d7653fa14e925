#pragma once
// The camera header of TLK frames: 126 bytes at the start of the frame's
// first row, little-endian. SRawHeader holds it as the camera wrote it,
// SHeader in units a person reads; the lens block behind byte 96 has its own
// decoders.
#include <cstddef>
#include <cstdint>

#include "reduce/objects/PackedRecord.h"

namespace orv::reduce {

inline constexpr uint32_t kTLKHeaderSize = 126;
inline constexpr uint32_t kTLKLensBlockOffset = 96;
inline constexpr uint32_t kTLKLensBlockSize = 26;

// The header as the camera wrote it. Pairs marked "hi, lo" are two 16-bit
// words forming a 32-bit value, the first word on top.
struct SRawHeader {
    uint8_t headerID;
    uint8_t clockSelect;    // 1: the 11.1 MHz clock, else 6.25 MHz
    uint16_t irig[2];       // hi, lo: bit 31 locked, 18-26 day, 12-17 hour, 6-11 minute, 0-5 second
    uint16_t subSecond[2];  // hi, lo: microseconds of the second
    uint16_t status;        // 15 trigger, 14 record start, 13 flag, 5 flag in FOV, 4 video NUC,
                            // 3 GigE NUC, 2 CameraLink NUC, 0-1 preset
    uint16_t tempA, tempB, tempC, tempFPA; // hundredths of a kelvin
    uint32_t frameCounter;
    uint32_t integrationTicks;
    int16_t value28;
    uint16_t filterID;
    uint16_t reserved;
    uint16_t fpaControl[5];
    uint16_t saturationThreshold;
    uint32_t saturation;    // bit 31 flag, 0-30 saturated pixels
    uint32_t framePeriodTicks;
    uint16_t digitalGain;   // unit 16383
    int16_t digitalOffset;  // half units
    uint8_t detectorType, roicType, cameraType, cameraSubType;
    int16_t analogOffset;   // thousandths
    uint16_t mainBoardTemp, powerBoardTemp, digitizerBoardTemp, tempD; // hundredths of a kelvin
    uint16_t analogIn[3];   // thousandths
    uint32_t lockinPhase, lockinPeriod;
    uint16_t lockinValue;
    uint8_t digitalIn, digitalOut;
    uint16_t adResolution, serialNumber, lensID;
    uint8_t lensBlock[kTLKLensBlockSize];
    uint8_t fpaGain;
    uint8_t skimming;       // bit 0: enabled
    uint16_t skimmingVoltage; // hundredths
};

// Offset and size in the frame of each member, in frame order; the reader
// and the tests share it.
struct STLKRawField {
    SRecordField at;      // in the frame
    size_t member;        // offsetof in SRawHeader
};

#define ORV_TLK_FIELD(member, offset) \
    STLKRawField { SRecordField{offset, sizeof(SRawHeader::member)}, offsetof(SRawHeader, member) }
inline constexpr STLKRawField tlkRawFields[] = {
    ORV_TLK_FIELD(headerID, 0),           ORV_TLK_FIELD(clockSelect, 1),
    ORV_TLK_FIELD(irig, 2),               ORV_TLK_FIELD(subSecond, 6),
    ORV_TLK_FIELD(status, 10),            ORV_TLK_FIELD(tempA, 12),
    ORV_TLK_FIELD(tempB, 14),             ORV_TLK_FIELD(tempC, 16),
    ORV_TLK_FIELD(tempFPA, 18),           ORV_TLK_FIELD(frameCounter, 20),
    ORV_TLK_FIELD(integrationTicks, 24),  ORV_TLK_FIELD(value28, 28),
    ORV_TLK_FIELD(filterID, 30),          ORV_TLK_FIELD(reserved, 32),
    ORV_TLK_FIELD(fpaControl, 34),        ORV_TLK_FIELD(saturationThreshold, 44),
    ORV_TLK_FIELD(saturation, 46),        ORV_TLK_FIELD(framePeriodTicks, 50),
    ORV_TLK_FIELD(digitalGain, 54),       ORV_TLK_FIELD(digitalOffset, 56),
    ORV_TLK_FIELD(detectorType, 58),      ORV_TLK_FIELD(roicType, 59),
    ORV_TLK_FIELD(cameraType, 60),        ORV_TLK_FIELD(cameraSubType, 61),
    ORV_TLK_FIELD(analogOffset, 62),      ORV_TLK_FIELD(mainBoardTemp, 64),
    ORV_TLK_FIELD(powerBoardTemp, 66),    ORV_TLK_FIELD(digitizerBoardTemp, 68),
    ORV_TLK_FIELD(tempD, 70),             ORV_TLK_FIELD(analogIn, 72),
    ORV_TLK_FIELD(lockinPhase, 78),       ORV_TLK_FIELD(lockinPeriod, 82),
    ORV_TLK_FIELD(lockinValue, 86),       ORV_TLK_FIELD(digitalIn, 88),
    ORV_TLK_FIELD(digitalOut, 89),        ORV_TLK_FIELD(adResolution, 90),
    ORV_TLK_FIELD(serialNumber, 92),      ORV_TLK_FIELD(lensID, 94),
    ORV_TLK_FIELD(lensBlock, 96),         ORV_TLK_FIELD(fpaGain, 122),
    ORV_TLK_FIELD(skimming, 123),         ORV_TLK_FIELD(skimmingVoltage, 124),
};
#undef ORV_TLK_FIELD

constexpr bool TLKRawFieldsTile()
{
    uint32_t next = 0;
    for (const STLKRawField& f : tlkRawFields) {
        if (f.at.offset != next) return false;
        next = f.at.end();
    }
    return next == kTLKHeaderSize;
}
static_assert(TLKRawFieldsTile(), "the TLK header fields tile 0 to 126");

// The decoded header.
struct SHeader {
    uint8_t headerID = 0;
    uint32_t clockHz = 0; // 11100000 or 6250000
    uint16_t day = 0;
    uint8_t hour = 0, minute = 0, second = 0;
    uint16_t millisecond = 0, microsecond = 0;
    bool irigLocked = false;
    uint8_t activePreset = 0;
    bool trigger = false, recordStart = false, videoNUCOn = false, gigENUCOn = false, cameraLinkNUCOn = false,
         flagInFOV = false;
    bool flag13 = false; // stored inverted for ROIC type 18
    float tempA = 0, tempB = 0, tempC = 0; // degrees Celsius
    float tempFPA = 0;                     // kelvin
    uint32_t frameCounter = 0;
    double integrationTime = 0; // milliseconds
    float value28 = 0;
    uint16_t filterID = 0;
    uint16_t fpaControl[5] = {};
    uint16_t saturationThreshold = 0;
    uint32_t saturatedPixels = 0;
    bool saturationFlag = false;
    double frameRate = 0; // Hz
    float digitalGain = 0, digitalOffset = 0;
    uint8_t detectorType = 0, roicType = 0, cameraType = 0, cameraSubType = 0;
    float analogOffset = 0;
    float mainBoardTemp = 0, powerBoardTemp = 0, digitizerBoardTemp = 0, tempD = 0; // degrees Celsius
    float analogIn[3] = {};
    uint32_t lockinPhase = 0, lockinPeriod = 0;
    uint16_t lockinValue = 0;
    uint8_t digitalIn = 0, digitalOut = 0;
    uint16_t adResolution = 0, serialNumber = 0, lensID = 0;
    uint8_t fpaGain = 0;
    bool skimmingEnabled = false;
    float skimmingVoltage = 0;
};

// The lens block's content; temperatures in the camera's degrees, the focal
// length in millimetres.
struct STLKLens {
    uint8_t version = 0;   // byte 97
    uint16_t lensType = 0; // bits 0-2 select the layout
    float focalLength = 0;
    int32_t fovEncoder = 0, focusEncoder = 0;
    float analogTemp = 0, boardTemp = 0, extTemp1 = 0, extTemp2 = 0, extTemp3 = 0;
    uint16_t carried = 0; // kept by the block, shown nowhere
};

// Result of the lens decoders.
inline constexpr int kTLKLensOK = 0;
inline constexpr int kTLKLensUnusable = 2;

// Reads the header out of a frame of frameSize bytes. Only fields that lie
// wholly inside the frame are read; the others are zero, so that a frame
// shorter than the header reads as one without lens block (a stored header,
// from ExtractHeader, holds only the first 96 bytes).
void tlkDecodeHeaderRaw(SRawHeader& raw, const unsigned char* frame, uint32_t frameSize);
// The IRIG time of the four words at frame + 2 (IRIG hi, lo, sub-second hi,
// lo) into out's time fields.
void tlkDecodeIRIG(const uint16_t words[4], SHeader& out, bool& lockedOut);
void tlkHeaderFromRawHeader(SHeader& out, const SRawHeader& raw);
void tlkDecodeHeader(SHeader& out, const unsigned char* frame, uint32_t frameSize);

// The lens block, read from the 126 raw header bytes (lensBlock covers
// bytes 96 to 121). Both return kTLKLensOK when the block is usable, else
// kTLKLensUnusable; version 0 writes its outputs in either case.
int tlkDecodeDRAVHeader(STLKLens& out, const SRawHeader& raw);
// Byte 96 of 1 and byte 97 of 2: the word at 98 is the focus encoder.
int tlkDecodeMoskHeader(uint16_t& focusEncoder, const SRawHeader& raw);

} // namespace orv::reduce
