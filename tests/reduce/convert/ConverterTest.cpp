#include <cmath>
#include <algorithm>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reduce/convert/BuiltinConverters.h"
#include "reduce/convert/RGBConverter.h"
#include "reduce/convert/TemperatureConverter.h"
#include "reduce/convert/UserConverter.h"
#include "tests/reduce/convert/Recording.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

// The base class alone, recording what reaches the index list forms.
class CPlainConverter : public IConverter {
public:
    CString name() override { return "Plain"; }
    SGuid id() override { return MakeGuid("{00000000-0000-0000-0000-000000000001}"); }
    using IConverter::BaseToOutput;
    bool BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                      unsigned char* status) override
    {
        seen.assign(indices, indices + n);
        seenPresets = nullptr;
        return IConverter::BaseToOutput(src, indices, n, dst, status);
    }
    bool BaseToOutput(STypedData src, const unsigned char* presetIndex, const unsigned int* indices, unsigned int n,
                      STypedData dst, unsigned char* status) override
    {
        seen.assign(indices, indices + n);
        seenPresets = presetIndex;
        return IConverter::BaseToOutput(src, presetIndex, indices, n, dst, status);
    }
    std::vector<unsigned> seen;
    const unsigned char* seenPresets = nullptr;
};

void Bind(IConverter& c, EUnit base, ETempType baseTemp, EUnit out, ETempType outTemp)
{
    CReduceObjectArray objs;
    bool presets[1] = {true};
    ASSERT_TRUE(c.Update(base, baseTemp, objs, out, outTemp, presets, 1, 0));
}

} // namespace

TEST(Units, TextsAndParsing)
{
    EXPECT_STREQ(UnitToString(unitCounts), "Counts");
    EXPECT_STREQ(UnitToString(unitTemperatureFactory), "Temperature (Factory)");
    EXPECT_STREQ(UnitToString(unitRGBAverage), "RGB Average");
    EXPECT_STREQ(UnitToString(unitError), "Error");
    EXPECT_STREQ(UnitToString(EUnit(99)), "Error");
    for (int u = 0; u < 12; ++u) EXPECT_EQ(ParseUnit(UnitToString(EUnit(u))), EUnit(u));
    EXPECT_EQ(ParseUnit("radiance (user)"), unitRadianceUser);
    EXPECT_EQ(ParseUnit("RGB (48-BIT)"), unitRGB48);
    EXPECT_EQ(ParseUnit("Error"), unitError);
    EXPECT_EQ(ParseUnit("Counts "), unitError);
    EXPECT_EQ(ParseUnit(nullptr), unitError);
}

TEST(IConverter, UpdateAndIdentityValueForms)
{
    CPlainConverter c;
    CReduceObjectArray objs;
    bool presets[8] = {false, false, true, true, true, true, true, true};
    EXPECT_FALSE(c.Update(unitCounts, tempCelsius, objs, unitCounts, tempCelsius, presets, 9, 0));
    ASSERT_TRUE(c.Update(unitCounts, tempCelsius, objs, unitCounts, tempCelsius, presets, 4, 0));
    EXPECT_EQ(c.firstActivePreset, 2);
    for (int i = 4; i < 8; ++i) EXPECT_FALSE(c.presetActive[i]); // the tail is cleared
    bool none[8] = {};
    ASSERT_TRUE(c.Update(unitCounts, tempCelsius, objs, unitCounts, tempCelsius, none, 8, 0));
    EXPECT_EQ(c.firstActivePreset, 0);

    float out = 0;
    unsigned char st = 9;
    ASSERT_TRUE(c.SignalToOutput(1234, out, st, 0));
    EXPECT_EQ(out, 1234.0f);
    EXPECT_EQ(st, 0);
    unsigned short signal = 0;
    ASSERT_TRUE(c.OutputToSignal(99.9f, signal, st, 0));
    EXPECT_EQ(signal, 99);
    ASSERT_TRUE(c.OutputToSignal(-1.5f, signal, st, 0)); // truncated, then the low 16 bits
    EXPECT_EQ(signal, 65535);
    ASSERT_TRUE(c.OutputToSignal(1e30f, signal, st, 0)); // defined, whatever it gives
    ASSERT_TRUE(c.OutputToSignal(std::nanf(""), signal, st, 0));
    float range[3] = {-1, -1, -1};
    unsigned char status[3] = {9, 9, 9};
    ASSERT_TRUE(c.SignalToOutput(10, 9, range, status, 0)); // empty range: nothing written
    EXPECT_EQ(range[0], -1.0f);
    EXPECT_EQ(status[0], 9);
    ASSERT_TRUE(c.SignalToOutput(65534, 65535, range, status, 0));
    EXPECT_EQ(range[1], 65535.0f);
    EXPECT_EQ(status[1], 0);
    EXPECT_EQ(range[2], -1.0f);

    Bind(c, unitCounts, tempCelsius, unitRadianceUser, tempCelsius);
    EXPECT_FALSE(c.SignalToOutput(1, out, st, 0));
    EXPECT_FALSE(c.OutputToSignal(1, signal, st, 0));
    EXPECT_FALSE(c.BaseToOutput(1.0f, out, st, 0));
    EXPECT_FALSE(c.canUseLUT());
    EXPECT_FALSE(c.isReversable());
    EXPECT_FALSE(c.canChangeObjectParameters());
    EXPECT_EQ(c.GuessPresetFromOutput(3.0f), 0);
}

