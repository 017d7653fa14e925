#include <gtest/gtest.h>

#define CHARLS_NO_DEPRECATED_WARNING // the classic calls keep the test short
#include <charls/charls.h>

#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

#include <algorithm>
#include <vector>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/V410Filter.h"
#include "tests/reduce/filters/CameraFrames.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

constexpr uint16_t kW = 3, kH = 2;
constexpr size_t kP = kW * kH * 2;
constexpr size_t kRecordAt = 100; // record right behind the block's head

// Pixels 1..6, a camera block (optionally after a GigE prefix) whose record
// follows its 100-byte head.
CBytes IRFrame(const SRecordValues& v, bool bigEndian, bool prefix, bool pixelsBigEndian = false)
{
    const size_t block = kP + (prefix ? 32 : 0);
    CBytes f(block + kRecordAt + 2428);
    for (uint16_t i = 0; i < kW * kH; ++i) f.Put<uint16_t>(2 * i, uint16_t(i + 1), pixelsBigEndian);
    f.Put<uint32_t>(block, 0x464646);
    f.Put<uint16_t>(block + 64, 32);
    f.Put<uint32_t>(block + 76, kRecordAt);
    f.Put<uint32_t>(block + 80, 2428);
    f.Put<uint16_t>(block + 96, 1);
    f.Put<uint16_t>(block + 98, pixelsBigEndian ? 1 : 0);
    WriteRecord(f, block + kRecordAt, v, bigEndian);
    return f;
}

struct SParsed {
    CReduceObjectArray objects;
    std::vector<uint16_t> pixels = std::vector<uint16_t>(kW * kH, 0xEEEE);
    bool ok = false;

    SParsed(CV410Filter& filter, CBytes& f, SGuid type, uint16_t w = kW, uint16_t h = kH)
    {
        uint8_t preset = 9;
        ok = filter.ParseFrame(f.b.data(), type, w, h, uint32_t(f.b.size()), STypedData(pixels.data(), dtUInt16),
                               objects, preset);
    }
    TSharedPtr<CFrameInfoReduceObject> info() { return objects.GetFrameInfo(0, false); }
    TSharedPtr<COmbriaFactoryCalReduceObject> cal()
    {
        return objects.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, false)
            .DynamicCast<COmbriaFactoryCalReduceObject>();
    }
    TSharedPtr<COmbriaCameraInfoReduceObject> camera()
    {
        return objects.GetObjectOfType(COmbriaCameraInfoReduceObject::typeID, -1, false)
            .DynamicCast<COmbriaCameraInfoReduceObject>();
    }
};

} // namespace

