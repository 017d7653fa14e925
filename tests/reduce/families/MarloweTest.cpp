// CMrlConv against the camera's formulas evaluated here in long double, in
// a different arrangement from the code: limits from the calibrated range,
// transmission from the two-band model, path radiance taken out before the
// R, B, F curve.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "reduce/families/marlowe/MrlConv.h"
#include "tests/reduce/families/FamilyFixtures.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

using LD = long double;

LD Planck(LD T, LD R, LD B, LD F) { return R / (std::exp(B / T) - F); }

LD RefTau(LD h, LD tAtmK, LD d, LD X, LD a1, LD a2, LD b1, LD b2)
{
    const LD t = tAtmK - 273.15L;
    LD p = 1.5587L + t * (0.06939L + t * (-0.00027816L + t * 6.8455e-7L));
    if (t < -30) p = -0.7918268499999997L;
    if (t > 90) p = 6.049740949999999L;
    LD w = std::sqrt(h * std::exp(p));
    if (w > 6.2365L) w = 6.2365L;
    const LD ka = a1 + b1 * w, kb = a2 + b2 * w;
    const LD tau = X * std::exp(-std::sqrt(d) * ka) + (1 - X) * std::exp(-std::sqrt(d) * kb);
    if (tau < 0.4L) return 0.4L;
    if (tau > 1) return X * std::exp(-1000 * ka) + (1 - X) * std::exp(-1000 * kb) > 1 ? 0.4L : 1.0L;
    const LD slope = X * ka * std::exp(-std::sqrt(d) * ka) + (1 - X) * kb * std::exp(-std::sqrt(d) * kb);
    return slope < 0 && d > 0 ? 0.4L : tau;
}

struct SRef {
    LD rad;      // after the limits
    int status;  // -1: too near a limit to say
    LD kelvin;
};

// One signal through the chain, from the description of the calibration.
SRef Reference(const CMarloweFactoryCalReduceObject& c, const SMrlObjectParams& o, unsigned short s)
{
    const LD E = o.emissivity == 0 ? 1 : o.emissivity;
    const LD tau = o.estAtmosphericTransmission != 0
                       ? LD(o.estAtmosphericTransmission)
                       : RefTau(o.relativeHumidity, o.atmosphereTemp, o.distance, c.atmX, c.atmA1, c.atmA2,
                                c.atmB1, c.atmB2);
    const LD Te = o.extOpticsTransmission;
    const LD R = c.rbfR, B = c.rbfB, F = c.rbfF;
    LD path = (1 - E) / E * Planck(o.reflectedTemp, R, B, F) + (1 - tau) / (E * tau) * Planck(o.atmosphereTemp, R, B, F);
    if (Te < 1) path += (1 - Te) / (E * tau * Te) * Planck(o.extOpticsTemp, R, B, F);
    LD poly = 0;
    for (int i = c.polyOrder; i >= 0; --i) poly = poly * s + c.coeffs[i];
    LD rad = c.polyOrder >= 0 ? poly / (tau * Te) : c.coeffs[1] * (s - c.signalOffset) / (tau * Te) + c.coeffs[0];
    auto limit = [&](LD celsius, LD frac, LD least, int sign) {
        return Planck(celsius + 273.15L + sign * std::max(std::fabs(celsius) * frac, least), R, B, F);
    };
    const LD warnHi = limit(c.maxTemperature, 1 / 50.0L, 2, 1), clampHi = limit(c.maxTemperature, 1 / 20.0L, 5, 1);
    const LD warnLo = limit(c.minTemperature, 1 / 50.0L, 2, -1), clampLo = limit(c.minTemperature, 1 / 20.0L, 5, -1);
    SRef ref{rad, 0, 0};
    for (LD l : {warnHi, clampHi, warnLo, clampLo})
        if (std::fabs(rad - l) < 1e-5L * l) ref.status = -1;
    if (rad >= warnHi || rad <= warnLo) {
        if (ref.status == 0) ref.status = rad > clampHi ? 4 : rad < clampLo ? 2 : 1;
        ref.rad = rad > clampHi ? clampHi : rad < clampLo ? clampLo : rad;
    }
    const LD q = ref.rad / E - path;
    ref.kelvin = q > 0 ? B / std::log(R / q + F) : 0;
    return ref;
}

} // namespace

