#pragma once
// CObjectParametersReduceObject: emissivity, distance and the temperatures
// and transmissions of the path, read by every radiometric conversion.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// The packed payload of versions above 0x10000: 96 bytes.
namespace objectParametersRecord {
inline constexpr uint32_t kSize = 96;

inline constexpr SRecordField recordSize{0, 4};
inline constexpr SRecordField version{4, 4};
inline constexpr SRecordField source{8, 1};
inline constexpr SRecordField emissivity{9, 4};
inline constexpr SRecordField distance{13, 4};
inline constexpr SRecordField reflectedTemp{17, 4};
inline constexpr SRecordField atmosphereTemp{21, 4};
inline constexpr SRecordField extOpticsTemp{25, 4};
inline constexpr SRecordField extOpticsTransmission{29, 4};
inline constexpr SRecordField estAtmosphericTransmission{33, 4};
inline constexpr SRecordField atmosphericTransmission{37, 4};
inline constexpr SRecordField relativeHumidity{41, 4};
inline constexpr SRecordField reservedWord{45, 4};
inline constexpr SRecordField reserved{49, 47};

inline constexpr SRecordField fields[] = {recordSize,     version,       source,
                                          emissivity,     distance,      reflectedTemp,
                                          atmosphereTemp, extOpticsTemp, extOpticsTransmission,
                                          estAtmosphericTransmission,    atmosphericTransmission,
                                          relativeHumidity,              reservedWord,
                                          reserved};
static_assert(RecordFieldsTile(fields, kSize), "object parameter fields tile 0 to 96");
} // namespace objectParametersRecord

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

} // namespace orv::reduce
