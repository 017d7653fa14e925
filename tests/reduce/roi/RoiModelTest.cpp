// The region record's tables, centre and curve helpers, copying, and the
// exact text of the exports.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

#include "reduce/roi/Roi.h"

using namespace orv;
using namespace orv::reduce;

namespace {

std::string Slurp(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

std::string TempPath(const char* name) { return "/tmp/orv-roi-" + std::to_string(getpid()) + "-" + name; }

TEST(RoiModel, StringFormsAndUnits)
{
    EXPECT_EQ(ParseRoiType("rect"), roiRect);
    EXPECT_EQ(ParseRoiType("MEASUREMENTCURSOR"), roiMeasurementCursor);
    EXPECT_EQ(ParseRoiType("Image"), roiImage);
    EXPECT_EQ(ParseRoiType("blob"), roiImage);
    EXPECT_STREQ(RoiTypeToString(ERoiType(12)), "Error");
    EXPECT_STREQ(RoiTypeToString(roiCrosshair), "Crosshair");
    EXPECT_EQ(ParseRoiNamePos("bottomright"), namePosBottomRight);
    EXPECT_EQ(ParseRoiNamePos("middle"), namePosTopLeft);
    EXPECT_STREQ(RoiNamePosToString(ERoiNamePos(8)), "Error");
    EXPECT_EQ(ParseIsothermTrackMode("ByColor"), trackByColor);
    EXPECT_EQ(ParseIsothermTrackMode("bycolor"), trackByValue); // exact text only
    EXPECT_STREQ(IsothermTrackModeToString(EIsothermTrackMode(2)), "Error");
    EXPECT_EQ(ParseIsothermUnit("radiance"), isoRadiance);
    EXPECT_EQ(ParseIsothermUnit("Kelvin"), isoCounts);
    EXPECT_STREQ(IsothermUnitToString(EIsothermUnit(-1)), "Error");

    // EUnit 0..13 by temperature scale C, F, K, R, 7.
    const int want[14][5] = {{1, 1, 1, 1, 1}, {3, 3, 3, 3, 3}, {4, 6, 5, 7, 4}, {2, 2, 2, 2, 2}, {3, 3, 3, 3, 3},
                             {4, 6, 5, 7, 4}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0},
                             {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}};
    for (int u = 0; u < 14; ++u)
        for (int t = 0; t < 5; ++t) EXPECT_EQ(DataUnitToIsothermUnit(EUnit(u), ETempType(t == 4 ? 7 : t)), want[u][t]) << u << "," << t;
}

TEST(RoiModel, ConstructorsCentreAndCopies)
{
    TSharedPtr<SRoi> c = CreateCircleRoi("c", SPointF(10, 20), 4);
    EXPECT_EQ(c->type, roiEllipse); // never Circle
    EXPECT_EQ(c->points[0], SPointF(6, 16));
    EXPECT_EQ(c->points[2], SPointF(14, 24));
    EXPECT_EQ(c->originalPoints.size(), 4u);

    // One point at (5, 5): centre (4, 4), all four indices at that pixel.
    TSharedPtr<SRoi> p = CreateCursorRoi("p", SPointF(5, 5));
    SPointF centre;
    TArray<unsigned int> idx;
    p->GetCenterIndicies(10, 10, idx, centre);
    EXPECT_EQ(centre, SPointF(4, 4));
    EXPECT_EQ(std::vector<unsigned>(idx.begin(), idx.end()), (std::vector<unsigned>{44, 44, 44, 44}));
    // Between pixels, and clamped to the frame.
    TSharedPtr<SRoi> r = CreateRectRoi("r", SRectF{0, 0, 1, 4});
    idx.clear();
    r->GetCenterIndicies(10, 10, idx, centre);
    EXPECT_EQ(centre, SPointF(1, -0.5));
    EXPECT_EQ(std::vector<unsigned>(idx.begin(), idx.end()), (std::vector<unsigned>{1, 1, 1, 1}));

    // GetCenter: the last four values, their status OR; fewer than four: nothing.
    p->values = {1, 2, 3};
    p->GetCenter();
    EXPECT_EQ(p->values.size(), 3u);
    p->values = {9, 1, 2, 3, 6};
    p->statuses = {0, 1, 0, 4, 0};
    p->indices = {7, 1, 2, 3, 4};
    p->GetCenter();
    EXPECT_EQ(p->centerValue, 3.0);
    EXPECT_EQ(p->centerStatus, 5);
    EXPECT_EQ(p->values.size(), 1u);
    EXPECT_EQ(p->indices.size(), 1u);

    p->MarkAllAsDityExcept(isoTemperatureK);
    for (int u = 0; u < kIsothermUnits; ++u) EXPECT_EQ(p->dirty[u], u != isoTemperatureK);

    // Copies take everything but the mask.
    p->CreateBitmask(10, 10);
    p->UpdateBitmask();
    SRoi copy(*p);
    EXPECT_EQ(copy.bitmask, nullptr);
    EXPECT_EQ(copy.bitmaskStride, 0u);
    EXPECT_EQ(copy.bounds, p->bounds);
    EXPECT_EQ(copy.centerValue, 3.0);
    SRoi& same = copy;
    copy = same; // itself: nothing changes
    EXPECT_EQ(copy.name, "p");
    SRoi other;
    other.CreateBitmask(4, 4);
    other = *p;
    EXPECT_EQ(other.bitmask, nullptr);
}

TEST(RoiModel, FlattenedBezierFollowsTheCurve)
{
    TArray<SPointF> out;
    FlattenCubicBezier({0, 0}, {1, 0}, {2, 0}, {3, 0}, out, 0);
    EXPECT_TRUE(out.empty());
    // A quarter circle of radius 100 from (100, 0) to (0, 100).
    const double k = 0.5522847498308 * 100;
    out = {{100, 0}, {0, 100}};
    FlattenCubicBezier({100, 0}, {100, k}, {k, 100}, {0, 100}, out, 1);
    ASSERT_GT(out.size(), 8u);
    double last = -1;
    for (const SPointF& q : out) {
        double angle = std::atan2(q.y, q.x);
        EXPECT_GT(angle, last); // in curve order
        last = angle;
        EXPECT_NEAR(std::hypot(q.x, q.y), 100, 0.03);
    }
    // The chords are within 0.1 % of the arc: the sagitta of each stays small.
    for (size_t i = 0; i + 1 < out.size(); ++i) {
        double chord = std::hypot(out[i + 1].x - out[i].x, out[i + 1].y - out[i].y);
        EXPECT_LT(chord * chord / (8 * 100), 0.5);
    }
}

TEST(RoiModel, ExportTextAndBitmap)
{
    // Rect (1, 1)-(4, 3) on 6 x 4: pixels 1..3 of rows 1 and 2; bounds 1,1-4,3.
    TSharedPtr<SRoi> r = CreateRectRoi("r", SRectF{1, 1, 3, 4});
    r->CreateBitmask(6, 4);
    r->UpdateBitmask();
    r->bitmask[1 * r->bitmaskStride + 2] = 0; // a gap: two runs in row 1
    const std::string svg = TempPath("r.svg"), bmp = TempPath("r.bmp");
    ASSERT_TRUE(r->ExportSvg(svg.c_str()));
    const std::string want =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<svg version=\"1.1\" viewBox=\"0 0 30 20\">\n"
        "\t<defs>\n"
        "\t\t<pattern id=\"pixelOutline\" patternUnits=\"userSpaceOnUse\" x=\"0\" y=\"0\" width=\"10\" height=\"10\" "
        "viewBox=\"0 0 10 10\">\n"
        "\t\t\t<rect x=\"0\" y=\"0\" width=\"10\" height=\"10\" fill=\"none\" stroke=\"black\" stroke-width=\"1\"/>\n"
        "\t\t\t<rect x=\"4.5\" y=\"4.5\" width=\"1\" height=\"1\" fill=\"black\" stroke=\"none\"/>\n"
        "\t\t</pattern>\n"
        "\t</defs>\n"
        "\t<rect x=\"0\" y=\"0\" width=\"30\" height=\"20\" fill=\"white\" stroke=\"none\"/>\n"
        "\t<rect x=\"0\" y=\"0\" width=\"10\" height=\"10\" fill=\"lightgray\" stroke=\"none\"/>\n"
        "\t<rect x=\"20\" y=\"0\" width=\"10\" height=\"10\" fill=\"lightgray\" stroke=\"none\"/>\n"
        "\t<rect x=\"0\" y=\"10\" width=\"30\" height=\"10\" fill=\"lightgray\" stroke=\"none\"/>\n"
        "\t<rect x=\"0\" y=\"0\" width=\"30\" height=\"20\" fill=\"url(#pixelOutline)\" stroke=\"none\"/>\n"
        "\t<polygon fill=\"none\" stroke=\"red\" stroke-width=\"1\" points=\"0.000000,0.000000 30.000000,0.000000 "
        "30.000000,20.000000 0.000000,20.000000 \"/>\n"
        "\t<ellipse cx=\"0.0\" cy=\"0.0\" rx=\"1.5\" ry=\"1.5\" fill=\"red\" stroke=\"none\"/>\n"
        "\t<ellipse cx=\"30.0\" cy=\"0.0\" rx=\"1.5\" ry=\"1.5\" fill=\"red\" stroke=\"none\"/>\n"
        "\t<ellipse cx=\"30.0\" cy=\"20.0\" rx=\"1.5\" ry=\"1.5\" fill=\"red\" stroke=\"none\"/>\n"
        "\t<ellipse cx=\"0.0\" cy=\"20.0\" rx=\"1.5\" ry=\"1.5\" fill=\"red\" stroke=\"none\"/>\n"
        "</svg>\n";
    EXPECT_EQ(Slurp(svg), want);

    // Bitmap: 54-byte headers, rows bottom-up, 6 * 3 bytes padded to 20.
    ASSERT_TRUE(r->ExportBitmask(bmp.c_str()));
    std::string b = Slurp(bmp);
    ASSERT_EQ(b.size(), 54u + 4 * 20);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) {
            const bool on = (y == 1 || y == 2) && x >= 1 && x <= 3 && !(y == 1 && x == 2);
            const size_t at = 54 + size_t(3 - y) * 20 + size_t(x) * 3;
            for (int c = 0; c < 3; ++c) EXPECT_EQ(uint8_t(b[at + c]), on ? 255 : 0) << x << "," << y;
        }

    // An Isotherm has a mask but no shape in the drawing; the image region neither.
    SRoi iso;
    iso.type = roiIsotherm;
    iso.CreateBitmask(6, 4);
    ASSERT_TRUE(iso.ExportSvg(svg.c_str()));
    EXPECT_EQ(Slurp(svg).find("red"), std::string::npos);
    SRoi image;
    image.type = roiImage;
    image.CreateBitmask(6, 4);
    EXPECT_FALSE(image.ExportSvg(svg.c_str()));
    EXPECT_FALSE(image.ExportBitmask(bmp.c_str()));
    std::remove(svg.c_str());
    std::remove(bmp.c_str());
}

} // namespace
