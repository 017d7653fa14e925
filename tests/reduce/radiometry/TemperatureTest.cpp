#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "reduce/convert/RadiometryTables.h"
#include "reduce/convert/TemperatureKernels.h"
#include "tests/reduce/radiometry/RadiometryTestUtil.h"

using namespace orv;
using namespace orv::reduce;
using namespace radiometry_test;

namespace {

const ETempType kScales[4] = {tempCelsius, tempFahrenheit, tempKelvin, tempRankine};

// Interpolation by a linear scan over the rows.
double TableRef(double x, const std::vector<double>& t, const std::vector<double>& temp)
{
    if (x <= t.front()) return temp.front();
    for (size_t k = 1; k < t.size(); ++k)
        if (x <= t[k]) return temp[k - 1] + (temp[k] - temp[k - 1]) * (x - t[k - 1]) / (t[k] - t[k - 1]);
    return temp.back();
}

// Mid-band Planck inverse with its own constants, Kelvin.
double PlanckRef(double radiance, double bandEnd, double bandStart, double emissivity)
{
    const double w = (bandEnd + bandStart) / 2.0;
    return 14388.3 / (w * std::log1p((bandEnd - bandStart) * 11910.66 * emissivity / (std::pow(w, 5) * radiance)));
}

// A 6 x 4 frame and its three region shapes, with the flat indices each yields.
struct SRegions {
    unsigned short width = 6, height = 4;
    SArea rect{1, 1, 2, 3};
    std::vector<unsigned> rectFlats{7, 8, 9, 13, 14, 15};
    TArray<SScanLine> lines{{3, 4, 5}, {0, 2, 2}};
    std::vector<unsigned> lineFlats{22, 23, 2};
    std::vector<unsigned char> mask = std::vector<unsigned char>(6 * 4, 0);
    std::vector<unsigned> maskFlats{1, 20};
    SRegions()
    {
        mask[1] = 1;
        mask[20] = 1;
    }
};

} // namespace

TEST(Temperature, ScalarPolynomialSquaresXButFrameFormsDoNot)
{
    double c[4] = {1.0, 2.0, 3.0, 4.0};
    // x = 1.0 / 0.5 = 2: 1 + 2 x + 3 x^2 + 4 x^4 against the true cubic 1 + 2 x + 3 x^2 + 4 x^3.
    EXPECT_EQ(ToTemperatureCoeffs(1.0, c, 3, 0.5, tempCelsius), 81.0);
    EXPECT_EQ(ToTemperatureCoeffs(1.0, c, 3, 0.5, tempKelvin), 81.0 + 273.15);
    EXPECT_EQ(ToTemperatureCoeffs(1.0, c, 0, 0.5, tempCelsius), 1.0);
    EXPECT_EQ(ToTemperatureCoeffs(1.0, c, -1, 0.5, tempCelsius), 1.0);
    EXPECT_EQ(_ToTemperatureCoeffs(1.0, c, 3, 0.5), 49.0);
    EXPECT_EQ(_ToTemperatureCoeffs(1.0, c, -1, 0.5), 0.0);
    // The frame forms' true polynomial is checked over all orders below.
}

TEST(Temperature, FramePolynomialOverOrdersScalesAndTypes)
{
    double c[8] = {-40.0, 30.0, -4.0, 0.9, -0.1, 0.01, -5e-4, 1e-5};
    ForEachFloat([&]<class S>() {
        ForEachFloat([&]<class D>() {
            const unsigned n = 40;
            std::vector<S> src(n);
            for (unsigned i = 0; i < n; ++i) src[i] = S(0.25 + 0.1 * i);
            for (ETempType scale : kScales) {
                for (int order : {1, 2, 3, 4, 5, 6, 7, 0, -1}) {
                    std::vector<D> dst(n);
                    ASSERT_TRUE(ToTemperatureCoeffs(Typed(dst), Typed(src), n, c, order, 0.8, scale));
                    for (unsigned i = 0; i < n; ++i) {
                        const double expected =
                            order < 0 ? FromCelsius(0.0, scale) : FromCelsius(Horner(c, order, src[i] / 0.8), scale);
                        ASSERT_TRUE(Close(dst[i], D(expected), std::is_same_v<D, float> ? 1e-6 : 1e-11, 1e-9))
                            << "order " << order << " scale " << scale << " at " << i;
                    }
                }
            }
        });
    });
}

TEST(Temperature, ScalarLookupEndsAndSizes)
{
    double t[3] = {1.0, 2.0, 4.0};
    double temp[3] = {10.0, 20.0, 30.0};
    double out = -1.0;
    EXPECT_FALSE(ToTemperatureLookup(out, 1.5, t, temp, 1, true, 1.0, tempCelsius));
    EXPECT_EQ(out, -1.0);
    EXPECT_EQ(_ToTemperatureLookup(1.5, t, temp, 1, 1.0), 0.0);
    EXPECT_TRUE(ToTemperatureLookup(out, 4.0, t, temp, 3, false, 1.0, tempCelsius));
    EXPECT_EQ(out, 30.0);
    EXPECT_FALSE(ToTemperatureLookup(out, 5.0, t, temp, 3, false, 1.0, tempCelsius));
    EXPECT_EQ(out, 30.0);
    EXPECT_TRUE(ToTemperatureLookup(out, 0.5, t, temp, 3, true, 1.0, tempKelvin));
    EXPECT_EQ(out, 10.0 + 273.15);
    EXPECT_TRUE(ToTemperatureLookup(out, 1.5, t, temp, 3, false, 0.5, tempCelsius)); // x = 3
    EXPECT_EQ(out, 25.0);
}

