// Look-up application over every pair of element types and every region
// form, and look-up statistics against the calculator fed by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "KernelTestUtil.h"
#include "reduce/kernels/LUT.h"
#include "reduce/kernels/LUTKernels.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned short W = 9, H = 6, LOW = 3, HIGH = 40, SIZE = 48;

// The index of a value by its definition: limited, then rounded half away.
unsigned RefIndex(long double v)
{
    const float f = float(v);
    if (float(LOW) > f) return LOW;
    if (f > float(HIGH)) return HIGH;
    return unsigned(f < 0 ? -std::floor(-f + 0.5f) : std::floor(f + 0.5f));
}

struct STables {
    std::vector<float> lut[2];
    std::vector<unsigned char> status[2];
    float* luts[2];
    unsigned char* statuses[2];
    STables()
    {
        for (int p = 0; p < 2; ++p) {
            lut[p].resize(SIZE);
            status[p].resize(SIZE);
            for (unsigned k = 0; k < SIZE; ++k) {
                lut[p][k] = float(k) * (p ? -7.25f : 3.5f) + 0.25f;
                status[p][k] = (unsigned char)(p * 64 + k);
            }
            luts[p] = lut[p].data();
            statuses[p] = status[p].data();
        }
    }
};

struct SRegions {
    SArea area{1, 2, 4, 7};
    TArray<SScanLine> lines{{5, 0, 8}, {0, 3, 3}, {2, 6, 1}, {1, 1, 4}};
    std::vector<unsigned char> mask;
    std::vector<unsigned> indices{53, 0, 7, 7, 20, 31};
    unsigned stride = 11;
    std::vector<unsigned char> presets;
    SRegions()
    {
        std::mt19937 rng(2);
        mask.resize(stride * H);
        for (auto& m : mask) m = (unsigned char)(rng() % 2);
        presets.resize(W * H);
        for (auto& p : presets) p = (unsigned char)(rng() % 2);
    }
    // Flat indices of a form in region order; form 0 is the dense array.
    std::vector<unsigned> Pixels(int form) const
    {
        std::vector<unsigned> r;
        switch (form) {
        case 0: for (unsigned i = 0; i < W * H; ++i) r.push_back(i); break;
        case 1: r = indices; break;
        case 2: for (int y = area.top; y <= area.bottom; ++y) for (int x = area.left; x <= area.right; ++x) r.push_back(y * W + x); break;
        case 3: for (const SScanLine& l : lines) for (int x = l.first; x <= l.last; ++x) r.push_back(l.row * W + x); break;
        default:
            for (int y = area.top; y <= area.bottom; ++y)
                for (int x = area.left; x <= area.right; ++x)
                    if (mask[y * stride + x]) r.push_back(y * W + x);
        }
        return r;
    }
};

bool Apply(const SRegions& r, STables& t, int form, bool ps, STypedData s, STypedData d, unsigned char* st)
{
    const unsigned char* p = r.presets.data();
    const unsigned n = unsigned(r.indices.size());
    if (!ps) {
        switch (form) {
        case 0: return ApplyLUT(s, d, st, unsigned(W * H), t.luts[0], t.statuses[0], LOW, HIGH);
        case 1: return ApplyLUT(s, d, st, r.indices.data(), n, t.luts[0], t.statuses[0], LOW, HIGH);
        case 2: return ApplyLUT(s, d, st, W, H, r.area, t.luts[0], t.statuses[0], LOW, HIGH);
        case 3: return ApplyLUT(s, d, st, W, H, r.lines, t.luts[0], t.statuses[0], LOW, HIGH);
        default: return ApplyLUT(s, d, st, W, H, r.area, r.mask.data(), r.stride, t.luts[0], t.statuses[0], LOW, HIGH);
        }
    }
    switch (form) {
    case 0: return ApplyLUT(s, p, d, st, unsigned(W * H), t.luts, t.statuses, LOW, HIGH);
    case 1: return ApplyLUT(s, p, d, st, r.indices.data(), n, t.luts, t.statuses, LOW, HIGH);
    case 2: return ApplyLUT(s, p, d, st, W, H, r.area, t.luts, t.statuses, LOW, HIGH);
    case 3: return ApplyLUT(s, p, d, st, W, H, r.lines, t.luts, t.statuses, LOW, HIGH);
    default: return ApplyLUT(s, p, d, st, W, H, r.area, r.mask.data(), r.stride, t.luts, t.statuses, LOW, HIGH);
    }
}

