#pragma once
// CTesselFactoryCalReduceObject: the factory calibration of one Tessel
// preset. The record is kept whole, as the camera wrote it; the field table
// below names what the record is read to hold (docs/formats.md).
#include <cstdint>

#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

namespace tesselRecord {
inline constexpr uint32_t kSize = 512;
inline constexpr TAt<uint32_t> recordSize{0};
inline constexpr TAt<uint32_t> version{4};
// Calibration curve and atmosphere model (float).
inline constexpr TAt<float> R{8};
inline constexpr TAt<float> B{12};
inline constexpr TAt<float> F{16};
inline constexpr TAt<float> alpha1{20};
inline constexpr TAt<float> alpha2{24};
inline constexpr TAt<float> beta1{28};
inline constexpr TAt<float> beta2{32};
inline constexpr TAt<float> X{36};
// Limits of measurement and span of the radiance fit, Kelvin (float).
inline constexpr TAt<float> clampHighTemp{40};
inline constexpr TAt<float> validHighTemp{44};
inline constexpr TAt<float> validLowTemp{48};
inline constexpr TAt<float> clampLowTemp{52};
inline constexpr TAt<float> rangeHighTemp{56};
inline constexpr TAt<float> rangeLowTemp{60};
// Drift model: k0, k1 of the calibration, t0, k2 of the drift parameters (float).
inline constexpr TAt<float> driftK0{64};
inline constexpr TAt<float> driftK1{68};
inline constexpr TAt<float> driftT0{72};
inline constexpr TAt<float> driftK2{76};
// Camera adjustment used with adjustMode 2 (float).
inline constexpr TAt<float> gain{80};
inline constexpr TAt<float> offset{84};
inline constexpr TAt<uint32_t> calibrationNumber{88};
inline constexpr TAt<uint16_t> adjustMode{92};
inline constexpr TAt<int16_t> signedWord{94}; // meaning unknown, carried
// Texts, zero padded, not necessarily terminated.
inline constexpr SRecordField cameraName{96, 32};
inline constexpr SRecordField lensName{128, 16};
inline constexpr SRecordField filterName{144, 16};
inline constexpr SRecordField calibrationDate{160, 10};
inline constexpr uint32_t kShortTexts = 4;
inline constexpr SRecordField shortTexts{170, 10 * kShortTexts};
// Drift offset model (float, image values), records above 0x10000 only:
// a9 - b9 L(sensor 9) + a10 - b10 L(sensor 10) + c11 (sensor 11 - t0).
inline constexpr TAt<float> driftA9{210};
inline constexpr TAt<float> driftB9{214};
inline constexpr TAt<float> driftA10{218};
inline constexpr TAt<float> driftB10{222};
inline constexpr TAt<float> driftC11{226};
inline constexpr SRecordField reserved{230, 282};
inline constexpr SRecordField fields[] = {recordSize, version, R, B, F, alpha1, alpha2, beta1, beta2, X,
                                          clampHighTemp, validHighTemp, validLowTemp, clampLowTemp,
                                          rangeHighTemp, rangeLowTemp, driftK0, driftK1, driftT0, driftK2,
                                          gain, offset, calibrationNumber, adjustMode, signedWord, cameraName,
                                          lensName, filterName, calibrationDate, shortTexts, driftA9, driftB9, driftA10,
                                          driftB10, driftC11, reserved};
static_assert(RecordFieldsTile(fields, kSize), "Tessel fields tile 0 to 512");
// The float fields, in the order of the old field-by-field stream.
inline constexpr TAt<float> floatRun[] = {R, B, F, alpha1, alpha2, beta1, beta2, X, clampHighTemp,
                                            validHighTemp, validLowTemp, clampLowTemp, rangeHighTemp,
                                            rangeLowTemp, driftK0, driftK1, driftT0, driftK2, gain, offset};
constexpr SRecordField ShortText(uint32_t i) { return {shortTexts.offset + 10 * i, 10}; }
} // namespace tesselRecord

class CTesselFactoryCalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{A2E5AE0D-AB11-489B-96C6-2B1C1A62F451}");
    static constexpr const char* kName = "TesselFactoryCal";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CTesselFactoryCalReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    bool IsCalObj() const override { return true; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Typed access to the fields of the record.
    float GetFloat(TAt<float> field) const { return Get(record, field); }
    void SetFloat(TAt<float> field, float value) { Put(record, field, value); }
    CString GetText(SRecordField field) const { return GetRecordString(record, field); }
    void SetText(SRecordField field, const CString& text) { PutRecordString(record, field, text); }

    unsigned char record[tesselRecord::kSize] = {};
};

} // namespace orv::reduce