TEST(V410Filter, CameraBlockFillsTheOmbriaObjectsInBothByteOrders)
{
    const SRecordValues v;
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "big-endian record" : "little-endian record");
        CV410Filter filter;
        CBytes f = IRFrame(v, bigEndian, false);
        SParsed p(filter, f, guidV410F7M0);
        ASSERT_TRUE(p.ok);
        auto params = p.objects.GetObjectParameters(false);
        const float* objPar[] = {&params->emissivity,     &params->distance,
                                 &params->reflectedTemp,  &params->atmosphereTemp,
                                 &params->extOpticsTemp,  &params->extOpticsTransmission,
                                 &params->estAtmosphericTransmission, &params->relativeHumidity};
        for (int i = 0; i < 8; ++i) EXPECT_EQ(*objPar[i], v.objPar[i]) << i;
        EXPECT_TRUE(params->source);
        EXPECT_EQ(params->reserved, 255u);
        EXPECT_EQ(params->atmosphericTransmission, 1.0f) << "left as it was";

        auto cal = p.cal();
        EXPECT_TRUE(cal->valid);
        const SCalibParams& c = cal->calib;
        EXPECT_EQ(c.R, v.rbf[0]);
        EXPECT_EQ(c.F, v.rbf[2]);
        EXPECT_EQ(c.alpha1, v.atm[0]) << "bytes 112 to 115 are never swapped";
        EXPECT_EQ(c.X, v.atm[4]);
        // 144, 148, 152, 156, 160, 164 are the ranges, clamps and valid limits in this order.
        EXPECT_EQ(c.rangeHighTemp, v.ranges[0]);
        EXPECT_EQ(c.rangeLowTemp, v.ranges[1]);
        EXPECT_EQ(c.clampHighTemp, v.ranges[2]);
        EXPECT_EQ(c.clampLowTemp, v.ranges[3]);
        EXPECT_EQ(c.validHighTemp, v.ranges[4]);
        EXPECT_EQ(c.validLowTemp, v.ranges[5]);
        const SAdjustParams& a = cal->adjust;
        EXPECT_EQ(a.offset, v.offset);
        EXPECT_EQ(a.gain, v.gain);
        EXPECT_EQ(a.imgLow, v.imgLow);
        EXPECT_EQ(a.imgHigh, v.imgHigh);
        EXPECT_EQ(a.nonLinear, v.nonLinear);
        EXPECT_EQ(a.nonLinearFactor, v.nonLinearFactor);
        EXPECT_EQ(a.nonLinearZero, v.nonLinearZero);

        auto info = p.info();
        EXPECT_EQ(info->frame, v.counter);
        EXPECT_EQ(info->time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
        EXPECT_EQ(info->timeSource, timeSourceCamera);
        EXPECT_TRUE(info->valid);
        EXPECT_EQ(info->extra.nValues(), 0u);

        // The stored record is in our order, with the frame's geometry.
        auto camera = p.camera();
        EXPECT_TRUE(camera->valid && camera->infoFlag);
        EXPECT_FALSE(camera->tagFlag);
        CBytes stored(2428);
        std::memcpy(stored.b.data(), camera->info, 2428);
        EXPECT_EQ(stored.Get<uint16_t>(0), 2);
        EXPECT_EQ(stored.Get<uint16_t>(4), kH);
        EXPECT_EQ(stored.Get<uint16_t>(16), kH - 1);
        EXPECT_EQ(stored.Get<float>(116), v.atm[1]);
        EXPECT_EQ(p.pixels, (std::vector<uint16_t>{1, 2, 3, 4, 5, 6}));
        EXPECT_TRUE(filter.hasMeasData && filter.hasCameraTime);
        EXPECT_EQ(filter.frameCount, 1u);
    }
}

TEST(V410Filter, ByteSwapFollowsTheMapAndLeavesItsGapsAlone)
{
    SBasicData r;
    for (unsigned i = 0; i < SBasicData::kSize; ++i) r.bytes[i] = static_cast<unsigned char>(i * 7);
    const SBasicData before = r;
    r.ByteSwap();
    // (offset, width): a swapped item reads reversed; width 1 stays.
    const std::pair<unsigned, unsigned> items[] = {{0, 2},    {26, 2},   {28, 1},   {112, 1},  {116, 4},
                                                   {964, 2},  {966, 1},  {968, 4},  {1130, 2}, {1134, 1},
                                                   {1147, 1}, {1148, 4}, {1152, 1}, {1168, 4}, {1176, 4},
                                                   {1180, 1}, {1712 + 19 * 20 + 16, 4}, {2112, 2}, {2132, 4},
                                                   {2384, 4}, {2388, 1},  {2427, 1}};
    for (const auto& [at, width] : items)
        for (unsigned k = 0; k < width; ++k) {
            EXPECT_EQ(r.bytes[at + k], before.bytes[at + width - 1 - k]) << at;
        }
    // The header of the MX515 cameras stops swapping at 1134.
    SMX515Header h;
    std::memcpy(h.bytes, before.bytes, SMX515Header::kSize);
    h.ByteSwap();
    EXPECT_EQ(0, std::memcmp(h.bytes, r.bytes, 1134));
    EXPECT_EQ(0, std::memcmp(h.bytes + 1134, before.bytes + 1134, SMX515Header::kSize - 1134));
}

