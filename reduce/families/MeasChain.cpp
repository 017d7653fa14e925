#include "reduce/families/MeasChain.h"

#include <cstring>

#include "reduce/convert/RadianceKernels.h"

namespace orv::reduce {

namespace {

// Coefficients of the saturation model of water vapour over t in Celsius,
// valid from -30 to 90; outside, its values at the ends.
constexpr double kH2O[4] = {1.5587, 0.06939, -0.00027816, 6.8455e-7};
constexpr double kH2OBelow = -0.7918268499999997;
constexpr double kH2OAbove = 6.049740949999999;
constexpr double kMaxVapour = 6.2365;
constexpr double kTaoFloor = 0.4;

} // namespace

double CMeasChain::clipPow(double p, unsigned char* status) const
{
    unsigned char s = 0;
    if (clipOn && (p <= limitValidLow || p >= limitValidHigh)) {
        if (p > limitClampHigh) {
            p = limitClampHigh;
            s = 4;
        } else {
            s = 1;
            if (p < limitClampLow) {
                p = limitClampLow;
                s = 2;
            }
        }
    }
    if (status) *status = s;
    return p;
}

double CMeasChain::CalcAtmTao(const SPathValues& path, const SCalibValues& cal)
{
    const double t = double(float(path.atmosphereTemp - 273.15));
    const double s = std::sqrt(double(path.distance));
    double p;
    if (t < -30.0) p = kH2OBelow;
    else if (t > 90.0) p = kH2OAbove;
    else p = kH2O[0] + kH2O[1] * t + kH2O[2] * t * t + kH2O[3] * t * t * t;
    const double h = std::exp(p) * path.relativeHumidity;
    const double w = std::min(std::sqrt(h), kMaxVapour);
    const double a = cal.beta1 * w + cal.alpha1;
    const double b = cal.beta2 * w + cal.alpha2;
    const double X = cal.X;
    const double e1 = std::exp(-s * a);
    const double e2 = std::exp(-s * b);
    const double tao = X * e1 + (1 - X) * e2;
    if (tao < kTaoFloor) return kTaoFloor;
    if (tao > 1.0) {
        // Above 1 the model has run away: at a kilometre it tells which way.
        return X * std::exp(-1000 * a) + (1 - X) * std::exp(-1000 * b) > 1.0 ? kTaoFloor : 1.0;
    }
    const double g = a * X * e1 + (1 - X) * b * e2;
    if (g < 0 && path.distance > 0) return kTaoFloor;
    return tao;
}

double CMeasChain::CalcK1(const SPathValues& path) const
{
    const double v = double(path.emissivity) * atmTao * path.extOpticsTransmission;
    return v > 0 ? 1.0 / v : v;
}

double CMeasChain::CalcK2(const SPathValues& path, double ambient, double atmosphere, double optics) const
{
    const double e = path.emissivity, a = atmTao, o = path.extOpticsTransmission;
    if (e <= 0) return 0.0;
    double r = (1 - e) / e * ambient;
    if (a <= 0) return r;
    r += (1 - a) / (e * a) * atmosphere;
    if (o <= 0 || o >= 1) return r;
    r += (1 - o) / (e * a * o) * optics;
    return r;
}

void CMeasChain::UpdateCalcConst(const SPathValues& path, const SCalibValues& cal, bool calibSet)
{
    const auto sig = [&cal](double T) { return CurveSig(cal.R, cal.B, cal.F, T); };
    atmTao = path.estAtmosphericTransmission > 0 ? double(path.estAtmosphericTransmission) : CalcAtmTao(path, cal);
    K1 = CalcK1(path);
    if (measAmbObjSig > 0)
        K2 = CalcK2(path, measAmbObjSig, measAmbObjSig, measAmbObjSig);
    else
        K2 = CalcK2(path, sig(path.reflectedTemp), sig(path.atmosphereTemp), sig(path.extOpticsTemp));
    if (calibSet && clipOn) {
        powClampHigh = (sig(cal.clampHighTemp) + K2) / K1 + 1.01;
        powValidHigh = (sig(cal.validHighTemp) + K2) / K1 + 1.01;
        powValidLow = (sig(cal.validLowTemp) + K2) / K1 - 0.01;
        powClampLow = (sig(cal.clampLowTemp) + K2) / K1 - 0.01;
    } else {
        powClampHigh = powValidHigh = kPowHigh;
        powValidLow = powClampLow = kPowLow;
    }
}

void CMeasChain::UpdateUflwOflw(const SCalibValues& cal, double imgHighPow, double imgLowPow)
{
    double lim = kPowHigh, flo = kPowLow;
    if (clipOn) {
        lim = std::min(powClampHigh, objSigToPow(CurveSig(cal.R, cal.B, cal.F, 1e9)));
        flo = std::clamp(std::max(powClampLow, objSigToPow(0.0)), kPowLow, kPowHigh);
    }
    limitClampHigh = std::min(std::clamp(lim, kPowLow, kPowHigh), imgHighPow);
    limitClampLow = std::max(flo, imgLowPow);
    limitValidHigh = std::min(powValidHigh, limitClampHigh);
    limitValidLow = std::max(powValidLow, limitClampLow);
}

bool CMeasChain::FitRad(double R, double B, double F, int low, int high)
{
    double fromSig[3] = {}, toSig[3] = {};
    if (!::orv::reduce::objSigToRad(low, high, R, B, F, 8.0, 12.0, fromSig, toSig)) return false;
    std::memcpy(radFromSig, fromSig, sizeof fromSig);
    std::memcpy(sigFromRad, toSig, sizeof toSig);
    radR = R;
    radB = B;
    radF = F;
    radInitialised = true;
    return true;
}

} // namespace orv::reduce
