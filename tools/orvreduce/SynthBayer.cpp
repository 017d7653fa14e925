// synth --pixel-type BayerRG8 / BayerGR8 / BayerGB8 / BayerBG8 / BayerGRBG: a
// colour scene seen through a Bayer mosaic. Red rises from left to right,
// green from top to bottom, and a blue disc of radius min(W, H) / 8 moves
// along the middle as the hot body of the temperature scene does; the
// 16-bit pattern spans the full 16 bits.
#include <cmath>
#include <vector>

#include "reduce/filters/BayerFilter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tools/orvreduce/Synth.h"

namespace orv::reduce::cli {

namespace {

// Where red sits in the mosaic's first 2 x 2 cell, as Demosaic.h has it.
unsigned SiteColour(EBayerPattern pattern, unsigned x, unsigned y)
{
    const unsigned redX = pattern & 1u, redY = (pattern >> 1) & 1u;
    const bool redRow = (y & 1u) == redY, redColumn = (x & 1u) == redX;
    if (redRow && redColumn) return 0;
    if (!redRow && !redColumn) return 2;
    return 1;
}

} // namespace

bool SynthBayerHandles(SGuid pixelType)
{
    EBayerPattern pattern;
    return CBayerFilter::SampleBytes(pixelType, pattern) != 0;
}

int SynthBayer(const SSynthRequest& r)
{
    EBayerPattern pattern = bayerRG;
    const unsigned bytes = CBayerFilter::SampleBytes(r.pixelType, pattern);
    CReduceObjectArray objs;
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(true);
    info->camera = "orvreduce synthetic colour scene";
    info->cameraModel = "Synthetic";
    info->pixelType = r.pixelType;
    info->adBits = int(bytes * 8);
    info->dataType = bytes == 1 ? dtRGB24 : dtRGB48;
    info->baseUnit = bytes == 1 ? unitRGB24 : unitRGB48;
    info->imageWidth = info->frameWidth = uint16_t(r.width);
    info->imageHeight = info->frameHeight = uint16_t(r.height);
    info->numPresets = 1;
    info->presets[0].available = true;
    info->presets[0].frameRate = 30.0f;
    info->presets[0].frameRateValid = true;
    info->time = CDateTime::Now();
    info->timeValid = true;
    info->valid = true;

    const auto frameSize = uint32_t(size_t(r.width) * r.height * bytes);
    CSynthFile out(r.path);
    if (!out.Start(objs, frameSize)) return kExitFailure;
    std::vector<unsigned char> frame(frameSize);
    const double top = bytes == 1 ? 255.0 : 65535.0;
    const double radius = std::fmin(r.width, r.height) / 8.0;
    CProgress progress("synth", r.frames);
    for (unsigned f = 0; f < r.frames; ++f) {
        const double cx = r.width / 4.0 + f * (r.width / 2.0) / (r.frames > 1 ? r.frames - 1 : 1);
        const double cy = r.height / 2.0;
        for (unsigned y = 0; y < r.height; ++y) {
            for (unsigned x = 0; x < r.width; ++x) {
                double v = 0;
                switch (SiteColour(pattern, x, y)) {
                case 0: v = top * x / (r.width - 1); break;
                case 1: v = top * y / (r.height - 1); break;
                default: v = (x - cx) * (x - cx) + (y - cy) * (y - cy) <= radius * radius ? top : top / 10; break;
                }
                const auto sample = unsigned(v + 0.5);
                unsigned char* p = frame.data() + (size_t(y) * r.width + x) * bytes;
                p[0] = uint8_t(sample & 0xFF);
                if (bytes == 2) p[1] = uint8_t(sample >> 8);
            }
        }
        if (!out.AddFrame(frame.data(), frameSize, f)) return kExitFailure;
        progress.Step(f + 1);
    }
    unsigned counts[4] = {r.frames, 0, 0, 0};
    return out.Finish(counts) ? 0 : kExitFailure;
}

} // namespace orv::reduce::cli
