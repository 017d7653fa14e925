// The temperature table over all regions, with one table or a table per
// preset.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecToTemperatureLookupImg, TLookup, SWalkCount, SLookupArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupIdx, TLookup, SWalkIndices, SLookupArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupRect, TLookup, SWalkRect, SLookupArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupScanLines, TLookup, SWalkScanLines, SLookupArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupMask, TLookup, SWalkMask, SLookupArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupImgPS, TLookupPS, SWalkCount, SLookupPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupIdxPS, TLookupPS, SWalkIndices, SLookupPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupRectPS, TLookupPS, SWalkRect, SLookupPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupScanLinesPS, TLookupPS, SWalkScanLines, SLookupPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureLookupMaskPS, TLookupPS, SWalkMask, SLookupPSArgs);

bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned int n, double* table, double* temperatures, int size,
                         bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupImg, src, dst, SWalkCount{n},
                          SLookupArgs{table, temperatures, size, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* table,
                         double* temperatures, int size, bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupIdx, src, dst, SWalkIndices{indices, n, 0},
                          SLookupArgs{table, temperatures, size, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         double* table, double* temperatures, int size, bool allowClamp, double emissivity,
                         ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupRect, src, dst, SWalkRect{width, area},
                          SLookupArgs{table, temperatures, size, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short,
                         const TArray<SScanLine>& lines, double* table, double* temperatures, int size, bool allowClamp,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupScanLines, src, dst, SWalkScanLines{width, &lines},
                          SLookupArgs{table, temperatures, size, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double* table, double* temperatures,
                         int size, bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupMask, src, dst, SWalkMask{width, area, mask, maskWidth},
                          SLookupArgs{table, temperatures, size, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n,
                         double** tables, double** temperatures, int* sizes, bool allowClamp, double emissivity,
                         ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupImgPS, src, dst, SWalkCount{n},
                          SLookupPSArgs{presetIndex, tables, temperatures, sizes, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                         unsigned int n, double** tables, double** temperatures, int* sizes, bool allowClamp,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupIdxPS, src, dst, SWalkIndices{indices, n, 0},
                          SLookupPSArgs{presetIndex, tables, temperatures, sizes, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, double** tables, double** temperatures, int* sizes,
                         bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupRectPS, src, dst, SWalkRect{width, area},
                          SLookupPSArgs{presetIndex, tables, temperatures, sizes, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, const TArray<SScanLine>& lines, double** tables, double** temperatures,
                         int* sizes, bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupScanLinesPS, src, dst, SWalkScanLines{width, &lines},
                          SLookupPSArgs{presetIndex, tables, temperatures, sizes, allowClamp, emissivity, tempType});
}

bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth, double** tables,
                         double** temperatures, int* sizes, bool allowClamp, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureLookupMaskPS, src, dst, SWalkMask{width, area, mask, maskWidth},
                          SLookupPSArgs{presetIndex, tables, temperatures, sizes, allowClamp, emissivity, tempType});
}

} // namespace orv::reduce
