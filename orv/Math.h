#pragma once
// Numeric helpers: temperature scale conversion over typed buffers, and the
// polynomial least-squares fit used by calibrations.
#include <type_traits>

#include "orv/Array.h"
#include "orv/Types.h"

namespace orv {

class CMath {
public:
    // Converts n temperatures from scale `from` to scale `to`, destination
    // first. Each value is taken to double, converted with the formula of the
    // pair (C->K v + 273.15, C->R (v + 273.15) * 1.8, C->F v * 1.8 + 32.0,
    // K->F v * 1.8 - 459.67, K->R v * 1.8, K->C v - 273.15, R->F v - 459.67,
    // R->K v / 1.8, R->C v / 1.8 - 273.15, F->K (v + 459.67) / 1.8,
    // F->R v + 459.67, F->C (v - 32.0) / 1.8) in double precision, and
    // stored by the element conversion rule. Equal scales copy through the
    // conversion rule. Any pair of numeric types (0 to 9); dst may be src
    // when both have the same type. False, touching nothing, for another
    // type, a scale outside 0 to 3, or a null pointer with n > 0.
    static bool ConvertTemperature(STypedData dst, STypedData src, unsigned int n, ETempType from, ETempType to);

    // In place, for the integer element types (and float, double); results
    // are truncated toward zero like every element conversion.
    template <class T>
    static bool ConvertTemperature(T* data, unsigned int n, ETempType from, ETempType to);
};

// Least-squares polynomial of the given degree through the points (x[i],
// y[i]); coefficients receives degree + 1 values, the constant term first.
// The fit is made on the powers of x with each column scaled to unit length,
// by a singular value decomposition that leaves out the directions double
// precision cannot resolve, so that large, offset or tiny x values give
// coefficients whose polynomial keeps the residual of the best fit. False,
// leaving coefficients unchanged, for a negative degree, sizes that differ,
// fewer points than coefficients, fewer distinct x values than
// coefficients, a value that is not finite, or a result that is not.
bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients);

} // namespace orv
