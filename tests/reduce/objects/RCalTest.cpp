#include <gtest/gtest.h>

#include <vector>

#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/CorvaneCameraInfoReduceObject.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"
#include "reduce/objects/OmbriaCameraInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "reduce/objects/WorkspaceReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectArray.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

using test::SMemFile;

// A new object of type T, added to the array.
template <class T>
T& Add(CReduceObjectArray& objects)
{
    auto object = TSharedPtr<T>(new T);
    objects.add(object);
    return *object;
}

TEST(RCalObject, PayloadIsTheCalibrationAndEndsWhereItSays)
{
    CRCalReduceObject o;
    EXPECT_FALSE(o.rcal.HasCoefficients());
    ASSERT_TRUE(o.rcal.SetCoefficients(2, 1, TArray<double>{0.5, 0.01}));
    ASSERT_TRUE(o.rcal.SetBackgroundValue(2, 800));

    SMemFile mem;
    ASSERT_TRUE(o.Save(mem.file, 0));
    const unsigned long size = mem.mem->GetSize();
    mem.file->PutUInt32(42);
    mem.Rewind();
    CRCalReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x10000, 0));
    EXPECT_EQ(mem.file->GetPosition(), static_cast<long long>(size));
    EXPECT_TRUE(back.rcal.HasCoefficients());
    double value = 0;
    EXPECT_TRUE(back.rcal.GetBackgroundValue(2, value));
    EXPECT_DOUBLE_EQ(value, 800.0);

    TSharedPtr<IReduceObject> dup = back.Duplicate();
    auto* d = dynamic_cast<CRCalReduceObject*>(dup.get());
    ASSERT_NE(d, nullptr);
    back.Default();
    EXPECT_FALSE(back.rcal.HasCoefficients());
    EXPECT_TRUE(d->rcal.HasCoefficients());

    // A truncated payload fails.
    std::vector<uint8_t> bytes = mem.bytes();
    bytes.resize(size - 1);
    SMemFile cut(bytes);
    EXPECT_FALSE(back.Load(cut.file, 0x10000, 0));
}

TEST(PersistedObjects, SurviveAnInfoFile)
{
    CReduceObjectArray objects;

    auto& abate = Add<CAbateCfgReduceObject>(objects);
    abate.mode = abateLastBrightEnough;
    abate.lowLimits[3] = 42;

    auto& corr = Add<CCorrectionReduceObject>(objects);
    corr.Create(4, 2, 1, 7);
    corr.gains[3] = 2.0f;
    corr.replacements[0] = 7;
    corr.valid = true;

    auto& cvInfo = Add<CCorvaneCameraInfoReduceObject>(objects);
    cvInfo.intValue = 99;
    cvInfo.flag = true;

    auto& cvCal = Add<CCorvaneFactoryCalReduceObject>(objects);
    cvCal.curveType = 2;
    cvCal.preset = 3;

    auto& tessel = Add<CTesselFactoryCalReduceObject>(objects);
    tessel.SetFloat(tesselRecord::B, 1234.5f);

    auto& marlowe = Add<CMarloweFactoryCalReduceObject>(objects);
    marlowe.rbfR = 3.25;
    marlowe.CreateLUT(2);
    marlowe.tableB[1] = 6.0;

    auto& rcal = Add<CRCalReduceObject>(objects);
    rcal.rcal.SetCoefficients(0, 0, TArray<double>());

    auto& omInfo = Add<COmbriaCameraInfoReduceObject>(objects);
    omInfo.info[100] = 5;

    auto& omCal = Add<COmbriaFactoryCalReduceObject>(objects);
    omCal.calib.F = 1.25f;

    auto& source = Add<CSourceInfoReduceObject>(objects);
    source.camera = "Round Trip";
    source.presets[2].numFrames = 12;

    auto& parameters = Add<CObjectParametersReduceObject>(objects);
    parameters.emissivity = 0.5f;

    auto& fov = Add<CFOVReduceObject>(objects);
    fov.valid = true; // carried by the block header, not the payload
    fov.iHFov = 30.0;

    auto& workspace = Add<CWorkspaceReduceObject>(objects);
    workspace.workspace = "layout";

    SMemFile file;
    ASSERT_TRUE(SaveInfoFile(file.file, objects));
    file.Rewind();
    CReduceObjectArray loaded;
    ASSERT_TRUE(LoadInfoFile(file.file, loaded));
    ASSERT_EQ(loaded.GetSize(), objects.GetSize());
    for (size_t i = 0; i < objects.GetSize(); ++i) {
        TSharedPtr<IReduceObject> a = objects.GetAt(static_cast<unsigned>(i));
        TSharedPtr<IReduceObject> b = loaded.GetAt(static_cast<unsigned>(i));
        ASSERT_TRUE(b);
        EXPECT_STREQ(a->GetName(), b->GetName());
        EXPECT_EQ(a->preset, b->preset);
        EXPECT_EQ(a->valid, b->valid) << a->GetName();
        EXPECT_EQ(test::Saved(*a), test::Saved(*b)) << a->GetName();
        // A copy holds the same payload.
        EXPECT_EQ(test::Saved(*a->Duplicate()), test::Saved(*a)) << a->GetName();
    }
    EXPECT_EQ(loaded.GetCorrection(1, false)->replacements[0], 7u);
    EXPECT_EQ(loaded.GetAbateCfg(false)->lowLimits[3], 42);
}

} // namespace
} // namespace orv::reduce
