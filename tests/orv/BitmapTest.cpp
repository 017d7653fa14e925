#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <tuple>
#include <vector>

#include "orv/Bitmap.h"
#include "orv/Deinterlace.h"

using namespace orv;

namespace {

unsigned char* Pixel(SBitmap& b, unsigned x, unsigned y) { return b.pixels + size_t(y) * b.bytesPerRow + size_t(x) * 3; }

void FillConstant(SBitmap& b, unsigned char blue, unsigned char green, unsigned char red)
{
    for (unsigned y = 0; y < b.height; ++y)
        for (unsigned x = 0; x < b.width; ++x) {
            unsigned char* p = Pixel(b, x, y);
            p[0] = blue, p[1] = green, p[2] = red;
        }
}

} // namespace

TEST(Bitmap, CreateAndDestroy)
{
    SBitmap b;
    ASSERT_TRUE(CreateBitmap(5, 3, 24, b));
    // 15 bytes a row padded to 16.
    EXPECT_EQ(std::tuple(b.width, b.height, b.bytesPerRow, b.bitsPerPixel), std::tuple(5u, 3u, 16u, 24u));
    ASSERT_NE(b.pixels, nullptr);
    DestroyBitmap(b);
    EXPECT_EQ(b.pixels, nullptr);

    ASSERT_TRUE(CreateBitmap(5, 1, 8, b));
    EXPECT_EQ(b.bytesPerRow, 8u);
    DestroyBitmap(b);
    EXPECT_FALSE(CreateBitmap(0, 3, 24, b));
    EXPECT_FALSE(CreateBitmap(5, 3, 12, b));
    EXPECT_FALSE(CreateBitmap(70000, 70000, 24, b)); // beyond 2 GiB
    EXPECT_EQ(b.pixels, nullptr);
    DestroyBitmap(b); // an empty bitmap is fine to destroy
}

TEST(Bitmap, ResizeKeepsConstantsAndOrder)
{
    SBitmap source;
    ASSERT_TRUE(CreateBitmap(37, 23, 24, source));
    const unsigned sizes[][2] = {{80, 50}, {11, 7}, {37, 23}, {1, 1}, {100, 3}};
    for (int mode : {1, 2})
        for (const auto& size : sizes) {
            FillConstant(source, 10, 200, 77);
            SBitmap target;
            ASSERT_TRUE(CreateBitmap(size[0], size[1], 24, target));
            ASSERT_TRUE(ResizeImage(source, target, mode));
            for (unsigned y = 0; y < target.height; ++y)
                for (unsigned x = 0; x < target.width; ++x) {
                    const unsigned char* p = Pixel(target, x, y);
                    ASSERT_EQ(p[0], 10) << mode;
                    ASSERT_EQ(p[1], 200) << mode;
                    ASSERT_EQ(p[2], 77) << mode;
                }

            // Blue rises to the right, red downwards, green falls to the right.
            for (unsigned y = 0; y < source.height; ++y)
                for (unsigned x = 0; x < source.width; ++x) {
                    unsigned char* p = Pixel(source, x, y);
                    p[0] = (unsigned char)(x * 255 / (source.width - 1));
                    p[1] = (unsigned char)(250 - x * 6);
                    p[2] = (unsigned char)(y * y * 255 / ((source.height - 1) * (source.height - 1)));
                }
            ASSERT_TRUE(ResizeImage(source, target, mode));
            for (unsigned y = 0; y < target.height; ++y)
                for (unsigned x = 0; x < target.width; ++x) {
                    const unsigned char* p = Pixel(target, x, y);
                    if (x > 0) {
                        EXPECT_GE(p[0], Pixel(target, x - 1, y)[0]) << mode << " at " << x << "," << y;
                        EXPECT_LE(p[1], Pixel(target, x - 1, y)[1]) << mode << " at " << x << "," << y;
                    }
                    if (y > 0) {
                        EXPECT_GE(p[2], Pixel(target, x, y - 1)[2]) << mode << " at " << x << "," << y;
                    }
                }
            if (target.width > 1) {
                EXPECT_LT(Pixel(target, 0, 0)[0], Pixel(target, target.width - 1, 0)[0]);
            }
            DestroyBitmap(target);
        }
    DestroyBitmap(source);
}

