#pragma once
// CFrameHeaderReduceObject: a frame's raw header bytes and their kind.
#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CFrameHeaderReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{ABB88590-614E-41F8-9CE0-6ACA00BBA514}");
    static constexpr const char* kName = "FrameHeader";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CFrameHeaderReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;

    SGuid headerType;
    TArray<unsigned char> data;
};

} // namespace orv::reduce
