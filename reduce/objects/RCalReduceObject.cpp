#include "reduce/objects/RCalReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CRCalReduceObject::Register() { return reduceObjectFactory().Register<CRCalReduceObject>(kName, typeID); }

CRCalReduceObject::CRCalReduceObject() { rcal.DefaultCal(); }

TSharedPtr<IReduceObject> CRCalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CRCalReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->rcal = rcal;
    return copy;
}

void CRCalReduceObject::Default()
{
    IReduceObject::Default();
    rcal.DefaultCal();
}

bool CRCalReduceObject::Load(TSharedPtr<IFile> file, unsigned int /*version*/, unsigned int /*flags*/)
{
    return rcal.Load(file, 0);
}

bool CRCalReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/) { return rcal.Save(file, 0); }

} // namespace orv::reduce
