// Counts to temperature over a 640 x 512 unsigned 16-bit frame into float, by
// each temperature method, beside a plain copy of the destination bytes: the
// copy is the speed limit of the memory system.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "reduce/convert/RadiometryKernels.h"
#include "reduce/convert/TemperatureKernels.h"

namespace {

using namespace orv;
using namespace orv::reduce;

constexpr unsigned kPixels = 640 * 512;

struct SFrame {
    std::vector<uint16_t> counts = std::vector<uint16_t>(kPixels);
    std::vector<float> out = std::vector<float>(kPixels);
    std::vector<unsigned char> preset = std::vector<unsigned char>(kPixels); // presets 0 and 1 in turn
    double radianceCoefs[3] = {-2.0, 1.5e-3, 2e-9};
    double tempCoefs[4] = {-60.0, 25.0, -0.8, 0.02};
    std::vector<double> table, temperatures;
    SFrame()
    {
        for (unsigned i = 0; i < kPixels; ++i) {
            counts[i] = uint16_t(8000 + (i * 2654435761u >> 20) % 40000);
            preset[i] = uint8_t(i & 1);
        }
        for (int k = 0; k < 64; ++k) {
            table.push_back(0.5 * k);
            temperatures.push_back(-40.0 + 3.0 * k);
        }
    }
    SRadianceParams Radiance() { return SRadianceParams{radianceCoefs, 2, 0.0, nullptr}; }
    STypedData Src() { return STypedData(counts.data(), dtUInt16); }
    STypedData Dst() { return STypedData(out.data(), dtFlt32); }
};

const SCommonParams kCommon{1.05, 0.95, tempCelsius, 12.0, 8.0};

// Runs one frame's work per iteration; out is the frame it writes.
template <class F>
void Time(benchmark::State& state, std::vector<float>& out, F&& work)
{
    for (auto _ : state) {
        work();
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * sizeof(float));
    state.SetItemsProcessed(int64_t(state.iterations()) * kPixels);
}

void BM_CountsToTemperatureCoeffs(benchmark::State& state)
{
    SFrame f;
    const STemperatureParams t{nullptr, nullptr, 0, f.tempCoefs, 3};
    Time(state, f.out, [&] {
        CountsToTemperature(f.Src(), f.Dst(), kPixels, f.Radiance(), t, kCommon);
    });
}
BENCHMARK(BM_CountsToTemperatureCoeffs);

void BM_CountsToTemperatureLookup(benchmark::State& state)
{
    SFrame f;
    const STemperatureParams t{f.table.data(), f.temperatures.data(), int(f.table.size()), nullptr, 0};
    Time(state, f.out, [&] {
        CountsToTemperature(f.Src(), f.Dst(), kPixels, f.Radiance(), t, kCommon);
    });
}
BENCHMARK(BM_CountsToTemperatureLookup);

void BM_CountsToTemperaturePlanck(benchmark::State& state)
{
    SFrame f;
    const STemperatureParams t{};
    Time(state, f.out, [&] {
        CountsToTemperature(f.Src(), f.Dst(), kPixels, f.Radiance(), t, kCommon);
    });
}
BENCHMARK(BM_CountsToTemperaturePlanck);

// The user converter's whole-frame path: radiance into the destination, then
// the temperature step in place.
void BM_ToRadianceThenCoeffsInPlace(benchmark::State& state)
{
    SFrame f;
    Time(state, f.out, [&] {
        ToRadiance(f.Dst(), f.Src(), kPixels, f.radianceCoefs, 2, 0.0, 1.05);
        ToTemperatureCoeffs(f.Dst(), f.Dst(), kPixels, f.tempCoefs, 3, 0.95, tempCelsius);
    });
}
BENCHMARK(BM_ToRadianceThenCoeffsInPlace);

void BM_CountsToRadiance(benchmark::State& state)
{
    SFrame f;
    Time(state, f.out, [&] {
        CountsToRadiance(f.Src(), f.Dst(), kPixels, f.Radiance(), kCommon);
    });
}
BENCHMARK(BM_CountsToRadiance);

// Per-pixel presets: the radiance and temperature of each pixel in one pass,
// with the same coefficients for both presets, or (kOwn) preset 1 with its
// own (same orders): each pixel then takes its preset's, in the loops of the
// single-preset form.
template <bool kOwn>
void CountsToTemperatureCoeffsPS(benchmark::State& state)
{
    SFrame f;
    double radianceCoefs[3] = {-1.9, 1.4e-3, 3e-9}, tempCoefs[4] = {-61.0, 24.0, -0.7, 0.021};
    SRadianceParams r[8];
    STemperatureParams t[8];
    for (int p = 0; p < 8; ++p) {
        const bool own = kOwn && p == 1;
        r[p] = own ? SRadianceParams{radianceCoefs, 2, 0.0, nullptr} : f.Radiance();
        t[p] = STemperatureParams{nullptr, nullptr, 0, own ? tempCoefs : f.tempCoefs, 3};
    }
    const bool active[8] = {true, true};
    Time(state, f.out, [&] {
        CountsToTemperature(f.Src(), f.Dst(), f.preset.data(), kPixels, active, r, t, kCommon);
    });
}
BENCHMARK(CountsToTemperatureCoeffsPS<false>)->Name("BM_CountsToTemperatureCoeffsPS");
BENCHMARK(CountsToTemperatureCoeffsPS<true>)->Name("BM_CountsToTemperatureCoeffsPSMixed");

// Per preset, one table for both presets.
void BM_CountsToTemperatureLookupPS(benchmark::State& state)
{
    SFrame f;
    SRadianceParams r[8];
    STemperatureParams t[8];
    for (int p = 0; p < 8; ++p) {
        r[p] = f.Radiance();
        t[p] = STemperatureParams{f.table.data(), f.temperatures.data(), int(f.table.size()), nullptr, 0};
    }
    const bool active[8] = {true, true};
    Time(state, f.out, [&] {
        CountsToTemperature(f.Src(), f.Dst(), f.preset.data(), kPixels, active, r, t, kCommon);
    });
}
BENCHMARK(BM_CountsToTemperatureLookupPS);

// Counts to radiance with a per-pixel background, one preset and per preset.
struct SBackgroundFrame {
    SFrame f;
    std::vector<double> image = std::vector<double>(kPixels);
    SRadianceParams r[8];
    SBackgroundFrame()
    {
        for (unsigned i = 0; i < kPixels; ++i) image[i] = double(i % 97);
        for (SRadianceParams& p : r) p = SRadianceParams{f.radianceCoefs, -2, 0.0, image.data()};
    }
};

void BM_CountsToRadianceBackground(benchmark::State& state)
{
    SBackgroundFrame b;
    Time(state, b.f.out, [&] {
        CountsToRadiance(b.f.Src(), b.f.Dst(), kPixels, b.r[0], kCommon);
    });
}
BENCHMARK(BM_CountsToRadianceBackground);

void BM_CountsToRadianceBackgroundPS(benchmark::State& state)
{
    SBackgroundFrame b;
    const bool active[8] = {true, true};
    Time(state, b.f.out, [&] {
        CountsToRadiance(b.f.Src(), b.f.Dst(), b.f.preset.data(), kPixels, active, b.r, kCommon);
    });
}
BENCHMARK(BM_CountsToRadianceBackgroundPS);

// The table method of the direct path alone: radiance (double, spread over
// the 64 rows) to Celsius in float, by the kernel and by a loop over the
// reference search the kernel used to run for every pixel, in one run.
struct SRadianceFrame {
    SFrame f;
    std::vector<double> radiance = std::vector<double>(kPixels);
    SRadianceFrame()
    {
        for (unsigned i = 0; i < kPixels; ++i) radiance[i] = 31.5 * double(i * 2654435761u >> 8) / double(1u << 24);
    }
};

void BM_ToTemperatureLookupFrame(benchmark::State& state)
{
    SRadianceFrame r;
    Time(state, r.f.out, [&] {
        ToTemperatureLookup(r.f.Dst(), STypedData(r.radiance.data(), dtFlt64), kPixels, r.f.table.data(),
                            r.f.temperatures.data(), 64, true, 0.95, tempCelsius);
    });
}
BENCHMARK(BM_ToTemperatureLookupFrame);

void BM_ToTemperatureLookupReferenceSearch(benchmark::State& state)
{
    SRadianceFrame r;
    const double* t = r.f.table.data();
    const double* temp = r.f.temperatures.data();
    Time(state, r.f.out, [&] {
        for (unsigned i = 0; i < kPixels; ++i) {
            bool inside;
            r.f.out[i] = float(priv::LookupCelsius(r.radiance[i] / 0.95, t, temp, 64, inside));
        }
    });
}
BENCHMARK(BM_ToTemperatureLookupReferenceSearch);

// Radiance to temperature by the polynomial, one preset and per preset
// (the presets' own coefficients).
void BM_RadianceToTemperatureCoeffs(benchmark::State& state)
{
    SRadianceFrame r;
    const STemperatureParams t{nullptr, nullptr, 0, r.f.tempCoefs, 3};
    Time(state, r.f.out, [&] {
        RadianceToTemperature(STypedData(r.radiance.data(), dtFlt64), r.f.Dst(), kPixels, t, kCommon);
    });
}
BENCHMARK(BM_RadianceToTemperatureCoeffs);

void BM_RadianceToTemperatureCoeffsPS(benchmark::State& state)
{
    SRadianceFrame r;
    double other[4] = {-61.0, 24.0, -0.7, 0.021};
    STemperatureParams t[8];
    for (int p = 0; p < 8; ++p) t[p] = STemperatureParams{nullptr, nullptr, 0, p == 1 ? other : r.f.tempCoefs, 3};
    const bool active[8] = {true, true};
    Time(state, r.f.out, [&] {
        RadianceToTemperature(STypedData(r.radiance.data(), dtFlt64), r.f.Dst(), r.f.preset.data(), kPixels, active, t,
                              kCommon);
    });
}
BENCHMARK(BM_RadianceToTemperatureCoeffsPS);

// The table per preset, one table for both presets.
void BM_ToTemperatureLookupFramePS(benchmark::State& state)
{
    SRadianceFrame r;
    double* tables[8] = {r.f.table.data(), r.f.table.data()};
    double* temps[8] = {r.f.temperatures.data(), r.f.temperatures.data()};
    int sizes[8] = {64, 64};
    Time(state, r.f.out, [&] {
        ToTemperatureLookup(r.f.Dst(), STypedData(r.radiance.data(), dtFlt64), r.f.preset.data(), kPixels, tables,
                            temps, sizes, true, 0.95, tempCelsius);
    });
}
BENCHMARK(BM_ToTemperatureLookupFramePS);

void BM_MemcpyFloatFrame(benchmark::State& state)
{
    std::vector<float> src(kPixels, 1.0f);
    std::vector<float> dst(kPixels);
    Time(state, dst, [&] {
        std::memcpy(dst.data(), src.data(), kPixels * sizeof(float));
    });
}
BENCHMARK(BM_MemcpyFloatFrame);

} // namespace

BENCHMARK_MAIN();