TEST(Bitmap, ResizeHandValuesAndRejects)
{
    // Area average of 3 pixels into 2: [0, 1.5) and [1.5, 3).
    SBitmap row, two;
    ASSERT_TRUE(CreateBitmap(3, 1, 24, row));
    ASSERT_TRUE(CreateBitmap(2, 1, 24, two));
    const unsigned char values[3] = {0, 90, 180};
    for (unsigned x = 0; x < 3; ++x) Pixel(row, x, 0)[1] = values[x];
    ASSERT_TRUE(ResizeImage(row, two, 2));
    // (0 + 90 / 2) / 1.5 and (90 / 2 + 180) / 1.5.
    EXPECT_EQ(std::tuple(Pixel(two, 0, 0)[1], Pixel(two, 1, 0)[1]), std::tuple(30, 150));

    // Bilinear 2 -> 4 samples at -0.25 (clamped), 0.25, 0.75, 1.25 (clamped).
    SBitmap pair, four;
    ASSERT_TRUE(CreateBitmap(2, 1, 24, pair));
    ASSERT_TRUE(CreateBitmap(4, 1, 24, four));
    Pixel(pair, 1, 0)[2] = 100;
    ASSERT_TRUE(ResizeImage(pair, four, 1));
    EXPECT_EQ(std::tuple(Pixel(four, 0, 0)[2], Pixel(four, 1, 0)[2], Pixel(four, 2, 0)[2], Pixel(four, 3, 0)[2]),
              std::tuple(0, 25, 75, 100));

    // 2 x 2 blocks average exactly.
    SBitmap square, half;
    ASSERT_TRUE(CreateBitmap(4, 4, 24, square));
    ASSERT_TRUE(CreateBitmap(2, 2, 24, half));
    for (unsigned y = 0; y < 4; ++y)
        for (unsigned x = 0; x < 4; ++x) Pixel(square, x, y)[0] = (unsigned char)(10 * x + 40 * y);
    ASSERT_TRUE(ResizeImage(square, half, 2));
    EXPECT_EQ(std::tuple(Pixel(half, 0, 0)[0], Pixel(half, 1, 0)[0], Pixel(half, 0, 1)[0], Pixel(half, 1, 1)[0]),
              std::tuple(25, 45, 105, 125));

    Pixel(half, 0, 0)[0] = 7;
    EXPECT_FALSE(ResizeImage(square, half, 0));
    EXPECT_FALSE(ResizeImage(square, half, 3));
    SBitmap gray, empty;
    ASSERT_TRUE(CreateBitmap(4, 4, 8, gray));
    EXPECT_FALSE(ResizeImage(gray, half, 1));
    EXPECT_FALSE(ResizeImage(square, empty, 1));
    EXPECT_FALSE(ResizeImage(empty, half, 2));
    EXPECT_EQ(Pixel(half, 0, 0)[0], 7);
    for (SBitmap* b : {&row, &two, &pair, &four, &square, &half, &gray}) DestroyBitmap(*b);
}

