// CNormFile, the binary correction tables with their two CRCs. A table that
// loads is read over its whole width by height.
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "orv/NormFile.h"

using namespace orv;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    fuzz::CInputFileSystem fs(input);
    CNormFile norm;
    if (!norm.Load(&fs, fuzz::CInputFileSystem::kPath)) {
        if (norm.GetType() != CNormFile::typeNone) std::abort(); // left empty on failure
        return 0;
    }
    const uint64_t pixels = uint64_t(norm.xPixels()) * norm.yPixels();
    // Touch the first and last element of each table that is there.
    volatile uint64_t sink = 0;
    if (pixels) {
        if (const float* gains = norm.GetGains()) sink = sink + uint64_t(gains[0] != gains[pixels - 1]);
        if (const int16_t* offsets = norm.GetOffsets()) sink = sink + uint64_t(offsets[0] + offsets[pixels - 1]);
        CNormFile::SBadPixels bad = norm.GetBadPixels();
        if (bad.flags) sink = sink + bad.flags[0] + bad.flags[pixels - 1];
        if (bad.replacements) sink = sink + bad.replacements[0] + bad.replacements[pixels - 1];
    }
    return 0;
}
