// Camera filters on 640 x 512 frames, beside a plain copy of the pixels in
// the same run: TLK's ParseFrame (header, some 50 text entries, image copy)
// and its entries alone, and Bayer demosaicing in pixels a second.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "reduce/filters/BayerFilter.h"
#include "reduce/filters/Demosaic.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/TLKFilter.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr uint16_t kW = 640, kH = 512;
constexpr size_t kPixels = size_t(kW) * kH;

void Memcpy(benchmark::State& state, size_t bytes)
{
    std::vector<unsigned char> src(bytes, 1), dst(bytes);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kPixels));
}

void BM_Memcpy16(benchmark::State& state) { Memcpy(state, kPixels * 2); }
void BM_Memcpy24(benchmark::State& state) { Memcpy(state, kPixels * 3); }
void BM_Memcpy48(benchmark::State& state) { Memcpy(state, kPixels * 6); }
BENCHMARK(BM_Memcpy16);
BENCHMARK(BM_Memcpy24);
BENCHMARK(BM_Memcpy48);

// A TLK frame with a header whose every field is set and a version 0 lens
// block, so that the MX variant shows all its lens entries.
std::vector<unsigned char> TLKFrame()
{
    std::vector<unsigned char> frame(size_t(kW) * 2 * (kH + 1));
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = uint8_t(i * 2654435761u >> 24);
    frame[1] = 1;
    frame[96] = 1, frame[97] = 0;
    return frame;
}

template <class Filter>
void TLKParseFrame(benchmark::State& state, SGuid type, bool pixels)
{
    std::vector<unsigned char> frame = TLKFrame();
    std::vector<uint16_t> out(kPixels);
    Filter filter;
    CReduceObjectArray objects;
    const STypedData target = pixels ? STypedData(out.data(), dtUInt16) : STypedData();
    uint8_t preset = 0;
    for (auto _ : state) {
        filter.ParseFrame(frame.data(), type, kW, kH, uint32_t(frame.size()), target, objects, preset);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    if (pixels) state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPixels * 2));
}

void BM_TLKRVParseFrame(benchmark::State& state) { TLKParseFrame<CTLKFilterRV>(state, guidTLKRV, true); }
void BM_TLKMXParseFrame(benchmark::State& state) { TLKParseFrame<CTLKFilterMX>(state, guidTLKMX, true); }
// The per-frame text entries alone: objects, no pixels.
void BM_TLKRVEntries(benchmark::State& state) { TLKParseFrame<CTLKFilterRV>(state, guidTLKRV, false); }
void BM_TLKMXEntries(benchmark::State& state) { TLKParseFrame<CTLKFilterMX>(state, guidTLKMX, false); }
BENCHMARK(BM_TLKRVParseFrame);
BENCHMARK(BM_TLKMXParseFrame);
BENCHMARK(BM_TLKRVEntries)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TLKMXEntries)->Unit(benchmark::kMicrosecond);

template <class T>
void Demosaic(benchmark::State& state, EBayerPattern pattern)
{
    std::vector<T> mosaic(kPixels), rgb(kPixels * 3);
    for (size_t i = 0; i < kPixels; ++i) mosaic[i] = T(i * 2654435761u >> 20);
    for (auto _ : state) {
        DemosaicBilinear(mosaic.data(), rgb.data(), kW, kH, pattern);
        benchmark::DoNotOptimize(rgb.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kPixels * 3 * sizeof(T)));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(kPixels));
}

void BM_DemosaicRG8(benchmark::State& state) { Demosaic<uint8_t>(state, bayerRG); }
void BM_DemosaicGB8(benchmark::State& state) { Demosaic<uint8_t>(state, bayerGB); }
void BM_DemosaicGRBG16(benchmark::State& state) { Demosaic<uint16_t>(state, bayerGR); }
BENCHMARK(BM_DemosaicRG8);
BENCHMARK(BM_DemosaicGB8);
BENCHMARK(BM_DemosaicGRBG16);

} // namespace

BENCHMARK_MAIN();
