// Ombria and Corvane frames of 640 x 512 counts to temperature on the table
// path, beside the plain look-up kernel on the same frame and a copy of the
// destination bytes (values and status) in the same run; the table builds;
// Corvane's per-pixel preset path beside its single-preset path.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "reduce/families/corvane/CorvaneConverter.h"
#include "reduce/families/ombria/OmbriaConverter.h"
#include "reduce/kernels/LUT.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned kPixels = 640 * 512;

struct SFrame {
    std::vector<uint16_t> counts = std::vector<uint16_t>(kPixels);
    std::vector<uint8_t> presets = std::vector<uint8_t>(kPixels);
    std::vector<float> out = std::vector<float>(kPixels);
    std::vector<uint8_t> status = std::vector<uint8_t>(kPixels);
    SFrame()
    {
        for (unsigned i = 0; i < kPixels; ++i) {
            counts[i] = uint16_t(12000 + (i * 2654435761u >> 16) % 24000);
            presets[i] = uint8_t(i % 3);
        }
    }
    STypedData src() { return STypedData(counts.data(), dtUInt16); }
    STypedData dst() { return STypedData(out.data(), dtFlt32); }
};

void Count(benchmark::State& state)
{
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * (sizeof(float) + 1));
}

void BM_MemcpyDestination(benchmark::State& state)
{
    SFrame f;
    std::vector<float> values(kPixels, 1.0f);
    std::vector<uint8_t> status(kPixels, 0);
    for (auto _ : state) {
        std::memcpy(f.out.data(), values.data(), kPixels * sizeof(float));
        std::memcpy(f.status.data(), status.data(), kPixels);
        benchmark::DoNotOptimize(f.out.data());
        benchmark::ClobberMemory();
    }
    Count(state);
}
BENCHMARK(BM_MemcpyDestination);

void BM_ApplyLUTPlain(benchmark::State& state)
{
    SFrame f;
    std::vector<float> lut(65536);
    std::vector<uint8_t> lutStatus(65536, 0);
    for (unsigned i = 0; i < 65536; ++i) lut[i] = float(i) * 0.01f;
    for (auto _ : state) {
        ApplyLUT(f.src(), f.dst(), f.status.data(), kPixels, lut.data(), lutStatus.data(), 0, 65535);
        benchmark::DoNotOptimize(f.out.data());
        benchmark::ClobberMemory();
    }
    Count(state);
}
BENCHMARK(BM_ApplyLUTPlain);

// ---- Ombria -------------------------------------------------------------------

struct SOmbria {
    CReduceObjectArray objs;
    COmbriaConverter conv;
    SOmbria()
    {
        auto cal = objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true)
                       .DynamicCast<COmbriaFactoryCalReduceObject>();
        cal->adjust.offset = -1000;
        cal->adjust.gain = 0.5f;
        cal->adjust.imgLow = 10;
        cal->adjust.imgHigh = 65000;
        SCalibParams& c = cal->calib;
        c.R = 500000.0f;
        c.B = 1400.0f;
        c.F = 1.0f;
        c.alpha1 = 0.006569f;
        c.alpha2 = 0.01262f;
        c.beta1 = -0.002276f;
        c.beta2 = -0.00667f;
        c.X = 1.9f;
        c.clampLowTemp = 223.15f;
        c.validLowTemp = 233.15f;
        c.validHighTemp = 473.15f;
        c.clampHighTemp = 483.15f;
        c.rangeLowTemp = 233.15f;
        c.rangeHighTemp = 473.15f;
        cal->valid = true;
        bool active[1] = {true};
        conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, active, 1, 0);
    }
};

void BM_OmbriaFrame(benchmark::State& state)
{
    SFrame f;
    SOmbria o;
    for (auto _ : state) {
        o.conv.BaseToOutput(f.src(), f.dst(), f.status.data(), kPixels);
        benchmark::DoNotOptimize(f.out.data());
        benchmark::ClobberMemory();
    }
    Count(state);
}
BENCHMARK(BM_OmbriaFrame);

void BM_OmbriaTableBuild(benchmark::State& state)
{
    SOmbria o;
    for (auto _ : state) {
        o.conv.lutValid = false;
        o.conv.UpdateLUT();
        benchmark::DoNotOptimize(o.conv.lut);
    }
}
BENCHMARK(BM_OmbriaTableBuild)->Unit(benchmark::kMillisecond);

// ---- Corvane ------------------------------------------------------------------

struct SCorvane {
    CReduceObjectArray objs;
    CCorvaneConverter conv;
    SCorvane()
    {
        for (int p = 0; p < 3; ++p) {
            auto cal = objs.GetObjectOfType(CCorvaneFactoryCalReduceObject::typeID, p, true)
                           .DynamicCast<CCorvaneFactoryCalReduceObject>();
            cal->curveType = 2;
            cal->a = 0.016986f;
            cal->b = -1.0f / 1400.0f;
            cal->c = 150.0f;
            cal->f = 0.5f;
            cal->minCounts = 200;
            cal->maxCounts = 64000;
            cal->minTemp = 233.15f;
            cal->maxTemp = 473.15f;
            cal->integrationTime = 200.0f / float(1 << p);
            cal->valid = true;
        }
        auto params = objs.GetObjectParameters(true);
        params->emissivity = 0.95f;
        bool active[3] = {true, true, true};
        conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, active, 3, 0);
    }
};

void BM_CorvaneFrame(benchmark::State& state)
{
    SFrame f;
    SCorvane c;
    for (auto _ : state) {
        c.conv.BaseToOutput(f.src(), f.dst(), f.status.data(), kPixels);
        benchmark::DoNotOptimize(f.out.data());
        benchmark::ClobberMemory();
    }
    Count(state);
}
BENCHMARK(BM_CorvaneFrame);

void BM_CorvaneFramePerPixelPreset(benchmark::State& state)
{
    SFrame f;
    SCorvane c;
    for (auto _ : state) {
        c.conv.BaseToOutput(f.src(), f.presets.data(), f.dst(), f.status.data(), kPixels);
        benchmark::DoNotOptimize(f.out.data());
        benchmark::ClobberMemory();
    }
    Count(state);
}
BENCHMARK(BM_CorvaneFramePerPixelPreset);

void BM_CorvaneTableBuild(benchmark::State& state)
{
    SCorvane c;
    for (auto _ : state) {
        c.conv.lutValid[0] = false;
        c.conv.UpdateLUT(0);
        benchmark::DoNotOptimize(c.conv.lut[0]);
    }
}
BENCHMARK(BM_CorvaneTableBuild)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
