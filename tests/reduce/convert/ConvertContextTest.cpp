#include <gtest/gtest.h>

#include <vector>

#include "reduce/convert/ConvertContext.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "tests/reduce/convert/Recording.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

TEST(ConvertContext, EmptyContextCopies)
{
    CConvertContext ctx;
    TArray<EUnit> units;
    bool presets[1] = {true};
    EXPECT_FALSE(ctx.GetUnits(units));
    EXPECT_FALSE(ctx.SetUnit(unitCounts, tempCelsius));
    EXPECT_FALSE(ctx.Update(presets, 1, 0));
    EXPECT_FALSE(ctx.needToConvert());
    EXPECT_FALSE(ctx.needToApplyNUC());
    EXPECT_TRUE(ctx.isReversable());
    EXPECT_FALSE(ctx.canChangeObjectParameters());

    const unsigned short frame[6] = {1, 2, 3, 4, 5, 65535};
    float out[6] = {};
    unsigned char status[6] = {9, 9, 9, 9, 9, 9};
    ASSERT_TRUE(ctx.Convert(STypedData(frame, dtUInt16), STypedData(out, dtFlt32), status, 6));
    EXPECT_EQ(out[5], 65535.0f);
    EXPECT_EQ(status[5], 0);

    // The region rows gather with the column (3 wide, row 1, columns 1..2).
    ASSERT_TRUE(ctx.Convert(STypedData(frame, dtUInt16), 3, 2, SArea{1, 1, 1, 2}, STypedData(out, dtFlt32), status));
    EXPECT_EQ(out[0], 5.0f);
    EXPECT_EQ(out[1], 65535.0f);
    const unsigned idx[2] = {2, 0};
    status[0] = status[1] = 9;
    ASSERT_TRUE(ctx.Convert(STypedData(frame, dtUInt16), idx, 2, STypedData(out, dtFlt32), status));
    EXPECT_EQ(out[0], 3.0f);
    EXPECT_EQ(status[1], 0);

    // Colour sources have no plain copy.
    unsigned char mask[6] = {1, 1, 1, 1, 1, 1};
    TArray<SScanLine> lines{{0, 0, 1}};
    out[0] = -1.0f;
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtRGB24), idx, 2, STypedData(out, dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtRGB24), 3, 2, SArea{0, 0, 1, 1}, STypedData(out, dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtRGB24), 3, 2, lines, STypedData(out, dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtRGB24), 3, 2, SArea{0, 0, 1, 1}, mask, 3,
                             STypedData(out, dtFlt32), nullptr));
    EXPECT_EQ(out[0], -1.0f);
    // A region reaching outside the frame is refused before anything is
    // written.
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtUInt16), 3, 2, SArea{1, 1, 2, 2}, STypedData(out, dtFlt32), nullptr));
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtUInt16), 3, 2, TArray<SScanLine>{{0, 0, 3}}, STypedData(out, dtFlt32),
                             nullptr));
    EXPECT_FALSE(ctx.Convert(STypedData(frame, dtUInt16), 3, 2, SArea{0, 0, 1, 3}, mask, 3, STypedData(out, dtFlt32),
                             nullptr));
    EXPECT_EQ(out[0], -1.0f);

    float v = 0;
    unsigned char st = 9;
    ASSERT_TRUE(ctx.Convert(2.5f, v, st, 0));
    EXPECT_EQ(v, 2.5f);
    EXPECT_EQ(st, 0);
}

TEST(ConvertContext, UnitChoiceAndConverterLifetime)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitTemperatureFactory, 4, 1, tempCelsius);
    CConvertContext ctx;
    ctx.setReduceObjs(&objs);
    TArray<EUnit> units;
    ASSERT_TRUE(ctx.GetUnits(units));
    ASSERT_EQ(units.size(), 1u);

    // The recording's own unit and scale: no converter.
    ASSERT_TRUE(ctx.SetUnit(unitTemperatureFactory, tempCelsius));
    EXPECT_FALSE(ctx.needToConvert());
    // Another scale of the same unit goes to the temperature converter.
    ASSERT_TRUE(ctx.SetUnit(unitTemperatureFactory, tempKelvin));
    ASSERT_TRUE(ctx.needToConvert());
    EXPECT_EQ(ctx.converter()->name(), CString("TemperatureConverter"));
    bool presets[1] = {true};
    ASSERT_TRUE(ctx.Update(presets, 1, 0));
    float in[2] = {0.0f, 100.0f}, out[2] = {};
    ASSERT_TRUE(ctx.Convert(STypedData(in, dtFlt32), STypedData(out, dtFlt32), nullptr, 2));
    EXPECT_FLOAT_EQ(out[1], 373.15f);
    float back = 0;
    unsigned char st = 0;
    ASSERT_TRUE(ctx.ConvertBack(273.15f, back, st, 0));
    EXPECT_NEAR(back, 0.0f, 1e-4);

    // A unit nobody offers: false, no converter, the old unit kept.
    EXPECT_FALSE(ctx.SetUnit(unitRadianceUser, tempCelsius));
    EXPECT_FALSE(ctx.needToConvert());
    EXPECT_EQ(ctx.unit(), unitTemperatureFactory);
    EXPECT_EQ(ctx.tempType(), tempKelvin);

    // A Counts recording asked for Counts never gets a converter, whatever
    // the scale.
    CReduceObjectArray counts;
    AddSourceInfo(counts, unitCounts, 4, 1);
    ctx.setReduceObjs(&counts);
    ASSERT_TRUE(ctx.SetUnit(unitCounts, tempRankine));
    EXPECT_FALSE(ctx.needToConvert());
}