TEST(V410Filter, GigEPrefixGivesEntriesTriggersAndHostOrderPixels)
{
    SRecordValues v;
    struct SCase {
        uint8_t mark, flags2;
        uint16_t flags;
        uint32_t count;
    } cases[] = {{0x04, 0x02, 49, 1}, {0x08, 0x00, 0, 0}, {0x01, 0x00, 1, 1}};
    for (const SCase& c : cases) {
        CV410Filter filter;
        CBytes f = IRFrame(v, false, true, true);
        f.b[kP + 2] = c.mark;
        f.b[kP + 3] = c.flags2;
        f.b[kP + 10] = 1;
        f.b[kP + 11] = 0;
        f.Put<uint16_t>(kP + 12, 0x0102, true);
        f.b[kP + 31] = 0x5A;
        SParsed p(filter, f, guidV410GIGE);
        ASSERT_TRUE(p.ok);
        auto info = p.info();
        ASSERT_EQ(info->extra.nValues(), 3u);
        const char* names[] = {"DigitalIn1", "DigitalIn2", "Mark"};
        const std::string values[] = {"1", "0", std::to_string(c.mark)};
        for (unsigned i = 0; i < 3; ++i) {
            const auto* e = info->extra.EntryAt(i);
            EXPECT_EQ(e->name, CString(names[i]));
            EXPECT_EQ(e->value, CString(values[i].c_str()));
            EXPECT_EQ(e->unit, CString("Flag"));
            EXPECT_EQ(e->type, CString("int"));
        }
        EXPECT_EQ(info->frame, 0x0102u);
        EXPECT_EQ(info->timeSource, timeSourcePC);
        EXPECT_FALSE(filter.hasCameraTime);
        auto camera = p.camera();
        CBytes stored(2428);
        std::memcpy(stored.b.data(), camera->info, 2428);
        EXPECT_EQ(stored.Get<uint16_t>(960), 1);
        EXPECT_EQ(stored.Get<uint16_t>(962), 0);
        EXPECT_EQ(stored.Get<uint16_t>(964), c.flags) << int(c.mark);
        EXPECT_EQ(stored.Get<uint32_t>(968), c.count) << int(c.mark);
        EXPECT_TRUE(camera->tagFlag);
        EXPECT_EQ(0, std::memcmp(camera->tag, f.b.data() + kP, 32));
        EXPECT_EQ(p.pixels, (std::vector<uint16_t>{1, 2, 3, 4, 5, 6})) << "swapped pixels in host order";
    }

    // The flipped type turns the image by 180 degrees.
    CV410Filter filter;
    CBytes f = IRFrame(v, false, true);
    SParsed p(filter, f, guidV410GIGEFlip);
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.pixels, (std::vector<uint16_t>{6, 5, 4, 3, 2, 1}));
    TArray<CString> names;
    EXPECT_TRUE(filter.GetTriggerFields(guidV410GIGEFlip, names));
    EXPECT_EQ(names.size(), 3u);
    EXPECT_TRUE(filter.GetTriggerFields(guidV410F7M0, names));
    EXPECT_EQ(names.size(), 0u);
}