TEST(Temperature, FrameLookupMatchesALinearScanAndStopsOutsideTheTable)
{
    for (int size = 2; size <= 9; ++size) {
        std::vector<double> t, temp;
        for (int k = 0; k < size; ++k) {
            t.push_back(k * k + 0.5 * k);
            temp.push_back(-20.0 + 7.0 * k + std::sin(k));
        }
        const unsigned n = 97;
        std::vector<double> src(n);
        for (unsigned i = 0; i < n; ++i) src[i] = t.back() * i / (n - 1);
        std::vector<float> dst(n);
        ASSERT_TRUE(
            ToTemperatureLookup(Typed(dst), Typed(src), n, t.data(), temp.data(), size, false, 1.0, tempFahrenheit));
        for (unsigned i = 0; i < n; ++i)
            ASSERT_TRUE(Close(dst[i], float(FromCelsius(TableRef(src[i], t, temp), tempFahrenheit)), 1e-6, 1e-5))
                << size << " " << i;
    }

    std::vector<double> t{1.0, 2.0, 3.0}, temp{10.0, 20.0, 30.0};
    std::vector<double> src{1.0, 1.5, 2.0, 2.5, 9.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    std::vector<double> dst(10, -1.0);
    EXPECT_FALSE(ToTemperatureLookup(Typed(dst), Typed(src), 10, t.data(), temp.data(), 3, false, 1.0, tempCelsius));
    EXPECT_EQ(dst, (std::vector<double>{10, 15, 20, 25, -1, -1, -1, -1, -1, -1}));
    EXPECT_TRUE(ToTemperatureLookup(Typed(dst), Typed(src), 10, t.data(), temp.data(), 3, true, 1.0, tempCelsius));
    EXPECT_EQ(dst[4], 30.0);
    EXPECT_EQ(dst[9], 10.0);
    EXPECT_TRUE(ToTemperatureLookup(Typed(dst), Typed(src), 0, t.data(), temp.data(), 3, false, 1.0, tempCelsius));
    dst.assign(10, -1.0);
    EXPECT_FALSE(ToTemperatureLookup(Typed(dst), Typed(src), 10, t.data(), temp.data(), 1, true, 1.0, tempCelsius));
    EXPECT_EQ(dst, std::vector<double>(10, -1.0));

    // Per preset: each pixel's own table.
    std::vector<double> t2{0.0, 10.0}, temp2{0.0, 100.0};
    double* tables[8] = {t.data(), t2.data()};
    double* temps[8] = {temp.data(), temp2.data()};
    int sizes[8] = {3, 2};
    std::vector<unsigned char> preset{0, 1, 1, 0};
    std::vector<double> psSrc{1.5, 2.5, 20.0, 2.5}, psDst(4);
    EXPECT_TRUE(ToTemperatureLookup(Typed(psDst), Typed(psSrc), preset.data(), 4, tables, temps, sizes, true, 1.0,
                                    tempCelsius));
    EXPECT_EQ(psDst, (std::vector<double>{15.0, 25.0, 100.0, 25.0}));
    psDst.assign(4, -1.0);
    EXPECT_FALSE(ToTemperatureLookup(Typed(psDst), Typed(psSrc), preset.data(), 4, tables, temps, sizes, false, 1.0,
                                     tempCelsius));
    EXPECT_EQ(psDst, (std::vector<double>{15.0, 25.0, -1.0, -1.0}));
}

// Frame kernels search the rows their own way; on a row a value lies in two
// intervals, and they must take the one the single-value search takes,
// which decides the last bit. Ascending, repeated, falling, unevenly spread
// (several rows to a cell of the search grid) and infinite rows; values on,
// beside and between rows, outside the table and NaN, alone and in frames.
TEST(Temperature, FrameLookupChoosesTheIntervalsOfTheSingleValueSearch)
{
    int onRowDifferences = 0;
    for (int shape = 0; shape < 13; ++shape) {
        const int size = shape < 7 ? std::vector<int>{2, 3, 5, 8, 13, 64, 100}[shape] : shape < 11 ? 9 : 40;
        std::vector<double> t, temp;
        for (int k = 0; k < size; ++k) {
            t.push_back(shape == 11 ? std::pow(1.6, k) : 0.3 * k * k + 0.7 * k + 0.01);
            temp.push_back(-20.0 + 7.1 * k + std::sin(1.3 * k));
        }
        if (shape == 7) t[4] = t[3];             // a repeated row
        if (shape == 8) std::reverse(t.begin(), t.end()); // falling rows
        if (shape == 9) t[1] = t[0], t.back() = t[size - 2]; // repeated end rows
        if (shape == 10) t.back() = INFINITY;
        if (shape == 12) t.assign(size, 2.0); // one value
        std::vector<double> src{-1.0, t.front() - 1.0, t.back() + 1.0, std::nan(""), -INFINITY, INFINITY};
        for (int k = 0; k < size; ++k) {
            src.push_back(t[k]);
            src.push_back(std::nextafter(t[k], -INFINITY));
            src.push_back(std::nextafter(t[k], INFINITY));
            if (k) src.push_back(0.5 * (t[k - 1] + t[k]));
            // The data can tell the two intervals of an inner row apart.
            if (k && k + 1 < size && shape < 7)
                onRowDifferences += temp[k - 1] + (temp[k] - temp[k - 1]) * (t[k] - t[k - 1]) / (t[k] - t[k - 1]) != temp[k];
        }
        const double span = std::isfinite(t.back()) ? t.back() - t.front() : 100.0;
        for (int k = 0; k < 500; ++k) src.push_back(t.front() - 0.05 * span + 1.1 * span * ((k * 7919) % 500) / 500.0);
        // Frames of a thousand values and more are searched another way.
        for (size_t i = 0, m = src.size(); src.size() < 1200; ++i) src.push_back(src[i % m]);
        const unsigned n = unsigned(src.size());
        std::vector<double> want(n), got(n), gotPS(n), gotRect(n), inPlace = src;
        for (unsigned i = 0; i < n; ++i) want[i] = _ToTemperatureLookup(src[i], t.data(), temp.data(), size, 1.0);
        ASSERT_TRUE(ToTemperatureLookup(Typed(got), Typed(src), n, t.data(), temp.data(), size, true, 1.0, tempCelsius));
        ASSERT_TRUE(ToTemperatureLookup(Typed(inPlace), Typed(inPlace), n, t.data(), temp.data(), size, true, 1.0,
                                        tempCelsius));
        ASSERT_TRUE(ToTemperatureLookup(Typed(gotRect), Typed(src), 100, uint16_t(n / 100), SArea{0, 0, uint16_t(n / 100 - 1), 99},
                                        t.data(), temp.data(), size, true, 1.0, tempCelsius));
        double* tables[8] = {nullptr, t.data()};
        double* temps[8] = {nullptr, temp.data()};
        int sizes[8] = {0, size};
        std::vector<unsigned char> preset(n, 1);
        ASSERT_TRUE(ToTemperatureLookup(Typed(gotPS), Typed(src), preset.data(), n, tables, temps, sizes, true, 1.0,
                                        tempCelsius));
        EXPECT_EQ(std::memcmp(got.data(), want.data(), n * sizeof(double)), 0) << "shape " << shape;
        EXPECT_EQ(std::memcmp(inPlace.data(), want.data(), n * sizeof(double)), 0) << "shape " << shape;
        EXPECT_EQ(std::memcmp(gotRect.data(), want.data(), n / 100 * 100 * sizeof(double)), 0) << "shape " << shape;
        EXPECT_EQ(std::memcmp(gotPS.data(), want.data(), n * sizeof(double)), 0) << "shape " << shape;

        // Without clamping the first value outside the table ends the call.
        std::vector<double> some, stopped(1100, -7.0);
        for (double v : src)
            if (!(v < t.front() || v > t.back())) some.push_back(v); // NaN too
        some.resize(1100, std::nan(""));
        some[1050] = -INFINITY;
        unsigned stop = 0;
        for (double out; stop < 1100; ++stop)
            if (!ToTemperatureLookup(out, some[stop], t.data(), temp.data(), size, false, 1.0, tempCelsius)) break;
        EXPECT_FALSE(ToTemperatureLookup(Typed(stopped), Typed(some), 1100, t.data(), temp.data(), size, false, 1.0,
                                         tempCelsius));
        for (unsigned i = 0; i < stop; ++i) {
            const double expected = _ToTemperatureLookup(some[i], t.data(), temp.data(), size, 1.0);
            ASSERT_EQ(std::memcmp(&stopped[i], &expected, sizeof(double)), 0) << "shape " << shape << " at " << i;
        }
        EXPECT_EQ(std::vector<double>(stopped.begin() + stop, stopped.end()), std::vector<double>(1100 - stop, -7.0));
    }
    EXPECT_GT(onRowDifferences, 0);
}

TEST(Temperature, PlanckInverseRoundTripsWithinTheConstantMismatch)
{
    for (double tempC : {-20.0, 25.0, 100.0, 500.0}) {
        const double radiance = Radiance(tempC, 10.0, 10.01, 1.0);
        const double kelvin = ToTemperaturePlanck(radiance, 10.01, 10.0, 1.0, tempKelvin);
        const double error = (kelvin - (tempC + 273.15)) / (tempC + 273.15);
        // The inverse's constants differ by about 7e-6 from the forward ones.
        EXPECT_LT(std::fabs(error), 2e-5) << tempC;
        EXPECT_GT(std::fabs(error), 1e-7) << tempC;
        EXPECT_TRUE(Close(kelvin, PlanckRef(radiance, 10.01, 10.0, 1.0), 1e-13));
        EXPECT_DOUBLE_EQ(ToTemperaturePlanck(radiance, 10.01, 10.0, 0.5, tempKelvin),
                         ToTemperaturePlanck(2.0 * radiance, 10.01, 10.0, 1.0, tempKelvin));
        EXPECT_DOUBLE_EQ(ToTemperaturePlanck(radiance, 10.01, 10.0, 1.0, tempRankine), kelvin * 1.8);
    }
    ForEachFloat([]<class S>() {
        ForEachFloat([]<class D>() {
            std::vector<S> src{S(0.5), S(2.0), S(9.0)};
            std::vector<D> dst(3);
            ASSERT_TRUE(ToTemperaturePlanck(Typed(dst), Typed(src), 3, 12.0, 8.0, 0.9, tempCelsius));
            for (int i = 0; i < 3; ++i) EXPECT_TRUE(Close(dst[i], D(PlanckRef(src[i], 12.0, 8.0, 0.9) - 273.15), 1e-6));
        });
    });
}

TEST(Temperature, CalibrationCurveRoundTripsAndHonoursItsFloor)
{
    const double R = 350000.0, B = 1420.0, F = 1.2, O = 15.0, em = 0.9;
    for (double kelvin = 250.0; kelvin <= 420.0; kelvin += 17.0) {
        const double radiance = (R / (std::exp(B / kelvin) - F) + O) * em;
        EXPECT_TRUE(Close(ToTemperatureRBF(radiance, R, B, F, O, 0, 0, 0, 0, em, tempKelvin), kelvin, 1e-12));
    }
    EXPECT_EQ(ToTemperatureRBF(0.0, R, B, F, 0.0, 0, 0, 0, 0, 1.0, tempFahrenheit), -459.67);
    EXPECT_EQ(ToTemperatureRBF(0.0, R, B, F, 0.0, 0, 0, 0, 0, 1.0, tempCelsius), -273.15);
    EXPECT_EQ(ToTemperatureRBF(-3.0, R, B, F, 0.0, 0, 0, 0, 0, 1.0, tempRankine), 0.0);
    EXPECT_DOUBLE_EQ(ToTemperatureRBF(1e30, R, B, 2.0, 0.0, 0, 0, 0, 0, 1.0, tempKelvin), B / std::log(2.0 * 1.0002));
    EXPECT_DOUBLE_EQ(ToTemperatureRBF(1e30, R, B, 0.5, 0.0, 0, 0, 0, 0, 1.0, tempKelvin), B / std::log(1.0002));

    std::vector<float> src{100.0f, 2000.0f, 0.0f};
    std::vector<double> dst(3);
    ASSERT_TRUE(ToTemperatureRBF(Typed(dst), Typed(src), 3, R, B, F, O, 0, 0, 0, 0, em, tempCelsius));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(dst[i], ToTemperatureRBF(src[i], R, B, F, O, 0, 0, 0, 0, em, tempCelsius));
    const unsigned indices[2] = {1, 1};
    ASSERT_TRUE(ToTemperatureRBF(Typed(dst), Typed(src), indices, 2, R, B, F, O, 0, 0, 0, 0, em, tempCelsius));
    EXPECT_EQ(dst[0], dst[1]);
    std::vector<unsigned char> preset{0, 1, 1};
    double Rs[8] = {R, 2 * R}, Bs[8] = {B, B}, Fs[8] = {F, F}, Os[8] = {O, 0};
    ASSERT_TRUE(ToTemperatureRBF(Typed(dst), Typed(src), preset.data(), 3, Rs, Bs, Fs, Os, 0, 0, 0, 0, em, tempKelvin));
    EXPECT_EQ(dst[1], ToTemperatureRBF(2000.0, 2 * R, B, F, 0, 0, 0, 0, 0, em, tempKelvin));
    ASSERT_TRUE(ToTemperatureRBF(Typed(dst), Typed(src), indices, preset.data(), 2, Rs, Bs, Fs, Os, 0, 0, 0, 0, em,
                                 tempKelvin));
    EXPECT_EQ(dst[0], ToTemperatureRBF(2000.0, 2 * R, B, F, 0, 0, 0, 0, 0, em, tempKelvin));
}

TEST(Temperature, PerPresetPolynomialServesPresetsZeroToThreeWithAFloatSum)
{
    double c0[3] = {1.0, 0.1, 0.01}, c1[2] = {-5.0, 2.0}, c2[1] = {7.0};
    double* coefs[8] = {c0, c1, c2, c0};
    int orders[8] = {2, 1, 0, 2};
    std::vector<double> src{3.3, 4.4, 5.5, 6.6};
    std::vector<unsigned char> preset{0, 1, 3, 0};
    std::vector<double> dst(4, -1.0);
    ASSERT_TRUE(ToTemperatureCoeffs(Typed(dst), Typed(src), preset.data(), 4, coefs, orders, 1.0, tempKelvin));
    for (int i = 0; i < 4; ++i) {
        const double* c = coefs[preset[i]];
        float sum = 0.0f;
        for (int k = 0; k <= orders[preset[i]]; ++k) sum = float(sum + c[k] * std::pow(src[i], k));
        EXPECT_EQ(dst[i], double(sum) + 273.15) << i;
    }
    preset = {0, 1, 4, 0};
    dst.assign(4, -1.0);
    EXPECT_FALSE(ToTemperatureCoeffs(Typed(dst), Typed(src), preset.data(), 4, coefs, orders, 1.0, tempCelsius));
    EXPECT_NE(dst[1], -1.0);
    EXPECT_EQ(dst[2], -1.0);
    EXPECT_EQ(dst[3], -1.0);
    preset = {2, 0, 0, 0};
    dst.assign(4, -1.0);
    EXPECT_FALSE(ToTemperatureCoeffs(Typed(dst), Typed(src), preset.data(), 4, coefs, orders, 1.0, tempCelsius));
    EXPECT_EQ(dst, std::vector<double>(4, -1.0));
}

TEST(Temperature, MethodIsChosenPerPreset)
{
    double table[3] = {0.0, 1.0, 2.0}, temps[3] = {0.0, 50.0, 80.0};
    double coefs[3] = {10.0, 20.0, 1.0};
    STemperatureParams params[8];
    params[0] = {table, temps, 3, coefs, 2}; // table wins over coefficients
    params[1] = {nullptr, nullptr, 0, coefs, 2};
    params[2] = {table, temps, 1, coefs, 0}; // neither: Planck
    const SCommonParams common{1.0, 0.9, tempFahrenheit, 12.0, 8.0};
    std::vector<float> src{1.5f, 1.5f, 1.5f, 3.0f};
    std::vector<unsigned char> preset{0, 1, 2, 0};
    std::vector<double> dst(4);
    const bool active[8] = {true, true, true};
    ASSERT_TRUE(RadianceToTemperature(Typed(src), Typed(dst), preset.data(), 4, active, params, common));
    double byTable = 0.0;
    ToTemperatureLookup(byTable, 1.5, table, temps, 3, true, 0.9, tempFahrenheit);
    const double byCoefs = FromCelsius(_ToTemperatureCoeffs(1.5, coefs, 2, 0.9), tempFahrenheit);
    const double byPlanck = ToTemperaturePlanck(1.5, 12.0, 8.0, 0.9, tempFahrenheit);
    EXPECT_DOUBLE_EQ(dst[0], byTable);
    EXPECT_DOUBLE_EQ(dst[1], byCoefs);
    EXPECT_DOUBLE_EQ(dst[2], byPlanck);
    EXPECT_DOUBLE_EQ(dst[3], FromCelsius(80.0, tempFahrenheit)); // clamped at the table's end

    for (int p = 0; p < 3; ++p) {
        std::vector<double> one(1);
        ASSERT_TRUE(RadianceToTemperature(Typed(src), Typed(one), 1, params[p], common));
        EXPECT_EQ(one[0], dst[p]) << p;
    }
}

TEST(Temperature, CountsToTemperatureIsRadianceThenTemperature)
{
    double rc[2] = {0.5, 0.01};
    double table[3] = {0.0, 1.0, 3.0}, temps[3] = {-10.0, 40.0, 90.0};
    double coefs[3] = {-30.0, 60.0, -2.0};
    const STemperatureParams methods[3] = {{table, temps, 3, nullptr, 0}, {nullptr, nullptr, 0, coefs, 2}, {}};
    const SCommonParams common{1.1, 0.95, tempKelvin, 12.0, 8.0};
    ForEachType([&]<class S>() {
        ForEachFloat([&]<class D>() {
            const unsigned n = 50;
            std::vector<S> src(n);
            for (unsigned i = 0; i < n; ++i) src[i] = S(i * 2);
            const SRadianceParams radiance{rc, 1, 0.0, nullptr};
            for (const STemperatureParams& method : methods) {
                std::vector<D> direct(n), chained(n);
                ASSERT_TRUE(CountsToTemperature(Typed(src), Typed(direct), n, radiance, method, common));
                ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(chained), n, radiance, common));
                ASSERT_TRUE(RadianceToTemperature(Typed(chained), Typed(chained), n, method, common));
                ASSERT_EQ(direct, chained) << TDataTypeOf<S>::value;
            }
        });
    });

    // Per preset, with per-pixel backgrounds, over a rectangle.
    const unsigned short width = 5, height = 4;
    std::vector<uint16_t> src(width * height);
    std::vector<unsigned char> preset(width * height);
    std::vector<double> image(width * height);
    for (unsigned i = 0; i < src.size(); ++i) {
        src[i] = uint16_t(100 + 9 * i);
        preset[i] = uint8_t(i % 3);
        image[i] = 0.25 * i;
    }
    SRadianceParams radiance[8];
    STemperatureParams temperature[8];
    for (int p = 0; p < 3; ++p) {
        radiance[p] = SRadianceParams{rc, -2, 1.0, image.data()};
        temperature[p] = methods[p];
    }
    const bool active[8] = {true, true, true};
    const SArea area{1, 1, 3, 3};
    std::vector<float> direct(9), chained(9);
    ASSERT_TRUE(CountsToTemperature(Typed(src), Typed(direct), preset.data(), width, height, area, active, radiance,
                                    temperature, common));
    std::vector<float> radianceFrame(src.size());
    ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(radianceFrame), preset.data(), unsigned(src.size()), active,
                                 radiance, common));
    ASSERT_TRUE(RadianceToTemperature(Typed(radianceFrame), Typed(chained), preset.data(), width, height, area, active,
                                      temperature, common));
    EXPECT_EQ(direct, chained);
    // The single-preset form applies one preset's records to every pixel.
    std::vector<float> single(9), singleChained(9);
    ASSERT_TRUE(
        CountsToTemperature(Typed(src), Typed(single), width, height, area, radiance[1], temperature[1], common));
    ASSERT_TRUE(CountsToRadiance(Typed(src), Typed(radianceFrame), unsigned(src.size()), radiance[1], common));
    ASSERT_TRUE(
        RadianceToTemperature(Typed(radianceFrame), Typed(singleChained), width, height, area, temperature[1], common));
    EXPECT_EQ(single, singleChained);
    EXPECT_EQ(single[1], direct[1]); // pixel 7 has preset 1
}

