#pragma once
// The twelve temperature scale formulas, in one place for every radiometric
// kernel. Written exactly as the scales define them: rewriting
// (v + 273.15) * 1.8 as v * 1.8 + 491.67 would change the last bits.
#include "orv/Types.h"

namespace orv::reduce::priv {

template <ETempType From, ETempType To>
constexpr double ConvertScale(double v)
{
    if constexpr (From == To) return v;
    else if constexpr (From == tempCelsius && To == tempFahrenheit) return v * 1.8 + 32.0;
    else if constexpr (From == tempCelsius && To == tempKelvin) return v + 273.15;
    else if constexpr (From == tempCelsius && To == tempRankine) return (v + 273.15) * 1.8;
    else if constexpr (From == tempFahrenheit && To == tempCelsius) return (v - 32.0) / 1.8;
    else if constexpr (From == tempFahrenheit && To == tempKelvin) return (v + 459.67) / 1.8;
    else if constexpr (From == tempFahrenheit && To == tempRankine) return v + 459.67;
    else if constexpr (From == tempKelvin && To == tempCelsius) return v - 273.15;
    else if constexpr (From == tempKelvin && To == tempFahrenheit) return v * 1.8 - 459.67;
    else if constexpr (From == tempKelvin && To == tempRankine) return v * 1.8;
    else if constexpr (From == tempRankine && To == tempCelsius) return v / 1.8 - 273.15;
    else if constexpr (From == tempRankine && To == tempFahrenheit) return v - 459.67;
    else return v / 1.8; // Rankine to Kelvin
}

// Calls f.template operator()<To>() with the run-time scale as a constant, so
// that a loop inside f is compiled once per scale with straight-line
// arithmetic. A value outside the four scales keeps the scale From.
template <ETempType From, class F>
decltype(auto) WithScale(ETempType to, F&& f)
{
    switch (to) {
    case tempCelsius: return f.template operator()<tempCelsius>();
    case tempFahrenheit: return f.template operator()<tempFahrenheit>();
    case tempKelvin: return f.template operator()<tempKelvin>();
    case tempRankine: return f.template operator()<tempRankine>();
    }
    return f.template operator()<From>();
}

// Run-time form for single values; a scale outside the four leaves v as it is.
inline double ConvertScale(double v, ETempType from, ETempType to)
{
    if (unsigned(from) > tempRankine) return v;
    return WithScale<tempCelsius>(from, [&]<ETempType F>() {
        if (unsigned(to) > tempRankine) return v;
        return WithScale<F>(to, [&]<ETempType T>() { return ConvertScale<F, T>(v); });
    });
}

} // namespace orv::reduce::priv
