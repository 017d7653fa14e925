// Marlowe and Tessel frames of 640 x 512 through their converters' tables,
// beside a copy of the destination bytes (values and status) and the plain
// look-up kernel on the same frame; the tables' build times; the Marlowe
// parallel array form on 1 and 2 threads; per-pixel presets against one.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include <tbb/global_control.h>

#include "reduce/families/marlowe/MarloweConverter.h"
#include "reduce/families/tessel/TesselConverter.h"
#include "reduce/kernels/LUT.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned kPixels = 640 * 512;

struct SFrame {
    std::vector<uint16_t> counts = std::vector<uint16_t>(kPixels);
    std::vector<unsigned char> presets = std::vector<unsigned char>(kPixels);
    std::vector<float> out = std::vector<float>(kPixels);
    std::vector<unsigned char> status = std::vector<unsigned char>(kPixels);
    SFrame()
    {
        for (unsigned i = 0; i < kPixels; ++i) {
            counts[i] = uint16_t(1000 + (i * 2654435761u >> 18) % 14000);
            presets[i] = uint8_t((i / 640) % 3 == 0 ? 0 : 1);
        }
    }
};

void MarloweCal(CMarloweFactoryCalReduceObject& cal, int order)
{
    cal.polyOrder = order;
    const double c[7] = {1.4e-5, 8.6e-8, 1e-13, 0, 0, 1e-25, 0};
    for (int i = 0; i < 7; ++i) cal.coeffs[i] = c[i];
    cal.rbfR = 0.032;
    cal.rbfB = 1400.0;
    cal.rbfF = 1.0;
    cal.atmX = 0.8;
    cal.atmA1 = 0.006569;
    cal.atmA2 = 0.01262;
    cal.atmB1 = 0.0005;
    cal.atmB2 = 0.001;
    cal.minTemperature = -20.0f;
    cal.maxTemperature = 150.0f;
    cal.minCounts = 1000;
    cal.maxCounts = 15000;
    cal.valid = true;
}

void Recording(CReduceObjectArray& objs, bool tessel)
{
    auto info = objs.GetSourceInfo(true);
    info->baseUnit = unitCounts;
    info->imageWidth = 640;
    info->imageHeight = 512;
    for (int i = 0; i < 2; ++i) {
        info->presets[i].available = true;
        if (tessel) {
            auto t = objs.GetObjectOfType(CTesselFactoryCalReduceObject::typeID, i, true)
                         .DynamicCast<CTesselFactoryCalReduceObject>();
            namespace rec = tesselRecord;
            const std::pair<TAt<float>, float> fields[] = {
                {rec::R, 500000.0f}, {rec::B, 1430.0f}, {rec::F, 1.0f}, {rec::X, 0.8f}, {rec::alpha1, 0.0066f},
                {rec::alpha2, 0.0126f}, {rec::clampHighTemp, 443.15f}, {rec::validHighTemp, 423.15f},
                {rec::validLowTemp, 253.15f}, {rec::clampLowTemp, 233.15f}, {rec::rangeHighTemp, 443.15f},
                {rec::rangeLowTemp, 233.15f}};
            for (const auto& [field, value] : fields) t->SetFloat(field, value);
            t->valid = true;
        } else {
            auto m = objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, i, true)
                         .DynamicCast<CMarloweFactoryCalReduceObject>();
            MarloweCal(*m, i == 0 ? 2 : 5);
        }
    }
    objs.GetObjectParameters(true)->emissivity = 0.95f;
}

template <class C>
void Ready(C& conv, CReduceObjectArray& objs, bool tessel, unsigned presets)
{
    Recording(objs, tessel);
    bool active[8] = {true, presets > 1};
    conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, active, 8, 0);
}

void Bytes(benchmark::State& state)
{
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * (sizeof(float) + 1));
}

void BM_MemcpyDestination(benchmark::State& state)
{
    SFrame f;
    std::vector<float> values(kPixels, 1.0f);
    std::vector<unsigned char> status(kPixels, 0);
    for (auto _ : state) {
        std::memcpy(f.out.data(), values.data(), kPixels * sizeof(float));
        std::memcpy(f.status.data(), status.data(), kPixels);
        benchmark::ClobberMemory();
    }
    Bytes(state);
}
BENCHMARK(BM_MemcpyDestination);

void BM_PlainApplyLUT(benchmark::State& state)
{
    SFrame f;
    std::vector<float> lut(16384, 1.5f);
    std::vector<unsigned char> lutStatus(16384, 0);
    for (auto _ : state) {
        ApplyLUT(STypedData(f.counts.data(), dtUInt16), STypedData(f.out.data(), dtFlt32), f.status.data(), kPixels,
                 lut.data(), lutStatus.data(), 0, 16383);
        benchmark::ClobberMemory();
    }
    Bytes(state);
}
BENCHMARK(BM_PlainApplyLUT);

template <class C, bool Tessel, bool PerPreset>
void BM_Frame(benchmark::State& state)
{
    SFrame f;
    CReduceObjectArray objs;
    C conv;
    Ready(conv, objs, Tessel, PerPreset ? 2 : 1);
    const STypedData src(f.counts.data(), dtUInt16), dst(f.out.data(), dtFlt32);
    for (auto _ : state) {
        if constexpr (PerPreset)
            conv.BaseToOutput(src, f.presets.data(), dst, f.status.data(), kPixels);
        else
            conv.BaseToOutput(src, dst, f.status.data(), kPixels);
        benchmark::ClobberMemory();
    }
    Bytes(state);
}
BENCHMARK(BM_Frame<CMarloweConverter, false, false>)->Name("BM_MarloweFrame");
BENCHMARK(BM_Frame<CMarloweConverter, false, true>)->Name("BM_MarloweFramePerPreset");
BENCHMARK(BM_Frame<CTesselConverter, true, false>)->Name("BM_TesselFrame");
BENCHMARK(BM_Frame<CTesselConverter, true, true>)->Name("BM_TesselFramePerPreset");

void BM_MarloweTableBuild(benchmark::State& state)
{
    tbb::global_control threads(tbb::global_control::max_allowed_parallelism, size_t(state.range(0)));
    CMarloweFactoryCalReduceObject cal;
    MarloweCal(cal, 5);
    CObjectParametersReduceObject p;
    CMrlConv m;
    m.Init(cal, p);
    std::vector<float> lut(16384);
    std::vector<unsigned char> st(16384);
    for (auto _ : state) {
        m.SignalToTemperature(0, 16383, lut.data(), st.data(), tempCelsius);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MarloweTableBuild)->Arg(1)->Arg(2)->UseRealTime();

void BM_TesselTableBuild(benchmark::State& state)
{
    CReduceObjectArray objs;
    CTesselConverter conv;
    Ready(conv, objs, true, 1);
    for (auto _ : state) {
        conv.conv[0]->updateLUT();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_TesselTableBuild);

// The per-pixel parallel form over a whole frame, no table.
void BM_MarloweParallelArray(benchmark::State& state)
{
    tbb::global_control threads(tbb::global_control::max_allowed_parallelism, size_t(state.range(0)));
    SFrame f;
    CMarloweFactoryCalReduceObject cal;
    MarloweCal(cal, 5);
    CObjectParametersReduceObject p;
    CMrlConv m;
    m.Init(cal, p);
    for (auto _ : state) {
        m.SignalToTemperature(f.counts.data(), f.out.data(), f.status.data(), kPixels, tempCelsius);
        benchmark::ClobberMemory();
    }
    Bytes(state);
}
BENCHMARK(BM_MarloweParallelArray)->Arg(1)->Arg(2)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
