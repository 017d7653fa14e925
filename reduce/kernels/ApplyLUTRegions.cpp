// ApplyLUT over scan lines and a masked rectangle: the region value's runs.
#include "reduce/kernels/LUT.h"

namespace orv::reduce {

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, TArray<SScanLine> const& lines, float* lut, unsigned char* lutStatus,
              unsigned short low, unsigned short high)
{
    return ApplyLUT(source, destination, status, SPixelRegion::ScanLines(width, height, lines), lut, lutStatus, low,
                    high);
}

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    return ApplyLUT(source, destination, status, SPixelRegion::Mask(width, height, area, mask, maskStride), lut,
                    lutStatus, low, high);
}

bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, TArray<SScanLine> const& lines, float** lut,
              unsigned char** lutStatus, unsigned short low, unsigned short high)
{
    return ApplyLUT(source, presets, destination, status, SPixelRegion::ScanLines(width, height, lines), lut,
                    lutStatus, low, high);
}

bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, SArea area, unsigned char const* mask,
              unsigned int maskStride, float** lut, unsigned char** lutStatus, unsigned short low,
              unsigned short high)
{
    return ApplyLUT(source, presets, destination, status, SPixelRegion::Mask(width, height, area, mask, maskStride),
                    lut, lutStatus, low, high);
}

} // namespace orv::reduce