TEST(IConverter, ScaleOnlyConversions)
{
    struct SCase {
        ETempType from, to;
        float in;
        double expected;
    };
    // Values worked out by hand from the definitions of the scales.
    const SCase cases[] = {
        {tempCelsius, tempKelvin, 100.0f, 373.15},       {tempCelsius, tempRankine, 100.0f, 671.67},
        {tempCelsius, tempFahrenheit, 100.0f, 212.0},    {tempKelvin, tempFahrenheit, 0.0f, -459.67},
        {tempKelvin, tempRankine, 300.0f, 540.0},        {tempKelvin, tempCelsius, 0.0f, -273.15},
        {tempRankine, tempFahrenheit, 0.0f, -459.67},    {tempRankine, tempKelvin, 540.0f, 300.0},
        {tempRankine, tempCelsius, 491.67f, 0.0},        {tempFahrenheit, tempKelvin, 32.0f, 273.15},
        {tempFahrenheit, tempRankine, 32.0f, 491.67},    {tempFahrenheit, tempCelsius, 212.0f, 100.0},
        {tempKelvin, tempKelvin, 12.5f, 12.5},
    };
    CPlainConverter c;
    for (const SCase& k : cases) {
        Bind(c, unitTemperatureUser, k.from, unitTemperatureUser, k.to);
        float out = 0, back = 0;
        unsigned char st = 9;
        ASSERT_TRUE(c.BaseToOutput(k.in, out, st, 0));
        // The float input is itself rounded, so compare with a tolerance scaled to the value.
        EXPECT_NEAR(out, k.expected, 1e-4 * std::max(1.0, std::fabs(k.expected))) << k.from << " -> " << k.to;
        EXPECT_EQ(st, 0);
        ASSERT_TRUE(c.OutputToBase(out, back, st, 0));
        EXPECT_NEAR(back, k.in, 1e-3);

        double arrayOut[2] = {};
        float arrayIn[2] = {k.in, k.in};
        unsigned char status[2] = {5, 5};
        ASSERT_TRUE(c.BaseToOutput(STypedData(arrayIn, dtFlt32), STypedData(arrayOut, dtFlt64), status, 2));
        EXPECT_NEAR(arrayOut[1], k.expected, 1e-4);
        EXPECT_EQ(status[1], 0);
    }
    // Only the scale may differ, not the unit.
    Bind(c, unitTemperatureUser, tempCelsius, unitTemperatureFactory, tempCelsius);
    float out = 0;
    unsigned char st = 0;
    EXPECT_FALSE(c.BaseToOutput(1.0f, out, st, 0));
    EXPECT_FALSE(c.OutputToBase(1.0f, out, st, 0));
    float v[1] = {1};
    EXPECT_FALSE(c.BaseToOutput(STypedData(v, dtFlt32), STypedData(v, dtFlt32), nullptr, 1));
    // A non-temperature unit is copied as it stands.
    Bind(c, unitRadianceUser, tempCelsius, unitRadianceUser, tempKelvin);
    ASSERT_TRUE(c.BaseToOutput(1.5f, out, st, 0));
    EXPECT_EQ(out, 1.5f);
}

