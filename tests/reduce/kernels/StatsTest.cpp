// Statistics against a naive double-precision reference over random frames
// of every element type with random status bytes, plus the position helpers
// and the calculator.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "KernelTestUtil.h"
#include "reduce/kernels/Stats.h"

using namespace orv;
using namespace orv::reduce;

namespace {

struct SPix {
    unsigned flat;
    unsigned char status;
};

// The figures by their definition: first occurrence wins ties, population
// variance by two passes.
struct SRef {
    bool any = false, anyValid = false;
    double allMin = 0, allMax = 0, min = 0, max = 0;
    unsigned allMinIdx = 0, allMaxIdx = 0, minIdx = 0, maxIdx = 0;
    unsigned char minSt = 0, maxSt = 0, stAny = 0;
    double sum = 0, var = 0;
    unsigned n = 0;
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    SRef(const kt::SBuf& data, const std::vector<SPix>& pixels, bool withStatus, unsigned width)
    {
        std::vector<double> valid;
        for (const SPix& p : pixels) {
            const double v = double(data.Get(p.flat));
            const int x = int(p.flat % width), y = int(p.flat / width);
            if (!any || x < x0) x0 = any ? std::min(x0, x) : x;
            if (!any || y < y0) y0 = any ? std::min(y0, y) : y;
            if (!any || x > x1) x1 = any ? std::max(x1, x) : x;
            if (!any || y > y1) y1 = any ? std::max(y1, y) : y;
            if (!any || v < allMin) allMin = v, allMinIdx = p.flat;
            if (!any || v > allMax) allMax = v, allMaxIdx = p.flat;
            any = true;
            const unsigned char st = withStatus ? p.status : 0;
            if (st & 0x18) continue;
            stAny |= st;
            if (!anyValid || v < min) min = v, minIdx = p.flat, minSt = st;
            if (!anyValid || v > max) max = v, maxIdx = p.flat, maxSt = st;
            anyValid = true;
            valid.push_back(v);
        }
        n = unsigned(valid.size());
        for (double v : valid) sum += v;
        if (n) {
            const double mean = sum / n;
            for (double v : valid) var += (v - mean) * (v - mean);
            var /= n;
        }
        if (!withStatus && anyValid) {
            allMin = min, allMax = max, allMinIdx = minIdx, allMaxIdx = maxIdx;
        }
    }