TEST(V410Filter, BadFramesFailWithoutChangingAnything)
{
    const SRecordValues v;
    CBytes good = IRFrame(v, false, false);
    std::vector<CBytes> bad(6, good);
    bad[0].Put<uint16_t>(kP + 64, 31);                     // first kind
    bad[1].Put<uint16_t>(kP + 96, 2);                      // second kind
    bad[2].Put<uint32_t>(kP, 0x464647);                    // no magic
    bad[3].Put<uint32_t>(kP + 76, 0xFFFFFF00u);            // record far outside the frame
    bad[4].b.resize(kP + kRecordAt + 1000);                // record cut short
    bad[5].b.resize(kP + 50);                              // block head cut short
    for (size_t i = 0; i < bad.size(); ++i) {
        CV410Filter filter;
        SParsed p(filter, bad[i], guidV410F7M0);
        EXPECT_FALSE(p.ok) << i;
        EXPECT_TRUE(p.info() && p.cal() && p.camera()) << "the objects exist after a failure";
        EXPECT_FALSE(p.cal()->valid);
        EXPECT_EQ(p.pixels[0], 0xEEEE);
        EXPECT_EQ(filter.frameCount, 0u);
    }
    // Types of no group and output types the group does not take.
    CV410Filter filter;
    CReduceObjectArray objects;
    uint8_t preset = 0;
    std::vector<unsigned char> rgb(kW * kH * 3);
    for (SGuid t : {guidYUY2, guidBGR8, guidF7M0}) {
        EXPECT_FALSE(filter.ParseFrame(good.b.data(), t, kW, kH, uint32_t(good.b.size()), STypedData(), objects,
                                       preset));
    }
    EXPECT_FALSE(filter.ParseFrame(good.b.data(), guidV410F7M0, kW, kH, uint32_t(good.b.size()),
                                   STypedData(rgb.data(), dtRGB24), objects, preset));
    EXPECT_FALSE(filter.ParseFrame(good.b.data(), guidV410UYVY, kW, kH, uint32_t(good.b.size()),
                                   STypedData(rgb.data(), dtUInt16), objects, preset));
    EXPECT_EQ(filter.frameCount, 0u);
}

TEST(V410Filter, PeeksReadInPlaceAndStopAtTheFrameEnd)
{
    SRecordValues v;
    CV410Filter filter;
    CBytes f = IRFrame(v, false, false);
    uint64_t counter = 0;
    CDateTime time;
    uint8_t preset = 7;
    EXPECT_TRUE(filter.ParseFrameCounter(f.b.data(), guidV410F7M0, kW, kH, uint32_t(f.b.size()), counter));
    EXPECT_EQ(counter, v.counter);
    EXPECT_TRUE(filter.ParseTime(f.b.data(), guidV410FNM0, kW, kH, uint32_t(f.b.size()), time));
    EXPECT_EQ(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
    EXPECT_TRUE(filter.ParseBasicInfo(f.b.data(), guidV410F7M0, kW, kH, uint32_t(f.b.size()), preset, counter, time));
    EXPECT_EQ(preset, 0);
    EXPECT_EQ(counter, v.counter);
    // GigE types take no camera time.
    EXPECT_TRUE(filter.ParseTime(f.b.data(), guidV410GIGE, kW, kH, uint32_t(f.b.size()), time));
    EXPECT_NE(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));

    // 63 bytes behind the pixels fail the bounds test; a prefixed frame of 64 passes.
    CBytes g = IRFrame(v, false, true);
    g.Put<uint16_t>(kP + 12, 0x0A0B, true);
    EXPECT_FALSE(filter.ParseFrameCounter(g.b.data(), guidV410GIGE, kW, kH, uint32_t(kP + 63), counter));
    EXPECT_FALSE(filter.ParseTime(f.b.data(), guidV410F7M0, kW, kH, uint32_t(kP + 63), time));
    EXPECT_FALSE(filter.ParseBasicInfo(g.b.data(), guidV410GIGE, kW, kH, uint32_t(kP + 63), preset, counter, time));
    EXPECT_TRUE(filter.ParseFrameCounter(g.b.data(), guidV410GIGE, kW, kH, uint32_t(kP + 64), counter));
    EXPECT_EQ(counter, 0x0A0Bu);
    EXPECT_TRUE(filter.ParseBasicInfo(g.b.data(), guidV410GIGE, kW, kH, uint32_t(kP + 64), preset, counter, time));
    // A record said to lie past the frame's end is not read.
    EXPECT_FALSE(filter.ParseTime(f.b.data(), guidV410F7M0, kW, kH, uint32_t(kP + 64), time));
    // Other types: the software counter, which the peeks never move.
    EXPECT_TRUE(filter.ParseFrameCounter(f.b.data(), guidV410UYVY, kW, kH, 0, counter));
    EXPECT_EQ(counter, 0u);
}

