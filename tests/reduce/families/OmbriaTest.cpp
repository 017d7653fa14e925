// The Ombria family against its formulas evaluated here from scratch: image
// model, atmosphere, K1 and K2, limits with their status bytes, the curve
// and the radiance fit, over every count and two measurement situations.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "reduce/convert/ConvertContext.h"
#include "reduce/families/ombria/OmbriaConverter.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

namespace {

SAdjustParams Adjust(bool nonLinear)
{
    SAdjustParams a;
    a.offset = -1000;
    a.gain = 0.5f;
    a.imgLow = 10;
    a.imgHigh = 65000;
    a.nonLinear = nonLinear ? 1 : 0;
    a.nonLinearFactor = 2e-6f;
    a.nonLinearZero = 8000;
    return a;
}

SCalibParams Calib()
{
    SCalibParams c;
    c.R = 500000.0f;
    c.B = 1400.0f;
    c.F = 1.0f;
    c.alpha1 = 0.006569f;
    c.alpha2 = 0.01262f;
    c.beta1 = -0.002276f;
    c.beta2 = -0.00667f;
    c.X = 1.9f;
    c.rangeHighTemp = 473.0f;
    c.rangeLowTemp = 243.0f;
    c.clampHighTemp = 483.0f;
    c.clampLowTemp = 233.0f;
    c.validHighTemp = 470.5f;
    c.validLowTemp = 245.5f;
    return c;
}

SObjectParams Situation(int which)
{
    SObjectParams o;
    o.emissivity = which ? 0.82f : 0.97f;
    o.distance = which ? 40.0f : 3.0f;
    o.reflectedTemp = which ? 303.0f : 290.0f;
    o.atmosphereTemp = which ? 298.0f : 283.0f;
    o.extOpticsTemp = which ? 301.0f : 293.15f;
    o.extOpticsTransmission = which ? 0.86f : 1.0f;
    o.estAtmosphericTransmission = 0.0f;
    o.relativeHumidity = which ? 0.7f : 0.25f;
    return o;
}

// The family's model written out again, straight from its description.
struct SRef {
    SAdjustParams adj;
    SCalibParams cal;
    SObjectParams obj;
    double tao = 0, k1 = 0, k2 = 0;
    double lowClamp = 0, lowValid = 0, highValid = 0, highClamp = 0;

