// A 640 x 512 unsigned 16-bit frame to float temperature through
// CConvertContext with a user calibration, beside memcpy of the same
// destination bytes (the speed limit of the memory system):
//  - the table path: the look-up kernel over a table built once;
//  - the look-up kernel alone over a ready table, and the table build alone
//    (what a parameter change costs), so that the table path can be checked
//    against kernel + build / frames;
//  - the table path with a parameter change before every frame (one build
//    per frame);
//  - the direct path, forced by a per-pixel background.
// Each is run for the three temperature methods (0 table, 1 polynomial,
// 2 Planck); the status array is written in all of them.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "reduce/convert/ConvertContext.h"
#include "reduce/convert/UserConverter.h"
#include "reduce/kernels/LUT.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace {

using namespace orv;
using namespace orv::reduce;

constexpr unsigned short kWidth = 640, kHeight = 512;
constexpr unsigned kPixels = unsigned(kWidth) * kHeight;

// A recording with a user calibration: radiance polynomial of order 2, and
// the temperature step by the method of the benchmark's argument.
struct SRecording {
    CReduceObjectArray objs;
    CConvertContext ctx;
    std::vector<uint16_t> counts = std::vector<uint16_t>(kPixels);
    std::vector<float> out = std::vector<float>(kPixels);
    std::vector<unsigned char> status = std::vector<unsigned char>(kPixels);

    SRecording(int method, bool backgroundImage)
    {
        TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(true);
        info->baseUnit = unitCounts;
        info->imageWidth = kWidth;
        info->imageHeight = kHeight;
        TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(true);
        params->emissivity = 0.95f;
        params->estAtmosphericTransmission = 0.9f;

        TSharedPtr<CRCalReduceObject> cal =
            objs.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
        cal->valid = true;
        CRCalFile& file = cal->rcal;
        file.SetBandpass(8.0, 14.0);
        file.SetCoefficients(0, 2, TArray<double>{1.0e-3, 3.5e-7, 2.0e-12});
        if (method == 0) {
            TArray<double> r, t;
            for (int k = 0; k < 64; ++k) {
                r.add(0.001 + 0.0002 * k);
                t.add(-50.0 + 3.0 * k);
            }
            file.SetLookup(0, r, t);
        } else if (method == 1) {
            file.SetTempCoefficients(0, 3, TArray<double>{-62.0, 16500.0, -2.1e5, 1.0e6});
        }
        if (backgroundImage) {
            TArray<double> image;
            image.resize(kPixels);
            for (unsigned i = 0; i < kPixels; ++i) image[i] = double(i % 97);
            file.SetBackgroundImage(0, kWidth, kHeight, image);
        }

        for (unsigned i = 0; i < kPixels; ++i) counts[i] = uint16_t(2000 + (i * 2654435761u >> 20) % 12000);
        ctx.setReduceObjs(&objs);
        bool presets[1] = {true};
        if (!ctx.SetUnit(unitTemperatureUser, tempCelsius) || !ctx.Update(presets, 1, 0)) std::abort();
    }
    CUserConverter& user() { return *static_cast<CUserConverter*>(ctx.converter().get()); }
    bool Convert()
    {
        return ctx.Convert(STypedData(counts.data(), dtUInt16), STypedData(out.data(), dtFlt32), status.data(),
                           kPixels);
    }
};

void Finish(benchmark::State& state)
{
    state.SetBytesProcessed(int64_t(state.iterations()) * kPixels * sizeof(float));
}

void BM_Memcpy(benchmark::State& state)
{
    std::vector<float> src(kPixels, 1.0f), dst(kPixels);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), kPixels * sizeof(float));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_Memcpy);

// The bytes the table path writes: float values and a status byte each.
void BM_MemcpyWithStatus(benchmark::State& state)
{
    std::vector<unsigned char> src(kPixels * 5, 1), dst(kPixels * 5);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), src.size());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_MemcpyWithStatus);

void BM_TablePath(benchmark::State& state)
{
    SRecording rec(int(state.range(0)), false);
    if (!rec.Convert()) state.SkipWithError("conversion failed");
    for (auto _ : state) {
        rec.Convert();
        benchmark::DoNotOptimize(rec.out.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_TablePath)->DenseRange(0, 2);

// The look-up kernel alone, over the converter's own table.
void BM_LookupKernel(benchmark::State& state)
{
    SRecording rec(int(state.range(0)), false);
    if (!rec.user().UpdateLUT(0)) state.SkipWithError("no table");
    float* lut = rec.user().lut[0];
    unsigned char* lutStatus = rec.user().lutStatus[0];
    for (auto _ : state) {
        ApplyLUT(STypedData(rec.counts.data(), dtUInt16), STypedData(rec.out.data(), dtFlt32), rec.status.data(),
                 kPixels, lut, lutStatus, 0, 65535);
        benchmark::DoNotOptimize(rec.out.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_LookupKernel)->DenseRange(0, 2);

// A parameter change invalidates the table; the next frame rebuilds it.
void BM_TableBuild(benchmark::State& state)
{
    SRecording rec(int(state.range(0)), false);
    CObjectParametersReduceObject params;
    params.emissivity = 0.9f;
    params.estAtmosphericTransmission = 0.9f;
    for (auto _ : state) {
        rec.ctx.ChangeObjectParameters(&params);
        rec.user().UpdateLUT(0);
        benchmark::DoNotOptimize(rec.user().lut[0]);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_TableBuild)->DenseRange(0, 2);

// A parameter change before every frame: one table build per frame.
void BM_TablePathRebuildEachFrame(benchmark::State& state)
{
    SRecording rec(int(state.range(0)), false);
    CObjectParametersReduceObject params;
    params.emissivity = 0.9f;
    params.estAtmosphericTransmission = 0.9f;
    for (auto _ : state) {
        rec.ctx.ChangeObjectParameters(&params);
        rec.Convert();
        benchmark::DoNotOptimize(rec.out.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_TablePathRebuildEachFrame)->DenseRange(0, 2);

// A per-pixel background makes the mapping depend on position: every pixel
// is computed.
void BM_DirectPath(benchmark::State& state)
{
    SRecording rec(int(state.range(0)), true);
    if (rec.user().canUseLUT()) state.SkipWithError("expected the direct path");
    if (!rec.Convert()) state.SkipWithError("conversion failed");
    for (auto _ : state) {
        rec.Convert();
        benchmark::DoNotOptimize(rec.out.data());
        benchmark::ClobberMemory();
    }
    Finish(state);
}
BENCHMARK(BM_DirectPath)->DenseRange(0, 2);

} // namespace

BENCHMARK_MAIN();
