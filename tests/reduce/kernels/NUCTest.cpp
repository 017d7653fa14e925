// ApplyNUC over every supported pair of element types, all 16 combinations
// of gain, offset, map and clamp, against a reference computed on values.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "KernelTestUtil.h"
#include "reduce/kernels/NUC.h"

using namespace orv;
using namespace orv::reduce;
using kt::IsFloat;

namespace {

bool HasKernel(EDataType d, EDataType s)
{
    return d != dtUInt64 && s != dtUInt64 && !(d == dtInt32 && s == dtInt8);
}

// The corrected value of one pixel, worked out on values.
long double RefNUC(long double s, EDataType st, EDataType dt, const float* g, const short* o, bool clamp,
                   double mn, double mx)
{
    long double v;
    EDataType vt;
    if (!g && !o) {
        v = s;
        vt = st;
    } else if (!g) {
        if (st == dtFlt32) {
            v = float(float(*o) + float(s));
            vt = dtFlt32;
        } else if (st == dtFlt64) {
            v = double(*o) + double(s);
            vt = dtFlt64;
        } else if (!IsFloat(dt)) {
            v = kt::WrapInteger(__int128(s) + *o, kt::Bits(dt), kt::IsSigned(dt)); // wraps in the destination
            vt = dt;
        } else if (dt == dtFlt64) {
            v = kt::WrapInteger(__int128(s) + *o, 64, true);
            vt = dtInt64;
        } else {
            const int bits = std::max(32, kt::Bits(st));
            v = kt::WrapInteger(__int128(s) + *o, bits, kt::Bits(st) < 32 || kt::IsSigned(st));
            vt = dtInt64;
        }
    } else {
        if (st == dtFlt64) {
            const double p = double(*g) * double(s);
            v = o ? p + double(*o) : p;
            vt = dtFlt64;
        } else {
            const float p = float(s) * *g;
            v = o ? float(p + float(*o)) : p;
            vt = dtFlt32;
        }
    }
    long double d = kt::RefConvert(v, vt, dt);
    if (clamp) {
        const long double lo = kt::RefConvert(mn, dtFlt64, dt), hi = kt::RefConvert(mx, dtFlt64, dt);
        if (lo > d) d = lo;
        else if (hi < d) d = hi;
    }
    return d;
}

struct SArrays {
    std::vector<float> gain;
    std::vector<short> offset;
    std::vector<unsigned> map;
    SArrays(size_t n, std::mt19937& rng) : gain(n), offset(n), map(n)
    {
        for (auto& g : gain) g = 0.5f + float(rng() % 1000) / 666.0f;
        for (auto& o : offset) o = short(int(rng() % 601) - 300);
        for (size_t k = 0; k < n; ++k) map[k] = (rng() % 4 == 0) ? unsigned(rng() % n) : unsigned(k);
    }
};

} // namespace

