#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "orv/PixelType.h"
#include "reduce/filters/FrameGeometry.h"
#include "reduce/filters/PixelTypes.h"

using namespace orv;
using namespace orv::reduce;

TEST(AdjustFrameData, GrayscaleShiftAndMask)
{
    const uint16_t src[2] = {0x0FFF, 0x8001};
    // Shifted left by |shift| modulo 32 in 32-bit arithmetic, then masked as
    // 16 bits: a negative shift also shifts left (intended). Interlacing means
    // nothing to grayscale.
    const struct {
        int shift, mask;
        bool interlaced;
        uint16_t first, second;
    } cases[] = {{2, 0x3FFF, false, 0x3FFC, 0x0004}, {-2, 0x3FFF, false, 0x3FFC, 0x0004},
                 {0, 65535, true, 0x0FFF, 0x8001}, {33, -1, false, 0x1FFE, 0x0002}, {16, 0x7FFFFFFF, false, 0, 0}};
    uint16_t out[2] = {};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shift);
        EXPECT_TRUE(AdjustFrameData(out, src, 2, 1, pixelGrayscale, SRect(), c.shift, c.mask, c.interlaced, false,
                                    false));
        EXPECT_EQ(out[0], c.first);
        EXPECT_EQ(out[1], c.second);
    }
    // Nothing written for an empty frame or a type of no family.
    out[0] = 0xAAAA;
    EXPECT_TRUE(AdjustFrameData(out, src, 2, 0, pixelGrayscale, SRect(), 0, 65535, false, false, false));
    EXPECT_FALSE(AdjustFrameData(out, src, 2, 1, pixelRGB48, SRect(), 0, 65535, false, false, false));
    EXPECT_EQ(out[0], 0xAAAA);
}

TEST(AdjustFrameData, GrayscaleFlipsAndOffsetAgainstIndexFormula)
{
    // The source index may fall outside the image with an offset, so the
    // frame sits inside a margin on both sides.
    const int w = 5, h = 3;
    const int margin = 3 * w * h;
    std::vector<uint16_t> frame(2 * margin + w * h);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint16_t>(i * 37 + 11);
    const uint16_t* src = frame.data() + margin;

    const SRect offsets[] = {SRect(), SRect(1, 2, 99, 99), SRect(-2, -1, 0, 0)};
    for (const SRect& off : offsets)
        for (int flips = 0; flips < 4; ++flips) {
            const bool fh = flips & 1, fv = flips & 2;
            std::vector<uint16_t> out(w * h, 0xDEAD);
            AdjustFrameData(out.data(), src, w, h, guidF7M0, off, 3, 0xFFF8, false, fh, fv);
            size_t k = 0;
            for (int y = off.top; y < off.top + h; ++y)
                for (int x = off.left; x < off.left + w; ++x, ++k) {
                    const int row = fv ? h - 1 - y : y;
                    const int col = fh ? w - 1 - x : x;
                    const uint32_t v = src[row * w + col];
                    ASSERT_EQ(out[k], static_cast<uint16_t>((v * 8) & 0xFFF8))
                        << "flips " << flips << " left " << off.left << " top " << off.top << " at " << k;
                }
        }
}

TEST(AdjustFrameData, RGBFlipsWithAndWithoutInterlace)
{
    const int w = 5;
    for (int h : {4, 5, 1}) {
        std::vector<unsigned char> src(w * h * 3);
        for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i * 7 + 1);
        for (int interlaced = 0; interlaced < 2; ++interlaced) {
            // The frame as the fields reassemble: even field first, the extra
            // row of an odd height in it.
            std::vector<unsigned char> whole(src.size());
            const int evenRows = (h + 1) / 2;
            for (int r = 0; r < h; ++r) {
                const int outRow = !interlaced ? r : r < evenRows ? 2 * r : 2 * (r - evenRows) + 1;
                std::copy_n(&src[r * w * 3], w * 3, &whole[outRow * w * 3]);
            }
            for (int flips = 0; flips < 4; ++flips) {
                const bool fh = flips & 1, fv = flips & 2;
                std::vector<unsigned char> out(src.size(), 0);
                ASSERT_TRUE(AdjustFrameData(out.data(), src.data(), w, h, pixelRGB, SRect(9, 9, 0, 0), 5, 0,
                                            interlaced, fh, fv));
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x)
                        for (int c = 0; c < 3; ++c) {
                            const int sy = fv ? h - 1 - y : y, sx = fh ? w - 1 - x : x;
                            ASSERT_EQ(out[(y * w + x) * 3 + c], whole[(sy * w + sx) * 3 + c])
                                << "h " << h << " interlaced " << interlaced << " flips " << flips << " at " << y
                                << "," << x;
                        }
            }
        }
    }
}

