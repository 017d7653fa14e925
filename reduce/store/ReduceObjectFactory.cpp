#include "reduce/store/ReduceObjectFactory.h"

#include "orv/Log.h"
#include "reduce/store/Plugins.h"

namespace orv::reduce {

bool CReduceObjectFactory::Register(const CString& name, SGuid typeID, IReduceObject* (*create)(),
                                    void (*destroy)(IReduceObject*))
{
    if (!m_allowDuplicates && m_entries.size() != 0 && Find(name) >= 0) {
        logger().Write("CReduceObjectFactory::Register: Failed to register %s as id "
                       "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}\n",
                       name.c_str(), typeID.Data1, typeID.Data2, typeID.Data3, typeID.Data4[0], typeID.Data4[1],
                       typeID.Data4[2], typeID.Data4[3], typeID.Data4[4], typeID.Data4[5], typeID.Data4[6],
                       typeID.Data4[7]);
        return false;
    }
    // A second name under an identifier already in use is not detected.
    SReduceObjectFactoryExtraStuff extra;
    extra.typeID = typeID;
    return Add(name, create, destroy, extra);
}

TSharedPtr<IReduceObject> CReduceObjectFactory::CreateByName(const CString& name) const
{
    return CreateObject(name);
}

TSharedPtr<IReduceObject> CReduceObjectFactory::CreateByTypeID(SGuid typeID) const
{
    return CreateByName(GetNameFromTypeID(typeID));
}

void CReduceObjectFactory::GetNames(TArray<CString>& out) const { Names(out); }

bool CReduceObjectFactory::IsRegistered(const CString& name) const { return Find(name) >= 0; }

SGuid CReduceObjectFactory::GetTypeIDFromName(const CString& name) const { return Entry(name).extra.typeID; }

CString CReduceObjectFactory::GetNameFromTypeID(SGuid typeID) const
{
    for (const SEntry& e : m_entries)
        if (e.extra.typeID == typeID) return e.name;
    return CString();
}

CReduceObjectFactory& reduceObjectFactory()
{
    static CReduceObjectFactory factory;
    // Every call, not only the first: the loader itself runs once.
    priv::LoadDLLs();
    return factory;
}

} // namespace orv::reduce