    void Check(const CStats& s, unsigned width, const char* what) const
    {
        SCOPED_TRACE(what);
        ASSERT_EQ(s.numPixels, n);
        auto near = [](double a, double b, double scale) { return std::fabs(a - b) <= 1e-9 * scale + 1e-300; };
        if (n) {
            EXPECT_TRUE(near(s.sum, sum, (std::fabs(min) + std::fabs(max)) * n));
            EXPECT_EQ(s.minValue, min);
            EXPECT_EQ(s.maxValue, max);
            EXPECT_EQ(s.minIndex, minIdx);
            EXPECT_EQ(s.maxIndex, maxIdx);
            EXPECT_EQ(s.minStatus, minSt);
            EXPECT_EQ(s.maxStatus, maxSt);
            EXPECT_EQ(s.minPosition, SPoint(int(minIdx % width), int(minIdx / width)));
            EXPECT_EQ(s.maxPosition, SPoint(int(maxIdx % width), int(maxIdx / width)));
            EXPECT_TRUE(near(s.mean, sum / n, std::max(std::fabs(min), std::fabs(max))));
            const double m2 = std::max(min * min, max * max);
            EXPECT_TRUE(near(s.variance, var, m2 * 4)) << s.variance << " vs " << var;
            if (n > 1 && s.variance >= 0) {
                EXPECT_EQ(s.standardDeviation, std::sqrt(s.variance));
            }
            EXPECT_EQ(s.width, unsigned(x1 - x0 + 1));
            EXPECT_EQ(s.height, unsigned(y1 - y0 + 1));
        } else {
            EXPECT_EQ(s.width, 0u);
            EXPECT_EQ(s.height, 0u);
            EXPECT_EQ(s.variance, 0.0);
        }
        EXPECT_EQ(s.statusAny, stAny);
        if (any) {
            EXPECT_EQ(s.allMinValue, allMin);
            EXPECT_EQ(s.allMaxValue, allMax);
            EXPECT_EQ(s.allMinIndex, allMinIdx);
            EXPECT_EQ(s.allMaxIndex, allMaxIdx);
            EXPECT_EQ(s.allMinPosition, SPoint(int(allMinIdx % width), int(allMinIdx / width)));
            EXPECT_EQ(s.allMaxPosition, SPoint(int(allMaxIdx % width), int(allMaxIdx / width)));
        } else {
            EXPECT_EQ(s.allMinIndex, 0xFFFFFFFFu);
        }
        EXPECT_EQ(s.firstPosition, SPoint(x0, y0));
        EXPECT_EQ(s.lastPosition, SPoint(x1, y1));
        EXPECT_EQ(s.firstIndex, unsigned(y0) * width + unsigned(x0));
        EXPECT_EQ(s.lastIndex, unsigned(y1) * width + unsigned(x1));
        EXPECT_EQ(s.centerPosition.x, float(x0 + x1) * 0.5f);
        EXPECT_EQ(s.centerPosition.y, float(y0 + y1) * 0.5f);
    }
};

constexpr unsigned short W = 53, H = 41; // more than one block of the run path

struct SFrame {
    kt::SBuf data;
    std::vector<unsigned char> status;
    SFrame(EDataType t, std::mt19937& rng) : data(t, W * H), status(W * H)
    {
        for (unsigned i = 0; i < W * H; ++i) data.Set(i, kt::Sample(t, rng));
        // Ties of the extremes, later in the frame.
        data.Set(W * H - 5, data.Get(17));
        data.Set(W * H - 3, data.Get(1000));
        for (unsigned i = 0; i < W * H; ++i) {
            const unsigned r = rng() % 8;
            status[i] = (unsigned char)(r == 0 ? 0x08 : r == 1 ? 0x10 : r == 2 ? 0x1A : (rng() & 0x27));
            // Long valid stretches too, as real frames mostly are.
            if ((i / W) % 3 == 0) status[i] = (unsigned char)(rng() & 0x27);
        }
    }
};

std::vector<SPix> Rect(const std::vector<unsigned char>& st, SArea a)
{
    std::vector<SPix> r;
    for (int y = a.top; y <= a.bottom; ++y)
        for (int x = a.left; x <= a.right; ++x) r.push_back({unsigned(y * W + x), st[y * W + x]});
    return r;
}

} // namespace

