#pragma once
// CRCalReduceObject: the user calibration of a recording. One object serves
// all presets; the calibration itself is asked preset by preset.
#include "orv/RCalFile.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CRCalReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{E5D7371A-BD64-448F-8240-6FDFA6FC0110}");
    static constexpr const char* kName = "RCal";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CRCalReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    // The payload is what CRCalFile reads and writes.
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    CRCalFile rcal;
};

} // namespace orv::reduce
