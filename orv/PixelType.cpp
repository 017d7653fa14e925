#include "orv/PixelType.h"

#include <mutex>
#include <shared_mutex>

#include "orv/Array.h"

namespace orv {
namespace {

struct SPixelTypeEntry {
    SGuid id;
    CString name;
    unsigned char width = 0;
    EDataType type = dtNoData;
    SGuid base;
};

class CPixelTypeRegistry {
public:
    CPixelTypeRegistry()
    {
        Add(pixelRoot, "Root", 0, dtNoData, SGuid{});
        Add(pixelGrayscale, "Grayscale", 2, dtUInt16, pixelRoot);
        Add(pixelRGB, "RGB", 3, dtRGB24, pixelRoot);
        Add(pixelRGB48, "RGB48", 6, dtRGB48, pixelRoot);
        Add(pixelYUV, "YUV", 2, dtRGB24, pixelRoot);
    }

    bool Register(SGuid id, const CString& name, unsigned char width, EDataType type, SGuid base)
    {
        if (id.isEmpty()) return false;
        std::unique_lock lock(m_lock);
        if (Find(id)) return false;
        Add(id, name, width, type, base);
        return true;
    }

    // Calls f with the entry of id under the read lock; false when unknown.
    template <class F>
    bool With(SGuid id, F&& f) const
    {
        std::shared_lock lock(m_lock);
        const SPixelTypeEntry* e = Find(id);
        if (!e) return false;
        f(*e);
        return true;
    }

    bool IsBase(SGuid id, SGuid base) const
    {
        if (id == base) return true;
        std::shared_lock lock(m_lock);
        // A chain without a cycle visits each entry at most once, so more
        // steps than entries means the links loop.
        for (size_t steps = 0; steps <= m_entries.size(); ++steps) {
            const SPixelTypeEntry* e = Find(id);
            if (!e || e->base.isEmpty()) return false;
            id = e->base;
            if (id == base) return true;
        }
        return false;
    }

    bool FindByName(const CString& name, SGuid& id) const
    {
        std::shared_lock lock(m_lock);
        for (const SPixelTypeEntry& e : m_entries)
            if (e.name == name) {
                id = e.id;
                return true;
            }
        return false;
    }

private:
    void Add(SGuid id, const char* name, unsigned char width, EDataType type, SGuid base)
    {
        Add(id, CString(name), width, type, base);
    }
    void Add(SGuid id, const CString& name, unsigned char width, EDataType type, SGuid base)
    {
        SPixelTypeEntry e;
        e.id = id;
        e.name = name;
        e.width = width;
        e.type = type;
        e.base = base;
        m_entries.add(std::move(e));
    }
    // A few dozen types at most: a linear search is cheaper than a map.
    const SPixelTypeEntry* Find(SGuid id) const
    {
        for (const SPixelTypeEntry& e : m_entries)
            if (e.id == id) return &e;
        return nullptr;
    }

    mutable std::shared_mutex m_lock;
    TArray<SPixelTypeEntry> m_entries;
};

// Built on first use, so that registrars of other libraries that run during
// their own static initialisation find the roots in place.
CPixelTypeRegistry& registry()
{
    static CPixelTypeRegistry instance;
    return instance;
}

} // namespace

bool RegisterPixelType(SGuid id, const CString& name, unsigned char width, EDataType type, SGuid base)
{
    return registry().Register(id, name, width, type, base);
}

unsigned char PixelWidth(SGuid id)
{
    unsigned char width = 0;
    registry().With(id, [&](const SPixelTypeEntry& e) { width = e.width; });
    return width;
}

bool IsPixelBaseType(SGuid id, SGuid base)
{
    return registry().IsBase(id, base);
}

bool IsPixelTypeRegistered(SGuid id)
{
    return registry().With(id, [](const SPixelTypeEntry&) {});
}

CString PixelTypeName(SGuid id)
{
    CString name;
    registry().With(id, [&](const SPixelTypeEntry& e) { name = e.name; });
    return name;
}

EDataType PixelDataType(SGuid id)
{
    EDataType type = dtNoData;
    registry().With(id, [&](const SPixelTypeEntry& e) { type = e.type; });
    return type;
}

SGuid PixelBaseType(SGuid id)
{
    SGuid base;
    registry().With(id, [&](const SPixelTypeEntry& e) { base = e.base; });
    return base;
}

bool FindPixelType(const CString& name, SGuid& id)
{
    return registry().FindByName(name, id);
}

SGuid OldPixelTypeUInt32ToNewPixelType(unsigned int code)
{
    static constexpr SGuid table[] = {pixelGrayscale, pixelRGB, pixelRGB48, pixelYUV};
    return code < sizeof(table) / sizeof(table[0]) ? table[code] : SGuid{};
}

} // namespace orv
