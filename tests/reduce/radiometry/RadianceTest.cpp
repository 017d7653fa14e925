#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "reduce/convert/RadianceKernels.h"
#include "tests/reduce/radiometry/RadiometryTestUtil.h"

using namespace orv;
using namespace orv::reduce;
using namespace radiometry_test;

namespace {

// Planck's spectral radiance with the constants of the band integral.
double Planck(double w, double tempC)
{
    return 11910.7 / ((std::exp(14388.4 / (w * (tempC + 273.15))) - 1.0) * std::pow(w, 5.0));
}

double Simpson(double a, double b, double tempC, int panels)
{
    const double h = (b - a) / panels;
    double sum = Planck(a, tempC) + Planck(b, tempC);
    for (int i = 1; i < panels; ++i) sum += (i % 2 ? 4.0 : 2.0) * Planck(a + i * h, tempC);
    return sum * h / 3.0;
}

const double kCoefs[7] = {1.5, -0.25, 0.01, -1e-4, 2e-6, -1e-8, 3e-11};

} // namespace

TEST(Radiance, BandIntegralMatchesFineSimpsonIntegration)
{
    // The trapezoid rule with h = 0.01 differs from the integral by
    // h^2 / 12 (f'(b) - f'(a)) to leading order; adding that term to a fine
    // Simpson integral predicts the band integral to about 1e-11.
    const double h = 0.01;
    auto slope = [](double w, double t) { return (Planck(w + 1e-5, t) - Planck(w - 1e-5, t)) / 2e-5; };
    for (double t : {-20.0, 30.0, 300.0}) {
        for (auto band : {std::pair{8.0, 12.0}, std::pair{3.0, 5.0}}) {
            const double a = band.first, b = band.second;
            const double expected = Simpson(a, b, t, 4000) + h * h / 12.0 * (slope(b, t) - slope(a, t));
            EXPECT_TRUE(Close(Radiance(t, a, b, 1.0), expected, 1e-9)) << t << " " << a;
        }
        // Band ends are truncated onto the 0.01 grid; the scale multiplies.
        EXPECT_EQ(Radiance(t, 8.004, 12.009, 1.0), Radiance(t, 8.0, 12.0, 1.0));
        EXPECT_TRUE(Close(Radiance(t, 8.0, 12.0, 2.5), 2.5 * Radiance(t, 8.0, 12.0, 1.0), 1e-14));
    }
    EXPECT_EQ(Radiance(30.0, 12.0, 8.0, 1.0), 0.0);
    EXPECT_EQ(Radiance(30.0, 10.0, 10.0, 1.0), 0.0); // a single point has no area
}

TEST(Radiance, SingleValuePolynomialAndBackgroundModes)
{
    EXPECT_EQ(ToRadiance(100.0, nullptr, 0, 0.0, 2.0), 200.0); // order 0 reads no coefficients
    double c[2] = {5.0, 1.0};
    EXPECT_EQ(ToRadiance(12.0, c, -1, 2.0, 2.0), 25.0); // offset not scaled
    EXPECT_EQ(ToRadiance(12.0, c, -2, 2.0, 2.0), 30.0);
    EXPECT_EQ(ToRadiance(12.0, c, -3, 2.0, 2.0), 0.0);
    // The positive orders are checked with the frame forms below.
}

TEST(Radiance, FrameFormsOverAllElementTypesAndOrders)
{
    ForEachType([]<class S>() {
        ForEachFloat([]<class D>() {
            const unsigned n = 100;
            std::vector<S> src(n);
            std::vector<double> image(n);
            for (unsigned i = 0; i < n; ++i) {
                src[i] = S(std::is_floating_point_v<S> ? i + 0.25 : i);
                image[i] = 0.5 * i;
            }
            double c[7];
            std::memcpy(c, kCoefs, sizeof c);
            for (int order : {0, 1, 2, 3, 4, 5, 6, -1, -2, -3}) {
                std::vector<D> scalar(n), perPixel(n), fromParams(n);
                ASSERT_TRUE(ToRadiance(Typed(scalar), Typed(src), n, c, order, 3.0, 1.25));
                ASSERT_TRUE(ToRadiance(Typed(perPixel), Typed(src), n, c, order, image.data(), 1.25));
                SRadianceParams params{c, order, 3.0, nullptr};
                ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(fromParams), n, params, SCommonParams{1.25}));
                for (unsigned i = 0; i < n; ++i) {
                    const double v = double(src[i]);
                    const double tol = std::is_same_v<D, float> ? 1e-6 : 1e-12;
                    ASSERT_TRUE(Close(scalar[i], D(RadianceRef(v, c, order, 3.0, 1.25)), tol, 1e-9))
                        << TDataTypeOf<S>::value << " order " << order << " at " << i;
                    ASSERT_TRUE(Close(perPixel[i], D(RadianceRef(v, c, order, image[i], 1.25)), tol, 1e-9));
                    ASSERT_EQ(fromParams[i], scalar[i]);
                    ASSERT_TRUE(Close(ToRadiance(v, c, order, 3.0, 1.25), RadianceRef(v, c, order, 3.0, 1.25), 1e-13));
                }
            }
        });
    });
}