TEST(MrlConv, WholeCountRangeAgainstTheFormulas)
{
    // Two situations: the transmission from the model at 25 m in humid air,
    // and an estimated one behind a window.
    SMrlObjectParams open;
    open.emissivity = 0.95f;
    open.distance = 25.0f;
    open.relativeHumidity = 0.6f;
    open.atmosphereTemp = 288.15f;
    open.reflectedTemp = 283.15f;
    SMrlObjectParams window;
    window.emissivity = 0.7f;
    window.distance = 3.0f;
    window.estAtmosphericTransmission = 0.85f;
    window.extOpticsTransmission = 0.9f;
    window.extOpticsTemp = 300.0f;

    for (int order : {2, 1, -1, 5}) {
        for (const SMrlObjectParams* o : {&open, &window}) {
            CMarloweFactoryCalReduceObject cal;
            MakeMarloweCal(cal, order);
            CMrlConv m;
            m.Init(cal, *o);
            std::vector<float> rad(16384), kelvin(16384), fahrenheit(16384);
            std::vector<unsigned char> st(16384, 0xEE), st2(16384);
            m.SignalToRadiance(0, CMrlConv::kMaxSignal, rad.data(), st.data());
            m.SignalToTemperature(0, CMrlConv::kMaxSignal, kelvin.data(), nullptr, tempKelvin);
            std::vector<unsigned short> signals(16384);
            for (unsigned s = 0; s < 16384; ++s) signals[s] = static_cast<unsigned short>(s);
            m.SignalToTemperature(signals.data(), fahrenheit.data(), st2.data(), 16384, tempFahrenheit);
            EXPECT_EQ(st, st2);
            int flagged = 0;
            for (unsigned s = 0; s < 16384; ++s) {
                const SRef ref = Reference(cal, *o, static_cast<unsigned short>(s));
                ASSERT_NEAR(rad[s], double(ref.rad), 2e-7 * double(ref.rad)) << order << " " << s;
                if (ref.status >= 0) {
                    ASSERT_EQ(st[s], ref.status) << order << " " << s;
                }
                // Far below the range the path's share amplifies float rounding.
                ASSERT_NEAR(kelvin[s], double(ref.kelvin), ref.kelvin < 200 ? 1e-2 : 2e-3) << order << " " << s;
                ASSERT_NEAR(fahrenheit[s], double(ref.kelvin * 1.8L - 459.67L), ref.kelvin < 200 ? 2e-2 : 4e-3) << order << " " << s;
                flagged += st[s] != 0;
            }
            // The calibration spans the middle of the range: both ends flagged.
            EXPECT_GT(flagged, 100) << order;
            EXPECT_LT(flagged, 16000) << order;
        }
    }
}

