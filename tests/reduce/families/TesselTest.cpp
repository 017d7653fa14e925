// CTesMeasConv against the Tessel chain evaluated here in long double from
// its description: transmission, path constants, power limits, drift and
// adjustment, then the curve, for every 14-bit image value.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "reduce/families/tessel/TesMeasConv.h"
#include "tests/reduce/families/FamilyFixtures.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::test;

namespace {

using LD = long double;

struct SRefChain {
    LD K1, K2, clampHigh, clampLow, validHigh, validLow;
    LD gain = 1, offset = 0; // drift
    const _cal_param_t* c;
    const _adjust_par_t* a;

    LD L(LD T) const
    {
        if (T <= 0 || c->B / T >= 709.78L) return 0;
        const LD m = c->F <= 1 ? 1.0002L : c->F * 1.0002L;
        return c->R / (std::max(m, std::exp(c->B / T)) - c->F);
    }
    LD Pow(LD img) const
    {
        LD v = img * gain + offset;
        return a->adjustMode == 2 ? (v - a->offset) * a->gain : v;
    }
    // Status and object signal of an image value; -1 status: too near a limit.
    std::pair<int, LD> ObjSig(unsigned img) const
    {
        LD p = img == 0 ? -1 : Pow(std::min(img, 16383u));
        int s = img == 0 ? 32 : 0;
        bool near = false;
        for (LD l : {clampHigh, clampLow, validHigh, validLow}) near = near || std::fabs(p - l) < 1e-9L * l;
        if (p <= validLow || p >= validHigh) s |= p > clampHigh ? 4 : p < clampLow ? 2 : 1;
        p = std::clamp(p, clampLow, clampHigh);
        return {near ? -1 : s, p * K1 - K2};
    }
    LD Celsius(LD sig) const
    {
        if (sig <= 0) return -273.15L;
        const LD m = c->F <= 1 ? 1.0002L : c->F * 1.0002L;
        return c->B / std::log(std::max(m, c->R / sig + c->F)) - 273.15L;
    }
};

SRefChain Reference(const _cal_param_t& c, const _adjust_par_t& a, const _object_par_t& o, LD gain, LD offset)
{
    SRefChain r;
    r.c = &c;
    r.a = &a;
    r.gain = gain;
    r.offset = offset;
    LD tau = o.estAtmosphericTransmission;
    if (tau <= 0) {
        const LD t = float(o.atmosphereTemp - 273.15);
        LD p = t < -30 ? -0.7918268499999997L
                       : t > 90 ? 6.049740949999999L : 1.5587L + t * (0.06939L + t * (-0.00027816L + t * 6.8455e-7L));
        const LD w = std::min(std::sqrt(std::exp(p) * o.relativeHumidity), 6.2365L);
        const LD s = std::sqrt(LD(o.distance));
        const LD ka = c.alpha1 + c.beta1 * w, kb = c.alpha2 + c.beta2 * w;
        tau = c.X * std::exp(-s * ka) + (1 - c.X) * std::exp(-s * kb);
        tau = std::clamp(tau, 0.4L, 1.0L); // the models used here neither rise nor exceed 1 far out
    }
    const LD E = o.emissivity, Te = o.extOpticsTransmission;
    r.K1 = 1 / (E * tau * Te);
    r.K2 = (1 - E) / E * r.L(o.reflectedTemp) + (1 - tau) / (E * tau) * r.L(o.atmosphereTemp);
    if (Te > 0 && Te < 1) r.K2 += (1 - Te) / (E * tau * Te) * r.L(o.extOpticsTemp);
    auto pw = [&](LD T, LD margin) { return (r.L(T) + r.K2) / r.K1 + margin; };
    const LD pch = pw(c.clampHighTemp, 1.01L), pvh = pw(c.validHighTemp, 1.01L);
    const LD pvl = pw(c.validLowTemp, -0.01L), pcl = pw(c.clampLowTemp, -0.01L);
    const LD lim = std::min(pch, (r.L(1e9L) + r.K2) / r.K1);
    const LD flo = std::clamp(std::max(pcl, r.K2 / r.K1), 1e-6L, 1e5L);
    r.clampHigh = std::min(std::clamp(lim, 1e-6L, 1e5L), r.Pow(16383));
    r.clampLow = std::max(flo, r.Pow(1));
    r.validHigh = std::min(pvh, r.clampHigh);
    r.validLow = std::max(pvl, r.clampLow);
    return r;
}

// Band radiance 8 to 12 micrometres by Simpson's rule, for the radiance
// table's fit.
LD BandRadiance(LD celsius)
{
    const LD T = celsius + 273.15L;
    auto f = [&](LD w) { return 11910.7L / ((std::exp(14388.4L / (w * T)) - 1) * std::pow(w, 5)); };
    const int n = 400;
    LD sum = f(8) + f(12);
    for (int i = 1; i < n; ++i) sum += (i % 2 ? 4 : 2) * f(8 + 4.0L * i / n);
    return sum * (4.0L / n) / 3;
}

} // namespace

