#include "reduce/objects/BrennicFrameInfoReduceObject.h"

#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CBrennicFrameInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<CBrennicFrameInfoReduceObject>(kName, typeID);
}

CBrennicFrameInfoReduceObject::CBrennicFrameInfoReduceObject()
{
    persist = false;
    std::memset(data, 0, sizeof data);
}

TSharedPtr<IReduceObject> CBrennicFrameInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CBrennicFrameInfoReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->length = length;
    // Deliberately at most 96 bytes, though the buffer holds 192.
    size_t count = length < kDuplicateLimit ? length : kDuplicateLimit;
    std::memcpy(target->data, data, count);
    return copy;
}

void CBrennicFrameInfoReduceObject::Default()
{
    IReduceObject::Default();
    std::memset(data, 0, sizeof data);
    length = 0;
}

} // namespace orv::reduce