namespace {

struct SPixel {
    int r, g, b;
};

SPixel PixelAt(const std::vector<unsigned char>& rgb, int w, int row, int col)
{
    const unsigned char* p = &rgb[(row * w + col) * 3];
    return {p[0], p[1], p[2]};
}

} // namespace

TEST(AdjustFrameData, YUVColours)
{
    // Two pairs: white then black; red (BT.601 Y 81, U 90, V 240) then a
    // brighter red whose red channel clips.
    const unsigned char src[8] = {235, 128, 16, 128, 81, 90, 126, 240};
    std::vector<unsigned char> out(4 * 3, 0);
    ASSERT_TRUE(AdjustFrameData(out.data(), src, 4, 1, pixelYUV, SRect(), 0, 0, false, false, false));
    const SPixel expected[4] = {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}, {255, 52, 51}};
    // Mirrored, the row reads backwards: the Y1 pixel of each pair first.
    std::vector<unsigned char> mirrored(4 * 3, 0);
    AdjustFrameData(mirrored.data(), src, 4, 1, pixelYUV, SRect(), 0, 0, false, true, false);
    for (int x = 0; x < 4; ++x) {
        const SPixel p = PixelAt(out, 4, 0, x), m = PixelAt(mirrored, 4, 0, 3 - x), e = expected[x];
        EXPECT_TRUE(p.r == e.r && p.g == e.g && p.b == e.b) << x << ": " << p.r << "," << p.g << "," << p.b;
        EXPECT_TRUE(m.r == e.r && m.g == e.g && m.b == e.b) << "mirrored " << x;
    }
}

TEST(AdjustFrameData, YUVRowOrderAndOddWidth)
{
    // Each input row carries its number in Y, so output rows show where
    // each input row went.
    const int w = 5; // two pairs a row; one column stays unwritten
    struct SCase {
        int h;
        bool interlaced, flipV;
        std::vector<int> rows; // output row of input rows 0, 1, ...
    };
    const SCase cases[] = {
        {4, false, false, {0, 1, 2, 3}},    {4, false, true, {3, 2, 1, 0}}, {4, true, false, {0, 2, 1, 3}},
        {4, true, true, {2, 0, 3, 1}},      {5, true, false, {0, 2, 4, 1, 3}},
        {5, true, true, {3, 1, 4, 2, 0}},   {1, true, true, {0}},
    };
    for (const SCase& c : cases)
        for (int fh = 0; fh < 2; ++fh) {
            std::vector<unsigned char> src;
            for (int r = 0; r < c.h; ++r)
                for (int p = 0; p < w / 2; ++p) {
                    const unsigned char y = static_cast<unsigned char>(16 + 20 * r);
                    src.insert(src.end(), {y, 128, y, 128});
                }
            std::vector<unsigned char> out(w * c.h * 3, 7);
            AdjustFrameData(out.data(), src.data(), w, c.h, pixelYUV, SRect(), 0, 0, c.interlaced, fh, c.flipV);
            for (int r = 0; r < c.h; ++r) {
                const int row = c.rows[r];
                const int grey = (298 * 20 * r + 128) >> 8;
                const int first = fh ? 1 : 0; // the unwritten column is the mirrored last one
                for (int x = first; x < first + 4; ++x)
                    ASSERT_EQ(PixelAt(out, w, row, x).g, grey)
                        << "h " << c.h << " interlaced " << c.interlaced << " flipV " << c.flipV << " fh " << fh
                        << " input row " << r;
                EXPECT_EQ(PixelAt(out, w, row, fh ? 0 : w - 1).r, 7);
            }
        }
}
