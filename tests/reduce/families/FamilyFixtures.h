#pragma once
// Calibrations shaped like those of real cameras, for the family tests.
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
