#pragma once
// Kernel tables of the radiance and temperature kernels.
//
// Every kernel is one template over <Source, Destination>, reached through a
// constant table generated from the one list of element types:
//  - source by float, 20 entries, index source * 2 + destination - 8
//    (source 0 to 9, destination float or double);
//  - float by float, 4 entries, index (source - 8) * 2 + destination - 8;
//  - full, 100 entries, index source * 10 + destination.
// A region form is a walker of reduce/kernels/RegionWalk.h handed to one
// per-pixel body, so each table entry of a region takes the walker of its
// form. The arguments of each family travel in one record, so every table of
// the family has one signature.
#include <array>
#include <cstddef>
#include <utility>

#include "orv/Types.h"
#include "orv/ValueConvert.h"
#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce::priv {

// Presets are 0 to 7; masking keeps a corrupt index byte inside the 8-entry
// tables of the per-preset forms.
constexpr unsigned kPresetMask = 7;

// One preset's radiance polynomial as the kernels see it. A null
// backgroundImage means the scalar background.
struct SPoly {
    const double* coefficients = nullptr;
    int order = 0;
    double background = 0.0;
    const double* backgroundImage = nullptr;
    double scale = 1.0;
};

struct SLimits {
    double validLow = 0.0;
    double validHigh = 0.0;
    double clampLow = 0.0;
    double clampHigh = 0.0;
};

// All presets of a per-preset call, indexed by presetIndex[flat] & 7.
struct SPolyPS {
    SPoly preset[8];
    SLimits limits[8];
    const unsigned char* presetIndex = nullptr;
};