TEST(MrlConv, AtmosphereModel)
{
    const double X = 0.8, a1 = 0.006569, a2 = 0.01262, b1 = 0.0005, b2 = -0.00667;
    for (double d : {0.0, 1.0, 10.0, 100.0, 1000.0, 20000.0})
        for (double h : {0.0, 0.3, 0.95})
            for (double tc : {-45.0, 0.0, 35.0, 95.0}) {
                const double tau = CMrlConv::calcTao(h, tc + 273.15, d, X, a1, a2, b1, b2);
                EXPECT_NEAR(tau, double(RefTau(h, tc + 273.15, d, X, a1, a2, b1, b2)), 1e-12) << d << " " << h;
                EXPECT_GE(tau, 0.4);
                if (d == 0.0) {
                    EXPECT_EQ(tau, 1.0);
                }
            }
    // A model that rises with distance is rejected above distance 0: 0.70
    // at 9 m would rise further.
    EXPECT_EQ(CMrlConv::calcTao(0.0, 293.15, 9.0, 0.5, -0.1, 1.0, 0.0, 0.0), 0.4);
    EXPECT_EQ(CMrlConv::calcTao(0.0, 293.15, 0.0, 0.5, -0.1, 1.0, 0.0, 0.0), 1.0);
    // A transmission above 1 is cut to 1 unless the far model exceeds 1 too.
    EXPECT_EQ(CMrlConv::calcTao(0.0, 293.15, 4.0, 0.5, -0.01, -0.01, 0.0, 0.0), 0.4);
    EXPECT_EQ(CMrlConv::calcTao(0.0, 293.15, 1.0, 2.0, 0.1, 1.0, 0.0, 0.0), 1.0);

    // An estimated transmission stands as given; emissivity 0 acts as 1.
    CMarloweFactoryCalReduceObject cal;
    MakeMarloweCal(cal, 2);
    SMrlObjectParams o;
    o.estAtmosphericTransmission = 0.7f;
    o.distance = 1e6f;
    o.emissivity = 0.0f;
    CMrlConv m, one;
    m.Init(cal, o);
    EXPECT_FLOAT_EQ(m.getUsedAtmTao(), 0.7);
    o.emissivity = 1.0f;
    one.Init(cal, o);
    EXPECT_EQ(m.SignalToTemperature(8000, nullptr, tempCelsius), one.SignalToTemperature(8000, nullptr, tempCelsius));
}

TEST(MrlConv, EdgesOfTheChain)
{
    CMarloweFactoryCalReduceObject cal;
    MakeMarloweCal(cal, 0);
    SMrlObjectParams o;
    o.estAtmosphericTransmission = 1.0f;
    CMrlConv m;
    m.Init(cal, o);
    // Order 0: the radiance is the scaled signal; a limit itself is flagged.
    m.warnLowRad = 10.0;
    m.warnHighRad = 100.0;
    m.clampLowRad = 5.0;
    m.clampHighRad = 200.0;
    unsigned char st = 0xEE;
    EXPECT_EQ(m.SignalToRadiance(99, &st), 99.0f);
    EXPECT_EQ(st, 0);
    EXPECT_EQ(m.SignalToRadiance(100, &st), 100.0f);
    EXPECT_EQ(st, 1);
    EXPECT_EQ(m.SignalToRadiance(300, &st), 200.0f);
    EXPECT_EQ(st, 4);
    EXPECT_EQ(m.SignalToRadiance(2, &st), 5.0f);
    EXPECT_EQ(st, 2);
    EXPECT_EQ(m.RadianceToSignal(150.0f, &st), 150);
    EXPECT_EQ(st, 1);

    // A radiance at or below the path's gives absolute zero in each scale.
    const float none = -1.0f;
    EXPECT_FLOAT_EQ(m.RadianceToTemperature(none, nullptr, tempCelsius), -273.15f);
    EXPECT_FLOAT_EQ(m.RadianceToTemperature(none, nullptr, tempFahrenheit), -459.67f);
    EXPECT_EQ(m.RadianceToTemperature(none, nullptr, tempKelvin), 0.0f);
    EXPECT_EQ(m.RadianceToTemperature(none, nullptr, tempRankine), 0.0f);

    // Orders -1 and -2 differ in whether the constant is scaled.
    cal.polyOrder = -1;
    cal.coeffs[0] = 1.0;
    cal.coeffs[1] = 2.0;
    cal.signalOffset = 100.0;
    o.estAtmosphericTransmission = 0.5f;
    m.Init(cal, o);
    EXPECT_DOUBLE_EQ(m.RawRadiance(110), 2.0 * 10.0 * 2.0 + 1.0);
    cal.polyOrder = -2;
    m.Init(cal, o);
    EXPECT_DOUBLE_EQ(m.RawRadiance(110), (2.0 * 10.0 + 1.0) * 2.0);
    cal.polyOrder = -3;
    m.Init(cal, o);
    EXPECT_EQ(m.RawRadiance(110), 0.0);

    // Orders 1 to 4 form powers in 32-bit integers, which wrap: 2000^3 is
    // 8e9, or -589934592 in 32 bits; above 4 they are exact.
    const double cube[7] = {0, 0, 0, 1, 0, 0, 0};
    EXPECT_EQ(CMrlConv::polyValue(2000, 3, cube), -589934592.0);
    EXPECT_EQ(CMrlConv::polyValue(2000, 5, cube), 8e9);
    EXPECT_EQ(CMrlConv::polyValue(2000, 0, cube), 2000.0);
    EXPECT_EQ(CMrlConv::polyValue(2000, -1, cube), 0.0);
}

