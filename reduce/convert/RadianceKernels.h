#pragma once
// Radiance kernels: black body band radiance, and raw signal to radiance by a
// polynomial of the counts. Stateless; every frame form checks its element
// types first and returns false, touching nothing, for a type it does not
// serve. Sources are any numeric type (0 to 9), destinations float or double.
//
// Frame layout, regions and the dense output order are those of the pixel
// kernels: the source and every per-pixel array (background image, preset
// index) are indexed by the pixel's place in the frame, the destination and
// its status by the pixel's place in the output.
#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

// Radiance calibration of one preset.
struct SRadianceParams {
    double* coefficients = nullptr;    // c0 first
    int order = 0;                     // polynomial order; -1 and -2 are background modes
    double background = 0.0;           // used when backgroundImage is null
    double* backgroundImage = nullptr; // per pixel, frame order
};

// Settings common to all presets of one conversion.
struct SCommonParams {
    double scale = 1.0; // multiplier of the radiance (1 / atmospheric transmission)
    double emissivity = 1.0;
    ETempType tempType = tempCelsius;
    double bandpassEnd = 0.0;   // micrometres
    double bandpassStart = 0.0; // micrometres
};

// Status flags of the forms with limits.
constexpr unsigned char kRadianceOutsideValid = 1;
constexpr unsigned char kRadianceClampedLow = 2;
constexpr unsigned char kRadianceClampedHigh = 4;

// Band integral of Planck's law over [bandStart, bandEnd] micrometres at
// tempC degrees Celsius, trapezoid rule with a step of 0.01.
double Radiance(double tempC, double bandStart, double bandEnd, double scale);

// The polynomial of one value: order 0 is v * scale, 1 to 4 and above the
// polynomial times scale, -1 c1 * (v - background) * scale + c0, -2
// (c1 * (v - background) + c0) * scale, below -2 zero.
double ToRadiance(double signal, double* coefficients, int order, double background, double scale);
double _ToRadiance(double signal, const double* coefficients, int order, double background, double scale);

// Quadratic fit of radiance over the object signal R / (exp(B / (273.15 + t)) - F)
// of a calibration, for each whole degree t of [tempLow, tempHigh]. The
// second form also fits the reverse, signal over radiance.
bool objSigToRad(int tempLow, int tempHigh, double R, double B, double F, double bandStart, double bandEnd,
                 double* radFromSig);
bool objSigToRad(int tempLow, int tempHigh, double R, double B, double F, double bandStart, double bandEnd,
                 double* radFromSig, double* sigFromRad);

// Range form for look-up tables: the radiance of every count first..last,
// last - first + 1 floats. With check and a status array, each value is
// judged against the limits; with check false the status bytes are cleared.
bool CountsToRadiance(unsigned short first, unsigned short last, float* out, unsigned char* status, bool check,
                      double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients,
                      int order, double background, double scale);

// Frame forms, source first. The scale is SCommonParams::scale. PS forms take
// each pixel's preset from presetIndex (frame order) and the records by that
// preset; a per-pixel background serves presets 0 to 3 that are active.
bool CountsToRadiance(STypedData src, STypedData dst, unsigned int n, const SRadianceParams& params,
                      const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                      const bool* presetActive, const SRadianceParams* params, const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                      const SRadianceParams& params, const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, const unsigned int* indices,
                      unsigned int n, const bool* presetActive, const SRadianceParams* params,
                      const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                      const SRadianceParams& params, const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short height, SArea area, const bool* presetActive, const SRadianceParams* params,
                      const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short height,
                      const TArray<SScanLine>& lines, const SRadianceParams& params, const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short height, const TArray<SScanLine>& lines, const bool* presetActive,
                      const SRadianceParams* params, const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short height, SArea area,
                      const unsigned char* mask, unsigned int maskWidth, const SRadianceParams& params,
                      const SCommonParams& common);
bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                      const bool* presetActive, const SRadianceParams* params, const SCommonParams& common);

// Whole frame and index list forms, destination first, parameters singly.
// Each shape takes a scalar background or a per-pixel one (frame order); PS
// shapes take every parameter by preset. The status shapes judge each value
// against the limits (none apply without a status array); they do not serve
// unsigned 64-bit sources.
bool ToRadiance(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order, double background,
                double scale);
bool ToRadiance(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order, double* background,
                double scale);
bool ToRadiance(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double** coefficients,
                int* orders, double* backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double** coefficients,
                int* orders, double** backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* coefficients,
                int order, double background, double scale);
bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* coefficients,
                int order, double* background, double scale);
bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                unsigned int n, double** coefficients, int* orders, double* backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                unsigned int n, double** coefficients, int* orders, double** backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, unsigned int n, double validLow,
                double validHigh, double clampLow, double clampHigh, double* coefficients, int order, double background,
                double scale);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, unsigned int n, double validLow,
                double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double* background, double scale);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned char* presetIndex, unsigned int n,
                double* validLows, double* validHighs, double* clampLows, double* clampHighs, double** coefficients,
                int* orders, double* backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned char* presetIndex, unsigned int n,
                double* validLows, double* validHighs, double* clampLows, double* clampHighs, double** coefficients,
                int* orders, double** backgrounds, double* scales);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices, unsigned int n,
                double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double background, double scale);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices, unsigned int n,
                double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double* background, double scale);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices,
                const unsigned char* presetIndex, unsigned int n, double* validLows, double* validHighs,
                double* clampLows, double* clampHighs, double** coefficients, int* orders, double* backgrounds,
                double* scales);
bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices,
                const unsigned char* presetIndex, unsigned int n, double* validLows, double* validHighs,
                double* clampLows, double* clampHighs, double** coefficients, int* orders, double** backgrounds,
                double* scales);

} // namespace orv::reduce
