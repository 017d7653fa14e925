#pragma once
// COmbriaCameraInfoReduceObject: the camera's own description, kept beside
// the recording as it came; nothing here interprets it.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class COmbriaCameraInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{6471D16E-323A-4B50-92F9-5A76FAAA64FC}");
    static constexpr const char* kName = "OmbriaCameraInfo";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    static constexpr uint32_t kInfoSize = 2428;
    static constexpr uint32_t kTagSize = 32;
    // info, a Bool, tag, a Bool.
    static constexpr uint32_t kPayloadSize = kInfoSize + 1 + kTagSize + 1;

    COmbriaCameraInfoReduceObject() = default;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    uint8_t info[kInfoSize] = {};
    bool infoFlag = false;
    uint8_t tag[kTagSize] = {};
    bool tagFlag = false;
};

} // namespace orv::reduce