TEST(MrlConv, RadianceToSignalInvertsEveryOrder)
{
    SMrlObjectParams o;
    o.emissivity = 0.9f;
    o.distance = 10.0f;
    o.relativeHumidity = 0.5f;
    for (int order : {2, 5, 6, 1, -1, -2, 0}) {
        CMarloweFactoryCalReduceObject cal;
        MakeMarloweCal(cal, order);
        CMrlConv m;
        m.Init(cal, o);
        for (unsigned s = 1000; s <= 15000; s += 7) {
            if (order == 0 && s > 2000) break;
            unsigned char st = 0xEE;
            const float r = m.SignalToRadiance(static_cast<unsigned short>(s), &st);
            if (st != 0) continue;
            const unsigned short back = m.RadianceToSignal(r, &st);
            ASSERT_EQ(back, s) << "order " << order;
            EXPECT_EQ(st, 0);
            const float t = m.RadianceToTemperature(r, nullptr, tempCelsius);
            EXPECT_NEAR(m.TemperatureToSignal(t, nullptr, tempCelsius), double(s), 1.0) << "order " << order;
        }
        // Refitting happens only when the polynomial changes.
        const double before = m.inverseCoeffs[1];
        cal.minCounts = 5;
        m.Init(cal, o);
        EXPECT_EQ(m.inverseCoeffs[1], before);
    }
}

TEST(MrlConv, BadCalibrationsFlagOrConvertButNeverTrap)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (int variant = 0; variant < 12; ++variant) {
        CMarloweFactoryCalReduceObject cal;
        SMrlObjectParams o;
        if (variant > 0) MakeMarloweCal(cal, 2);
        switch (variant) {
        case 1: cal.coeffs[1] = nan; break;
        case 2: cal.rbfR = inf; break;
        case 3: cal.rbfB = -1e300; break;
        case 4: cal.polyOrder = 1000000; break;
        case 5: cal.polyOrder = -7; break;
        case 6: std::swap(cal.minCounts, cal.maxCounts); break;
        case 7: o.emissivity = std::numeric_limits<float>::quiet_NaN(); break;
        case 8: o.distance = -5.0f; o.relativeHumidity = 1e30f; break;
        case 9: o.extOpticsTransmission = 0.0f; break;
        case 10: cal.minTemperature = -1e30f; cal.maxTemperature = 1e30f; break;
        case 11: cal.coeffs[2] = 1e300; cal.rbfF = 1e300; break;
        default: break;
        }
        CMrlConv m;
        m.Init(cal, o);
        std::vector<float> out(16384);
        std::vector<unsigned char> st(16384);
        m.SignalToTemperature(0, CMrlConv::kMaxSignal, out.data(), st.data(), tempCelsius);
        for (unsigned s = 0; s < 16384; ++s) {
            ASSERT_TRUE(st[s] != 0 || std::isfinite(out[s])) << variant << " " << s;
        }
        for (float r : {0.0f, -1.0f, 1e-4f, 1e30f, float(nan), float(inf)}) {
            unsigned char s = 0;
            m.RadianceToSignal(r, &s);
            m.TemperatureToSignal(r, &s, tempCelsius);
        }
    }
}