// Temperature methods, per call.
struct SCoeffsArgs {
    const double* coefficients = nullptr;
    int order = 0;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SLookupArgs {
    const double* table = nullptr;
    const double* temperatures = nullptr;
    int size = 0;
    bool allowClamp = false;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SPlanckArgs {
    double bandEnd = 0.0;
    double bandStart = 0.0;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SRBFArgs {
    double R = 0.0, B = 0.0, F = 0.0, O = 0.0;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SCoeffsPSArgs {
    const unsigned char* presetIndex = nullptr;
    double* const* coefficients = nullptr;
    const int* orders = nullptr;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SLookupPSArgs {
    const unsigned char* presetIndex = nullptr;
    double* const* tables = nullptr;
    double* const* temperatures = nullptr;
    const int* sizes = nullptr;
    bool allowClamp = false;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};
struct SRBFPSArgs {
    const unsigned char* presetIndex = nullptr;
    const double* R = nullptr;
    const double* B = nullptr;
    const double* F = nullptr;
    const double* O = nullptr;
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
};

// The method chosen for one preset by RadianceToTemperature and
// CountsToTemperature.
enum ETempMethod : int { methodLookup, methodCoeffs, methodPlanck };
struct STempMethod {
    ETempMethod method = methodPlanck;
    const double* table = nullptr;
    const double* temperatures = nullptr;
    int size = 0;
    const double* coefficients = nullptr;
    int order = 0;
};
struct STempSet {
    STempMethod preset[8];
    double emissivity = 1.0;
    double bandEnd = 0.0;
    double bandStart = 0.0;
    ETempType tempType = tempCelsius;
    const unsigned char* presetIndex = nullptr;
};

// Kernel signatures. Radiance kernels without limits ignore status and limits.
template <class W>
using TRadianceKernel = void (*)(const void* src, void* dst, const W& walk, const SPoly& poly, unsigned char* status,
                                 const SLimits& limits);
template <class W>
using TRadiancePSKernel = void (*)(const void* src, void* dst, const W& walk, const SPolyPS& set,
                                   unsigned char* status);
template <class W, class A>
using TTemperatureKernel = bool (*)(const void* src, void* dst, const W& walk, const A& args);
template <class W>
using TCountsToTemperatureKernel = bool (*)(const void* src, void* dst, const W& walk, const SPoly& poly,
                                            const STempSet& set);
template <class W>
using TCountsToTemperaturePSKernel = bool (*)(const void* src, void* dst, const W& walk, const SPolyPS& poly,
                                              const STempSet& set);
using TConvertTemperatureKernel = bool (*)(const void* src, void* dst, const unsigned int* indices, unsigned int n,
                                           ETempType from, ETempType to);

template <class F>
using TSourceByFloat = std::array<F, 20>;
template <class F>
using TFloatByFloat = std::array<F, 4>;

// Table positions; -1 for a type the table does not serve.
constexpr int SourceByFloatIndex(EDataType src, EDataType dst)
{
    if (unsigned(src) > dtFlt64 || (dst != dtFlt32 && dst != dtFlt64)) return -1;
    return int(src) * 2 + int(dst) - 8;
}
constexpr int FloatByFloatIndex(EDataType src, EDataType dst)
{
    if ((src != dtFlt32 && src != dtFlt64) || (dst != dtFlt32 && dst != dtFlt64)) return -1;
    return (int(src) - 8) * 2 + int(dst) - 8;
}
template <class S, class D>
constexpr int SourceByFloatIndexOf = SourceByFloatIndex(TDataTypeOf<S>::value, TDataTypeOf<D>::value);
template <class S, class D>
constexpr int FloatByFloatIndexOf = FloatByFloatIndex(TDataTypeOf<S>::value, TDataTypeOf<D>::value);

// Table generators: K<Source, Destination>::Run for every position.
template <class F, template <class, class> class K, size_t... I>
constexpr std::array<F, sizeof...(I)> MakeSourceByFloat(std::index_sequence<I...>)
{
    return {&K<TElement<EDataType(I / 2)>, TElement<EDataType(8 + I % 2)>>::Run...};
}
template <class F, template <class, class> class K>
constexpr TSourceByFloat<F> SourceByFloatTable()
{
    return MakeSourceByFloat<F, K>(std::make_index_sequence<20>{});
}
template <class F, template <class, class> class K, size_t... I>
constexpr std::array<F, sizeof...(I)> MakeFloatByFloat(std::index_sequence<I...>)
{
    return {&K<TElement<EDataType(8 + I / 2)>, TElement<EDataType(8 + I % 2)>>::Run...};
}
template <class F, template <class, class> class K>
constexpr TFloatByFloat<F> FloatByFloatTable()
{
    return MakeFloatByFloat<F, K>(std::make_index_sequence<4>{});
}
template <class F, template <class, class> class K, size_t... I>
constexpr std::array<F, sizeof...(I)> MakePairs(std::index_sequence<I...>)
{
    return {&K<TSourceOf<I>, TDestOf<I>>::Run...};
}

} // namespace orv::reduce::priv

namespace orv::reduce {

// Radiance. Scalar and per-pixel backgrounds share one kernel, which picks
// the background form once per call, so the ToRadiance tables of a region are
// the CountsToRadiance tables of that region under their own names.
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkCount>> vecCountsToRadianceImg;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkCount>> vecCountsToRadianceImgPS;
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkIndices>> vecCountsToRadianceIdx;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkIndices>> vecCountsToRadianceIdxPS;
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkRect>> vecCountsToRadianceRect;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkRect>> vecCountsToRadianceRectPS;
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkScanLines>> vecCountsToRadianceScanLines;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkScanLines>> vecCountsToRadianceScanLinesPS;
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkMask>> vecCountsToRadianceMask;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkMask>> vecCountsToRadianceMaskPS;

inline const auto& vecToRadianceRect = vecCountsToRadianceRect;
inline const auto& vecToRadianceRectPS = vecCountsToRadianceRectPS;
inline const auto& vecToRadianceBkgRect = vecCountsToRadianceRect;
inline const auto& vecToRadianceBkgRectPS = vecCountsToRadianceRectPS;
inline const auto& vecToRadianceScanLines = vecCountsToRadianceScanLines;
inline const auto& vecToRadianceScanLinesPS = vecCountsToRadianceScanLinesPS;
inline const auto& vecToRadianceBkgScanLines = vecCountsToRadianceScanLines;
inline const auto& vecToRadianceBkgScanLinesPS = vecCountsToRadianceScanLinesPS;
inline const auto& vecToRadianceMask = vecCountsToRadianceMask;
inline const auto& vecToRadianceMaskPS = vecCountsToRadianceMaskPS;
inline const auto& vecToRadianceBkgMask = vecCountsToRadianceMask;
inline const auto& vecToRadianceBkgMaskPS = vecCountsToRadianceMaskPS;

// Radiance with limits and status, whole frame and index list.
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkCount>> vecToRadianceImgStatus;
extern const priv::TSourceByFloat<priv::TRadianceKernel<priv::SWalkIndices>> vecToRadianceIdxStatus;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkCount>> vecToRadianceImgStatusPS;
extern const priv::TSourceByFloat<priv::TRadiancePSKernel<priv::SWalkIndices>> vecToRadianceIdxStatusPS;

// Temperature methods, float or double source and destination.
#define ORV_TEMPERATURE_TABLES(Name, Args, PS)                                                                         \
    extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkCount, priv::Args>> Name##Img##PS;            \
    extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkIndices, priv::Args>> Name##Idx##PS;          \
    extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkRect, priv::Args>> Name##Rect##PS;            \
    extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkScanLines, priv::Args>> Name##ScanLines##PS;  \
    extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkMask, priv::Args>> Name##Mask##PS;
ORV_TEMPERATURE_TABLES(vecToTemperatureCoeffs, SCoeffsArgs, )
ORV_TEMPERATURE_TABLES(vecToTemperatureCoeffs, SCoeffsPSArgs, PS)
ORV_TEMPERATURE_TABLES(vecToTemperatureLookup, SLookupArgs, )
ORV_TEMPERATURE_TABLES(vecToTemperatureLookup, SLookupPSArgs, PS)
ORV_TEMPERATURE_TABLES(vecToTemperaturePlanck, SPlanckArgs, )
ORV_TEMPERATURE_TABLES(vecRadianceToTemperature, STempSet, )
ORV_TEMPERATURE_TABLES(vecRadianceToTemperature, STempSet, PS)
#undef ORV_TEMPERATURE_TABLES

// The calibration curve serves whole frames and index lists only.
extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkCount, priv::SRBFArgs>> vecToTemperatureRBFImg;
extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkIndices, priv::SRBFArgs>> vecToTemperatureRBFIdx;
extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkCount, priv::SRBFPSArgs>> vecToTemperatureRBFImgPS;
extern const priv::TFloatByFloat<priv::TTemperatureKernel<priv::SWalkIndices, priv::SRBFPSArgs>>
    vecToTemperatureRBFIdxPS;

// Counts to temperature, any source type.
#define ORV_COUNTS_TABLES(Kernel, PS)                                                                                  \
    extern const priv::TSourceByFloat<priv::Kernel<priv::SWalkCount>> vecCountsToTemperatureImg##PS;                   \
    extern const priv::TSourceByFloat<priv::Kernel<priv::SWalkIndices>> vecCountsToTemperatureIdx##PS;                 \
    extern const priv::TSourceByFloat<priv::Kernel<priv::SWalkRect>> vecCountsToTemperatureRect##PS;                   \
    extern const priv::TSourceByFloat<priv::Kernel<priv::SWalkScanLines>> vecCountsToTemperatureScanLines##PS;         \
    extern const priv::TSourceByFloat<priv::Kernel<priv::SWalkMask>> vecCountsToTemperatureMask##PS;
ORV_COUNTS_TABLES(TCountsToTemperatureKernel, )
ORV_COUNTS_TABLES(TCountsToTemperaturePSKernel, PS)
#undef ORV_COUNTS_TABLES

// Index list form of the scale change, any pair of numeric types.
extern const std::array<priv::TConvertTemperatureKernel, 100> vecConvertTemperature;

} // namespace orv::reduce
