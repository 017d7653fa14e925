#pragma once
// CFOVReduceObject: the field of view.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// The packed payload of versions above 0x10000: 64 bytes.
namespace fovRecord {
inline constexpr uint32_t kSize = 64;
inline constexpr SRecordField recordSize{0, 4};
inline constexpr SRecordField version{4, 4};
inline constexpr SRecordField iHFov{8, 8};
inline constexpr SRecordField iVFov{16, 8};
inline constexpr SRecordField reserved{24, 40};
inline constexpr SRecordField fields[] = {recordSize, version, iHFov, iVFov, reserved};
static_assert(RecordFieldsTile(fields, kSize), "FOV fields tile 0 to 64");
} // namespace fovRecord

class CFOVReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{42FD8DA7-B376-45C2-8255-B9267E512077}");
    static constexpr const char* kName = "FOV";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CFOVReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    double iHFov = 0;
    double iVFov = 0;
};

} // namespace orv::reduce
