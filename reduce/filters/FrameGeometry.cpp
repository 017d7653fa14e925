#include "reduce/filters/FrameGeometry.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "orv/Deinterlace.h"
#include "orv/PixelType.h"
#include "reduce/filters/Yuv.h"

namespace orv::reduce {
namespace {

// Every combination of the flags is its own instance of these templates, so
// that no flag is tested inside a pixel loop.

template <bool flipH, bool flipV>
void AdjustGrayscale(uint16_t* dst, const uint16_t* src, ptrdiff_t width, ptrdiff_t height, ptrdiff_t left,
                     ptrdiff_t top, unsigned shift, uint32_t mask)
{
    for (ptrdiff_t y = top; y < top + height; ++y) {
        const ptrdiff_t srcRow = flipV ? (height - 1 - y) : y;
        if constexpr (flipH) {
            const uint16_t* s = src + srcRow * width + (width - 1 - left);
            for (ptrdiff_t x = 0; x < width; ++x) dst[x] = static_cast<uint16_t>((uint32_t(s[-x]) << shift) & mask);
        } else {
            const uint16_t* s = src + srcRow * width + left;
            for (ptrdiff_t x = 0; x < width; ++x) dst[x] = static_cast<uint16_t>((uint32_t(s[x]) << shift) & mask);
        }
        dst += width;
    }
}

struct SRGB3 {
    unsigned char c[3];
};
static_assert(sizeof(SRGB3) == 3);

template <bool flipH, bool flipV>
void CopyMirrored(SRGB3* dst, const SRGB3* src, size_t width, size_t height)
{
    for (size_t y = 0; y < height; ++y) {
        const SRGB3* s = src + (flipV ? height - 1 - y : y) * width;
        SRGB3* d = dst + y * width;
        if constexpr (flipH) {
            for (size_t x = 0; x < width; ++x) d[x] = s[width - 1 - x];
        } else {
            std::memcpy(d, s, width * sizeof(SRGB3));
        }
    }
}

void ReverseRow(SRGB3* row, size_t width)
{
    for (size_t i = 0; i < width / 2; ++i) std::swap(row[i], row[width - 1 - i]);
}

void MirrorHorizontal(SRGB3* image, size_t width, size_t height)
{
    for (size_t y = 0; y < height; ++y) ReverseRow(image + y * width, width);
}

void MirrorVertical(SRGB3* image, size_t width, size_t height)
{
    for (size_t y = 0; y < height / 2; ++y) {
        SRGB3* a = image + y * width;
        SRGB3* b = image + (height - 1 - y) * width;
        for (size_t x = 0; x < width; ++x) std::swap(a[x], b[x]);
    }
}

void MirrorBoth(SRGB3* image, size_t width, size_t height)
{
    // Pixel i of a row from the start pairs with pixel i of its mirror row
    // from the end.
    for (size_t y = 0; y < height / 2; ++y) {
        SRGB3* a = image + y * width;
        SRGB3* b = image + (height - 1 - y) * width;
        for (size_t x = 0; x < width; ++x) std::swap(a[x], b[width - 1 - x]);
    }
    if (height % 2) ReverseRow(image + (height / 2) * width, width);
}

void AdjustRGB(SRGB3* dst, const SRGB3* src, size_t width, size_t height, bool interlaced, bool flipH, bool flipV)
{
    if (interlaced) {
        deinterlace(dst, src, static_cast<int>(width), static_cast<int>(height), 3, -1, -1);
        if (flipH && flipV) MirrorBoth(dst, width, height);
        else if (flipH) MirrorHorizontal(dst, width, height);
        else if (flipV) MirrorVertical(dst, width, height);
        return;
    }
    if (flipH && flipV) CopyMirrored<true, true>(dst, src, width, height);
    else if (flipH) CopyMirrored<true, false>(dst, src, width, height);
    else if (flipV) CopyMirrored<false, true>(dst, src, width, height);
    else std::memcpy(dst, src, width * height * sizeof(SRGB3));
}

// One input row of pairs into one output row. Mirrored, the pairs go from the
// row's end toward its start, the Y1 pixel before the Y0 one.
template <bool flipH>
void ConvertYUVRow(unsigned char* out, const unsigned char* in, size_t width)
{
    const size_t pairs = width / 2;
    for (size_t p = 0; p < pairs; ++p, in += 4) {
        if constexpr (flipH) {
            unsigned char* o = out + (width - 2 - 2 * p) * 3;
            YUVToRGB(o, in[2], in[1], in[3]);
            YUVToRGB(o + 3, in[0], in[1], in[3]);
        } else {
            unsigned char* o = out + 2 * p * 3;
            YUVToRGB(o, in[0], in[1], in[3]);
            YUVToRGB(o + 3, in[2], in[1], in[3]);
        }
    }
}

template <bool flipH>
void AdjustYUV(unsigned char* dst, const unsigned char* src, size_t width, size_t height, bool interlaced,
               bool flipV)
{
    const size_t inRow = (width / 2) * 4;
    const size_t outRow = width * 3;
    auto row = [&](size_t input, size_t output) {
        ConvertYUVRow<flipH>(dst + output * outRow, src + input * inRow, width);
    };
    size_t r = 0;
    if (!interlaced && !flipV) {
        for (; r < height; ++r) row(r, r);
    } else if (!interlaced) {
        for (; r < height; ++r) row(r, height - 1 - r);
    } else if (!flipV) {
        // Even field first, as deinterlace has it: an odd height gives it the
        // extra row.
        for (size_t out = 0; out < height; out += 2) row(r++, out);
        for (size_t out = 1; out < height; out += 2) row(r++, out);
    } else {
        // Flipped, the field that starts at height - 2 comes first, then the
        // one from height - 1: this order is intended. Rows that would fall
        // above the image are not part of either field.
        for (size_t out = height - 2; out < height; out -= 2) row(r++, out);
        for (size_t out = height - 1; out < height; out -= 2) row(r++, out);
    }
}

} // namespace

bool AdjustFrameData(void* dst, const void* src, int width, int height, SGuid pixelType, SRect offset, int shift,
                     int mask, bool interlaced, bool flipHorizontal, bool flipVertical)
{
    if (!dst || !src) return false;
    const bool gray = IsPixelBaseType(pixelType, pixelGrayscale);
    const bool rgb = !gray && IsPixelBaseType(pixelType, pixelRGB);
    const bool yuv = !gray && !rgb && IsPixelBaseType(pixelType, pixelYUV);
    if (!gray && !rgb && !yuv) return false;
    if (width <= 0 || height <= 0) return true;

    const size_t w = static_cast<size_t>(width), h = static_cast<size_t>(height);
    if (gray) {
        // A negative shift shifts left too: the one-way shift is intended.
        const unsigned s = (shift < 0 ? 0u - static_cast<unsigned>(shift) : static_cast<unsigned>(shift)) & 31u;
        const uint32_t m = static_cast<uint32_t>(mask) & 0xFFFFu;
        auto* d = static_cast<uint16_t*>(dst);
        const auto* sp = static_cast<const uint16_t*>(src);
        const ptrdiff_t pw = width, ph = height, l = offset.left, t = offset.top;
        if (flipHorizontal && flipVertical) AdjustGrayscale<true, true>(d, sp, pw, ph, l, t, s, m);
        else if (flipHorizontal) AdjustGrayscale<true, false>(d, sp, pw, ph, l, t, s, m);
        else if (flipVertical) AdjustGrayscale<false, true>(d, sp, pw, ph, l, t, s, m);
        else AdjustGrayscale<false, false>(d, sp, pw, ph, l, t, s, m);
    } else if (rgb) {
        AdjustRGB(static_cast<SRGB3*>(dst), static_cast<const SRGB3*>(src), w, h, interlaced, flipHorizontal,
                  flipVertical);
    } else {
        auto* d = static_cast<unsigned char*>(dst);
        const auto* sp = static_cast<const unsigned char*>(src);
        if (flipHorizontal) AdjustYUV<true>(d, sp, w, h, interlaced, flipVertical);
        else AdjustYUV<false>(d, sp, w, h, interlaced, flipVertical);
    }
    return true;
}

} // namespace orv::reduce
