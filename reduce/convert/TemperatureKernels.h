#pragma once
// Temperature kernels: radiance to temperature by a polynomial, a table,
// inversion of Planck's law or the three-constant calibration curve, the
// per-preset choice between the first three, and temperature scale changes.
//
// In every method the radiance is first divided by the emissivity. Polynomial
// and table give Celsius, Planck and the curve Kelvin; results are converted
// to the wanted scale in double precision.
//
// Frame forms of the four methods take the destination first and accept only
// float and double (types 8 and 9) for both buffers; RadianceToTemperature
// and CountsToTemperature take the source first. A type out of range returns
// false before anything is written. Regions and output order are those of
// the pixel kernels.
#include "orv/Array.h"
#include "orv/Types.h"
#include "orv/ValueConvert.h"
#include "reduce/convert/RadianceKernels.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

// Temperature calibration of one preset.
struct STemperatureParams {
    double* lookupRadiance = nullptr;    // ascending
    double* lookupTemperature = nullptr; // Celsius, same length
    int lookupSize = 0;
    double* tempCoefficients = nullptr; // c0 first, result in Celsius
    int tempOrder = 0;
};

// Single values.
// The polynomial of this form squares x at each step, so its terms are
// c1 x, c2 x^2, c3 x^4, c4 x^8 ...: intended, callers rely on it; the frame
// forms evaluate the true polynomial.
double ToTemperatureCoeffs(double radiance, double* coefficients, int order, double emissivity, ETempType tempType);
// True for an interpolated value; for a value outside the table, the end
// row's temperature and allowClamp. False, writing nothing, for size < 2.
bool ToTemperatureLookup(double& out, double radiance, double* table, double* temperatures, int size, bool allowClamp,
                         double emissivity, ETempType tempType);
double ToTemperaturePlanck(double radiance, double bandEnd, double bandStart, double emissivity, ETempType tempType);
// The four float arguments are part of the interface and not read.
double ToTemperatureRBF(double radiance, double R, double B, double F, double O, float, float, float, float,
                        double emissivity, ETempType tempType);

// Internal forms, Celsius: the true polynomial (order -1 gives 0) and the
// table with clamping at its ends (0.0 for size < 2).
double _ToTemperatureCoeffs(double radiance, const double* coefficients, int order, double emissivity);
double _ToTemperatureLookup(double radiance, const double* table, const double* temperatures, int size,
                            double emissivity);

// Polynomial over frames. PS forms take each pixel's preset from presetIndex
// (frame order) and fail at the first preset above 3 or order below 1,
// keeping what was written.
bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order,
                         double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n,
                         double** coefficients, int* orders, double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n,
                         double* coefficients, int order, double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                         unsigned int n, double** coefficients, int* orders, double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         double* coefficients, int order, double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, double** coefficients, int* orders, double emissivity,
                         ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short height,
                         const TArray<SScanLine>& lines, double* coefficients, int order, double emissivity,
                         ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, const TArray<SScanLine>& lines, double** coefficients, int* orders,
                         double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double* coefficients, int order,
                         double emissivity, ETempType tempType);
bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                         double** coefficients, int* orders, double emissivity, ETempType tempType);

// Table over frames. An element outside the table with allowClamp false
// ends the call with false, the elements before it written; size < 2
// returns false writing nothing.
bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned int n, double* table, double* temperatures, int size,
                         bool allowClamp, double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n,
                         double** tables, double** temperatures, int* sizes, bool allowClamp, double emissivity,
                         ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* table,
                         double* temperatures, int size, bool allowClamp, double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                         unsigned int n, double** tables, double** temperatures, int* sizes, bool allowClamp,
                         double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         double* table, double* temperatures, int size, bool allowClamp, double emissivity,
                         ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, double** tables, double** temperatures, int* sizes,
                         bool allowClamp, double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short height,
                         const TArray<SScanLine>& lines, double* table, double* temperatures, int size, bool allowClamp,
                         double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, const TArray<SScanLine>& lines, double** tables, double** temperatures,
                         int* sizes, bool allowClamp, double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double* table, double* temperatures,
                         int size, bool allowClamp, double emissivity, ETempType tempType);
bool ToTemperatureLookup(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                         double** tables, double** temperatures, int* sizes, bool allowClamp, double emissivity,
                         ETempType tempType);

// Planck over frames; band and emissivity are common to all presets, so
// there is no per-preset form.
bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned int n, double bandEnd, double bandStart,
                         double emissivity, ETempType tempType);
