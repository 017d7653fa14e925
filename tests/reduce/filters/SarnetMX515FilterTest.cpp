#include <gtest/gtest.h>

#include <vector>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/MX515Filter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/SarnetFilter.h"
#include "tests/reduce/filters/CameraFrames.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

constexpr uint16_t kW = 2, kH = 2;
constexpr size_t kP = kW * kH * 2;

// Pixels 1..4 and the 1148-byte header behind them.
CBytes HeaderFrame(const SRecordValues& v, bool bigEndian)
{
    CBytes f(kP + 1148);
    for (uint16_t i = 0; i < kW * kH; ++i) f.Put<uint16_t>(2 * i, uint16_t(i + 1));
    WriteRecord(f, kP, v, bigEndian);
    f.Put<uint16_t>(kP + 22, 0x7777);
    return f;
}

template <class Filter>
bool Parse(Filter& filter, CBytes& f, SGuid type, CReduceObjectArray& objects, std::vector<uint16_t>& pixels)
{
    uint8_t preset = 5;
    return filter.ParseFrame(f.b.data(), type, kW, kH, uint32_t(f.b.size()), STypedData(pixels.data(), dtUInt16),
                             objects, preset);
}

} // namespace

TEST(SarnetMX515Filter, BigEndianHeaderIsSwappedOnceInTheFrame)
{
    SRecordValues v;
    v.counter = 0x0102;
    v.infoInvalid = 1;
    for (int which = 0; which < 2; ++which) {
        SCOPED_TRACE(which == 0 ? "Sarnet" : "MX515");
        CSarnetFilter sarnet;
        CMX515Filter mx515;
        const SGuid type = which == 0 ? guidSarnetF7M0 : guidMX515F7M2;
        CBytes f = HeaderFrame(v, true);
        for (int pass = 0; pass < 2; ++pass) {
            CReduceObjectArray objects;
            std::vector<uint16_t> pixels(kW * kH);
            ASSERT_TRUE(which == 0 ? Parse(sarnet, f, type, objects, pixels) : Parse(mx515, f, type, objects, pixels));
            EXPECT_EQ(f.Get<uint16_t>(kP), 2) << "the frame keeps its header in order";
            EXPECT_EQ(f.Get<float>(kP + 32), v.objPar[0]);
            EXPECT_EQ(objects.GetObjectParameters(false)->distance, v.objPar[1]);
            auto cal = objects.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, false)
                           .DynamicCast<COmbriaFactoryCalReduceObject>();
            EXPECT_EQ(cal->adjust.nonLinearZero, v.nonLinearZero);
            EXPECT_EQ(cal->calib.alpha2, v.atm[1]);
            auto info = objects.GetFrameInfo(0, false);
            EXPECT_EQ(info->time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
            EXPECT_EQ(info->timeSource, timeSourceCamera);
            auto camera = objects.GetObjectOfType(COmbriaCameraInfoReduceObject::typeID, -1, false)
                              .DynamicCast<COmbriaCameraInfoReduceObject>();
            EXPECT_EQ(0, std::memcmp(camera->info, f.b.data() + kP, 1148));
            EXPECT_EQ(camera->info[1148], 0);
            EXPECT_EQ(camera->info[2427], 0);
            EXPECT_FALSE(camera->tagFlag);
            EXPECT_EQ(pixels, (std::vector<uint16_t>{1, 2, 3, 4}));
            if (which == 0) {
                EXPECT_EQ(f.Get<uint16_t>(kP + 22), 0);
                EXPECT_EQ(info->frame, 0x0102u);
                EXPECT_TRUE(info->valid) << "Sarnet frames are always valid";
            } else {
                EXPECT_EQ(f.Get<uint16_t>(kP + 2), kW);
                EXPECT_EQ(f.Get<uint16_t>(kP + 4), kH);
                EXPECT_EQ(f.Get<uint16_t>(kP + 12), kW - 1);
                EXPECT_EQ(f.Get<uint16_t>(kP + 16), kH - 1);
                EXPECT_EQ(info->frame, uint64_t(pass)) << "counted in software";
                EXPECT_FALSE(info->valid) << "per the word at 1130";
            }
        }
        // A frame that cannot hold the header is refused.
        CReduceObjectArray objects;
        uint8_t preset = 0;
        EXPECT_FALSE(which == 0 ? sarnet.ParseFrame(f.b.data(), type, kW, kH, uint32_t(kP + 1147), STypedData(),
                                                    objects, preset)
                                : mx515.ParseFrame(f.b.data(), type, kW, kH, uint32_t(kP + 1147), STypedData(),
                                                   objects, preset));
    }
}