TEST(Radiance, RegionFormsReadFrameOrderAndWriteDensely)
{
    const unsigned short width = 6, height = 5;
    std::vector<uint16_t> src(width * height);
    std::vector<double> image(width * height);
    for (unsigned i = 0; i < src.size(); ++i) {
        src[i] = uint16_t(1000 + 7 * i);
        image[i] = 3.0 * i;
    }
    double c[2] = {2.0, 0.5};
    const SRadianceParams params{c, -2, 0.0, image.data()};
    const SCommonParams common{2.0};
    auto expect = [&](const std::vector<unsigned>& flats, const std::vector<double>& got) {
        ASSERT_EQ(got.size(), flats.size() + 1);
        for (size_t i = 0; i < flats.size(); ++i)
            EXPECT_DOUBLE_EQ(got[i], RadianceRef(src[flats[i]], c, -2, image[flats[i]], 2.0)) << i;
        EXPECT_EQ(got.back(), -1.0) << "wrote past the region";
    };

    // Runs the params form over one region shape, given by the arguments
    // between the destination and the parameters.
    std::vector<double> out;
    auto run = [&](const std::vector<unsigned>& flats, auto... region) {
        out.assign(flats.size() + 1, -1.0);
        ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(out), region..., params, common));
        expect(flats, out);
    };
    run({8, 9, 10, 14, 15, 16, 20, 21, 22}, width, height, SArea{1, 2, 3, 4});
    run({1, 2, 3, 24}, width, height, TArray<SScanLine>{{0, 1, 3}, {4, 0, 0}, {2, 5, 4}});
    const unsigned stride = 8;
    std::vector<unsigned char> mask(stride * height, 0);
    mask[0 * stride + 5] = 1;
    mask[2 * stride + 0] = 9;
    mask[4 * stride + 3] = 1;
    mask[4 * stride + 4] = 1;
    mask[4 * stride + 7] = 1; // outside the area
    run({5, 12, 27, 28}, width, height, SArea{0, 0, 4, 5}, mask.data(), stride);
    const unsigned indices[4] = {29, 0, 7, 7};
    run({29, 0, 7, 7}, &indices[0], 4u);
    out.assign(5, -1.0);
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), indices, 4, c, -2, image.data(), 2.0));
    expect({29, 0, 7, 7}, out);
}

