// Rasterisation of region shapes into byte masks: even-odd polygons on
// half-rows, ellipses row by row, lines by single-precision stepping, and the
// cursors.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "reduce/roi/Roi.h"
#include "reduce/roi/RoiRaster.h"

namespace orv::reduce {

using priv::SatInt;

namespace {

int32_t ClipTo(int32_t v, int32_t limit)
{
    // A value below 1 becomes 0, one above the limit the limit.
    return v < 1 ? 0 : (v > limit ? limit : v);
}

// The clipped box of the points, each coordinate narrowed to single
// precision first; lines reach half a pixel further on the far side.
SRect ClippedBounds(const TArray<SPointF>& points, int32_t width, int32_t height, double farReach)
{
    if (points.empty()) return SRect();
    float minX = float(points.get(0).x), maxX = minX, minY = float(points.get(0).y), maxY = minY;
    for (const SPointF& p : points) {
        float x = float(p.x), y = float(p.y);
        if (x < minX) minX = x;
        if (x > maxX) maxX = x;
        if (y < minY) minY = y;
        if (y > maxY) maxY = y;
    }
    SRect b;
    b.left = ClipTo(SatInt(std::floor(double(minX))), width);
    b.top = ClipTo(SatInt(std::floor(double(minY))), height);
    b.right = ClipTo(SatInt(std::ceil(double(maxX) + farReach)), width);
    b.bottom = ClipTo(SatInt(std::ceil(double(maxY) + farReach)), height);
    return b;
}

bool Inside(int32_t x, int32_t y, int32_t width, int32_t height)
{
    return x >= 0 && y >= 0 && x < width && y < height;
}

void RenderEllipse(const TArray<SPointF>& pts, unsigned char* mask, int32_t width, int32_t height,
                   unsigned int stride, SRect& bounds)
{
    bounds = ClippedBounds(pts, width, height, 0);
    SPointF p0 = pts.get(0), p1 = pts.get(1), p2 = pts.get(2), p3 = pts.get(3);
    double cx = (p0.x + p1.x + p2.x + p3.x) / 4, cy = (p0.y + p1.y + p2.y + p3.y) / 4;
    float a = float(std::hypot(p1.x - p0.x, p1.y - p0.y) / 2);
    float b = float(std::hypot(p3.x - p0.x, p3.y - p0.y) / 2);
    double len = std::hypot(p1.x - p0.x, p1.y - p0.y);
    double angle = std::atan2((p1.y - p0.y) / len, (p1.x - p0.x) / len);
    double s = std::sin(angle), c = std::cos(angle);
    double A = a * a, B = b * b;
    unsigned char* row = mask + size_t(bounds.top) * stride;
    for (int32_t y = bounds.top; y < bounds.bottom; ++y, row += stride) {
        double v = -((y + 0.5) - cy);
        double u0 = bounds.left - cx, u1 = bounds.right - cx;
        double X0 = c * u0 - s * v, Y0 = s * u0 + c * v;
        double X1 = c * u1 - s * v, Y1 = s * u1 + c * v;
        double m = (Y1 - Y0) / (X1 - X0);
        double d = Y0 - X0 * m;
        double P = m * A * m + B, Q = 2 * A * m * d, R = d * A * d - A * B;
        double D = Q * Q - 4 * P * R;
        if (D < 0) continue;
        double r0 = (-Q - std::sqrt(D)) / (2 * P), r1 = (std::sqrt(D) - Q) / (2 * P);
        double x0 = c * r0 + (m * r0 + d) * s + cx, x1 = c * r1 + (m * r1 + d) * s + cx;
        priv::FillSpan(row, std::min(x0, x1), std::max(x0, x1), bounds);
    }
}

void RenderLines(const TArray<SPointF>& pts, unsigned char* mask, int32_t width, int32_t height,
                 unsigned int stride, SRect& bounds)
{
    bounds = ClippedBounds(pts, width, height, 0.5);
    auto mark = [&](int32_t x, int32_t y) {
        if (Inside(x, y, width, height)) mask[size_t(y) * stride + size_t(x)] = 1;
    };
    for (size_t i = 0; i + 1 < pts.size(); ++i) {
        SPointF p = pts.get(i), q = pts.get(i + 1);
        mark(SatInt(std::roundf(float(p.x))), SatInt(std::roundf(float(p.y))));
        mark(SatInt(std::roundf(float(q.x))), SatInt(std::roundf(float(q.y))));
        priv::StepSegment(p, q, width, height, mark);
    }
}

} // namespace

void AddEdge(TArray<SEdge>& edges, SPointF a, SPointF b)
{
    if (a.y > b.y) std::swap(a, b);
    int32_t s = SatInt(std::ceil(2 * a.y)), e = SatInt(std::floor(2 * b.y));
    if (s != e) {
        if ((s & 1) == 0) s += 1;
    } else if ((s & 1) == 0) {
        return; // on no sample line
    }
    SEdge edge;
    edge.start = s;
    // An upper end exactly on a sample line leaves that line out, so that a
    // vertex shared by two edges is counted once.
    if (b.y - std::floor(b.y) != 0.5) edge.end = (e & 1) ? e + 1 : e;
    else edge.end = e;
    if (!(std::fabs(a.y - b.y) < 2.220446049250313e-16)) {
        edge.slope = (b.x - a.x) / (2 * (b.y - a.y));
        edge.x = (s - 2 * a.y) * edge.slope + a.x;
    } else {
        edge.end = s + 1;
        edge.slope = 0;
        edge.x = a.x;
    }
    edge.x1 = a.x;
    edge.x2 = b.x;
    edge.y1 = a.y;
    edge.y2 = b.y;
    size_t at = 0;
    while (at < edges.size() && edges.get(at).start <= s) ++at;
    edges.insert(at, edge);
}

void RenderPolygonToBitmask(TArray<SPointF> const& points, unsigned char* mask, unsigned short width,
                            unsigned short height, unsigned int stride, SRect& bounds)
{
    bounds = ClippedBounds(points, width, height, 0);
    if (points.empty()) return;
    TArray<SEdge> pending;
    for (size_t i = 0; i + 1 < points.size(); ++i) AddEdge(pending, points.get(i), points.get(i + 1));
    AddEdge(pending, points.get(points.size() - 1), points.get(0));

    const int32_t top2 = 2 * bounds.top, bottom2 = 2 * bounds.bottom;
    TArray<SEdge> active;
    size_t next = 0; // pending is sorted by start: the first not yet reached
    {
        TArray<SEdge> kept;
        for (const SEdge& e : pending) {
            if (e.end <= top2) continue;
            kept.add(e);
            if (e.start < top2) {
                SEdge moved = e;
                moved.x += double(top2 - e.start) * e.slope;
                active.add(moved);
            }
        }
        pending = std::move(kept);
        while (next < pending.size() && pending.get(next).start < top2) ++next;
    }
    TArray<double> crossings;
    unsigned char* row = mask + size_t(bounds.top) * stride;
    for (int32_t k = top2; k < bottom2; ++k) {
        // An edge that ends at or before its start has left the pending list
        // by then and never becomes active.
        for (; next < pending.size() && pending.get(next).start == k; ++next)
            if (pending.get(next).end > k) active.add(pending.get(next));
        for (size_t i = active.size(); i-- > 0;)
            if (active.get(i).end == k) active.remove(i);
        if ((k & 1) == 0) {
            for (SEdge& e : active) e.x += e.slope;
            continue;
        }
        crossings.clear();
        for (SEdge& e : active) {
            if (e.y1 != e.y2) {
                // Before the first crossing whose x is greater: equal ones keep edge order.
                size_t at = size_t(std::upper_bound(crossings.begin(), crossings.end(), e.x) - crossings.begin());
                crossings.insert(at, e.x);
            }
            e.x += e.slope;
        }
        for (const SEdge& e : active) {
            if (e.y1 == e.y2) {
                crossings.add(std::min(e.x1, e.x2));
                crossings.add(std::max(e.x1, e.x2));
            }
        }
        for (size_t i = 0; i + 1 < crossings.size(); i += 2)
            priv::FillSpan(row, crossings.get(i), crossings.get(i + 1), bounds);
        row += stride;
    }
}

unsigned int AddPointNoDuplicate(SPoint p, unsigned short width, unsigned short height, TArray<SPoint>& out)
{
    if (!Inside(p.x, p.y, width, height)) return 0;
    if (!out.empty() && out.get(out.size() - 1) == p) return 0;
    out.add(p);
    return 1;
}

unsigned int InsertPointNoDuplicate(SPoint p, unsigned int index, unsigned short width, unsigned short height,
                                    TArray<SPoint>& out)
{
    if (!Inside(p.x, p.y, width, height)) return 0;
    if (index < out.size() && out.get(index) == p) return 0;
    out.insert(index, p);
    return 1;
}

unsigned int GetPolylinePoints(SPointF a, SPointF b, unsigned short width, unsigned short height,
                               TArray<SPoint>& out)
{
    unsigned int count =
        AddPointNoDuplicate(SPoint(SatInt(std::roundf(float(a.x))), SatInt(std::roundf(float(a.y)))), width, height, out);
    size_t at = out.size();
    // The insert position rises with each pixel while the walk runs from a to
    // b; walking from b to a it stays, so every pixel goes before the last one.
    TArray<SPoint> inner;
    bool swapped = priv::StepSegment(a, b, width, height, [&](int32_t x, int32_t y) { inner.add(SPoint(x, y)); });
    for (const SPoint& p : inner) {
        unsigned int n = InsertPointNoDuplicate(p, static_cast<unsigned int>(at), width, height, out);
        count += n;
        if (!swapped) at += n;
    }
    count += AddPointNoDuplicate(SPoint(SatInt(std::roundf(float(b.x))), SatInt(std::roundf(float(b.y)))), width,
                                 height, out);
    return count;
}

void SRoi::UpdateBitmask()
{
    if (!bitmask || type == roiIsotherm) return;
    std::memset(bitmask, 0, size_t(bitmaskStride) * bitmaskHeight);
    if (points.empty()) {
        bounds = SRect();
        return;
    }
    bounds = SRect(0, 0, int32_t(bitmaskWidth), int32_t(bitmaskHeight));
    // The rasterisers take 16-bit sizes; a larger mask is drawn in its first 65535 columns and rows.
    const int32_t w = int32_t(std::min<uint32_t>(bitmaskWidth, 0xFFFF));
    const int32_t h = int32_t(std::min<uint32_t>(bitmaskHeight, 0xFFFF));
    switch (type) {
    case roiRect:
    case roiPolygon:
    case roiFreehand:
    case roiSquare:
        RenderPolygonToBitmask(points, bitmask, static_cast<unsigned short>(w), static_cast<unsigned short>(h),
                               bitmaskStride, bounds);
        break;
    case roiEllipse:
    case roiCircle:
        if (points.size() == 4) RenderEllipse(points, bitmask, w, h, bitmaskStride, bounds);
        break;
    case roiLine:
    case roiMultiLine:
        if (points.size() >= 2) RenderLines(points, bitmask, w, h, bitmaskStride, bounds);
        break;
    case roiCursor:
    case roiCrosshair: {
        int32_t x = SatInt(std::round(points.get(0).x)), y = SatInt(std::round(points.get(0).y));
        bounds.left = x;
        bounds.top = y;
        if (Inside(x, y, w, h)) {
            bounds.right = x + 1;
            bounds.bottom = y + 1;
            bitmask[size_t(y) * bitmaskStride + size_t(x)] = 1;
        } else {
            bounds = SRect();
        }
        break;
    }
    case roiMeasurementCursor: {
        int32_t l = SatInt(std::round(points.get(0).x)) - 1, t = SatInt(std::round(points.get(0).y)) - 1;
        int32_t r = ClipTo(l + 3, w), b = ClipTo(t + 3, h);
        l = ClipTo(l, w);
        t = ClipTo(t, h);
        for (int32_t y = t; y < b; ++y) std::memset(bitmask + size_t(y) * bitmaskStride + l, 1, size_t(std::max(r - l, 0)));
        bounds = SRect(l, t, r, b);
        break;
    }
    default:
        break;
    }
}

} // namespace orv::reduce