TEST(IConverter, RegionFormsBuildIndexListsThatTheBaseIgnores)
{
    CPlainConverter c;
    Bind(c, unitCounts, tempCelsius, unitCounts, tempCelsius);
    const unsigned short w = 6, h = 5;
    unsigned short frame[w * h];
    for (unsigned i = 0; i < w * h; ++i) frame[i] = static_cast<unsigned short>(100 + i);
    float out[w * h] = {};
    STypedData src(frame, dtUInt16), dst(out, dtFlt32);

    ASSERT_TRUE(c.BaseToOutput(src, w, h, SArea{1, 2, 2, 4}, dst, nullptr));
    EXPECT_EQ(c.seen, (std::vector<unsigned>{8, 9, 10, 14, 15, 16}));
    // The base converts the first n elements, not the listed ones: intended.
    EXPECT_EQ(out[0], 100.0f);
    EXPECT_EQ(out[5], 105.0f);
    EXPECT_EQ(out[6], 0.0f);

    TArray<SScanLine> lines{{4, 5, 5}, {0, 1, 3}, {2, 3, 2}};
    unsigned char presets[w * h] = {};
    ASSERT_TRUE(c.BaseToOutput(src, presets, w, h, lines, dst, nullptr));
    EXPECT_EQ(c.seen, (std::vector<unsigned>{29, 1, 2, 3}));
    EXPECT_EQ(c.seenPresets, presets);

    const unsigned stride = 8;
    unsigned char mask[stride * h] = {};
    mask[1 * stride + 0] = 1;
    mask[1 * stride + 5] = 3;
    mask[3 * stride + 2] = 1;
    mask[4 * stride + 2] = 1; // outside the area
    ASSERT_TRUE(c.BaseToOutput(src, w, h, SArea{0, 0, 3, 5}, mask, stride, dst, nullptr));
    EXPECT_EQ(c.seen, (std::vector<unsigned>{6, 11, 20}));
    EXPECT_EQ(IConverter::CalcNumPixels(w, h, SArea{0, 0, 3, 5}, mask, stride), 3u);

    // An inverted area still calls, with nothing to do.
    c.seen = {1};
    ASSERT_TRUE(c.BaseToOutput(src, w, h, SArea{3, 0, 2, 5}, dst, nullptr));
    EXPECT_TRUE(c.seen.empty());
    EXPECT_EQ(IConverter::CalcNumPixels(w, h, SArea{3, 0, 2, 5}), 0u);
    EXPECT_EQ(IConverter::CalcNumPixels(w, h, lines), 4u);
    // Crossed columns are empty too, not a wrapped count.
    EXPECT_EQ(IConverter::CalcNumPixels(w, h, SArea{0, 3, 1, 2}), 0u);
    EXPECT_EQ(IConverter::CalcNumPixels(w, h, TArray<SScanLine>{{0, 3, 1}, {1, 0, 0}}), 1u);
}

namespace {
bool gOffersTwo(TArray<EUnit>& u, EUnit base, CReduceObjectArray&)
{
    if (base != unitCounts) return false;
    u.add(unitRadianceFactory);
    u.add(unitTemperatureFactory);
    return true;
}
bool gOffersFive(TArray<EUnit>& u, EUnit base, CReduceObjectArray&)
{
    if (base != unitCounts) return false;
    u.add(unitTemperatureFactory);
    u.add(unitObjectSignal);
    return true;
}
bool gOffersNothing(TArray<EUnit>&, EUnit, CReduceObjectArray&) { return true; }
int gCreated = 0;
int gDestroyed = 0;
IConverter* CreatePlain()
{
    ++gCreated;
    return new CPlainConverter;
}
void DestroyPlain(IConverter* c)
{
    ++gDestroyed;
    delete c;
}
const SGuid kFirst = MakeGuid("{11111111-0000-0000-0000-000000000000}");
const SGuid kSecond = MakeGuid("{22222222-0000-0000-0000-000000000000}");
} // namespace

