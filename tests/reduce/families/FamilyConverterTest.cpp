// The Marlowe and Tessel converters over a recording's objects: the unit
// goes to the family, frames through tables give what the value forms give,
// each pixel takes its preset's table, and missing or broken calibrations
// fail or flag.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "reduce/convert/ConverterFactory.h"
#include "reduce/families/marlowe/MarloweConverter.h"
#include "reduce/families/tessel/TesselConverter.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "tests/reduce/convert/Recording.h"
#include "tests/reduce/families/FamilyFixtures.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

// Source info with presets 0 to 3 available, calibrations for those listed.
void MarloweRecording(CReduceObjectArray& objs, std::initializer_list<int> calibrated)
{
    TSharedPtr<CSourceInfoReduceObject> info = AddSourceInfo(objs, unitCounts, 64, 32);
    for (int i = 0; i < 4; ++i) info->presets[i].available = true;
    const int orders[4] = {2, 5, -1, 1};
    for (int i : calibrated) {
        auto cal = objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, i, true)
                       .DynamicCast<CMarloweFactoryCalReduceObject>();
        MakeMarloweCal(*cal, orders[i]);
        cal->minTemperature = -20.0f + 40.0f * i; // presets for different scenes
        cal->maxTemperature = 60.0f + 40.0f * i;
        cal->valid = true;
    }
    TSharedPtr<CObjectParametersReduceObject> p = objs.GetObjectParameters(true);
    p->emissivity = 0.9f;
    p->distance = 10.0f;
}

void PutTesselCal(CTesselFactoryCalReduceObject& o, const _cal_param_t& c, const _tdrift_par_t& d)
{
    namespace rec = tesselRecord;
    const std::pair<TAt<float>, float> fields[] = {
        {rec::R, c.R}, {rec::B, c.B}, {rec::F, c.F}, {rec::alpha1, c.alpha1}, {rec::alpha2, c.alpha2},
        {rec::beta1, c.beta1}, {rec::beta2, c.beta2}, {rec::X, c.X}, {rec::clampHighTemp, c.clampHighTemp},
        {rec::validHighTemp, c.validHighTemp}, {rec::validLowTemp, c.validLowTemp},
        {rec::clampLowTemp, c.clampLowTemp}, {rec::rangeHighTemp, c.rangeHighTemp},
        {rec::rangeLowTemp, c.rangeLowTemp}, {rec::driftK0, c.driftK0}, {rec::driftK1, c.driftK1},
        {rec::driftT0, d.t0}, {rec::driftK2, d.k2}, {rec::driftA9, c.driftA9}, {rec::driftB9, c.driftB9},
        {rec::driftA10, c.driftA10}, {rec::driftB10, c.driftB10}, {rec::driftC11, c.driftC11},
        {rec::gain, 1.1f}, {rec::offset, 200.0f}};
    for (const auto& [field, value] : fields) o.SetFloat(field, value);
    PutRecordValue<uint16_t>(o.record, rec::adjustMode, 2);
    o.valid = true;
}

void TesselRecording(CReduceObjectArray& objs, std::initializer_list<int> calibrated)
{
    TSharedPtr<CSourceInfoReduceObject> info = AddSourceInfo(objs, unitCounts, 64, 32);
    for (int i = 0; i < 4; ++i) info->presets[i].available = true;
    for (int i : calibrated) {
        auto cal = objs.GetObjectOfType(CTesselFactoryCalReduceObject::typeID, i, true)
                       .DynamicCast<CTesselFactoryCalReduceObject>();
        _cal_param_t c = MakeTesselCal();
        c.R *= 1.0f + 0.1f * i;
        PutTesselCal(*cal, c, MakeTesselDrift());
    }
    objs.GetObjectParameters(true)->emissivity = 0.95f;
}

