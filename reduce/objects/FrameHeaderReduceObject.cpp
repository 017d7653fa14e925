#include "reduce/objects/FrameHeaderReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CFrameHeaderReduceObject::Register()
{
    return reduceObjectFactory().Register<CFrameHeaderReduceObject>(kName, typeID);
}

CFrameHeaderReduceObject::CFrameHeaderReduceObject() { persist = false; }

TSharedPtr<IReduceObject> CFrameHeaderReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CFrameHeaderReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->version = version; // unlike other types, a header keeps its version in a copy
    target->headerType = headerType;
    target->data = data;
    return copy;
}

void CFrameHeaderReduceObject::Default()
{
    valid = false;
    frame = ~uint64_t(0);
    preset = 0xFF;
    persist = false;
    version = 0x10000;
    headerType = SGuid();
    data.clear();
}

} // namespace orv::reduce
