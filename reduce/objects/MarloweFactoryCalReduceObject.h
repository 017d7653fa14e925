#pragma once
// CMarloweFactoryCalReduceObject: the factory calibration of one Marlowe
// preset: counts-to-radiance polynomial, R, B, F curve, atmosphere model,
// calibrated ranges and two carried tables.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {


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

// The packed record of versions above 0x10000: 512 bytes, followed by
// tableA and tableB of tableSize doubles each. The table size is written from
// the tables actually held and read before them, so the table neither reads
// nor copies it.
namespace marloweRecord {
using C = CMarloweFactoryCalReduceObject;
inline constexpr uint32_t kSize = 512;
inline constexpr TAt<int32_t> tableSize{236};
using Table = TRecordTable<
    C, kSize, TConst<0, uint32_t, kSize>, TWriteOnly<TField<&C::version, 4>>, TField<&C::polyOrder, 8>,
    TField<&C::coeffs, 12>, TField<&C::signalOffset, 68>, TField<&C::tableKind, 76>, TField<&C::extra, 80>,
    TField<&C::rbfR, 152>, TField<&C::rbfB, 160>, TField<&C::rbfF, 168>, TField<&C::atmX, 176>,
    TField<&C::atmA1, 184>, TField<&C::atmA2, 192>, TField<&C::atmB1, 200>, TField<&C::atmB2, 208>,
    TField<&C::minTemperature, 216>, TField<&C::maxTemperature, 220>, TField<&C::minRadiance, 224>,
    TField<&C::maxRadiance, 228>, TField<&C::minCounts, 232>, TField<&C::maxCounts, 234>,
    TWriteOnly<TField<&C::tableSize, tableSize.offset>>, TReserved<240, 272>>;
} // namespace marloweRecord

} // namespace orv::reduce