// The per-preset forms choose a method once when the presets met agree;
// each pixel must still get what its own preset gives alone. Presets alike
// and unlike in form and values, inactive presets whose records must not
// be read, index bytes above 7, backgrounds by pixel or scalar.
TEST(Temperature, PerPresetFormsMatchEachPixelsOwnPreset)
{
    const unsigned w = 40, h = 30, n = w * h;
    std::vector<uint16_t> counts(n);
    std::vector<double> image(n);
    for (unsigned i = 0; i < n; ++i) {
        counts[i] = uint16_t(40 + (i * 2654435761u >> 22) % 400);
        image[i] = 0.5 * (i % 13);
    }
    double rc[2][3] = {{0.1, 0.01, 1e-5}, {0.2, 0.011, 2e-5}};
    double tc[2][4] = {{-20.0, 9.0, -0.3, 0.01}, {-21.0, 8.5, -0.2, 0.012}};
    double table[2][3] = {{0.0, 2.0, 9.0}, {0.0, 3.0, 9.0}}, temps[3] = {-20.0, 30.0, 95.0};
    const SCommonParams common{1.1, 0.95, tempFahrenheit, 12.0, 8.0};
    const STemperatureParams methods[6] = {{nullptr, nullptr, 0, tc[0], 3}, {nullptr, nullptr, 0, tc[1], 3},
                                           {nullptr, nullptr, 0, tc[1], 2}, {table[0], temps, 3, nullptr, 0},
                                           {table[1], temps, 3, nullptr, 0}, {}};
    // Pairs of presets' methods: same, values differ, orders differ, same
    // table, tables differ, Planck, table beside polynomial.
    const int pairs[7][2] = {{0, 0}, {0, 1}, {0, 2}, {3, 3}, {3, 4}, {5, 5}, {3, 0}};
    const std::vector<std::vector<unsigned char>> patterns{{2}, {2, 1}, {1, 2, 2, 1}, {9, 2, 10, 1, 2}};
    for (const auto& pattern : patterns)
        for (int radianceCase = 0; radianceCase < 4; ++radianceCase)
            for (const auto& pair : pairs) {
                SCOPED_TRACE(::testing::Message() << int(pattern[0]) << " " << radianceCase << " " << pair[0] << pair[1]);
                // Presets 0 and 3 are never met: records that must not be read.
                SRadianceParams radiance[8];
                STemperatureParams temperature[8];
                for (int p = 0; p < 8; ++p) radiance[p] = SRadianceParams{nullptr, 2, 0.0, nullptr};
                for (int k = 0; k < 2; ++k) {
                    const int p = k + 1;
                    const int order = radianceCase == 3 ? 2 - k : radianceCase == 2 ? -2 : 2;
                    radiance[p] = SRadianceParams{rc[radianceCase == 0 ? 0 : k], order, 3.0 + k,
                                                  radianceCase == 2 ? image.data() : nullptr};
                    temperature[p] = methods[pair[k]];
                }
                const bool active[8] = {true, true, true, false};
                std::vector<unsigned char> preset(n);
                for (unsigned i = 0; i < n; ++i) preset[i] = pattern[i % pattern.size()];
                std::vector<float> got(n), gotRadiance(n), want(n), wantRadiance(n);
                std::vector<double> gotFromRadiance(n), wantFromRadiance(n), radianceIn(n);
                for (unsigned i = 0; i < n; ++i) radianceIn[i] = 0.02 * (i % 500);
                ASSERT_TRUE(CountsToTemperature(Typed(counts), Typed(got), preset.data(), n, active, radiance,
                                                temperature, common));
                ASSERT_TRUE(CountsToRadiance(Typed(counts), Typed(gotRadiance), preset.data(), n, active, radiance,
                                             common));
                ASSERT_TRUE(RadianceToTemperature(Typed(radianceIn), Typed(gotFromRadiance), preset.data(), n, active,
                                                  temperature, common));
                for (unsigned i = 0; i < n; ++i) {
                    const int p = preset[i] & 7;
                    SRadianceParams one = radiance[p];
                    if (one.backgroundImage) one.backgroundImage += i;
                    const STypedData c(&counts[i], dtUInt16);
                    ASSERT_TRUE(CountsToTemperature(c, STypedData(&want[i], dtFlt32), 1, one, temperature[p], common));
                    ASSERT_TRUE(CountsToRadiance(c, STypedData(&wantRadiance[i], dtFlt32), 1, one, common));
                    ASSERT_TRUE(RadianceToTemperature(STypedData(&radianceIn[i], dtFlt64),
                                                      STypedData(&wantFromRadiance[i], dtFlt64), 1, temperature[p],
                                                      common));
                }
                ASSERT_EQ(std::memcmp(got.data(), want.data(), n * sizeof(float)), 0);
                ASSERT_EQ(std::memcmp(gotRadiance.data(), wantRadiance.data(), n * sizeof(float)), 0);
                ASSERT_EQ(std::memcmp(gotFromRadiance.data(), wantFromRadiance.data(), n * sizeof(double)), 0);
                // A rectangle, and the radiance converted in place.
                const SArea area{3, 2, 27, 38};
                std::vector<float> rect(25 * 37);
                ASSERT_TRUE(CountsToTemperature(Typed(counts), Typed(rect), preset.data(), w, h, area, active,
                                                radiance, temperature, common));
                for (unsigned y = 0, i = 0; y < 25; ++y)
                    for (unsigned x = 0; x < 37; ++x, ++i) ASSERT_EQ(rect[i], want[(y + 3) * w + x + 2]) << i;
                ASSERT_TRUE(RadianceToTemperature(Typed(radianceIn), Typed(radianceIn), preset.data(), n, active,
                                                  temperature, common));
                ASSERT_EQ(std::memcmp(radianceIn.data(), wantFromRadiance.data(), n * sizeof(double)), 0);
            }
}

