// deinterlace with sizes and strides from the input: both buffers are
// exactly as large as the documented layout needs, so any access beyond
// the last row is caught.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "orv/Deinterlace.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orv::fuzz::CReader reader(data, size);
    const int width = reader.Take<int16_t>();
    const int height = reader.Take<int16_t>();
    const int bytesPerPixel = reader.Take<int8_t>();
    const int srcStride = reader.Take<int16_t>();
    const int dstStride = reader.Take<int16_t>();

    // Room the documented layout asks for; nothing when the call must fail.
    auto needed = [&](int stride) -> long long {
        if (width <= 0 || height <= 0 || bytesPerPixel < 1) return 0;
        const long long row = (long long)width * bytesPerPixel;
        const long long pitch = stride == -1 || stride == 0 ? row : stride;
        if (pitch < row) return 0;
        return pitch * (height - 1) + row;
    };
    const long long in = needed(srcStride), out = needed(dstStride);
    if (in > (1 << 22) || out > (1 << 22)) return 0;
    std::vector<unsigned char> src(reader.data(), reader.data() + reader.size());
    src.resize(static_cast<size_t>(in));
    std::vector<unsigned char> dst(static_cast<size_t>(out));
    orv::deinterlace(dst.empty() ? nullptr : dst.data(), src.empty() ? nullptr : src.data(), width, height,
                     bytesPerPixel, srcStride, dstStride);
    return 0;
}