bool Stats(const SRegions& r, STables& t, int form, bool ps, STypedData s, CStats& out)
{
    const unsigned char* p = r.presets.data();
    const unsigned n = unsigned(r.indices.size());
    if (!ps) {
        switch (form) {
        case 0: return GetStatsLUT(s, out, W, H, t.luts[0], t.statuses[0], LOW, HIGH);
        case 1: return GetStatsLUT(s, out, W, H, r.indices.data(), n, t.luts[0], t.statuses[0], LOW, HIGH);
        case 2: return GetStatsLUT(s, out, W, H, r.area, t.luts[0], t.statuses[0], LOW, HIGH);
        case 3: return GetStatsLUT(s, out, W, H, r.lines, t.luts[0], t.statuses[0], LOW, HIGH);
        default: return GetStatsLUT(s, out, W, H, r.area, r.mask.data(), r.stride, t.luts[0], t.statuses[0], LOW, HIGH);
        }
    }
    switch (form) {
    case 0: return GetStatsLUT(s, p, out, W, H, t.luts, t.statuses, LOW, HIGH);
    case 1: return GetStatsLUT(s, p, out, W, H, r.indices.data(), n, t.luts, t.statuses, LOW, HIGH);
    case 2: return GetStatsLUT(s, p, out, W, H, r.area, t.luts, t.statuses, LOW, HIGH);
    case 3: return GetStatsLUT(s, p, out, W, H, r.lines, t.luts, t.statuses, LOW, HIGH);
    default: return GetStatsLUT(s, p, out, W, H, r.area, r.mask.data(), r.stride, t.luts, t.statuses, LOW, HIGH);
    }
}

// Values around and beyond the table range, with halves for float types.
long double LUTSample(EDataType t, std::mt19937& rng)
{
    const int k = int(rng() % 60) - 8;
    if (kt::IsFloat(t)) return (long double)(float(k) + float(rng() % 4) * 0.25f);
    if (!kt::IsSigned(t) && k < 0) return kt::Sample(t, rng); // large unsigned values
    if (t == dtInt8 || t == dtInt16 || t == dtInt32 || t == dtInt64) return (rng() % 5 == 0) ? kt::Sample(t, rng) : k;
    return k;
}

} // namespace

TEST(ApplyLUT, EveryPairEveryFormAgainstReference)
{
    SRegions r;
    STables t;
    std::mt19937 rng(9);
    for (EDataType st : kt::kTypes) {
        kt::SBuf src(st, W * H);
        for (unsigned i = 0; i < W * H; ++i) src.Set(i, LUTSample(st, rng));
        for (EDataType dt : kt::kTypes)
            for (int form = 0; form < 5; ++form)
                for (int ps = 0; ps < 2; ++ps)
                    for (int withStatus = 0; withStatus < 2; ++withStatus) {
                        const auto pixels = r.Pixels(form);
                        kt::SBuf dst(dt, pixels.size() + 1);
                        std::vector<unsigned char> status(pixels.size() + 1, 0xCC);
                        ASSERT_TRUE(Apply(r, t, form, ps, src.typed(), dst.typed(), withStatus ? status.data() : nullptr));
                        for (size_t i = 0; i < pixels.size(); ++i) {
                            const unsigned flat = pixels[i];
                            const unsigned p = ps ? r.presets[flat] : 0;
                            const unsigned idx = RefIndex(src.Get(flat));
                            ASSERT_TRUE(kt::SameValue(dst.Get(i), kt::RefConvert(t.lut[p][idx], dtFlt32, dt)))
                                << st << "->" << dt << " form " << form << " ps " << ps << " i " << i;
                            ASSERT_EQ(status[i], withStatus ? t.status[p][idx] : 0xCC);
                        }
                        ASSERT_EQ(status[pixels.size()], 0xCC);
                        ASSERT_EQ(dst.Get(pixels.size()), kt::SBuf(dt, 1).Get(0));
                    }
    }
}

