#pragma once
// CObjectParametersReduceObject: emissivity, distance and the temperatures
// and transmissions of the path, read by every radiometric conversion.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {


class CObjectParametersReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{616033EC-ED49-485A-B1FE-4F563DC20F52}");
    static constexpr const char* kName = "ObjectParameters";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // Save flag with which a new recording is started: source is written as set.
    static constexpr unsigned int kFlagStartFile = 16;

    CObjectParametersReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Same scene parameters; source, atmosphericTransmission and reserved
    // are deliberately not compared.
    bool Equals(CObjectParametersReduceObject* other) const;
    // Copies common state (not version) and all parameters.
    void CopyTo(CObjectParametersReduceObject* other) const;

    bool source = false;
    float emissivity = 1.0f;
    float distance = 2.0f;
    float reflectedTemp = 293.15f;  // Kelvin
    float atmosphereTemp = 293.15f; // Kelvin
    float extOpticsTemp = 293.15f;  // Kelvin
    float extOpticsTransmission = 1.0f;
    float estAtmosphericTransmission = 0.0f;
    float atmosphericTransmission = 1.0f;
    float relativeHumidity = 0.3f;
    uint32_t reserved = 255;
};

// A family's own record of the measurement situation with the eight scene
// fields of p, which every such record names alike; its other members stay
// as the record starts them.
template <class T>
T ObjectParamsAs(const CObjectParametersReduceObject& p)
{
    T o;
    o.emissivity = p.emissivity;
    o.distance = p.distance;
    o.reflectedTemp = p.reflectedTemp;
    o.atmosphereTemp = p.atmosphereTemp;
    o.extOpticsTemp = p.extOpticsTemp;
    o.extOpticsTransmission = p.extOpticsTransmission;
    o.estAtmosphericTransmission = p.estAtmosphericTransmission;
    o.relativeHumidity = p.relativeHumidity;
    return o;
}

// The packed payload of versions above 0x10000: 96 bytes.
namespace objectParametersRecord {
using C = CObjectParametersReduceObject;
inline constexpr uint32_t kSize = 96;
using recordSize = TConst<0, uint32_t, kSize>;
using version = TWriteOnly<TField<&C::version, 4>>;
using source = TField<&C::source, 8>;
using Table = TRecordTable<C, kSize, recordSize, version, source, TField<&C::emissivity, 9>,
                           TField<&C::distance, 13>, TField<&C::reflectedTemp, 17>, TField<&C::atmosphereTemp, 21>,
                           TField<&C::extOpticsTemp, 25>, TField<&C::extOpticsTransmission, 29>,
                           TField<&C::estAtmosphericTransmission, 33>, TField<&C::atmosphericTransmission, 37>,
                           TField<&C::relativeHumidity, 41>, TField<&C::reserved, 45>, TReserved<49, 47>>;
} // namespace objectParametersRecord

} // namespace orv::reduce
