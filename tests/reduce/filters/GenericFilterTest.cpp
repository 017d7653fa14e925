#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "orv/PixelType.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/GenericFilter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"

using namespace orv;
using namespace orv::reduce;

namespace {

TSharedPtr<CSourceInfoReduceObject> AddSource(CReduceObjectArray& objects, int adBits, int shift)
{
    TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(true);
    source->adBits = adBits;
    source->adBitShift = shift;
    return source;
}

uint64_t FrameNumber(CReduceObjectArray& objects) { return objects.GetFrameInfo(0, false)->frame; }

} // namespace

TEST(GenericFilter, BasicInfoIsPresetZeroAndTheClock)
{
    CGenericFilter f;
    unsigned char frame[4] = {};
    uint8_t preset = 5;
    uint64_t counter = 5;
    CDateTime time;
    EXPECT_TRUE(f.ParseBasicInfo(frame, pixelGrayscale, 2, 1, 4, preset, counter, time));
    EXPECT_EQ(preset, 0);
    EXPECT_EQ(counter, 0u);
    EXPECT_GT(time.GetTimestamp(0), 0);
}

TEST(GenericFilter, CounterCountsParsedFramesAndWraps)
{
    CGenericFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 9;
    f.setFrameCounter(65535);
    uint64_t counter = 0;
    EXPECT_TRUE(f.ParseFrameCounter(nullptr, pixelGrayscale, 1, 1, 0, counter));
    EXPECT_TRUE(f.ParseFrameCounter(nullptr, pixelGrayscale, 1, 1, 0, counter));
    EXPECT_EQ(counter, 65535u); // peeking does not advance

    // Objects only: no source info needed.
    ASSERT_TRUE(f.ParseReduceObjects(nullptr, pixelGrayscale, 1, 1, 0, objects, preset));
    EXPECT_EQ(preset, 0);
    EXPECT_EQ(FrameNumber(objects), 65535u);
    ASSERT_TRUE(f.ParseReduceObjects(nullptr, pixelGrayscale, 1, 1, 0, objects, preset));
    EXPECT_EQ(FrameNumber(objects), 0u);
    EXPECT_EQ(f.frameCounter(), 1);

    TSharedPtr<CFrameInfoReduceObject> info = objects.GetFrameInfo(0, false);
    ASSERT_TRUE(info);
    EXPECT_EQ(objects.GetSize(), 1u); // one frame info, reused
    EXPECT_TRUE(info->valid);
    EXPECT_EQ(info->preset, 0);
    EXPECT_EQ(info->timeSource, timeSourcePC);
    EXPECT_TRUE(info->GetAt(3).value == "PC");
    info->extra.Add("Old", "1", "", "");
    f.ParseReduceObjects(nullptr, pixelGrayscale, 1, 1, 0, objects, preset);
    EXPECT_EQ(info->extra.nValues(), 0u);
}

TEST(GenericFilter, OutputTypeRules)
{
    CGenericFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 0;
    uint16_t frame[4] = {1, 2, 3, 4};
    auto* raw = reinterpret_cast<unsigned char*>(frame);
    uint16_t out16[4] = {};

    // Pixels need the source info; a refused frame leaves the counter.
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 2, 2, 8, STypedData(out16, dtUInt16), objects, preset));
    EXPECT_EQ(f.frameCounter(), 0);
    AddSource(objects, 16, 0);

    // Grayscale accepts 1 and 3 only, and no buffer with type 12.
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 2, 2, 8, STypedData(out16, dtRGB24), objects, preset));
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 2, 2, 8, STypedData(out16, dtFlt32), objects, preset));
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 2, 2, 8, STypedData(out16, dtNoData), objects, preset));
    // The exact RGB and YUV roots need type 10 once there is a buffer.
    EXPECT_FALSE(f.ParseFrame(raw, pixelRGB, 2, 2, 8, STypedData(out16, dtUInt16), objects, preset));
    EXPECT_FALSE(f.ParseFrame(raw, pixelYUV, 2, 2, 8, STypedData(out16, dtUInt8), objects, preset));
    EXPECT_TRUE(f.ParseFrame(raw, pixelRGB, 2, 2, 8, STypedData(static_cast<void*>(nullptr), dtNoData), objects,
                             preset));
    EXPECT_EQ(f.frameCounter(), 1);
    EXPECT_EQ(std::memcmp(out16, "\0\0\0\0\0\0\0\0", 8), 0);

    // Type 1 copies width * height bytes as they are.
    unsigned char out8[5] = {0, 0, 0, 0, 0xEE};
    ASSERT_TRUE(f.ParseFrame(raw, guidF7M0, 2, 2, 8, STypedData(out8, dtUInt8), objects, preset));
    EXPECT_EQ(std::memcmp(out8, raw, 4), 0);
    EXPECT_EQ(out8[4], 0xEE);
}

