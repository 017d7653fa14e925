#pragma once
// CMeasConv: the measurement physics of the Ombria family, from image value
// through power and object signal to temperature (the R, B, F curve) and
// radiance (a quadratic of the object signal fitted to Planck's law over
// 8 to 12 micrometres). Where a division or logarithm would break down the
// formulas give fixed constants (100000.0, 0.0, 1), so no conversion fails.
// The path, the curve and the limits are those of CMeasChain, read from this
// family's records.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/families/MeasChain.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"

namespace orv::reduce {

// The measurement situation; 48 bytes, the rest zero. A fresh record is all
// zero; setDefObjPar gives the defaults noted here.
struct SObjectParams {
    float emissivity = 0;                 // default 1.0
    float distance = 0;                   // metres, default 0.0
    float reflectedTemp = 0;              // Kelvin, default 293.15
    float atmosphereTemp = 0;             // Kelvin, default 293.15
    float extOpticsTemp = 0;              // Kelvin, default 293.15
    float extOpticsTransmission = 0;      // default 1.0
    float estAtmosphericTransmission = 0; // above 0: used instead of the computed value
    float relativeHumidity = 0;           // 0 to 1
    uint8_t reserved[16] = {};
};
static_assert(sizeof(SObjectParams) == 48, "SObjectParams is 48 bytes");

class CMeasConv : public CMeasChain {
public:
    CMeasConv(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib);

    // A fresh start: constants cleared, the records that are given copied in
    // (the others zeroed, their flags cleared), and with calibration and
    // object parameters both in, the constants, limits and radiance fit.
    void init(const SAdjustParams* adjust, const SObjectParams* object, const SCalibParams* calib);

    void setAdjPar(const SAdjustParams* p);
    void setObjPar(const SObjectParams* p);
    void setCalibPar(const SCalibParams* p);
    void setClipOn(bool on);
    void setDefObjPar();
    bool getObjPar(SObjectParams* out) const;
    double getCalculatedAtmTao() const { return doCalcAtmTao(); }
    // A measured ambient object signal above 0 replaces the three path
    // temperatures in K2; returns the previous one.
    double setMeasAmbObjSig(double s);

    double imgToPow(long img) const;
    unsigned short powToImg(double pow, double offset, double gain) const;
    unsigned short powToImg(double pow) const;
    double objSigToTemp(double s) const;
    double tempToObjSig(double T) const;
    unsigned short objSigToImg(double s) const { return powToImg(objSigToPow(s)); }
    unsigned short tempToImg(double T) const { return powToImg(objSigToPow(tempToObjSig(T))); }
    double radToObjSig(double r) const;
    unsigned short radToImg(double r) const { return powToImg(objSigToPow(radToObjSig(r))); }
    double tempToRad(float t) const;

    double imgToObjectSignal(long img, unsigned char* status) const { return powToObjSig(clipPow(imgToPow(img), status)); }
    double imgToTemp(long img, unsigned char* status) const { return objSigToTemp(imgToObjectSignal(img, status)); }
    double imgToRadiance(long img, unsigned char* status) const { return objSigToRad(imgToObjectSignal(img, status)); }

    // Array forms: a float source is truncated, values of 65536 and more
    // count as 65535. status may be null. The range forms write the values
    // of images first..last.
    void imgToTemp(float* dst, const float* src, unsigned char* status, unsigned int n) const;
    void imgToTemp(float* dst, const unsigned short* src, unsigned char* status, unsigned int n) const;
    void imgToTemp(unsigned short first, unsigned short last, float* dst, unsigned char* status,
                   ETempType type) const;
    void imgToObjectSignal(float* dst, const float* src, unsigned char* status, unsigned int n) const;
    void imgToObjectSignal(float* dst, const unsigned short* src, unsigned char* status, unsigned int n) const;
    void imgToObjectSignal(unsigned short first, unsigned short last, float* dst, unsigned char* status) const;
    void imgToRadiance(float* dst, const float* src, unsigned char* status, unsigned int n) const;
    void imgToRadiance(float* dst, const unsigned short* src, unsigned char* status, unsigned int n) const;
    void imgToRadiance(unsigned short first, unsigned short last, float* dst, unsigned char* status) const;

    bool InitRad(double R, double B, double F);

    double doCalcAtmTao() const;
    double doCalcK1() const;
    double doCalcK2(double ambient, double atmosphere, double optics) const;
    void doUpdateCalcConst();
    void doUpdateUflwOflw();

    SAdjustParams adjPar;
    bool objParSet = false;
    SObjectParams objPar;
    bool calibParSet = false;
    SCalibParams calibPar;

private:
    // After a change of a record: constants and limits again, when the
    // object parameters are in.
    void UpdateConstants();
};

} // namespace orv::reduce
