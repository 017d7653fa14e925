// The array and region forms of IConverter as forwards to ConvertRegion,
// and the region helpers of the interface.
#include "reduce/convert/Converter.h"

namespace orv::reduce {

bool IConverter::BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    return ConvertRegion(src, SPixelRegion::Frame(n), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, STypedData dst,
                              unsigned char* status, unsigned int n)
{
    return ConvertRegion(src, presetIndex, SPixelRegion::Frame(n), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                              unsigned char* status)
{
    return ConvertRegion(src, SPixelRegion::Indices(indices, n), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, const unsigned int* indices,
                              unsigned int n, STypedData dst, unsigned char* status)
{
    return ConvertRegion(src, presetIndex, SPixelRegion::Indices(indices, n), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short height, SArea area,
                              STypedData dst, unsigned char* status)
{
    return ConvertRegion(src, SPixelRegion::Rect(width, height, area), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, STypedData dst, unsigned char* status)
{
    return ConvertRegion(src, presetIndex, SPixelRegion::Rect(width, height, area), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short height,
                              const TArray<SScanLine>& lines, STypedData dst, unsigned char* status)
{
    return ConvertRegion(src, SPixelRegion::ScanLines(width, height, lines), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, const TArray<SScanLine>& lines, STypedData dst,
                              unsigned char* status)
{
    return ConvertRegion(src, presetIndex, SPixelRegion::ScanLines(width, height, lines), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, unsigned short width, unsigned short height, SArea area,
                              const unsigned char* mask, unsigned int maskWidth, STypedData dst,
                              unsigned char* status)
{
    return ConvertRegion(src, SPixelRegion::Mask(width, height, area, mask, maskWidth), dst, status);
}

bool IConverter::BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                              STypedData dst, unsigned char* status)
{
    return ConvertRegion(src, presetIndex, SPixelRegion::Mask(width, height, area, mask, maskWidth), dst, status);
}

// Width and height are part of the signatures only.
unsigned int IConverter::CalcNumPixels(unsigned short w, unsigned short h, SArea area)
{
    // Counted as the walkers walk: a rectangle with its right column left of
    // its left one yields nothing. Callers clear this many status bytes, so
    // a wrapped count would run far past their buffers.
    return SPixelRegion::Rect(w, h, area).PixelCount();
}

unsigned int IConverter::CalcNumPixels(unsigned short w, unsigned short h, TArray<SScanLine> const& lines)
{
    return SPixelRegion::ScanLines(w, h, lines).PixelCount();
}

unsigned int IConverter::CalcNumPixels(unsigned short w, unsigned short h, SArea area, unsigned char const* mask,
                                       unsigned int maskWidth)
{
    return SPixelRegion::Mask(w, h, area, mask, maskWidth).PixelCount();
}

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area)
{
    SPixelRegion::Rect(width, 0, area).BuildIndices(out);
}

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, const TArray<SScanLine>& lines)
{
    SPixelRegion::ScanLines(width, 0, lines).BuildIndices(out);
}

void IConverter::BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area,
                              const unsigned char* mask, unsigned int maskWidth)
{
    SPixelRegion::Mask(width, 0, area, mask, maskWidth).BuildIndices(out);
}

namespace priv {
bool RegionInFrame(unsigned short width, unsigned short height, SArea area)
{
    return SPixelRegion::Rect(width, height, area).InFrame(width, height);
}

bool RegionInFrame(unsigned short width, unsigned short height, const TArray<SScanLine>& lines)
{
    return SPixelRegion::ScanLines(width, height, lines).InFrame(width, height);
}

} // namespace priv
} // namespace orv::reduce