// Every value form agrees with the frame forms, for each preset; the
// per-pixel preset form takes each pixel's own table.
void CheckFramesAgainstValues(IConverter& conv, CReduceObjectArray& objs, EUnit unit, ETempType scale,
                              std::initializer_list<int> presets)
{
    const unsigned n = 16384;
    std::vector<uint16_t> src(n);
    std::vector<unsigned char> presetIndex(n);
    for (unsigned i = 0; i < n; ++i) {
        src[i] = uint16_t(i);
        presetIndex[i] = uint8_t(*(presets.begin() + i % presets.size()) + (i % 7 == 0 ? 4 : 0));
    }
    bool active[8] = {};
    for (int p : presets) active[p] = true;
    ASSERT_TRUE(conv.Update(unitCounts, tempCelsius, objs, unit, scale, active, 8, 0));
    std::vector<double> out(n), ps(n);
    std::vector<unsigned char> st(n), pst(n);
    ASSERT_TRUE(conv.BaseToOutput(STypedData(src.data(), dtUInt16), STypedData(out.data(), dtFlt64), st.data(), n));
    ASSERT_TRUE(conv.BaseToOutput(STypedData(src.data(), dtUInt16), presetIndex.data(),
                                  STypedData(ps.data(), dtFlt64), pst.data(), n));
    for (unsigned i = 0; i < n; i += 3) {
        float v = 0;
        unsigned char s = 0;
        ASSERT_TRUE(conv.SignalToOutput(uint16_t(i), v, s, 255));
        ASSERT_NEAR(out[i], v, 1e-5 * std::fabs(v) + 1e-6) << i;
        ASSERT_EQ(st[i], s) << i;
        ASSERT_TRUE(conv.SignalToOutput(uint16_t(i), v, s, presetIndex[i] & 3));
        ASSERT_NEAR(ps[i], v, 1e-5 * std::fabs(v) + 1e-6) << i;
        ASSERT_EQ(pst[i], s) << i;
    }
    // A rectangle gives the pixels of the whole frame, in walking order.
    const SArea area{10, 20, 12, 40};
    std::vector<float> part(3 * 21);
    ASSERT_TRUE(conv.BaseToOutput(STypedData(src.data(), dtUInt16), 64, 256, area, STypedData(part.data(), dtFlt32),
                                  nullptr));
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 21; ++c) {
            ASSERT_FLOAT_EQ(part[r * 21 + c], float(out[(10 + r) * 64 + 20 + c]));
        }
}

} // namespace

TEST(MarloweConverter, ConvertsThroughTablesPerPreset)
{
    CReduceObjectArray objs;
    MarloweRecording(objs, {0, 1, 2});
    TSharedPtr<IConverter> found = converterFactory()->ConverterForUnit(unitCounts, objs, unitTemperatureFactory);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->name(), CString("MarloweConverter"));
    CMarloweConverter conv;
    CheckFramesAgainstValues(conv, objs, unitTemperatureFactory, tempFahrenheit, {0, 1, 2});
    CheckFramesAgainstValues(conv, objs, unitRadianceFactory, tempCelsius, {2});
    EXPECT_FLOAT_EQ(objs.GetObjectParameters(false)->atmosphericTransmission, float(conv.conv[2].getUsedAtmTao()));

    // The range form gives the same from the table and directly, also past
    // the table's end.
    std::vector<float> direct(100), table(100), far(10);
    ASSERT_TRUE(conv.SignalToOutput(5000, 5099, direct.data(), nullptr, 2));
    ASSERT_TRUE(conv.UpdateLUT(2));
    ASSERT_TRUE(conv.SignalToOutput(5000, 5099, table.data(), nullptr, 2));
    EXPECT_EQ(direct, table);
    ASSERT_TRUE(conv.SignalToOutput(16380, 16389, far.data(), nullptr, 2));
    EXPECT_EQ(far[0], conv.lut[2][16380]);

    // The way back, and the preset whose range centre lies nearest.
    bool only[8] = {true, true, true};
    ASSERT_TRUE(conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, only, 8, 0));
    float t = 0, back = 0;
    unsigned char s = 0;
    ASSERT_TRUE(conv.BaseToOutput(3000.7f, t, s, 0));
    ASSERT_TRUE(conv.OutputToBase(t, back, s, 0));
    EXPECT_EQ(back, 3000.0f);
    EXPECT_EQ(conv.GuessPresetFromOutput(15.0f), 0);  // centre 20
    EXPECT_EQ(conv.GuessPresetFromOutput(65.0f), 1);  // centre 60
    EXPECT_EQ(conv.GuessPresetFromOutput(500.0f), 2); // centre 100
    EXPECT_FALSE(conv.SignalToOutput(100, t, s, 3));   // no calibration

    // New object parameters change the output after the next table.
    CObjectParametersReduceObject p;
    p.emissivity = 0.5f;
    float before = 0, after = 0;
    conv.SignalToOutput(9000, before, s, 0);
    ASSERT_TRUE(conv.ChangeObjectParameters(&p));
    conv.SignalToOutput(9000, after, s, 0);
    EXPECT_GT(after, before + 5.0f);

    // An active preset without calibration fails the update.
    bool withThree[8] = {true, false, false, true};
    EXPECT_FALSE(conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, withThree, 8, 0));
    CReduceObjectArray none;
    MarloweRecording(none, {});
    TArray<EUnit> units;
    EXPECT_FALSE(CMarloweConverter::SupportedUnits(units, unitCounts, none));
}