    double Pow(long img) const
    {
        if (img == 0) return 0;
        img = img > 65535 ? 65535 : (img <= 0 ? 1 : img);
        if (!adj.nonLinear) return double(img + adj.offset) * adj.gain;
        const long d = img - adj.nonLinearZero;
        const double q = 1.0 - double(float(d) * adj.nonLinearFactor);
        return (adj.nonLinearFactor > 0 && q < 0.0001) ? 100000.0 : d * double(adj.gain) / q + adj.offset;
    }
    double Floor() const { return cal.F > 1 ? cal.F * 1.0002 : 1.0002; }
    double Sig(double T) const
    {
        if (T <= 0 || cal.B / T >= 709.78) return 0;
        return cal.R / (std::fmax(std::exp(cal.B / T), Floor()) - cal.F);
    }
    double Temp(double s) const { return s > 0 ? cal.B / std::log(std::fmax(cal.R / s + cal.F, Floor())) : 0; }
    static double Tao(const SCalibParams& c, const SObjectParams& o)
    {
        const double t = float(o.atmosphereTemp - 273.15);
        double p = t < -30 ? -0.7918268499999997 : 6.049740949999999;
        if (t >= -30 && t <= 90) p = ((6.8455e-7 * t - 0.00027816) * t + 0.06939) * t + 1.5587;
        const double w = std::fmin(std::sqrt(o.relativeHumidity * std::exp(p)), 6.2365);
        const double a = c.alpha1 + c.beta1 * w, b = c.alpha2 + c.beta2 * w, r = std::sqrt(double(o.distance));
        const double tao = c.X * std::exp(-a * r) + (1 - c.X) * std::exp(-b * r);
        if (tao < 0.4) return 0.4;
        if (tao > 1) return c.X * std::exp(-1000 * a) + (1 - c.X) * std::exp(-1000 * b) > 1 ? 0.4 : 1.0;
        const bool falling = a * c.X * std::exp(-a * r) + (1 - c.X) * b * std::exp(-b * r) < 0;
        return falling && o.distance > 0 ? 0.4 : tao;
    }
    void Prepare()
    {
        tao = obj.estAtmosphericTransmission > 0 ? obj.estAtmosphericTransmission : Tao(cal, obj);
        const double e = obj.emissivity, o = obj.extOpticsTransmission;
        k1 = 1.0 / (e * tao * o);
        k2 = (1 - e) / e * Sig(obj.reflectedTemp) + (1 - tao) / (e * tao) * Sig(obj.atmosphereTemp);
        if (o > 0 && o < 1) k2 += (1 - o) / (e * tao * o) * Sig(obj.extOpticsTemp);
        auto path = [&](double T) { return (Sig(T) + k2) / k1; };
        const double top = std::fmin(path(cal.clampHighTemp) + 1.01, (Sig(1e9) + k2) / k1);
        highClamp = std::fmin(std::fmin(std::fmax(top, 1e-6), 1e5), Pow(adj.imgHigh));
        const double bottom = std::fmin(std::fmax(std::fmax(path(cal.clampLowTemp) - 0.01, k2 / k1), 1e-6), 1e5);
        lowClamp = std::fmax(bottom, Pow(adj.imgLow));
        highValid = std::fmin(path(cal.validHighTemp) + 1.01, highClamp);
        lowValid = std::fmax(path(cal.validLowTemp) - 0.01, lowClamp);
    }
    // Object signal of an image value and its status byte.
    double ObjSig(long img, unsigned char& status) const
    {
        double p = Pow(img);
        status = 0;
        if (p <= lowValid || p >= highValid) {
            status = p > highClamp ? 4 : (p < lowClamp ? 2 : 1);
            if (status == 4) p = highClamp;
            if (status == 2) p = lowClamp;
        }
        return p * k1 - k2;
    }
};

// Band radiance 8 to 12 um by the trapezoid rule at 0.01 um, and the
// quadratic of object signal through it by the normal equations.
double Band(double celsius)
{
    double sum = 0, prev = 0;
    for (int i = 0; i <= 400; ++i) {
        const double w = 8.0 + i * 0.01;
        const double f = 11910.7 / ((std::exp(14388.4 / (w * (celsius + 273.15))) - 1.0) * std::pow(w, 5.0));
        if (i) sum += 0.005 * (prev + f);
        prev = f;
    }
    return sum;
}

void Fit(const SRef& ref, double c[3])
{
    long double m[3][4] = {};
    for (int t = int(float(ref.cal.rangeLowTemp - 273.15)); t <= int(float(ref.cal.rangeHighTemp - 273.15)); ++t) {
        const long double s = ref.cal.R / (std::exp(ref.cal.B / (273.15 + t)) - ref.cal.F), y = Band(t);
        const long double p[3] = {1, s, s * s};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) m[i][j] += p[i] * p[j];
            m[i][3] += p[i] * y;
        }
    }
    for (int i = 0; i < 3; ++i)
        for (int k = i + 1; k < 3; ++k) {
            const long double f = m[k][i] / m[i][i];
            for (int j = i; j < 4; ++j) m[k][j] -= f * m[i][j];
        }
    for (int i = 2; i >= 0; --i) {
        long double v = m[i][3];
        for (int j = i + 1; j < 3; ++j) v -= m[i][j] * c[j];
        c[i] = double(v / m[i][i]);
    }
}

struct SRecording {
    CReduceObjectArray objs;
    TSharedPtr<COmbriaFactoryCalReduceObject> cal;
    SRecording(const SAdjustParams& a, const SCalibParams& c)
    {
        cal = objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true)
                  .DynamicCast<COmbriaFactoryCalReduceObject>();
        cal->adjust = a;
        cal->calib = c;
        cal->valid = true;
    }
    void Situation(const SObjectParams& o)
    {
        TSharedPtr<CObjectParametersReduceObject> p = objs.GetObjectParameters(true);
        p->emissivity = o.emissivity;
        p->distance = o.distance;
        p->reflectedTemp = o.reflectedTemp;
        p->atmosphereTemp = o.atmosphereTemp;
        p->extOpticsTemp = o.extOpticsTemp;
        p->extOpticsTransmission = o.extOpticsTransmission;
        p->estAtmosphericTransmission = o.estAtmosphericTransmission;
        p->relativeHumidity = o.relativeHumidity;
        p->valid = true;
    }
};

bool Bind(COmbriaConverter& c, CReduceObjectArray& objs, EUnit unit, ETempType type)
{
    bool presets[1] = {true};
    return c.Update(unitCounts, tempCelsius, objs, unit, type, presets, 1, 0);
}

void ExpectNear(double actual, double expected, double rel, const char* what, long at)
{
    EXPECT_NEAR(actual, expected, rel * std::fabs(expected) + 1e-9) << what << " at " << at;
}

} // namespace