bool ToTemperaturePlanck(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double bandEnd,
                         double bandStart, double emissivity, ETempType tempType);
bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         double bandEnd, double bandStart, double emissivity, ETempType tempType);
bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short height,
                         const TArray<SScanLine>& lines, double bandEnd, double bandStart, double emissivity,
                         ETempType tempType);
bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short height, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double bandEnd, double bandStart,
                         double emissivity, ETempType tempType);

// Calibration curve over whole frames and index lists; PS forms take the
// four constants by preset.
bool ToTemperatureRBF(STypedData dst, STypedData src, unsigned int n, double R, double B, double F, double O, float,
                      float, float, float, double emissivity, ETempType tempType);
bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double* R,
                      double* B, double* F, double* O, float, float, float, float, double emissivity,
                      ETempType tempType);
bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double R, double B,
                      double F, double O, float, float, float, float, double emissivity, ETempType tempType);
bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                      unsigned int n, double* R, double* B, double* F, double* O, float, float, float, float,
                      double emissivity, ETempType tempType);

// Radiance (float or double) to temperature, source first, by the method of
// each preset: table (clamped at its ends) when it has one of at least two
// rows, else the polynomial when it has coefficients and an order above 0,
// else Planck with the common band. Emissivity and scale of the result come
// from SCommonParams.
bool RadianceToTemperature(STypedData src, STypedData dst, unsigned int n, const STemperatureParams& params,
                           const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                           const bool* presetActive, const STemperatureParams* params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                           const STemperatureParams& params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex,
                           const unsigned int* indices, unsigned int n, const bool* presetActive,
                           const STemperatureParams* params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                           const STemperatureParams& params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short height, SArea area, const bool* presetActive,
                           const STemperatureParams* params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height,
                           const TArray<SScanLine>& lines, const STemperatureParams& params,
                           const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short height, const TArray<SScanLine>& lines, const bool* presetActive,
                           const STemperatureParams* params, const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                           const unsigned char* mask, unsigned int maskWidth, const STemperatureParams& params,
                           const SCommonParams& common);
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                           const bool* presetActive, const STemperatureParams* params, const SCommonParams& common);

// Counts (any numeric type) to temperature in one call: the radiance of
// CountsToRadiance, held in the destination's type, then the temperature of
// RadianceToTemperature.
bool CountsToTemperature(STypedData src, STypedData dst, unsigned int n, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                         const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                         const SRadianceParams& radiance, const STemperatureParams& temperature,
                         const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, const unsigned int* indices,
                         unsigned int n, const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                         const SRadianceParams& radiance, const STemperatureParams& temperature,
                         const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height,
                         const TArray<SScanLine>& lines, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, const TArray<SScanLine>& lines, const bool* presetActive,
                         const SRadianceParams* radiance, const STemperatureParams* temperature,
                         const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common);
bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                         const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common);

// Scale change of the listed elements: dst[i] = src[indices[i]] converted
// from one scale to the other in double precision and stored by the element
// conversion rule; equal scales copy. False, writing nothing, for a scale
// outside the four. vecConvertTemperature holds every pair of element types.
template <class S, class D>
bool ConvertTemperature(D* dst, S* src, const unsigned int* indices, unsigned int n, ETempType from, ETempType to);

namespace priv {
// The formula of one pair of scales over a buffer of doubles.
void ConvertScaleInPlace(double* values, unsigned int n, ETempType from, ETempType to);
} // namespace priv

// Values pass through a small buffer of doubles: one gather loop per source
// type, one loop per formula shared by all types, one store loop per
// destination type.
template <class S, class D>
bool ConvertTemperature(D* dst, S* src, const unsigned int* indices, unsigned int n, ETempType from, ETempType to)
{
    if (unsigned(from) > tempRankine || unsigned(to) > tempRankine) return false;
    if (from == to) {
        // A copy keeps 64-bit integers exact.
        for (unsigned int i = 0; i < n; ++i) dst[i] = ConvertValue<D>(src[indices[i]]);
        return true;
    }
    constexpr unsigned int kChunk = 256;
    double buffer[kChunk];
    for (unsigned int done = 0; done < n;) {
        const unsigned int m = n - done < kChunk ? n - done : kChunk;
        for (unsigned int k = 0; k < m; ++k) buffer[k] = ConvertValue<double>(src[indices[done + k]]);
        priv::ConvertScaleInPlace(buffer, m, from, to);
        for (unsigned int k = 0; k < m; ++k) dst[done + k] = ConvertValue<D>(buffer[k]);
        done += m;
    }
    return true;
}

} // namespace orv::reduce
