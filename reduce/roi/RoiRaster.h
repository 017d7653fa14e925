#pragma once
// Helpers the rasterisers and the exports share; not installed.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#include "reduce/roi/Roi.h"

namespace orv::reduce::priv {

// Shapes come from files and callers and may hold any double. Integers
// derived from them are saturated to +-2^30, NaN to the negative end (where
// nothing is drawn), so that the conversion and the few sums after it stay
// defined while every frame coordinate keeps its exact value.
inline int32_t SatInt(double v)
{
    constexpr double kLimit = 1073741824.0;
    if (!(v > -kLimit)) return -(1 << 30);
    if (v > kLimit) return 1 << 30;
    return int32_t(v);
}

// The pixels of the segment p-q strictly between its rounded end points,
// along the driving axis, in the order of that axis. visit(x, y) is called
// only for steps whose driving coordinate lies in the frame. Returns whether
// the end points were exchanged, so that the steps run from q to p.
template <class F>
bool StepSegment(SPointF p, SPointF q, int width, int height, F&& visit)
{
    float dx = float(q.x - p.x), dy = float(q.y - p.y);
    bool swapAxes = std::fabs(dx) < std::fabs(dy);
    double lowD = swapAxes ? p.y : p.x, lowM = swapAxes ? p.x : p.y;
    double highD = swapAxes ? q.y : q.x, highM = swapAxes ? q.x : q.y;
    bool swapped = highD < lowD;
    if (swapped) {
        std::swap(lowD, highD);
        std::swap(lowM, highM);
    }
    float major = float(highD - lowD), minor = float(highM - lowM);
    float m = major == 0 ? 1.0f : minor / major;
    int64_t i = int64_t(SatInt(std::floor(lowD + 0.5))) + 1;
    int64_t i1 = SatInt(std::floor(highD + 0.5));
    float t = float((double(i) - 1 - lowD) * m + lowM + m);
    // Steps before the frame are accumulated as they come while there are few
    // of them, and jumped over in one product beyond that, so that a far-away
    // end costs no time; the steps inside the frame accumulate in single
    // precision either way. Steps past the frame mark nothing and are left out.
    constexpr int64_t kHonestSkip = 1 << 20;
    int64_t limit = swapAxes ? height : width;
    if (i1 > limit) i1 = limit;
    if (i1 <= 0 || i >= i1) return swapped;
    if (i < 0) {
        int64_t skip = -i;
        if (skip <= kHonestSkip) {
            for (int64_t k = 0; k < skip; ++k) t += m;
        } else {
            t = float(double(t) + double(skip) * m);
        }
        i = 0;
    }
    // "while i differs from i1" in the plain form; written as i < i1 so that a
    // segment whose ends round to one pixel (i = i1 + 1) takes no step.
    for (; i < i1; ++i) {
        double f = std::floor(double(t));
        int32_t r = SatInt(f) + (double(t) - f > 0.5 ? 1 : 0);
        if (swapAxes) visit(r, int32_t(i));
        else visit(int32_t(i), r);
        t += m;
    }
    return swapped;
}

// Fills the closed span [xa, xb] of pixel centres in one mask row, clipped
// to bounds' columns; shared by the polygon and the ellipse.
inline void FillSpan(unsigned char* row, double xa, double xb, const SRect& bounds)
{
    // Integer division toward zero, as the fill has always rounded.
    int32_t first = SatInt(std::ceil(2 * xa)) / 2;
    int32_t last = (SatInt(std::floor(float(2 * xb))) - 1) / 2;
    // An empty column range would put the clipped start before the row.
    if (bounds.right <= bounds.left) return;
    if (first < bounds.right && last >= bounds.left) {
        int32_t a = first < bounds.left ? bounds.left : first;
        if (a > bounds.right - 1) a = bounds.right - 1;
        int32_t b = last > bounds.right - 1 ? bounds.right - 1 : last;
        if (b >= a) std::memset(row + a, 1, size_t(b - a + 1));
    }
}

} // namespace orv::reduce::priv
