#pragma once
// SPixelRegion: the five region forms of the pixel interfaces as one value
// (whole frame, rectangle, scan lines, masked rectangle, index list), so
// that converters and kernels take one argument and decide the form once.
// It owns nothing: lines, mask and indices stay the caller's.
#include <cstddef>

#include "orv/Array.h"
#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce {

struct SPixelRegion {
    enum EKind : unsigned char { kindFrame, kindRect, kindScanLines, kindMask, kindIndices };

    EKind kind = kindFrame;
    // Frame width and height; 0 for the frame and index forms, which have none.
    unsigned short width = 0;
    unsigned short height = 0;
    // Elements of the frame and index forms.
    unsigned int count = 0;
    SArea area{};
    const TArray<SScanLine>* lines = nullptr;
    const unsigned char* mask = nullptr;
    unsigned int maskStride = 0;
    const unsigned int* indices = nullptr;

    static SPixelRegion Frame(unsigned int n)
    {
        SPixelRegion r;
        r.count = n;
        return r;
    }
    static SPixelRegion Rect(unsigned short w, unsigned short h, SArea a)
    {
        SPixelRegion r;
        r.kind = kindRect;
        r.width = w;
        r.height = h;
        r.area = a;
        return r;
    }
    static SPixelRegion ScanLines(unsigned short w, unsigned short h, const TArray<SScanLine>& l)
    {
        SPixelRegion r;
        r.kind = kindScanLines;
        r.width = w;
        r.height = h;
        r.lines = &l;
        return r;
    }
    static SPixelRegion Mask(unsigned short w, unsigned short h, SArea a, const unsigned char* m, unsigned int stride)
    {
        SPixelRegion r;
        r.kind = kindMask;
        r.width = w;
        r.height = h;
        r.area = a;
        r.mask = m;
        r.maskStride = stride;
        return r;
    }
    static SPixelRegion Indices(const unsigned int* idx, unsigned int n)
    {
        SPixelRegion r;
        r.kind = kindIndices;
        r.indices = idx;
        r.count = n;
        return r;
    }

    // Elements the region yields, in the walkers' count: an inverted
    // rectangle or line yields none.
    unsigned int PixelCount() const;
    bool Empty() const { return PixelCount() == 0; }
    // Whether every pixel lies inside a frame of width x height (for the
    // frame and index forms: whether width * height holds them). An empty
    // region always does.
    bool InFrame(unsigned short w, unsigned short h) const;
    // One past the largest flat index the region reaches; 0 when empty.
    size_t End() const;
    // Flat indices in walking order.
    void BuildIndices(TArray<unsigned int>& out) const;

    // Calls walk(walker) with the walker of this form (RegionWalk.h).
    template <class F>
    decltype(auto) Visit(F&& f) const
    {
        switch (kind) {
        case kindRect: return f(priv::SWalkRect{width, area});
        case kindScanLines: return f(priv::SWalkScanLines{width, lines});
        case kindMask: return f(priv::SWalkMask{width, area, mask, maskStride});
        case kindIndices: return f(priv::SWalkIndices{indices, count, width});
        case kindFrame: break;
        }
        return f(priv::SWalkCount{count});
    }
    // Calls f with the arguments of the region's overload in the pixel
    // interfaces: (n), (indices, n), (width, height, area), (width, height,
    // lines), (width, height, area, mask, stride).
    template <class F>
    decltype(auto) Forward(F&& f) const
    {
        switch (kind) {
        case kindRect: return f(width, height, area);
        case kindScanLines: return f(width, height, *lines);
        case kindMask: return f(width, height, area, mask, maskStride);
        case kindIndices: return f(indices, count);
        case kindFrame: break;
        }
        return f(count);
    }
    // Runs of consecutive pixels in region order: f(flat, i, n) for source
    // elements flat .. flat + n - 1 going to destination i .. i + n - 1. An
    // index list gives its runs of consecutive indices.
    template <class F>
    void ForEachRun(F&& f) const
    {
        Visit([&](const auto& walk) { walk.Runs(f); });
    }
};

} // namespace orv::reduce
