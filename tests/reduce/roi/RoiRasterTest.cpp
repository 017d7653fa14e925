// Masks of random shapes against the pixel-centre rule evaluated here point by
// point, plus the shape cases that are easy to get wrong by one.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "reduce/roi/Roi.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned kW = 37, kH = 23; // odd sizes: the stride is padded

// -1 outside, 1 inside, 0 too close to the boundary to tell in single precision.
using Ref = std::vector<int>;

double SegmentDistance(SPointF p, SPointF a, SPointF b)
{
    double dx = b.x - a.x, dy = b.y - a.y, len2 = dx * dx + dy * dy;
    double t = len2 > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / len2, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

// Crossings of the row y with the polygon's edges, each edge taken with its
// lower end and without its upper end.
std::vector<double> RowCrossings(const std::vector<SPointF>& poly, double y)
{
    std::vector<double> xs;
    for (size_t i = 0; i < poly.size(); ++i) {
        SPointF a = poly[i], b = poly[(i + 1) % poly.size()];
        if (a.y > b.y) std::swap(a, b);
        if (y >= a.y && y < b.y) xs.push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
    }
    return xs;
}

Ref PolygonReference(const std::vector<SPointF>& poly)
{
    Ref ref(kW * kH);
    for (unsigned y = 0; y < kH; ++y) {
        const double cy = y + 0.5;
        std::vector<double> xs = RowCrossings(poly, cy);
        for (unsigned x = 0; x < kW; ++x) {
            const SPointF c(x + 0.5, cy);
            int left = 0;
            bool onCrossing = false;
            for (double cx : xs) {
                left += cx < c.x;
                onCrossing |= cx == c.x;
            }
            bool inside = (left & 1) || onCrossing;
            // Spans round their ends toward zero, so a shape that reaches only
            // the left half of column 0 still takes it.
            if (x == 0)
                for (double cx : xs) inside |= cx >= 0 && cx < 0.5;
            double d = 1e9;
            for (size_t i = 0; i < poly.size(); ++i) d = std::min(d, SegmentDistance(c, poly[i], poly[(i + 1) % poly.size()]));
            ref[y * kW + x] = d < 1e-4 ? 0 : (inside ? 1 : -1);
        }
    }
    return ref;
}

void ExpectMask(const SRoi& roi, const Ref& ref, const char* what, int n)
{
    int wrong = 0;
    for (unsigned y = 0; y < kH; ++y)
        for (unsigned x = 0; x < kW; ++x) {
            int want = ref[y * kW + x];
            unsigned char got = roi.bitmask[y * roi.bitmaskStride + x];
            EXPECT_TRUE(got == 0 || got == 1);
            if (want != 0 && (got == 1) != (want == 1) && ++wrong < 4) {
                ADD_FAILURE() << what << " " << n << ": pixel " << x << "," << y << " is " << int(got);
            }
        }
    // Nothing is drawn outside bounds, and bounds lie in the frame.
    for (unsigned y = 0; y < kH; ++y)
        for (unsigned x = 0; x < kW; ++x) {
            bool in = int(x) >= roi.bounds.left && int(x) < roi.bounds.right && int(y) >= roi.bounds.top &&
                      int(y) < roi.bounds.bottom;
            if (!in) {
                EXPECT_EQ(roi.bitmask[y * roi.bitmaskStride + x], 0) << what << " " << n << " at " << x << "," << y;
            }
        }
    EXPECT_GE(roi.bounds.left, 0);
    EXPECT_LE(roi.bounds.right, int(kW));
    EXPECT_LE(roi.bounds.bottom, int(kH));
}

// Copies of a region drop the mask, so shapes travel by pointer.
TSharedPtr<SRoi> Shape(ERoiType type, const std::vector<SPointF>& pts)
{
    TSharedPtr<SRoi> roi(new SRoi);
    roi->type = type;
    for (const SPointF& p : pts) roi->points.add(p);
    roi->CreateBitmask(kW, kH);
    roi->UpdateBitmask();
    return roi;
}

TEST(RoiRaster, RandomPolygonsFollowThePixelCentreRule)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> ux(-8, kW + 8), uy(-8, kH + 8);
    for (int n = 0; n < 400; ++n) {
        std::vector<SPointF> poly;
        const int count = 3 + int(rng() % 9);
        for (int i = 0; i < count; ++i) {
            SPointF p(ux(rng), uy(rng));
            // Every third vertex exactly on a sample row, some far outside.
            if (i % 3 == 0) p.y = std::floor(p.y) + 0.5;
            if (n % 10 == 0 && i == 0) p.x += 1e5;
            if (!poly.empty() && p.y == poly.back().y) p.y += 0.25;
            poly.push_back(p);
        }
        if (poly.front().y == poly.back().y) poly.back().y += 0.25;
        TSharedPtr<SRoi> roi = Shape(n % 2 ? roiPolygon : roiFreehand, poly);
        ExpectMask(*roi, PolygonReference(poly), "polygon", n);
    }
}

