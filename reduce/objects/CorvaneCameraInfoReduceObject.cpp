#include "reduce/objects/CorvaneCameraInfoReduceObject.h"

#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CCorvaneCameraInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<CCorvaneCameraInfoReduceObject>(kName, typeID);
}

CCorvaneCameraInfoReduceObject::CCorvaneCameraInfoReduceObject() { version = 0x10001; }

TSharedPtr<IReduceObject> CCorvaneCameraInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* t = dynamic_cast<CCorvaneCameraInfoReduceObject*>(copy.get());
    if (!t) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*t);
    std::memcpy(t->texts, texts, sizeof texts);
    std::memcpy(t->shortText, shortText, sizeof shortText);
    std::memcpy(t->values, values, sizeof values);
    t->byteValue = byteValue;
    t->intValue = intValue;
    std::memcpy(t->bytes, bytes, sizeof bytes);
    t->flag = flag;
    return copy;
}

void CCorvaneCameraInfoReduceObject::Default()
{
    IReduceObject::Default();
    std::memset(texts, 0, sizeof texts);
    std::memset(shortText, 0, sizeof shortText);
    std::memset(values, 0, sizeof values);
    byteValue = 0;
    intValue = 0;
    std::memset(bytes, 0, sizeof bytes);
    flag = false;
}

bool CCorvaneCameraInfoReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& s = *file;
    for (auto& text : texts)
        if (!s.GetFixedLengthString(text, kTextSize)) return false;
    if (!s.GetFixedLengthString(shortText, kShortTextSize)) return false;
    for (float& v : values)
        if (!s.GetFlt32(v)) return false;
    if (!s.GetUInt8(byteValue) || !s.GetInt32(intValue)) return false;
    for (uint8_t& b : bytes)
        if (!s.GetUInt8(b)) return false;
    flag = false;
    return fileVersion <= 0x10000 || s.GetBool(flag);
}

bool CCorvaneCameraInfoReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& s = *file;
    for (const auto& text : texts)
        if (!s.PutFixedLengthString(text, kTextSize)) return false;
    if (!s.PutFixedLengthString(shortText, kShortTextSize)) return false;
    for (float v : values)
        if (!s.PutFlt32(v)) return false;
    if (!s.PutUInt8(byteValue) || !s.PutInt32(intValue)) return false;
    for (uint8_t b : bytes)
        if (!s.PutUInt8(b)) return false;
    // The flag exists from version 1.1 on; what we write is this build's version.
    return version <= 0x10000 || s.PutBool(flag);
}

} // namespace orv::reduce
