// Region figures over a frame whose value tells its position: v = x + 1000 y.
#include <gtest/gtest.h>

#include <vector>

#include "reduce/roi/RoiMeasure.h"

using namespace orv;
using namespace orv::reduce;

TEST(RoiMeasure, FiguresFollowTheMask)
{
    constexpr unsigned short kW = 50, kH = 40;
    std::vector<double> frame(kW * kH);
    std::vector<unsigned char> status(kW * kH, 0);
    for (unsigned i = 0; i < frame.size(); ++i) frame[i] = double(i % kW) + 1000.0 * (i / kW);
    status[12 * kW + 10] = 0x10; // excluded from the figures, seen in the centre's status

    CRoiList list;
    list.SetImageSize(kW, kH);
    TSharedPtr<SRoi> rect = CreateRectRoi("r", SRectF{10, 8, 15, 12}); // pixels x 8..11, y 10..14
    TSharedPtr<SRoi> line = CreateLineRoi("l", SPointF(2, 30), SPointF(20, 33));
    list.add(rect);
    list.add(line);
    CRoiMeter meter;
    ASSERT_TRUE(meter.Prepare(list));
    ASSERT_EQ(meter.size(), 3u);

    SRoiFigures f;
    ASSERT_TRUE(meter.Measure(1, STypedData(frame.data(), dtFlt64), status.data(), f));
    // 20 pixels, one excluded: the sum of x + 1000 y over the rest.
    double sum = 0;
    for (int y = 10; y < 15; ++y)
        for (int x = 8; x < 12; ++x) sum += (x == 10 && y == 12) ? 0 : x + 1000.0 * y;
    EXPECT_EQ(f.stats.numPixels, 19u);
    EXPECT_DOUBLE_EQ(f.stats.mean, sum / 19);
    EXPECT_EQ(f.stats.minValue, 10008);
    EXPECT_EQ(f.stats.maxPosition, SPoint(11, 14));
    // The centre is one less than the box centre: (9, 11.5) -> pixels (9, 11), (9, 12).
    EXPECT_DOUBLE_EQ(f.centerValue, 9 + 11500.0);
    EXPECT_EQ(f.centerStatus, 0);
    EXPECT_TRUE(f.profile.empty());

    ASSERT_TRUE(meter.Measure(2, STypedData(frame.data(), dtFlt64), status.data(), f));
    ASSERT_EQ(f.profilePoints.size(), 19u);
    for (size_t i = 0; i < f.profile.size(); ++i) {
        EXPECT_EQ(f.profile[i], f.profilePoints[i].x + 1000.0 * f.profilePoints[i].y);
    }
    EXPECT_EQ(f.stats.numPixels, 19u);

    ASSERT_TRUE(meter.Measure(0, STypedData(frame.data(), dtFlt64), nullptr, f));
    EXPECT_EQ(f.stats.numPixels, unsigned(kW) * kH);
    EXPECT_DOUBLE_EQ(f.centerValue, 24.5 + 19500); // the frame's own centre

    EXPECT_FALSE(meter.Measure(3, STypedData(frame.data(), dtFlt64), nullptr, f));
    EXPECT_FALSE(meter.Measure(0, STypedData(frame.data(), dtRGB24), nullptr, f));
    CRoiList unsized;
    EXPECT_FALSE(meter.Prepare(unsized));
}