TEST(GetStats, RegionFormsOverEveryTypeAgainstReference)
{
    std::mt19937 rng(11);
    const SArea full{0, 0, H - 1, W - 1}, part{3, 5, 30, 40}, fullRows{2, 0, 20, W - 1};
    TArray<SScanLine> lines{{4, 2, 50}, {40, 0, 52}, {4, 10, 12}, {9, 7, 3}, {0, 30, 30}};
    std::vector<unsigned> indices;
    for (int k = 0; k < 700; ++k) indices.push_back(unsigned(rng() % (W * H)));
    for (EDataType t : kt::kTypes) {
        SFrame f(t, rng);
        for (int withStatus = 0; withStatus < 2; ++withStatus) {
            const unsigned char* st = withStatus ? f.status.data() : nullptr;
            for (SArea a : {full, part, fullRows}) {
                CStats s;
                ASSERT_TRUE(GetStats(s, f.data.typed(), st, W, H, a));
                SRef(f.data, Rect(f.status, a), withStatus, W).Check(s, W, "rect");
                // The masked rectangle gives the whole rectangle's figures.
                std::vector<unsigned char> mask(W * H, 0);
                CStats m;
                ASSERT_TRUE(GetStats(m, f.data.typed(), st, W, H, a, mask.data(), W));
                SRef(f.data, Rect(f.status, a), withStatus, W).Check(m, W, "mask ignored");
            }
            CStats whole;
            ASSERT_TRUE(GetStats(whole, f.data.typed(), st, W, H));
            SRef(f.data, Rect(f.status, full), withStatus, W).Check(whole, W, "whole");

            std::vector<SPix> lp;
            for (const SScanLine& l : lines)
                for (int x = l.first; x <= l.last; ++x) lp.push_back({unsigned(l.row * W + x), f.status[l.row * W + x]});
            CStats sl;
            ASSERT_TRUE(GetStats(sl, f.data.typed(), st, W, H, lines));
            SRef(f.data, lp, withStatus, W).Check(sl, W, "lines");

            std::vector<SPix> ip;
            for (unsigned q : indices) ip.push_back({q, f.status[q]});
            CStats il;
            ASSERT_TRUE(GetStats(il, f.data.typed(), st, W, H, indices.data(), unsigned(indices.size())));
            SRef(f.data, ip, withStatus, W).Check(il, W, "indices");

            // The void frame form, with and without a mask of its own stride.
            std::vector<unsigned char> mask(64 * H);
            for (auto& b : mask) b = (unsigned char)(rng() % 3 ? 1 : 0);
            std::vector<SPix> mp;
            for (int y = 0; y < H; ++y)
                for (int x = 0; x < W; ++x)
                    if (mask[y * 64 + x]) mp.push_back({unsigned(y * W + x), f.status[y * W + x]});
            CStats fm;
            GetStats(fm, f.data.typed(), W, H, mask.data(), 64, const_cast<unsigned char*>(st));
            SRef(f.data, mp, withStatus, W).Check(fm, W, "frame mask");
            CStats fw;
            GetStats(fw, f.data.typed(), W, H, nullptr, 0, const_cast<unsigned char*>(st));
            SRef(f.data, Rect(f.status, full), withStatus, W).Check(fw, W, "frame");
        }
    }
}

TEST(GetStats, DenseForms)
{
    std::mt19937 rng(12);
    for (EDataType t : kt::kTypes) {
        SFrame f(t, rng);
        // Dense array: ordinals along it.
        const unsigned count = 900;
        std::vector<unsigned char> dst(count);
        for (unsigned i = 0; i < count; ++i) dst[i] = f.status[i];
        for (int withStatus = 0; withStatus < 2; ++withStatus) {
            CStats s;
            GetStats(s, f.data.typed(), withStatus ? dst.data() : nullptr, count);
            std::vector<SPix> p;
            for (unsigned i = 0; i < count; ++i) p.push_back({i, dst[i]});
            SRef(f.data, p, withStatus, count).Check(s, count, "dense");
        }
        // Gathered array with frame indices: validity from the frame status,
        // recorded status from the dense one.
        std::vector<unsigned> indices(count);
        for (auto& q : indices) q = unsigned(rng() % (W * H));
        std::vector<unsigned char> denseStatus(count);
        for (auto& d : denseStatus) d = (unsigned char)(rng() & 0x07);
        for (int withFrame = 0; withFrame < 2; ++withFrame) {
            CStats s;
            GetStats(s, f.data.typed(), denseStatus.data(), indices.data(), count,
                     withFrame ? f.status.data() : nullptr, W, H);
            // Reference over ordinals, translated afterwards.
            double mn = 0, mx = 0;
            unsigned mi = 0, xi = 0, n = 0;
            unsigned char any = 0;
            for (unsigned i = 0; i < count; ++i) {
                if (withFrame && (f.status[indices[i]] & 0x18)) continue;
                const double v = double(f.data.Get(i));
                if (!n || v < mn) mn = v, mi = i;
                if (!n || v > mx) mx = v, xi = i;
                any |= denseStatus[i];
                ++n;
            }
            EXPECT_EQ(s.numPixels, n);
            EXPECT_EQ(s.minValue, mn);
            EXPECT_EQ(s.maxValue, mx);
            EXPECT_EQ(s.minIndex, indices[mi]);
            EXPECT_EQ(s.maxIndex, indices[xi]);
            EXPECT_EQ(s.minStatus, denseStatus[mi]);
            EXPECT_EQ(s.minPosition, SPoint(int(indices[mi] % W), int(indices[mi] / W)));
            EXPECT_EQ(s.statusAny, any);
        }
    }
}

