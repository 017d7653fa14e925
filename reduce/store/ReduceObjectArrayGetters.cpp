// The typed getters of CReduceObjectArray: the preset-aware lookup followed by
// a checked cast to the concrete class.
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

template <class T>
TSharedPtr<T> Typed(CReduceObjectArray& array, int preset, bool create)
{
    return array.GetObjectOfType(T::typeID, preset, create).template DynamicCast<T>();
}

} // namespace

// Objects of the whole recording are asked for with preset -1, which matches
// a 0xFF object exactly.
TSharedPtr<CSourceInfoReduceObject> CReduceObjectArray::GetSourceInfo(bool create)
{
    return Typed<CSourceInfoReduceObject>(*this, -1, create);
}

// Per-preset objects pass 0 to 255: 255 reaches a 0xFF object only as the
// fallback, and with create appends one each call. Intended.
TSharedPtr<CFrameInfoReduceObject> CReduceObjectArray::GetFrameInfo(unsigned char preset, bool create)
{
    return Typed<CFrameInfoReduceObject>(*this, preset, create);
}

TSharedPtr<CCorrectionReduceObject> CReduceObjectArray::GetCorrection(unsigned char preset, bool create)
{
    return Typed<CCorrectionReduceObject>(*this, preset, create);
}

TSharedPtr<CCorrectionCfgReduceObject> CReduceObjectArray::GetCorrectionCfg(bool create)
{
    return Typed<CCorrectionCfgReduceObject>(*this, -1, create);
}

TSharedPtr<CObjectParametersReduceObject> CReduceObjectArray::GetObjectParameters(bool create)
{
    return Typed<CObjectParametersReduceObject>(*this, -1, create);
}

TSharedPtr<CAbateCfgReduceObject> CReduceObjectArray::GetAbateCfg(bool create)
{
    return Typed<CAbateCfgReduceObject>(*this, -1, create);
}

TSharedPtr<CFOVReduceObject> CReduceObjectArray::GetFOV(bool create)
{
    return Typed<CFOVReduceObject>(*this, -1, create);
}

} // namespace orv::reduce
