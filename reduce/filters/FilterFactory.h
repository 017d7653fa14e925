#pragma once
// The process-wide factory of frame filters: filters by name, and the filter
// for a recording's pixel type. A pixel type goes to the first filter
// registered for it, so registration order is behaviour (see
// BuiltinFilters.cpp for the built-in order).
#include "orv/Array.h"
#include "orv/NamedClassFactory.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/filters/Filter.h"

namespace orv::reduce {

struct SFilterFactoryExtraStuff {
    // The pixel types the filter claims, in the order given to Register.
    TArray<SGuid> pixelTypes;
};

class CFilterFactory {
public:
    virtual ~CFilterFactory() = default;

    // Null for an unknown name.
    virtual TSharedPtr<IFilter> Create(const CString& name) = 0;
    // Null when no filter claims the type.
    virtual TSharedPtr<IFilter> CreateForPixelType(SGuid pixelType) = 0;
    // All names in registration order.
    virtual void GetNames(TArray<CString>& names) = 0;
    virtual bool IsRegistered(const CString& name) = 0;
    virtual bool IsPixelTypeHandled(SGuid pixelType) = 0;
    // Name of the first filter registered for the type; empty when none.
    virtual CString GetPixelTypeHandler(SGuid pixelType) = 0;
    // False, with nothing changed, for a name already in use. Pixel types are
    // not compared: two filters may claim one.
    virtual bool Register(const CString& name, TArray<SGuid> pixelTypes, IFilter* (*create)(),
                          void (*destroy)(IFilter*)) = 0;

    // Register with a plain `new T` and a destroy function that deletes only
    // a T (nothing for null or another class).
    template <class T>
    bool Register(const CString& name, TArray<SGuid> pixelTypes)
    {
        return Register(name, static_cast<TArray<SGuid>&&>(pixelTypes), &TCreator<T>::Create,
                        &TCreator<T>::Destroy);
    }

    template <class T>
    struct TCreator {
        static IFilter* Create() { return new T; }
        static void Destroy(IFilter* filter)
        {
            if (T* t = dynamic_cast<T*>(filter)) delete t;
        }
    };
};

class CFilterFactoryImpl : public CFilterFactory {
public:
    using CFactory = TNamedClassFactory<IFilter, TNamedClassFactorySharedPtrCreatePolicy<IFilter>,
                                        SFilterFactoryExtraStuff>;

    CFilterFactoryImpl() : m_factory(false) {}

    TSharedPtr<IFilter> Create(const CString& name) override;
    TSharedPtr<IFilter> CreateForPixelType(SGuid pixelType) override;
    void GetNames(TArray<CString>& names) override;
    bool IsRegistered(const CString& name) override;
    bool IsPixelTypeHandled(SGuid pixelType) override;
    CString GetPixelTypeHandler(SGuid pixelType) override;
    bool Register(const CString& name, TArray<SGuid> pixelTypes, IFilter* (*create)(),
                  void (*destroy)(IFilter*)) override;
    using CFilterFactory::Register;

    // The pixel types an entry claims; null for an unknown name.
    const TArray<SGuid>* ClaimedPixelTypes(const CString& name) const;

private:
    CFactory m_factory; // duplicates never allowed
};

// The process-wide factory. Every call runs the plug-in loader (which does
// its work once), so a plug-in may add filters before the first use.
CFilterFactory* filterFactory();

} // namespace orv::reduce
