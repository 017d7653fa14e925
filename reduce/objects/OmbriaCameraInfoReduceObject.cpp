#include "reduce/objects/OmbriaCameraInfoReduceObject.h"

#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool COmbriaCameraInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<COmbriaCameraInfoReduceObject>(kName, typeID);
}

TSharedPtr<IReduceObject> COmbriaCameraInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<COmbriaCameraInfoReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    std::memcpy(target->info, info, sizeof info);
    target->infoFlag = infoFlag;
    std::memcpy(target->tag, tag, sizeof tag);
    target->tagFlag = tagFlag;
    return copy;
}

void COmbriaCameraInfoReduceObject::Default()
{
    IReduceObject::Default();
    std::memset(info, 0, sizeof info);
    infoFlag = false;
    std::memset(tag, 0, sizeof tag);
    tagFlag = false;
}

bool COmbriaCameraInfoReduceObject::Load(TSharedPtr<IFile> file, unsigned int /*version*/, unsigned int /*flags*/)
{
    Default();
    if (!file) return false;
    return file->ReadBytes(info, kInfoSize) && file->GetBool(infoFlag) && file->ReadBytes(tag, kTagSize) &&
           file->GetBool(tagFlag);
}

bool COmbriaCameraInfoReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    return file->WriteBytes(info, kInfoSize) && file->PutBool(infoFlag) && file->WriteBytes(tag, kTagSize) &&
           file->PutBool(tagFlag);
}

} // namespace orv::reduce