// Presets whose polynomials differ only in their values are computed four
// pixels at a time with each pixel's coefficients: every form and order,
// presets above 3 or not, runs of a length that leaves a tail, double and
// float sources, against each pixel converted alone.
TEST(Temperature, PerPresetPolynomialsOfEveryOrderMatchEachPixelAlone)
{
    const unsigned n = 611;
    std::vector<uint16_t> counts(n);
    std::vector<double> radiance(n);
    std::vector<float> radianceF(n);
    for (unsigned i = 0; i < n; ++i) {
        counts[i] = uint16_t(100 + (i * 2654435761u >> 20) % 3000);
        radiance[i] = 0.5 + 0.01 * ((i * 40503u) % 2000);
        radianceF[i] = float(radiance[i]);
    }
    double coefs[8][7];
    for (int p = 0; p < 8; ++p)
        for (int i = 0; i < 7; ++i) coefs[p][i] = (i % 2 ? -1.0 : 1.0) * (1.0 + 0.37 * p + 0.11 * i) / std::pow(7.0, i);
    const SCommonParams common{1.1, 0.95, tempKelvin, 12.0, 8.0};
    const bool active[8] = {true, true, true, true, true, true, true, true};
    for (const auto& used : {std::vector<unsigned char>{1, 2, 1, 3}, std::vector<unsigned char>{6, 1, 7, 7, 4, 0}}) {
        std::vector<unsigned char> preset(n);
        for (unsigned i = 0; i < n; ++i) preset[i] = used[(i * 7 + i / 5) % used.size()];
        for (int order : {1, 2, 3, 4, -1, -2}) {
            SCOPED_TRACE(::testing::Message() << "radiance order " << order << ", preset " << int(used[0]));
            SRadianceParams r[8];
            for (int p = 0; p < 8; ++p) r[p] = SRadianceParams{coefs[p], order, 100.0 * p, nullptr};
            std::vector<double> got(n), want(n);
            ASSERT_TRUE(CountsToRadiance(Typed(counts), Typed(got), preset.data(), n, active, r, common));
            for (unsigned i = 0; i < n; ++i)
                ASSERT_TRUE(CountsToRadiance(STypedData(&counts[i], dtUInt16), STypedData(&want[i], dtFlt64), 1,
                                             r[preset[i]], common));
            ASSERT_EQ(std::memcmp(got.data(), want.data(), n * sizeof(double)), 0);
        }
        for (int order = 1; order <= 6; ++order) {
            SCOPED_TRACE(::testing::Message() << "temperature order " << order << ", preset " << int(used[0]));
            STemperatureParams t[8];
            for (int p = 0; p < 8; ++p) t[p] = STemperatureParams{nullptr, nullptr, 0, coefs[p], order};
            std::vector<double> got(n), want(n), gotF(n), wantF(n);
            ASSERT_TRUE(RadianceToTemperature(Typed(radiance), Typed(got), preset.data(), n, active, t, common));
            ASSERT_TRUE(RadianceToTemperature(Typed(radianceF), Typed(gotF), preset.data(), n, active, t, common));
            for (unsigned i = 0; i < n; ++i) {
                ASSERT_TRUE(RadianceToTemperature(STypedData(&radiance[i], dtFlt64), STypedData(&want[i], dtFlt64), 1,
                                                  t[preset[i]], common));
                ASSERT_TRUE(RadianceToTemperature(STypedData(&radianceF[i], dtFlt32), STypedData(&wantF[i], dtFlt64),
                                                  1, t[preset[i]], common));
            }
            ASSERT_EQ(std::memcmp(got.data(), want.data(), n * sizeof(double)), 0);
            ASSERT_EQ(std::memcmp(gotF.data(), wantF.data(), n * sizeof(double)), 0);
        }
    }
}