TEST(ApplyLUT, IndexRuleValues)
{
    std::vector<float> lut(101);
    std::vector<unsigned char> ls(101, 0);
    for (unsigned k = 0; k <= 100; ++k) lut[k] = float(k);
    float values[6] = {10.5f, 10.4f, -3.0f, 250.0f, 99.5f, std::nanf("")};
    float out[6];
    ASSERT_TRUE(ApplyLUT(STypedData(values, dtFlt32), STypedData(out, dtFlt32), nullptr, 6u, lut.data(), ls.data(), 0, 100));
    EXPECT_EQ(out[0], 11.0f);
    EXPECT_EQ(out[1], 10.0f);
    EXPECT_EQ(out[2], 0.0f);
    EXPECT_EQ(out[3], 100.0f);
    EXPECT_EQ(out[4], 100.0f);
    EXPECT_EQ(out[5], 0.0f); // NaN rounds to index 0
    int32_t ints[3] = {10, -70000, 70000};
    ASSERT_TRUE(ApplyLUT(STypedData(ints, dtInt32), STypedData(out, dtFlt32), nullptr, 3u, lut.data(), ls.data(), 5, 90));
    EXPECT_EQ(out[0], 10.0f);
    EXPECT_EQ(out[1], 5.0f);
    EXPECT_EQ(out[2], 90.0f);
}

TEST(GetStatsLUT, EveryFormAgainstCalculator)
{
    SRegions r;
    STables t;
    t.status[0][10] = 0x08; // an invalid entry
    t.status[1][20] = 0x10;
    std::mt19937 rng(10);
    for (EDataType st : kt::kTypes) {
        kt::SBuf src(st, W * H);
        for (unsigned i = 0; i < W * H; ++i) src.Set(i, LUTSample(st, rng));
        for (int form = 0; form < 5; ++form)
            for (int ps = 0; ps < 2; ++ps) {
                CStats got, want;
                ASSERT_TRUE(Stats(r, t, form, ps, src.typed(), got));
                CStatsCalculator calc(want);
                calc.Start();
                for (unsigned flat : r.Pixels(form)) {
                    const unsigned p = ps ? r.presets[flat] : 0;
                    const unsigned idx = RefIndex(src.Get(flat));
                    calc.AddData(double(t.lut[p][idx]), t.status[p][idx], int(flat % W), int(flat / W));
                }
                calc.Finish();
                SCOPED_TRACE(testing::Message() << "type " << st << " form " << form << " ps " << ps);
                EXPECT_EQ(got.numPixels, want.numPixels);
                EXPECT_EQ(got.sum, want.sum);
                EXPECT_EQ(got.variance, want.variance);
                EXPECT_EQ(got.minValue, want.minValue);
                EXPECT_EQ(got.maxIndex, want.maxIndex);
                EXPECT_EQ(got.minPosition, want.minPosition);
                EXPECT_EQ(got.allMaxPosition, want.allMaxPosition);
                EXPECT_EQ(got.statusAny, want.statusAny);
                EXPECT_EQ(got.firstPosition, want.firstPosition);
                EXPECT_EQ(got.centerPosition.x, want.centerPosition.x);
            }
    }

    // All pixels invalid: no valid pixels, the all* figures set.
    std::vector<unsigned char> bad(SIZE, 0x18);
    uint8_t frame[4] = {5, 6, 7, 8};
    CStats s;
    ASSERT_TRUE(GetStatsLUT(STypedData(frame, dtUInt8), s, 2, 2, t.luts[0], bad.data(), LOW, HIGH));
    EXPECT_EQ(s.numPixels, 0u);
    EXPECT_EQ(s.allMinValue, t.lut[0][5]);
    EXPECT_EQ(s.allMaxIndex, 3u);
    // A zero height: Start and Finish only.
    ASSERT_TRUE(GetStatsLUT(STypedData(frame, dtUInt8), s, 2, 0, t.luts[0], t.statuses[0], LOW, HIGH));
    EXPECT_EQ(s.allMinIndex, 0xFFFFFFFFu);
}

TEST(ApplyLUT, BadTypesTouchNothing)
{
    SRegions r;
    STables t;
    std::vector<double> src(W * H, 4.0);
    for (int form = 0; form < 5; ++form)
        for (int ps = 0; ps < 2; ++ps)
            for (int side = 0; side < 2; ++side) {
                std::vector<double> out(W * H, -1.0);
                std::vector<unsigned char> status(W * H, 0xCC);
                const STypedData s(src.data(), side ? dtFlt64 : dtRGB48), d(out.data(), side ? dtNoData : dtFlt64);
                EXPECT_FALSE(Apply(r, t, form, ps, s, d, status.data()));
                for (size_t i = 0; i < out.size(); ++i) {
                    ASSERT_EQ(out[i], -1.0);
                    ASSERT_EQ(status[i], 0xCC);
                }
                CStats stats;
                stats.mean = 3;
                EXPECT_FALSE(Stats(r, t, form, ps, STypedData(src.data(), dtRGB24), stats));
                EXPECT_EQ(stats.mean, 3.0);
                EXPECT_EQ(stats.allMinIndex, 0u);
            }
}

