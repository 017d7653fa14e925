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
    if (GetRecordValue<uint32_t>(r, rec::recordSize) != rec::kSize ||
        GetRecordValue<uint32_t>(r, rec::version) >= 0x20000)
        return false;
    source = GetRecordBool(r, rec::source);
    emissivity = GetRecordValue<float>(r, rec::emissivity);
    distance = GetRecordValue<float>(r, rec::distance);
    reflectedTemp = GetRecordValue<float>(r, rec::reflectedTemp);
    atmosphereTemp = GetRecordValue<float>(r, rec::atmosphereTemp);
    extOpticsTemp = GetRecordValue<float>(r, rec::extOpticsTemp);
    extOpticsTransmission = GetRecordValue<float>(r, rec::extOpticsTransmission);
    estAtmosphericTransmission = GetRecordValue<float>(r, rec::estAtmosphericTransmission);
    atmosphericTransmission = GetRecordValue<float>(r, rec::atmosphericTransmission);
    relativeHumidity = GetRecordValue<float>(r, rec::relativeHumidity);
    reserved = GetRecordValue<uint32_t>(r, rec::reservedWord);
    return true;
}

bool CObjectParametersReduceObject::Save(TSharedPtr<IFile> file, unsigned int flags)
{
    if (!file) return false;
    unsigned char r[rec::kSize] = {};
    PutRecordValue<uint32_t>(r, rec::recordSize, rec::kSize);
    PutRecordValue<uint32_t>(r, rec::version, version);
    // A new recording always marks its parameters as the source's own.
    PutRecordBool(r, rec::source, (flags & kFlagStartFile) ? true : source);
    PutRecordValue<float>(r, rec::emissivity, emissivity);
    PutRecordValue<float>(r, rec::distance, distance);
    PutRecordValue<float>(r, rec::reflectedTemp, reflectedTemp);
    PutRecordValue<float>(r, rec::atmosphereTemp, atmosphereTemp);
    PutRecordValue<float>(r, rec::extOpticsTemp, extOpticsTemp);
    PutRecordValue<float>(r, rec::extOpticsTransmission, extOpticsTransmission);
    PutRecordValue<float>(r, rec::estAtmosphericTransmission, estAtmosphericTransmission);
    PutRecordValue<float>(r, rec::atmosphericTransmission, atmosphericTransmission);
    PutRecordValue<float>(r, rec::relativeHumidity, relativeHumidity);
    PutRecordValue<uint32_t>(r, rec::reservedWord, reserved);
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
    other->source = source;
    other->emissivity = emissivity;
    other->distance = distance;
    other->reflectedTemp = reflectedTemp;
    other->atmosphereTemp = atmosphereTemp;
    other->extOpticsTemp = extOpticsTemp;
    other->extOpticsTransmission = extOpticsTransmission;
    other->estAtmosphericTransmission = estAtmosphericTransmission;
    other->atmosphericTransmission = atmosphericTransmission;
    other->relativeHumidity = relativeHumidity;
    other->reserved = reserved;
}

} // namespace orv::reduce
