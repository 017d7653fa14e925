#include "reduce/objects/FOVReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = fovRecord;

bool CFOVReduceObject::Register() { return reduceObjectFactory().Register<CFOVReduceObject>(kName, typeID); }

CFOVReduceObject::CFOVReduceObject() { version = 0x10001; }

TSharedPtr<IReduceObject> CFOVReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CFOVReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->iHFov = iHFov;
    target->iVFov = iVFov;
    return copy;
}

void CFOVReduceObject::Default()
{
    IReduceObject::Default();
    iHFov = iVFov = 0;
}

bool CFOVReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    if (fileVersion <= 0x10000) return file->GetFlt64(iHFov) && file->GetFlt64(iVFov);
    unsigned char r[rec::kSize] = {};
    if (!file->ReadBytes(r, rec::kSize)) return false;
    // Up to and including 2.0, unlike the object parameters' limit.
    if (Get(r, kRecordSize) != rec::kSize || Get(r, kRecordVersion) > 0x20000) return false;
    rec::Table::Read(r, *this);
    return true;
}

bool CFOVReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    unsigned char r[rec::kSize];
    rec::Table::Write(*this, r);
    return file->WriteBytes(r, rec::kSize);
}

} // namespace orv::reduce
