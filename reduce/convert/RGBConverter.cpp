#include "reduce/convert/RGBConverter.h"

#include <cstring>

namespace orv::reduce {

namespace {

// One loop per channel choice and element type; Index maps the output
// position to the pixel.
template <class T, class Index>
void Channels(const T* rgb, float* out, unsigned int n, EUnit unit, Index index)
{
    switch (unit) {
    case unitRedChannel:
        for (unsigned int i = 0; i < n; ++i) out[i] = float(rgb[size_t(index(i)) * 3]);
        break;
    case unitGreenChannel:
        for (unsigned int i = 0; i < n; ++i) out[i] = float(rgb[size_t(index(i)) * 3 + 1]);
        break;
    case unitBlueChannel:
        for (unsigned int i = 0; i < n; ++i) out[i] = float(rgb[size_t(index(i)) * 3 + 2]);
        break;
    default:
        // The sum is an integer, the mean a float: (255, 0, 1) gives 256 / 3.
        for (unsigned int i = 0; i < n; ++i) {
            const T* p = rgb + size_t(index(i)) * 3;
            out[i] = float(unsigned(p[0]) + unsigned(p[1]) + unsigned(p[2])) / 3.0f;
        }
        break;
    }
}

template <class Index>
bool Convert(STypedData src, STypedData dst, unsigned char* status, unsigned int n, EUnit unit, Index index)
{
    if ((src.type != dtRGB24 && src.type != dtRGB48) || dst.type != dtFlt32) return false;
    if (status) std::memset(status, 0, n);
    float* out = static_cast<float*>(dst.data);
    if (src.type == dtRGB24) Channels(static_cast<const unsigned char*>(src.data), out, n, unit, index);
    else Channels(static_cast<const unsigned short*>(src.data), out, n, unit, index);
    return true;
}

} // namespace

bool CRGBConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray&)
{
    if (base != unitRGB24 && base != unitRGB48) return false;
    units.add(unitRedChannel);
    units.add(unitGreenChannel);
    units.add(unitBlueChannel);
    units.add(unitRGBAverage);
    return true;
}

bool CRGBConverter::BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    return Convert(src, dst, status, n, outputUnit, [](unsigned int i) { return i; });
}

bool CRGBConverter::BaseToOutput(STypedData src, const unsigned char*, STypedData dst, unsigned char* status,
                                 unsigned int n)
{
    return BaseToOutput(src, dst, status, n);
}

bool CRGBConverter::BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                                 unsigned char* status)
{
    return Convert(src, dst, status, n, outputUnit, [indices](unsigned int i) { return indices[i]; });
}

bool CRGBConverter::BaseToOutput(STypedData src, const unsigned char*, const unsigned int* indices, unsigned int n,
                                 STypedData dst, unsigned char* status)
{
    return BaseToOutput(src, indices, n, dst, status);
}

} // namespace orv::reduce
