#include "reduce/objects/CorvaneFactoryCalReduceObject.h"

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CCorvaneFactoryCalReduceObject::Register()
{
    return reduceObjectFactory().Register<CCorvaneFactoryCalReduceObject>(kName, typeID);
}

TSharedPtr<IReduceObject> CCorvaneFactoryCalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* t = dynamic_cast<CCorvaneFactoryCalReduceObject*>(copy.get());
    if (!t) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*t);
    t->curveType = curveType;
    t->a = a;
    t->b = b;
    t->c = c;
    t->d = d;
    t->e = e;
    t->f = f;
    t->g = g;
    t->minCounts = minCounts;
    t->maxCounts = maxCounts;
    t->minTemp = minTemp;
    t->maxTemp = maxTemp;
    t->refValue = refValue;
    t->integrationTime = integrationTime;
    return copy;
}

void CCorvaneFactoryCalReduceObject::Default()
{
    IReduceObject::Default();
    curveType = 0;
    a = b = c = d = e = f = g = 0;
    minCounts = maxCounts = 0;
    minTemp = maxTemp = refValue = integrationTime = 0;
}

bool CCorvaneFactoryCalReduceObject::Load(TSharedPtr<IFile> file, unsigned int /*version*/, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& s = *file;
    return s.GetUInt32(curveType) && s.GetFlt32(a) && s.GetFlt32(b) && s.GetFlt32(c) && s.GetFlt32(d) &&
           s.GetFlt32(e) && s.GetFlt32(f) && s.GetFlt32(g) && s.GetUInt32(minCounts) && s.GetUInt32(maxCounts) &&
           s.GetFlt32(minTemp) && s.GetFlt32(maxTemp) && s.GetFlt32(refValue) && s.GetFlt32(integrationTime);
}

bool CCorvaneFactoryCalReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& s = *file;
    return s.PutUInt32(curveType) && s.PutFlt32(a) && s.PutFlt32(b) && s.PutFlt32(c) && s.PutFlt32(d) &&
           s.PutFlt32(e) && s.PutFlt32(f) && s.PutFlt32(g) && s.PutUInt32(minCounts) && s.PutUInt32(maxCounts) &&
           s.PutFlt32(minTemp) && s.PutFlt32(maxTemp) && s.PutFlt32(refValue) && s.PutFlt32(integrationTime);
}

} // namespace orv::reduce
