#pragma once
// CWorkspaceReduceObject: a block of text kept for the application.
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CWorkspaceReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{E48740C1-D51E-4531-88A6-030ED91ECEAE}");
    static constexpr const char* kName = "Workspace";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CWorkspaceReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    CString workspace;
};

} // namespace orv::reduce
