#include "reduce/objects/TesselFactoryCalReduceObject.h"

#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = tesselRecord;

namespace {

bool ReadField(IFile& f, unsigned char* record, SRecordField field)
{
    return f.ReadBytes(record + field.offset, field.size);
}

} // namespace

bool CTesselFactoryCalReduceObject::Register()
{
    return reduceObjectFactory().Register<CTesselFactoryCalReduceObject>(kName, typeID);
}

CTesselFactoryCalReduceObject::CTesselFactoryCalReduceObject()
{
    version = 0x10001;
    Put(record, rec::recordSize, rec::kSize);
    Put(record, rec::version, version);
}

TSharedPtr<IReduceObject> CTesselFactoryCalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CTesselFactoryCalReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    std::memcpy(target->record, record, rec::kSize);
    return copy;
}

void CTesselFactoryCalReduceObject::Default()
{
    IReduceObject::Default();
    std::memset(record, 0, rec::kSize);
    Put(record, rec::recordSize, rec::kSize);
    Put(record, rec::version, version);
}

bool CTesselFactoryCalReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& f = *file;
    if (fileVersion > 0x10000) {
        unsigned char r[rec::kSize];
        if (!f.ReadBytes(r, rec::kSize)) return false;
        if (Get(r, rec::recordSize) != rec::kSize || Get(r, rec::version) > 0x1FFFF) return false;
        std::memcpy(record, r, rec::kSize);
        return true;
    }
    // The old field-by-field run goes into the same record.
    unsigned char r[rec::kSize] = {};
    Put(r, rec::recordSize, rec::kSize);
    Put(r, rec::version, fileVersion);
    for (const SRecordField field : rec::floatRun)
        if (!ReadField(f, r, field)) return false;
    if (!ReadField(f, r, rec::calibrationNumber) || !ReadField(f, r, rec::adjustMode) ||
        !ReadField(f, r, rec::signedWord) || !ReadField(f, r, rec::cameraName) || !ReadField(f, r, rec::lensName) ||
        !ReadField(f, r, rec::filterName) || !ReadField(f, r, rec::calibrationDate) ||
        !ReadField(f, r, rec::shortTexts))
        return false;
    std::memcpy(record, r, rec::kSize);
    return true;
}

bool CTesselFactoryCalReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    // The record goes out whole; only its size and version words are ours.
    unsigned char r[rec::kSize];
    std::memcpy(r, record, rec::kSize);
    Put(r, rec::recordSize, rec::kSize);
    Put(r, rec::version, version);
    return file->WriteBytes(r, rec::kSize);
}

} // namespace orv::reduce
