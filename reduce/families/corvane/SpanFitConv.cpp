#include "reduce/families/corvane/SpanFitConv.h"

#include <algorithm>
#include <cmath>

#include "reduce/convert/TemperatureScale.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"

namespace orv::reduce {

namespace {

double ToKelvin(double t, ETempType type)
{
    switch (type) {
    case tempFahrenheit: return (t + 459.67) / 1.8;
    case tempRankine: return t / 1.8;
    case tempCelsius: return t + 273.15;
    default: return t;
    }
}

double FromKelvin(double T, ETempType type)
{
    switch (type) {
    case tempFahrenheit: return T * 1.8 - 459.67;
    case tempRankine: return T * 1.8;
    case tempCelsius: return T - 273.15;
    default: return T;
    }
}

} // namespace

bool CSpanFitConv::Usable() const
{
    // f = 0 is refused too: x divides by it.
    return (curveType == 2 || curveType == 3) && f > 0.0f && f <= 1.0f && b != 0.0f;
}

void CSpanFitConv::SetSpanFit(unsigned int type, float a_, float b_, float c_, float d_, float e_, float f_,
                              unsigned short minC, unsigned short maxC, float minT, float maxT, float g_,
                              float integrationTime, float ref)
{
    curveType = type;
    a = a_;
    b = b_;
    c = c_;
    d = d_;
    e = e_;
    f = f_;
    g = g_;
    minCounts = minC;
    maxCounts = maxC;
    minTemp = minT;
    maxTemp = maxT;
    integrationSeconds = double(integrationTime) * 1e-6;
    refValue = ref;
    unsigned char status = 0;
    float t = 0;
    lowLimit = DLToTemp(float(minCounts), t, status, tempKelvin, false) ? t : minTemp;
    highLimit = DLToTemp(float(maxCounts), t, status, tempKelvin, false) ? t : maxTemp;
    // The tighter of the count range and the stated temperature range.
    highLimit = std::min(highLimit, maxTemp);
    lowLimit = std::max(lowLimit, minTemp);
}

void CSpanFitConv::SetSpanFit(const TSharedPtr<CCorvaneFactoryCalReduceObject>& cal)
{
    if (!cal) {
        *this = CSpanFitConv{};
        return;
    }
    SetSpanFit(cal->curveType, cal->a, cal->b, cal->c, cal->d, cal->e, cal->f,
               static_cast<unsigned short>(cal->minCounts), static_cast<unsigned short>(cal->maxCounts),
               cal->minTemp, cal->maxTemp, cal->g, cal->integrationTime, cal->refValue);
}

void CSpanFitConv::SetObjectParameters(float e_, float reflected, float t, float atmosphere)
{
    emissivity = e_ == 0.0f ? 1.0f : e_;
    transmission = t == 0.0f ? 1.0f : t;
    reflectedTemp = reflected;
    atmosphereTemp = atmosphere;
    unsigned char status = 0;
    float level = 0;
    atmosphereLevel = TempToDL(atmosphereTemp, level, status, tempKelvin, false) ? level : 0.0f;
    reflectedLevel = TempToDL(reflectedTemp, level, status, tempKelvin, false) ? level : 0.0f;
}

void CSpanFitConv::SetObjectParameters(const TSharedPtr<CObjectParametersReduceObject>& p)
{
    if (!p) {
        CObjectParametersReduceObject defaults;
        SetObjectParameters(defaults.emissivity, defaults.reflectedTemp, defaults.estAtmosphericTransmission,
                            defaults.atmosphereTemp);
        return;
    }
    SetObjectParameters(p->emissivity, p->reflectedTemp, p->estAtmosphericTransmission, p->atmosphereTemp);
}

bool CSpanFitConv::DLToTemp(float level, float& temp, unsigned char& status, ETempType type, bool corrected) const
{
    float L = level;
    if (corrected) {
        const float E = emissivity, t = transmission;
        L = ((L / t - (1 - t) * atmosphereLevel / t) - reflectedLevel * (1 - E)) / E;
    }
    status = 0;
    temp = 0;
    const double s = d + integrationSeconds;
    if (!Usable() || !(s > 0)) return false;
    const double x = (double(L) + c) / s / f;
    double v = e + x;
    if (curveType == 3) v += g * x * x;
    if (!(v > 0)) return false;
    const double T = 1.0 / (b * std::log(v) + a);
    temp = float(FromKelvin(T, type));
    // Limits are Kelvin; judged on the Kelvin value, flagged and kept.
    if (T < lowLimit) status |= 2;
    if (T > highLimit) status |= 4;
    return true;
}

void CSpanFitConv::DLToTemp(unsigned short first, unsigned short last, float* temps, unsigned char* status,
                            ETempType type) const
{
    if (last < first) return;
    for (unsigned int v = first, i = 0; v <= last; ++v, ++i) {
        unsigned char st = 0;
        if (!DLToTemp(float(v), temps[i], st, type, true)) st = 1;
        if (status) status[i] = st;
    }
}

bool CSpanFitConv::InverseX(double T, double& x) const
{
    const double w = std::exp((1.0 / T - a) / b);
    if (curveType == 2) {
        x = w - e;
        return true;
    }
    if (1.0 - 4.0 * g * e < 0) return false;
    if (2.0 * g != 0) x = (std::sqrt(1.0 - 4.0 * g * (e - w)) - 1.0) / (2.0 * g);
    else x = w - e;
    return true;
}

bool CSpanFitConv::TempToDL(float temp, float& level, unsigned char& status, ETempType type, bool corrected) const
{
    level = 0;
    status = 0;
    const float T = float(ToKelvin(temp, type));
    const double s = d + integrationSeconds;
    if (T < 0 || !Usable() || !(s > 0)) return false;
    double x = 0;
    if (!InverseX(T, x)) return false;
    float L = float(f * x * s - c);
    if (corrected) {
        const float E = emissivity, t = transmission;
        L = (L * E - atmosphereLevel + (1 - E) * reflectedLevel) * t + atmosphereLevel;
    }
    level = L;
    return true;
}

bool CSpanFitConv::TempDLToIT(float temp, ETempType type, float level, float& integrationTime) const
{
    integrationTime = 0;
    const float T = float(ToKelvin(temp, type));
    if (T < 0 || !Usable()) return false;
    double x = 0;
    if (!InverseX(T, x)) return false;
    integrationTime = float((double(level) + c) / (f * x) - d);
    return true;
}

} // namespace orv::reduce
