#pragma once
// The camera header of TLK frames: 126 bytes at the start of the frame's
// first row, little-endian. SRawHeader holds it as the camera wrote it,
// SHeader in units a person reads; the lens block behind byte 96 has its own
// decoders.
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

// Each member at its offset in the frame; the table checks that the fields
// tile the 126 bytes and that every member fits its field.
using TLKRawHeaderTable = TRecordTable<SRawHeader, kTLKHeaderSize,
    TField<&SRawHeader::headerID, 0>, TField<&SRawHeader::clockSelect, 1>,
    TField<&SRawHeader::irig, 2>, TField<&SRawHeader::subSecond, 6>,
    TField<&SRawHeader::status, 10>, TField<&SRawHeader::tempA, 12>,
    TField<&SRawHeader::tempB, 14>, TField<&SRawHeader::tempC, 16>,
    TField<&SRawHeader::tempFPA, 18>, TField<&SRawHeader::frameCounter, 20>,
    TField<&SRawHeader::integrationTicks, 24>, TField<&SRawHeader::value28, 28>,
    TField<&SRawHeader::filterID, 30>, TField<&SRawHeader::reserved, 32>,
    TField<&SRawHeader::fpaControl, 34>, TField<&SRawHeader::saturationThreshold, 44>,
    TField<&SRawHeader::saturation, 46>, TField<&SRawHeader::framePeriodTicks, 50>,
    TField<&SRawHeader::digitalGain, 54>, TField<&SRawHeader::digitalOffset, 56>,
    TField<&SRawHeader::detectorType, 58>, TField<&SRawHeader::roicType, 59>,
    TField<&SRawHeader::cameraType, 60>, TField<&SRawHeader::cameraSubType, 61>,
    TField<&SRawHeader::analogOffset, 62>, TField<&SRawHeader::mainBoardTemp, 64>,
    TField<&SRawHeader::powerBoardTemp, 66>, TField<&SRawHeader::digitizerBoardTemp, 68>,
    TField<&SRawHeader::tempD, 70>, TField<&SRawHeader::analogIn, 72>,
    TField<&SRawHeader::lockinPhase, 78>, TField<&SRawHeader::lockinPeriod, 82>,
    TField<&SRawHeader::lockinValue, 86>, TField<&SRawHeader::digitalIn, 88>,
    TField<&SRawHeader::digitalOut, 89>, TField<&SRawHeader::adResolution, 90>,
    TField<&SRawHeader::serialNumber, 92>, TField<&SRawHeader::lensID, 94>,
    TField<&SRawHeader::lensBlock, 96>, TField<&SRawHeader::fpaGain, 122>,
    TField<&SRawHeader::skimming, 123>, TField<&SRawHeader::skimmingVoltage, 124>>;

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
