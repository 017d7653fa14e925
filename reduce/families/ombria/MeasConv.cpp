#include "reduce/families/ombria/MeasConv.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "reduce/convert/RadianceKernels.h"
#include "reduce/convert/TemperatureScale.h"

namespace orv::reduce {

namespace {

// Coefficients of the saturation model of water vapour over t in Celsius,
// valid from -30 to 90; outside, its values at the ends.
constexpr double kH2O[4] = {1.5587, 0.06939, -0.00027816, 6.8455e-7};
constexpr double kH2OBelow = -0.7918268499999997;
constexpr double kH2OAbove = 6.049740949999999;
constexpr double kMaxVapour = 6.2365;
constexpr double kTaoFloor = 0.4;
// exp of more than this overflows a double.
constexpr double kExpLimit = 709.78;
// A radiance fit over more whole degrees than this is no camera's: the
// fit evaluates a band integral per degree.
constexpr int kMaxFitSpan = 20000;

// Image value of a float source: truncated, 65536 and more (and NaN) as
// 65535, far negatives kept negative without overflow.
long ImageOf(float v)
{
    if (!(v < 65536.0f)) return 65535;
    if (v < -65536.0f) return -65536;
    return long(v);
}

template <class S, class F>
void ArrayForm(float* dst, const S* src, unsigned char* status, unsigned int n, F&& f)
{
    for (unsigned int i = 0; i < n; ++i) {
        long img;
        if constexpr (std::is_same_v<S, float>) img = ImageOf(src[i]);
        else img = long(src[i]);
        dst[i] = float(f(img, status ? status + i : nullptr));
    }
}

template <class F>
void RangeForm(unsigned short first, unsigned short last, float* dst, unsigned char* status, F&& f)
{
    if (last < first) return;
    for (unsigned int v = first, i = 0; v <= last; ++v, ++i) dst[i] = float(f(long(v), status ? status + i : nullptr));
}

} // namespace

CMeasConv::CMeasConv(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib)
{
    init(adjust, object, calib);
}

void CMeasConv::init(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib)
{
    K1 = K2 = atmTao = 0.0;
    measAmbObjSig = -1.0;
    clipOn = true;
    // A new calibration may bring a new span for the same curve: fit again.
    radInitialised = false;
    adjPar = adjust ? *adjust : SAdjustParams{};
    objParSet = object != nullptr;
    objPar = object ? *object : SObjectParams{};
    calibParSet = calib != nullptr;
    calibPar = calib ? *calib : SCalibParams{};
    if (calibParSet && objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
        InitRad(calibPar.R, calibPar.B, calibPar.F);
    }
}

void CMeasConv::UpdateConstants()
{
    if (!objParSet) return;
    doUpdateCalcConst();
    doUpdateUflwOflw();
    if (calibParSet) InitRad(calibPar.R, calibPar.B, calibPar.F);
}

void CMeasConv::setAdjPar(const SAdjustParams* p)
{
    adjPar = p ? *p : SAdjustParams{};
    UpdateConstants();
}

void CMeasConv::setObjPar(const SObjectParams* p)
{
    objParSet = p != nullptr;
    objPar = p ? *p : SObjectParams{};
    UpdateConstants();
}

void CMeasConv::setCalibPar(const SCalibParams* p)
{
    calibParSet = p != nullptr;
    calibPar = p ? *p : SCalibParams{};
    radInitialised = false;
    UpdateConstants();
}

void CMeasConv::setClipOn(bool on)
{
    clipOn = on;
    UpdateConstants();
}

void CMeasConv::setDefObjPar()
{
    SObjectParams p;
    p.emissivity = 1.0f;
    p.distance = 0.0f;
    p.reflectedTemp = 293.15f;
    p.atmosphereTemp = 293.15f;
    p.extOpticsTemp = 293.15f;
    p.extOpticsTransmission = 1.0f;
    p.estAtmosphericTransmission = 0.0f;
    p.relativeHumidity = 0.0f;
    setObjPar(&p);
}

bool CMeasConv::getObjPar(SObjectParams* out) const
{
    if (!objParSet || !out) return false;
    *out = objPar;
    return true;
}

double CMeasConv::setMeasAmbObjSig(double s)
{
    const double old = measAmbObjSig;
    measAmbObjSig = s;
    UpdateConstants();
    return old;
}

// ---- image and power --------------------------------------------------------

double CMeasConv::imgToPow(long img) const
{
    if (img == 0) return 0.0;
    if (img > 65535) img = 65535;
    else if (img <= 0) img = 1;
    if (adjPar.nonLinear == 0) return double(img + adjPar.offset) * adjPar.gain;
    const long d = img - adjPar.nonLinearZero;
    const float m = float(d) * adjPar.nonLinearFactor;
    const double q = 1.0 - m;
    if (adjPar.nonLinearFactor > 0 && q < 0.0001) return kPowHigh;
    return double(d) * adjPar.gain / q + adjPar.offset;
}

unsigned short CMeasConv::powToImg(double pow, double offset, double gain) const
{
    if (pow == 0.0) return 0;
    double r;
    if (adjPar.nonLinear == 0) {
        if (gain < 0.0001) return 1;
        r = std::trunc(pow / gain - offset + 0.5);
    } else {
        const double d = pow - offset;
        const double q = adjPar.nonLinearFactor * d + gain;
        if (q < 0.0001) return 1;
        r = adjPar.nonLinearZero + std::trunc(d / q);
    }
    // Compared in double, so that a NaN or a huge value never reaches an
    // integer conversion.
    if (r > 65535.0) return 65535;
    if (!(r > 0.0)) return 1;
    return static_cast<unsigned short>(r);
}

unsigned short CMeasConv::powToImg(double pow) const
{
    return powToImg(pow, adjPar.offset, adjPar.gain);
}

// ---- path --------------------------------------------------------------------

double CMeasConv::doCalcAtmTao() const
{
    const double t = double(float(objPar.atmosphereTemp - 273.15));
    const double s = std::sqrt(double(objPar.distance));
    double p;
    if (t < -30.0) p = kH2OBelow;
    else if (t > 90.0) p = kH2OAbove;
    else p = kH2O[0] + kH2O[1] * t + kH2O[2] * t * t + kH2O[3] * t * t * t;
    const double h = std::exp(p) * objPar.relativeHumidity;
    const double w = std::min(std::sqrt(h), kMaxVapour);
    const double a = calibPar.beta1 * w + calibPar.alpha1;
    const double b = calibPar.beta2 * w + calibPar.alpha2;
    const double X = calibPar.X;
    const double e1 = std::exp(-s * a);
    const double e2 = std::exp(-s * b);
    const double tao = X * e1 + (1 - X) * e2;
    if (tao < kTaoFloor) return kTaoFloor;
    if (tao > 1.0) {
        // Above 1 the model has run away: at a kilometre it tells which way.
        return X * std::exp(-1000 * a) + (1 - X) * std::exp(-1000 * b) > 1.0 ? kTaoFloor : 1.0;
    }
    const double g = a * X * e1 + (1 - X) * b * e2;
    if (g < 0 && objPar.distance > 0) return kTaoFloor;
    return tao;
}

double CMeasConv::doCalcK1() const
{
    const double v = double(objPar.emissivity) * atmTao * objPar.extOpticsTransmission;
    return v > 0 ? 1.0 / v : v;
}

double CMeasConv::doCalcK2(double ambient, double atmosphere, double optics) const
{
    const double e = objPar.emissivity, a = atmTao, o = objPar.extOpticsTransmission;
    if (e <= 0) return 0.0;
    double r = (1 - e) / e * ambient;
    if (a <= 0) return r;
    r += (1 - a) / (e * a) * atmosphere;
    if (o <= 0 || o >= 1) return r;
    r += (1 - o) / (e * a * o) * optics;
    return r;
}

void CMeasConv::doUpdateCalcConst()
{
    atmTao = objPar.estAtmosphericTransmission > 0 ? double(objPar.estAtmosphericTransmission) : doCalcAtmTao();
    K1 = doCalcK1();
    if (measAmbObjSig > 0)
        K2 = doCalcK2(measAmbObjSig, measAmbObjSig, measAmbObjSig);
    else
        K2 = doCalcK2(tempToObjSig(objPar.reflectedTemp), tempToObjSig(objPar.atmosphereTemp),
                      tempToObjSig(objPar.extOpticsTemp));
    if (calibParSet && clipOn) {
        powClampHigh = (tempToObjSig(calibPar.clampHighTemp) + K2) / K1 + 1.01;
        powValidHigh = (tempToObjSig(calibPar.validHighTemp) + K2) / K1 + 1.01;
        powValidLow = (tempToObjSig(calibPar.validLowTemp) + K2) / K1 - 0.01;
        powClampLow = (tempToObjSig(calibPar.clampLowTemp) + K2) / K1 - 0.01;
    } else {
        powClampHigh = powValidHigh = kPowHigh;
        powValidLow = powClampLow = kPowLow;
    }
}

void CMeasConv::doUpdateUflwOflw()
{
    double lim = kPowHigh, flo = kPowLow;
    if (clipOn) {
        lim = std::min(powClampHigh, objSigToPow(tempToObjSig(1e9)));
        flo = std::clamp(std::max(powClampLow, objSigToPow(0.0)), kPowLow, kPowHigh);
    }
    limitClampHigh = std::min(std::clamp(lim, kPowLow, kPowHigh), imgToPow(adjPar.imgHigh));
    limitClampLow = std::max(flo, imgToPow(adjPar.imgLow));
    limitValidHigh = std::min(powValidHigh, limitClampHigh);
    limitValidLow = std::max(powValidLow, limitClampLow);
}

double CMeasConv::clipPow(double p, unsigned char* status) const
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

double CMeasConv::objSigToPow(double s) const
{
    return K1 > 0 ? (s + K2) / K1 : kPowHigh;
}

// ---- curve -------------------------------------------------------------------

double CMeasConv::CurveFloor() const
{
    return calibPar.F <= 1.0f ? 1.0002 : double(calibPar.F) * 1.0002;
}

double CMeasConv::objSigToTemp(double s) const
{
    if (!(s > 0)) return 0.0;
    return calibPar.B / std::log(std::max(CurveFloor(), calibPar.R / s + calibPar.F));
}

double CMeasConv::tempToObjSig(double T) const
{
    if (!(T > 0)) return 0.0;
    const double x = calibPar.B / T;
    if (!(x < kExpLimit)) return 0.0;
    return calibPar.R / (std::max(CurveFloor(), std::exp(x)) - calibPar.F);
}

bool CMeasConv::InitRad(double R, double B, double F)
{
    if (radInitialised && R == radR && B == radB && F == radF) return true;
    if (!calibParSet) return false;
    const float low = float(calibPar.rangeLowTemp - 273.15), high = float(calibPar.rangeHighTemp - 273.15);
    // Checked before the conversion to int, which a NaN or a huge span would
    // break, and a span no camera has would take very long to fit.
    if (!(low >= -274.0f) || !(high > low) || high - low > float(kMaxFitSpan)) return false;
    double fromSig[3] = {}, toSig[3] = {};
    if (!::orv::reduce::objSigToRad(int(low), int(high), R, B, F, 8.0, 12.0, fromSig, toSig)) return false;
    std::memcpy(radFromSig, fromSig, sizeof fromSig);
    std::memcpy(sigFromRad, toSig, sizeof toSig);
    radR = R;
    radB = B;
    radF = F;
    radInitialised = true;
    return true;
}

double CMeasConv::radToObjSig(double r) const
{
    const double guess = sigFromRad[0] + sigFromRad[1] * r + sigFromRad[2] * r * r;
    long lo = 0, hi = 65535, v = objSigToImg(guess);
    long best = v;
    double bestErr = -1.0;
    // Radiance grows with the image value: halve the span towards r,
    // keeping the nearest seen.
    while (lo <= hi) {
        const double rv = imgToRadiance(v, nullptr);
        const double err = std::fabs(rv - r);
        if (bestErr < 0 || err < bestErr) {
            best = v;
            bestErr = err;
        }
        if (rv > r) hi = v - 1;
        else lo = v + 1;
        v = (lo + hi) / 2;
    }
    return imgToObjectSignal(best, nullptr);
}

double CMeasConv::tempToRad(float t) const
{
    return ::orv::reduce::Radiance(t, 8.0, 12.0, 1.0);
}

// ---- array forms -------------------------------------------------------------

#define ORV_MEAS_ARRAY(NAME)                                                                                   \
    void CMeasConv::NAME(float* dst, const float* src, unsigned char* status, unsigned int n) const           \
    {                                                                                                          \
        ArrayForm(dst, src, status, n, [this](long img, unsigned char* st) { return NAME(img, st); });        \
    }                                                                                                          \
    void CMeasConv::NAME(float* dst, const unsigned short* src, unsigned char* status, unsigned int n) const  \
    {                                                                                                          \
        ArrayForm(dst, src, status, n, [this](long img, unsigned char* st) { return NAME(img, st); });        \
    }
ORV_MEAS_ARRAY(imgToTemp)
ORV_MEAS_ARRAY(imgToObjectSignal)
ORV_MEAS_ARRAY(imgToRadiance)
#undef ORV_MEAS_ARRAY

void CMeasConv::imgToTemp(unsigned short first, unsigned short last, float* dst, unsigned char* status,
                          ETempType type) const
{
    RangeForm(first, last, dst, status, [this, type](long img, unsigned char* st) {
        return priv::ConvertScale(imgToTemp(img, st), tempKelvin, type);
    });
}

void CMeasConv::imgToObjectSignal(unsigned short first, unsigned short last, float* dst, unsigned char* status) const
{
    RangeForm(first, last, dst, status, [this](long img, unsigned char* st) { return imgToObjectSignal(img, st); });
}

void CMeasConv::imgToRadiance(unsigned short first, unsigned short last, float* dst, unsigned char* status) const
{
    RangeForm(first, last, dst, status, [this](long img, unsigned char* st) { return imgToRadiance(img, st); });
}

} // namespace orv::reduce