TEST(ConverterFactory, RegistrationOrderDecidesTheUnit)
{
    CConverterFactoryImpl f;
    ASSERT_TRUE(f.Register("Empty", MakeGuid("{33333333-0000-0000-0000-000000000000}"), &gOffersNothing, &CreatePlain,
                           &DestroyPlain));
    ASSERT_TRUE(f.Register("First", kFirst, &gOffersTwo, &CreatePlain, &DestroyPlain));
    ASSERT_TRUE(f.Register("Second", kSecond, &gOffersFive, &CreatePlain, &DestroyPlain));
    EXPECT_FALSE(f.Register("First", kSecond, &gOffersFive, &CreatePlain, &DestroyPlain));
    EXPECT_EQ(f.GetGUIDFromName("First"), kFirst); // the first registration stays
    EXPECT_TRUE(f.GetGUIDFromName("first").isEmpty());
    EXPECT_EQ(f.GetNameFromGUID(kSecond), CString("Second"));
    EXPECT_EQ(f.GetNameFromGUID(MakeGuid("{44444444-0000-0000-0000-000000000000}")), CString(""));
    TArray<CString> names;
    f.GetNames(names);
    ASSERT_EQ(names.size(), 3u);
    EXPECT_EQ(names[2], CString("Second"));

    CReduceObjectArray objs;
    AddSourceInfo(objs, unitCounts, 2, 2);
    TArray<SConverterUnits> converters;
    ASSERT_TRUE(f.GetConverterUnits(converters, objs)); // an empty unit list is left out
    ASSERT_EQ(converters.size(), 2u);
    EXPECT_EQ(converters[0].id, kFirst);
    TArray<EUnit> units;
    ASSERT_TRUE(f.GetSupportedUnits(units, objs));
    ASSERT_EQ(units.size(), 3u);
    EXPECT_EQ(units[0], unitRadianceFactory);
    EXPECT_EQ(units[1], unitTemperatureFactory);
    EXPECT_EQ(units[2], unitObjectSignal);
    EXPECT_EQ(f.ConverterGUIDForUnit(objs, unitTemperatureFactory), kFirst);
    EXPECT_EQ(f.ConverterGUIDForUnit(objs, unitObjectSignal), kSecond);
    EXPECT_TRUE(f.ConverterGUIDForUnit(objs, unitRGB24).isEmpty());
    EXPECT_TRUE(f.IsUnitSupported(unitObjectSignal, objs));
    EXPECT_FALSE(f.IsUnitSupported(unitCounts, objs));
    EXPECT_TRUE(f.ConverterForUnit(objs, unitRGB24).isNull());
    {
        TSharedPtr<IConverter> c = f.ConverterForUnit(objs, unitObjectSignal);
        ASSERT_FALSE(c.isNull());
        EXPECT_EQ(gCreated, 1);
    }
    EXPECT_EQ(gDestroyed, 1); // the entry's destroy function is the deleter
    EXPECT_TRUE(f.CreateByName("Nope").isNull());

    // No fitting converter: the base unit of the recording; none without one.
    CReduceObjectArray rgb;
    AddSourceInfo(rgb, unitRGB24, 2, 2);
    ASSERT_TRUE(f.GetSupportedUnits(units, rgb));
    ASSERT_EQ(units.size(), 1u);
    EXPECT_EQ(units[0], unitRGB24);
    CReduceObjectArray empty;
    EXPECT_FALSE(f.GetSupportedUnits(units, empty)); // no source info: the result is left as it was
    ASSERT_EQ(units.size(), 1u);
    EXPECT_EQ(units[0], unitRGB24);
    EXPECT_FALSE(f.GetConverterUnits(converters, empty));
    EXPECT_TRUE(f.ConverterGUIDForUnit(empty, unitObjectSignal).isEmpty());
    EXPECT_TRUE(f.IsUnitSupported(unitObjectSignal, unitCounts, empty));
}

