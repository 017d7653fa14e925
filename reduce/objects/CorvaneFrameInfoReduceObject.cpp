#include "reduce/objects/CorvaneFrameInfoReduceObject.h"

#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CCorvaneFrameInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<CCorvaneFrameInfoReduceObject>(kName, typeID);
}

CCorvaneFrameInfoReduceObject::CCorvaneFrameInfoReduceObject()
{
    persist = false;
    std::memset(&record, 0, sizeof record);
}

TSharedPtr<IReduceObject> CCorvaneFrameInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CCorvaneFrameInfoReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->record = record;
    return copy;
}

void CCorvaneFrameInfoReduceObject::Default()
{
    IReduceObject::Default();
    std::memset(&record, 0, sizeof record);
}

} // namespace orv::reduce
