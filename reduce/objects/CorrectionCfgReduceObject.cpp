#include "reduce/objects/CorrectionCfgReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CCorrectionCfgReduceObject::Register()
{
    return reduceObjectFactory().Register<CCorrectionCfgReduceObject>(kName, typeID);
}

CCorrectionCfgReduceObject::CCorrectionCfgReduceObject()
{
    valid = true;
    persist = false; // settings of a session, never written to a recording
}

TSharedPtr<IReduceObject> CCorrectionCfgReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CCorrectionCfgReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->applyGainOffset = applyGainOffset;
    target->applyBadPixels = applyBadPixels;
    target->clip = clip;
    target->lowLimit = lowLimit;
    target->highLimit = highLimit;
    return copy;
}

void CCorrectionCfgReduceObject::Default()
{
    valid = true;
    applyGainOffset = true;
    applyBadPixels = true;
    clip = true;
    lowLimit = 0;
    highLimit = 16383.0;
}

} // namespace orv::reduce
