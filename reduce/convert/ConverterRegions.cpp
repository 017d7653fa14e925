#include "reduce/convert/Converter.h"

#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce {

// Width and height are part of the signatures only.
unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, SArea area)
{
    if (area.bottom < area.top) return 0;
    // Unsigned 32-bit arithmetic as the callers expect, even for right < left.
    return (unsigned(area.bottom) - unsigned(area.top) + 1u) * (unsigned(area.right) - unsigned(area.left) + 1u);
}

unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, TArray<SScanLine> const& lines)
{
    unsigned int n = 0;
    for (const SScanLine& line : lines) n += unsigned(line.last) - unsigned(line.first) + 1u;
    return n;
}

unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, SArea area, unsigned char const* mask,
                                       unsigned int maskWidth)
{
    return priv::RegionPixels(area, mask, maskWidth);
}

namespace priv {
namespace {
struct SCountBody {
    static constexpr bool kNeedsXY = false;
    unsigned int n;
    void operator()(unsigned, unsigned, unsigned, unsigned) { ++n; }
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
} // namespace orv::reduce
