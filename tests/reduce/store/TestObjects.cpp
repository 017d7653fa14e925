#include "tests/reduce/store/TestObjects.h"

namespace orv::reduce::test {

bool RegisterTestTypes()
{
    static const bool registered = [] {
        CReduceObjectFactory& f = reduceObjectFactory();
        bool ok = f.Register<CPayloadObject>("StoreTestPayload", kPayloadID);
        ok = f.Register<CFailLoadObject>("StoreTestFailLoad", kFailLoadID) && ok;
        ok = f.Register<CNoSaveObject>("StoreTestNoSave", kNoSaveID) && ok;
        ok = f.Register<CShortLoadObject>("StoreTestShortLoad", kShortLoadID) && ok;
        return ok;
    }();
    return registered;
}

} // namespace orv::reduce::test