TEST(V410Filter, TriggersFromThePrefixAndFromTheRecordCount)
{
    SRecordValues v;
    CV410Filter filter;
    bool triggered = true;
    uint16_t position = 9;
    auto check = [&](CBytes& f, SGuid t, uint8_t field) {
        EXPECT_TRUE(filter.CheckForTrigger(f.b.data(), uint32_t(f.b.size()), t, kW, kH, 0, field, triggered,
                                           position));
        EXPECT_EQ(position, 0);
        return triggered;
    };
    // Record-only stream: only a rise of the count on field 2 fires, never the first frame.
    const struct {
        uint32_t count;
        uint8_t field;
        bool fires;
    } steps[] = {{5, 2, false}, {6, 2, true}, {6, 2, false}, {4, 2, false}, {9, 0, false}, {10, 2, true}};
    for (const auto& s : steps) {
        v.triggerCount = s.count;
        CBytes f = IRFrame(v, true, false);
        EXPECT_EQ(check(f, guidV410F7M0, s.field), s.fires) << s.count;
    }
    EXPECT_EQ(filter.lastTriggerCount, 10u);

    CBytes g = IRFrame(v, false, true);
    g.b[kP + 2] = 0x02;
    g.b[kP + 11] = 1;
    EXPECT_FALSE(check(g, guidV410GIGE, 0));
    EXPECT_TRUE(check(g, guidV410GIGE, 1));
    EXPECT_TRUE(check(g, guidV410GIGE, 2));
    EXPECT_FALSE(check(g, guidV410GIGE, 3));
    EXPECT_FALSE(filter.CheckForTrigger(g.b.data(), uint32_t(g.b.size()), guidMJLSIR, kW, kH, 0, 0, triggered,
                                        position));
    // Neither place holds a block: true, nothing fired; a short frame reads as one without a block.
    EXPECT_TRUE(filter.CheckForTrigger(g.b.data(), 10, guidV410GIGE, kW, kH, 0, 2, triggered, position));
    EXPECT_FALSE(triggered);
}

TEST(V410Filter, StoreFrameSplitsSubFramesAndNumbersThem)
{
    const uint16_t w = 2, h = 1; // S = 4
    for (const auto& [subFrames, index, stored] :
         {std::tuple{2, 1, 0x2469}, std::tuple{4, 3, 0x48D3}, std::tuple{3, 2, 0x1234}}) {
        CBytes f(4 * subFrames + 64);
        for (int s = 0; s < subFrames; ++s) f.Put<uint32_t>(4 * s, 0xA0A0A0A0u + s);
        const size_t t = 4 * subFrames;
        f.Put<uint32_t>(t + 32, 0x464646);
        f.Put<uint16_t>(t + 12, 0x1234, true);
        CBytes out(4 + 64 + 8);
        CV410Filter filter;
        EXPECT_TRUE(filter.StoreFrame(f.b.data(), uint32_t(f.b.size()), guidV410GIGE, w, h, uint16_t(subFrames),
                                      uint16_t(index), out.b.data(), uint32_t(out.b.size())));
        EXPECT_EQ(out.Get<uint32_t>(0), 0xA0A0A0A0u + index);
        EXPECT_EQ(out.b[4 + 12] << 8 | out.b[4 + 13], stored) << subFrames;
        EXPECT_EQ(out.Get<uint32_t>(4 + 32), 0x464646u);
        // A slot too small for sub-frame and trailer is refused.
        EXPECT_FALSE(filter.StoreFrame(f.b.data(), uint32_t(f.b.size()), guidV410GIGE, w, h, uint16_t(subFrames),
                                       uint16_t(index), out.b.data(), 4 + 63));
    }
    // No magic in the trailer: false for the counted types, true for the others.
    CBytes f(8 + 64), out(8 + 64);
    CV410Filter filter;
    EXPECT_FALSE(filter.StoreFrame(f.b.data(), 72, guidV410F7M0, 2, 1, 2, 0, out.b.data(), 72));
    EXPECT_TRUE(filter.StoreFrame(f.b.data(), 72, guidV410FNM0, 2, 1, 2, 0, out.b.data(), 72));
    EXPECT_FALSE(filter.StoreFrame(f.b.data(), 7, guidV410FNM0, 2, 1, 2, 1, out.b.data(), 72));
}

