// Preset merging: candidate order, both selection rules, and the rounding of
// the unsigned 16-bit kernel with and without clamp.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "reduce/kernels/Abate.h"

using namespace orv;
using namespace orv::reduce;

namespace {

struct SConfig {
    bool present[8] = {};
    unsigned char order[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    unsigned short low[8] = {1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000};
    unsigned short high[8] = {15000, 15000, 15000, 15000, 15000, 15000, 15000, 15000};
};

// Half away from zero, by formula.
double HalfAway(double f) { return f < 0 ? -std::floor(-f + 0.5) : std::floor(f + 0.5); }

} // namespace

TEST(Abate, SelectionRules)
{
    // Three presets present: 2, 5, 6, in the order 6, 2, 5.
    SConfig cfg;
    cfg.present[2] = cfg.present[5] = cfg.present[6] = true;
    const unsigned char order[8] = {6, 2, 7, 5, 0, 1, 3, 4};
    std::copy(order, order + 8, cfg.order);
    cfg.high[6] = 100;
    cfg.high[2] = 200;
    cfg.high[5] = 300;
    cfg.low[6] = 10;
    cfg.low[2] = 20;
    cfg.low[5] = 30;
    // Pixel values of each preset: columns are pixels.
    std::vector<uint16_t> f6 = {50, 150, 400, 100, 5, 9};
    std::vector<uint16_t> f2 = {60, 160, 410, 250, 200, 8};
    std::vector<uint16_t> f5 = {70, 170, 420, 260, 30, 7};
    void* frames[8] = {};
    frames[6] = f6.data();
    frames[2] = f2.data();
    frames[5] = f5.data();
    const unsigned n = unsigned(f6.size());
    std::vector<uint16_t> out(n);
    std::vector<unsigned char> which(n);
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      nullptr, nullptr, nullptr, false, 0, 0));
    // Mode 0: first candidate not above its high limit, else the last.
    const unsigned char want0[] = {6, 2, 5, 6, 6, 6};
    const uint16_t value0[] = {50, 160, 420, 100, 5, 9};
    for (unsigned i = 0; i < n; ++i) {
        EXPECT_EQ(which[i], want0[i]) << i;
        EXPECT_EQ(out[i], value0[i]) << i;
    }
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 1,
                      nullptr, nullptr, nullptr, false, 0, 0));
    // Non-zero: last candidate not below its low limit, else the first.
    const unsigned char want1[] = {5, 5, 5, 5, 5, 6};
    for (unsigned i = 0; i < n; ++i) EXPECT_EQ(which[i], want1[i]) << i;
    EXPECT_EQ(out[4], 30); // equal to the low limit is accepted
    EXPECT_EQ(out[5], 9);

    // The float kernel chooses the same way.
    std::vector<float> g6(f6.begin(), f6.end()), g2(f2.begin(), f2.end()), g5(f5.begin(), f5.end());
    void* fframes[8] = {};
    fframes[6] = g6.data();
    fframes[2] = g2.data();
    fframes[5] = g5.data();
    std::vector<float> fout(n);
    ASSERT_TRUE(Abate(dtFlt32, fframes, n, fout.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      nullptr, nullptr, nullptr, false, 0, 0));
    for (unsigned i = 0; i < n; ++i) {
        EXPECT_EQ(which[i], want0[i]);
        EXPECT_EQ(fout[i], float(value0[i]));
    }

    // One present preset is taken whatever the limits; a repeated order entry
    // is a candidate twice (harmless).
    SConfig one;
    one.present[3] = true;
    one.order[0] = 3;
    one.order[1] = 3;
    std::vector<uint16_t> f3 = {0, 65535};
    void* frames3[8] = {};
    frames3[3] = f3.data();
    uint16_t o2[2];
    unsigned char w2[2];
    ASSERT_TRUE(Abate(dtUInt16, frames3, 2, o2, w2, one.present, one.order, one.low, one.high, 0, nullptr, nullptr,
                      nullptr, false, 0, 0));
    EXPECT_EQ(w2[0], 3);
    EXPECT_EQ(w2[1], 3);
    EXPECT_EQ(o2[1], 65535);
}

