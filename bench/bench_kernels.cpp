// Pixel kernels on a 640 x 512 frame, each beside a plain copy of the same
// destination bytes in the same run: the copy is the memory system's limit,
// and the ratio of the two is what the kernels are held to.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "reduce/kernels/ImageData.h"
#include "reduce/kernels/LUT.h"
#include "reduce/kernels/LUTKernels.h"
#include "reduce/kernels/NUC.h"
#include "reduce/kernels/Stats.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned short kW = 640, kH = 512;
constexpr unsigned kPixels = unsigned(kW) * kH;

// 4,096 distinct counts from 2,000 on, scattered: about the spread of a
// scene, so the slice of a table they touch (16 KB of floats) stays in L1.
std::vector<uint16_t> Counts()
{
    std::vector<uint16_t> v(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) v[i] = uint16_t(2000 + (i * 2654435761u >> 20) % 12000);
    return v;
}

std::vector<unsigned char> Status()
{
    std::vector<unsigned char> s(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) s[i] = (i * 2654435761u >> 24) % 16 == 0 ? 0x08 : 0;
    return s;
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

// Destination bytes: 16-bit frame, 32-bit frame, 32-bit frame plus status.
void BM_Memcpy16(benchmark::State& state) { Memcpy(state, kPixels * 2); }
void BM_Memcpy32(benchmark::State& state) { Memcpy(state, kPixels * 4); }
void BM_Memcpy32Status(benchmark::State& state) { Memcpy(state, kPixels * 5); }
BENCHMARK(BM_Memcpy16);
BENCHMARK(BM_Memcpy32);
BENCHMARK(BM_Memcpy32Status);

void BM_ApplyLUTUInt16ToFloatStatus(benchmark::State& state)
{
    auto src = Counts();
    std::vector<float> lut(16384), dst(kPixels);
    std::vector<unsigned char> lutStatus(16384, 0), status(kPixels);
    for (unsigned k = 0; k < lut.size(); ++k) lut[k] = 250.0f + float(k) * 0.01f;
    for (auto _ : state) {
        ApplyLUT(STypedData(src.data(), dtUInt16), STypedData(dst.data(), dtFlt32), status.data(), kPixels,
                 lut.data(), lutStatus.data(), 1000, 15000);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 5);
}
BENCHMARK(BM_ApplyLUTUInt16ToFloatStatus);

// The whole-range table every counts frame goes through (no limits), by the
// dispatched kernel and by each of its two loops.
template <int kPath>
void ApplyLUTFull(benchmark::State& state)
{
    auto src = Counts();
    std::vector<float> lut(65536), dst(kPixels);
    std::vector<unsigned char> lutStatus(65536, 0), status(kPixels);
    for (unsigned k = 0; k < lut.size(); ++k) lut[k] = 250.0f + float(k) * 0.01f;
    // Flagged below and above the calibrated range, as converters build them.
    for (unsigned k = 0; k < lut.size(); ++k) lutStatus[k] = k < 1000 || k > 60000 ? 0x08 : 0;
    if (kPath == 2 && !priv::ApplyLUTU16Wide(src.data(), dst.data(), status.data(), kPixels, lut.data(),
                                             lutStatus.data(), 0, 65535))
        state.SkipWithError("no AVX2 on this processor");
    for (auto _ : state) {
        if (kPath == 0)
            ApplyLUT(STypedData(src.data(), dtUInt16), STypedData(dst.data(), dtFlt32), status.data(), kPixels,
                     lut.data(), lutStatus.data(), 0, 65535);
        else if (kPath == 1)
            priv::ApplyLUTU16Plain(src.data(), dst.data(), status.data(), kPixels, lut.data(), lutStatus.data(), 0,
                                   65535);
        else
            priv::ApplyLUTU16Wide(src.data(), dst.data(), status.data(), kPixels, lut.data(), lutStatus.data(), 0,
                                  65535);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 5);
}
// Below memcpy's speed lies the floor of any look-up: a plain loop of one
// table load per pixel and a status fill, over the same arrays, with no
// limits and no status look-up.
void BM_LookupPlainLoop(benchmark::State& state)
{
    auto src = Counts();
    std::vector<float> lut(65536), dst(kPixels);
    std::vector<unsigned char> status(kPixels);
    for (unsigned k = 0; k < lut.size(); ++k) lut[k] = 250.0f + float(k) * 0.01f;
    for (auto _ : state) {
        const uint16_t* s = src.data();
        const float* t = lut.data();
        float* d = dst.data();
        for (unsigned i = 0; i < kPixels; ++i) d[i] = t[s[i]];
        std::memset(status.data(), 0, kPixels);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 5);
}
BENCHMARK(BM_LookupPlainLoop);

void BM_ApplyLUTFullRangeStatus(benchmark::State& state) { ApplyLUTFull<0>(state); }
void BM_ApplyLUTFullRangeStatusPlain(benchmark::State& state) { ApplyLUTFull<1>(state); }
void BM_ApplyLUTFullRangeStatusWide(benchmark::State& state) { ApplyLUTFull<2>(state); }
BENCHMARK(BM_ApplyLUTFullRangeStatus);
BENCHMARK(BM_ApplyLUTFullRangeStatusPlain);
BENCHMARK(BM_ApplyLUTFullRangeStatusWide);

// A rectangle of 64 x 64 in the middle of the frame: 64 rows, each a call of
// the dense loop, so what a call costs beyond its pixels shows.
void BM_ApplyLUTRect64(benchmark::State& state)
{
    auto src = Counts();
    std::vector<float> lut(65536, 1.5f), dst(64 * 64);
    std::vector<unsigned char> lutStatus(65536, 0), status(64 * 64);
    const SArea area{224, 288, 287, 351};
    for (auto _ : state) {
        ApplyLUT(STypedData(src.data(), dtUInt16), STypedData(dst.data(), dtFlt32), status.data(), kW, kH, area,
                 lut.data(), lutStatus.data(), 0, 65535);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * 64 * 64 * 5);
}
BENCHMARK(BM_ApplyLUTRect64);

void NUC(benchmark::State& state, bool clamp)
{
    auto src = Counts();
    std::vector<uint16_t> dst(kPixels);
    std::vector<float> gain(kPixels);
    std::vector<short> offset(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) {
        gain[i] = 0.9f + float(i % 97) * 0.002f;
        offset[i] = short(int(i % 61) - 30);
    }
    for (auto _ : state) {
        ApplyNUC(STypedData(dst.data(), dtUInt16), STypedData(src.data(), dtUInt16), kPixels, gain.data(),
                 offset.data(), nullptr, clamp, 0.0, 16383.0);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 2);
}
// The correction reads a float gain and a 16-bit offset per pixel besides
// the frame: four times the destination's bytes. This loop reads and writes
// the same arrays with next to no arithmetic, the floor for any correction.
void BM_NUCArraysPlainLoop(benchmark::State& state)
{
    auto src = Counts();
    std::vector<uint16_t> dst(kPixels);
    std::vector<float> gain(kPixels, 1.0f);
    std::vector<short> offset(kPixels, 1);
    for (auto _ : state) {
        for (unsigned i = 0; i < kPixels; ++i) dst[i] = uint16_t(src[i] + offset[i] + (gain[i] > 0.5f));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 2);
}
BENCHMARK(BM_NUCArraysPlainLoop);

void BM_ApplyNUCUInt16GainOffset(benchmark::State& state) { NUC(state, false); }
void BM_ApplyNUCUInt16GainOffsetClamp(benchmark::State& state) { NUC(state, true); }
BENCHMARK(BM_ApplyNUCUInt16GainOffset);
BENCHMARK(BM_ApplyNUCUInt16GainOffsetClamp);

// Status: none, one invalid pixel in sixteen at random, or all valid.
void Stats(benchmark::State& state, bool withStatus, bool allValid = false)
{
    std::vector<float> frame(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) frame[i] = 20.0f + float((i * 2654435761u) >> 22) * 0.01f;
    auto status = allValid ? std::vector<unsigned char>(kPixels, 0) : Status();
    CStats stats;
    for (auto _ : state) {
        GetStats(stats, STypedData(frame.data(), dtFlt32), withStatus ? status.data() : nullptr, kW, kH);
        benchmark::DoNotOptimize(stats);
    }
    // Compared with a copy of the frame's bytes.
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 4);
}
void BM_GetStatsFloat(benchmark::State& state) { Stats(state, false); }
void BM_GetStatsFloatStatus(benchmark::State& state) { Stats(state, true); }
void BM_GetStatsFloatStatusAllValid(benchmark::State& state) { Stats(state, true, true); }
BENCHMARK(BM_GetStatsFloat);
BENCHMARK(BM_GetStatsFloatStatus);
BENCHMARK(BM_GetStatsFloatStatusAllValid);

void BM_ConvertSubArrayRectUInt16ToFloat(benchmark::State& state)
{
    auto src = Counts();
    std::vector<float> dst(kPixels);
    const SArea all{0, 0, kH - 1, kW - 1};
    for (auto _ : state) {
        GetImageData(STypedData(src.data(), dtUInt16), nullptr, STypedData(dst.data(), dtFlt32), nullptr, kW, kH, all);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 4);
}
BENCHMARK(BM_ConvertSubArrayRectUInt16ToFloat);

void BM_GetImageDataMaskFloat(benchmark::State& state)
{
    std::vector<float> src(kPixels, 1.0f), dst(kPixels);
    auto status = Status();
    std::vector<unsigned char> dstStatus(kPixels), mask(kPixels, 1);
    const SArea all{0, 0, kH - 1, kW - 1};
    for (auto _ : state) {
        GetImageData(STypedData(src.data(), dtFlt32), status.data(), STypedData(dst.data(), dtFlt32), dstStatus.data(),
                     kW, kH, all, mask.data(), kW);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * 5);
}
BENCHMARK(BM_GetImageDataMaskFloat);

} // namespace

BENCHMARK_MAIN();
