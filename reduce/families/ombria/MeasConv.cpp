#include "reduce/families/ombria/MeasConv.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "reduce/convert/RadianceKernels.h"
#include "reduce/convert/TemperatureScale.h"

namespace orv::reduce {

namespace {

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
    return CalcAtmTao(PathValues(objPar), CalibValues(calibPar));
}

double CMeasConv::doCalcK1() const
{
    return CalcK1(PathValues(objPar));
}

double CMeasConv::doCalcK2(double ambient, double atmosphere, double optics) const
{
    return CalcK2(PathValues(objPar), ambient, atmosphere, optics);
}

void CMeasConv::doUpdateCalcConst()
{
    UpdateCalcConst(PathValues(objPar), CalibValues(calibPar), calibParSet);
}

void CMeasConv::doUpdateUflwOflw()
{
    UpdateUflwOflw(CalibValues(calibPar), imgToPow(adjPar.imgHigh), imgToPow(adjPar.imgLow));
}

// ---- curve -------------------------------------------------------------------

double CMeasConv::objSigToTemp(double s) const
{
    return CurveTemp(calibPar.R, calibPar.B, calibPar.F, s);
}

double CMeasConv::tempToObjSig(double T) const
{
    return CurveSig(calibPar.R, calibPar.B, calibPar.F, T);
}

bool CMeasConv::InitRad(double R, double B, double F)
{
    if (HasRadFit(R, B, F)) return true;
    if (!calibParSet) return false;
    const float low = float(calibPar.rangeLowTemp - 273.15), high = float(calibPar.rangeHighTemp - 273.15);
    // Checked before the conversion to int, which a NaN or a huge span would
    // break, and a span no camera has would take very long to fit.
    if (!(low >= -274.0f) || !(high > low) || high - low > float(kMaxFitSpan)) return false;
    return FitRad(R, B, F, int(low), int(high));
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
