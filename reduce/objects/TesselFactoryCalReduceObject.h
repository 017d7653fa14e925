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
inline constexpr SRecordField recordSize{0, 4};
inline constexpr SRecordField version{4, 4};
// Calibration curve and atmosphere model (float).
inline constexpr SRecordField R{8, 4};
inline constexpr SRecordField B{12, 4};
inline constexpr SRecordField F{16, 4};
inline constexpr SRecordField alpha1{20, 4};
inline constexpr SRecordField alpha2{24, 4};
inline constexpr SRecordField beta1{28, 4};
inline constexpr SRecordField beta2{32, 4};
inline constexpr SRecordField X{36, 4};
// Limits of measurement and span of the radiance fit, Kelvin (float).
inline constexpr SRecordField clampHighTemp{40, 4};
inline constexpr SRecordField validHighTemp{44, 4};
inline constexpr SRecordField validLowTemp{48, 4};
inline constexpr SRecordField clampLowTemp{52, 4};
inline constexpr SRecordField rangeHighTemp{56, 4};
inline constexpr SRecordField rangeLowTemp{60, 4};
// Drift model: k0, k1 of the calibration, t0, k2 of the drift parameters (float).
inline constexpr SRecordField driftK0{64, 4};
inline constexpr SRecordField driftK1{68, 4};
inline constexpr SRecordField driftT0{72, 4};
inline constexpr SRecordField driftK2{76, 4};
// Camera adjustment used with adjustMode 2 (float).
inline constexpr SRecordField gain{80, 4};
inline constexpr SRecordField offset{84, 4};
inline constexpr SRecordField calibrationNumber{88, 4}; // unsigned 32
inline constexpr SRecordField adjustMode{92, 2};        // unsigned 16
inline constexpr SRecordField signedWord{94, 2};        // signed 16, meaning unknown, carried
// Texts, zero padded, not necessarily terminated.
inline constexpr SRecordField cameraName{96, 32};
inline constexpr SRecordField lensName{128, 16};
inline constexpr SRecordField filterName{144, 16};
inline constexpr SRecordField calibrationDate{160, 10};
inline constexpr uint32_t kShortTexts = 4;
inline constexpr SRecordField shortTexts{170, 10 * kShortTexts};
// Drift offset model (float, image values), records above 0x10000 only:
// a9 - b9 L(sensor 9) + a10 - b10 L(sensor 10) + c11 (sensor 11 - t0).
inline constexpr SRecordField driftA9{210, 4};
inline constexpr SRecordField driftB9{214, 4};
inline constexpr SRecordField driftA10{218, 4};
inline constexpr SRecordField driftB10{222, 4};
inline constexpr SRecordField driftC11{226, 4};
inline constexpr SRecordField reserved{230, 282};
inline constexpr SRecordField fields[] = {recordSize, version, R, B, F, alpha1, alpha2, beta1, beta2, X,
                                          clampHighTemp, validHighTemp, validLowTemp, clampLowTemp,
                                          rangeHighTemp, rangeLowTemp, driftK0, driftK1, driftT0, driftK2,
                                          gain, offset, calibrationNumber, adjustMode, signedWord, cameraName,
                                          lensName, filterName, calibrationDate, shortTexts, driftA9, driftB9, driftA10,
                                          driftB10, driftC11, reserved};
static_assert(RecordFieldsTile(fields, kSize), "Tessel fields tile 0 to 512");
// The float fields, in the order of the old field-by-field stream.
inline constexpr SRecordField floatRun[] = {R, B, F, alpha1, alpha2, beta1, beta2, X, clampHighTemp,
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
    float GetFloat(SRecordField field) const { return GetRecordValue<float>(record, field); }
    void SetFloat(SRecordField field, float value) { PutRecordValue<float>(record, field, value); }
    CString GetText(SRecordField field) const { return GetRecordString(record, field); }
    void SetText(SRecordField field, const CString& text) { PutRecordString(record, field, text); }

    unsigned char record[tesselRecord::kSize] = {};
};

} // namespace orv::reduce