TEST(ConvertContext, UpdateKeepsItsPresetQuirks)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 4, 1);
    CConvertContext ctx;
    ctx.setReduceObjs(&objs);
    ASSERT_TRUE(ctx.SetUnit(unitCounts, tempCelsius));

    bool eight[8] = {false, false, false, true, true, false, false, true};
    ASSERT_TRUE(ctx.Update(eight, 8, 0));
    EXPECT_EQ(ctx.firstActivePreset(), 3);
    bool nine[9] = {true, true, true, true, true, true, true, true, true};
    EXPECT_FALSE(ctx.Update(nine, 9, 0));
    EXPECT_FALSE(ctx.presetActive()[0]);

    // Preset 1 is switched off unless all eight flags are given; entries
    // beyond numPresets keep what they held.
    bool two[2] = {true, true};
    ASSERT_TRUE(ctx.Update(two, 2, 0));
    EXPECT_TRUE(ctx.presetActive()[0]);
    EXPECT_FALSE(ctx.presetActive()[1]);
    EXPECT_TRUE(ctx.presetActive()[3]);
    EXPECT_TRUE(ctx.presetActive()[7]);
    EXPECT_EQ(ctx.numPresets(), 2);
    EXPECT_EQ(ctx.GuessPresetFromOutput(1.0f), 0);

    bool off[8] = {};
    EXPECT_FALSE(ctx.Update(off, 8, 0));
    EXPECT_EQ(ctx.firstActivePreset(), 0);
    EXPECT_FALSE(ctx.Update(nullptr, 1, 0));

    // Update brings the correction settings into the array.
    EXPECT_TRUE(objs.HasObjectOfType(CAbateCfgReduceObject::typeID, false));
    EXPECT_TRUE(objs.HasObjectOfType(CCorrectionCfgReduceObject::typeID, false));
}

TEST(ConvertContext, ApplyNUCFollowsTheSwitches)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 4, 1);
    CConvertContext ctx;
    ctx.setReduceObjs(&objs);
    unsigned short src[4] = {1000, 1001, 2000, 3000};
    unsigned short dst[4] = {};
    STypedData result;
    EXPECT_FALSE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4, result));

    TSharedPtr<CCorrectionReduceObject> c =
        objs.GetObjectOfType(CCorrectionReduceObject::typeID, 2, true).DynamicCast<CCorrectionReduceObject>();
    c->Create(4, 1, 2, CCorrectionReduceObject::planeAll);
    for (int i = 0; i < 4; ++i) c->gains[i] = 1.5f;
    c->offsets[0] = -100;
    c->replacements[3] = 2; // pixel 3 takes pixel 2's counts
    bool presets[3] = {false, false, true};
    ASSERT_TRUE(ctx.SetUnit(unitCounts, tempCelsius));
    ASSERT_TRUE(ctx.Update(presets, 3, 0));
    ASSERT_TRUE(ctx.needToApplyNUC());
    TSharedPtr<CCorrectionCfgReduceObject> cfg = objs.GetCorrectionCfg(false);
    cfg->clip = false;

    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4, result));
    EXPECT_EQ(result.data, static_cast<void*>(dst));
    EXPECT_EQ(dst[0], 1400); // 1000 * 1.5 - 100
    EXPECT_EQ(dst[1], 1501); // truncated
    EXPECT_EQ(dst[3], 3000); // 2000 * 1.5 through the replacement

    cfg->applyBadPixels = false;
    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4, result));
    EXPECT_EQ(dst[3], 4500);

    cfg->applyGainOffset = false;
    EXPECT_FALSE(ctx.needToApplyNUC());
    dst[0] = 0;
    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4, result));
    EXPECT_EQ(result.data, static_cast<void*>(src));
    EXPECT_EQ(dst[0], 0);
    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4));
    EXPECT_EQ(dst[0], 1000); // the form without result copies

    cfg->applyBadPixels = true;
    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(dst, dtUInt16), 4));
    EXPECT_EQ(dst[0], 1000);
    EXPECT_EQ(dst[3], 2000);

    // A frame larger than the correction's tables is refused; so is a
    // smaller one while bad pixels are replaced, as pixel 3's stand-in need
    // not lie in it. Gain and offset alone correct the pixels there are.
    unsigned short big[5] = {}, bigOut[5] = {7, 7, 7, 7, 7};
    EXPECT_FALSE(ctx.ApplyNUC(STypedData(big, dtUInt16), STypedData(bigOut, dtUInt16), 5, result));
    EXPECT_EQ(bigOut[0], 7);
    cfg->applyGainOffset = true;
    c->replacements[0] = 3;
    EXPECT_FALSE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(bigOut, dtUInt16), 2, result));
    EXPECT_EQ(bigOut[0], 7);
    cfg->applyBadPixels = false;
    ASSERT_TRUE(ctx.ApplyNUC(STypedData(src, dtUInt16), STypedData(bigOut, dtUInt16), 2, result));
    EXPECT_EQ(bigOut[0], 1400);
    EXPECT_EQ(bigOut[2], 7);
}