TEST(Temperature, RegionFormsGatherInRegionOrder)
{
    const SRegions r;
    std::vector<double> src(r.width * r.height);
    for (unsigned i = 0; i < src.size(); ++i) src[i] = 0.1 + 0.05 * i;
    double coefs[3] = {5.0, 10.0, -1.0};
    double table[2] = {0.0, 2.0}, temps[2] = {0.0, 100.0};
    // Runs the polynomial, table and Planck forms over one region shape, given
    // by the arguments between the source and the method's parameters.
    auto check = [&](const std::vector<unsigned>& flats, auto... region) {
        for (int method = 0; method < 3; ++method) {
            SCOPED_TRACE(method);
            std::vector<float> got(flats.size() + 1, -1.0f);
            const STypedData out = Typed(got), in = Typed(src);
            ASSERT_TRUE(method == 0   ? ToTemperatureCoeffs(out, in, region..., coefs, 2, 1.0, tempCelsius)
                        : method == 1 ? ToTemperatureLookup(out, in, region..., table, temps, 2, true, 1.0, tempCelsius)
                                      : ToTemperaturePlanck(out, in, region..., 12.0, 8.0, 1.0, tempCelsius));
            for (size_t i = 0; i < flats.size(); ++i) {
                const double x = src[flats[i]];
                const double expected = method == 0   ? Horner(coefs, 2, x)
                                        : method == 1 ? TableRef(x, {0.0, 2.0}, {0.0, 100.0})
                                                      : PlanckRef(x, 12.0, 8.0, 1.0) - 273.15;
                EXPECT_TRUE(Close(got[i], float(expected), 1e-6, 1e-5)) << i;
            }
            EXPECT_EQ(got.back(), -1.0f);
        }
    };
    check(r.rectFlats, r.width, r.height, r.rect);
    check(r.lineFlats, r.width, r.height, r.lines);
    check(r.maskFlats, r.width, r.height, SArea{0, 0, 3, 5}, r.mask.data(), unsigned(r.width));
    const std::vector<unsigned> idx{23, 0, 23};
    check(idx, idx.data(), 3u);
}

