#pragma once
// CCorrectionCfgReduceObject: the switches that control the use of the
// correction tables. It is never stored.
#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CCorrectionCfgReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{191F2684-72A2-407C-8DEC-39DD57B9ABE0}");
    static constexpr const char* kName = "CorrectionCfg";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CCorrectionCfgReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    // Restores the defaults below, with valid true.
    void Default() override;

    bool applyGainOffset = true;
    bool applyBadPixels = true;
    bool clip = true;
    double lowLimit = 0;
    double highLimit = 16383.0;
};

} // namespace orv::reduce
