#pragma once
// The process-wide factory of reduce object types, by name and by identifier.
#include "orv/NamedClassFactory.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

struct SReduceObjectFactoryExtraStuff {
    SGuid typeID{};
};

class CReduceObjectFactory
    : public TNamedClassFactory<IReduceObject, TNamedClassFactorySharedPtrCreatePolicy<IReduceObject>,
                                SReduceObjectFactoryExtraStuff> {
public:
    CReduceObjectFactory() : TNamedClassFactory(false) {}

    // False, with a log line, for a name already registered.
    bool Register(const CString& name, SGuid typeID, IReduceObject* (*create)(), void (*destroy)(IReduceObject*));

    template <class T>
    bool Register(const CString& name, SGuid typeID)
    {
        return Register(name, typeID, &TCreator<T>::Create, &TCreator<T>::Destroy);
    }

    TSharedPtr<IReduceObject> CreateByName(const CString& name) const;
    TSharedPtr<IReduceObject> CreateByTypeID(SGuid typeID) const;
    void GetNames(TArray<CString>& out) const;
    bool IsRegistered(const CString& name) const;
    SGuid GetTypeIDFromName(const CString& name) const;
    CString GetNameFromTypeID(SGuid typeID) const;

private:
    template <class T>
    struct TCreator {
        static IReduceObject* Create() { return new T; }
        static void Destroy(IReduceObject* object)
        {
            if (T* t = dynamic_cast<T*>(object)) delete t;
        }
    };
};

// Runs the plug-in loader (once) before it returns.
CReduceObjectFactory& reduceObjectFactory();

} // namespace orv::reduce
