#pragma once
// CCorvaneCameraInfoReduceObject: identity of a Corvane camera and its
// optics. Nothing in the library reads the fields; they are carried.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CCorvaneCameraInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{B5C2E5E6-34B3-4171-9039-2270CEFEDB14}");
    static constexpr const char* kName = "CorvaneCameraInfo";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    static constexpr uint32_t kTextSize = 20;
    static constexpr uint32_t kShortTextSize = 11;
    // Payload bytes of version 0x10000; later versions add one Bool.
    static constexpr uint32_t kPayloadSizeV1 = 4 * kTextSize + kShortTextSize + 4 * 4 + 1 + 4 + 4;

    CCorvaneCameraInfoReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    // Each text has room for its terminator, which loading always sets.
    char texts[4][kTextSize + 1] = {};
    char shortText[kShortTextSize + 1] = {};
    float values[4] = {};
    uint8_t byteValue = 0;
    int32_t intValue = 0;
    uint8_t bytes[4] = {};
    bool flag = false; // versions above 0x10000 only; false for older ones
};

} // namespace orv::reduce