TEST(ApplyNUC, PlainAndIndexFormsOverAllPairsAndCombinations)
{
    constexpr unsigned N = 300; // more than one block of the vector path
    std::mt19937 rng(3);
    SArrays arrays(N, rng);
    std::vector<unsigned> indices(N / 2);
    for (auto& q : indices) q = unsigned(rng() % N);
    const double mn = -50.5, mx = 1000.25;
    for (EDataType st : kt::kTypes) {
        kt::SBuf src(st, N);
        // 64-bit sources stay where a product with a gain below 2 keeps within
        // the signed 64-bit range, in which the rule is defined.
        for (unsigned i = 0; i < N; ++i)
            src.Set(i, st == dtInt64 ? (long double)(int64_t(kt::Sample(st, rng)) / 4) : kt::Sample(st, rng));
        // Some pixels of a small range, so that clamping has both outcomes.
        for (unsigned i = 0; i < N; i += 3) src.Set(i, (long double)(int(rng() % 1200) - 100));
        if (st == dtUInt8 || st == dtUInt16 || st == dtUInt32 || st == dtUInt64)
            for (unsigned i = 0; i < N; i += 3) src.Set(i, (long double)(rng() % 1200));
        if (st == dtInt8 || st == dtUInt8)
            for (unsigned i = 0; i < N; i += 3) src.Set(i, (long double)(rng() % 100));
        for (EDataType dt : kt::kTypes) {
            for (unsigned combo = 0; combo < 16; ++combo) {
                float* g = (combo & 8) ? arrays.gain.data() : nullptr;
                short* o = (combo & 4) ? arrays.offset.data() : nullptr;
                unsigned* m = (combo & 2) ? arrays.map.data() : nullptr;
                const bool clamp = combo & 1;
                for (int indexed = 0; indexed < 2; ++indexed) {
                    const unsigned n = indexed ? unsigned(indices.size()) : N;
                    kt::SBuf dst(dt, n);
                    const kt::SBuf before = dst;
                    if (indexed) ApplyNUC(dst.typed(), src.typed(), indices.data(), n, g, o, m, clamp, mn, mx);
                    else ApplyNUC(dst.typed(), src.typed(), n, g, o, m, clamp, mn, mx);
                    if (!HasKernel(dt, st)) {
                        ASSERT_EQ(dst.bytes, before.bytes) << dt << " from " << st;
                        continue;
                    }
                    for (unsigned i = 0; i < n; ++i) {
                        const unsigned q = indexed ? indices[i] : i;
                        const unsigned k = m ? m[q] : q;
                        const unsigned j = m ? m[q] : i;
                        const long double want = RefNUC(src.Get(j), st, dt, g ? &g[k] : nullptr,
                                                        o ? &o[k] : nullptr, clamp, mn, mx);
                        ASSERT_TRUE(kt::SameValue(dst.Get(i), want))
                            << dt << " from " << st << " combo " << combo << " indexed " << indexed << " i " << i
                            << " got " << double(dst.Get(i)) << " want " << double(want);
                    }
                    ASSERT_EQ(dst.bytes.back(), 0xA5);
                }
            }
        }
    }
}

TEST(ApplyNUC, PresetFormsOverAllPairs)
{
    constexpr unsigned N = 40;
    std::mt19937 rng(5);
    std::vector<SArrays> sets;
    for (int p = 0; p < 4; ++p) sets.emplace_back(N, rng);
    // Preset 0 has everything, 1 gain only, 2 offset and map, 3 nothing.
    float* gains[4] = {sets[0].gain.data(), sets[1].gain.data(), nullptr, nullptr};
    short* offsets[4] = {sets[0].offset.data(), nullptr, sets[2].offset.data(), nullptr};
    unsigned* maps[4] = {sets[0].map.data(), nullptr, sets[2].map.data(), nullptr};
    std::vector<unsigned char> presets(N);
    for (auto& p : presets) p = (unsigned char)(rng() % 4);
    std::vector<unsigned> indices(N / 2);
    for (auto& q : indices) q = unsigned(rng() % N);
    const double mn = 2.0, mx = 500.0;
    for (EDataType st : kt::kTypes) {
        kt::SBuf src(st, N);
        for (unsigned i = 0; i < N; ++i) src.Set(i, (long double)(rng() % 120));
        for (EDataType dt : kt::kTypes) {
            for (int clamp = 0; clamp < 2; ++clamp) {
                for (int indexed = 0; indexed < 2; ++indexed) {
                    const unsigned n = indexed ? unsigned(indices.size()) : N;
                    kt::SBuf dst(dt, n);
                    const kt::SBuf before = dst;
                    if (indexed)
                        ApplyNUC(dst.typed(), src.typed(), indices.data(), presets.data(), n, gains, offsets, maps,
                                 clamp, mn, mx);
                    else
                        ApplyNUC(dst.typed(), src.typed(), presets.data(), n, gains, offsets, maps, clamp, mn, mx);
                    if (!HasKernel(dt, st)) {
                        ASSERT_EQ(dst.bytes, before.bytes);
                        continue;
                    }
                    for (unsigned i = 0; i < n; ++i) {
                        const unsigned q = indexed ? indices[i] : i;
                        const unsigned p = presets[q];
                        unsigned k = q;
                        // The unclamped index-list form reads map[p][i]: kept as it is.
                        if (maps[p]) k = (indexed && clamp) ? maps[p][q] : maps[p][i];
                        const long double want =
                            RefNUC(src.Get(k), st, dt, gains[p] ? &gains[p][k] : nullptr,
                                   offsets[p] ? &offsets[p][k] : nullptr, clamp, mn, mx);
                        ASSERT_TRUE(kt::SameValue(dst.Get(i), want))
                            << dt << " from " << st << " clamp " << clamp << " indexed " << indexed << " i " << i;
                    }
                }
            }
        }
    }
}