TEST(TesMeasConv, TablesAgainstTheChainOverTheWholeRange)
{
    const _cal_param_t cal = MakeTesselCal();
    _object_par_t humid;
    humid.emissivity = 0.92f;
    humid.distance = 30.0f;
    humid.relativeHumidity = 0.7f;
    humid.atmosphereTemp = 298.15f;
    humid.reflectedTemp = 288.15f;
    _object_par_t window;
    window.emissivity = 0.6f;
    window.distance = 2.0f;
    window.estAtmosphericTransmission = 0.9f;
    window.extOpticsTransmission = 0.8f;
    window.extOpticsTemp = 305.0f;
    _adjust_par_t plain, adjusted;
    adjusted.adjustMode = 2;
    adjusted.gain = 1.1f;
    adjusted.offset = 200.0f;

    for (const _object_par_t* o : {&humid, &window}) {
        for (const _adjust_par_t* a : {&plain, &adjusted}) {
            CTesMeasConv m(a, o, &cal);
            m.updateLUT();
            const SRefChain ref = Reference(cal, *a, *o, 1, 0);
            int flagged = 0;
            for (unsigned img = 0; img < CTesMeasConv::kLUTSize; ++img) {
                const auto [s, sig] = ref.ObjSig(img);
                ASSERT_NEAR(m.lutObjSig[img], double(sig), 1e-5 * std::fabs(double(sig)) + 1e-3) << img;
                if (s >= 0) {
                    ASSERT_EQ(m.lutStatus[img], s) << img;
                }
                ASSERT_NEAR(m.lutTemp[img], double(ref.Celsius(sig)), 2e-3) << img;
                flagged += m.lutStatus[img] != 0;
            }
            EXPECT_GT(flagged, 10);
            EXPECT_LT(flagged, 16000);
            // The radiance table follows the band radiance of each entry's
            // temperature inside the calibrated span, as far as a quadratic
            // in the signal can.
            for (unsigned img = 500; img < CTesMeasConv::kLUTSize; img += 500) {
                const double t = m.lutTemp[img];
                if (t > -40 && t < 150) {
                    EXPECT_NEAR(m.lutRad[img] / double(BandRadiance(t)), 1.0, 0.03) << img;
                }
            }

            // Per pixel, in another element type and scale, and through an
            // index list: the same values as the table.
            std::vector<int32_t> src(CTesMeasConv::kLUTSize);
            for (unsigned i = 0; i < src.size(); ++i) src[i] = int32_t(i);
            std::vector<double> kelvin(src.size()), fromTable(src.size());
            std::vector<unsigned char> st(src.size()), st2(src.size());
            ASSERT_TRUE(m.imgToTemp(STypedData(src.data(), dtInt32), STypedData(kelvin.data(), dtFlt64), st.data(),
                                    unsigned(src.size()), tempKelvin));
            ASSERT_TRUE(m.imgToTempLUT(STypedData(src.data(), dtInt32), STypedData(fromTable.data(), dtFlt64),
                                       st2.data(), unsigned(src.size()), tempKelvin));
            for (unsigned i = 0; i < src.size(); ++i) {
                ASSERT_NEAR(kelvin[i], fromTable[i], 2e-3) << i;
                ASSERT_EQ(st[i], st2[i]) << i;
            }
            const unsigned int idx[4] = {16383, 0, 7000, 7000};
            float sig[4];
            unsigned char ist[4];
            ASSERT_TRUE(m.imgToObjectSignal(STypedData(src.data(), dtInt32), STypedData(sig, dtFlt32), ist, idx, 4));
            for (int k = 0; k < 4; ++k) {
                EXPECT_NEAR(sig[k], m.lutObjSig[idx[k]], 1e-3 * std::fabs(m.lutObjSig[idx[k]]) + 1e-3);
                EXPECT_EQ(ist[k], m.lutStatus[idx[k]]);
            }
        }
    }
}

