// The Corvane family against its curve evaluated here from scratch: every
// level of three presets interleaved pixel by pixel, two scenes, the limits'
// flags, the inverse and the integration time, and broken curves.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "reduce/convert/ConverterFactory.h"
#include "reduce/families/corvane/CorvaneConverter.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

namespace {

struct SCurve {
    unsigned type;
    double a, b, c, d, e, f, g, microseconds;
    unsigned minCounts, maxCounts;
    double minTemp, maxTemp;
};

// 1 / T = a + b ln(v): b = -1 / 1400 K, 300 K near level 20000 at 200 us.
const SCurve kCurves[3] = {
    {2, 0.016986, -1.0 / 1400, 150.0, 0.0, 0.0, 0.5, 0.0, 200.0, 200, 64000, 240.0, 420.0},
    {3, 0.0175, -1.0 / 1400, -80.0, 1e-5, 2.5, 0.8, 2e-10, 100.0, 500, 60000, 250.0, 380.0},
    {2, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0, 0, 0.0, 0.0}, // no calibration object at all
};

struct SScene {
    double emissivity, reflected, transmission, atmosphere;
};
const SScene kScenes[2] = {{0.93, 295.0, 0.0, 290.0}, {0.71, 310.0, 0.82, 300.0}}; // 0: no transmission given

double Kelvin(const SCurve& k, double L)
{
    const double s = k.d + k.microseconds * 1e-6, x = (L + k.c) / s / k.f;
    const double v = k.e + x + (k.type == 3 ? k.g * x * x : 0.0);
    return v > 0 ? 1.0 / (k.a + k.b * std::log(v)) : 0.0;
}

// The level of T by bisection on the monotonic curve: no inverse formula.
double Level(const SCurve& k, double T)
{
    double lo = -k.c + 1e-3, hi = 1e6; // below the curve's pole
    for (int i = 0; i < 200; ++i) {
        const double mid = 0.5 * (lo + hi);
        (Kelvin(k, mid) < T ? lo : hi) = mid;
    }
    return 0.5 * (lo + hi);
}

void Fill(CCorvaneFactoryCalReduceObject& o, const SCurve& k)
{
    o.curveType = k.type;
    o.a = float(k.a);
    o.b = float(k.b);
    o.c = float(k.c);
    o.d = float(k.d);
    o.e = float(k.e);
    o.f = float(k.f);
    o.g = float(k.g);
    o.minCounts = k.minCounts;
    o.maxCounts = k.maxCounts;
    o.minTemp = float(k.minTemp);
    o.maxTemp = float(k.maxTemp);
    o.integrationTime = float(k.microseconds);
    o.valid = true;
}

// The curves as stored: floats.
SCurve Stored(const SCurve& k)
{
    SCurve s = k;
    for (double* v : {&s.a, &s.b, &s.c, &s.d, &s.e, &s.f, &s.g, &s.microseconds, &s.minTemp, &s.maxTemp})
        *v = float(*v);
    return s;
}

struct SRecording {
    CReduceObjectArray objs;
    explicit SRecording(int calibrated)
    {
        for (int p = 0; p < calibrated; ++p)
            Fill(*objs.GetObjectOfType(CCorvaneFactoryCalReduceObject::typeID, p, true)
                      .DynamicCast<CCorvaneFactoryCalReduceObject>(),
                 kCurves[p]);
    }
    void Scene(const SScene& s)
    {
        TSharedPtr<CObjectParametersReduceObject> p = objs.GetObjectParameters(true);
        p->emissivity = float(s.emissivity);
        p->reflectedTemp = float(s.reflected);
        p->estAtmosphericTransmission = float(s.transmission);
        p->atmosphereTemp = float(s.atmosphere);
        p->valid = true;
    }
};

bool Bind(CCorvaneConverter& c, CReduceObjectArray& objs, ETempType type, int presets = 3)
{
    bool active[3] = {true, true, true};
    return c.Update(unitCounts, tempCelsius, objs, unitTemperatureFactory, type, active,
                    static_cast<unsigned char>(presets), 0);
}

} // namespace