TEST(V410Filter, ColourStreamsDecodeToRGB)
{
    const struct {
        SGuid type;
        std::vector<unsigned char> in;
        std::vector<unsigned char> rgb;
    } cases[] = {
        // U Y0 V Y1 / Y0 U Y1 V; black and white share U and V.
        {guidV410UYVY, {128, 16, 128, 235}, {0, 0, 0, 255, 255, 255}},
        {guidUYVY, {128, 235, 128, 16}, {255, 255, 255, 0, 0, 0}},
        {guidV410YUY2, {16, 128, 235, 128}, {0, 0, 0, 255, 255, 255}},
        // Y 81, U 90, V 240: red, by the integer formula: (298*65 + 409*112 + 128) >> 8 = 255 (clipped),
        // (298*65 - 100*-38 - 208*112 + 128) >> 8 = 0, (298*65 + 516*-38 + 128) >> 8 = -1 -> 0.
        {guidV410YUY2, {81, 90, 81, 240}, {255, 0, 0, 255, 0, 0}},
        // BGR: blue first.
        {guidV410BGR8, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
    };
    for (const auto& c : cases) {
        const uint16_t w = 2, h = 1;
        CV410Filter filter;
        CReduceObjectArray objects;
        std::vector<unsigned char> in = c.in, out(w * h * 3 + 1, 0xEE);
        uint8_t preset = 0;
        ASSERT_TRUE(filter.ParseFrame(in.data(), c.type, w, h, uint32_t(in.size()), STypedData(out.data(), dtRGB24),
                                      objects, preset));
        EXPECT_EQ(std::vector<unsigned char>(out.begin(), out.end() - 1), c.rgb);
        EXPECT_EQ(out.back(), 0xEE);
        auto info = objects.GetFrameInfo(0, false);
        EXPECT_EQ(info->timeSource, timeSourcePC);
        EXPECT_EQ(info->frame, 0u);
        EXPECT_EQ(filter.frameCount, 1u);
        // One byte short of the pixels: refused before anything changes.
        EXPECT_FALSE(filter.ParseFrame(in.data(), c.type, w, h, uint32_t(in.size() - 1),
                                       STypedData(out.data(), dtRGB24), objects, preset));
        EXPECT_EQ(filter.frameCount, 1u);
    }
    // Two rows of BGR: the bottom row comes out first.
    CV410Filter filter;
    CReduceObjectArray objects;
    std::vector<unsigned char> in = {1, 2, 3, 4, 5, 6}, out(6);
    uint8_t preset = 0;
    ASSERT_TRUE(filter.ParseFrame(in.data(), guidV410BGR8, 1, 2, 6, STypedData(out.data(), dtRGB24), objects, preset));
    EXPECT_EQ(out, (std::vector<unsigned char>{6, 5, 4, 3, 2, 1}));
}

TEST(V410Filter, JpegLsFramesDecodeAndKeepTheCameraTimeOnlyInParseFrame)
{
    const uint16_t w = 8, h = 4;
    std::vector<uint16_t> image(w * h);
    for (size_t i = 0; i < image.size(); ++i) image[i] = uint16_t(3000 + 37 * i);
    JlsParameters params{};
    params.width = w;
    params.height = h;
    params.bitsPerSample = 16;
    params.components = 1;
    std::vector<unsigned char> jls(4096);
    size_t length = 0;
    ASSERT_EQ(JpegLsEncode(jls.data(), jls.size(), &length, image.data(), image.size() * 2, &params, nullptr),
              CharlsApiResultType::OK);

    SRecordValues v;
    CBytes f(4 + length + 100 + 2428);
    f.Put<uint32_t>(0, uint32_t(length), true);
    std::memcpy(f.b.data() + 4, jls.data(), length);
    const size_t block = 4 + length;
    f.Put<uint32_t>(block, 0x464646);
    f.Put<uint16_t>(block + 64, 32);
    f.Put<uint32_t>(block + 76, 100);
    f.Put<uint32_t>(block + 80, 2428);
    f.Put<uint16_t>(block + 96, 1);
    WriteRecord(f, block + 100, v, true);

    CV410Filter filter;
    filter.frameCount = 65535;
    CReduceObjectArray objects;
    std::vector<uint16_t> pixels(w * h);
    uint8_t preset = 0;
    ASSERT_TRUE(filter.ParseFrame(f.b.data(), guidMJLSIR, w, h, uint32_t(f.b.size()),
                                  STypedData(pixels.data(), dtUInt16), objects, preset));
    EXPECT_EQ(pixels, image);
    auto info = objects.GetFrameInfo(0, false);
    EXPECT_EQ(info->frame, 65535u) << "the software counter";
    EXPECT_EQ(filter.frameCount, 0u) << "wrapped";
    EXPECT_EQ(info->time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
    EXPECT_EQ(info->timeSource, timeSourceCamera);
    EXPECT_FALSE(filter.hasMeasData);
    EXPECT_EQ(objects.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, false)
                  .DynamicCast<COmbriaFactoryCalReduceObject>()
                  ->calib.B,
              v.rbf[1]);

    CDateTime time;
    EXPECT_TRUE(filter.ParseTime(f.b.data(), guidMJLSIR, w, h, uint32_t(f.b.size()), time));
    EXPECT_NE(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis)) << "the system time";
    // A length that points past the frame, and a frame shorter than its length word.
    f.Put<uint32_t>(0, uint32_t(f.b.size()), true);
    EXPECT_FALSE(filter.ParseTime(f.b.data(), guidMJLSIR, w, h, uint32_t(f.b.size()), time));
    EXPECT_FALSE(filter.ParseFrame(f.b.data(), guidMJLSIR, w, h, 3, STypedData(), objects, preset));
}

