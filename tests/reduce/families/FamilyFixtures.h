#pragma once
// Calibrations shaped like those of real cameras, for the family tests.
#include <cmath>

#include "reduce/objects/MarloweFactoryCalReduceObject.h"

namespace orv::reduce::test {

// A long-wave Marlowe preset: about 1e-4 to 1.3e-3 radiance over counts
// 1000 to 15000, -20 to 150 Celsius, and a two-band atmosphere that
// absorbs more with humidity.
// order selects the counts-to-radiance form.
inline void MakeMarloweCal(CMarloweFactoryCalReduceObject& cal, int order)
{
    cal.polyOrder = order;
    const double c[7] = {1.4e-5, 8.6e-8, order >= 2 ? 1e-13 : 0.0, order >= 3 ? 1e-18 : 0.0, 0.0,
                         order >= 5 ? 1e-25 : 0.0, order >= 6 ? 1e-30 : 0.0};
    for (int i = 0; i < 7; ++i) cal.coeffs[i] = c[i];
    if (order < 0) {
        cal.signalOffset = 500.0;
        cal.coeffs[0] = 5.7e-5;
    }
    cal.rbfR = 0.032;
    cal.rbfB = 1400.0;
    cal.rbfF = 1.0;
    cal.atmX = 0.8;
    cal.atmA1 = 0.006569;
    cal.atmA2 = 0.01262;
    cal.atmB1 = 0.0005;
    cal.atmB2 = 0.001;
    cal.minTemperature = -20.0f;
    cal.maxTemperature = 150.0f;
    cal.minRadiance = 1.2e-4f;
    cal.maxRadiance = 1.25e-3f;
    cal.minCounts = 1000;
    cal.maxCounts = 15000;
}

} // namespace orv::reduce::test

#include "reduce/families/tessel/TesMeasConv.h"

namespace orv::reduce::test {

// A Tessel preset: object signal in image values, about 1800 at -20 Celsius
// to 13000 at 120, measuring -20 to 120 (clamps -40 and 150), with a drift
// model around a detector at 30 Celsius.
inline _cal_param_t MakeTesselCal()
{
    _cal_param_t c;
    c.R = 500000.0f;
    c.B = 1430.0f;
    c.F = 1.0f;
    c.alpha1 = 0.006569f;
    c.alpha2 = 0.01262f;
    c.beta1 = 0.0005f;
    c.beta2 = 0.001f;
    c.X = 0.8f;
    c.clampHighTemp = 423.15f;
    c.validHighTemp = 393.15f;
    c.validLowTemp = 253.15f;
    c.clampLowTemp = 233.15f;
    c.rangeHighTemp = 423.15f;
    c.rangeLowTemp = 233.15f;
    c.driftK0 = 1.0f;
    c.driftK1 = 0.05f;
    c.driftB9 = 0.1f;
    c.driftA9 = float(0.1 * 500000.0 / (std::exp(1430.0 / 303.15) - 1.0));
    c.driftB10 = 0.05f;
    c.driftA10 = float(0.05 * 500000.0 / (std::exp(1430.0 / 303.15) - 1.0));
    c.driftC11 = 2.0f;
    return c;
}

inline _tdrift_par_t MakeTesselDrift()
{
    _tdrift_par_t d;
    d.driftOn = true;
    d.t0 = 303.15f;
    d.k2 = 0.02f;
    return d;
}

} // namespace orv::reduce::test
