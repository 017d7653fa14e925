#pragma once
// CFrameInfoExtra: the open list of named per-frame items that camera filters
// fill from their frame headers. All values are text.
#include "orv/Array.h"
#include "orv/String.h"

namespace orv::reduce {

class CFrameInfoExtra {
public:
    struct SEntry {
        CString name;
        CString value;
        CString unit;
        CString type;
        CString className; // the entry's class
    };

    // Proxy for one entry by name; the entry need not exist yet.
    class CEntry {
    public:
        CEntry(CFrameInfoExtra* list, const CString& name) : m_list(list), m_name(name) {}
        CEntry(const CEntry&) = default;

        bool Exists() const;
        const CString& name() const { return m_name; }
        CString getValue() const;
        CString getUnit() const;
        CString getType() const;
        CString getClass() const;
        CString setValue(const CString& value);
        void setUnit(const CString& unit);
        void setType(const CString& type);
        void setClass(const CString& className);

        operator CString() const { return getValue(); }
        operator int() const;
        operator long() const;
        operator double() const;

        // Assignment replaces value, unit and type: unit and type become empty.
        CEntry& operator=(const CString& value);
        CEntry& operator=(const char* value) { return *this = CString(value); }
        CEntry& operator=(int value);
        CEntry& operator=(long value);
        CEntry& operator=(double value);
        // Assigns the other entry's value, as a reference would.
        CEntry& operator=(const CEntry& other) { return *this = other.getValue(); }

    private:
        CFrameInfoExtra* m_list;
        CString m_name;
    };

    static constexpr unsigned int kNotFound = ~0u;

    // Index of the entry (case-blind), or kNotFound.
    unsigned int FindValue(const CString& name) const;

    // Set value, unit and type, appending the entry if needed. The names of
    // the fixed items ("Time", "FrameNumber", "Preset", "TimeSource") are
    // silently ignored.
    void Add(const CString& name, const CString& value, const CString& unit, const CString& type);
    void SetValue(const CString& name, const CString& value, const CString& unit, const CString& type);
    // For a filter that refills the list frame after frame with the same
    // distinct names (none of them fixed): SetAt(0 ...), SetAt(1 ...) and so
    // on, then Truncate(count), leave the list as Clear() and Add() of each
    // would, but keep the texts that did not change instead of making them
    // anew. SetAt takes an index up to nValues(); a larger one does nothing.
    void SetAt(unsigned int index, const char* name, const char* value, size_t valueLength, const char* unit,
               const char* type);
    void Truncate(unsigned int count);
    // As SetValue, but an existing value stays and a new entry's is empty.
    void AddPlaceholder(const CString& name, const CString& unit, const CString& type);
    void SetUnit(const CString& name, const CString& unit);
    void SetType(const CString& name, const CString& type);
    void SetClass(const CString& name, const CString& className);

    CString GetValue(const CString& name) const;
    CString GetUnit(const CString& name) const;
    CString GetType(const CString& name) const;
    CString GetClass(const CString& name) const;

    void Remove(const CString& name);
    unsigned int nValues() const { return static_cast<unsigned int>(m_entries.size()); }
    void Clear() { m_entries.clear(); }

    // Proxy of the entry at index; its name is empty when index is out of range.
    CEntry operator[](int index);
    CEntry operator[](const CString& name) { return CEntry(this, name); }
    CEntry operator[](const char* name) { return CEntry(this, CString(name)); }

    // The entry at index, or null.
    const SEntry* EntryAt(unsigned int index) const
    {
        return index < m_entries.size() ? &m_entries.get(index) : nullptr;
    }

private:
    static bool IsFixedName(const CString& name);
    // Index of the entry, appended with empty fields if missing; kNotFound
    // for a fixed name.
    unsigned int Touch(const CString& name);

    TArray<SEntry> m_entries;
};

} // namespace orv::reduce