TEST(ConverterFactory, BuiltinsInTheirPlaces)
{
    // The family converters of the camera calibrations take the gaps.
    const char* order[] = {"CorvaneConverter", "TesselConverter",      "MarloweConverter", "RGBConverter",
                           "OmbriaConverter",  "TemperatureConverter", "UserConverter"};
    TArray<CString> names;
    converterFactory()->GetNames(names);
    size_t at = 0;
    long previous = -1;
    for (const char* name : order) {
        const long i = names.find(CString(name));
        if (i < 0) continue;
        EXPECT_GT(i, previous) << name;
        previous = i;
        EXPECT_STREQ(builtinConverters[at++].name, name);
    }
    EXPECT_EQ(at, builtinConverterCount);
    EXPECT_GE(at, 3u);

    // Identifiers as stored.
    const unsigned char rgb[] = {0x41, 0x47, 0xab, 0x40, 0xc8, 0xc1, 0xc4, 0x4e,
                                 0xbc, 0x94, 0xca, 0x31, 0x31, 0xe3, 0xdc, 0xf6};
    const unsigned char temp[] = {0x38, 0xab, 0x1f, 0xdc, 0x21, 0x05, 0xbb, 0x4a,
                                  0x8e, 0xa1, 0x7e, 0xd6, 0xb6, 0xb8, 0x35, 0x92};
    const unsigned char user[] = {0x62, 0xc0, 0xa4, 0x10, 0xd2, 0x25, 0xef, 0x4e,
                                  0xa1, 0x1c, 0xba, 0x8f, 0x7c, 0xa0, 0x0b, 0x35};
    SGuid id = converterFactory()->GetGUIDFromName("RGBConverter");
    EXPECT_EQ(std::memcmp(&id, rgb, 16), 0);
    id = converterFactory()->GetGUIDFromName("TemperatureConverter");
    EXPECT_EQ(std::memcmp(&id, temp, 16), 0);
    id = converterFactory()->GetGUIDFromName("UserConverter");
    EXPECT_EQ(std::memcmp(&id, user, 16), 0);
    TSharedPtr<IConverter> c = converterFactory()->CreateByGUID(id);
    ASSERT_FALSE(c.isNull());
    EXPECT_EQ(c->name(), CString("UserConverter"));

    // Offered units by base unit.
    TArray<EUnit> units;
    CReduceObjectArray t;
    AddSourceInfo(t, unitTemperatureFactory, 2, 2);
    ASSERT_TRUE(converterFactory()->GetSupportedUnits(units, t));
    ASSERT_EQ(units.size(), 1u);
    EXPECT_EQ(units[0], unitTemperatureFactory);
    CReduceObjectArray colour;
    AddSourceInfo(colour, unitRGB48, 2, 2);
    ASSERT_TRUE(converterFactory()->GetSupportedUnits(units, colour));
    ASSERT_EQ(units.size(), 4u);
    EXPECT_EQ(units[0], unitRedChannel);
    EXPECT_EQ(units[3], unitRGBAverage);
    CReduceObjectArray counts;
    AddSourceInfo(counts, unitCounts, 2, 2);
    ASSERT_TRUE(converterFactory()->GetSupportedUnits(units, counts));
    ASSERT_EQ(units.size(), 1u);
    EXPECT_EQ(units[0], unitCounts);
}

