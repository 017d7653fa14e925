#pragma once
// CMrlConv: the measurement mathematics of one Marlowe preset. Counts become
// radiance through the calibration's polynomial, radiance becomes
// temperature through the R, B, F curve after the path (reflection,
// atmosphere, external optics) is taken out, and the way back goes through a
// fitted inverse polynomial refined by bisection. The array and range forms
// run on oneTBB and return when their loop has finished.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"

namespace orv::reduce {

class CObjectParametersReduceObject;

// The measurement situation as the conversion uses it.
struct SMrlObjectParams {
    float emissivity = 1.0f;
    float distance = 0.0f;
    float reflectedTemp = 293.15f;  // Kelvin
    float atmosphereTemp = 293.15f; // Kelvin
    float extOpticsTemp = 293.15f;  // Kelvin
    float extOpticsTransmission = 1.0f;
    float estAtmosphericTransmission = 0.0f;
    float relativeHumidity = 0.0f;
};

class CMrlConv {
public:
    // The signal range of the camera: 14 bits.
    static constexpr unsigned short kMaxSignal = 16383;

    CMrlConv() = default;
    CMrlConv(const CMrlConv&) = delete;
    CMrlConv& operator=(const CMrlConv&) = delete;

    // Curve helpers, all in double.
    // R / (max(g, exp(B / T)) - F); 0 for T not above 0 or B / T from 709.78.
    static double rbfTempToRad(double T, double R, double B, double F);
    // B / log(max(g, R / rad + F)); 0 for rad not above 0.
    static double rbfValue(double rad, double R, double B, double F);
    // The counts-to-radiance polynomial before scaling. Orders 1 to 4 form
    // the powers in 32-bit integers, which wrap above 1625 counts for the
    // cube: intended, the camera's own arithmetic. Above 4, pow, with at most
    // the seven stored coefficients.
    static double polyValue(unsigned short counts, int order, const double* c);
    // Two-band atmospheric transmission, never below 0.4.
    static double calcTao(double relativeHumidity, double atmosphereTemp, double distance, double x, double a1,
                          double a2, double b1, double b2);

    void Init(const CMarloweFactoryCalReduceObject& cal, const CObjectParametersReduceObject& params);
    void Init(const CMarloweFactoryCalReduceObject& cal, const SMrlObjectParams& params);
    // New object parameters: transmission, background and scales only.
    void ReInit(const CObjectParametersReduceObject& params);
    void ReInit(const SMrlObjectParams& params);

    float SignalToRadiance(unsigned short signal, unsigned char* status) const;
    void SignalToRadiance(const unsigned short* src, float* dst, unsigned char* status, unsigned int n) const;
    // Signals first to last, both included.
    void SignalToRadiance(unsigned short first, unsigned short last, float* dst, unsigned char* status) const;
    float SignalToTemperature(unsigned short signal, unsigned char* status, ETempType type) const;
    void SignalToTemperature(const unsigned short* src, float* dst, unsigned char* status, unsigned int n,
                             ETempType type) const;
    void SignalToTemperature(unsigned short first, unsigned short last, float* dst, unsigned char* status,
                             ETempType type) const;
    // The status is not touched by these two.
    float RadianceToTemperature(float radiance, unsigned char* status, ETempType type) const;
    float TemperatureToRadiance(float temperature, unsigned char* status, ETempType type) const;
    unsigned short RadianceToSignal(float radiance, unsigned char* status) const;
    unsigned short TemperatureToSignal(float temperature, unsigned char* status, ETempType type) const;

    unsigned short minCounts() const { return cal.minCounts; }
    unsigned short maxCounts() const { return cal.maxCounts; }
    float minRadiance() const { return cal.minRadiance; }
    float maxRadiance() const { return cal.maxRadiance; }
    float minTemperature() const { return cal.minTemperature; }
    float maxTemperature() const { return cal.maxTemperature; }
    double getUsedAtmTao() const { return usedTao; }

    // The calibration, without its tables, and the object parameters.
    CMarloweFactoryCalReduceObject cal;
    SMrlObjectParams objPar;
    // Derived by Init and ReInit.
    double signalScale = 0.0;
    double background = 0.0;
    double usedTao = 0.0;
    double radianceScale = 0.0;
    double warnHighTemp = 0.0, clampHighTemp = 0.0; // Kelvin
    double warnHighRad = 0.0, clampHighRad = 0.0;
    double warnLowTemp = 0.0, clampLowTemp = 0.0; // Kelvin
    double warnLowRad = 0.0, clampLowRad = 0.0;
    double inverseCoeffs[7] = {};
    int inverseCount = 0;

    // Radiance of a signal by the polynomial and scales, before the limits.
    double RawRadiance(unsigned short signal) const;
    // The limits of SignalToRadiance: the status, and r clamped.
    unsigned char Limit(float& r) const;
};

} // namespace orv::reduce
