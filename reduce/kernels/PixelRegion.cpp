#include "reduce/kernels/PixelRegion.h"

#include <algorithm>

namespace orv::reduce {

namespace priv {
namespace {
struct SCountBody {
    static constexpr bool kNeedsXY = false;
    unsigned int n;
    void operator()(size_t, size_t, unsigned, unsigned) { ++n; }
};
} // namespace

unsigned int RegionPixels(TArray<SScanLine> const& lines)
{
    unsigned int n = 0;
    for (const SScanLine& line : lines)
        if (line.last >= line.first) n += unsigned(line.last) - unsigned(line.first) + 1u;
    return n;
}

unsigned int RegionPixels(SArea area, unsigned char const* mask, unsigned int stride)
{
    SCountBody body{0};
    SWalkMask{0, area, mask, stride}(body);
    return body.n;
}
} // namespace priv

unsigned int SPixelRegion::PixelCount() const
{
    switch (kind) {
    case kindRect: return priv::RegionPixels(area);
    case kindScanLines: return priv::RegionPixels(*lines);
    case kindMask: return priv::RegionPixels(area, mask, maskStride);
    case kindFrame:
    case kindIndices: break;
    }
    return count;
}

bool SPixelRegion::InFrame(unsigned short w, unsigned short h) const
{
    switch (kind) {
    case kindRect:
    case kindMask:
        if (area.bottom < area.top || area.right < area.left) return true;
        return area.bottom < h && area.right < w;
    case kindScanLines:
        for (const SScanLine& line : *lines)
            if (line.last >= line.first && (line.row >= h || line.last >= w)) return false;
        return true;
    case kindFrame:
    case kindIndices: break;
    }
    return End() <= size_t(w) * h;
}

size_t SPixelRegion::End() const
{
    switch (kind) {
    case kindFrame: return count;
    case kindIndices: {
        size_t end = 0;
        for (unsigned int i = 0; i < count; ++i) end = std::max(end, size_t(indices[i]) + 1);
        return end;
    }
    default: break;
    }
    size_t end = 0;
    ForEachRun([&](size_t flat, size_t, unsigned int n) { end = std::max(end, flat + n); });
    return end;
}

void SPixelRegion::BuildIndices(TArray<unsigned int>& out) const
{
    out.clear();
    if (kind != kindMask) out.reserve(PixelCount());
    ForEachRun([&](size_t flat, size_t, unsigned int n) {
        for (unsigned int k = 0; k < n; ++k) out.add(unsigned(flat + k));
    });
}

} // namespace orv::reduce