// Unsigned 16-bit to float may take the AVX2 loop, with or without limits:
// every path copies the same bits as the limited loop of a wider source type
// over the same values, and reads no entry past the upper limit.
TEST(ApplyLUT, U16PathsCopyTheSameBits)
{
    std::mt19937 rng(14);
    const unsigned kEntries = 65536, n = 1000 + 13; // a tail after the last 16
    std::vector<float> lut(kEntries);
    std::vector<unsigned char> ls(kEntries);
    for (unsigned k = 0; k < kEntries; ++k) {
        const uint32_t bits = rng(); // any pattern, NaNs included
        std::memcpy(&lut[k], &bits, 4);
        ls[k] = (unsigned char)(rng() >> 24);
    }
    std::vector<uint16_t> src(n);
    std::vector<uint32_t> src32(n);
    for (unsigned i = 0; i < n; ++i) src32[i] = src[i] = uint16_t(i < 8 ? (i & 1 ? 65535 - i : i) : rng());
    auto run = [&](auto apply, bool withStatus) {
        std::pair<std::vector<float>, std::vector<unsigned char>> out{std::vector<float>(n + 1, 7.0f),
                                                                      std::vector<unsigned char>(n + 1, 0xCC)};
        apply(out.first.data(), withStatus ? out.second.data() : nullptr);
        return out;
    };
    for (const auto& [low, high] : {std::pair<unsigned short, unsigned short>{0, 65535}, {900, 40000}, {7, 7}})
        for (int withStatus = 0; withStatus < 2; ++withStatus) {
            // Exactly as long as the limits need.
            std::vector<float> values(lut.begin(), lut.begin() + high + 1);
            std::vector<unsigned char> flags(ls.begin(), ls.begin() + high + 1);
            const auto want = run([&](float* d, unsigned char* st) {
                ApplyLUT(STypedData(src32.data(), dtUInt32), STypedData(d, dtFlt32), st, n, values.data(),
                         flags.data(), low, high);
            }, withStatus);
            const auto dispatched = run([&](float* d, unsigned char* st) {
                ApplyLUT(STypedData(src.data(), dtUInt16), STypedData(d, dtFlt32), st, n, values.data(), flags.data(),
                         low, high);
            }, withStatus);
            const auto plain = run([&](float* d, unsigned char* st) {
                priv::ApplyLUTU16Plain(src.data(), d, st, n, values.data(), flags.data(), low, high);
            }, withStatus);
            bool hasWide = false;
            const auto wideRun = run([&](float* d, unsigned char* st) {
                hasWide = priv::ApplyLUTU16Wide(src.data(), d, st, n, values.data(), flags.data(), low, high);
            }, withStatus);
            EXPECT_EQ(want.second[n - 1], withStatus ? flags[std::clamp(src[n - 1], low, high)] : 0xCC);
            for (const auto* got : {&dispatched, &plain, &wideRun}) {
                if (got == &wideRun && !hasWide) continue; // no AVX2 here: the plain loop serves
                EXPECT_EQ(std::memcmp(got->first.data(), want.first.data(), (n + 1) * 4), 0) << low << " " << high;
                EXPECT_EQ(got->second, want.second) << low << " " << high;
            }
        }
    // A status table flagged at both ends and here and there between, as
    // converters build them: blocks inside the zero run take the stored-zeros
    // path, the others their looked-up status, with the same bytes.
    for (unsigned k = 0; k < kEntries; ++k) ls[k] = k < 900 || k > 60000 || k % 4099 == 0 ? 0x08 : 0;
    std::vector<uint16_t> scene(65536 + 5);
    for (unsigned i = 0; i < scene.size(); ++i) scene[i] = uint16_t(i % 7 == 0 ? rng() : 20000 + i % 3000);
    for (const auto& [low, high] : {std::pair<unsigned short, unsigned short>{0, 65535}, {1000, 50000}}) {
        std::vector<float> wantValues(scene.size()), gotValues(scene.size());
        std::vector<unsigned char> wantFlags(scene.size()), gotFlags(scene.size());
        priv::ApplyLUTU16Plain(scene.data(), wantValues.data(), wantFlags.data(), unsigned(scene.size()), lut.data(),
                               ls.data(), low, high);
        ApplyLUT(STypedData(scene.data(), dtUInt16), STypedData(gotValues.data(), dtFlt32), gotFlags.data(),
                 unsigned(scene.size()), lut.data(), ls.data(), low, high);
        EXPECT_EQ(std::memcmp(gotValues.data(), wantValues.data(), scene.size() * 4), 0);
        EXPECT_EQ(gotFlags, wantFlags);
    }
    // Per-pixel presets: runs of one preset (blocks that take the wide loop
    // with their preset's table and zero run) between mixed stretches, the
    // same bits as the walker over a 32-bit source.
    {
        std::vector<float> lut2(kEntries), lut3(kEntries);
        std::vector<unsigned char> ls2(kEntries), ls3(kEntries, 0);
        for (unsigned k = 0; k < kEntries; ++k) {
            lut2[k] = lut[(k * 7) % kEntries];
            lut3[k] = -lut[k];
            ls2[k] = k > 30000 ? 0x04 : 0;
        }
        float* luts[3] = {lut.data(), lut2.data(), lut3.data()};
        unsigned char* flags[3] = {ls.data(), ls2.data(), ls3.data()};
        std::vector<unsigned char> presets(scene.size());
        for (unsigned i = 0; i < presets.size(); ++i)
            presets[i] = (unsigned char)(i % 5000 < 4000 ? (i / 5000) % 3 : rng() % 3);
        std::vector<uint32_t> scene32(scene.begin(), scene.end());
        const unsigned n = unsigned(scene.size());
        for (const auto& [low, high] : {std::pair<unsigned short, unsigned short>{0, 65535}, {1000, 50000}}) {
            std::vector<float> wantValues(n), gotValues(n);
            std::vector<unsigned char> wantFlags(n), gotFlags(n);
            ApplyLUT(STypedData(scene32.data(), dtUInt32), presets.data(), STypedData(wantValues.data(), dtFlt32),
                     wantFlags.data(), n, luts, flags, low, high);
            ApplyLUT(STypedData(scene.data(), dtUInt16), presets.data(), STypedData(gotValues.data(), dtFlt32),
                     gotFlags.data(), n, luts, flags, low, high);
            EXPECT_EQ(std::memcmp(gotValues.data(), wantValues.data(), n * 4), 0) << low;
            EXPECT_EQ(gotFlags, wantFlags) << low;
            ApplyLUT(STypedData(scene.data(), dtUInt16), presets.data(), STypedData(gotValues.data(), dtFlt32),
                     nullptr, n, luts, flags, low, high);
            EXPECT_EQ(std::memcmp(gotValues.data(), wantValues.data(), n * 4), 0) << low;
        }
    }
    // An 8-bit source under a table that covers 0 .. 255 skips the limits too.
    std::vector<uint8_t> bytes(n);
    for (unsigned i = 0; i < n; ++i) bytes[i] = uint8_t(src[i]);
    std::vector<double> got(n), want(n);
    std::vector<unsigned char> gotStatus(n), wantStatus(n);
    ApplyLUT(STypedData(bytes.data(), dtUInt8), STypedData(got.data(), dtFlt64), gotStatus.data(), n, lut.data(),
             ls.data(), 0, 255);
    for (unsigned i = 0; i < n; ++i) {
        want[i] = lut[bytes[i]];
        wantStatus[i] = ls[bytes[i]];
    }
    EXPECT_EQ(std::memcmp(got.data(), want.data(), n * 8), 0);
    EXPECT_EQ(gotStatus, wantStatus);
}

