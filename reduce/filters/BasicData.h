#pragma once
// SBasicData: the measurement record of the V410 family's camera block, 2428
// bytes in the byte order of the camera that wrote it, and SMX515Header, the
// same record's first 1148 bytes as the Sarnet and MX515 cameras put it behind
// their pixels. Both are kept whole in COmbriaCameraInfoReduceObject; the
// fields below are the ones this library reads, and they fill the Ombria
// object parameters and factory calibration.
#include <cstdint>

#include "orv/DateTime.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/OmbriaCameraInfoReduceObject.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

// Byte order mark at offset 0: 2 when the record is in the reader's order.
inline constexpr uint16_t kBasicDataInOrder = 2;

struct SBasicData {
    static constexpr uint32_t kSize = 2428;
    unsigned char bytes[kSize];

    // Reverses every multi-byte field in place by the camera's map. The map is
    // kept as the cameras define it, also where it leaves bytes alone that are
    // read as numbers (112 to 115): intended.
    void ByteSwap() { ByteSwap(bytes, kSize); }
    // The map over the first size bytes; an item that would pass size stays.
    static void ByteSwap(unsigned char* record, uint32_t size);
};

struct SMX515Header {
    static constexpr uint32_t kSize = 1148;
    // Items that start from here on are left unswapped.
    static constexpr uint32_t kSwapEnd = 1134;
    unsigned char bytes[kSize];

    void ByteSwap() { SBasicData::ByteSwap(bytes, kSwapEnd); }
};

// The fields of the record this library reads, by their meaning.
struct SBasicFields {
    uint16_t mark = 0;
    uint16_t height = 0;  // overwritten with the frame's height
    uint16_t lastRow = 0; // overwritten with height - 1
    uint16_t frameCounter = 0;
    float emissivity = 0, distance = 0, reflectedTemp = 0, atmosphereTemp = 0, extOpticsTemp = 0,
          extOpticsTransmission = 0, estAtmosphericTransmission = 0, relativeHumidity = 0;
    float R = 0, B = 0, F = 0;
    float alpha1 = 0, alpha2 = 0, beta1 = 0, beta2 = 0, X = 0;
    float rangeHighTemp = 0, rangeLowTemp = 0, clampHighTemp = 0, clampLowTemp = 0, validHighTemp = 0,
          validLowTemp = 0;
    int32_t offset = 0;
    float gain = 0;
    uint16_t imgLow = 0, imgHigh = 0, nonLinear = 0;
    float nonLinearFactor = 0;
    int32_t nonLinearZero = 0;
    uint32_t seconds = 0; // frame time: seconds since 1970-01-01
    uint32_t millis = 0;
    uint16_t triggerA = 0, triggerB = 0, triggerFlags = 0;
    uint32_t triggerCount = 0;
    uint16_t infoInvalid = 0; // the frame info is valid when this is 0
};

namespace basicData {
using F = SBasicFields;
using mark = TField<&F::mark, 0>;
using frameCounter = TField<&F::frameCounter, 24>;
using seconds = TField<&F::seconds, 900>;
using millis = TField<&F::millis, 904>;
using triggerCount = TField<&F::triggerCount, 968>;
using Table = TRecordView<
    F, SBasicData::kSize, mark, TField<&F::height, 4>, TField<&F::lastRow, 16>, frameCounter,
    TField<&F::emissivity, 32>, TField<&F::distance, 36>, TField<&F::reflectedTemp, 40>,
    TField<&F::atmosphereTemp, 44>, TField<&F::extOpticsTemp, 48>, TField<&F::extOpticsTransmission, 52>,
    TField<&F::estAtmosphericTransmission, 56>, TField<&F::relativeHumidity, 60>, TField<&F::R, 88>,
    TField<&F::B, 92>, TField<&F::F, 96>, TField<&F::alpha1, 112>, TField<&F::alpha2, 116>,
    TField<&F::beta1, 120>, TField<&F::beta2, 124>, TField<&F::X, 128>, TField<&F::rangeHighTemp, 144>,
    TField<&F::rangeLowTemp, 148>, TField<&F::clampHighTemp, 152>, TField<&F::clampLowTemp, 156>,
    TField<&F::validHighTemp, 160>, TField<&F::validLowTemp, 164>, TField<&F::offset, 776>,
    TField<&F::gain, 780>, TField<&F::imgLow, 784>, TField<&F::imgHigh, 786>, TField<&F::nonLinear, 788>,
    TField<&F::nonLinearFactor, 792>, TField<&F::nonLinearZero, 796>, seconds, millis,
    TField<&F::triggerA, 960>, TField<&F::triggerB, 962>, TField<&F::triggerFlags, 964>, triggerCount,
    TField<&F::infoInvalid, 1130>>;
} // namespace basicData

// The camera's time: seconds and milliseconds since 1970 as 100 ns ticks
// since 1601 (seconds * 10^7 + the 1970 epoch + milliseconds * 10^4).
CDateTime BasicDataTime(uint32_t seconds, uint32_t millis);

// Object parameters from the record: the eight values, source 1, the word
// behind relativeHumidity 255; atmosphericTransmission stays.
void BasicDataToObjectParameters(const SBasicFields& f, CObjectParametersReduceObject& params);
// Factory calibration from the record: valid, and its 21 fields.
void BasicDataToFactoryCal(const SBasicFields& f, COmbriaFactoryCalReduceObject& cal);

// The four objects a frame of the Ombria cameras fills, fetched (and made)
// before any test of the frame, so that they exist after a failed call too.
struct SOmbriaFrameObjects {
    TSharedPtr<CObjectParametersReduceObject> params; // preset -1
    TSharedPtr<COmbriaFactoryCalReduceObject> cal;    // preset 0
    TSharedPtr<CFrameInfoReduceObject> info;          // preset 0
    TSharedPtr<COmbriaCameraInfoReduceObject> camera; // preset -1
    bool complete() const { return params && cal && info && camera; }
};
SOmbriaFrameObjects FetchOmbriaObjects(CReduceObjectArray& objects);

// The camera info: valid, the record (recordSize bytes of it, the rest zero)
// with a true flag, and the GigE prefix when there is one (else zeroes, and
// "prefix stored" false).
void StoreCameraInfo(COmbriaCameraInfoReduceObject& camera, const unsigned char* record, uint32_t recordSize,
                     const unsigned char* prefix);

// Packed sub-frames, as the V410 and MX515 cameras send them: subFrames images
// of width x height 16-bit pixels, then one trailer (prefix, block or header)
// for all of them. Copies image subFrameIndex and the trailer behind it into
// out and returns where the trailer starts there, with its size. Null, with
// nothing written, when the frame does not hold them, out cannot take them, or
// the trailer is shorter than minTrailer.
unsigned char* CopySubFrame(const unsigned char* frame, uint32_t frameSize, uint16_t width, uint16_t height,
                            uint16_t subFrames, uint16_t subFrameIndex, void* out, uint32_t outSize,
                            uint64_t minTrailer, uint64_t& trailerSize);

// The SMX515Header behind the pixels of a Sarnet or MX515 frame, at
// width * height * 2, or null when the frame is too short to hold it (the
// cameras trust the frame; we do not).
unsigned char* MX515HeaderOf(unsigned char* frame, uint32_t frameSize, uint16_t width, uint16_t height);
// Puts the header in our byte order in the frame's own memory, so that a later
// call finds the mark right and leaves it alone.
void PutMX515HeaderInOrder(unsigned char* header);
// The fields of a header in order (the rest of the record zero).
SBasicFields MX515Fields(const unsigned char* header);

} // namespace orv::reduce
