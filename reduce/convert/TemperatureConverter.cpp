#include "reduce/convert/TemperatureConverter.h"

#include <cstring>

#include "orv/Math.h"
#include "reduce/convert/RadiometryTables.h"

namespace orv::reduce {

bool CTemperatureConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray&)
{
    if (!IsTemperatureUnit(base)) return false;
    units.add(base);
    return true;
}

bool CTemperatureConverter::BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n)
{
    if (status) std::memset(status, 0, n);
    CMath::ConvertTemperature(dst, src, n, baseTempType, outputTempType);
    return true;
}

bool CTemperatureConverter::BaseToOutput(STypedData src, const unsigned char*, STypedData dst,
                                         unsigned char* status, unsigned int n)
{
    return BaseToOutput(src, dst, status, n);
}

bool CTemperatureConverter::BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n,
                                         STypedData dst, unsigned char* status)
{
    if (unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64) return false;
    if (status) std::memset(status, 0, n);
    vecConvertTemperature[unsigned(src.type) * 10 + unsigned(dst.type)](src.data, dst.data, indices, n,
                                                                           baseTempType, outputTempType);
    return true;
}

bool CTemperatureConverter::BaseToOutput(STypedData src, const unsigned char*, const unsigned int* indices,
                                         unsigned int n, STypedData dst, unsigned char* status)
{
    return BaseToOutput(src, indices, n, dst, status);
}

} // namespace orv::reduce
