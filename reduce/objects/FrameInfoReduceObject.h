#pragma once
// CFrameInfoReduceObject: the uniform per-frame view: four fixed items (time,
// frame number, preset, time source) and the open extra list.
#include <cstdint>

#include "orv/DateTime.h"
#include "orv/String.h"
#include "reduce/objects/FrameInfoExtra.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

enum ETimeSource : int32_t {
    timeSourceUnknown = 0,
    timeSourcePC = 1,
    timeSourceCamera = 2,
    timeSourceIRIG = 3,
};

class CFrameInfoReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{881933BF-2488-4D97-A1FE-8D98DA688A3A}");
    static constexpr const char* kName = "FrameInfo";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // Result of a query by name or index; converts to its value.
    struct SEntry {
        CString name;
        CString value;
        CString unit;
        CString type;
        bool exists = true;
        operator CString() const { return value; }
    };

    CFrameInfoReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    void Default() override;

    unsigned int NumEntries() const { return extra.nValues() + 4; }
    // 0 to 3 for the fixed items; otherwise the index in the extra list,
    // without the 4 that GetAt expects (kept as callers know it).
    unsigned int GetIndex(const CString& name) const;
    SEntry GetAt(unsigned int index);
    SEntry Get(const CString& name);

    CString GetValue(const CString& name) { return Get(name).value; }
    CString GetUnit(const CString& name) { return Get(name).unit; }
    CString GetType(const CString& name) { return Get(name).type; }
    CString GetNameAt(unsigned int index) { return GetAt(index).name; }
    CString GetValueAt(unsigned int index) { return GetAt(index).value; }
    CString GetUnitAt(unsigned int index) { return GetAt(index).unit; }
    CString GetTypeAt(unsigned int index) { return GetAt(index).type; }

    void SetValue(const CString& name, const CString& value);

    CDateTime time;
    CFrameInfoExtra extra;
    bool fresh = true; // set at construction and by Default()
    ETimeSource timeSource = timeSourceUnknown;
};

} // namespace orv::reduce
