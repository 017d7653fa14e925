// Element conversion of a 640 x 512 frame, beside a plain copy of the same
// destination bytes: the copy is the speed limit of the memory system.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "orv/ConvertArray.h"

namespace {

constexpr unsigned kPixels = 640 * 512;

void BM_ConvertArrayUInt16ToFloat(benchmark::State& state)
{
    std::vector<uint16_t> src(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) src[i] = uint16_t(i * 2654435761u >> 16);
    std::vector<float> dst(kPixels);
    for (auto _ : state) {
        orv::ConvertArray(orv::STypedData(dst.data(), orv::dtFlt32), orv::STypedData(src.data(), orv::dtUInt16), kPixels);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * sizeof(float));
}
BENCHMARK(BM_ConvertArrayUInt16ToFloat);

void BM_MemcpyFloatFrame(benchmark::State& state)
{
    std::vector<float> src(kPixels, 1.0f);
    std::vector<float> dst(kPixels);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), kPixels * sizeof(float));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * sizeof(float));
}
BENCHMARK(BM_MemcpyFloatFrame);

void BM_ConvertArrayDoubleToUInt16(benchmark::State& state)
{
    std::vector<double> src(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) src[i] = double(i % 70000) + 0.25;
    std::vector<uint16_t> dst(kPixels);
    for (auto _ : state) {
        orv::ConvertArray(orv::STypedData(dst.data(), orv::dtUInt16), orv::STypedData(src.data(), orv::dtFlt64), kPixels);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * sizeof(uint16_t));
}
BENCHMARK(BM_ConvertArrayDoubleToUInt16);

} // namespace

BENCHMARK_MAIN();
