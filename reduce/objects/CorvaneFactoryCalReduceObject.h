#pragma once
// CCorvaneFactoryCalReduceObject: the analytic curve of one Corvane preset,
// which knows the integration time.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CCorvaneFactoryCalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{82ECA642-C98D-4083-8965-E92E386BA005}");
    static constexpr const char* kName = "CorvaneFactoryCal";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // A run of typed fields: 14 of 4 bytes.
    static constexpr uint32_t kPayloadSize = 56;

    CCorvaneFactoryCalReduceObject() = default;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    uint32_t curveType = 0;
    float a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0;
    uint32_t minCounts = 0; // used as 16 bits
    uint32_t maxCounts = 0; // used as 16 bits
    float minTemp = 0;
    float maxTemp = 0;
    float refValue = 0;
    float integrationTime = 0; // microseconds
};

} // namespace orv::reduce