TEST(V410Filter, JpegFramesDecodeNoFurtherThanTheFrameSize)
{
    // A 16 x 16 grey ramp, as a camera's screen stream would send it.
    const unsigned w = 16, h = 16;
    std::vector<unsigned char> rgb(w * h * 3);
    for (size_t i = 0; i < rgb.size(); ++i) rgb[i] = static_cast<unsigned char>(i / 3 % w * 16);
    jpeg_compress_struct c{};
    jpeg_error_mgr err{};
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* mem = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &mem, &size);
    c.image_width = w;
    c.image_height = h;
    c.input_components = 3;
    c.in_color_space = JCS_RGB;
    jpeg_set_defaults(&c);
    jpeg_set_quality(&c, 100, TRUE);
    jpeg_start_compress(&c, TRUE);
    while (c.next_scanline < h) {
        JSAMPROW row = rgb.data() + c.next_scanline * w * 3;
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::vector<unsigned char> frame(mem, mem + size);
    free(mem);

    // The decode is given the frame's size as the output's: a stream shorter
    // than the image fills only that many bytes; a padded frame the whole image.
    for (size_t padding : {size_t(0), rgb.size()}) {
        std::vector<unsigned char> f = frame;
        f.resize(frame.size() + padding, 0);
        std::vector<unsigned char> out(rgb.size() + 1, 0xEE);
        CV410Filter filter;
        CReduceObjectArray objects;
        uint8_t preset = 0;
        ASSERT_TRUE(filter.ParseFrame(f.data(), guidMJPG, w, h, uint32_t(f.size()), STypedData(out.data(), dtRGB24),
                                      objects, preset));
        const size_t written = std::min(f.size(), rgb.size());
        for (size_t i = 0; i < written; ++i) {
            EXPECT_NEAR(out[i], rgb[i], 3) << i;
        }
        for (size_t i = written; i < out.size(); ++i) {
            EXPECT_EQ(out[i], 0xEE) << i;
        }
    }
}
