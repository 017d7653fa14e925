#pragma once
// The registry of converters: finds the converter that produces a wanted unit
// from a recording's base unit. A unit goes to the first converter, in
// registration order, that offers it.
#include "orv/Array.h"
#include "orv/NamedClassFactory.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "reduce/convert/Converter.h"

namespace orv::reduce {

class CReduceObjectArray;

// Appends the units a converter can produce from base for this recording;
// false, with units untouched, when it cannot work on it.
using TSupportedUnitsFunction = bool (*)(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

struct SConverterUnits {
    SGuid id{};
    TArray<EUnit> units;
};

struct SConverterFactoryExtraStuff {
    SGuid id{};
    TSupportedUnitsFunction supportedUnits = nullptr;
};

class CConverterFactory {
public:
    virtual ~CConverterFactory() = default;

    virtual TSharedPtr<IConverter> CreateByName(const CString& name) = 0;
    virtual TSharedPtr<IConverter> CreateByGUID(SGuid id) = 0;
    virtual void GetNames(TArray<CString>& names) = 0;
    virtual bool IsRegistered(const CString& name) = 0;
    virtual SGuid GetGUIDFromName(const CString& name) = 0;
    virtual CString GetNameFromGUID(SGuid id) = 0;
    virtual bool GetConverterUnits(TArray<SConverterUnits>& result, EUnit base, CReduceObjectArray& objs) = 0;
    virtual bool GetSupportedUnits(TArray<EUnit>& result, EUnit base, CReduceObjectArray& objs) = 0;
    virtual bool IsUnitSupported(EUnit unit, EUnit base, CReduceObjectArray& objs) = 0;
    virtual TSharedPtr<IConverter> ConverterForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) = 0;
    virtual SGuid ConverterGUIDForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) = 0;
    // The same with the base unit of the array's source info.
    virtual bool GetConverterUnits(TArray<SConverterUnits>& result, CReduceObjectArray& objs) = 0;
    virtual bool GetSupportedUnits(TArray<EUnit>& result, CReduceObjectArray& objs) = 0;
    virtual bool IsUnitSupported(EUnit unit, CReduceObjectArray& objs) = 0;
    virtual TSharedPtr<IConverter> ConverterForUnit(CReduceObjectArray& objs, EUnit unit) = 0;
    virtual SGuid ConverterGUIDForUnit(CReduceObjectArray& objs, EUnit unit) = 0;
    virtual bool Register(const CString& name, SGuid id, TSupportedUnitsFunction supportedUnits,
                          IConverter* (*create)(), void (*destroy)(IConverter*)) = 0;
};

class CConverterFactoryImpl : public CConverterFactory {
public:
    using CFactory = TNamedClassFactory<IConverter, TNamedClassFactorySharedPtrCreatePolicy<IConverter>,
                                        SConverterFactoryExtraStuff>;

    CConverterFactoryImpl() : m_factory(false) {}

    TSharedPtr<IConverter> CreateByName(const CString& name) override;
    TSharedPtr<IConverter> CreateByGUID(SGuid id) override;
    void GetNames(TArray<CString>& names) override;
    bool IsRegistered(const CString& name) override;
    SGuid GetGUIDFromName(const CString& name) override;
    CString GetNameFromGUID(SGuid id) override;
    bool GetConverterUnits(TArray<SConverterUnits>& result, EUnit base, CReduceObjectArray& objs) override;
    bool GetSupportedUnits(TArray<EUnit>& result, EUnit base, CReduceObjectArray& objs) override;
    bool IsUnitSupported(EUnit unit, EUnit base, CReduceObjectArray& objs) override;
    TSharedPtr<IConverter> ConverterForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) override;
    SGuid ConverterGUIDForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit) override;
    bool GetConverterUnits(TArray<SConverterUnits>& result, CReduceObjectArray& objs) override;
    bool GetSupportedUnits(TArray<EUnit>& result, CReduceObjectArray& objs) override;
    bool IsUnitSupported(EUnit unit, CReduceObjectArray& objs) override;
    TSharedPtr<IConverter> ConverterForUnit(CReduceObjectArray& objs, EUnit unit) override;
    SGuid ConverterGUIDForUnit(CReduceObjectArray& objs, EUnit unit) override;
    // False, adding nothing, for a name already registered.
    bool Register(const CString& name, SGuid id, TSupportedUnitsFunction supportedUnits, IConverter* (*create)(),
                  void (*destroy)(IConverter*)) override;

    const TArray<CFactory::SEntry>& entries() const { return m_factory.entries(); }

private:
    CFactory m_factory;
};

// The process-wide factory, built on first use. Every call runs the plug-in
// loader (once per process) before it returns.
CConverterFactory* converterFactory();

// An identifier from its 16 bytes as stored: the first three fields
// little-endian, then the eight bytes as they stand.
constexpr SGuid GuidFromBytes(const unsigned char (&b)[16])
{
    SGuid g;
    g.Data1 = uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
    g.Data2 = uint16_t(b[4] | b[5] << 8);
    g.Data3 = uint16_t(b[6] | b[7] << 8);
    for (int i = 0; i < 8; ++i) g.Data4[i] = b[8 + i];
    return g;
}

// Registration helper for converter classes: create with new, destroy
// through the class.
template <class T>
struct TConverterCreator {
    static IConverter* Create() { return new T; }
    static void Destroy(IConverter* converter)
    {
        if (T* t = dynamic_cast<T*>(converter)) delete t;
    }
};

} // namespace orv::reduce
