#pragma once
// CMeasChain: the part of the measurement chain that the Ombria and Tessel
// families share: the path through atmosphere and external optics
// (transmission, K1, K2), the calibration curve objSig = R / (exp(B / T) - F),
// and the power limits with their clipping. Each family keeps its own records
// and image model; the records name the fields read here alike but lay them
// out differently, so a family hands in their values.
#include <algorithm>
#include <cmath>

namespace orv::reduce {

class CMeasChain {
public:
    static constexpr double kPowHigh = 100000.0;
    static constexpr double kPowLow = 1e-6;

    double getUsedAtmTao() const { return atmTao; }
    double getMeasAmbObjSig() const { return measAmbObjSig; }
    bool isClipOn() const { return clipOn; }

    double powToObjSig(double pow) const { return pow * K1 - K2; }
    double objSigToPow(double s) const { return K1 > 0 ? (s + K2) / K1 : kPowHigh; }
    double objSigToRad(double s) const { return radFromSig[0] + radFromSig[1] * s + radFromSig[2] * s * s; }
    // With clipping on, a power at or beyond a valid limit gets status 1, and
    // beyond a clamp limit is held there with status 2 (low) or 4 (high).
    double clipPow(double p, unsigned char* status) const;

    bool radInitialised = false;
    double radR = 0, radB = 0, radF = 0;
    double radFromSig[3] = {};
    double sigFromRad[3] = {};
    double atmTao = 0, K1 = 0, K2 = 0;
    bool clipOn = true;
    double powClampHigh = kPowHigh, powValidHigh = kPowHigh, powValidLow = kPowLow, powClampLow = kPowLow;
    double limitClampHigh = kPowHigh, limitClampLow = kPowLow, limitValidHigh = kPowHigh, limitValidLow = kPowLow;
    double measAmbObjSig = -1.0;

protected:
    // What the path reads of the object record.
    struct SPathValues {
        float emissivity, distance, reflectedTemp, atmosphereTemp, extOpticsTemp, extOpticsTransmission,
            estAtmosphericTransmission, relativeHumidity;
    };
    // What the path and the limits read of the calibration record.
    struct SCalibValues {
        float R, B, F, alpha1, alpha2, beta1, beta2, X;
        float clampHighTemp, validHighTemp, validLowTemp, clampLowTemp; // Kelvin
    };
    template <class Obj>
    static SPathValues PathValues(const Obj& o)
    {
        return {o.emissivity, o.distance, o.reflectedTemp, o.atmosphereTemp, o.extOpticsTemp,
                o.extOpticsTransmission, o.estAtmosphericTransmission, o.relativeHumidity};
    }
    template <class Cal>
    static SCalibValues CalibValues(const Cal& c)
    {
        return {c.R, c.B, c.F, c.alpha1, c.alpha2, c.beta1, c.beta2, c.X,
                c.clampHighTemp, c.validHighTemp, c.validLowTemp, c.clampLowTemp};
    }

    // The bound of m in the curve's logarithm and denominator.
    static double CurveFloor(float F) { return F <= 1.0f ? 1.0002 : double(F) * 1.0002; }
    static double CurveTemp(float R, float B, float F, double s)
    {
        if (!(s > 0)) return 0.0;
        return B / std::log(std::max(CurveFloor(F), R / s + F));
    }
    static double CurveSig(float R, float B, float F, double T)
    {
        if (!(T > 0)) return 0.0;
        const double x = B / T;
        // exp of more than this overflows a double.
        if (!(x < 709.78)) return 0.0;
        return R / (std::max(CurveFloor(F), std::exp(x)) - F);
    }

    static double CalcAtmTao(const SPathValues& path, const SCalibValues& cal);
    double CalcK1(const SPathValues& path) const;
    double CalcK2(const SPathValues& path, double ambient, double atmosphere, double optics) const;
    // atmTao, K1, K2, and the powers of the calibration's limits when it is set
    // and clipping is on.
    void UpdateCalcConst(const SPathValues& path, const SCalibValues& cal, bool calibSet);
    // The clipping limits, bounded by the powers of the image range.
    void UpdateUflwOflw(const SCalibValues& cal, double imgHighPow, double imgLowPow);

    // Whether the radiance fit in place was made for this curve.
    bool HasRadFit(double R, double B, double F) const
    {
        return radInitialised && R == radR && B == radB && F == radF;
    }
    // The radiance fit of 8 to 12 micrometres over the whole degrees low to
    // high, Celsius, kept with the curve it was made for.
    bool FitRad(double R, double B, double F, int low, int high);
};

} // namespace orv::reduce