TEST(Radiance, LimitsJudgeTheStoredValueHighClampFirst)
{
    std::vector<double> src{0.5, 1.0, 1.5, 5.0, -5.0};
    std::vector<float> out(5);
    std::vector<unsigned char> status(5, 0xAA);
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), status.data(), 5, 0.0, 1.0, -1.0, 2.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(status, (std::vector<unsigned char>{0, 1, 1, 4, 2}));
    EXPECT_EQ(out, (std::vector<float>{0.5f, 1.0f, 1.5f, 2.0f, -1.0f}));

    // Above the high clamp and below the low clamp: the high clamp wins.
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), status.data(), 5, 0.0, 1.0, 10.0, 2.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(status[3], 4);
    EXPECT_EQ(out[3], 2.0f);
    EXPECT_EQ(status[0], 0);
    EXPECT_EQ(status[1], 2); // 1.0 is below the low clamp of 10
    EXPECT_EQ(out[1], 10.0f);

    // The value is rounded to the destination type before it is judged.
    std::vector<double> near{1.0 + 5e-13};
    std::vector<double> outD(1);
    std::vector<float> outF(1);
    unsigned char s = 0xAA;
    ASSERT_TRUE(ToRadiance(Typed(outD), Typed(near), &s, 1, 1.0 + 1e-13, 3.0, 0.0, 4.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(s, 0);
    ASSERT_TRUE(ToRadiance(Typed(outF), Typed(near), &s, 1, 1.0 + 1e-13, 3.0, 0.0, 4.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(s, 1);

    const unsigned indices[2] = {3, 0};
    ASSERT_TRUE(
        ToRadiance(Typed(out), Typed(src), status.data(), indices, 2, 0.0, 1.0, -1.0, 2.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(status[0], 4);
    EXPECT_EQ(out[0], 2.0f);
    EXPECT_EQ(status[1], 0);
    EXPECT_EQ(out[1], 0.5f);

    // Unsigned 64-bit sources are not served with limits.
    std::vector<uint64_t> big{1, 2};
    std::vector<float> untouched{-7.0f, -7.0f};
    EXPECT_FALSE(ToRadiance(Typed(untouched), Typed(big), status.data(), 2, 0.0, 1.0, -1.0, 2.0, nullptr, 0, 0.0, 1.0));
    EXPECT_EQ(untouched, (std::vector<float>{-7.0f, -7.0f}));
    EXPECT_TRUE(ToRadiance(Typed(untouched), Typed(big), 2, nullptr, 0, 0.0, 1.0));
}

TEST(Radiance, RangeFormFillsTablesWithOrWithoutChecks)
{
    double c[2] = {0.0, 0.5};
    float out[5];
    unsigned char status[5];
    std::memset(status, 0xAA, sizeof status);
    ASSERT_TRUE(CountsToRadiance(10, 14, out, status, true, 5.2, 6.8, 0.0, 6.9, c, 1, 0.0, 1.0));
    EXPECT_EQ(std::vector<float>(out, out + 5), (std::vector<float>{5.0f, 5.5f, 6.0f, 6.5f, 6.9f}));
    EXPECT_EQ(std::vector<unsigned char>(status, status + 5), (std::vector<unsigned char>{1, 0, 0, 0, 4}));

    std::memset(status, 0xAA, sizeof status);
    ASSERT_TRUE(CountsToRadiance(10, 14, out, status, false, 5.2, 6.8, 0.0, 6.9, c, 1, 0.0, 1.0));
    EXPECT_EQ(out[4], 7.0f);
    EXPECT_EQ(std::vector<unsigned char>(status, status + 5), std::vector<unsigned char>(5, 0));

    out[0] = -1.0f;
    EXPECT_TRUE(CountsToRadiance(14, 10, out, status, true, 0, 0, 0, 0, c, 1, 0.0, 1.0));
    EXPECT_EQ(out[0], -1.0f);

    // The whole 16-bit range, as the look-up tables use it.
    std::vector<float> table(65536);
    ASSERT_TRUE(CountsToRadiance(0, 65535, table.data(), nullptr, true, 0, 0, 0, 0, c, 1, 0.0, 2.0));
    EXPECT_EQ(table[65535], 65535.0f);
}

TEST(Radiance, PerPresetBackgroundImagesServeActivePresetsZeroToThree)
{
    const unsigned n = 16;
    std::vector<uint16_t> src(n);
    std::vector<unsigned char> preset(n);
    std::vector<double> image(n);
    for (unsigned i = 0; i < n; ++i) {
        src[i] = uint16_t(500 + i);
        preset[i] = uint8_t(i % 8);
        image[i] = 1000.0 + i;
    }
    double c[8][2];
    SRadianceParams params[8];
    for (int p = 0; p < 8; ++p) {
        c[p][0] = p;
        c[p][1] = 1.0;
        params[p] = SRadianceParams{c[p], -2, 100.0 + p, nullptr};
    }
    for (int p : {0, 1, 2, 3, 5}) params[p].backgroundImage = image.data();
    const bool active[8] = {true, false, true, true, true, true, true, true};
    std::vector<double> out(n);
    ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(out), preset.data(), n, active, params, SCommonParams{1.0}));
    for (unsigned i = 0; i < n; ++i) {
        const int p = preset[i];
        const bool usesImage = p == 0 || p == 2 || p == 3; // 1 is inactive, 5 is beyond the four
        EXPECT_EQ(out[i], RadianceRef(src[i], c[p], -2, usesImage ? image[i] : 100.0 + p, 1.0)) << i;
    }

    // The same through the index list and the rectangle forms.
    const unsigned indices[3] = {13, 2, 9};
    std::vector<double> idx(3);
    ASSERT_TRUE(
        CountsToRadiance(Typed(src), Typed(idx), preset.data(), indices, 3, active, params, SCommonParams{1.0}));
    EXPECT_EQ(idx, (std::vector<double>{out[13], out[2], out[9]}));
    std::vector<double> rect(4);
    ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(rect), preset.data(), 4, 4, SArea{1, 1, 2, 2}, active, params,
                                 SCommonParams{1.0}));
    EXPECT_EQ(rect, (std::vector<double>{out[5], out[6], out[9], out[10]}));
}

TEST(Radiance, PerPresetShapesTakeEveryParameterByPreset)
{
    std::vector<int32_t> src{10, 20, 30, 40};
    std::vector<unsigned char> preset{0, 1, 0, 1};
    double c0[2] = {1.0, 2.0}, c1[2] = {-3.0, 0.5};
    double* coefs[8] = {c0, c1, c0, c0, c0, c0, c0, c0};
    int orders[8] = {1, -1, 1, 1, 1, 1, 1, 1};
    double backgrounds[8] = {0.0, 4.0};
    double scales[8] = {2.0, 3.0, 1, 1, 1, 1, 1, 1};
    std::vector<double> image{1.0, 2.0, 3.0, 4.0};
    double* images[8] = {nullptr, image.data()};
    std::vector<float> out(4);
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), preset.data(), 4, coefs, orders, backgrounds, scales));
    EXPECT_EQ(out, (std::vector<float>{42.0f, 21.0f, 122.0f, 51.0f}));
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), preset.data(), 4, coefs, orders, images, scales));
    EXPECT_EQ(out[1], float(0.5 * (20 - 2.0) * 3.0 - 3.0));
    EXPECT_EQ(out[3], float(0.5 * (40 - 4.0) * 3.0 - 3.0));

    double lows[8] = {0, 0}, highs[8] = {50, 10}, clampLows[8] = {-1, -1}, clampHighs[8] = {100, 40};
    std::vector<unsigned char> status(4, 0xAA);
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), status.data(), preset.data(), 4, lows, highs, clampLows, clampHighs,
                           coefs, orders, backgrounds, scales));
    EXPECT_EQ(status, (std::vector<unsigned char>{0, 1, 4, 4}));
    EXPECT_EQ(out, (std::vector<float>{42.0f, 21.0f, 100.0f, 40.0f}));

    const unsigned indices[2] = {3, 2};
    ASSERT_TRUE(ToRadiance(Typed(out), Typed(src), status.data(), indices, preset.data(), 2, lows, highs, clampLows,
                           clampHighs, coefs, orders, backgrounds, scales));
    EXPECT_EQ(out[0], 40.0f);
    EXPECT_EQ(out[1], 100.0f);
}