// The zero run is all zeros, and it is the longest one when runs are long.
TEST(ApplyLUT, LongestZeroRunOfStatusTables)
{
    std::mt19937 rng(15);
    for (int trial = 0; trial < 200; ++trial) {
        const unsigned n = 1 + rng() % 3000;
        std::vector<unsigned char> st(n, 0);
        for (int f = int(rng() % 6); f > 0; --f) { // flagged stretches
            const unsigned at = rng() % n, len = 1 + rng() % 300;
            for (unsigned k = at; k < std::min(n, at + len); ++k) st[k] = (unsigned char)(1 + rng() % 255);
        }
        unsigned bestLen = 0, run = 0;
        for (unsigned k = 0; k < n; ++k) {
            run = st[k] ? 0 : run + 1;
            bestLen = std::max(bestLen, run);
        }
        const priv::SZeroRun z = priv::LongestZeroRun(st.data(), n);
        if (z.low > z.high) {
            EXPECT_LT(bestLen, 16u) << trial;
            continue;
        }
        ASSERT_LT(z.high, n);
        for (unsigned k = z.low; k <= z.high; ++k) ASSERT_EQ(st[k], 0) << trial << " at " << k;
        if (bestLen >= 16) {
            EXPECT_EQ(z.high - z.low + 1, bestLen) << trial;
        }
    }
}

