#pragma once
// CReduceObjectArray: the ordered, lockable collection of reduce objects that
// a recording's metadata lives in. Plain insertion order, several entries may
// share a type; per-frame, per-preset and calibration objects are told apart
// only by their own fields.
#include "orv/Array.h"
#include "orv/SRWLock.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CSourceInfoReduceObject;
class CFrameInfoReduceObject;
class CCorrectionReduceObject;
class CCorrectionCfgReduceObject;
class CObjectParametersReduceObject;
class CAbateCfgReduceObject;
class CFOVReduceObject;

class CReduceObjectArray : public TArray<TSharedPtr<IReduceObject>> {
public:
    CReduceObjectArray() = default;
    ~CReduceObjectArray() override = default;

    // The lock is the callers' tool: no operation of the library takes it.
    // Lookups with create true mutate the array and need the write lock.
    void ReadLock() { m_lock.ReadLock(); }
    void ReadUnlock() { m_lock.ReadUnlock(); }
    void WriteLock() { m_lock.WriteLock(); }
    void WriteUnlock() { m_lock.WriteUnlock(); }

    // Releases every entry; the buffer is kept.
    void Reset() { clear(); }
    unsigned int GetSize() const { return static_cast<unsigned int>(size()); }

    bool HasObjectOfType(SGuid typeID, bool onlyValid) const;
    // Case-blind on GetName().
    bool HasObjectWithName(const char* name, bool onlyValid) const;
    // Removes the first entry of the type whose preset, read as a signed byte,
    // equals preset.
    void RemoveObjectOfType(SGuid typeID, int preset);
    // Removes every entry of the type, whatever its preset.
    void RemoveAllObjectsOfType(SGuid typeID);
    // Distinct identifiers / names in order of first appearance.
    void GetTypeIDs(TArray<SGuid>& out, bool onlyValid) const;
    void GetNames(TArray<CString>& out, bool onlyValid) const;
    // Null for an index not below the size; never throws.
    TSharedPtr<IReduceObject> GetAt(unsigned int index) const;

    // Preset-aware lookup: an exact preset match wins at once; otherwise the
    // last preset-independent (0xFF) entry, unless create is true, in which
    // case a new object with the preset's low byte is appended.
    TSharedPtr<IReduceObject> GetObjectOfType(SGuid typeID, int preset, bool create);
    TSharedPtr<IReduceObject> GetObjectByName(const char* name, int preset, bool create);

    // Empties target, then appends a deep copy of each entry. The lock is not
    // copied.
    void Duplicate(CReduceObjectArray& target) const;

    TSharedPtr<CSourceInfoReduceObject> GetSourceInfo(bool create);
    TSharedPtr<CFrameInfoReduceObject> GetFrameInfo(unsigned char preset, bool create);
    TSharedPtr<CCorrectionReduceObject> GetCorrection(unsigned char preset, bool create);
    TSharedPtr<CCorrectionCfgReduceObject> GetCorrectionCfg(bool create);
    TSharedPtr<CObjectParametersReduceObject> GetObjectParameters(bool create);
    TSharedPtr<CAbateCfgReduceObject> GetAbateCfg(bool create);
    TSharedPtr<CFOVReduceObject> GetFOV(bool create);

private:
    CSRWLock m_lock;
};

} // namespace orv::reduce