TEST(Ombria, EveryCountInEveryUnitAgainstTheModel)
{
    std::vector<unsigned short> counts(65536);
    for (size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<unsigned short>(i);
    std::vector<float> out(65536);
    std::vector<unsigned char> status(65536);
    for (bool nonLinear : {false, true})
        for (int which : {0, 1}) {
            SCOPED_TRACE(testing::Message() << "non-linear " << nonLinear << ", situation " << which);
            SRef ref{Adjust(nonLinear), Calib(), Situation(which)};
            ref.Prepare();
            double fit[3];
            Fit(ref, fit);
            SRecording rec(ref.adj, ref.cal);
            rec.Situation(ref.obj);
            // The path transmission goes back to the object parameters.
            COmbriaConverter conv;
            ASSERT_TRUE(Bind(conv, rec.objs, unitTemperatureFactory, tempCelsius));
            EXPECT_NEAR(rec.objs.GetObjectParameters(false)->atmosphericTransmission, ref.tao, 1e-6);
            EXPECT_NEAR(conv.meas.K1, ref.k1, 1e-9 * ref.k1);
            EXPECT_NEAR(conv.meas.K2, ref.k2, 1e-9 * std::fabs(ref.k2) + 1e-12);

            const EUnit units[] = {unitTemperatureFactory, unitObjectSignal, unitRadianceFactory};
            for (EUnit unit : units) {
                ASSERT_TRUE(Bind(conv, rec.objs, unit, tempCelsius));
                ASSERT_TRUE(conv.BaseToOutput(STypedData(counts.data(), dtUInt16), STypedData(out.data(), dtFlt32),
                                              status.data(), 65536u));
                long mismatched = 0;
                for (long v = 0; v < 65536; ++v) {
                    unsigned char st = 0;
                    const double s = ref.ObjSig(v, st);
                    double expected = s;
                    if (unit == unitTemperatureFactory) expected = ref.Temp(s) - 273.15;
                    if (unit == unitRadianceFactory) expected = fit[0] + fit[1] * s + fit[2] * s * s;
                    ExpectNear(out[v], expected, unit == unitRadianceFactory ? 2e-5 : 2e-6, UnitToString(unit), v);
                    if (status[v] != st && ++mismatched < 5) ADD_FAILURE() << "status at " << v;
                }
                EXPECT_EQ(mismatched, 0);
            }
        }
}

TEST(Ombria, AtmosphereOverDistancesHumiditiesAndTemperatures)
{
    SCalibParams cal = Calib();
    CMeasConv meas(nullptr, nullptr, &cal);
    const float distances[] = {0.0f, 0.5f, 10.0f, 150.0f, 2500.0f};
    const float humidities[] = {0.0f, 0.3f, 1.0f};
    const float temperatures[] = {213.15f, 243.15f, 293.15f, 358.15f, 373.15f};
    for (float d : distances)
        for (float h : humidities)
            for (float t : temperatures) {
                SObjectParams o = Situation(0);
                o.distance = d;
                o.relativeHumidity = h;
                o.atmosphereTemp = t;
                meas.setObjPar(&o);
                const double expected = SRef::Tao(cal, o);
                EXPECT_NEAR(meas.getCalculatedAtmTao(), expected, 1e-12) << d << " m, " << h << ", " << t << " K";
                EXPECT_DOUBLE_EQ(meas.getUsedAtmTao(), expected);
                if (d == 0.0f) {
                    EXPECT_EQ(meas.getUsedAtmTao(), 1.0);
                }
            }
    // A given transmission wins whatever the distance.
    SObjectParams o = Situation(1);
    o.estAtmosphericTransmission = 0.7f;
    o.distance = 5000.0f;
    meas.setObjPar(&o);
    EXPECT_NEAR(meas.getUsedAtmTao(), 0.7, 1e-7);
    // Humid and hot past 90 C: the vapour term stops at its cap.
    SCalibParams steep = cal;
    steep.beta1 = steep.beta2 = -1.0f;
    steep.alpha1 = steep.alpha2 = 6.5f;
    steep.X = 0.5f;
    o = Situation(0);
    o.atmosphereTemp = 400.0f;
    o.relativeHumidity = 1.0f;
    o.distance = 1.0f;
    CMeasConv capped(nullptr, &o, &steep);
    const double a = 6.5 - 6.2365;
    EXPECT_NEAR(capped.getCalculatedAtmTao(), std::exp(-a), 1e-4);
}

TEST(Ombria, EdgesOfTheFormulas)
{
    SAdjustParams adj = Adjust(false);
    SCalibParams cal = Calib();
    SObjectParams obj = Situation(0);
    CMeasConv m(&adj, &obj, &cal);
    EXPECT_EQ(m.imgToPow(0), 0.0);
    EXPECT_EQ(m.powToImg(0.0), 0);
    EXPECT_EQ(m.imgToPow(70000), m.imgToPow(65535));
    EXPECT_EQ(m.imgToPow(-5), m.imgToPow(1));
    EXPECT_EQ(m.powToImg(1e12), 65535);
    EXPECT_EQ(m.powToImg(-600.0), 1); // below image 1 after the offset
    EXPECT_EQ(m.powToImg(std::numeric_limits<double>::quiet_NaN()), 1);
    EXPECT_EQ(m.tempToObjSig(0.1), 0.0); // B / T past the exponent's range
    EXPECT_EQ(m.objSigToTemp(0.0), 0.0);
    // Image and temperature both ways.
    for (long img : {6000L, 12000L, 30000L}) {
        EXPECT_EQ(m.powToImg(m.imgToPow(img)), img);
        EXPECT_NEAR(m.tempToImg(m.imgToTemp(img, nullptr)), img, 1);
        EXPECT_NEAR(m.radToImg(m.imgToRadiance(img, nullptr)), img, 1);
    }

    // The non-linear model where its denominator vanishes.
    adj = Adjust(true);
    adj.nonLinearFactor = 1e-3f;
    m.setAdjPar(&adj);
    EXPECT_EQ(m.imgToPow(adj.nonLinearZero + 1000), 100000.0);
    EXPECT_EQ(m.imgToPow(adj.nonLinearZero + 1001), 100000.0);
    const double q = 1.0 - double(999.0f * 1e-3f);
    EXPECT_DOUBLE_EQ(m.imgToPow(adj.nonLinearZero + 999), 999.0 * adj.gain / q + adj.offset);
    adj.gain = 0.0f;
    adj.nonLinear = 0;
    m.setAdjPar(&adj);
    EXPECT_EQ(m.powToImg(123.0), 1);

    // Emissivity 0: no scaling, no reflection, and the power side saturates.
    obj.emissivity = 0.0f;
    m.setObjPar(&obj);
    EXPECT_EQ(m.K1, 0.0);
    EXPECT_EQ(m.K2, 0.0);
    EXPECT_EQ(m.objSigToPow(5.0), 100000.0);

    // Without clipping every status is 0.
    adj = Adjust(false);
    obj = Situation(0);
    m.init(&adj, &obj, &cal);
    m.setClipOn(false);
    unsigned char st = 9;
    for (long img : {1L, 5L, 30000L, 65535L}) {
        m.imgToTemp(img, &st);
        EXPECT_EQ(st, 0);
    }
    // A measured ambient signal stands for all three path temperatures.
    m.setClipOn(true);
    EXPECT_EQ(m.setMeasAmbObjSig(4000.0), -1.0);
    const double e = obj.emissivity, a = m.atmTao;
    EXPECT_NEAR(m.K2, (1 - e) / e * 4000.0 + (1 - a) / (e * a) * 4000.0, 1e-9);
}

TEST(Ombria, ConverterValueFormsDefaultsAndObjectParameters)
{
    SRecording rec(Adjust(false), Calib());
    COmbriaConverter c;
    // Without object parameters: emissivity 1, distance 2, humidity 0.3.
    ASSERT_TRUE(Bind(c, rec.objs, unitTemperatureFactory, tempKelvin));
    SObjectParams d;
    ASSERT_TRUE(c.meas.getObjPar(&d));
    EXPECT_EQ(d.emissivity, 1.0f);
    EXPECT_EQ(d.distance, 2.0f);
    EXPECT_EQ(d.relativeHumidity, 0.3f);
    EXPECT_NEAR(c.meas.getUsedAtmTao(), SRef::Tao(Calib(), d), 1e-12);

    float out = 0, table[3];
    unsigned char st = 0, sts[3];
    ASSERT_TRUE(c.SignalToOutput(20000, out, st, 255));
    EXPECT_NEAR(out, c.meas.imgToTemp(20000, nullptr), 1e-3);
    ASSERT_TRUE(c.SignalToOutput(19999, 20001, table, sts, 0));
    EXPECT_EQ(table[1], out);
    EXPECT_FALSE(c.SignalToOutput(20000, out, st, 3)); // not active
    unsigned short signal = 0;
    ASSERT_TRUE(c.OutputToSignal(out, signal, st, 0));
    EXPECT_NEAR(signal, 20000, 1);
    float base = 0;
    ASSERT_TRUE(c.OutputToBase(out, base, st, 0));
    EXPECT_NEAR(base, 20000.0f, 1.0f);
    ASSERT_TRUE(c.BaseToOutput(20000.7f, base, st, 0)); // truncated to 20000
    EXPECT_EQ(base, out);

    // Only emissivity and distance are taken.
    CObjectParametersReduceObject p;
    p.emissivity = 0.5f;
    p.distance = 100.0f;
    p.reflectedTemp = 400.0f;
    p.relativeHumidity = 0.9f;
    p.estAtmosphericTransmission = 0.5f;
    ASSERT_TRUE(c.ChangeObjectParameters(&p));
    SObjectParams now;
    ASSERT_TRUE(c.meas.getObjPar(&now));
    d.emissivity = 0.5f;
    d.distance = 100.0f;
    EXPECT_EQ(std::memcmp(&now, &d, sizeof d), 0);
    float changed = 0;
    ASSERT_TRUE(c.BaseToOutput(20000.0f, changed, st, 0));
    EXPECT_GT(changed, out); // a dimmer object reads hotter for the same counts
    EXPECT_FALSE(c.ChangeObjectParameters(nullptr));

    // Fahrenheit through the table and the value form alike.
    ASSERT_TRUE(Bind(c, rec.objs, unitTemperatureFactory, tempFahrenheit));
    unsigned short px[2] = {20000, 3};
    float frame[2];
    ASSERT_TRUE(c.BaseToOutput(STypedData(px, dtUInt16), STypedData(frame, dtFlt32), sts, 2u));
    EXPECT_NEAR(frame[0], (c.meas.imgToTemp(20000, nullptr)) * 1.8 - 459.67, 1e-3);
    EXPECT_EQ(sts[1], 2); // below the lowest usable image
    // Counts out are not the table's business.
    ASSERT_TRUE(Bind(c, rec.objs, unitCounts, tempCelsius));
    EXPECT_FALSE(c.BaseToOutput(STypedData(px, dtUInt16), STypedData(frame, dtFlt32), sts, 2u));
}

TEST(Ombria, BadCalibrationsGiveFalseOrFlaggedPixels)
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    std::vector<unsigned short> counts(4096);
    for (size_t i = 0; i < counts.size(); ++i) counts[i] = static_cast<unsigned short>(i * 16);
    std::vector<float> out(counts.size());
    std::vector<unsigned char> status(counts.size());
    const float values[] = {0.0f, -1.0f, 1e-30f, 1e30f, -1e30f, nan, inf};
    // Every read field of the records set, one at a time, to each value.
    for (int field = 0; field < 21; ++field)
        for (float v : values) {
            SAdjustParams a = Adjust(field % 2 == 0);
            SCalibParams c = Calib();
            float* fields[] = {&a.gain, &a.nonLinearFactor, &c.R, &c.B, &c.F, &c.alpha1, &c.alpha2,
                               &c.beta1, &c.beta2, &c.X, &c.rangeHighTemp, &c.rangeLowTemp, &c.clampHighTemp,
                               &c.clampLowTemp, &c.validHighTemp, &c.validLowTemp};
            if (field < 16) *fields[field] = v;
            else if (field == 16) a.offset = std::isfinite(v) ? int(std::fmax(std::fmin(v, 2e9f), -2e9f)) : 0;
            else if (field == 17) a.nonLinearZero = std::isfinite(v) ? int(std::fmax(std::fmin(v, 2e9f), -2e9f)) : 0;
            else if (field == 18) a.imgHigh = 0;
            else if (field == 19) a.imgLow = 65535;
            else c = SCalibParams{};
            SRecording rec(a, c);
            SObjectParams o = Situation(field % 2);
            o.emissivity = field == 20 ? v : o.emissivity;
            rec.Situation(o);
            COmbriaConverter conv;
            if (!Bind(conv, rec.objs, unitTemperatureFactory, tempKelvin)) {
                EXPECT_FALSE(std::isfinite(v)) << field; // only non-finite records are refused
                continue;
            }
            ASSERT_TRUE(conv.BaseToOutput(STypedData(counts.data(), dtUInt16), STypedData(out.data(), dtFlt32),
                                          status.data(), unsigned(counts.size())));
            for (size_t i = 0; i < out.size(); ++i)
                if (!std::isfinite(out[i]) && status[i] == 0) {
                    ADD_FAILURE() << "field " << field << " value " << v << ": unflagged " << out[i] << " at " << i;
                    break;
                }
        }
}
