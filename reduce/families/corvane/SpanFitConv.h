#pragma once
// CSpanFitConv: the Corvane curve of one preset. A digital level L and a
// temperature T in Kelvin meet through x = (L + c) / s / f, s = d + the
// integration time in seconds, and 1 / T = a + b ln(v), with v = e + x
// (curve type 2) or e + x + g x^2 (type 3). The scene (emissivity,
// transmission, reflected and atmosphere temperature) is removed from a
// level as levels of its own.
#include "orv/SharedPtr.h"
#include "orv/Types.h"

namespace orv::reduce {

class CCorvaneFactoryCalReduceObject;
class CObjectParametersReduceObject;

class CSpanFitConv {
public:
    CSpanFitConv() = default;

    void SetSpanFit(unsigned int curveType, float a, float b, float c, float d, float e, float f,
                    unsigned short minCounts, unsigned short maxCounts, float minTemp, float maxTemp, float g,
                    float integrationTime, float refValue);
    // A null object leaves a curve that answers nothing.
    void SetSpanFit(const TSharedPtr<CCorvaneFactoryCalReduceObject>& cal);
    void SetObjectParameters(float emissivity, float reflectedTemp, float transmission, float atmosphereTemp);
    void SetObjectParameters(const TSharedPtr<CObjectParametersReduceObject>& params);

    // False, with temp and status 0, when the curve cannot answer. A result
    // outside the limits is flagged (2 below, 4 above), not clamped.
    bool DLToTemp(float level, float& temp, unsigned char& status, ETempType type, bool corrected) const;
    // The scene-corrected temperatures of levels first..last; a level the
    // curve cannot answer gives 0 with status 1.
    void DLToTemp(unsigned short first, unsigned short last, float* temps, unsigned char* status,
                  ETempType type) const;
    bool TempToDL(float temp, float& level, unsigned char& status, ETempType type, bool corrected) const;
    // The integration time in seconds at which temp gives level.
    bool TempDLToIT(float temp, ETempType type, float level, float& integrationTime) const;

    // Whether the curve can answer at all.
    bool Usable() const;

    unsigned int curveType = 0;
    float a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0;
    unsigned short maxCounts = 0, minCounts = 0;
    float minTemp = 0, maxTemp = 0;
    double integrationSeconds = 0;
    float refValue = 0;
    float emissivity = 1.0f;
    float reflectedTemp = 20.0f;
    float transmission = 1.0f;
    float atmosphereTemp = 20.0f;
    float atmosphereLevel = 0;
    float reflectedLevel = 0;
    float highLimit = 0, lowLimit = 0;

private:
    // w = exp((1 / T - a) / b) back to x; false where the quadratic has no
    // real root.
    bool InverseX(double kelvin, double& x) const;
};

} // namespace orv::reduce
