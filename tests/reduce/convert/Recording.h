#pragma once
// A recording's objects built in memory, and the radiometric formulas written
// out plainly, independently of the library's kernels.
#include <cmath>

#include "orv/RCalFile.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce::test {

inline TSharedPtr<CSourceInfoReduceObject> AddSourceInfo(CReduceObjectArray& objs, EUnit base, unsigned short width,
                                                         unsigned short height, ETempType baseTemp = tempCelsius)
{
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(true);
    info->baseUnit = base;
    info->baseTempType = baseTemp;
    info->imageWidth = width;
    info->imageHeight = height;
    return info;
}

inline TSharedPtr<CRCalReduceObject> AddCalibration(CReduceObjectArray& objs)
{
    TSharedPtr<CRCalReduceObject> cal =
        objs.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
    cal->valid = true;
    return cal;
}

enum class EMethod { lookup, coefficients, planck };

// One preset of a user calibration: radiance = c0 + c1 v + c2 v^2, and the
// temperature step by the chosen method.
struct SUserCal {
    double c[3] = {1.0e-3, 3.5e-7, 2.0e-12};
    double t[3] = {-62.0, 16500.0, -2.1e5}; // Celsius polynomial of radiance
    double lookupL[6] = {0.0015, 0.0025, 0.0035, 0.0045, 0.0060, 0.0080};
    double lookupT[6] = {-45.0, -8.0, 21.0, 44.0, 75.0, 110.0};
    double bandStart = 8.0, bandEnd = 14.0;

    void Apply(CRCalFile& cal, int preset, EMethod method) const
    {
        cal.SetBandpass(bandStart, bandEnd);
        cal.SetCoefficients(preset, 2, TArray<double>{c[0], c[1], c[2]});
        if (method == EMethod::lookup) {
            TArray<double> r, t;
            for (int k = 0; k < 6; ++k) {
                r.add(lookupL[k]);
                t.add(lookupT[k]);
            }
            cal.SetLookup(preset, r, t);
        }
        if (method == EMethod::coefficients)
            cal.SetTempCoefficients(preset, 2, TArray<double>{this->t[0], this->t[1], this->t[2]});
    }

    double Radiance(double v, double scale) const { return (c[0] + c[1] * v + c[2] * v * v) * scale; }

    // Temperature of a radiance in the wanted scale.
    double Temperature(double L, EMethod method, double emissivity, ETempType to) const
    {
        const double x = L / emissivity;
        double celsius = 0;
        if (method == EMethod::coefficients) {
            celsius = t[0] + t[1] * x + t[2] * x * x;
        } else if (method == EMethod::lookup) {
            if (x <= lookupL[0]) celsius = lookupT[0];
            else if (x >= lookupL[5]) celsius = lookupT[5];
            else
                for (int k = 1; k < 6; ++k)
                    if (x <= lookupL[k]) {
                        const double f = (x - lookupL[k - 1]) / (lookupL[k] - lookupL[k - 1]);
                        celsius = lookupT[k - 1] + f * (lookupT[k] - lookupT[k - 1]);
                        break;
                    }
        } else {
            // Planck's law inverted at the band's middle wavelength.
            const double w = (bandStart + bandEnd) / 2.0;
            const double kelvin = 14388.3 / (w * std::log((bandEnd - bandStart) * 11910.66 / (std::pow(w, 5) * x) + 1.0));
            celsius = kelvin - 273.15;
        }
        switch (to) {
        case tempKelvin: return celsius + 273.15;
        case tempFahrenheit: return celsius * 1.8 + 32.0;
        case tempRankine: return (celsius + 273.15) * 1.8;
        default: return celsius;
        }
    }

    // What a float pipeline gives: radiance held as float, then temperature.
    double Expected(double counts, EMethod method, double emissivity, double scale, ETempType to) const
    {
        return Temperature(double(float(Radiance(counts, scale))), method, emissivity, to);
    }
};

} // namespace orv::reduce::test
