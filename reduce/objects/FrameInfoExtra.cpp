#include "reduce/objects/FrameInfoExtra.h"

#include <cstdio>
#include <cstring>

namespace orv::reduce {

bool CFrameInfoExtra::IsFixedName(const CString& name)
{
    for (const char* fixed : {"Time", "FrameNumber", "Preset", "TimeSource"})
        if (scasecmp(name.c_str(), fixed) == 0) return true;
    return false;
}

unsigned int CFrameInfoExtra::FindValue(const CString& name) const
{
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (scasecmp(m_entries.get(i).name, name) == 0) return static_cast<unsigned int>(i);
    return kNotFound;
}

unsigned int CFrameInfoExtra::Touch(const CString& name)
{
    // The fixed items live in the frame info object itself.
    if (IsFixedName(name)) return kNotFound;
    unsigned int index = FindValue(name);
    if (index != kNotFound) return index;
    SEntry entry;
    entry.name = name;
    m_entries.add(entry);
    return static_cast<unsigned int>(m_entries.size() - 1);
}

void CFrameInfoExtra::Add(const CString& name, const CString& value, const CString& unit, const CString& type)
{
    SetValue(name, value, unit, type);
}

void CFrameInfoExtra::SetValue(const CString& name, const CString& value, const CString& unit, const CString& type)
{
    unsigned int index = Touch(name);
    if (index == kNotFound) return;
    SEntry& entry = m_entries.get(index);
    entry.value = value;
    entry.unit = unit;
    entry.type = type;
}

void CFrameInfoExtra::SetAt(unsigned int index, const char* name, const char* value, size_t valueLength,
                            const char* unit, const char* type)
{
    if (index > m_entries.size()) return;
    if (index == m_entries.size()) m_entries.add(SEntry());
    SEntry& entry = m_entries.get(index);
    if (std::strcmp(entry.name.c_str(), name) != 0) entry.name = name;
    entry.value.Copy(value, static_cast<int>(valueLength));
    if (std::strcmp(entry.unit.c_str(), unit) != 0) entry.unit = unit;
    if (std::strcmp(entry.type.c_str(), type) != 0) entry.type = type;
    if (!entry.className.empty()) entry.className = CString();
}

void CFrameInfoExtra::Truncate(unsigned int count)
{
    if (count < m_entries.size()) m_entries.resize(count);
}

void CFrameInfoExtra::AddPlaceholder(const CString& name, const CString& unit, const CString& type)
{
    unsigned int index = Touch(name);
    if (index == kNotFound) return;
    SEntry& entry = m_entries.get(index);
    entry.unit = unit;
    entry.type = type;
}

void CFrameInfoExtra::SetUnit(const CString& name, const CString& unit)
{
    unsigned int index = Touch(name);
    if (index != kNotFound) m_entries.get(index).unit = unit;
}

void CFrameInfoExtra::SetType(const CString& name, const CString& type)
{
    unsigned int index = Touch(name);
    if (index != kNotFound) m_entries.get(index).type = type;
}

void CFrameInfoExtra::SetClass(const CString& name, const CString& className)
{
    unsigned int index = Touch(name);
    if (index != kNotFound) m_entries.get(index).className = className;
}

CString CFrameInfoExtra::GetValue(const CString& name) const
{
    unsigned int index = FindValue(name);
    return index == kNotFound ? CString() : m_entries.get(index).value;
}

CString CFrameInfoExtra::GetUnit(const CString& name) const
{
    unsigned int index = FindValue(name);
    return index == kNotFound ? CString() : m_entries.get(index).unit;
}

CString CFrameInfoExtra::GetType(const CString& name) const
{
    unsigned int index = FindValue(name);
    return index == kNotFound ? CString() : m_entries.get(index).type;
}

CString CFrameInfoExtra::GetClass(const CString& name) const
{
    unsigned int index = FindValue(name);
    return index == kNotFound ? CString() : m_entries.get(index).className;
}

void CFrameInfoExtra::Remove(const CString& name)
{
    unsigned int index = FindValue(name);
    if (index != kNotFound) m_entries.remove(index);
}

CFrameInfoExtra::CEntry CFrameInfoExtra::operator[](int index)
{
    if (index < 0 || static_cast<size_t>(index) >= m_entries.size()) return CEntry(this, CString());
    return CEntry(this, m_entries.get(static_cast<size_t>(index)).name);
}

// --- CEntry ---------------------------------------------------------------

bool CFrameInfoExtra::CEntry::Exists() const { return m_list->FindValue(m_name) != kNotFound; }
CString CFrameInfoExtra::CEntry::getValue() const { return m_list->GetValue(m_name); }
CString CFrameInfoExtra::CEntry::getUnit() const { return m_list->GetUnit(m_name); }
CString CFrameInfoExtra::CEntry::getType() const { return m_list->GetType(m_name); }
CString CFrameInfoExtra::CEntry::getClass() const { return m_list->GetClass(m_name); }

CString CFrameInfoExtra::CEntry::setValue(const CString& value)
{
    // Unit and type are cleared with every new value.
    m_list->SetValue(m_name, value, CString(), CString());
    return value;
}

void CFrameInfoExtra::CEntry::setUnit(const CString& unit) { m_list->SetUnit(m_name, unit); }
void CFrameInfoExtra::CEntry::setType(const CString& type) { m_list->SetType(m_name, type); }
void CFrameInfoExtra::CEntry::setClass(const CString& className) { m_list->SetClass(m_name, className); }

CFrameInfoExtra::CEntry::operator int() const { return stoi(getValue()); }
CFrameInfoExtra::CEntry::operator long() const { return static_cast<long>(stoll(getValue(), nullptr, 10)); }
CFrameInfoExtra::CEntry::operator double() const { return stod(getValue()); }

CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(const CString& value)
{
    setValue(value);
    return *this;
}

CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(int value)
{
    setValue(CString::FromFormat("%d", value));
    return *this;
}

CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(long value)
{
    setValue(CString::FromFormat("%ld", value));
    return *this;
}

CFrameInfoExtra::CEntry& CFrameInfoExtra::CEntry::operator=(double value)
{
    setValue(CString::FromFormat("%f", value));
    return *this;
}

} // namespace orv::reduce
