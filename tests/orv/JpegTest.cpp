#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <jpeglib.h>

#include "orv/Jpeg.h"

using namespace orv;

namespace {

// Encodes width x height pixels of `components` bytes (3: RGB, 1: gray).
std::vector<unsigned char> Encode(const std::vector<unsigned char>& pixels, int width, int height, int components,
                                  bool progressive = false)
{
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &out, &size);
    info.image_width = JDIMENSION(width);
    info.image_height = JDIMENSION(height);
    info.input_components = components;
    info.in_color_space = components == 3 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = const_cast<unsigned char*>(&pixels[size_t(info.next_scanline) * width * components]);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::vector<unsigned char> stream(out, out + size);
    std::free(out);
    return stream;
}

constexpr int W = 48, H = 32;

std::vector<unsigned char> TestImage()
{
    std::vector<unsigned char> rgb(size_t(W) * H * 3);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            unsigned char* p = &rgb[(size_t(y) * W + x) * 3];
            p[0] = (unsigned char)(40 + x * 3); // red rises to the right
            p[1] = (unsigned char)(200 - y * 4); // green falls downwards
            p[2] = 90;
        }
    return rgb;
}

} // namespace

TEST(JpegDecode, DecodesRgbAndGrayToPackedRgb)
{
    const std::vector<unsigned char> rgb = TestImage();
    const std::vector<unsigned char> stream = Encode(rgb, W, H, 3);
    std::vector<unsigned char> out(rgb.size() + 16, 0xEE);
    ASSERT_TRUE(JpegDecode(out.data(), rgb.size(), stream.data(), stream.size()));
    long total = 0;
    for (size_t i = 0; i < rgb.size(); ++i) {
        const int d = std::abs(int(out[i]) - int(rgb[i]));
        EXPECT_LE(d, 12) << "byte " << i;
        total += d;
    }
    EXPECT_LT(double(total) / double(rgb.size()), 2.0);
    for (size_t i = rgb.size(); i < out.size(); ++i) EXPECT_EQ(out[i], 0xEE);

    std::vector<unsigned char> gray(size_t(W) * H);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) gray[size_t(y) * W + x] = (unsigned char)(x * 5 + y);
    const std::vector<unsigned char> grayStream = Encode(gray, W, H, 1);
    std::vector<unsigned char> grayOut(gray.size() * 3);
    ASSERT_TRUE(JpegDecode(grayOut.data(), grayOut.size(), grayStream.data(), grayStream.size()));
    for (size_t i = 0; i < gray.size(); ++i) {
        EXPECT_EQ(grayOut[3 * i], grayOut[3 * i + 1]);
        EXPECT_EQ(grayOut[3 * i], grayOut[3 * i + 2]);
        EXPECT_LE(std::abs(int(grayOut[3 * i]) - int(gray[i])), 8) << "pixel " << i;
    }
}

TEST(JpegDecode, SmallTargetIsFilledButNeverOverrun)
{
    const std::vector<unsigned char> rgb = TestImage();
    const std::vector<unsigned char> stream = Encode(rgb, W, H, 3);
    std::vector<unsigned char> full(rgb.size());
    ASSERT_TRUE(JpegDecode(full.data(), full.size(), stream.data(), stream.size()));

    // Room for 5 rows and a bit of the sixth.
    const unsigned long room = 5 * W * 3 + 20;
    std::vector<unsigned char> out(rgb.size(), 0xEE);
    EXPECT_FALSE(JpegDecode(out.data(), room, stream.data(), stream.size()));
    EXPECT_EQ(std::memcmp(out.data(), full.data(), room), 0);
    for (size_t i = room; i < out.size(); ++i) ASSERT_EQ(out[i], 0xEE) << i;
}

TEST(JpegDecode, BadStreamsFailQuietly)
{
    const std::vector<unsigned char> stream = Encode(TestImage(), W, H, 3);
    std::vector<unsigned char> out(size_t(W) * H * 3);

    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    // Every truncation, including one that only loses the end marker.
    for (size_t n = 0; n < stream.size(); ++n) EXPECT_FALSE(JpegDecode(out.data(), out.size(), stream.data(), n)) << n;

    // An end marker in the middle of the scan data.
    std::vector<unsigned char> cut = stream;
    cut[cut.size() / 2] = 0xFF;
    cut[cut.size() / 2 + 1] = 0xD9;
    EXPECT_FALSE(JpegDecode(out.data(), out.size(), cut.data(), cut.size()));

    // A broken header: no start-of-image marker, then a wrong frame marker.
    std::vector<unsigned char> noSoi = stream;
    noSoi[1] = 0x00;
    EXPECT_FALSE(JpegDecode(out.data(), out.size(), noSoi.data(), noSoi.size()));

    std::vector<unsigned char> garbage(600);
    for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = (unsigned char)(i * 7919 >> 3);
    garbage[0] = 0xFF, garbage[1] = 0xD8;
    EXPECT_FALSE(JpegDecode(out.data(), out.size(), garbage.data(), garbage.size()));

    // A progressive header that claims 60000 x 60000 pixels the data do not
    // hold.
    std::vector<unsigned char> huge = Encode(TestImage(), W, H, 3, true);
    bool patched = false;
    for (size_t i = 2; i + 8 < huge.size() && !patched; ++i)
        if (huge[i] == 0xFF && huge[i + 1] == 0xC2) { // progressive frame header
            huge[i + 5] = 0xEA, huge[i + 6] = 0x60;    // height 60000, big-endian
            huge[i + 7] = 0xEA, huge[i + 8] = 0x60;    // width 60000
            patched = true;
        }
    ASSERT_TRUE(patched);
    EXPECT_FALSE(JpegDecode(out.data(), out.size(), huge.data(), huge.size()));

    // Random damage may or may not be noticed, but never writes past the
    // given size (the sanitizer build watches reads).
    unsigned seed = 12345;
    for (int round = 0; round < 300; ++round) {
        std::vector<unsigned char> damaged = stream;
        for (int k = 0; k < 4; ++k) {
            seed = seed * 1103515245u + 12345u;
            damaged[2 + (seed >> 8) % (damaged.size() - 2)] ^= (unsigned char)(1u << (seed >> 4) % 8);
        }
        std::vector<unsigned char> target(out.size() / 2 + 16, 0xEE);
        JpegDecode(target.data(), out.size() / 2, damaged.data(), damaged.size());
        for (size_t i = out.size() / 2; i < target.size(); ++i) ASSERT_EQ(target[i], 0xEE) << round;
    }

    EXPECT_FALSE(JpegDecode(nullptr, out.size(), stream.data(), stream.size()));
    EXPECT_FALSE(JpegDecode(out.data(), out.size(), nullptr, stream.size()));
    EXPECT_FALSE(JpegDecode(out.data(), 0, stream.data(), stream.size()));
    const std::string printedErr = testing::internal::GetCapturedStderr();
    const std::string printedOut = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printedErr, "");
    EXPECT_EQ(printedOut, "");

    // Still decodes after all those failures (no state left behind).
    EXPECT_TRUE(JpegDecode(out.data(), out.size(), stream.data(), stream.size()));
}
