// V410, Sarnet and MX515 filters on 640 x 512 frames, each beside a plain copy of the
// same destination bytes in the same run, and the JPEG-LS decode beside
// CharLS called directly on the same stream (megapixels per second).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#define CHARLS_NO_DEPRECATED_WARNING // the one-call API the filter uses
#include <charls/charls.h>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/MX515Filter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/SarnetFilter.h"
#include "reduce/filters/V410Filter.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr uint16_t kW = 640, kH = 512;
constexpr size_t kPixels = size_t(kW) * kH;

std::vector<uint16_t> Counts()
{
    std::vector<uint16_t> v(kPixels);
    // A smooth scene with a little noise, as a camera sees it.
    for (size_t i = 0; i < kPixels; ++i) v[i] = uint16_t(12000 + (i % kW) * 8 + (i * 2654435761u >> 28));
    return v;
}

SBasicData Record(bool bigEndian)
{
    SBasicFields f;
    f.mark = kBasicDataInOrder;
    f.emissivity = 1;
    f.R = 15000;
    f.B = 1400;
    f.F = 1;
    f.gain = 0.01f;
    SBasicData r{};
    basicData::Table::Write(f, r.bytes);
    if (bigEndian) r.ByteSwap();
    return r;
}

void PutBlock(std::vector<unsigned char>& b, size_t at, bool bigEndian, bool pixelsBigEndian)
{
    const SBasicData r = Record(bigEndian);
    const uint32_t magic = 0x464646, offset = 100, size = SBasicData::kSize;
    const uint16_t k1 = 32, k2 = 1, order = pixelsBigEndian ? 1 : 0;
    std::memcpy(&b[at], &magic, 4);
    std::memcpy(&b[at + 64], &k1, 2);
    std::memcpy(&b[at + 76], &offset, 4);
    std::memcpy(&b[at + 80], &size, 4);
    std::memcpy(&b[at + 96], &k2, 2);
    std::memcpy(&b[at + 98], &order, 2);
    std::memcpy(&b[at + 100], r.bytes, SBasicData::kSize);
}

std::vector<unsigned char> IRFrame(bool gige, bool bigEndian)
{
    const std::vector<uint16_t> c = Counts();
    std::vector<unsigned char> b(kPixels * 2 + (gige ? 32 : 0) + 100 + SBasicData::kSize);
    std::memcpy(b.data(), c.data(), kPixels * 2);
    PutBlock(b, kPixels * 2 + (gige ? 32 : 0), bigEndian, bigEndian);
    return b;
}

std::vector<unsigned char> JpegLs(size_t& length)
{
    const std::vector<uint16_t> c = Counts();
    JlsParameters p{};
    p.width = kW;
    p.height = kH;
    p.bitsPerSample = 16;
    p.components = 1;
    std::vector<unsigned char> out(kPixels * 3);
    if (JpegLsEncode(out.data(), out.size(), &length, c.data(), kPixels * 2, &p, nullptr) != CharlsApiResultType::OK)
        length = 0;
    return out;
}

void Memcpy(benchmark::State& state, size_t bytes)
{
    std::vector<unsigned char> src(bytes, 1), dst(bytes);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}

template <class Filter>
void Parse(benchmark::State& state, SGuid type, std::vector<unsigned char> frame, EDataType out)
{
    Filter filter;
    CReduceObjectArray objects;
    std::vector<unsigned char> pixels(kPixels * (out == dtRGB24 ? 3 : 2));
    uint8_t preset = 0;
    for (auto _ : state) {
        if (!filter.ParseFrame(frame.data(), type, kW, kH, uint32_t(frame.size()), STypedData(pixels.data(), out),
                               objects, preset))
            state.SkipWithError("ParseFrame failed");
        benchmark::DoNotOptimize(pixels.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(pixels.size()));
    state.counters["MP/s"] = benchmark::Counter(double(kPixels) * double(state.iterations()) / 1e6,
                                                benchmark::Counter::kIsRate);
}

void BM_Memcpy16(benchmark::State& s) { Memcpy(s, kPixels * 2); }
void BM_Memcpy24(benchmark::State& s) { Memcpy(s, kPixels * 3); }
void BM_V410_IR(benchmark::State& s) { Parse<CV410Filter>(s, guidV410F7M0, IRFrame(false, false), dtUInt16); }
void BM_V410_IR_BigEndianRecord(benchmark::State& s)
{
    Parse<CV410Filter>(s, guidV410FNM0, IRFrame(false, true), dtUInt16);
}
void BM_V410_GigE_SwappedPixels(benchmark::State& s)
{
    Parse<CV410Filter>(s, guidV410GIGE, IRFrame(true, true), dtUInt16);
}
void BM_V410_GigEFlip(benchmark::State& s) { Parse<CV410Filter>(s, guidV410GIGEFlip, IRFrame(true, false), dtUInt16); }
void BM_Sarnet_IR(benchmark::State& s)
{
    std::vector<unsigned char> f(kPixels * 2 + SMX515Header::kSize);
    const SBasicData r = Record(true);
    std::memcpy(&f[kPixels * 2], r.bytes, SMX515Header::kSize);
    Parse<CSarnetFilter>(s, guidSarnetF7M0, f, dtUInt16);
}
void BM_V410_BGR(benchmark::State& s)
{
    Parse<CV410Filter>(s, guidV410BGR8, std::vector<unsigned char>(kPixels * 3, 7), dtRGB24);
}
void BM_V410_UYVY(benchmark::State& s)
{
    Parse<CV410Filter>(s, guidV410UYVY, std::vector<unsigned char>(kPixels * 2, 90), dtRGB24);
}
void BM_V410_YUY2(benchmark::State& s)
{
    Parse<CV410Filter>(s, guidV410YUY2, std::vector<unsigned char>(kPixels * 2, 90), dtRGB24);
}

void BM_MJLS_Filter(benchmark::State& s)
{
    size_t length = 0;
    std::vector<unsigned char> jls = JpegLs(length);
    std::vector<unsigned char> f(4 + length + 100 + SBasicData::kSize);
    f[0] = uint8_t(length >> 24), f[1] = uint8_t(length >> 16), f[2] = uint8_t(length >> 8), f[3] = uint8_t(length);
    std::memcpy(&f[4], jls.data(), length);
    PutBlock(f, 4 + length, true, false);
    Parse<CV410Filter>(s, guidMJLSIR, f, dtUInt16);
}

void BM_MJLS_CharLS(benchmark::State& state)
{
    size_t length = 0;
    std::vector<unsigned char> jls = JpegLs(length);
    std::vector<uint16_t> out(kPixels);
    for (auto _ : state) {
        auto r = JpegLsDecode(out.data(), kPixels * 2, jls.data(), length, nullptr, nullptr);
        benchmark::DoNotOptimize(r);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["MP/s"] = benchmark::Counter(double(kPixels) * double(state.iterations()) / 1e6,
                                                benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_Memcpy16);
BENCHMARK(BM_V410_IR);
BENCHMARK(BM_V410_IR_BigEndianRecord);
BENCHMARK(BM_V410_GigE_SwappedPixels);
BENCHMARK(BM_V410_GigEFlip);
BENCHMARK(BM_Sarnet_IR);
BENCHMARK(BM_Memcpy24);
BENCHMARK(BM_V410_BGR);
BENCHMARK(BM_V410_UYVY);
BENCHMARK(BM_V410_YUY2);
BENCHMARK(BM_MJLS_Filter);
BENCHMARK(BM_MJLS_CharLS);
BENCHMARK_MAIN();