TEST(TesselConverter, ConvertsThroughTablesWithDrift)
{
    CReduceObjectArray objs;
    TesselRecording(objs, {0, 1});
    TSharedPtr<IConverter> found = converterFactory()->ConverterForUnit(unitCounts, objs, unitObjectSignal);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->name(), CString("TesselConverter"));
    CTesselConverter conv;
    CheckFramesAgainstValues(conv, objs, unitTemperatureFactory, tempKelvin, {0, 1});
    CheckFramesAgainstValues(conv, objs, unitRadianceFactory, tempCelsius, {1});
    CheckFramesAgainstValues(conv, objs, unitObjectSignal, tempCelsius, {0});

    // The frame's sensors bring the drift in at the next update.
    bool first[8] = {true};
    ASSERT_TRUE(conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, first, 8, 0));
    EXPECT_EQ(conv.conv[0]->driftMode, 0);
    float cold = 0, warm = 0;
    unsigned char s = 0;
    conv.SignalToOutput(8000, cold, s, 0);
    TSharedPtr<CFrameInfoReduceObject> frame = objs.GetFrameInfo(0, true);
    frame->extra.Add(kTesselSensorKeys[0], "318.15", "K", "float");
    frame->extra.Add(kTesselSensorKeys[1], "290", "K", "float");
    frame->extra.Add(kTesselSensorKeys[2], "320", "K", "float");
    ASSERT_TRUE(conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, first, 8, 0));
    EXPECT_EQ(conv.conv[0]->driftMode, 1);
    EXPECT_NE(conv.conv[0]->driftGain, 1.0);
    conv.SignalToOutput(8000, warm, s, 0);
    EXPECT_GT(std::fabs(warm - cold), 0.5f);

    // A zero pixel is no image: bit 32 through the frame form.
    uint16_t pixels[2] = {0, 8000};
    float out[2];
    unsigned char st[2];
    ASSERT_TRUE(conv.BaseToOutput(STypedData(pixels, dtUInt16), STypedData(out, dtFlt32), st, 2));
    EXPECT_TRUE(st[0] & 32);
    EXPECT_EQ(st[1], 0);

    // Only emissivity and distance change.
    CObjectParametersReduceObject p;
    p.emissivity = 0.5f;
    p.reflectedTemp = 400.0f;
    ASSERT_TRUE(conv.ChangeObjectParameters(&p));
    _object_par_t o;
    ASSERT_TRUE(conv.conv[0]->getObjPar(&o));
    EXPECT_EQ(o.emissivity, 0.5f);
    EXPECT_EQ(o.reflectedTemp, 293.15f);

    bool withTwo[8] = {true, false, true};
    EXPECT_FALSE(conv.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, withTwo, 8, 0));
}

TEST(FamilyConverters, BrokenCalibrationsFlagOrFail)
{
    // Zeros, not-a-number and absurd values in the records: every pixel
    // comes out flagged or finite, and nothing traps.
    for (int variant = 0; variant < 4; ++variant) {
        CReduceObjectArray objs;
        TesselRecording(objs, {0});
        MarloweRecording(objs, {0});
        auto t = objs.GetObjectOfType(CTesselFactoryCalReduceObject::typeID, 0, false)
                     .DynamicCast<CTesselFactoryCalReduceObject>();
        auto m = objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, 0, false)
                     .DynamicCast<CMarloweFactoryCalReduceObject>();
        const float bad[4] = {0.0f, std::nanf(""), 1e38f, -1e38f};
        for (TAt<float> f : {tesselRecord::R, tesselRecord::B, tesselRecord::gain, tesselRecord::rangeHighTemp})
            t->SetFloat(f, bad[variant]);
        m->rbfR = m->rbfB = m->coeffs[1] = bad[variant];
        m->minCounts = variant == 3 ? 60000 : m->minCounts;
        CTesselConverter tc;
        CMarloweConverter mc;
        for (IConverter* c : {static_cast<IConverter*>(&tc), static_cast<IConverter*>(&mc)}) {
            bool first[8] = {true};
            ASSERT_TRUE(c->Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, tempCelsius, first, 8, 0));
            std::vector<uint16_t> src(16384);
            for (unsigned i = 0; i < src.size(); ++i) src[i] = uint16_t(i);
            std::vector<float> out(src.size());
            std::vector<unsigned char> st(src.size());
            ASSERT_TRUE(c->BaseToOutput(STypedData(src.data(), dtUInt16), STypedData(out.data(), dtFlt32), st.data(),
                                        unsigned(src.size())));
            for (unsigned i = 0; i < src.size(); ++i) {
                ASSERT_TRUE(st[i] != 0 || std::isfinite(out[i])) << c->name().c_str() << " " << variant << " " << i;
            }
            float v = 0;
            unsigned char s = 0;
            unsigned short back = 0;
            c->BaseToOutput(std::nanf(""), v, s, 0);
            c->OutputToSignal(std::nanf(""), back, s, 0);
            c->OutputToSignal(1e30f, back, s, 0);
        }
    }
}