TEST(RoiRaster, RectanglesOnTheHalfGridAndSquares)
{
    // Horizontal edges lie on whole or half rows here; off those the fill
    // takes the next sample row (see the polygon's horizontal edges).
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> ux(-6, kW + 6);
    std::uniform_int_distribution<int> uy(-12, 2 * kH + 12);
    for (int n = 0; n < 300; ++n) {
        double l = ux(rng), r = ux(rng), t = uy(rng) / 2.0, b = uy(rng) / 2.0;
        if (l > r) std::swap(l, r);
        if (t > b) std::swap(t, b);
        if (t == b) b += 1;
        SRectF rect{t, l, b, r};
        TSharedPtr<SRoi> roi = CreateRectRoi("r", rect);
        roi->type = n % 2 ? roiRect : roiSquare;
        roi->CreateBitmask(kW, kH);
        roi->UpdateBitmask();
        Ref ref(kW * kH);
        for (unsigned y = 0; y < kH; ++y)
            for (unsigned x = 0; x < kW; ++x) {
                double cx = x + 0.5, cy = y + 0.5;
                bool in = cy >= t && cy <= b && ((cx >= l && cx <= r) || (x == 0 && r >= 0 && r < 0.5 && l <= r));
                ref[y * kW + x] = (std::fabs(cx - l) < 1e-4 || std::fabs(cx - r) < 1e-4) ? 0 : (in ? 1 : -1);
            }
        ExpectMask(*roi, ref, "rect", n);
    }
}

TEST(RoiRaster, RandomRotatedEllipses)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> uc(-5, kW + 5), ua(0.3, 14), angle(-1.0, 1.0);
    for (int n = 0; n < 300; ++n) {
        SPointF c(uc(rng), uc(rng) * kH / kW);
        double a = ua(rng), b = ua(rng), th = angle(rng);
        if (n % 4 == 0) th = 0;
        SPointF e1(std::cos(th), std::sin(th)), e2(-std::sin(th), std::cos(th));
        auto corner = [&](double s, double t) { return SPointF(c.x + s * a * e1.x + t * b * e2.x, c.y + s * a * e1.y + t * b * e2.y); };
        std::vector<SPointF> box = {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
        TSharedPtr<SRoi> roi = Shape(n % 2 ? roiEllipse : roiCircle, box);
        const double fa = float(a), fb = float(b);
        Ref ref(kW * kH);
        for (unsigned y = 0; y < kH; ++y)
            for (unsigned x = 0; x < kW; ++x) {
                auto f = [&](double px, double py) {
                    double dx = px - c.x, dy = py - c.y;
                    double u = (dx * e1.x + dy * e1.y) / fa, v = (dx * e2.x + dy * e2.y) / fb;
                    return u * u + v * v;
                };
                double v = f(x + 0.5, y + 0.5);
                bool in = v <= 1;
                // Column 0 also takes a row whose span only reaches its left half.
                if (x == 0 && !in && f(0.0, y + 0.5) <= 1) in = true;
                bool near = std::fabs(v - 1) < 1e-3 || (x == 0 && std::fabs(f(0.0, y + 0.5) - 1) < 1e-3);
                ref[y * kW + x] = near ? 0 : (in ? 1 : -1);
            }
        ExpectMask(*roi, ref, "ellipse", n);
    }
}

