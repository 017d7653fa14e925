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