TEST(Corvane, EveryLevelOfInterleavedPresetsAgainstTheCurve)
{
    std::vector<unsigned short> levels(65536 * 3);
    std::vector<unsigned char> presets(levels.size());
    for (size_t i = 0; i < levels.size(); ++i) {
        levels[i] = static_cast<unsigned short>(i / 3);
        presets[i] = static_cast<unsigned char>(i % 3);
    }
    std::vector<float> out(levels.size());
    std::vector<unsigned char> status(levels.size());
    for (const SScene& scene : kScenes) {
        SRecording rec(2);
        rec.Scene(scene);
        CCorvaneConverter conv;
        ASSERT_TRUE(Bind(conv, rec.objs, tempCelsius));
        ASSERT_TRUE(conv.BaseToOutput(STypedData(levels.data(), dtUInt16), presets.data(),
                                      STypedData(out.data(), dtFlt32), status.data(), unsigned(levels.size())));
        const double E = scene.emissivity, t = scene.transmission == 0 ? 1.0 : scene.transmission;
        long wrong = 0;
        for (int p = 0; p < 2; ++p) {
            const SCurve k = Stored(kCurves[p]);
            // The scene's own levels, then the limits: the tighter of the
            // count range and the stated temperatures.
            const double atm = Level(k, scene.atmosphere), refl = Level(k, scene.reflected);
            const double low = std::fmax(Kelvin(k, k.minCounts), k.minTemp);
            const double high = std::fmin(Kelvin(k, k.maxCounts), k.maxTemp);
            for (long L = 0; L < 65536; ++L) {
                const size_t i = size_t(L) * 3 + p;
                const double corrected = ((L - (1 - t) * atm) / t - refl * (1 - E)) / E;
                const double T = Kelvin(k, corrected);
                unsigned char st = T == 0.0 ? 1 : 0;
                if (T != 0.0) st = (T < low ? 2 : 0) | (T > high ? 4 : 0);
                const double expected = T == 0.0 ? 0.0 : T - 273.15;
                // The level is corrected in float: near the curve's foot a
                // rounding of the level moves the temperature far.
                const double slope = T == 0.0 ? 0.0 : std::fabs(Kelvin(k, corrected + 0.05) - Kelvin(k, corrected - 0.05));
                const bool ok = std::fabs(out[i] - expected) <= slope + 2e-4 * std::fabs(T) + 1e-3 && status[i] == st;
                if (!ok && ++wrong <= 5)
                    ADD_FAILURE() << "preset " << p << " level " << L << ": " << out[i] << "/" << int(status[i])
                                  << " against " << expected << "/" << int(st);
            }
        }
        EXPECT_EQ(wrong, 0);
        // The active preset without a calibration: 0 and flagged everywhere.
        for (long L = 0; L < 65536; L += 97) {
            EXPECT_EQ(out[size_t(L) * 3 + 2], 0.0f);
            EXPECT_EQ(status[size_t(L) * 3 + 2], 1);
        }
    }
}

TEST(Corvane, PresetBytesBeyondSevenAndInactivePresets)
{
    // A byte names preset byte & 7. Preset 2 is active without a
    // calibration and 3 to 7 are not active: their pixels come out 0 and
    // flagged.
    SRecording rec(2);
    rec.Scene(kScenes[0]);
    CCorvaneConverter conv;
    ASSERT_TRUE(Bind(conv, rec.objs, tempCelsius));
    const unsigned short level = 20000;
    std::vector<unsigned short> levels(256, level);
    std::vector<unsigned char> bytes(256);
    for (int b = 0; b < 256; ++b) bytes[b] = static_cast<unsigned char>(b);
    std::vector<float> out(256);
    std::vector<unsigned char> status(256);
    ASSERT_TRUE(conv.BaseToOutput(STypedData(levels.data(), dtUInt16), bytes.data(), STypedData(out.data(), dtFlt32),
                                  status.data(), 256));
    for (int p = 0; p < 2; ++p) {
        float v = 0;
        unsigned char s = 0;
        ASSERT_TRUE(conv.SignalToOutput(level, v, s, static_cast<unsigned char>(p)));
        EXPECT_NEAR(out[p], v, 1e-3);
        EXPECT_EQ(status[p], s);
    }
    EXPECT_GT(std::fabs(out[0] - out[1]), 1.0f);
    for (int b = 0; b < 256; ++b) {
        EXPECT_EQ(out[b], out[b & 7]) << b;
        EXPECT_EQ(status[b], status[b & 7]) << b;
        if ((b & 7) < 2) continue;
        EXPECT_EQ(out[b], 0.0f) << b;
        EXPECT_EQ(status[b], 1) << b;
    }
}

