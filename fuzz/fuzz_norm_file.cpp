// CNormFile, the binary correction tables with their two CRCs. Each input is
// loaded as it is and once more with both CRCs made right, so that mutations
// get past them. A table that loads is read over its whole width by height,
// and every replacement names a pixel of the table.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "orv/NormFile.h"

using namespace orv;

namespace {

void Load(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    fuzz::CInputFileSystem fs(input);
    CNormFile norm;
    if (!norm.Load(&fs, fuzz::CInputFileSystem::kPath)) {
        if (norm.GetType() != CNormFile::typeNone) std::abort(); // left empty on failure
        return;
    }
    const uint64_t pixels = uint64_t(norm.xPixels()) * norm.yPixels();
    volatile uint64_t sink = 0;
    if (pixels == 0) std::abort();
    if (const float* gains = norm.GetGains()) sink = sink + uint64_t(gains[0] != gains[pixels - 1]);
    if (const int16_t* offsets = norm.GetOffsets()) sink = sink + uint64_t(offsets[0] + offsets[pixels - 1]);
    CNormFile::SBadPixels bad = norm.GetBadPixels();
    if (bad.flags) sink = sink + bad.flags[0] + bad.flags[pixels - 1];
    if (bad.replacements)
        for (uint64_t i = 0; i < pixels; ++i)
            if (bad.replacements[i] >= pixels) {
                std::fprintf(stderr, "replacement %llu of pixel %llu is outside the %llu pixels\n",
                             (unsigned long long)bad.replacements[i], (unsigned long long)i,
                             (unsigned long long)pixels);
                std::abort();
            }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Load(data, size);
    const size_t header = normFileHeader::kSize;
    if (size < header) return 0;
    std::vector<uint8_t> fixed(data, data + size);
    const unsigned int dataCRC = CalcCRC32(0, fixed.data() + header, static_cast<unsigned long>(size - header));
    std::memcpy(fixed.data() + normFileHeader::dataCRC.offset, &dataCRC, 4);
    const unsigned int headerCRC = CalcCRC32(0, fixed.data(), normFileHeader::headerCRC.offset);
    std::memcpy(fixed.data() + normFileHeader::headerCRC.offset, &headerCRC, 4);
    Load(fixed.data(), fixed.size());
    return 0;
}