TEST(Temperature, ConvertTemperatureOverEveryTypePair)
{
    ForEachType([]<class S>() {
        ForEachType([]<class D>() {
            S src[3] = {S(10), S(20), S(50)};
            const unsigned indices[3] = {2, 0, 0};
            D dst[3] = {};
            ASSERT_TRUE((ConvertTemperature<S, D>(dst, src, indices, 3, tempCelsius, tempFahrenheit)));
            EXPECT_EQ(dst[0], D(122));
            EXPECT_EQ(dst[1], D(50));
            EXPECT_EQ(dst[2], D(50));
            D viaTable[3] = {};
            const int at = TDataTypeOf<S>::value * 10 + TDataTypeOf<D>::value;
            ASSERT_TRUE(vecConvertTemperature[at](src, viaTable, indices, 3, tempCelsius, tempFahrenheit));
            EXPECT_EQ(std::memcmp(dst, viaTable, sizeof dst), 0);
        });
    });
    // Equal scales copy, exact for 64-bit integers; a scale outside the four fails.
    int64_t big[1] = {9007199254740993};
    int64_t out[1] = {0};
    const unsigned zero[1] = {0};
    ASSERT_TRUE((ConvertTemperature<int64_t, int64_t>(out, big, zero, 1, tempKelvin, tempKelvin)));
    EXPECT_EQ(out[0], big[0]);
    EXPECT_FALSE((ConvertTemperature<int64_t, int64_t>(out, big, zero, 1, ETempType(4), tempKelvin)));
    double k[1] = {300.0}, r[1];
    ASSERT_TRUE((ConvertTemperature<double, double>(r, k, zero, 1, tempKelvin, tempRankine)));
    EXPECT_DOUBLE_EQ(r[0], 540.0);
}

TEST(Temperature, BadElementTypesFailBeforeWriting)
{
    std::vector<int16_t> wrong{1, 2};
    std::vector<float> src{1.0f, 2.0f};
    std::vector<float> dst{-1.0f, -1.0f};
    double c[2] = {0.0, 1.0};
    EXPECT_FALSE(ToTemperatureCoeffs(Typed(dst), Typed(wrong), 2, c, 1, 1.0, tempCelsius));
    EXPECT_FALSE(ToTemperaturePlanck(Typed(wrong), Typed(src), 2, 12.0, 8.0, 1.0, tempCelsius));
    EXPECT_FALSE(RadianceToTemperature(Typed(wrong), Typed(dst), 2, STemperatureParams{}, SCommonParams{}));
    EXPECT_FALSE(
        CountsToTemperature(Typed(wrong), Typed(wrong), 2, SRadianceParams{}, STemperatureParams{}, SCommonParams{}));
    EXPECT_EQ(dst, (std::vector<float>{-1.0f, -1.0f}));
    EXPECT_EQ(wrong, (std::vector<int16_t>{1, 2}));
}