TEST(RoiRaster, ShapeEdgeCases)
{
    // Rect (0,0,2,2): centres 0.5 and 1.5 in, 2.5 out->
    TSharedPtr<SRoi> r = CreateRectRoi("r", SRectF{0, 0, 2, 2});
    r->CreateBitmask(10, 10);
    EXPECT_EQ(r->bitmaskStride, 12u);
    r->UpdateBitmask();
    TArray<unsigned int> idx;
    r->GetIndicies(10, 10, idx);
    EXPECT_EQ(std::vector<unsigned>(idx.begin(), idx.end()), (std::vector<unsigned>{0, 1, 10, 11}));
    EXPECT_EQ(r->bounds, SRect(0, 0, 2, 2));

    // Wholly outside: empty bounds, nothing drawn.
    TSharedPtr<SRoi> out = Shape(roiPolygon, {{50, 50}, {60, 50}, {55, 70}});
    EXPECT_EQ(out->bounds.left, out->bounds.right);
    out->GetIndicies(kW, kH, idx);
    EXPECT_TRUE(idx.empty());

    // Cursor outside zeroes bounds; inside sets one pixel.
    TSharedPtr<SRoi> cur = Shape(roiCursor, {{-3, 4}});
    EXPECT_EQ(cur->bounds, SRect());
    TSharedPtr<SRoi> cross = Shape(roiCrosshair, {{4.4, 5.6}});
    EXPECT_EQ(cross->bounds, SRect(4, 6, 5, 7));
    EXPECT_EQ(cross->bitmask[6 * cross->bitmaskStride + 4], 1);

    // MeasurementCursor at the corner: a 2 by 2 block.
    TSharedPtr<SRoi> mc = Shape(roiMeasurementCursor, {{0, 0}});
    EXPECT_EQ(mc->bounds, SRect(0, 0, 2, 2));
    mc->GetIndicies(kW, kH, idx);
    EXPECT_EQ(idx.size(), 4u);

    // Ellipse with three points draws nothing and keeps the full bounds.
    TSharedPtr<SRoi> e3 = Shape(roiEllipse, {{1, 1}, {5, 1}, {5, 5}});
    EXPECT_EQ(e3->bounds, SRect(0, 0, kW, kH));
    e3->GetIndicies(kW, kH, idx);
    EXPECT_TRUE(idx.empty());

    // Isotherm masks are never filled here and keep their contents.
    TSharedPtr<SRoi> iso = Shape(roiIsotherm, {{1, 1}, {5, 1}, {5, 5}, {1, 5}});
    iso->GetIndicies(kW, kH, idx);
    EXPECT_TRUE(idx.empty());
    iso->bitmask[3] = 1;
    iso->UpdateBitmask();
    iso->CreateBitmask(kW, kH); // same size: kept
    EXPECT_EQ(iso->bitmask[3], 1);

    // A rectangle edge through pixel centres includes them (closed spans).
    TSharedPtr<SRoi> closed = Shape(roiRect, {{1.5, 1.5}, {3.5, 1.5}, {3.5, 2.5}, {1.5, 2.5}});
    closed->GetIndicies(kW, kH, idx);
    EXPECT_EQ(std::vector<unsigned>(idx.begin(), idx.end()),
              (std::vector<unsigned>{kW + 1, kW + 2, kW + 3, 2 * kW + 1, 2 * kW + 2, 2 * kW + 3}));

    // A shape reaching x = 0 exactly from the left must not touch the byte before its row.
    TSharedPtr<SRoi> edge = Shape(roiRect, {{-5, 0}, {0, 0}, {0, 5}, {-5, 5}});
    EXPECT_EQ(edge->bounds.right, 0);
}

