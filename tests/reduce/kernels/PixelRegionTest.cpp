// The region value against the regions worked out by plain loops: runs,
// counts, ends, the in-frame test, and the overload arguments it forwards.
#include <gtest/gtest.h>

#include <vector>

#include "reduce/kernels/PixelRegion.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned short W = 7, H = 5;

// Flat indices from the runs, checking that runs are dense in the output.
std::vector<unsigned> FromRuns(const SPixelRegion& r)
{
    std::vector<unsigned> out;
    r.ForEachRun([&](size_t flat, size_t i, unsigned n) {
        EXPECT_EQ(i, out.size());
        EXPECT_GT(n, 0u);
        for (unsigned k = 0; k < n; ++k) out.push_back(unsigned(flat + k));
    });
    return out;
}

struct SCollect {
    static constexpr bool kNeedsXY = false; // index lists here carry no width
    std::vector<unsigned>& out;
    void operator()(size_t flat, size_t i, unsigned, unsigned)
    {
        EXPECT_EQ(i, out.size());
        out.push_back(unsigned(flat));
    }
};

std::vector<unsigned> FromWalker(const SPixelRegion& r)
{
    std::vector<unsigned> out;
    SCollect body{out};
    r.Visit([&](const auto& walk) { walk(body); });
    return out;
}

} // namespace

TEST(PixelRegion, EveryFormAgainstPlainLoops)
{
    unsigned char mask[W * H] = {};
    for (unsigned y = 0; y < H; ++y)
        for (unsigned x = 0; x < W; ++x) mask[y * W + x] = (x * 3 + y) % 4 != 0;
    const TArray<SScanLine> lines{{4, 2, 5}, {0, 3, 1}, {1, 0, 6}, {1, 6, 6}};
    const unsigned idx[] = {5, 6, 7, 30, 2, 3, 3};
    const SArea area{1, 2, 3, 5};

    std::vector<unsigned> rect, masked, listed{idx, idx + 7};
    for (unsigned y = 1; y <= 3; ++y)
        for (unsigned x = 2; x <= 5; ++x) {
            rect.push_back(y * W + x);
            if (mask[y * W + x]) masked.push_back(y * W + x);
        }
    const std::vector<unsigned> scan{30, 31, 32, 33, 7, 8, 9, 10, 11, 12, 13, 13};

    struct SCase {
        SPixelRegion region;
        std::vector<unsigned> flat;
    } cases[] = {
        {SPixelRegion::Frame(9), {0, 1, 2, 3, 4, 5, 6, 7, 8}},
        {SPixelRegion::Rect(W, H, area), rect},
        {SPixelRegion::ScanLines(W, H, lines), scan},
        {SPixelRegion::Mask(W, H, area, mask, W), masked},
        {SPixelRegion::Indices(idx, 7), listed},
        {SPixelRegion::Rect(W, H, SArea{3, 0, 2, 6}), {}},
        {SPixelRegion::Mask(W, H, SArea{0, 4, 4, 3}, mask, W), {}},
        {SPixelRegion::Indices(idx, 0), {}},
    };
    for (const SCase& c : cases) {
        SCOPED_TRACE(int(c.region.kind));
        EXPECT_EQ(FromRuns(c.region), c.flat);
        EXPECT_EQ(FromWalker(c.region), c.flat);
        EXPECT_EQ(c.region.PixelCount(), c.flat.size());
        EXPECT_EQ(c.region.Empty(), c.flat.empty());
        size_t end = 0;
        for (unsigned f : c.flat) end = std::max<size_t>(end, f + 1);
        EXPECT_EQ(c.region.End(), end);
        TArray<unsigned int> built;
        c.region.BuildIndices(built);
        EXPECT_EQ(std::vector<unsigned>(built.begin(), built.end()), c.flat);
    }
    // Consecutive indices share a run; a repeat starts a new one.
    std::vector<unsigned> runLengths;
    SPixelRegion::Indices(idx, 7).ForEachRun([&](size_t, size_t, unsigned n) { runLengths.push_back(n); });
    EXPECT_EQ(runLengths, (std::vector<unsigned>{3, 1, 2, 1}));
}

TEST(PixelRegion, InFrameAndForwardedArguments)
{
    const TArray<SScanLine> inside{{4, 0, 6}, {0, 5, 2}}, below{{5, 0, 0}}, crossedOutside{{9, 5, 2}};
    const unsigned idx[] = {3, 34};
    EXPECT_TRUE(SPixelRegion::Rect(W, H, SArea{0, 0, 4, 6}).InFrame(W, H));
    EXPECT_FALSE(SPixelRegion::Rect(W, H, SArea{0, 0, 5, 6}).InFrame(W, H));
    EXPECT_FALSE(SPixelRegion::Mask(W, H, SArea{0, 0, 4, 7}, nullptr, W).InFrame(W, H));
    EXPECT_TRUE(SPixelRegion::Rect(W, H, SArea{9, 9, 8, 8}).InFrame(W, H)); // empty
    EXPECT_TRUE(SPixelRegion::ScanLines(W, H, inside).InFrame(W, H));
    EXPECT_FALSE(SPixelRegion::ScanLines(W, H, below).InFrame(W, H));
    EXPECT_TRUE(SPixelRegion::ScanLines(W, H, crossedOutside).InFrame(W, H));
    EXPECT_TRUE(SPixelRegion::Frame(W * H).InFrame(W, H));
    EXPECT_FALSE(SPixelRegion::Frame(W * H + 1).InFrame(W, H));
    EXPECT_TRUE(SPixelRegion::Indices(idx, 2).InFrame(W, H));
    EXPECT_FALSE(SPixelRegion::Indices(idx, 2).InFrame(W, H - 1));

    // Forward hands each form its overload's arguments, by their count.
    const SPixelRegion forms[] = {SPixelRegion::Frame(4), SPixelRegion::Indices(idx, 2),
                                  SPixelRegion::Rect(W, H, SArea{}), SPixelRegion::ScanLines(W, H, inside),
                                  SPixelRegion::Mask(W, H, SArea{}, nullptr, 3)};
    std::vector<size_t> arity;
    for (const SPixelRegion& r : forms) arity.push_back(r.Forward([](auto... a) { return sizeof...(a); }));
    EXPECT_EQ(arity, (std::vector<size_t>{1, 2, 3, 3, 5}));
}