TEST(Corvane, ValueFormsLimitsAndTheInverse)
{
    SRecording rec(2);
    rec.Scene(kScenes[1]);
    CCorvaneConverter conv;
    ASSERT_TRUE(Bind(conv, rec.objs, tempKelvin));
    float T = 0;
    unsigned char st = 0;
    // Preset 255 is the first active one; the uncalibrated preset answers
    // nothing, an inactive one is refused.
    ASSERT_TRUE(conv.SignalToOutput(30000, T, st, 255));
    float T0 = 0;
    ASSERT_TRUE(conv.SignalToOutput(30000, T0, st, 0));
    EXPECT_EQ(T, T0);
    EXPECT_FALSE(conv.SignalToOutput(30000, T, st, 2));
    EXPECT_FALSE(conv.SignalToOutput(30000, T, st, 5));
    float range[3];
    EXPECT_FALSE(conv.SignalToOutput(1, 3, range, nullptr, 2));
    // Both ways through the scene.
    for (unsigned char p : {0, 1})
        for (float kelvin : {280.0f, 320.0f, 360.0f}) {
            unsigned short level = 0;
            ASSERT_TRUE(conv.OutputToSignal(kelvin, level, st, p));
            ASSERT_TRUE(conv.SignalToOutput(level, T, st, p));
            EXPECT_NEAR(T, kelvin, 0.05) << int(p);
            float base = 0;
            ASSERT_TRUE(conv.OutputToBase(kelvin, base, st, p));
            EXPECT_EQ(base, float(level));
        }

    CSpanFitConv& s = conv.span[0];
    // Flagged, not clamped: below the stated minimum temperature.
    float level = 0;
    ASSERT_TRUE(s.TempToDL(235.0f, level, st, tempKelvin, false));
    ASSERT_TRUE(s.DLToTemp(level, T, st, tempKelvin, false));
    EXPECT_NEAR(T, 235.0f, 0.01);
    EXPECT_EQ(st, 2);
    ASSERT_TRUE(s.TempToDL(430.0f, level, st, tempKelvin, false));
    ASSERT_TRUE(s.DLToTemp(level, T, st, tempKelvin, false));
    EXPECT_EQ(st, 4);
    // The integration time at which 330 K gives level 25000 gives it back.
    float it = 0;
    ASSERT_TRUE(s.TempDLToIT(330.0f, tempKelvin, 25000.0f, it));
    CSpanFitConv other = s;
    other.SetSpanFit(s.curveType, s.a, s.b, s.c, s.d, s.e, s.f, s.minCounts, s.maxCounts, s.minTemp, s.maxTemp,
                     s.g, it * 1e6f, 0.0f);
    ASSERT_TRUE(other.DLToTemp(25000.0f, T, st, tempKelvin, false));
    EXPECT_NEAR(T, 330.0f, 0.01);
    // Temperature scales of the curve: Celsius, Fahrenheit, Rankine.
    float k = 0, c = 0, f = 0, r = 0;
    ASSERT_TRUE(s.DLToTemp(20000.0f, k, st, tempKelvin, false));
    ASSERT_TRUE(s.DLToTemp(20000.0f, c, st, tempCelsius, false));
    ASSERT_TRUE(s.DLToTemp(20000.0f, f, st, tempFahrenheit, false));
    ASSERT_TRUE(s.DLToTemp(20000.0f, r, st, tempRankine, false));
    EXPECT_NEAR(c, k - 273.15, 1e-3);
    EXPECT_NEAR(f, k * 1.8 - 459.67, 1e-3);
    EXPECT_NEAR(r, k * 1.8, 1e-3);
}

