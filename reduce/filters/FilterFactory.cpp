#include "reduce/filters/FilterFactory.h"

#include "reduce/store/Plugins.h"

namespace orv::reduce {

TSharedPtr<IFilter> CFilterFactoryImpl::Create(const CString& name) { return m_factory.CreateObject(name); }

TSharedPtr<IFilter> CFilterFactoryImpl::CreateForPixelType(SGuid pixelType)
{
    // An unhandled type gives the empty name, which no entry bears.
    return Create(GetPixelTypeHandler(pixelType));
}

void CFilterFactoryImpl::GetNames(TArray<CString>& names) { m_factory.Names(names); }

bool CFilterFactoryImpl::IsRegistered(const CString& name) { return m_factory.Has(name); }

bool CFilterFactoryImpl::IsPixelTypeHandled(SGuid pixelType)
{
    for (const CFactory::SEntry& e : m_factory.entries())
        for (const SGuid& id : e.extra.pixelTypes)
            if (id == pixelType) return true;
    return false;
}

CString CFilterFactoryImpl::GetPixelTypeHandler(SGuid pixelType)
{
    // First claimant in registration order; base types are not consulted.
    for (const CFactory::SEntry& e : m_factory.entries())
        for (const SGuid& id : e.extra.pixelTypes)
            if (id == pixelType) return e.name;
    return CString();
}

bool CFilterFactoryImpl::Register(const CString& name, TArray<SGuid> pixelTypes, IFilter* (*create)(),
                                  void (*destroy)(IFilter*))
{
    SFilterFactoryExtraStuff extra;
    extra.pixelTypes = static_cast<TArray<SGuid>&&>(pixelTypes);
    return m_factory.Add(name, create, destroy, extra);
}

const TArray<SGuid>* CFilterFactoryImpl::ClaimedPixelTypes(const CString& name) const
{
    const long i = m_factory.Find(name);
    return i < 0 ? nullptr : &m_factory.entries().get(static_cast<size_t>(i)).extra.pixelTypes;
}

CFilterFactory* filterFactory()
{
    static CFilterFactoryImpl factory;
    // Every call, not only the first: the loader itself runs once.
    priv::LoadDLLs();
    return &factory;
}

} // namespace orv::reduce