TEST(Bitmap, SaveBitmapFileLayout)
{
    SBitmap b;
    ASSERT_TRUE(CreateBitmap(5, 3, 24, b));
    for (unsigned y = 0; y < 3; ++y)
        for (unsigned x = 0; x < 5; ++x) {
            unsigned char* p = Pixel(b, x, y);
            p[0] = (unsigned char)(x + 10 * y), p[1] = (unsigned char)(100 + y), p[2] = (unsigned char)(200 + x);
        }
    const CString path = CString(testing::TempDir().c_str()) + "orv_bitmap_test.bmp";
    ASSERT_TRUE(SaveBitmapFile(b, fileSystem(), path));

    std::ifstream in(path.c_str(), std::ios::binary);
    const std::vector<unsigned char> f((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const size_t rowSize = 16; // 15 bytes and one byte of padding
    ASSERT_EQ(f.size(), 54 + 3 * rowSize);
    // File size 102, pixels at 54, 40-byte info header, 5 x 3 with a positive
    // height (bottom-up), one plane, 24 bits, no compression, 48 bytes of
    // pixels, 2835 pixels a metre both ways, no palette.
    const unsigned char header[54] = {'B', 'M', 102, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0,
                                      5, 0, 0, 0, 3, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 48, 0, 0, 0,
                                      0x13, 0x0B, 0, 0, 0x13, 0x0B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::vector<unsigned char>(f.begin(), f.begin() + 54), std::vector<unsigned char>(header, header + 54));
    for (unsigned fileRow = 0; fileRow < 3; ++fileRow) {
        const unsigned y = 2 - fileRow;
        const size_t at = 54 + fileRow * rowSize;
        for (unsigned x = 0; x < 5; ++x) {
            EXPECT_EQ(f[at + 3 * x], x + 10 * y);
            EXPECT_EQ(f[at + 3 * x + 1], 100 + y);
            EXPECT_EQ(f[at + 3 * x + 2], 200 + x);
        }
        EXPECT_EQ(f[at + 15], 0) << "padding of file row " << fileRow;
    }
    std::remove(path.c_str());

    EXPECT_FALSE(SaveBitmapFile(b, nullptr, path));
    EXPECT_FALSE(SaveBitmapFile(b, fileSystem(), "/nonexistent-directory/x.bmp"));
    SBitmap deep;
    ASSERT_TRUE(CreateBitmap(2, 2, 32, deep));
    EXPECT_FALSE(SaveBitmapFile(deep, fileSystem(), path));
    DestroyBitmap(deep);
    DestroyBitmap(b);
}

TEST(Deinterlace, FieldRowOrder)
{
    // Each input row is filled with its own index.
    for (int height : {4, 5}) {
        const int width = 2, bpp = 3, row = width * bpp;
        std::vector<unsigned char> src(size_t(height) * row), dst(src.size() + 4, 0xEE);
        for (int r = 0; r < height; ++r) std::memset(&src[size_t(r) * row], r, row);
        ASSERT_TRUE(deinterlace(dst.data(), src.data(), width, height, bpp, -1, -1));
        const std::vector<int> four = {0, 2, 1, 3};     // output row -> input row
        const std::vector<int> five = {0, 3, 1, 4, 2};
        const std::vector<int>& want = height == 4 ? four : five;
        for (int r = 0; r < height; ++r)
            for (int b = 0; b < row; ++b) EXPECT_EQ(dst[size_t(r) * row + b], want[r]) << "height " << height << " row " << r;
        for (size_t i = src.size(); i < dst.size(); ++i) EXPECT_EQ(dst[i], 0xEE);
    }

    // Padded rows: 4 bytes of pixels in rows of 6 and 5 bytes.
    const unsigned char src[3 * 6] = {1, 1, 1, 1, 9, 9, 2, 2, 2, 2, 9, 9, 3, 3, 3, 3, 9, 9};
    unsigned char dst[3 * 5];
    std::memset(dst, 0xEE, sizeof dst);
    ASSERT_TRUE(deinterlace(dst, src, 2, 3, 2, 6, 5));
    const unsigned char want[3 * 5] = {1, 1, 1, 1, 0xEE, 3, 3, 3, 3, 0xEE, 2, 2, 2, 2, 0xEE};
    EXPECT_EQ(std::memcmp(dst, want, sizeof dst), 0);

    EXPECT_TRUE(deinterlace(dst, src, 2, 0, 2, -1, -1));
    EXPECT_FALSE(deinterlace(nullptr, src, 2, 3, 2, -1, -1));
    EXPECT_FALSE(deinterlace(dst, src, -2, 3, 2, -1, -1));
    EXPECT_FALSE(deinterlace(dst, src, 2, 3, 0, -1, -1));
    EXPECT_FALSE(deinterlace(dst, src, 2, 3, 2, 3, -1)); // stride shorter than a row
    EXPECT_EQ(std::memcmp(dst, want, sizeof dst), 0);
}
