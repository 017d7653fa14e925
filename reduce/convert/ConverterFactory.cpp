#include "reduce/convert/ConverterFactory.h"

#include <new>

#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/Plugins.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

TSharedPtr<IConverter> CConverterFactoryImpl::CreateByName(const CString& name)
{
    return m_factory.CreateObject(name);
}

TSharedPtr<IConverter> CConverterFactoryImpl::CreateByGUID(SGuid id) { return CreateByName(GetNameFromGUID(id)); }

void CConverterFactoryImpl::GetNames(TArray<CString>& names) { m_factory.Names(names); }

bool CConverterFactoryImpl::IsRegistered(const CString& name) { return m_factory.Has(name); }

SGuid CConverterFactoryImpl::GetGUIDFromName(const CString& name)
{
    for (const CFactory::SEntry& e : m_factory.entries())
        if (e.name.compare(name) == 0) return e.extra.id;
    return SGuid{};
}

CString CConverterFactoryImpl::GetNameFromGUID(SGuid id)
{
    for (const CFactory::SEntry& e : m_factory.entries())
        if (e.extra.id == id) return e.name;
    return CString();
}

bool CConverterFactoryImpl::GetConverterUnits(TArray<SConverterUnits>& result, EUnit base, CReduceObjectArray& objs)
{
    for (const CFactory::SEntry& e : m_factory.entries()) {
        if (!e.extra.supportedUnits) continue;
        SConverterUnits units;
        if (e.extra.supportedUnits(units.units, base, objs) && !units.units.empty()) {
            units.id = e.extra.id;
            result.add(static_cast<SConverterUnits&&>(units));
        }
    }
    return !result.empty();
}

bool CConverterFactoryImpl::GetSupportedUnits(TArray<EUnit>& result, EUnit base, CReduceObjectArray& objs)
{
    result.clear();
    TArray<SConverterUnits> converters;
    GetConverterUnits(converters, base, objs);
    for (const SConverterUnits& c : converters)
        for (EUnit unit : c.units)
            if (!result.contains(unit)) result.add(unit);
    // A recording with no fitting converter still offers its own base unit.
    if (result.empty())
        if (TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false)) result.add(info->baseUnit);
    return !result.empty();
}

bool CConverterFactoryImpl::IsUnitSupported(EUnit unit, EUnit base, CReduceObjectArray& objs)
{
    TArray<EUnit> units;
    GetSupportedUnits(units, base, objs);
    return units.contains(unit);
}

TSharedPtr<IConverter> CConverterFactoryImpl::ConverterForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit)
{
    return CreateByGUID(ConverterGUIDForUnit(base, objs, unit));
}

SGuid CConverterFactoryImpl::ConverterGUIDForUnit(EUnit base, CReduceObjectArray& objs, EUnit unit)
{
    // Registration order is the tie-break between converters offering a unit.
    TArray<SConverterUnits> converters;
    GetConverterUnits(converters, base, objs);
    for (const SConverterUnits& c : converters)
        if (c.units.contains(unit)) return c.id;
    return SGuid{};
}

bool CConverterFactoryImpl::GetConverterUnits(TArray<SConverterUnits>& result, CReduceObjectArray& objs)
{
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info) return false;
    return GetConverterUnits(result, info->baseUnit, objs);
}

bool CConverterFactoryImpl::GetSupportedUnits(TArray<EUnit>& result, CReduceObjectArray& objs)
{
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info) return false;
    return GetSupportedUnits(result, info->baseUnit, objs);
}

bool CConverterFactoryImpl::IsUnitSupported(EUnit unit, CReduceObjectArray& objs)
{
    TArray<EUnit> units;
    GetSupportedUnits(units, objs);
    return units.contains(unit);
}

TSharedPtr<IConverter> CConverterFactoryImpl::ConverterForUnit(CReduceObjectArray& objs, EUnit unit)
{
    return CreateByGUID(ConverterGUIDForUnit(objs, unit));
}

SGuid CConverterFactoryImpl::ConverterGUIDForUnit(CReduceObjectArray& objs, EUnit unit)
{
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info) return SGuid{};
    return ConverterGUIDForUnit(info->baseUnit, objs, unit);
}

bool CConverterFactoryImpl::Register(const CString& name, SGuid id, TSupportedUnitsFunction supportedUnits,
                                     IConverter* (*create)(), void (*destroy)(IConverter*))
{
    SConverterFactoryExtraStuff extra;
    extra.id = id;
    extra.supportedUnits = supportedUnits;
    try {
        return m_factory.Add(name, create, destroy, extra);
    } catch (const std::bad_alloc&) {
        // A registration that cannot be stored is dropped and still answers
        // true: intended, registration runs at load where nobody could act
        // on the failure.
        return true;
    }
}

CConverterFactory* converterFactory()
{
    static CConverterFactoryImpl factory;
    priv::LoadDLLs();
    return &factory;
}

} // namespace orv::reduce
