#include "reduce/families/marlowe/MrlConv.h"

#include <algorithm>
#include <cmath>

#include "orv/Array.h"
#include "orv/Math.h"
#include "reduce/objects/ObjectParametersReduceObject.h"

namespace orv::reduce {

namespace {

// The floor that keeps the curve's logarithm and denominator above F.
double Guard(double F)
{
    return F <= 1.0 ? 1.0002 : 1.0002 * F;
}

// Rounded half away from zero and taken as 16 bits; magnitudes from 1e18 on
// are only truncated. Not-a-number gives 0.
unsigned short ToSignal(double v)
{
    if (!std::isfinite(v)) return 0;
    const double whole = std::fabs(v) < 1e18 ? std::round(v) : std::trunc(v);
    double low = std::fmod(whole, 65536.0);
    if (low < 0.0) low += 65536.0;
    return static_cast<unsigned short>(low);
}

} // namespace

double CMrlConv::rbfTempToRad(double T, double R, double B, double F)
{
    if (!(T > 0.0)) return 0.0;
    const double x = B / T;
    if (!(x < 709.78)) return 0.0;
    return R / (std::max(Guard(F), std::exp(x)) - F);
}

double CMrlConv::rbfValue(double rad, double R, double B, double F)
{
    if (rad <= 0.0) return 0.0;
    return B / std::log(std::max(Guard(F), R / rad + F));
}

double CMrlConv::polyValue(unsigned short counts, int order, const double* c)
{
    if (order == 0) return counts;
    if (order < 0) return 0.0;
    if (order <= 4) {
        const uint32_t s = counts;
        const int32_t p2 = int32_t(s * s);
        const int32_t p3 = int32_t(uint32_t(p2) * s);
        const int32_t p4 = int32_t(uint32_t(p3) * s);
        const int32_t powers[5] = {1, int32_t(s), p2, p3, p4};
        double sum = 0.0;
        for (int i = 0; i <= order; ++i) sum += double(powers[i]) * c[i];
        return sum;
    }
    const int top = std::min(order, 6);
    double sum = 0.0;
    for (int i = 0; i <= top; ++i) sum += std::pow(double(counts), i) * c[i];
    return sum;
}

double CMrlConv::calcTao(double relativeHumidity, double atmosphereTemp, double distance, double x, double a1,
                         double a2, double b1, double b2)
{
    const double s = std::sqrt(distance);
    const double t = atmosphereTemp - 273.15;
    double p;
    if (t < -30.0)
        p = -0.7918268499999997;
    else if (t > 90.0)
        p = 6.049740949999999;
    else
        p = 1.5587 + 0.06939 * t - 0.00027816 * t * t + 6.8455e-7 * t * t * t;
    const double w = std::min(std::sqrt(relativeHumidity * std::exp(p)), 6.2365);
    const double A = a1 + b1 * w;
    const double C = a2 + b2 * w;
    const double e1 = std::exp(-s * A);
    const double e2 = std::exp(-s * C);
    const double tau = x * e1 + (1.0 - x) * e2;
    if (tau < 0.4) return 0.4;
    if (tau > 1.0) return x * std::exp(-1000.0 * A) + (1.0 - x) * std::exp(-1000.0 * C) > 1.0 ? 0.4 : 1.0;
    // A model whose transmission would rise with distance is rejected; the
    // floor of 0.4 is the camera's and stays as it is.
    if (x * A * e1 + (1.0 - x) * C * e2 < 0.0 && distance > 0.0) return 0.4;
    return tau;
}

void CMrlConv::Init(const CMarloweFactoryCalReduceObject& c, const CObjectParametersReduceObject& params)
{
    Init(c, ObjectParamsAs<SMrlObjectParams>(params));
}

void CMrlConv::Init(const CMarloweFactoryCalReduceObject& c, const SMrlObjectParams& params)
{
    bool changed = c.polyOrder != cal.polyOrder;
    for (int i = 0; i < 7; ++i) changed = changed || c.coeffs[i] != cal.coeffs[i];
    c.CopyFieldsTo(cal);
    ReInit(params);

    const float tl = cal.minTemperature, th = cal.maxTemperature;
    warnHighTemp = th + 273.15f + std::max(std::fabs(th) / 50.0f, 2.0f);
    warnLowTemp = tl + 273.15f - std::max(std::fabs(tl) / 50.0f, 2.0f);
    clampHighTemp = th + 273.15f + std::max(std::fabs(th) / 20.0f, 5.0f);
    clampLowTemp = tl + 273.15f - std::max(std::fabs(tl) / 20.0f, 5.0f);
    // Without the guard of rbfTempToRad: intended.
    auto rad = [this](double limit) { return cal.rbfR / (std::exp(cal.rbfB / limit) - cal.rbfF); };
    warnHighRad = rad(warnHighTemp);
    warnLowRad = rad(warnLowTemp);
    clampHighRad = rad(clampHighTemp);
    clampLowRad = rad(clampLowTemp);

    if (!changed || cal.polyOrder < 2) return;
    // The stored coefficients bound the order that can be inverted.
    if (cal.polyOrder > 6) {
        std::fill(inverseCoeffs, inverseCoeffs + 7, 0.0);
        inverseCount = 0;
        return;
    }
    const int order = cal.polyOrder;
    const int q = (int(cal.maxCounts) - int(cal.minCounts)) / (order + 3);
    TArray<double> x, y, fit;
    auto sample = [&](int counts) {
        const unsigned short s = static_cast<unsigned short>(counts);
        x.add(polyValue(s, order, cal.coeffs));
        y.add(double(s));
    };
    sample(cal.minCounts);
    for (int i = 1; i <= order + 2; ++i) sample(int(cal.minCounts) + i * q);
    sample(cal.maxCounts);
    std::fill(inverseCoeffs, inverseCoeffs + 7, 0.0);
    inverseCount = 0;
    // A calibration whose radiances cannot be fitted (equal, not finite)
    // leaves the estimate at 0; the bisection still finds the signal.
    if (LinearLeastSquareFit(x, y, order, fit)) {
        inverseCount = int(fit.size());
        for (size_t i = 0; i < fit.size() && i < 7; ++i) inverseCoeffs[i] = fit[i];
    }
}

void CMrlConv::ReInit(const CObjectParametersReduceObject& params)
{
    ReInit(ObjectParamsAs<SMrlObjectParams>(params));
}

void CMrlConv::ReInit(const SMrlObjectParams& params)
{
    objPar = params;
    if (objPar.emissivity == 0.0f) objPar.emissivity = 1.0f;
    const double E = objPar.emissivity;
    const double Te = objPar.extOpticsTransmission;
    usedTao = objPar.estAtmosphericTransmission == 0.0f
                  ? calcTao(objPar.relativeHumidity, objPar.atmosphereTemp, objPar.distance, cal.atmX, cal.atmA1,
                            cal.atmA2, cal.atmB1, cal.atmB2)
                  : double(objPar.estAtmosphericTransmission);
    auto rbf = [this](double T) { return rbfTempToRad(T, cal.rbfR, cal.rbfB, cal.rbfF); };
    background = 0.0;
    if (E > 0.0) {
        background = (1.0 - E) / E * rbf(objPar.reflectedTemp);
        if (usedTao > 0.0) {
            background += (1.0 - usedTao) / (E * usedTao) * rbf(objPar.atmosphereTemp);
            if (Te > 0.0 && Te < 1.0) background += (1.0 - Te) / (E * usedTao * Te) * rbf(objPar.extOpticsTemp);
        }
    }
    signalScale = 1.0 / (E * usedTao * Te);
    radianceScale = 1.0 / (Te * usedTao);
}

double CMrlConv::RawRadiance(unsigned short s) const
{
    const int k = cal.polyOrder;
    const double* c = cal.coeffs;
    switch (k) {
    case 0: return s * radianceScale;
    case 1: return (c[1] * s + c[0]) * radianceScale;
    case -1: return c[1] * (s - cal.signalOffset) * radianceScale + c[0];
    case -2: return (c[1] * (s - cal.signalOffset) + c[0]) * radianceScale;
    default: return k > 1 ? polyValue(s, k, c) * radianceScale : 0.0;
    }
}

unsigned char CMrlConv::Limit(float& r) const
{
    if (r > warnLowRad && r < warnHighRad) return 0;
    if (r > clampHighRad) {
        r = float(clampHighRad);
        return 4;
    }
    if (r < clampLowRad) {
        r = float(clampLowRad);
        return 2;
    }
    return 1;
}

float CMrlConv::SignalToRadiance(unsigned short signal, unsigned char* status) const
{
    float r = float(RawRadiance(signal));
    const unsigned char s = Limit(r);
    if (status) *status = s;
    return r;
}

float CMrlConv::SignalToTemperature(unsigned short signal, unsigned char* status, ETempType type) const
{
    return RadianceToTemperature(SignalToRadiance(signal, status), status, type);
}

float CMrlConv::RadianceToTemperature(float radiance, unsigned char*, ETempType type) const
{
    const double q = double(radiance / objPar.emissivity) - background;
    const double k = q <= 0.0 ? 0.0 : rbfValue(q, cal.rbfR, cal.rbfB, cal.rbfF);
    switch (type) {
    case tempCelsius: return float(k - 273.15);
    case tempFahrenheit: return float(k * 1.8 - 459.67);
    case tempRankine: return float(k * 1.8);
    default: return float(k);
    }
}

float CMrlConv::TemperatureToRadiance(float t, unsigned char*, ETempType type) const
{
    float k;
    switch (type) {
    case tempCelsius: k = float(t + 273.15); break;
    case tempFahrenheit: k = float((t + 459.67) / 1.8); break;
    case tempRankine: k = float(t / 1.8); break;
    default: k = t; break;
    }
    return float((rbfTempToRad(k, cal.rbfR, cal.rbfB, cal.rbfF) + background) * objPar.emissivity);
}

unsigned short CMrlConv::RadianceToSignal(float radiance, unsigned char* status) const
{
    float r = radiance;
    const unsigned char s = Limit(r);
    if (status) *status = s;
    const int k = cal.polyOrder;
    const double* c = cal.coeffs;
    switch (k) {
    case 0: return ToSignal(r / radianceScale);
    case 1: return ToSignal((r / radianceScale - c[0]) / c[1]);
    case -1: return ToSignal(((r - c[0]) / radianceScale) / c[1] + cal.signalOffset);
    case -2: return ToSignal(((r / radianceScale - c[0]) / c[1]) + cal.signalOffset);
    default: break;
    }
    if (k < 2) return 0;

    // The fitted inverse gives the estimate, in float as the camera does.
    const float x = float(r / radianceScale);
    double estimate = 0.0;
    if (k <= 4) {
        const float x2 = x * x, x3 = x2 * x, x4 = x3 * x;
        const float powers[5] = {1.0f, x, x2, x3, x4};
        for (int i = 0; i <= k; ++i) estimate += double(powers[i]) * inverseCoeffs[i];
    } else {
        for (int i = 0; i <= std::min(k, 6); ++i) estimate += double(std::pow(x, float(i))) * inverseCoeffs[i];
    }
    const unsigned short guess = ToSignal(estimate);

    // Bisection over the signal range for the signal whose radiance lies
    // nearest the target.
    const float target = float(x * radianceScale);
    unsigned short best = guess;
    float bestRad = SignalToRadiance(guess, nullptr);
    int low = 0, high = kMaxSignal;
    int mid = std::min<int>(guess, kMaxSignal);
    while (low <= high) {
        const float rad = SignalToRadiance(static_cast<unsigned short>(mid), nullptr);
        if (std::fabs(rad - target) < std::fabs(bestRad - target)) {
            best = static_cast<unsigned short>(mid);
            bestRad = rad;
        }
        if (rad > target)
            high = mid - 1;
        else
            low = mid + 1;
        mid = (low + high) / 2;
    }
    return best;
}

unsigned short CMrlConv::TemperatureToSignal(float temperature, unsigned char* status, ETempType type) const
{
    return RadianceToSignal(TemperatureToRadiance(temperature, status, type), status);
}

} // namespace orv::reduce
