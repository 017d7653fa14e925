#include "reduce/objects/ObjectParametersReduceObject.h"

#include <cmath>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = objectParametersRecord;

bool CObjectParametersReduceObject::Register()
{
    return reduceObjectFactory().Register<CObjectParametersReduceObject>(kName, typeID);
}

CObjectParametersReduceObject::CObjectParametersReduceObject()
{
    valid = true;
    version = 0x10001;
}

TSharedPtr<IReduceObject> CObjectParametersReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CObjectParametersReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyTo(target);
    return copy;
}

void CObjectParametersReduceObject::Default()
{
    valid = true;
    source = false;
    emissivity = 1.0f;
    distance = 2.0f;
    reflectedTemp = atmosphereTemp = extOpticsTemp = 293.15f;
    extOpticsTransmission = 1.0f;
    estAtmosphericTransmission = 0.0f;
    atmosphericTransmission = 1.0f;
    relativeHumidity = 0.3f;
    reserved = 255;
}

bool CObjectParametersReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    if (fileVersion <= 0x10000) {
        IFile& f = *file;
        return f.GetBool(source) && f.GetFlt32(emissivity) && f.GetFlt32(distance) && f.GetFlt32(reflectedTemp) &&
               f.GetFlt32(atmosphereTemp) && f.GetFlt32(extOpticsTemp) && f.GetFlt32(extOpticsTransmission) &&
               f.GetFlt32(estAtmosphericTransmission) && f.GetFlt32(atmosphericTransmission) &&
               f.GetFlt32(relativeHumidity) && f.GetUInt32(reserved);
    }
    unsigned char r[rec::kSize] = {};
    if (!file->ReadBytes(r, rec::kSize)) return false;
    if (Get(r, kRecordSize) != rec::kSize || Get(r, kRecordVersion) >= 0x20000) return false;
    rec::Table::Read(r, *this);
    return true;
}

bool CObjectParametersReduceObject::Save(TSharedPtr<IFile> file, unsigned int flags)
{
    if (!file) return false;
    unsigned char r[rec::kSize];
    rec::Table::Write(*this, r);
    // A new recording always marks its parameters as the source's own.
    if (flags & kFlagStartFile) r[rec::source::field.offset] = 1;
    return file->WriteBytes(r, rec::kSize);
}

bool CObjectParametersReduceObject::Equals(CObjectParametersReduceObject* other) const
{
    if (!other) return false;
    auto same = [](float a, float b) { return std::fabs(static_cast<double>(a - b)) < 1e-8; };
    // source, atmosphericTransmission and reserved are deliberately left out.
    return same(emissivity, other->emissivity) && same(distance, other->distance) &&
           same(reflectedTemp, other->reflectedTemp) && same(atmosphereTemp, other->atmosphereTemp) &&
           same(extOpticsTemp, other->extOpticsTemp) && same(extOpticsTransmission, other->extOpticsTransmission) &&
           same(estAtmosphericTransmission, other->estAtmosphericTransmission) &&
           same(relativeHumidity, other->relativeHumidity);
}

void CObjectParametersReduceObject::CopyTo(CObjectParametersReduceObject* other) const
{
    if (!other || other == this) return;
    CopyCommonTo(*other);
    rec::Table::Copy(*this, *other);
}

} // namespace orv::reduce
