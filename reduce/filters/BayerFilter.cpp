#include "reduce/filters/BayerFilter.h"

#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

unsigned CBayerFilter::SampleBytes(SGuid pixelType, EBayerPattern& pattern)
{
    static constexpr struct {
        SGuid type;
        EBayerPattern pattern;
        unsigned bytes;
    } kTypes[] = {{guidBayerGRBG, bayerGR, 2},
                  {pixelBayerBG8, bayerBG, 1},
                  {pixelBayerGB8, bayerGB, 1},
                  {pixelBayerGR8, bayerGR, 1},
                  {pixelBayerRG8, bayerRG, 1}};
    for (const auto& t : kTypes) {
        if (t.type == pixelType) {
            pattern = t.pattern;
            return t.bytes;
        }
    }
    return 0;
}

bool CBayerFilter::HasPixels(SGuid) const { return false; }

bool CBayerFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                              uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    EBayerPattern pattern = bayerRG;
    const unsigned bytes = SampleBytes(pixelType, pattern);
    if (bytes == 0) return false;
    const bool wantPixels = pixels.data != nullptr;
    if (wantPixels) {
        if (pixels.type != (bytes == 1 ? dtRGB24 : dtRGB48)) return false;
        if (!frame || uint64_t(width) * height * bytes > frameSize) return false;
    } else if (pixels.type != dtNoData) {
        return false;
    }

    NextFrameInfo(objects);
    if (wantPixels) {
        if (bytes == 1) DemosaicBilinear(frame, static_cast<uint8_t*>(pixels.data), width, height, pattern);
        else
            DemosaicBilinear(reinterpret_cast<const uint16_t*>(frame), static_cast<uint16_t*>(pixels.data), width,
                             height, pattern);
    }
    preset = 0;
    return true;
}

} // namespace orv::reduce
