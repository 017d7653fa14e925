// JpegDecode: the first three bytes give the size of the output buffer
// (little-endian, at most 16 MB), the rest is the stream. The buffer is
// exactly that size on the heap, so a write past it is caught.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "orv/Jpeg.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orv::fuzz::CReader reader(data, size);
    const uint32_t dstSize = reader.Take<uint8_t>() | uint32_t(reader.Take<uint8_t>()) << 8 |
                             uint32_t(reader.Take<uint8_t>()) << 16;
    orv::fuzz::CInput input(reader.data(), reader.size());
    std::vector<unsigned char> dst(dstSize);
    orv::JpegDecode(dst.empty() ? nullptr : dst.data(), dst.size(), input.data(), input.size());
    return 0;
}
