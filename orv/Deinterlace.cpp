#include "orv/Deinterlace.h"

#include <cstddef>
#include <cstring>

namespace orv {

bool deinterlace(void* dst, const void* src, int width, int height, int bytesPerPixel, int srcStride, int dstStride)
{
    if (width < 0 || height < 0 || bytesPerPixel < 1) return false;
    const size_t rowBytes = size_t(width) * size_t(bytesPerPixel);
    const size_t in = srcStride == -1 || srcStride == 0 ? rowBytes : size_t(srcStride);
    const size_t out = dstStride == -1 || dstStride == 0 ? rowBytes : size_t(dstStride);
    if (srcStride < -1 || dstStride < -1 || in < rowBytes || out < rowBytes) return false;
    if (rowBytes == 0 || height == 0) return true;
    if (!dst || !src) return false;

    const unsigned char* s = static_cast<const unsigned char*>(src);
    unsigned char* d = static_cast<unsigned char*>(dst);
    const int evenRows = (height + 1) / 2;
    for (int r = 0; r < height; ++r) {
        const int target = r < evenRows ? 2 * r : 2 * (r - evenRows) + 1;
        std::memcpy(d + size_t(target) * out, s + size_t(r) * in, rowBytes);
    }
    return true;
}

} // namespace orv