TEST(Corvane, CurveRulesAndBrokenCalibrations)
{
    CSpanFitConv s;
    const SCurve& k = kCurves[0];
    s.SetSpanFit(2, float(k.a), float(k.b), float(k.c), 0, 0, float(k.f), 200, 64000, 240, 420, 0, 200, 7.5f);
    // Type 3 with g 0 inverts as type 2.
    CSpanFitConv s3 = s;
    s3.curveType = 3;
    float l2 = 0, l3 = 0;
    unsigned char st = 0;
    ASSERT_TRUE(s.TempToDL(300.0f, l2, st, tempKelvin, false));
    ASSERT_TRUE(s3.TempToDL(300.0f, l3, st, tempKelvin, false));
    EXPECT_EQ(l2, l3);
    // Emissivity and transmission of 0 count as 1.
    s.SetObjectParameters(0.0f, 300.0f, 0.0f, 290.0f);
    EXPECT_EQ(s.emissivity, 1.0f);
    EXPECT_EQ(s.transmission, 1.0f);
    // A minimum count the curve cannot convert leaves the stated minimum.
    s.SetSpanFit(2, float(k.a), float(k.b), 1000.0f, 0, -50.0f, float(k.f), 0, 64000, 240, 420, 0, 200, 0);
    EXPECT_EQ(s.lowLimit, 240.0f);

    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const float values[] = {0.0f, -1.0f, 2.0f, 1e-30f, 1e30f, -1e30f, nan, inf};
    std::vector<unsigned short> levels(4096);
    for (size_t i = 0; i < levels.size(); ++i) levels[i] = static_cast<unsigned short>(i * 16);
    std::vector<float> out(levels.size());
    std::vector<unsigned char> status(levels.size());
    for (int field = 0; field < 12; ++field)
        for (float v : values) {
            SRecording rec(1);
            TSharedPtr<CCorvaneFactoryCalReduceObject> cal =
                rec.objs.GetObjectOfType(CCorvaneFactoryCalReduceObject::typeID, 0, false)
                    .DynamicCast<CCorvaneFactoryCalReduceObject>();
            float* fields[] = {&cal->a, &cal->b, &cal->c, &cal->d, &cal->e, &cal->f,
                               &cal->g, &cal->minTemp, &cal->maxTemp, &cal->integrationTime};
            if (field < 10) *fields[field] = v;
            else if (field == 10) cal->curveType = std::isfinite(v) ? unsigned(std::fabs(std::fmin(v, 9.0f))) : 7;
            else *cal = CCorvaneFactoryCalReduceObject{};
            cal->valid = true;
            rec.Scene(kScenes[field % 2]);
            CCorvaneConverter conv;
            ASSERT_TRUE(Bind(conv, rec.objs, tempCelsius, 1));
            ASSERT_TRUE(conv.BaseToOutput(STypedData(levels.data(), dtUInt16), STypedData(out.data(), dtFlt32),
                                          status.data(), unsigned(levels.size())));
            float T = 0;
            unsigned char one = 0;
            const bool answered = conv.SignalToOutput(20000, T, one, 0);
            if (field >= 10 && !(field == 10 && v == 2.0f)) {
                EXPECT_FALSE(answered) << field;
            }
            for (size_t i = 0; i < out.size(); ++i)
                if (!std::isfinite(out[i]) && status[i] == 0) {
                    ADD_FAILURE() << "field " << field << " value " << v << ": unflagged " << out[i] << " at " << i;
                    break;
                }
        }
}

TEST(Corvane, FirstInTheConverterListAheadOfOmbria)
{
    // Identifiers as stored.
    const unsigned char corvane[] = {0x7d, 0xf4, 0x1c, 0x62, 0xae, 0x1e, 0x68, 0x4d,
                                     0xa3, 0xe5, 0x37, 0x9f, 0x1a, 0xd7, 0x6f, 0x62};
    const unsigned char ombria[] = {0xab, 0x93, 0x16, 0xe8, 0xb6, 0xb4, 0xc4, 0x4e,
                                    0x85, 0xc0, 0xe8, 0x9d, 0x1c, 0x35, 0x06, 0x1e};
    SGuid c = converterFactory()->GetGUIDFromName("CorvaneConverter");
    SGuid o = converterFactory()->GetGUIDFromName("OmbriaConverter");
    EXPECT_EQ(std::memcmp(&c, corvane, 16), 0);
    EXPECT_EQ(std::memcmp(&o, ombria, 16), 0);

    // Both calibrations in one recording: temperature goes to Corvane, which
    // registered first; radiance only Ombria offers.
    SRecording rec(1);
    TSharedPtr<IReduceObject> cal = rec.objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true);
    cal->valid = true;
    SGuid t = converterFactory()->ConverterGUIDForUnit(unitCounts, rec.objs, unitTemperatureFactory);
    SGuid r = converterFactory()->ConverterGUIDForUnit(unitCounts, rec.objs, unitRadianceFactory);
    EXPECT_EQ(std::memcmp(&t, corvane, 16), 0);
    EXPECT_EQ(std::memcmp(&r, ombria, 16), 0);
}