TEST(Abate, CorrectionRoundingAndClamp)
{
    SConfig cfg;
    cfg.present[0] = true;
    std::vector<uint16_t> frame = {5, 7, 3, 1000, 65535, 2, 9};
    std::vector<float> gain = {0.5f, 0.5f, 0.5f, 1.25f, 1.0f, -3.0f, 0.7f};
    std::vector<short> offset = {0, 0, 1, -3, 0, 0, 2};
    std::vector<unsigned> map = {0, 1, 2, 3, 4, 5, 0};
    void* frames[8] = {frame.data()};
    float* gains[8] = {gain.data()};
    short* offsets[8] = {offset.data()};
    unsigned* maps[8] = {map.data()};
    const unsigned n = unsigned(frame.size());
    std::vector<uint16_t> out(n);
    std::vector<unsigned char> which(n);

    // Gain only, unclamped: roundf of the product (5 * 0.5 gives 3).
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      gains, nullptr, nullptr, false, 0, 0));
    for (unsigned i = 0; i < n; ++i)
        EXPECT_EQ(out[i], uint16_t(int64_t(HalfAway(double(float(frame[i]) * gain[i]))))) << i;
    EXPECT_EQ(out[0], 3);

    // Gain, offset and map, unclamped: rounded before the offset is added.
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      gains, offsets, maps, false, 0, 0));
    for (unsigned i = 0; i < n; ++i) {
        const unsigned j = map[i];
        const double want = HalfAway(double(float(frame[j]) * gain[j])) + offset[j];
        EXPECT_EQ(out[i], uint16_t(int64_t(want))) << i;
    }
    EXPECT_EQ(out[2], 3); // 1.5 -> 2, + 1

    // Clamped: the sum is formed first and rounded half away after.
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      gains, offsets, nullptr, true, 1.0, 1200.0));
    for (unsigned i = 0; i < n; ++i) {
        const float f = float(frame[i]) * gain[i] + float(offset[i]);
        double want = f < 1.0f ? 1.0 : (f > 1200.0f ? 1200.0 : HalfAway(f));
        EXPECT_EQ(out[i], uint16_t(int64_t(want))) << i;
    }
    EXPECT_EQ(out[2], 3); // 1.5 + 1 = 2.5 -> 3
    EXPECT_EQ(out[0], 3); // 2.5 -> 3
    EXPECT_EQ(out[4], 1200);
    EXPECT_EQ(out[5], 1);

    // Offset only wraps unclamped, is limited clamped.
    std::vector<short> big = {-10, 0, 0, 0, 10, 0, 0};
    short* bigs[8] = {big.data()};
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      nullptr, bigs, nullptr, false, 0, 0));
    EXPECT_EQ(out[0], 65531);
    EXPECT_EQ(out[4], 9);
    ASSERT_TRUE(Abate(dtUInt16, frames, n, out.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      nullptr, bigs, nullptr, true, 0.0, 65535.0));
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[4], 65535);

    // Float kernel: no rounding, plain clamp.
    std::vector<float> ff = {5, 7, 3, 1000, 65535, 2, 9};
    void* fframes[8] = {ff.data()};
    std::vector<float> fout(n);
    ASSERT_TRUE(Abate(dtFlt32, fframes, n, fout.data(), which.data(), cfg.present, cfg.order, cfg.low, cfg.high, 0,
                      gains, offsets, nullptr, true, 1.0, 1200.0));
    for (unsigned i = 0; i < n; ++i) {
        const float f = ff[i] * gain[i] + float(offset[i]);
        EXPECT_EQ(fout[i], f < 1.0f ? 1.0f : (f > 1200.0f ? 1200.0f : f)) << i;
    }
}

TEST(Abate, FailuresTouchNothing)
{
    SConfig cfg;
    std::vector<uint16_t> frame = {1, 2};
    void* frames[8] = {frame.data()};
    uint16_t out[2] = {77, 77};
    unsigned char which[2] = {9, 9};
    // No preset present.
    EXPECT_FALSE(Abate(dtUInt16, frames, 2, out, which, cfg.present, cfg.order, cfg.low, cfg.high, 0, nullptr,
                       nullptr, nullptr, false, 0, 0));
    cfg.present[0] = true;
    for (EDataType bad : {dtInt8, dtInt16, dtUInt32, dtFlt64, dtRGB24, dtNoData})
        EXPECT_FALSE(Abate(bad, frames, 2, out, which, cfg.present, cfg.order, cfg.low, cfg.high, 0, nullptr,
                           nullptr, nullptr, false, 0, 0));
    EXPECT_EQ(out[0], 77);
    EXPECT_EQ(out[1], 77);
    EXPECT_EQ(which[0], 9);
    EXPECT_TRUE(Abate(dtUInt16, frames, 0, out, which, cfg.present, cfg.order, cfg.low, cfg.high, 0, nullptr, nullptr,
                      nullptr, false, 0, 0));
    EXPECT_EQ(out[0], 77);
}
