#include "reduce/store/ReduceObjectArray.h"

#include <strings.h>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace {

bool Counts(const TSharedPtr<IReduceObject>& object, bool onlyValid) { return object && (!onlyValid || object->valid); }

// The walk shared by both lookups. The stored byte is compared as signed
// against the int argument, so 255 never matches a 0xFF object exactly;
// that asymmetry is intended.
template <class Match, class Make>
TSharedPtr<IReduceObject> FindOrCreate(CReduceObjectArray& array, Match match, int preset, bool create, Make make)
{
    long fallback = -1;
    for (size_t i = 0; i < array.size(); ++i) {
        const TSharedPtr<IReduceObject>& object = array.get(i);
        if (!object || !match(*object)) continue;
        if (static_cast<int8_t>(object->preset) == preset) return object;
        if (object->preset == 0xFF) fallback = static_cast<long>(i); // the last one wins
    }
    if (!create) return fallback >= 0 ? array.get(static_cast<size_t>(fallback)) : TSharedPtr<IReduceObject>();
    // With create, a preset-independent fallback is deliberately ignored, and
    // the new object keeps its constructor's state (no Default()).
    TSharedPtr<IReduceObject> object = make();
    if (!object) return object;
    object->preset = static_cast<uint8_t>(preset);
    array.add(object);
    return object;
}

} // namespace

bool CReduceObjectArray::HasObjectOfType(SGuid typeID, bool onlyValid) const
{
    for (const TSharedPtr<IReduceObject>& object : *this)
        if (Counts(object, onlyValid) && object->GetTypeID() == typeID) return true;
    return false;
}

bool CReduceObjectArray::HasObjectWithName(const char* name, bool onlyValid) const
{
    if (!name) return false;
    for (const TSharedPtr<IReduceObject>& object : *this)
        if (Counts(object, onlyValid) && strcasecmp(name, object->GetName()) == 0) return true;
    return false;
}

void CReduceObjectArray::RemoveObjectOfType(SGuid typeID, int preset)
{
    for (size_t i = 0; i < size(); ++i) {
        const TSharedPtr<IReduceObject>& object = get(i);
        if (object && object->GetTypeID() == typeID && static_cast<int8_t>(object->preset) == preset) {
            remove(i);
            return;
        }
    }
}

void CReduceObjectArray::RemoveAllObjectsOfType(SGuid typeID)
{
    for (size_t i = 0; i < size();) {
        const TSharedPtr<IReduceObject>& object = get(i);
        if (object && object->GetTypeID() == typeID) remove(i); // same index again: the next entry moved here
        else ++i;
    }
}

void CReduceObjectArray::GetTypeIDs(TArray<SGuid>& out, bool onlyValid) const
{
    out.clear();
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (!Counts(object, onlyValid)) continue;
        SGuid id = object->GetTypeID();
        if (!out.contains(id)) out.add(id);
    }
}

void CReduceObjectArray::GetNames(TArray<CString>& out, bool onlyValid) const
{
    out.clear();
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (!Counts(object, onlyValid)) continue;
        CString name(object->GetName());
        if (!out.contains(name)) out.add(name);
    }
}

TSharedPtr<IReduceObject> CReduceObjectArray::GetAt(unsigned int index) const
{
    return index < size() ? get(index) : TSharedPtr<IReduceObject>();
}

TSharedPtr<IReduceObject> CReduceObjectArray::GetObjectOfType(SGuid typeID, int preset, bool create)
{
    return FindOrCreate(
        *this, [typeID](const IReduceObject& o) { return o.GetTypeID() == typeID; }, preset, create,
        [typeID] { return reduceObjectFactory().CreateByTypeID(typeID); });
}

TSharedPtr<IReduceObject> CReduceObjectArray::GetObjectByName(const char* name, int preset, bool create)
{
    if (!name) return TSharedPtr<IReduceObject>();
    return FindOrCreate(
        *this, [name](const IReduceObject& o) { return strcasecmp(name, o.GetName()) == 0; }, preset, create,
        [name] { return reduceObjectFactory().CreateByName(CString(name)); });
}

void CReduceObjectArray::Duplicate(CReduceObjectArray& target) const
{
    // Copies first, so that duplicating an array into itself works too.
    TArray<TSharedPtr<IReduceObject>> copies;
    for (const TSharedPtr<IReduceObject>& object : *this) {
        if (!object) continue;
        TSharedPtr<IReduceObject> copy = object->Duplicate();
        if (copy) copies.add(copy);
    }
    target.Reset();
    for (const TSharedPtr<IReduceObject>& copy : copies) target.add(copy);
}

} // namespace orv::reduce
