#include "reduce/families/tessel/TesMeasConv.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "reduce/convert/TemperatureScale.h"

namespace orv::reduce {

namespace {

// The radiance fit walks each whole degree of the calibrated span; a span
// wider than any camera's is refused rather than walked.
constexpr double kWidestSpan = 5000.0;

} // namespace

CTesMeasConv::CTesMeasConv(const _adjust_par_t* adjust, const _object_par_t* obj, const _cal_param_t* cal)
{
    block_ = new unsigned char[kLUTSize * (3 * sizeof(float) + 1)];
    lutTemp = reinterpret_cast<float*>(block_);
    lutRad = lutTemp + kLUTSize;
    lutObjSig = lutRad + kLUTSize;
    lutStatus = reinterpret_cast<unsigned char*>(lutObjSig + kLUTSize);
    std::memset(block_, 0, kLUTSize * (3 * sizeof(float) + 1));
    for (unsigned int i = 0; i < kLUTSize; ++i) lutImage[i] = static_cast<unsigned short>(i);
    init(adjust, obj, cal);
}

CTesMeasConv::~CTesMeasConv()
{
    delete[] block_;
    delete[] scaledTemp_;
}

void CTesMeasConv::init(const _adjust_par_t* adjust, const _object_par_t* obj, const _cal_param_t* cal)
{
    K1 = K2 = atmTao = 0.0;
    measAmbObjSig = -1.0;
    clipOn = true;
    adjPar = adjust ? *adjust : _adjust_par_t{};
    objParSet = obj != nullptr;
    objPar = obj ? *obj : _object_par_t{};
    calibParSet = cal != nullptr;
    calPar = cal ? *cal : _cal_param_t{};
    if (calibParSet && objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
        InitRad(calPar.R, calPar.B, calPar.F);
    }
    scaledType_ = -1;
}

void CTesMeasConv::setAdjPar(const _adjust_par_t* adjust)
{
    adjPar = adjust ? *adjust : _adjust_par_t{};
    if (objParSet) doUpdateUflwOflw();
}

void CTesMeasConv::setObjPar(const _object_par_t* obj)
{
    objParSet = obj != nullptr;
    objPar = obj ? *obj : _object_par_t{};
    if (objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
    }
}

void CTesMeasConv::setCalibPar(const _cal_param_t* cal)
{
    calibParSet = cal != nullptr;
    calPar = cal ? *cal : _cal_param_t{};
    if (objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
        InitRad(calPar.R, calPar.B, calPar.F);
    }
}

void CTesMeasConv::setDriftPar(const _tdrift_par_t* drift)
{
    driftPar = drift ? *drift : _tdrift_par_t{};
}

void CTesMeasConv::setClipOn(bool on)
{
    clipOn = on;
    if (objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
    }
}

void CTesMeasConv::setDefObjPar()
{
    setObjPar(nullptr);
    const _object_par_t defaults;
    setObjPar(&defaults);
}

bool CTesMeasConv::getObjPar(_object_par_t* out) const
{
    if (!objParSet || !out) return false;
    *out = objPar;
    return true;
}

double CTesMeasConv::setMeasAmbObjSig(double sig)
{
    const double old = measAmbObjSig;
    measAmbObjSig = sig;
    if (objParSet) {
        doUpdateCalcConst();
        doUpdateUflwOflw();
    }
    return old;
}

void CTesMeasConv::setDriftMode(int mode)
{
    driftMode = mode;
    if (mode != 1) {
        driftGain = 1.0;
        driftOffset = 0.0;
    }
    if (objParSet) doUpdateUflwOflw();
}

bool CTesMeasConv::UpdateFromTempSens(const _imageinfo_t* info)
{
    if (!info || !driftPar.driftOn || driftMode != 1) return false;
    const double s9 = info->sensor9(), s10 = info->sensor10(), s11 = info->sensor11();
    const double d = calPar.driftK1 * (1.0 - std::exp((s9 - driftPar.t0) * driftPar.k2)) + calPar.driftK0;
    double gain = 1.0, offset = 0.0;
    if (d > 0.0 && s9 > 0.0 && s10 > 0.0) {
        gain = 1.0 / d;
        offset = calPar.driftA9 - calPar.driftB9 * tempToObjSig(s9) + calPar.driftA10 -
                 calPar.driftB10 * tempToObjSig(s10) + calPar.driftC11 * (s11 - driftPar.t0);
    }
    if (!std::isfinite(gain) || !std::isfinite(offset)) {
        gain = 1.0;
        offset = 0.0;
    }
    const bool changed = gain != driftGain || offset != driftOffset;
    driftGain = gain;
    driftOffset = offset;
    if (changed && objParSet) doUpdateUflwOflw();
    return changed;
}

double CTesMeasConv::adjust(double v) const
{
    if (driftMode == 1) v = v * driftGain + driftOffset;
    if (adjPar.adjustMode == 2) v = (v - adjPar.offset) * adjPar.gain;
    return v;
}

double CTesMeasConv::imgToPow(long img) const
{
    if (img == 0) return -1.0;
    const double v = img >= 65536 ? 65535.0 : img < 1 ? 1.0 : double(img);
    return adjust(v);
}

unsigned short CTesMeasConv::powToImg(double p) const
{
    if (p == -1.0) return 0;
    double v = adjPar.adjustMode == 2 ? p / adjPar.gain + adjPar.offset : p;
    if (driftMode == 1) v = (v - driftOffset) / driftGain;
    const double r = std::trunc(v + 0.5);
    if (r > 65535.0) return 65535;
    if (!(r > 0.0)) return 1;
    return static_cast<unsigned short>(r);
}

double CTesMeasConv::doCalcAtmTao() const
{
    return CalcAtmTao(PathValues(objPar), CalibValues(calPar));
}

double CTesMeasConv::doCalcK1() const
{
    return CalcK1(PathValues(objPar));
}

double CTesMeasConv::doCalcK2(double ambient, double atmosphere, double optics) const
{
    return CalcK2(PathValues(objPar), ambient, atmosphere, optics);
}

void CTesMeasConv::doUpdateCalcConst()
{
    UpdateCalcConst(PathValues(objPar), CalibValues(calPar), calibParSet);
}

void CTesMeasConv::doUpdateUflwOflw()
{
    // The camera's 14-bit range bounds what an image value can mean.
    UpdateUflwOflw(CalibValues(calPar), imgToPow(kMaxImage), imgToPow(1));
}

double CTesMeasConv::objSigToTemp(double s) const
{
    return CurveTemp(calPar.R, calPar.B, calPar.F, s);
}

double CTesMeasConv::tempToObjSig(double T) const
{
    return CurveSig(calPar.R, calPar.B, calPar.F, T);
}

bool CTesMeasConv::InitRad(double R, double B, double F)
{
    if (HasRadFit(R, B, F)) return true;
    if (!calibParSet) return false;
    const double lo = float(calPar.rangeLowTemp - 273.15), hi = float(calPar.rangeHighTemp - 273.15);
    if (!(lo >= -274.0 && hi <= lo + kWidestSpan)) return false;
    return FitRad(R, B, F, int(lo), int(hi));
}

double CTesMeasConv::imgToObjectSignal(long img, unsigned char* status) const
{
    unsigned char s = 0;
    const double sig = powToObjSig(clipPow(imgToPow(img), &s));
    if (status) *status = img == 0 ? (s | kStatusNoImage) : s;
    return sig;
}

double CTesMeasConv::imgToTemp(long img, unsigned char* status) const
{
    return objSigToTemp(imgToObjectSignal(img, status));
}

double CTesMeasConv::imgToRadiance(long img, unsigned char* status) const
{
    return objSigToRad(imgToObjectSignal(img, status));
}

double CTesMeasConv::radToObjSig(double r) const
{
    const double guess = sigFromRad[0] + sigFromRad[1] * r + sigFromRad[2] * r * r;
    int v = std::min<int>(objSigToImg(guess), kMaxImage);
    int low = 1, high = kMaxImage;
    int best = std::max(v, 1);
    double bestRad = imgToRadiance(best, nullptr);
    while (low <= high) {
        const double rad = imgToRadiance(v, nullptr);
        if (std::fabs(rad - r) < std::fabs(bestRad - r)) {
            best = v;
            bestRad = rad;
        }
        if (rad > r)
            high = v - 1;
        else
            low = v + 1;
        v = (low + high) / 2;
    }
    return imgToObjectSignal(best, nullptr);
}

void CTesMeasConv::updateLUT()
{
    std::memset(lutStatus, 0, kLUTSize);
    const double m = CurveFloor(calPar.F);
    for (unsigned int i = 0; i < kLUTSize; ++i) {
        const unsigned short img = lutImage[i];
        double p;
        unsigned char s;
        if (img == 0) {
            p = -1.0;
            s = kStatusNoImage;
        } else {
            p = adjust(std::min<unsigned short>(img, kMaxImage));
            s = 0;
        }
        if (clipOn && (p <= limitValidLow || p >= limitValidHigh)) {
            // Bit 32 stays with every flag: the entry is still no image.
            const unsigned char keep = s & kStatusNoImage;
            if (p > limitClampHigh) {
                p = limitClampHigh;
                s = 4 | keep;
            } else if (p < limitClampLow) {
                p = limitClampLow;
                s = 2 | keep;
            } else {
                s = 1 | keep;
            }
        }
        const float objSig = float(p * K1 - K2);
        lutObjSig[i] = objSig;
        lutTemp[i] = objSig > 0.0f ? float(calPar.B / std::log(std::max(m, calPar.R / double(objSig) + calPar.F)) - 273.15)
                                   : -273.15f;
        lutStatus[i] = s;
    }
    const double c0 = radFromSig[0], c1 = radFromSig[1], c2 = radFromSig[2];
    for (unsigned int i = 0; i < kLUTSize; ++i) {
        const double s = lutObjSig[i];
        lutRad[i] = float(c0 + c1 * s + c2 * s * s);
    }
    scaledType_ = -1;
}

const float* CTesMeasConv::TemperatureTable(ETempType type)
{
    if (type == tempCelsius || unsigned(type) > tempRankine) return lutTemp;
    if (scaledType_ != int(type)) {
        if (!scaledTemp_) scaledTemp_ = new float[kLUTSize];
        for (unsigned int i = 0; i < kLUTSize; ++i)
            scaledTemp_[i] = float(priv::ConvertScale(lutTemp[i], tempCelsius, type));
        scaledType_ = int(type);
    }
    return scaledTemp_;
}

} // namespace orv::reduce
