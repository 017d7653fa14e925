#include "reduce/filters/BasicData.h"

#include <algorithm>
#include <cstring>

namespace orv::reduce {
namespace {

// items of width bytes from offset, groups times, each group stride bytes
// after the one before. Width 1 is a run of bytes the map leaves alone.
struct SSwapRun {
    uint16_t offset;
    uint8_t width;
    uint16_t items;
    uint8_t groups = 1;
    uint8_t stride = 0;
};

// The camera's map, as it defines it.
constexpr SSwapRun kSwapMap[] = {
    {0, 2, 14},    {28, 1, 4},    {32, 4, 9},    {68, 1, 12},   {80, 4, 1},     {84, 1, 4},    {88, 4, 3},
    {100, 1, 4},   {104, 4, 2},   {112, 1, 4},   {116, 4, 16},  {180, 2, 5},    {190, 1, 174}, {364, 4, 1},
    {368, 1, 64},  {432, 2, 2},   {436, 4, 7},   {464, 2, 2},   {468, 1, 20},   {488, 4, 1},   {492, 1, 64},
    {556, 2, 2},   {560, 4, 7},   {588, 2, 2},   {592, 1, 20},  {612, 4, 1},    {616, 1, 64},  {680, 2, 2},
    {684, 4, 7},   {712, 2, 2},   {716, 1, 20},  {736, 4, 2},   {744, 1, 32},   {776, 4, 2},   {784, 2, 4},
    {792, 4, 5},   {812, 1, 12},  {824, 4, 2},   {832, 2, 1},   {834, 1, 38},   {872, 4, 2},   {880, 2, 3},
    {886, 1, 14},  {900, 4, 2},   {908, 2, 1},   {910, 1, 2},   {912, 4, 8},    {944, 1, 16},  {960, 2, 3},
    {966, 1, 2},   {968, 4, 1},   {972, 2, 6},   {984, 4, 20},  {1064, 2, 4},   {1072, 1, 28}, {1100, 2, 2},
    {1104, 4, 2},  {1112, 2, 2},  {1116, 4, 1},  {1120, 2, 7},  {1134, 1, 14},  {1148, 4, 1},
    // Twenty groups of 28 bytes: 16 bytes alone, then three words.
    {1152, 1, 16, 20, 28}, {1168, 4, 3, 20, 28},
    // Twenty groups of 20 bytes: 16 bytes alone, then one word.
    {1712, 1, 16, 20, 20}, {1728, 4, 1, 20, 20},
    {2112, 2, 1},  {2114, 1, 18}, {2132, 4, 64},  {2388, 1, 40},
};

// Every byte of the record is named by the map exactly once.
constexpr bool MapCoversRecord()
{
    unsigned char seen[SBasicData::kSize] = {};
    for (const SSwapRun& run : kSwapMap)
        for (unsigned g = 0; g < run.groups; ++g)
            for (unsigned b = 0; b < unsigned(run.width) * run.items; ++b) {
                const unsigned at = run.offset + g * run.stride + b;
                if (at >= SBasicData::kSize || seen[at]) return false;
                seen[at] = 1;
            }
    for (unsigned char s : seen)
        if (!s) return false;
    return true;
}
static_assert(MapCoversRecord(), "the swap map names each byte of the record once");

} // namespace

void SBasicData::ByteSwap(unsigned char* record, uint32_t size)
{
    for (const SSwapRun& run : kSwapMap) {
        if (run.width == 1) continue;
        for (unsigned g = 0; g < run.groups; ++g)
            for (unsigned i = 0; i < run.items; ++i) {
                const uint32_t at = run.offset + g * run.stride + i * run.width;
                if (at + run.width > size) continue;
                std::reverse(record + at, record + at + run.width);
            }
    }
}

CDateTime BasicDataTime(uint32_t seconds, uint32_t millis)
{
    CDateTime t;
    t.SetTimestamp(int64_t(seconds) * 10000000 + CDateTime::kUnixEpochTicks + int64_t(millis) * 10000, 0);
    return t;
}

void BasicDataToObjectParameters(const SBasicFields& f, CObjectParametersReduceObject& p)
{
    p.emissivity = f.emissivity;
    p.distance = f.distance;
    p.reflectedTemp = f.reflectedTemp;
    p.atmosphereTemp = f.atmosphereTemp;
    p.extOpticsTemp = f.extOpticsTemp;
    p.extOpticsTransmission = f.extOpticsTransmission;
    p.estAtmosphericTransmission = f.estAtmosphericTransmission;
    p.relativeHumidity = f.relativeHumidity;
    p.source = true;
    p.reserved = 255;
}

void BasicDataToFactoryCal(const SBasicFields& f, COmbriaFactoryCalReduceObject& cal)
{
    cal.valid = true;
    SAdjustParams& a = cal.adjust;
    a.nonLinearFactor = f.nonLinearFactor;
    a.nonLinearZero = f.nonLinearZero;
    a.offset = f.offset;
    a.gain = f.gain;
    a.nonLinear = f.nonLinear;
    a.imgLow = f.imgLow;
    a.imgHigh = f.imgHigh;
    SCalibParams& c = cal.calib;
    c.R = f.R;
    c.B = f.B;
    c.F = f.F;
    c.alpha1 = f.alpha1;
    c.alpha2 = f.alpha2;
    c.beta1 = f.beta1;
    c.beta2 = f.beta2;
    c.X = f.X;
    c.clampHighTemp = f.clampHighTemp;
    c.validHighTemp = f.validHighTemp;
    c.validLowTemp = f.validLowTemp;
    c.clampLowTemp = f.clampLowTemp;
    c.rangeHighTemp = f.rangeHighTemp;
    c.rangeLowTemp = f.rangeLowTemp;
}

SOmbriaFrameObjects FetchOmbriaObjects(CReduceObjectArray& objects)
{
    SOmbriaFrameObjects o;
    o.params = objects.GetObjectOfType(CObjectParametersReduceObject::typeID, -1, true)
                   .DynamicCast<CObjectParametersReduceObject>();
    o.cal = objects.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true)
                .DynamicCast<COmbriaFactoryCalReduceObject>();
    o.info = objects.GetObjectOfType(CFrameInfoReduceObject::typeID, 0, true).DynamicCast<CFrameInfoReduceObject>();
    o.camera = objects.GetObjectOfType(COmbriaCameraInfoReduceObject::typeID, -1, true)
                   .DynamicCast<COmbriaCameraInfoReduceObject>();
    return o;
}

