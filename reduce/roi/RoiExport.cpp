// Region exports for inspection: the mask as a bitmap, and an SVG drawing of
// the covered pixels on a pixel grid with the shape on top.
#include <algorithm>
#include <cmath>

#include "orv/Bitmap.h"
#include "orv/File.h"
#include "reduce/roi/Roi.h"

namespace orv::reduce {

namespace {

double Distance(SPointF a, SPointF b) { return std::hypot(b.x - a.x, b.y - a.y); }
SPointF Mid(SPointF a, SPointF b) { return SPointF(a.x + (b.x - a.x) * 0.5, a.y + (b.y - a.y) * 0.5); }

void Flatten(SPointF p0, SPointF p1, SPointF p2, SPointF p3, TArray<SPointF>& out, unsigned long index, int depth)
{
    double ratio = (Distance(p0, p1) + Distance(p1, p2) + Distance(p2, p3)) / Distance(p0, p3);
    if (!(ratio >= 1.001)) return;
    // Smooth curves are flat long before this depth; it only stops curves
    // made of non-finite or denormal coordinates from recursing without end.
    if (depth > 48) return;
    out.insert(index, SPointF(0.125 * p0.x + 0.375 * p1.x + 0.375 * p2.x + 0.125 * p3.x,
                              0.125 * p0.y + 0.375 * p1.y + 0.375 * p2.y + 0.125 * p3.y));
    SPointF p01 = Mid(p0, p1), p12 = Mid(p1, p2), p23 = Mid(p2, p3);
    SPointF p012 = Mid(p01, p12), p123 = Mid(p12, p23);
    SPointF m = Mid(p012, p123);
    Flatten(m, p123, p23, p3, out, index + 1, depth + 1);
    Flatten(p0, p01, p012, m, out, index, depth + 1);
}

// The ellipse outline of a four-point box: four quarter arcs, each running
// from one axis end to the next around the corners p0, p1, p2, p3.
TArray<SPointF> EllipseOutline(const TArray<SPointF>& pts)
{
    TArray<SPointF> out;
    if (pts.size() != 4) return out;
    SPointF p0 = pts.get(0), p1 = pts.get(1), p2 = pts.get(2), p3 = pts.get(3);
    SPointF c((p0.x + p1.x + p2.x + p3.x) / 4, (p0.y + p1.y + p2.y + p3.y) / 4);
    double a = float(Distance(p0, p1) / 2), b = float(Distance(p0, p3) / 2);
    double la = Distance(p0, p1), lb = Distance(p0, p3);
    // Half-axis vectors along p0->p1 and p0->p3.
    SPointF u((p1.x - p0.x) / la * a, (p1.y - p0.y) / la * a);
    SPointF v((p3.x - p0.x) / lb * b, (p3.y - p0.y) / lb * b);
    const double k = 0.2761423749154 * 2; // of the half axis
    SPointF ends[4] = {SPointF(c.x - u.x, c.y - u.y), SPointF(c.x - v.x, c.y - v.y), SPointF(c.x + u.x, c.y + u.y),
                       SPointF(c.x + v.x, c.y + v.y)};
    for (int i = 0; i < 4; ++i) {
        SPointF from = ends[i], to = ends[(i + 1) % 4];
        SPointF dirFrom(to.x - c.x, to.y - c.y), dirTo(from.x - c.x, from.y - c.y);
        SPointF c1(from.x + k * dirFrom.x, from.y + k * dirFrom.y), c2(to.x + k * dirTo.x, to.y + k * dirTo.y);
        out.add(from);
        FlattenCubicBezier(from, c1, c2, to, out, out.size());
    }
    return out;
}

void WriteShape(IFile& f, bool open, const TArray<SPointF>& pts, double dx, double dy)
{
    if (open) f.WriteString("\t<polyline stroke=\"red\" stroke-width=\"1\" points=\"");
    else f.WriteString("\t<polygon fill=\"none\" stroke=\"red\" stroke-width=\"1\" points=\"");
    for (const SPointF& p : pts) f.WriteFormattedString("%f,%f ", (p.x - dx) * 10, (p.y - dy) * 10);
    f.WriteString("\"/>\n");
    for (const SPointF& p : pts)
        f.WriteFormattedString("\t<ellipse cx=\"%0.1f\" cy=\"%0.1f\" rx=\"1.5\" ry=\"1.5\" fill=\"red\" stroke=\"none\"/>\n",
                               (p.x - dx) * 10, (p.y - dy) * 10);
}

} // namespace

void FlattenCubicBezier(SPointF p0, SPointF p1, SPointF p2, SPointF p3, TArray<SPointF>& out, unsigned long index)
{
    Flatten(p0, p1, p2, p3, out, index, 0);
}

bool SRoi::ExportBitmask(const CString& path)
{
    if (!bitmask) return false;
    SBitmap bmp;
    if (!CreateBitmap(bitmaskWidth, bitmaskHeight, 24, bmp)) return false;
    for (uint32_t y = 0; y < bitmaskHeight; ++y) {
        const unsigned char* src = bitmask + size_t(y) * bitmaskStride;
        unsigned char* dst = bmp.pixels + size_t(y) * bmp.bytesPerRow;
        for (uint32_t x = 0; x < bitmaskWidth; ++x) std::memset(dst + 3 * x, src[x] ? 255 : 0, 3);
    }
    bool ok = SaveBitmapFile(bmp, fileSystem(), path);
    DestroyBitmap(bmp);
    return ok;
}

bool SRoi::ExportSvg(const CString& path)
{
    if (!bitmask) return false;
    TSharedPtr<IFile> file = fileSystem()->Open(path, IFileSystem::openWrite);
    if (!file) return false;
    IFile& f = *file;
    const int w = bounds.right - bounds.left, h = bounds.bottom - bounds.top;
    f.WriteString("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");
    f.WriteFormattedString("<svg version=\"1.1\" viewBox=\"0 0 %d %d\">\n", w * 10, h * 10);
    f.WriteString("\t<defs>\n"
                  "\t\t<pattern id=\"pixelOutline\" patternUnits=\"userSpaceOnUse\" x=\"0\" y=\"0\" width=\"10\" "
                  "height=\"10\" viewBox=\"0 0 10 10\">\n"
                  "\t\t\t<rect x=\"0\" y=\"0\" width=\"10\" height=\"10\" fill=\"none\" stroke=\"black\" "
                  "stroke-width=\"1\"/>\n"
                  "\t\t\t<rect x=\"4.5\" y=\"4.5\" width=\"1\" height=\"1\" fill=\"black\" stroke=\"none\"/>\n"
                  "\t\t</pattern>\n"
                  "\t</defs>\n");
    f.WriteFormattedString("\t<rect x=\"0\" y=\"0\" width=\"%d\" height=\"%d\" fill=\"white\" stroke=\"none\"/>\n",
                           w * 10, h * 10);
    // Runs of covered pixels; reads stay inside the mask whatever bounds hold.
    for (int r = 0; r < h; ++r) {
        int64_t y = int64_t(bounds.top) + r;
        if (y < 0 || y >= int64_t(bitmaskHeight)) continue;
        const unsigned char* row = bitmask + size_t(y) * bitmaskStride;
        int run = -1;
        for (int c = 0; c <= w; ++c) {
            int64_t x = int64_t(bounds.left) + c;
            bool on = c < w && x >= 0 && x < int64_t(bitmaskWidth) && row[x];
            if (on && run < 0) run = c;
            if (!on && run >= 0) {
                f.WriteFormattedString(
                    "\t<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"10\" fill=\"lightgray\" stroke=\"none\"/>\n",
                    run * 10, r * 10, (c - run) * 10);
                run = -1;
            }
        }
    }
    f.WriteFormattedString(
        "\t<rect x=\"0\" y=\"0\" width=\"%d\" height=\"%d\" fill=\"url(#pixelOutline)\" stroke=\"none\"/>\n", w * 10,
        h * 10);
    const double left = bounds.left, top = bounds.top;
    switch (type) {
    case roiMeasurementCursor:
        if (!points.empty())
            f.WriteFormattedString("\t<rect x=\"%0.1f\" y=\"%0.1f\" width=\"25\" height=\"25\" fill=\"none\" "
                                   "stroke=\"red\" stroke-width=\"1\"/>\n",
                                   std::floor(points.get(0).x - (left + 1)) * 10 + 2.5,
                                   std::floor(points.get(0).y - (top + 1)) * 10 + 2.5);
        break;
    case roiCursor:
    case roiCrosshair:
        if (!points.empty())
            f.WriteFormattedString("\t<rect x=\"%0.1f\" y=\"%0.1f\" width=\"5\" height=\"5\" fill=\"none\" "
                                   "stroke=\"red\" stroke-width=\"1\"/>\n",
                                   std::floor(points.get(0).x - left) * 10 + 2.5,
                                   std::floor(points.get(0).y - top) * 10 + 2.5);
        break;
    case roiLine:
    case roiMultiLine:
        WriteShape(f, true, points, left - 0.5, top - 0.5);
        break;
    case roiRect:
    case roiPolygon:
    case roiFreehand:
    case roiSquare:
        WriteShape(f, false, points, left, top);
        break;
    case roiEllipse:
    case roiCircle:
        if (points.size() == 4) WriteShape(f, false, EllipseOutline(points), left, top);
        break;
    default:
        break;
    }
    f.WriteString("</svg>\n");
    return true;
}

} // namespace orv::reduce