TEST(ApplyNUC, DocumentedValues)
{
    uint16_t counts[2] = {1000, 1001};
    float gain[2] = {1.5f, 1.5f};
    short offset[2] = {-100, 0};
    uint16_t out[2] = {};
    ApplyNUC(STypedData(out, dtUInt16), STypedData(counts, dtUInt16), 1u, gain, offset, nullptr, false, 0, 0);
    EXPECT_EQ(out[0], 1400);
    ApplyNUC(STypedData(out, dtUInt16), STypedData(counts, dtUInt16), 2u, gain, nullptr, nullptr, false, 0, 0);
    EXPECT_EQ(out[1], 1501); // 1501.5 truncated

    // 70000 wraps to 4464 before the clamp, which then lets it pass.
    uint16_t c = 35000;
    float two = 2.0f;
    ApplyNUC(STypedData(out, dtUInt16), STypedData(&c, dtUInt16), 1u, &two, nullptr, nullptr, true, 0, 65535);
    EXPECT_EQ(out[0], 4464);

    // Offset only wraps in the destination's width.
    uint16_t s = 65530;
    short plus = 10;
    ApplyNUC(STypedData(out, dtUInt16), STypedData(&s, dtUInt16), 1u, nullptr, &plus, nullptr, false, 0, 0);
    EXPECT_EQ(out[0], 4);

    // Rounding differs from the merge: 5 * 0.5 gives 2 here.
    uint16_t five = 5;
    float half = 0.5f;
    ApplyNUC(STypedData(out, dtUInt16), STypedData(&five, dtUInt16), 1u, &half, nullptr, nullptr, false, 0, 0);
    EXPECT_EQ(out[0], 2);

    // A float destination clamps and lets NaN through.
    float values[3] = {-5.0f, 50.0f, std::nanf("")};
    float clamped[3];
    ApplyNUC(STypedData(clamped, dtFlt32), STypedData(values, dtFlt32), 3u, nullptr, nullptr, nullptr, true, 0, 10);
    EXPECT_EQ(clamped[0], 0.0f);
    EXPECT_EQ(clamped[1], 10.0f);
    EXPECT_TRUE(std::isnan(clamped[2]));

    // A PS pixel whose preset has no arrays is converted only.
    double d[2] = {7.9, -3.2};
    int16_t i16[2] = {};
    unsigned char presets[2] = {1, 1};
    float* gains[2] = {gain, nullptr};
    short* offsets[2] = {offset, nullptr};
    unsigned* maps[2] = {nullptr, nullptr};
    ApplyNUC(STypedData(i16, dtInt16), STypedData(d, dtFlt64), presets, 2u, gains, offsets, maps, false, 0, 0);
    EXPECT_EQ(i16[0], 7);
    EXPECT_EQ(i16[1], -3);
}

TEST(ApplyNUC, NothingHappensForBadTypesHolesAndCounts)
{
    int8_t src[4] = {1, 2, 3, 4};
    float gain[4] = {2, 2, 2, 2};
    short offset[4] = {1, 1, 1, 1};
    unsigned map[4] = {0, 1, 2, 3};
    unsigned idx[4] = {0, 1, 2, 3};
    unsigned char presets[4] = {0, 0, 0, 0};
    float* gains[1] = {gain};
    short* offsets[1] = {offset};
    unsigned* maps[1] = {map};
    struct SCase {
        EDataType d, s;
        unsigned count;
    } cases[] = {{dtInt32, dtInt8, 4}, {dtUInt64, dtInt8, 4}, {dtInt16, dtUInt64, 4}, {dtRGB24, dtInt8, 4},
                 {dtInt16, dtNoData, 4}, {dtInt16, dtInt8, 0}, {dtInt16, dtInt8, 0x80000000u}};
    for (const SCase& c : cases) {
        int64_t out[4] = {-9, -9, -9, -9};
        const STypedData d(out, c.d), s(src, c.s);
        ApplyNUC(d, s, c.count, gain, offset, map, true, 0, 100);
        ApplyNUC(d, s, presets, c.count, gains, offsets, maps, true, 0, 100);
        ApplyNUC(d, s, idx, c.count, gain, offset, map, false, 0, 100);
        ApplyNUC(d, s, idx, presets, c.count, gains, offsets, maps, false, 0, 100);
        for (int64_t v : out) EXPECT_EQ(v, -9) << c.d << " " << c.s << " " << c.count;
    }
}
