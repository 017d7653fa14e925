#pragma once
// CBrennicFrameInfoReduceObject: the Brennic family's per-frame record.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CBrennicFrameInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{CEE1192C-7D8C-4633-A143-F304E294AA57}");
    static constexpr const char* kName = "BrennicFrameInfo";
    static constexpr unsigned kBufferSize = 192;
    static constexpr unsigned kDuplicateLimit = 96;
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CBrennicFrameInfoReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;

    uint8_t data[kBufferSize];
    uint16_t length = 0;
};

} // namespace orv::reduce