// A line's pixels: one per step of the driving axis, the inner ones rounded
// from the exact line, the ends rounded from the end points.
TEST(RoiRaster, LinesAndProfiles)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(1, 30);
    for (int n = 0; n < 200; ++n) {
        SPointF a(u(rng), u(rng) * 0.7), b(u(rng), u(rng) * 0.7);
        TSharedPtr<SRoi> line = CreateLineRoi("l", a, b);
        line->CreateBitmask(kW, kH);
        line->UpdateBitmask();
        TArray<SPoint> prof;
        TArray<unsigned int> counts;
        line->GetLineProfilePoints(prof, counts);
        ASSERT_EQ(counts.size(), 1u);
        EXPECT_EQ(counts[0], prof.size());
        bool steep = std::fabs(b.y - a.y) > std::fabs(b.x - a.x);
        // Travel order from a to b, no repeats, 8-connected, every pixel in the mask.
        EXPECT_EQ(prof[0], SPoint(int(std::lround(a.x)), int(std::lround(a.y))));
        EXPECT_EQ(prof[prof.size() - 1], SPoint(int(std::lround(b.x)), int(std::lround(b.y))));
        size_t marked = 0;
        for (size_t i = 0; i < prof.size(); ++i) {
            EXPECT_EQ(line->bitmask[prof[i].y * line->bitmaskStride + prof[i].x], 1);
            // One step along the driving axis each time; the ends are
            // rounded on their own, so the minor axis may jump there.
            if (i > 0) {
                int step = steep ? prof[i].y - prof[i - 1].y : prof[i].x - prof[i - 1].x;
                int dir = (steep ? b.y > a.y : b.x > a.x) ? 1 : -1;
                EXPECT_EQ(step, dir) << n;
            }
            // Within half a pixel (plus single precision) of the exact line along the minor axis.
            double t = steep ? (prof[i].y - a.y) / (b.y - a.y) : (prof[i].x - a.x) / (b.x - a.x);
            if (i > 0 && i + 1 < prof.size()) {
                double minor = steep ? a.x + t * (b.x - a.x) : a.y + t * (b.y - a.y);
                EXPECT_LE(std::fabs((steep ? prof[i].x : prof[i].y) - minor), 0.5 + 1e-4) << n;
            }
        }
        for (unsigned i = 0; i < line->bitmaskStride * kH; ++i) marked += line->bitmask[i];
        EXPECT_EQ(marked, prof.size());
    }
    // Ends rounding to one pixel take no step, and a far-away segment is clipped.
    TSharedPtr<SRoi> dot = Shape(roiLine, {{3.2, 3.1}, {3.4, 2.9}});
    TArray<unsigned int> idx;
    dot->GetIndicies(kW, kH, idx);
    EXPECT_EQ(idx.size(), 1u);
    TSharedPtr<SRoi> far = Shape(roiMultiLine, {{-1e9, 5}, {1e9, 5}, {1e9, 1e300}, {NAN, 4}});
    far->GetIndicies(kW, kH, idx);
    EXPECT_EQ(idx.size(), kW);
}

TEST(RoiRaster, HostileCoordinatesAreSafe)
{
    const double bad[] = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 3e9, -3e9};
    for (ERoiType t : {roiRect, roiEllipse, roiLine, roiCursor, roiMultiLine, roiPolygon, roiMeasurementCursor}) {
        for (double v : bad) {
            TSharedPtr<SRoi> roi = Shape(t, {{v, 2}, {10, v}, {v, v}, {3, 4}});
            TArray<unsigned int> idx;
            roi->GetIndicies(kW, kH, idx);
            for (unsigned i : idx) EXPECT_LT(i, kW * kH);
            roi->GetCenterIndicies(kW, kH);
            for (unsigned i : roi->indices) EXPECT_LT(i, kW * kH);
        }
    }
}

} // namespace