TEST(GetStats, EdgeCases)
{
    // Equal maxima: the earlier one; one valid pixel; all excluded.
    float v[6] = {1, 9, 3, 9, 2, 0};
    unsigned char st[6] = {0x08, 0, 0x10, 0, 0x18, 0x08};
    CStats s;
    s.mean = 42;
    ASSERT_TRUE(GetStats(s, STypedData(v, dtFlt32), nullptr, 3, 2));
    EXPECT_EQ(s.maxIndex, 1u);
    EXPECT_EQ(s.maxPosition, SPoint(1, 0));
    EXPECT_EQ(s.minPosition, SPoint(2, 1));

    unsigned char oneValid[6] = {0x08, 0, 0x08, 0x08, 0x08, 0x08};
    ASSERT_TRUE(GetStats(s, STypedData(v, dtFlt32), oneValid, 3, 2));
    EXPECT_EQ(s.numPixels, 1u);
    EXPECT_EQ(s.mean, 9.0);
    EXPECT_EQ(s.variance, 0.0);
    EXPECT_EQ(s.standardDeviation, 0.0);

    unsigned char none[6] = {0x08, 0x10, 0x08, 0x18, 0x08, 0x08};
    s.mean = 42;
    ASSERT_TRUE(GetStats(s, STypedData(v, dtFlt32), none, 3, 2));
    EXPECT_EQ(s.numPixels, 0u);
    EXPECT_EQ(s.mean, 42.0); // unchanged
    EXPECT_EQ(s.allMinValue, 0.0);
    EXPECT_EQ(s.allMaxValue, 9.0);
    EXPECT_EQ(s.width, 0u);
    EXPECT_EQ(s.centerPosition.x, 1.0f);
    EXPECT_EQ(s.centerPosition.y, 0.5f);
    (void)st;

    // Empty rectangle; zero width; bad types.
    ASSERT_TRUE(GetStats(s, STypedData(v, dtFlt32), nullptr, 3, 2, SArea{1, 0, 0, 2}));
    EXPECT_EQ(s.numPixels, 0u);
    EXPECT_EQ(s.allMinIndex, 0xFFFFFFFFu);
    CStats untouched;
    untouched.mean = 5;
    untouched.numPixels = 7;
    EXPECT_FALSE(GetStats(untouched, STypedData(v, dtFlt32), nullptr, 0, 2));
    EXPECT_FALSE(GetStats(untouched, STypedData(v, dtFlt32), nullptr, 3, 0));
    TArray<SScanLine> lines{{0, 0, 2}};
    unsigned idx[2] = {0, 1};
    unsigned char mask[6] = {1, 1, 1, 1, 1, 1};
    for (EDataType bad : {dtRGB24, dtRGB48, dtNoData}) {
        const STypedData d(v, bad);
        EXPECT_FALSE(GetStats(untouched, d, nullptr, 3, 2));
        EXPECT_FALSE(GetStats(untouched, d, nullptr, 3, 2, SArea{0, 0, 1, 2}));
        EXPECT_FALSE(GetStats(untouched, d, nullptr, 3, 2, lines));
        EXPECT_FALSE(GetStats(untouched, d, nullptr, 3, 2, idx, 2));
        EXPECT_FALSE(GetStats(untouched, d, nullptr, 3, 2, SArea{0, 0, 1, 2}, mask, 3));
        GetStats(untouched, d, 3, 2, mask, 3, nullptr);
        GetStats(untouched, d, nullptr, 6u);
        GetStats(untouched, d, st, idx, 2, st, 3, 2);
    }
    EXPECT_EQ(untouched.mean, 5.0);
    EXPECT_EQ(untouched.numPixels, 7u);

    // A constant region: variance 0 or a residue; the deviation is its root.
    std::vector<double> c(1000, 0.1);
    ASSERT_TRUE(GetStats(s, STypedData(c.data(), dtFlt64), nullptr, 100, 10));
    EXPECT_NEAR(s.variance, 0.0, 1e-15);
    EXPECT_EQ(std::isnan(s.standardDeviation), s.variance < 0);

    // A NaN first pixel stays the extreme, as pixel by pixel.
    float nan[4] = {std::nanf(""), 1, 5, 2};
    ASSERT_TRUE(GetStats(s, STypedData(nan, dtFlt32), nullptr, 4, 1));
    EXPECT_TRUE(std::isnan(s.minValue));
    EXPECT_EQ(s.maxIndex, 0u);
}