TEST(TesMeasConv, DriftFollowsTheSensors)
{
    const _cal_param_t cal = MakeTesselCal();
    const _tdrift_par_t drift = MakeTesselDrift();
    _adjust_par_t a;
    _object_par_t o;
    o.estAtmosphericTransmission = 1.0f;
    CTesMeasConv m(&a, &o, &cal);
    _imageinfo_t info;
    info.sensor[9] = 318.15f;  // detector 15 K above calibration
    info.sensor[10] = 310.0f;  // optics
    info.sensor[11] = 300.0f;  // shutter

    // Without the drift model, nothing moves.
    m.setDriftMode(1);
    EXPECT_FALSE(m.UpdateFromTempSens(&info));
    EXPECT_EQ(m.driftGain, 1.0);
    EXPECT_EQ(m.driftOffset, 0.0);

    m.setDriftPar(&drift);
    ASSERT_TRUE(m.UpdateFromTempSens(&info));
    const SRefChain plain = Reference(cal, a, o, 1, 0);
    const LD d = 0.05L * (1 - std::exp((318.15L - 303.15L) * 0.02L)) + 1;
    const LD offset = (cal.driftA9 - 0.1L * plain.L(318.15L)) + (cal.driftA10 - 0.05L * plain.L(LD(310.0f))) +
                      2.0L * (300.0L - 303.15L);
    EXPECT_NEAR(m.driftGain, double(1 / d), 1e-7);
    EXPECT_NEAR(m.driftOffset, double(offset), 1e-3);
    m.updateLUT();
    const SRefChain drifted = Reference(cal, a, o, 1 / d, offset);
    for (unsigned img = 1; img < CTesMeasConv::kLUTSize; img += 37) {
        EXPECT_NEAR(m.lutTemp[img], double(drifted.Celsius(drifted.ObjSig(img).second)), 2e-3) << img;
    }
    // The way back undoes drift and adjustment.
    for (unsigned img : {1500u, 6000u, 12000u}) {
        EXPECT_EQ(m.powToImg(m.imgToPow(img)), img);
    }
    EXPECT_FALSE(m.UpdateFromTempSens(&info)); // same readings, same drift

    // A missing sensor, or the correction switched off, falls back to 1 and 0.
    info.sensor[10] = 0.0f;
    EXPECT_TRUE(m.UpdateFromTempSens(&info));
    EXPECT_EQ(m.driftGain, 1.0);
    EXPECT_EQ(m.driftOffset, 0.0);
    info.sensor[10] = 310.0f;
    m.UpdateFromTempSens(&info);
    m.setDriftMode(0);
    EXPECT_EQ(m.driftGain, 1.0);
    EXPECT_EQ(m.driftOffset, 0.0);
}

TEST(TesMeasConv, NoImageAndEdges)
{
    const _cal_param_t cal = MakeTesselCal();
    _object_par_t o;
    CTesMeasConv m(nullptr, &o, &cal);
    EXPECT_EQ(m.imgToPow(0), -1.0);
    EXPECT_EQ(m.powToImg(-1.0), 0);
    EXPECT_EQ(m.imgToPow(70000), 65535.0);
    EXPECT_EQ(m.imgToPow(-5), 1.0);
    EXPECT_EQ(m.powToImg(1e9), 65535);
    EXPECT_EQ(m.powToImg(0.2), 1);
    m.updateLUT();
    EXPECT_TRUE(m.lutStatus[0] & CTesMeasConv::kStatusNoImage);
    unsigned char s = 0;
    m.imgToTemp(0L, &s);
    EXPECT_TRUE(s & CTesMeasConv::kStatusNoImage);
    // Clipping off: every status 0 but the missing image's.
    m.setClipOn(false);
    m.updateLUT();
    for (unsigned img = 1; img < CTesMeasConv::kLUTSize; ++img) {
        ASSERT_EQ(m.lutStatus[img], 0) << img;
    }
    // The radiance search finds the image value back.
    m.setClipOn(true);
    for (unsigned img : {3000u, 9000u}) {
        const double r = m.imgToRadiance(long(img), nullptr);
        EXPECT_NEAR(m.radToImg(r), double(img), 1.0);
        EXPECT_NEAR(m.tempToImg(m.imgToTemp(long(img), nullptr)), double(img), 1.0);
    }
}

TEST(TesMeasConv, BadCalibrationsFlagOrConvertButNeverTrap)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (int variant = 0; variant < 10; ++variant) {
        _cal_param_t cal = variant == 0 ? _cal_param_t{} : MakeTesselCal();
        _object_par_t o;
        _adjust_par_t a;
        _tdrift_par_t drift = MakeTesselDrift();
        switch (variant) {
        case 1: cal.R = nan; break;
        case 2: cal.B = inf; break;
        case 3: cal.rangeLowTemp = -1e30f; cal.rangeHighTemp = 1e30f; break;
        case 4: a.adjustMode = 2; a.gain = 0.0f; break;
        case 5: o.emissivity = 0.0f; break;
        case 6: o.distance = -1.0f; o.relativeHumidity = nan; break;
        case 7: cal.driftK1 = 1e30f; drift.k2 = 1e30f; break;
        case 8: cal.F = 1e30f; break;
        case 9: o.extOpticsTransmission = 0.0f; break;
        default: break;
        }
        CTesMeasConv m(&a, &o, &cal);
        m.setDriftPar(&drift);
        m.setDriftMode(1);
        _imageinfo_t info;
        info.sensor[9] = variant == 7 ? 1e30f : 310.0f;
        info.sensor[10] = 300.0f;
        info.sensor[11] = nan;
        m.UpdateFromTempSens(&info);
        m.updateLUT();
        for (unsigned img = 0; img < CTesMeasConv::kLUTSize; ++img) {
            ASSERT_TRUE(m.lutStatus[img] != 0 || std::isfinite(m.lutTemp[img])) << variant << " " << img;
        }
        for (double r : {0.0, -1.0, 1e30, double(nan)}) {
            m.radToImg(r);
            m.tempToImg(r);
        }
    }
}
