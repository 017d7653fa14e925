#pragma once
// Storage of the named class factories: a default entry, the entries in
// registration order, and whether a name may be registered twice.
#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"

namespace orv {

// Creates objects as shared pointers that destroy through the entry's
// destroy function.
template <class T>
struct TNamedClassFactorySharedPtrCreatePolicy {
    using Result = TSharedPtr<T>;
    static Result Create(T* (*create)(), void (*destroy)(T*))
    {
        if (!create) return Result();
        T* object = create();
        if (!object) return Result();
        return Result(object, destroy);
    }
};

struct SNoExtra {};

template <class T, class Policy = TNamedClassFactorySharedPtrCreatePolicy<T>, class Extra = SNoExtra>
class TNamedClassFactory {
public:
    using CreateFunction = T* (*)();
    using DestroyFunction = void (*)(T*);
    using Result = typename Policy::Result;

    struct SEntry {
        CString name;
        CreateFunction create = nullptr;
        DestroyFunction destroy = nullptr;
        Extra extra{};
    };

    explicit TNamedClassFactory(bool allowDuplicates = false) : m_allowDuplicates(allowDuplicates) {}
    virtual ~TNamedClassFactory() = default;

    // Appends an entry; false (and nothing changed) for a name already in use
    // unless duplicates are allowed.
    bool Add(const CString& name, CreateFunction create, DestroyFunction destroy, const Extra& extra)
    {
        if (!m_allowDuplicates && Find(name) >= 0) return false;
        SEntry e;
        e.name = name;
        e.create = create;
        e.destroy = destroy;
        e.extra = extra;
        m_entries.add(e);
        return true;
    }

    // Index of the first entry with this exact name, -1 when none.
    long Find(const CString& name) const
    {
        for (size_t i = 0; i < m_entries.size(); ++i)
            if (m_entries.get(i).name.compare(name) == 0) return static_cast<long>(i);
        return -1;
    }
    bool Has(const CString& name) const { return Find(name) >= 0; }

    // Default entry (empty name, null functions) when the name is unknown.
    const SEntry& Entry(const CString& name) const
    {
        long i = Find(name);
        return i >= 0 ? m_entries.get(static_cast<size_t>(i)) : m_default;
    }

    Result CreateObject(const CString& name) const
    {
        long i = Find(name);
        if (i < 0) return Result();
        const SEntry& e = m_entries.get(static_cast<size_t>(i));
        return Policy::Create(e.create, e.destroy);
    }

    void Names(TArray<CString>& out) const
    {
        out.clear();
        for (const SEntry& e : m_entries) out.add(e.name);
    }

    const TArray<SEntry>& entries() const { return m_entries; }
    bool allowDuplicates() const { return m_allowDuplicates; }

protected:
    SEntry m_default;
    TArray<SEntry> m_entries;
    bool m_allowDuplicates;
};

} // namespace orv