TEST(GetStats, CenterValue)
{
    // 3 x 3: the centre pixel itself, with its status.
    uint8_t a[9] = {0, 1, 2, 3, 200, 5, 6, 7, 8};
    unsigned char st[9] = {0, 0, 0, 0, 4, 0, 0, 0, 0};
    CStats s;
    GetStats(s, STypedData(a, dtUInt8), 3, 3, nullptr, 0, st);
    EXPECT_EQ(s.centerValue, 200.0);
    EXPECT_EQ(s.centerStatus, 4);
    // 4 x 2 (centre 1.5, 0.5): four reads; 2 x ... boundary in x only: two pixels four times.
    uint8_t b[4] = {200, 100, 50, 7};
    GetStats(s, STypedData(b, dtUInt8), 4, 1, nullptr, 0, nullptr);
    EXPECT_EQ(s.centerValue, (100 + 100 + 50 + 50) * 0.25); // promoted: no 8-bit wrap
    // Boundary in y only: two reads.
    uint32_t c[3] = {0xFFFFFFFFu, 1u, 0};
    unsigned char cs[3] = {1, 2, 0};
    GetStats(s, STypedData(c, dtUInt32), 1, 2, nullptr, 0, cs);
    EXPECT_EQ(s.centerValue, 0.0); // the addition wraps in unsigned 32-bit
    EXPECT_EQ(s.centerStatus, 3);
    // A mask moves the box and so the centre.
    uint16_t d[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    unsigned char mask[9] = {0, 0, 0, 0, 0, 1, 0, 0, 1};
    s.minValue = 77;
    GetStats(s, STypedData(d, dtUInt16), 3, 3, mask, 3, nullptr);
    EXPECT_EQ(s.numPixels, 2u);
    EXPECT_EQ(s.centerPosition.x, 2.0f);
    EXPECT_EQ(s.centerPosition.y, 1.5f);
    EXPECT_EQ(s.centerValue, (9 + 6) * 0.5);
    EXPECT_EQ(s.minValue, 6.0);
}

TEST(StatsCalculator, MatchesReferenceAndKeepsOrdinals)
{
    std::mt19937 rng(4);
    CStats s;
    CStatsCalculator calc(s);
    calc.Start();
    double sum = 0, sq = 0, mn = 0, mx = 0;
    unsigned n = 0, mi = 0, xi = 0;
    int minX = 1000, minY = 1000, maxX = -1, maxY = -1;
    for (unsigned k = 0; k < 500; ++k) {
        const double v = double(int(rng() % 2001) - 1000) / 8;
        const unsigned char st = (k % 7 == 0) ? 0x10 : (unsigned char)(rng() & 3);
        const int x = int(rng() % 50) + 10, y = int(rng() % 30) + 5;
        calc.AddData(v, st, x, y);
        minX = std::min(minX, x), minY = std::min(minY, y), maxX = std::max(maxX, x), maxY = std::max(maxY, y);
        if (st & 0x18) continue;
        if (!n || v < mn) mn = v, mi = k;
        if (!n || v > mx) mx = v, xi = k;
        sum += v, sq += v * v, ++n;
    }
    calc.Finish();
    EXPECT_EQ(s.numPixels, n);
    EXPECT_EQ(s.minIndex, mi); // ordinals count excluded pixels too
    EXPECT_EQ(s.maxIndex, xi);
    EXPECT_EQ(s.minValue, mn);
    EXPECT_NEAR(s.mean, sum / n, 1e-12);
    EXPECT_NEAR(s.variance, sq / n - (sum / n) * (sum / n), 1e-9);
    EXPECT_EQ(s.firstPosition, SPoint(minX, minY));
    EXPECT_EQ(s.lastPosition, SPoint(maxX, maxY));
    EXPECT_EQ(s.width, unsigned(maxX - minX + 1));
    EXPECT_EQ(s.centerPosition.x, float(minX + maxX) * 0.5f);
}

TEST(CalcPositions, AllForms)
{
    CStats s;
    s.minIndex = 0, s.maxIndex = 5, s.allMinIndex = 7, s.allMaxIndex = 11, s.firstIndex = 2, s.lastIndex = 100;
    CalcPositions(s, SArea{10, 20, 12, 23}); // w = 4
    EXPECT_EQ(s.minPosition, SPoint(20, 10));
    EXPECT_EQ(s.maxPosition, SPoint(21, 11));
    EXPECT_EQ(s.allMaxPosition, SPoint(23, 12));
    EXPECT_EQ(s.maxIndex, 5u); // ordinals stay

    TArray<SScanLine> lines{{3, 5, 7}, {9, 0, 4}};
    s.lastPosition = SPoint(-1, -1);
    CalcPositions(s, lines);
    EXPECT_EQ(s.maxPosition, SPoint(2, 9));
    EXPECT_EQ(s.allMinPosition, SPoint(4, 9));
    EXPECT_EQ(s.firstPosition, SPoint(7, 3));
    EXPECT_EQ(s.lastPosition, SPoint(-1, -1)); // beyond the last line

    CalcPositions(s, 4, 100);
    EXPECT_EQ(s.lastPosition, SPoint(0, 25));

    unsigned idx[3] = {13, 14, 15};
    CalcPositions(s, 4, 100, idx, 3);
    EXPECT_EQ(s.minPosition, SPoint(1, 3));
    EXPECT_EQ(s.maxPosition, SPoint(0, 0)); // ordinal 5 is outside the list: index 0

    unsigned char mask[16] = {0, 1, 0, 1, 1, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 1};
    s.minIndex = 0, s.maxIndex = 0, s.allMinIndex = 3, s.allMaxIndex = 6, s.firstIndex = 3, s.lastIndex = 50;
    s.lastPosition = SPoint(-5, -5);
    EXPECT_EQ(CalcPositions(s, SArea{0, 0, 3, 3}, mask, 4), 7u);
    EXPECT_EQ(s.minPosition, SPoint(1, 0));
    EXPECT_EQ(s.maxPosition, SPoint(1, 0));
    EXPECT_EQ(s.allMinPosition, SPoint(3, 1));
    EXPECT_EQ(s.firstPosition, SPoint(3, 1));
    EXPECT_EQ(s.allMaxPosition, SPoint(3, 3));
    EXPECT_EQ(s.lastPosition, SPoint(-5, -5));

    TArray<unsigned> list{0, 5, 9};
    TArray<SPoint> points;
    IndiciesToPoints(SArea{1, 1, 5, 3}, list, points);
    ASSERT_EQ(points.size(), 3u);
    EXPECT_EQ(points[2], SPoint(1, 4));
    IndiciesToPoints(lines, list, points);
    EXPECT_EQ(points[1], SPoint(2, 9));
    IndiciesToPoints(640, 512, list, points);
    EXPECT_EQ(points[2], SPoint(9, 0));
}