void StoreCameraInfo(COmbriaCameraInfoReduceObject& camera, const unsigned char* record, uint32_t recordSize,
                     const unsigned char* prefix)
{
    camera.valid = true;
    const uint32_t n = std::min(recordSize, COmbriaCameraInfoReduceObject::kInfoSize);
    std::memcpy(camera.info, record, n);
    std::memset(camera.info + n, 0, COmbriaCameraInfoReduceObject::kInfoSize - n);
    camera.infoFlag = true;
    if (prefix)
        std::memcpy(camera.tag, prefix, COmbriaCameraInfoReduceObject::kTagSize);
    else
        std::memset(camera.tag, 0, COmbriaCameraInfoReduceObject::kTagSize);
    camera.tagFlag = prefix != nullptr;
}

unsigned char* CopySubFrame(const unsigned char* frame, uint32_t frameSize, uint16_t width, uint16_t height,
                            uint16_t subFrames, uint16_t subFrameIndex, void* out, uint32_t outSize,
                            uint64_t minTrailer, uint64_t& trailerSize)
{
    const uint64_t S = uint64_t(width) * height * 2;
    if (S * subFrames > frameSize || (uint64_t(subFrameIndex) + 1) * S > frameSize) return nullptr;
    const uint64_t T = frameSize - S * subFrames;
    // The slot must hold the sub-frame and the trailer: nothing is written past outSize.
    if (!out || S + T > outSize || T < minTrailer) return nullptr;
    auto* o = static_cast<unsigned char*>(out);
    std::memcpy(o, frame + subFrameIndex * S, S);
    std::memcpy(o + S, frame + S * subFrames, T);
    trailerSize = T;
    return o + S;
}

unsigned char* MX515HeaderOf(unsigned char* frame, uint32_t frameSize, uint16_t width, uint16_t height)
{
    const uint64_t P = uint64_t(width) * height * 2;
    if (!frame || P + SMX515Header::kSize > frameSize) return nullptr;
    return frame + P;
}

void PutMX515HeaderInOrder(unsigned char* header)
{
    if (Get(header, TAt<uint16_t>{0}) != kBasicDataInOrder) SBasicData::ByteSwap(header, SMX515Header::kSwapEnd);
}

SBasicFields MX515Fields(const unsigned char* header)
{
    SBasicData record;
    std::memcpy(record.bytes, header, SMX515Header::kSize);
    std::memset(record.bytes + SMX515Header::kSize, 0, SBasicData::kSize - SMX515Header::kSize);
    SBasicFields f;
    basicData::Table::Read(record.bytes, f);
    return f;
}

} // namespace orv::reduce
