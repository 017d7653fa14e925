// Region masks and region statistics on a 640 x 512 frame. Rasterising is
// held beside clearing the mask (the least UpdateBitmask does); the figures
// of 20 regions over one frame beside one whole-frame GetStats of that frame.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "reduce/kernels/Stats.h"
#include "reduce/roi/RoiList.h"
#include "reduce/roi/RoiMeasure.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned short kW = 640, kH = 512;
constexpr unsigned kPixels = unsigned(kW) * kH;

// A 100-vertex star around the frame centre covering about half of it.
TSharedPtr<SRoi> Star()
{
    TSharedPtr<SRoi> r(new SRoi);
    r->type = roiPolygon;
    for (int i = 0; i < 100; ++i) {
        double a = 2 * M_PI * i / 100, rad = (i % 2 ? 0.95 : 0.75) * 300;
        r->points.add(SPointF(320 + rad * std::cos(a), 256 + 0.85 * rad * std::sin(a)));
    }
    r->CreateBitmask(kW, kH);
    return r;
}

// Half the frame: pi a b = 640 * 512 / 2.
TSharedPtr<SRoi> HalfEllipse()
{
    const double k = std::sqrt(2 / M_PI);
    TSharedPtr<SRoi> r = CreateEllipseRoi("e", SPointF(320, 256), SSizeF{320 * k, 256 * k});
    r->CreateBitmask(kW, kH);
    return r;
}

void BM_ClearMask(benchmark::State& state)
{
    TSharedPtr<SRoi> r = Star();
    for (auto _ : state) {
        std::memset(r->bitmask, 0, size_t(r->bitmaskStride) * r->bitmaskHeight);
        benchmark::ClobberMemory();
    }
}

void BM_UpdateBitmaskPolygon100(benchmark::State& state)
{
    TSharedPtr<SRoi> r = Star();
    for (auto _ : state) {
        r->UpdateBitmask();
        benchmark::ClobberMemory();
    }
}

void BM_UpdateBitmaskEllipseHalfFrame(benchmark::State& state)
{
    TSharedPtr<SRoi> r = HalfEllipse();
    for (auto _ : state) {
        r->UpdateBitmask();
        benchmark::ClobberMemory();
    }
}

std::vector<float> Frame()
{
    std::vector<float> v(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) v[i] = 20.0f + float((i * 2654435761u >> 20) % 1000) * 0.01f;
    return v;
}

std::vector<unsigned char> Status()
{
    std::vector<unsigned char> s(kPixels);
    for (unsigned i = 0; i < kPixels; ++i) s[i] = (i * 2654435761u >> 24) % 16 == 0 ? 0x08 : 0;
    return s;
}

void BM_GetStatsWholeFrame(benchmark::State& state)
{
    std::vector<float> f = Frame();
    std::vector<unsigned char> s = Status();
    CStats stats;
    for (auto _ : state) {
        GetStats(stats, STypedData(f.data(), dtFlt32), s.data(), kW, kH);
        benchmark::DoNotOptimize(stats.mean);
    }
}

// Twenty regions of every shape spread over the frame, together about as
// many pixels as the frame; plus the image region.
void BM_Stats20Regions(benchmark::State& state)
{
    CRoiList list;
    list.SetImageSize(kW, kH);
    for (int i = 0; i < 20; ++i) {
        double x = 20 + (i % 5) * 125, y = 20 + (i / 5) * 125;
        switch (i % 4) {
        case 0: list.add(CreateRectRoi("r", SRectF{y, x, y + 110, x + 110})); break;
        case 1: list.add(CreateEllipseRoi("e", SPointF(x + 55, y + 55), SSizeF{55, 50})); break;
        case 2: list.add(CreateLineRoi("l", SPointF(x, y), SPointF(x + 110, y + 90))); break;
        default: {
            TSharedPtr<SRoi> p(new SRoi);
            p->type = roiPolygon;
            for (int k = 0; k < 12; ++k)
                p->points.add(SPointF(x + 55 + 55 * std::cos(k * M_PI / 6), y + 55 + (k % 2 ? 30 : 55) * std::sin(k * M_PI / 6)));
            p->originalPoints = p->points;
            list.add(p);
        }
        }
    }
    std::vector<float> f = Frame();
    std::vector<unsigned char> s = Status();
    CRoiMeter meter;
    meter.Prepare(list);
    SRoiFigures fig;
    for (auto _ : state) {
        for (size_t i = 1; i < meter.size(); ++i) {
            meter.Measure(i, STypedData(f.data(), dtFlt32), s.data(), fig);
            benchmark::DoNotOptimize(fig.stats.mean);
        }
    }
}

} // namespace

BENCHMARK(BM_ClearMask);
BENCHMARK(BM_UpdateBitmaskPolygon100);
BENCHMARK(BM_UpdateBitmaskEllipseHalfFrame);
BENCHMARK(BM_GetStatsWholeFrame);
BENCHMARK(BM_Stats20Regions);

BENCHMARK_MAIN();
