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

std::vector<uint8_t> Payload(IReduceObject& object)
{
    SMemFile mem;
    EXPECT_TRUE(object.Save(mem.file, 0)) << object.GetName();
    return mem.bytes();
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

    auto abate = TSharedPtr<CAbateCfgReduceObject>(new CAbateCfgReduceObject);
    abate->mode = abateLastBrightEnough;
    abate->lowLimits[3] = 42;
    objects.add(abate);

    auto corr = TSharedPtr<CCorrectionReduceObject>(new CCorrectionReduceObject);
    corr->Create(4, 2, 1, 7);
    corr->gains[3] = 2.0f;
    corr->replacements[0] = 7;
    corr->valid = true;
    objects.add(corr);

    auto cvInfo = TSharedPtr<CCorvaneCameraInfoReduceObject>(new CCorvaneCameraInfoReduceObject);
    cvInfo->intValue = 99;
    cvInfo->flag = true;
    objects.add(cvInfo);

    auto cvCal = TSharedPtr<CCorvaneFactoryCalReduceObject>(new CCorvaneFactoryCalReduceObject);
    cvCal->curveType = 2;
    cvCal->preset = 3;
    objects.add(cvCal);

    auto tessel = TSharedPtr<CTesselFactoryCalReduceObject>(new CTesselFactoryCalReduceObject);
    tessel->SetFloat(tesselRecord::B, 1234.5f);
    objects.add(tessel);

    auto marlowe = TSharedPtr<CMarloweFactoryCalReduceObject>(new CMarloweFactoryCalReduceObject);
    marlowe->rbfR = 3.25;
    marlowe->CreateLUT(2);
    marlowe->tableB[1] = 6.0;
    objects.add(marlowe);

    auto rcal = TSharedPtr<CRCalReduceObject>(new CRCalReduceObject);
    rcal->rcal.SetCoefficients(0, 0, TArray<double>());
    objects.add(rcal);

    auto omInfo = TSharedPtr<COmbriaCameraInfoReduceObject>(new COmbriaCameraInfoReduceObject);
    omInfo->info[100] = 5;
    objects.add(omInfo);

    auto omCal = TSharedPtr<COmbriaFactoryCalReduceObject>(new COmbriaFactoryCalReduceObject);
    omCal->calib.F = 1.25f;
    objects.add(omCal);

    auto source = TSharedPtr<CSourceInfoReduceObject>(new CSourceInfoReduceObject);
    source->camera = "Round Trip";
    source->presets[2].numFrames = 12;
    objects.add(source);

    auto parameters = TSharedPtr<CObjectParametersReduceObject>(new CObjectParametersReduceObject);
    parameters->emissivity = 0.5f;
    objects.add(parameters);

    auto fov = TSharedPtr<CFOVReduceObject>(new CFOVReduceObject);
    fov->valid = true; // carried by the block header, not the payload
    fov->iHFov = 30.0;
    objects.add(fov);

    auto workspace = TSharedPtr<CWorkspaceReduceObject>(new CWorkspaceReduceObject);
    workspace->workspace = "layout";
    objects.add(workspace);

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
        EXPECT_EQ(Payload(*a), Payload(*b)) << a->GetName();
    }
    EXPECT_EQ(loaded.GetCorrection(1, false)->replacements[0], 7u);
    EXPECT_EQ(loaded.GetAbateCfg(false)->lowLimits[3], 42);
}

} // namespace
} // namespace orv::reduce
