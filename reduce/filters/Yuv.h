#pragma once
// 4:2:2 YUV to RGB, the conversion every colour stream of the cameras uses:
// in 32-bit integers with arithmetic shift, c = Y - 16, d = U - 128,
// e = V - 128; R = (298c + 409e + 128) >> 8, G = (298c - 100d - 208e + 128)
// >> 8, B = (298c + 516d + 128) >> 8, each clipped to 0..255, written R, G, B.
#include <cstddef>

namespace orv::reduce {

inline unsigned char ClipByte(int v) { return static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v); }

inline void YUVToRGB(unsigned char* out, int y, int u, int v)
{
    const int c = y - 16, d = u - 128, e = v - 128;
    out[0] = ClipByte((298 * c + 409 * e + 128) >> 8);
    out[1] = ClipByte((298 * c - 100 * d - 208 * e + 128) >> 8);
    out[2] = ClipByte((298 * c + 516 * d + 128) >> 8);
}

// groups of 4 bytes, each two RGB pixels sharing U and V. UYVY stores
// U Y0 V Y1, YUY2 stores Y0 U Y1 V.
inline void UYVYToRGB(unsigned char* out, const unsigned char* in, size_t groups)
{
    for (size_t g = 0; g < groups; ++g, in += 4, out += 6) {
        YUVToRGB(out, in[1], in[0], in[2]);
        YUVToRGB(out + 3, in[3], in[0], in[2]);
    }
}

inline void YUY2ToRGB(unsigned char* out, const unsigned char* in, size_t groups)
{
    for (size_t g = 0; g < groups; ++g, in += 4, out += 6) {
        YUVToRGB(out, in[0], in[1], in[3]);
        YUVToRGB(out + 3, in[2], in[1], in[3]);
    }
}

} // namespace orv::reduce
