#include "reduce/objects/FrameInfoReduceObject.h"

#include <cstdlib>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace {

const char* const kFixedNames[4] = {"Time", "FrameNumber", "Preset", "TimeSource"};

int FixedIndex(const CString& name)
{
    for (int i = 0; i < 4; ++i)
        if (scasecmp(name.c_str(), kFixedNames[i]) == 0) return i;
    return -1;
}

const char* TimeSourceText(ETimeSource source)
{
    switch (source) {
    case timeSourceCamera: return "Camera";
    case timeSourceIRIG: return "IRIG";
    case timeSourcePC: return "PC";
    default: return "Unknown";
    }
}

} // namespace

bool CFrameInfoReduceObject::Register()
{
    return reduceObjectFactory().Register<CFrameInfoReduceObject>(kName, typeID);
}

CFrameInfoReduceObject::CFrameInfoReduceObject()
{
    valid = true;
    frame = 0;
    preset = 0;
    persist = false;
}

TSharedPtr<IReduceObject> CFrameInfoReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CFrameInfoReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->time = time;
    target->extra = extra;
    target->fresh = fresh;
    target->timeSource = timeSource;
    return copy;
}

void CFrameInfoReduceObject::Default()
{
    // frame and preset stay: they say where the object belongs.
    valid = true;
    fresh = true;
    time = CDateTime::Now();
    timeSource = timeSourceUnknown;
    extra.Clear();
}

unsigned int CFrameInfoReduceObject::GetIndex(const CString& name) const
{
    int fixed = FixedIndex(name);
    // An extra entry's index is that of the extra list, without the fixed four.
    return fixed >= 0 ? static_cast<unsigned int>(fixed) : extra.FindValue(name);
}

CFrameInfoReduceObject::SEntry CFrameInfoReduceObject::GetAt(unsigned int index)
{
    SEntry entry;
    switch (index) {
    case 0:
        entry.name = kFixedNames[0];
        entry.value = time.Format("%j:%(irig)");
        entry.unit = "IRIG";
        entry.type = "ascii";
        return entry;
    case 1:
        entry.name = kFixedNames[1];
        entry.value = CString::FromFormat("%llu", static_cast<unsigned long long>(frame));
        entry.unit = "counter";
        entry.type = "int";
        return entry;
    case 2:
        entry.name = kFixedNames[2];
        entry.value = CString::FromFormat("%d", static_cast<int>(preset));
        entry.unit = "counter";
        entry.type = "int";
        return entry;
    case 3:
        entry.name = kFixedNames[3];
        entry.value = TimeSourceText(timeSource);
        entry.unit = "none";
        entry.type = "ascii";
        return entry;
    default:
        break;
    }
    if (index >= NumEntries()) {
        entry.exists = false;
        return entry;
    }
    CFrameInfoExtra::CEntry item = extra[static_cast<int>(index - 4)];
    entry.name = item.name();
    entry.value = item.getValue();
    entry.unit = item.getUnit();
    entry.type = item.getType();
    return entry;
}

CFrameInfoReduceObject::SEntry CFrameInfoReduceObject::Get(const CString& name)
{
    int fixed = FixedIndex(name);
    if (fixed >= 0) return GetAt(static_cast<unsigned int>(fixed));
    SEntry entry;
    entry.name = name;
    entry.value = extra.GetValue(name);
    entry.unit = extra.GetUnit(name);
    entry.type = extra.GetType(name);
    return entry;
}

void CFrameInfoReduceObject::SetValue(const CString& name, const CString& value)
{
    switch (FixedIndex(name)) {
    case 0:
        time = CDateTime(value);
        return;
    case 1:
        frame = std::strtoull(value.c_str(), nullptr, 10);
        return;
    case 2:
        preset = static_cast<uint8_t>(static_cast<int8_t>(stoi(value)));
        return;
    case 3:
        if (scasecmp(value.c_str(), "Camera") == 0) timeSource = timeSourceCamera;
        else if (scasecmp(value.c_str(), "IRIG") == 0) timeSource = timeSourceIRIG;
        else if (scasecmp(value.c_str(), "PC") == 0) timeSource = timeSourcePC;
        else timeSource = timeSourceUnknown;
        return;
    default:
        extra.SetValue(name, value, CString(), CString());
        return;
    }
}

} // namespace orv::reduce
