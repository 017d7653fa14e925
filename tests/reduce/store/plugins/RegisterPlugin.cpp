// A plug-in that registers one reduce object type. Its init also calls the
// factory accessor again, which must not recurse into the loader.
#include "reduce/store/ReduceObjectFactory.h"

namespace {

class CPluginObject : public orv::reduce::IReduceObject {
public:
    static constexpr orv::SGuid typeID = orv::MakeGuid("{5A1E0001-0000-4000-8000-00000000B001}");
    orv::SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return "StorePluginObject"; }
    orv::TSharedPtr<orv::reduce::IReduceObject> Duplicate() const override
    {
        return orv::reduce::reduceObjectFactory().CreateByTypeID(typeID);
    }
};

int gInitCount = 0;

} // namespace

extern "C" __attribute__((visibility("default"))) int orvTestPluginInitCount() { return gInitCount; }

extern "C" __attribute__((visibility("default"))) bool orvInitPlugin()
{
    ++gInitCount;
    return orv::reduce::reduceObjectFactory().Register<CPluginObject>("StorePluginObject", CPluginObject::typeID);
}