TEST(Radiance, BadElementTypesFailBeforeTouchingAnything)
{
    std::vector<uint16_t> src{1, 2};
    std::vector<uint64_t> dst{7, 7};
    double c[2] = {0, 1};
    const SRadianceParams params{c, 1, 0.0, nullptr};
    EXPECT_FALSE(CountsToRadiance(Typed(src), Typed(dst), 2, params, SCommonParams{}));
    EXPECT_FALSE(ToRadiance(Typed(dst), Typed(src), 2, c, 1, 0.0, 1.0));
    EXPECT_EQ(dst, (std::vector<uint64_t>{7, 7}));
    std::vector<float> out{7, 7};
    EXPECT_FALSE(CountsToRadiance(STypedData(src.data(), dtRGB24), Typed(out), 2, params, SCommonParams{}));
    EXPECT_FALSE(CountsToRadiance(STypedData(src.data(), dtNoData), Typed(out), 4, 4, SArea{0, 0, 0, 1}, params,
                                  SCommonParams{}));
    unsigned char preset[2] = {0, 0};
    const bool active[8] = {};
    const SRadianceParams perPreset[8];
    EXPECT_FALSE(
        CountsToRadiance(Typed(src), STypedData(out.data(), dtInt32), preset, 2, active, perPreset, SCommonParams{}));
    EXPECT_EQ(out, (std::vector<float>{7.0f, 7.0f}));
}

TEST(Radiance, ObjectSignalFitIsTheLeastSquaresQuadratic)
{
    double rad[3], sig[3];
    EXPECT_FALSE(objSigToRad(-275, 10, 1e5, 1400, 1, 8, 12, rad));
    EXPECT_FALSE(objSigToRad(20, 20, 1e5, 1400, 1, 8, 12, rad));
    EXPECT_FALSE(objSigToRad(20, 10, 1e5, 1400, 1, 8, 12, rad, sig));

    const double R = 1e5, B = 1400, F = 1.0;
    ASSERT_TRUE(objSigToRad(0, 100, R, B, F, 8.0, 12.0, rad, sig));
    // A least-squares solution leaves residuals orthogonal to 1, x and x^2.
    auto orthogonal = [](const std::vector<double>& x, const std::vector<double>& y, const double* c) {
        for (int k = 0; k <= 2; ++k) {
            double dot = 0.0, scale = 0.0;
            for (size_t i = 0; i < x.size(); ++i) {
                const double r = y[i] - (c[0] + c[1] * x[i] + c[2] * x[i] * x[i]);
                dot += r * std::pow(x[i], k);
                scale += std::fabs(y[i] * std::pow(x[i], k));
            }
            EXPECT_LT(std::fabs(dot), 1e-9 * scale) << k;
        }
    };
    std::vector<double> signals, radiances;
    for (int t = 0; t <= 100; ++t) {
        signals.push_back(R / (std::exp(B / (273.15 + t)) - F));
        radiances.push_back(Radiance(t, 8.0, 12.0, 1.0));
    }
    orthogonal(signals, radiances, rad);
    orthogonal(radiances, signals, sig);
    double single[3];
    ASSERT_TRUE(objSigToRad(0, 100, R, B, F, 8.0, 12.0, single));
    EXPECT_EQ(std::vector<double>(single, single + 3), std::vector<double>(rad, rad + 3));
}
