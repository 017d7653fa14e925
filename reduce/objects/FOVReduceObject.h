#pragma once
// CFOVReduceObject: the field of view.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {


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

// The packed payload of versions above 0x10000: 64 bytes.
namespace fovRecord {
using C = CFOVReduceObject;
inline constexpr uint32_t kSize = 64;
using Table = TRecordTable<C, kSize, TConst<0, uint32_t, kSize>, TWriteOnly<TField<&C::version, 4>>,
                           TField<&C::iHFov, 8>, TField<&C::iVFov, 16>, TReserved<24, 40>>;
} // namespace fovRecord

} // namespace orv::reduce