TEST(SarnetMX515Filter, CountersAndTimes)
{
    SRecordValues v;
    v.counter = 0x0102;
    CBytes f = HeaderFrame(v, false);
    const auto size = uint32_t(f.b.size());
    uint64_t counter = 0;
    uint8_t preset = 3;
    CDateTime time;

    CSarnetFilter sarnet;
    EXPECT_TRUE(sarnet.ParseFrameCounter(f.b.data(), guidSarnetF7M0, kW, kH, size, counter));
    EXPECT_EQ(counter, 0x0201u) << "two bytes exchanged";
    EXPECT_TRUE(sarnet.ParseBasicInfo(f.b.data(), guidSarnetF7M0, kW, kH, size, preset, counter, time));
    EXPECT_EQ(counter, 0x0102u);
    EXPECT_EQ(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
    EXPECT_TRUE(sarnet.ParseFrameCounter(f.b.data(), guidSarnetUYVY, kW, kH, size, counter));
    EXPECT_EQ(counter, 0u);
    EXPECT_FALSE(sarnet.hasCameraCounter);
    // A short frame reads as one without a header.
    EXPECT_TRUE(sarnet.ParseTime(f.b.data(), guidSarnetF7M0, kW, kH, 100, time));
    EXPECT_NE(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));

    CMX515Filter mx515;
    EXPECT_FALSE(mx515.HasFrameCounter(guidMX515F7M2));
    mx515.frameCount = 41;
    EXPECT_TRUE(mx515.ParseFrameCounter(f.b.data(), guidMX515F7M2, kW, kH, size, counter));
    EXPECT_EQ(counter, 41u);
    EXPECT_TRUE(mx515.ParseBasicInfo(f.b.data(), guidMX515F7M2, kW, kH, size, preset, counter, time));
    EXPECT_EQ(preset, 0);
    EXPECT_EQ(counter, 41u);
    EXPECT_EQ(time.GetTimestamp(0), CameraTicks(v.seconds, v.millis));
    EXPECT_EQ(mx515.frameCount, 41u) << "peeks never advance";
}

TEST(SarnetMX515Filter, StoreFrameMovesTheBigEndianTimeWord)
{
    const uint16_t w = 2, h = 1; // S = 4
    for (const auto& [subFrames, index, added] : {std::tuple{2, 1, 16u}, std::tuple{4, 3, 24u}, std::tuple{3, 0, 0u}}) {
        CBytes f(4 * subFrames + 1148);
        const size_t t = 4 * subFrames;
        f.Put<uint32_t>(t + 904, 0x000100FFu, true);
        CBytes out(4 + 1148);
        CMX515Filter filter;
        ASSERT_TRUE(filter.StoreFrame(f.b.data(), uint32_t(f.b.size()), guidMX515F7M2, w, h, uint16_t(subFrames),
                                      uint16_t(index), out.b.data(), uint32_t(out.b.size())));
        EXPECT_EQ(out.b[4 + 904] << 24 | out.b[4 + 905] << 16 | out.b[4 + 906] << 8 | out.b[4 + 907],
                  int(0x000100FFu + added));
        EXPECT_FALSE(filter.StoreFrame(f.b.data(), uint32_t(f.b.size()), guidMX515F7M2, w, h, uint16_t(subFrames),
                                       uint16_t(index), out.b.data(), uint32_t(out.b.size() - 1)));
    }
}

TEST(SarnetMX515Filter, VideoIsUYVY)
{
    std::vector<unsigned char> in = {128, 16, 128, 235, 128, 235, 128, 16}, out(12);
    for (SGuid type : {guidSarnetUYVY, guidMX515F7M3, guidMX515UYVY}) {
        CSarnetFilter sarnet;
        CMX515Filter mx515;
        IFilter& filter = type == guidSarnetUYVY ? static_cast<IFilter&>(sarnet) : mx515;
        CReduceObjectArray objects;
        uint8_t preset = 0;
        ASSERT_TRUE(filter.ParseFrame(in.data(), type, kW, kH, 8, STypedData(out.data(), dtRGB24), objects, preset));
        EXPECT_EQ(out, (std::vector<unsigned char>{0, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 0}));
        EXPECT_EQ(objects.GetFrameInfo(0, false)->timeSource, timeSourcePC);
        EXPECT_FALSE(filter.ParseFrame(in.data(), type, kW, kH, 8, STypedData(out.data(), dtUInt16), objects, preset));
        EXPECT_FALSE(filter.ParseFrame(in.data(), type, kW, kH, 7, STypedData(out.data(), dtRGB24), objects, preset));
    }
}
