#include "reduce/objects/WorkspaceReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CWorkspaceReduceObject::Register()
{
    return reduceObjectFactory().Register<CWorkspaceReduceObject>(kName, typeID);
}

CWorkspaceReduceObject::CWorkspaceReduceObject() { valid = true; }

TSharedPtr<IReduceObject> CWorkspaceReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CWorkspaceReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->workspace = workspace;
    return copy;
}

void CWorkspaceReduceObject::Default()
{
    valid = true;
    workspace = "";
}

bool CWorkspaceReduceObject::Load(TSharedPtr<IFile> file, unsigned int /*version*/, unsigned int /*flags*/)
{
    uint32_t length = 0;
    // A length beyond the data is corrupt; refuse it before allocating.
    if (!file || !file->GetUInt32(length) || length > file->GetRemaining() || length > 0x7FFFFFFFu) {
        workspace = "";
        return false;
    }
    char* buffer = workspace.GetBuffer(static_cast<int>(length));
    bool ok = buffer && file->ReadBytes(buffer, length);
    if (buffer) {
        buffer[ok ? length : 0] = '\0';
        workspace.ReleaseBuffer();
    }
    if (!ok) workspace = "";
    return ok;
}

bool CWorkspaceReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    const uint32_t length = static_cast<uint32_t>(workspace.length());
    return file->PutUInt32(length) && file->WriteBytes(workspace.c_str(), length);
}

} // namespace orv::reduce
