#include "reduce/convert/Converter.h"

#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce {

// Width and height are part of the signatures only.
unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, SArea area)
{
    // Counted as the walkers walk: a rectangle with its right column left of
    // its left one yields nothing. Callers clear this many status bytes, so
    // a wrapped count would run far past their buffers.
    return priv::RegionPixels(area);
}

unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, TArray<SScanLine> const& lines)
{
    // A line with its last column before its first yields nothing, as in the
    // walkers.
    return priv::RegionPixels(lines);
}

unsigned int IConverter::CalcNumPixels(unsigned short, unsigned short, SArea area, unsigned char const* mask,
                                       unsigned int maskWidth)
{
    return priv::RegionPixels(area, mask, maskWidth);
}

namespace {
// Appends each visited flat index: the walkers of the kernels give the order.
struct SIndexBody {
    static constexpr bool kNeedsXY = false;
    TArray<unsigned int>& out;
    void operator()(unsigned flat, unsigned, unsigned, unsigned) { out.add(flat); }
};
} // namespace

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area)
{
    out.clear();
    out.reserve(priv::RegionPixels(area));
    SIndexBody body{out};
    priv::SWalkRect{width, area}(body);
}

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, const TArray<SScanLine>& lines)
{
    out.clear();
    out.reserve(priv::RegionPixels(lines));
    SIndexBody body{out};
    priv::SWalkScanLines{width, &lines}(body);
}

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area,
                              const unsigned char* mask, unsigned int maskWidth)
{
    out.clear();
    SIndexBody body{out};
    priv::SWalkMask{width, area, mask, maskWidth}(body);
}

// The region forms of the base class: an empty region still makes the call,
// with n 0.
bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short, SArea area, STypedData dst,
                              unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, area);
    return BaseToOutput(src, indices.data(), unsigned(indices.size()), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short, SArea area, STypedData dst, unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, area);
    return BaseToOutput(src, presetIndex, indices.data(), unsigned(indices.size()), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short,
                              const TArray<SScanLine>& lines, STypedData dst, unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, lines);
    return BaseToOutput(src, indices.data(), unsigned(indices.size()), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short, const TArray<SScanLine>& lines, STypedData dst,
                              unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, lines);
    return BaseToOutput(src, presetIndex, indices.data(), unsigned(indices.size()), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short, SArea area,
                              const unsigned char* mask, unsigned int maskWidth, STypedData dst,
                              unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, area, mask, maskWidth);
    return BaseToOutput(src, indices.data(), unsigned(indices.size()), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth,
                              STypedData dst, unsigned char* status)
{
    TArray<unsigned int> indices;
    BuildIndices(indices, width, area, mask, maskWidth);
    return BaseToOutput(src, presetIndex, indices.data(), unsigned(indices.size()), dst, status);
}

namespace priv {
namespace {
struct SCountBody {
    static constexpr bool kNeedsXY = false;
    unsigned int n;
    void operator()(unsigned, unsigned, unsigned, unsigned) { ++n; }
};
} // namespace

bool RegionInFrame(unsigned short width, unsigned short height, SArea area)
{
    if (area.bottom < area.top || area.right < area.left) return true;
    return area.bottom < height && area.right < width;
}

bool RegionInFrame(unsigned short width, unsigned short height, const TArray<SScanLine>& lines)
{
    for (const SScanLine& line : lines)
        if (line.last >= line.first && (line.row >= height || line.last >= width)) return false;
    return true;
}

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
