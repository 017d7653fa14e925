#include "reduce/objects/OmbriaFactoryCalReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool COmbriaFactoryCalReduceObject::Register()
{
    return reduceObjectFactory().Register<COmbriaFactoryCalReduceObject>(kName, typeID);
}

TSharedPtr<IReduceObject> COmbriaFactoryCalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<COmbriaFactoryCalReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->adjust = adjust;
    target->calib = calib;
    return copy;
}

void COmbriaFactoryCalReduceObject::Default()
{
    IReduceObject::Default();
    adjust = SAdjustParams();
    calib = SCalibParams();
}

bool COmbriaFactoryCalReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    Default();
    if (fileVersion != 0x10000 || !file) return false;
    IFile& f = *file;
    return f.GetFlt32(adjust.nonLinearFactor) && f.GetInt32(adjust.nonLinearZero) && f.GetInt32(adjust.offset) &&
           f.GetFlt32(adjust.gain) && f.GetUInt16(adjust.nonLinear) && f.GetUInt16(adjust.imgLow) &&
           f.GetUInt16(adjust.imgHigh) && f.GetFlt32(calib.R) && f.GetFlt32(calib.B) && f.GetFlt32(calib.F) &&
           f.GetFlt32(calib.alpha1) && f.GetFlt32(calib.alpha2) && f.GetFlt32(calib.beta1) &&
           f.GetFlt32(calib.beta2) && f.GetFlt32(calib.X) && f.GetFlt32(calib.clampHighTemp) &&
           f.GetFlt32(calib.validHighTemp) && f.GetFlt32(calib.validLowTemp) && f.GetFlt32(calib.clampLowTemp) &&
           f.GetFlt32(calib.rangeHighTemp) && f.GetFlt32(calib.rangeLowTemp);
}

bool COmbriaFactoryCalReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& f = *file;
    return f.PutFlt32(adjust.nonLinearFactor) && f.PutInt32(adjust.nonLinearZero) && f.PutInt32(adjust.offset) &&
           f.PutFlt32(adjust.gain) && f.PutUInt16(adjust.nonLinear) && f.PutUInt16(adjust.imgLow) &&
           f.PutUInt16(adjust.imgHigh) && f.PutFlt32(calib.R) && f.PutFlt32(calib.B) && f.PutFlt32(calib.F) &&
           f.PutFlt32(calib.alpha1) && f.PutFlt32(calib.alpha2) && f.PutFlt32(calib.beta1) &&
           f.PutFlt32(calib.beta2) && f.PutFlt32(calib.X) && f.PutFlt32(calib.clampHighTemp) &&
           f.PutFlt32(calib.validHighTemp) && f.PutFlt32(calib.validLowTemp) && f.PutFlt32(calib.clampLowTemp) &&
           f.PutFlt32(calib.rangeHighTemp) && f.PutFlt32(calib.rangeLowTemp);
}

} // namespace orv::reduce