TEST(ConvertContext, AbateMergesTheActivePresets)
{
    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 3, 1);
    CConvertContext ctx;
    ctx.setReduceObjs(&objs);
    ASSERT_TRUE(ctx.SetUnit(unitCounts, tempCelsius));
    bool presets[3] = {true, false, true};
    ASSERT_TRUE(ctx.Update(presets, 3, 0));

    unsigned short p0[3] = {500, 20000, 16000};
    unsigned short p2[3] = {600, 700, 800};
    STypedData frames[3] = {STypedData(p0, dtUInt16), STypedData(), STypedData(p2, dtUInt16)};
    unsigned short dst[3] = {};
    unsigned char which[3] = {9, 9, 9};
    // Default limits: a preset 0 value above 15000 passes to preset 2.
    ASSERT_TRUE(ctx.Abate(frames, 3, STypedData(dst, dtUInt16), which));
    EXPECT_EQ(dst[0], 500);
    EXPECT_EQ(which[0], 0);
    EXPECT_EQ(dst[1], 700);
    EXPECT_EQ(which[1], 2);

    frames[2].type = dtFlt32;
    EXPECT_FALSE(ctx.Abate(frames, 3, STypedData(dst, dtUInt16), which));
    frames[2] = STypedData(static_cast<void*>(nullptr), dtUInt16); // an active preset without its frame
    EXPECT_FALSE(ctx.Abate(frames, 3, STypedData(dst, dtUInt16), which));
    EXPECT_FALSE(ctx.Abate(nullptr, 3, STypedData(dst, dtUInt16), which));
    frames[2] = STypedData(p2, dtUInt16);
    frames[2].type = dtUInt16;
    float fdst[3];
    EXPECT_FALSE(ctx.Abate(frames, 3, STypedData(fdst, dtFlt32), which));
}

TEST(ConvertContext, OverrideTwiceThenRestore)
{
    CReduceObjectArray objs;
    TSharedPtr<CObjectParametersReduceObject> obj = objs.GetObjectParameters(true);
    obj->source = true;
    obj->emissivity = 0.97f;
    obj->distance = 12.0f;
    obj->atmosphericTransmission = 0.7f;

    CObjectParametersReduceObject a, b, saved;
    a.emissivity = 0.5f;
    b.emissivity = 0.6f;
    b.distance = 3.0f;
    ASSERT_TRUE(CConvertContext::OverrideObjectParameters(objs, a, saved));
    EXPECT_EQ(obj->emissivity, 0.5f);
    EXPECT_FALSE(obj->source);
    ASSERT_TRUE(CConvertContext::OverrideObjectParameters(objs, b, saved));
    EXPECT_EQ(obj->emissivity, 0.6f);
    EXPECT_EQ(obj->atmosphericTransmission, 0.7f); // not part of the group
    EXPECT_TRUE(saved.source);

    ASSERT_TRUE(CConvertContext::RestoreObjectParameters(objs, saved));
    EXPECT_TRUE(obj->source);
    EXPECT_EQ(obj->emissivity, 0.97f);
    EXPECT_EQ(obj->distance, 12.0f);
    // Parameters that are the recording's own are not restored over.
    obj->emissivity = 0.1f;
    EXPECT_FALSE(CConvertContext::RestoreObjectParameters(objs, saved));
    EXPECT_EQ(obj->emissivity, 0.1f);
}
