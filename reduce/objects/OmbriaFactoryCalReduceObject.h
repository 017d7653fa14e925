#pragma once
// COmbriaFactoryCalReduceObject: the factory calibration of the Ombria family,
// the camera adjustment and the calibration curve with its limits.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// Camera adjustment; 48 bytes, the rest zero.
struct SAdjustParams {
    int32_t offset = 0;          // image offset
    float gain = 0;              // power per image value
    uint16_t imgLow = 0;         // lowest usable image value
    uint16_t imgHigh = 0;        // highest usable image value
    uint16_t nonLinear = 0;      // non-zero selects the non-linear image model
    uint16_t padding = 0;
    float nonLinearFactor = 0;   // the model's coefficient
    int32_t nonLinearZero = 0;   // image value where the model's correction is 0
    uint8_t reserved[24] = {};
};
static_assert(sizeof(SAdjustParams) == 48, "SAdjustParams is 48 bytes");

// Factory calibration; 132 bytes, of which these fields are read.
struct SCalibParams {
    float R = 0, B = 0, F = 0; // objSig = R / (exp(B / T) - F), T in Kelvin
    float alpha1 = 0, alpha2 = 0, beta1 = 0, beta2 = 0, X = 0; // atmosphere model
    float rangeHighTemp = 0, rangeLowTemp = 0;                 // Kelvin: span of the radiance fit
    float clampHighTemp = 0, clampLowTemp = 0, validHighTemp = 0, validLowTemp = 0; // Kelvin
    uint8_t reserved[76] = {};
};
static_assert(sizeof(SCalibParams) == 132, "SCalibParams is 132 bytes");

class COmbriaFactoryCalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{245A5CD5-2F58-4D08-90AC-FB6E78C7EC41}");
    static constexpr const char* kName = "OmbriaFactoryCal";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // Bytes of the payload: a run of typed fields.
    static constexpr uint32_t kPayloadSize = 78;

    COmbriaFactoryCalReduceObject() = default;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    // Version 0x10000 only.
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    SAdjustParams adjust;
    SCalibParams calib;
};

} // namespace orv::reduce