TEST(GenericFilter, GrayscaleUsesSourceGeometry)
{
    CGenericFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 0;
    TSharedPtr<CSourceInfoReduceObject> source = AddSource(objects, 12, 2);
    const uint16_t frame[6] = {0x0ABC, 0x0001, 0x0FFF, 0x0400, 0x0123, 0x0800};
    auto* raw = reinterpret_cast<unsigned char*>(const_cast<uint16_t*>(frame));
    uint16_t out[6] = {};
    // 12 bits: mask 0x0FFF after a shift of 2.
    ASSERT_TRUE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 12, STypedData(out, dtUInt16), objects, preset));
    for (int i = 0; i < 6; ++i) EXPECT_EQ(out[i], (frame[i] << 2) & 0x0FFF) << i;

    // Over 16 bits the mask count wraps modulo 32 and leaves nothing.
    source->adBits = 20;
    ASSERT_TRUE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 12, STypedData(out, dtUInt16), objects, preset));
    EXPECT_EQ(out[0], 0);

    // The read area must lie in the frame: a short frame, or an offset that
    // moves it past the end or before the start, is refused.
    source->adBits = 16;
    const uint16_t before = f.frameCounter();
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 11, STypedData(out, dtUInt16), objects, preset));
    source->offset = SRect(1, 0, 0, 0);
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 12, STypedData(out, dtUInt16), objects, preset));
    source->offset = SRect(0, -1, 0, 0);
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 12, STypedData(out, dtUInt16), objects, preset));
    EXPECT_FALSE(f.ParseFrame(raw, pixelGrayscale, 3, 2, 5, STypedData(out, dtUInt8), objects, preset));
    EXPECT_EQ(f.frameCounter(), before);
    // With a one-column offset the same frame holds a narrower read, its rows
    // as long as the output's.
    source->offset = SRect(1, 0, 0, 0);
    source->adBitShift = 0;
    uint16_t narrow[4] = {};
    ASSERT_TRUE(f.ParseFrame(raw, pixelGrayscale, 2, 2, 12, STypedData(narrow, dtUInt16), objects, preset));
    for (int i = 0; i < 4; ++i) EXPECT_EQ(narrow[i], frame[i + 1]) << i;
}

TEST(GenericFilter, YUVFrameToRGB)
{
    CGenericFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 0;
    TSharedPtr<CSourceInfoReduceObject> source = AddSource(objects, 16, 0);
    source->interlaced = true;
    // Two rows of one pair: white, then black; interlaced rows of a 2-row
    // frame stay in place.
    unsigned char frame[8] = {235, 128, 235, 128, 16, 128, 16, 128};
    unsigned char out[12] = {};
    ASSERT_TRUE(f.ParseFrame(frame, pixelYUV, 2, 2, 8, STypedData(out, dtRGB24), objects, preset));
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[5], 255);
    EXPECT_EQ(out[6], 0);
    EXPECT_EQ(out[11], 0);
    EXPECT_FALSE(f.ParseFrame(frame, pixelYUV, 2, 2, 7, STypedData(out, dtRGB24), objects, preset));
}
