#pragma once
// Helpers shared by the radiometry tests: loops over element types and plain
// double-precision references written independently of the kernels.
#include <cmath>
#include <cstdint>
#include <vector>

#include "orv/Types.h"
#include "orv/ValueConvert.h"

namespace radiometry_test {

// Calls f.template operator()<T>() for each of the ten numeric element types.
template <class F>
void ForEachType(F&& f)
{
#define ORV_TEST_CALL(T) f.template operator()<T>();
    ORV_FOR_EACH_NUMERIC_TYPE(ORV_TEST_CALL)
#undef ORV_TEST_CALL
}

template <class F>
void ForEachFloat(F&& f)
{
    f.template operator()<float>();
    f.template operator()<double>();
}

template <class T>
orv::STypedData Typed(std::vector<T>& v)
{
    return orv::STypedData(v.data(), orv::TDataTypeOf<T>::value);
}

// Horner form of sum c[i] x^i, a different evaluation order from the kernels.
inline double Horner(const double* c, int order, double x)
{
    double r = 0.0;
    for (int i = order; i >= 0; --i) r = r * x + c[i];
    return r;
}

// Radiance polynomial of one value by its documented table.
inline double RadianceRef(double v, const double* c, int order, double b, double s)
{
    if (order == 0) return v * s;
    if (order > 0) return Horner(c, order, v) * s;
    if (order == -1) return c[1] * (v - b) * s + c[0];
    if (order == -2) return (c[1] * (v - b) + c[0]) * s;
    return 0.0;
}

// Scale conversion from Celsius and from Kelvin, written out per scale.
inline double FromCelsius(double c, orv::ETempType t)
{
    switch (t) {
    case orv::tempFahrenheit: return c * 9.0 / 5.0 + 32.0;
    case orv::tempKelvin: return c + 273.15;
    case orv::tempRankine: return (c + 273.15) * 9.0 / 5.0;
    default: return c;
    }
}
inline double FromKelvin(double k, orv::ETempType t)
{
    return FromCelsius(k - 273.15, t);
}

// True when a and b agree to rel relative (or abs absolute near zero).
inline bool Close(double a, double b, double rel, double abs = 1e-12)
{
    return std::fabs(a - b) <= std::max(abs, rel * std::max(std::fabs(a), std::fabs(b)));
}

} // namespace radiometry_test
