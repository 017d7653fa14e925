#pragma once
// CTesMeasConv: the measurement chain of the Tessel family, image value ->
// power -> object signal -> temperature or radiance, with the path, the curve
// and the limits of the Ombria chain (CMeasChain). What is its own: 14-bit image
// values, a drift correction that follows the camera's temperature sensors
// frame by frame, and four tables (temperature, radiance, object signal,
// status) computed together over the 14-bit range. Records and the drift
// model: docs/tessel.md.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/families/MeasChain.h"

namespace orv::reduce {

// Camera adjustment.
struct _adjust_par_t {
    unsigned short adjustMode = 0; // 2: gain and offset below apply
    float gain = 1.0f;
    float offset = 0.0f; // image values
};

// Drift parameters: the exponential gain model around the detector
// temperature t0 at calibration.
struct _tdrift_par_t {
    bool driftOn = false;
    float t0 = 0.0f; // Kelvin
    float k2 = 0.0f; // per Kelvin
};

// Measurement situation; emissivity is the first float, distance the fourth.
struct _object_par_t {
    float emissivity = 1.0f;
    float reflectedTemp = 293.15f;  // Kelvin
    float atmosphereTemp = 293.15f; // Kelvin
    float distance = 0.0f;          // metres
    float extOpticsTemp = 293.15f;  // Kelvin
    float extOpticsTransmission = 1.0f;
    float estAtmosphericTransmission = 0.0f; // above 0: used as the transmission
    float relativeHumidity = 0.0f;           // 0 to 1
};

// Factory calibration of one preset.
struct _cal_param_t {
    float R = 0, B = 0, F = 0;
    float alpha1 = 0, alpha2 = 0, beta1 = 0, beta2 = 0, X = 0;
    // Kelvin: limits of measurement and span of the radiance fit.
    float clampHighTemp = 0, validHighTemp = 0, validLowTemp = 0, clampLowTemp = 0;
    float rangeHighTemp = 0, rangeLowTemp = 0;
    // Drift gain model d = k1 (1 - exp((sensor9 - t0) k2)) + k0.
    float driftK0 = 0, driftK1 = 0;
    // Drift offset, image values: a9 - b9 L(sensor9) + a10 - b10 L(sensor10)
    // + c11 (sensor11 - t0), L the calibration curve.
    float driftA9 = 0, driftB9 = 0, driftA10 = 0, driftB10 = 0, driftC11 = 0;
};

// Per-frame readings. The tenth to twelfth floats are the sensors the drift
// model reads: detector, optics housing, shutter; Kelvin, 0 when missing.
struct _imageinfo_t {
    float sensor[12] = {};
    uint32_t frameCounter = 0;
    float integrationTime = 0.0f; // microseconds
    float sensor9() const { return sensor[9]; }
    float sensor10() const { return sensor[10]; }
    float sensor11() const { return sensor[11]; }
};

class CTesMeasConv : public CMeasChain {
public:
    static constexpr unsigned int kLUTSize = 16384;
    static constexpr unsigned short kMaxImage = 16383;
    static constexpr unsigned char kStatusNoImage = 32;

    CTesMeasConv(const _adjust_par_t* adjust = nullptr, const _object_par_t* obj = nullptr,
                 const _cal_param_t* cal = nullptr);
    ~CTesMeasConv();
    CTesMeasConv(const CTesMeasConv&) = delete;
    CTesMeasConv& operator=(const CTesMeasConv&) = delete;

    void init(const _adjust_par_t* adjust, const _object_par_t* obj, const _cal_param_t* cal);
    void setAdjPar(const _adjust_par_t* adjust);
    void setObjPar(const _object_par_t* obj);
    void setCalibPar(const _cal_param_t* cal);
    void setDriftPar(const _tdrift_par_t* drift);
    void setClipOn(bool on);
    void setDefObjPar();
    bool getObjPar(_object_par_t* out) const;
    double getCalculatedAtmTao() const { return doCalcAtmTao(); }
    double setMeasAmbObjSig(double sig);
    // 1: the drift correction applies.
    void setDriftMode(int mode);

    // The frame's drift from its sensors; true when gain or offset changed,
    // which makes the tables stale.
    bool UpdateFromTempSens(const _imageinfo_t* info);

    double imgToPow(long img) const;
    unsigned short powToImg(double p) const;
    double objSigToTemp(double s) const;
    double tempToObjSig(double T) const;
    double radToObjSig(double r) const;
    unsigned short objSigToImg(double s) const { return powToImg(objSigToPow(s)); }
    unsigned short tempToImg(double T) const { return powToImg(objSigToPow(tempToObjSig(T))); }
    unsigned short radToImg(double r) const { return powToImg(objSigToPow(radToObjSig(r))); }
    bool InitRad(double R, double B, double F);

    // Per value: Kelvin, object signal, radiance.
    double imgToTemp(long img, unsigned char* status) const;
    double imgToObjectSignal(long img, unsigned char* status) const;
    double imgToRadiance(long img, unsigned char* status) const;

    // Frame forms. The per-pixel ones compute the chain for each element; the
    // LUT ones look the value up in the tables (updateLUT first). With
    // indices, element indices[i] of src goes to element i of dst and
    // status. Types 0 to 9; false otherwise.
    bool imgToTemp(STypedData src, STypedData dst, unsigned char* status, unsigned int n, ETempType type) const;
    bool imgToTemp(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                   unsigned int n, ETempType type) const;
    bool imgToObjectSignal(STypedData src, STypedData dst, unsigned char* status, unsigned int n) const;
    bool imgToObjectSignal(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                           unsigned int n) const;
    bool imgToRad(STypedData src, STypedData dst, unsigned char* status, unsigned int n) const;
    bool imgToRad(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                  unsigned int n) const;
    bool imgToTempLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n, ETempType type);
    bool imgToTempLUT(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                      unsigned int n, ETempType type);
    bool imgToRadLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n);
    bool imgToRadLUT(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                     unsigned int n);
    bool imgToObjectSignalLUT(STypedData src, STypedData dst, unsigned char* status, unsigned int n);
    bool imgToObjectSignalLUT(STypedData src, STypedData dst, unsigned char* status, const unsigned int* indices,
                              unsigned int n);

    // Fills the four tables from lutImage, together.
    void updateLUT();
    // A temperature table in the given scale, from the Celsius one; made
    // when asked for a scale other than Celsius.
    const float* TemperatureTable(ETempType type);

    _adjust_par_t adjPar;
    bool objParSet = false;
    _object_par_t objPar;
    bool calibParSet = false;
    _cal_param_t calPar;
    _tdrift_par_t driftPar;

    // The four tables in one block: temperature (Celsius), radiance, object
    // signal, status; and the image value behind each index.
    float* lutTemp = nullptr;
    float* lutRad = nullptr;
    float* lutObjSig = nullptr;
    unsigned char* lutStatus = nullptr;
    unsigned short lutImage[kLUTSize];
    double driftGain = 1.0;
    double driftOffset = 0.0;
    int driftMode = 0;

private:
    double doCalcAtmTao() const;
    double doCalcK1() const;
    double doCalcK2(double ambient, double atmosphere, double optics) const;
    void doUpdateCalcConst();
    void doUpdateUflwOflw();
    // Image value to power after the 14-bit limit: drift, then adjustment.
    double adjust(double v) const;

    unsigned char* block_ = nullptr;
    float* scaledTemp_ = nullptr;
    int scaledType_ = -1; // the scale scaledTemp_ holds; -1 none
};

} // namespace orv::reduce
