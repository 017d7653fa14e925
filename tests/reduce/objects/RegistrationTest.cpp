#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reduce/objects/FOVReduceObject.h"
#include "reduce/store/ReduceObjectFactory.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

struct SBuiltin {
    const char* name;
    const char* id;
    bool valid;
    uint8_t preset;
    bool perFrame;
    bool persist;
    uint32_t version;
    bool loadSave;
};

// The built-in types in registration order, with their constructor state.
const SBuiltin kBuiltins[] = {
    {"AbateCfg", "12C99632-E051-4922-B9A3-A7259271C94D", true, 0xFF, false, true, 0x20000, true},
    {"ColorPal", "1D63A136-450C-466B-BC14-7492DBD6C7B4", false, 0xFF, false, true, 0x10000, false},
    {"CorrectionCfg", "191F2684-72A2-407C-8DEC-39DD57B9ABE0", true, 0xFF, false, false, 0x10000, false},
    {"Correction", "4AD3EFCE-D157-4203-BFC2-3979EE047FE4", false, 0xFF, false, true, 0x10001, true},
    {"BrennicFrameInfo", "CEE1192C-7D8C-4633-A143-F304E294AA57", false, 0xFF, false, false, 0x10000, false},
    {"FOV", "42FD8DA7-B376-45C2-8255-B9267E512077", false, 0xFF, false, true, 0x10001, true},
    {"FrameHeader", "ABB88590-614E-41F8-9CE0-6ACA00BBA514", false, 0xFF, false, false, 0x10000, false},
    {"FrameInfo", "881933BF-2488-4D97-A1FE-8D98DA688A3A", true, 0, true, false, 0x10000, false},
    {"CorvaneCameraInfo", "B5C2E5E6-34B3-4171-9039-2270CEFEDB14", false, 0xFF, false, true, 0x10001, true},
    {"CorvaneFactoryCal", "82ECA642-C98D-4083-8965-E92E386BA005", false, 0xFF, false, true, 0x10000, true},
    {"CorvaneFrameInfo", "03873FE5-59D8-4BFC-A759-85BBB1B78A48", false, 0xFF, false, false, 0x10000, false},
    {"Fusion", "4731768C-73A3-4948-A921-5EF39FD1ABD8", false, 0xFF, false, true, 0x10000, false},
    {"TesselFactoryCal", "A2E5AE0D-AB11-489B-96C6-2B1C1A62F451", false, 0xFF, false, true, 0x10001, true},
    {"MarloweFactoryCal", "7ED232C7-2ECF-4552-BB67-D406D5E87E61", false, 0xFF, false, true, 0x10001, true},
    {"ObjectParameters", "616033EC-ED49-485A-B1FE-4F563DC20F52", true, 0xFF, false, true, 0x10001, true},
    {"RCal", "E5D7371A-BD64-448F-8240-6FDFA6FC0110", false, 0xFF, false, true, 0x10000, true},
    {"SourceInfo", "344ED254-76DC-4B4C-B47B-3548A6837C26", true, 0xFF, false, true, 0x20000, true},
    {"OmbriaCameraInfo", "6471D16E-323A-4B50-92F9-5A76FAAA64FC", false, 0xFF, false, true, 0x10000, true},
    {"OmbriaFactoryCal", "245A5CD5-2F58-4D08-90AC-FB6E78C7EC41", false, 0xFF, false, true, 0x10000, true},
    {"VisualPixelData", "AD995914-47A1-4DCD-829C-CB1AAFC595DA", true, 0, false, false, 0x10000, false},
    {"Workspace", "E48740C1-D51E-4531-88A6-030ED91ECEAE", true, 0xFF, false, true, 0x10000, true},
};
constexpr size_t kCount = sizeof kBuiltins / sizeof kBuiltins[0];
static_assert(kCount == 21);

TEST(Registration, NamesInRegistrationOrder)
{
    TArray<CString> names;
    reduceObjectFactory().GetNames(names);
    ASSERT_GE(names.size(), kCount);
    // Plug-in types, if any, come first: they load at the factory's first use.
    const size_t first = names.size() - kCount;
    for (size_t i = 0; i < kCount; ++i) EXPECT_STREQ(names[first + i].c_str(), kBuiltins[i].name) << i;
}

TEST(Registration, EachTypeCreatesItsObjectWithItsConstructorState)
{
    CReduceObjectFactory& factory = reduceObjectFactory();
    for (const SBuiltin& b : kBuiltins) {
        SCOPED_TRACE(b.name);
        const SGuid id = MakeGuid(b.id);
        EXPECT_TRUE(factory.GetTypeIDFromName(b.name) == id);
        EXPECT_STREQ(factory.GetNameFromTypeID(id).c_str(), b.name);

        TSharedPtr<IReduceObject> o = factory.CreateByTypeID(id);
        ASSERT_TRUE(o);
        EXPECT_STREQ(o->GetName(), b.name);
        EXPECT_TRUE(o->GetTypeID() == id);
        EXPECT_EQ(o->valid, b.valid);
        EXPECT_EQ(o->preset, b.preset);
        EXPECT_EQ(o->frame, b.perFrame ? 0u : ~uint64_t(0));
        EXPECT_EQ(o->persist, b.persist);
        EXPECT_EQ(o->version, b.version);

        o->valid = !b.valid;
        o->preset = 3;
        o->version = 0x7777;
        TSharedPtr<IReduceObject> d = o->Duplicate();
        ASSERT_TRUE(d);
        EXPECT_NE(d.get(), o.get());
        EXPECT_TRUE(d->GetTypeID() == id);
        EXPECT_EQ(d->valid, !b.valid);
        EXPECT_EQ(d->preset, 3);
        // Only a frame header carries its version into a copy.
        EXPECT_EQ(d->version, std::string(b.name) == "FrameHeader" ? 0x7777u : b.version);

        if (!b.loadSave) {
            test::SMemFile f;
            EXPECT_FALSE(o->Save(f.file, 0));
            EXPECT_FALSE(o->Load(f.file, b.version, 0));
        }
    }
    // Names are matched with exact case by the factory.
    EXPECT_FALSE(factory.CreateByName("sourceinfo"));
    EXPECT_TRUE(factory.CreateByName("SourceInfo"));
}

TEST(Registration, SecondRegistrationOfANameFails)
{
    TArray<CString> before;
    reduceObjectFactory().GetNames(before);
    EXPECT_FALSE(CFOVReduceObject::Register());
    TArray<CString> after;
    reduceObjectFactory().GetNames(after);
    EXPECT_EQ(after.size(), before.size());
}

} // namespace
} // namespace orv::reduce