TEST(TemperatureConverter, ScaleChangeOverArraysAndLists)
{
    TArray<EUnit> units;
    CReduceObjectArray objs;
    EXPECT_FALSE(CTemperatureConverter::SupportedUnits(units, unitCounts, objs));
    EXPECT_TRUE(units.empty());
    ASSERT_TRUE(CTemperatureConverter::SupportedUnits(units, unitTemperatureUser, objs));
    EXPECT_EQ(units[0], unitTemperatureUser);

    CTemperatureConverter c;
    Bind(c, unitTemperatureFactory, tempCelsius, unitTemperatureFactory, tempCelsius);
    float in[4] = {-40.0f, 0.0f, 36.6f, 100.0f};
    float out[4] = {};
    unsigned char status[4] = {1, 2, 3, 4};
    ASSERT_TRUE(c.BaseToOutput(STypedData(in, dtFlt32), STypedData(out, dtFlt32), status, 4));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(out[i], in[i]);
        EXPECT_EQ(status[i], 0);
    }

    Bind(c, unitTemperatureFactory, tempCelsius, unitTemperatureFactory, tempFahrenheit);
    const unsigned idx[2] = {3, 0};
    double listed[2] = {};
    ASSERT_TRUE(c.BaseToOutput(STypedData(in, dtFlt32), idx, 2, STypedData(listed, dtFlt64), nullptr));
    EXPECT_NEAR(listed[0], 212.0, 1e-9);
    EXPECT_NEAR(listed[1], -40.0, 1e-9);
    EXPECT_FALSE(c.BaseToOutput(STypedData(in, dtRGB24), idx, 2, STypedData(listed, dtFlt64), nullptr));

    // Region forms come through the listed form, so they convert the region.
    short frame[6] = {0, 10, 20, 30, 40, 50};
    int region[2] = {};
    ASSERT_TRUE(c.BaseToOutput(STypedData(frame, dtInt16), 3, 2, SArea{1, 1, 1, 2}, STypedData(region, dtInt32),
                               status));
    EXPECT_EQ(region[0], 104); // 40 C = 104 F
    EXPECT_EQ(region[1], 122);
}

TEST(RGBConverter, ChannelsAndAverage)
{
    TArray<EUnit> units;
    CReduceObjectArray objs;
    EXPECT_FALSE(CRGBConverter::SupportedUnits(units, unitCounts, objs));
    ASSERT_TRUE(CRGBConverter::SupportedUnits(units, unitRGB24, objs));
    ASSERT_EQ(units.size(), 4u);

    CRGBConverter c;
    unsigned char rgb[6] = {255, 0, 1, 10, 20, 30};
    float out[2] = {};
    unsigned char status[2] = {7, 7};
    Bind(c, unitRGB24, tempCelsius, unitRGBAverage, tempCelsius);
    ASSERT_TRUE(c.BaseToOutput(STypedData(rgb, dtRGB24), STypedData(out, dtFlt32), status, 2));
    EXPECT_EQ(out[0], 256.0f / 3.0f);
    EXPECT_EQ(out[1], 20.0f);
    EXPECT_EQ(status[0], 0);
    double d[2];
    EXPECT_FALSE(c.BaseToOutput(STypedData(rgb, dtRGB24), STypedData(d, dtFlt64), status, 2));
    EXPECT_FALSE(c.BaseToOutput(STypedData(rgb, dtUInt8), STypedData(out, dtFlt32), status, 2));
    float v = 0;
    unsigned char st = 0;
    EXPECT_FALSE(c.BaseToOutput(1.0f, v, st, 0));

    unsigned short deep[9] = {1, 2, 3, 40000, 50000, 60000, 7, 8, 9};
    Bind(c, unitRGB48, tempCelsius, unitGreenChannel, tempCelsius);
    const unsigned idx[2] = {2, 1};
    ASSERT_TRUE(c.BaseToOutput(STypedData(deep, dtRGB48), idx, 2, STypedData(out, dtFlt32), nullptr));
    EXPECT_EQ(out[0], 8.0f);
    EXPECT_EQ(out[1], 50000.0f);
    Bind(c, unitRGB48, tempCelsius, unitBlueChannel, tempCelsius);
    ASSERT_TRUE(c.BaseToOutput(STypedData(deep, dtRGB48), 3, 1, SArea{0, 1, 0, 2}, STypedData(out, dtFlt32), nullptr));
    EXPECT_EQ(out[0], 60000.0f);
    EXPECT_EQ(out[1], 9.0f);
}
