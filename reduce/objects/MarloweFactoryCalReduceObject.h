#pragma once
// CMarloweFactoryCalReduceObject: the factory calibration of one Marlowe
// preset: counts-to-radiance polynomial, R, B, F curve, atmosphere model,
// calibrated ranges and two carried tables.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// The packed record of versions above 0x10000: 512 bytes, followed by
// tableA and tableB of tableSize doubles each.
namespace marloweRecord {
inline constexpr uint32_t kSize = 512;
inline constexpr SRecordField recordSize{0, 4};
inline constexpr SRecordField version{4, 4};
inline constexpr SRecordField polyOrder{8, 4};
inline constexpr SRecordField coeffs{12, 56};
inline constexpr SRecordField signalOffset{68, 8};
inline constexpr SRecordField tableKind{76, 4};
inline constexpr SRecordField extra{80, 72};
inline constexpr SRecordField rbfR{152, 8};
inline constexpr SRecordField rbfB{160, 8};
inline constexpr SRecordField rbfF{168, 8};
inline constexpr SRecordField atmX{176, 8};
inline constexpr SRecordField atmA1{184, 8};
inline constexpr SRecordField atmA2{192, 8};
inline constexpr SRecordField atmB1{200, 8};
inline constexpr SRecordField atmB2{208, 8};
inline constexpr SRecordField minTemperature{216, 4};
inline constexpr SRecordField maxTemperature{220, 4};
inline constexpr SRecordField minRadiance{224, 4};
inline constexpr SRecordField maxRadiance{228, 4};
inline constexpr SRecordField minCounts{232, 2};
inline constexpr SRecordField maxCounts{234, 2};
inline constexpr SRecordField tableSize{236, 4};
inline constexpr SRecordField reserved{240, 272};
inline constexpr SRecordField fields[] = {recordSize, version, polyOrder, coeffs, signalOffset, tableKind,
                                          extra, rbfR, rbfB, rbfF, atmX, atmA1, atmA2, atmB1, atmB2,
                                          minTemperature, maxTemperature, minRadiance, maxRadiance,
                                          minCounts, maxCounts, tableSize, reserved};
static_assert(RecordFieldsTile(fields, kSize), "Marlowe fields tile 0 to 512");
// The n-th double of an array field.
constexpr SRecordField Element(SRecordField array, uint32_t n) { return {array.offset + 8 * n, 8}; }
} // namespace marloweRecord

class CMarloweFactoryCalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{7ED232C7-2ECF-4552-BB67-D406D5E87E61}");
    static constexpr const char* kName = "MarloweFactoryCal";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CMarloweFactoryCalReduceObject();
    ~CMarloweFactoryCalReduceObject() override;
    CMarloweFactoryCalReduceObject(const CMarloweFactoryCalReduceObject&) = delete;
    CMarloweFactoryCalReduceObject& operator=(const CMarloweFactoryCalReduceObject&) = delete;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    bool IsCalObj() const override { return true; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    // Zeroes every field and frees both tables.
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Frees both tables; for n above 0 allocates n zeroed entries each.
    bool CreateLUT(int n);

    int32_t polyOrder = 0;
    double coeffs[7] = {};
    double signalOffset = 0;
    double rbfR = 0, rbfB = 0, rbfF = 0;
    double* tableA = nullptr;
    double* tableB = nullptr;
    int32_t tableSize = 0;
    int32_t tableKind = 0;
    double extra[9] = {};
    double atmX = 0, atmA1 = 0, atmA2 = 0, atmB1 = 0, atmB2 = 0;
    float minTemperature = 0, maxTemperature = 0; // Celsius
    float minRadiance = 0, maxRadiance = 0;
    uint16_t minCounts = 0, maxCounts = 0;

    // Copies every field but the tables and the common state; the measurement
    // code keeps such a copy, which owns nothing.
    void CopyFieldsTo(CMarloweFactoryCalReduceObject& target) const;
};

} // namespace orv::reduce
