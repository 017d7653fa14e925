#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "orv/ConvertArray.h"
#include "orv/Math.h"
#include "orv/ValueConvert.h"

using namespace orv;

namespace {

// A probe value in exact form: an integer or a (long) double.
struct SProbe {
    bool isFloat;
    __int128 i;
    long double f;
};

struct STypeInfo {
    EDataType type;
    int bits;
    bool isSigned;
    bool isFloat;
};

const STypeInfo types[10] = {
    {dtInt8, 8, true, false},   {dtUInt8, 8, false, false},  {dtInt16, 16, true, false}, {dtUInt16, 16, false, false},
    {dtInt32, 32, true, false}, {dtUInt32, 32, false, false}, {dtInt64, 64, true, false}, {dtUInt64, 64, false, false},
    {dtFlt32, 32, true, true},  {dtFlt64, 64, true, true},
};

// Two's complement wrap of v into a type of the given width, done with
// modular arithmetic rather than casts.
__int128 Wrap(__int128 v, int bits, bool isSigned)
{
    const __int128 modulus = __int128(1) << bits;
    __int128 m = v % modulus;
    if (m < 0) m += modulus;
    if (isSigned && m >= modulus / 2) m -= modulus;
    return m;
}

// Expected destination value of the conversion rule, as an integer or a
// long double.
SProbe Expected(const SProbe& p, const STypeInfo& d)
{
    if (d.isFloat) {
        long double v = p.isFloat ? p.f : static_cast<long double>(p.i); // exact in 64-bit mantissa
        return {true, 0, d.type == dtFlt32 ? static_cast<long double>(static_cast<float>(v))
                                           : static_cast<long double>(static_cast<double>(v))};
    }
    if (!p.isFloat) return {false, Wrap(p.i, d.bits, d.isSigned), 0};
    const long double two63 = std::ldexp(1.0L, 63);
    const __int128 indefinite = -(__int128(1) << 63);
    if (d.type == dtUInt64 && p.f >= two63) {
        // [2^63, 2^64) keeps its value; beyond, the reduced value overflows.
        if (p.f < 2 * two63) return {false, static_cast<__int128>(std::trunc(p.f)), 0};
        return {false, __int128(1) << 63, 0};
    }
    if (std::isnan(p.f) || p.f < -two63 || p.f >= two63) return {false, Wrap(indefinite, d.bits, d.isSigned), 0};
    return {false, Wrap(static_cast<__int128>(std::trunc(p.f)), d.bits, d.isSigned), 0};
}

// Probes of one source type, each already representable in it.
std::vector<SProbe> ProbesOf(const STypeInfo& s)
{
    std::vector<SProbe> out;
    if (s.isFloat) {
        const double values[] = {0.0, 1.0, -1.0, 300.7, -1.5, -0.9, 0.9, 127.5, 128.0, -129.0, 255.9, 256.0,
                                 65535.0, 65536.9, -32769.0, 2147483647.0, -2147483649.0, 4294967295.0, 4294967296.5,
                                 9007199254740993.0, 9223372036854775808.0, -9223372036854775808.0, -9.3e18,
                                 1.8e19, 18446744073709549568.0, 18446744073709551616.0, 1e30, -1e30,
                                 std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()};
        for (double v : values) {
            // A float source holds the value rounded to float.
            const long double f = s.type == dtFlt32 ? static_cast<long double>(static_cast<float>(v)) : v;
            out.push_back({true, 0, f});
        }
        return out;
    }
    const __int128 values[] = {0, 1, -1, 127, 128, -128, -129, 255, 256, 300, 32767, 32768, -32769, 65535, 65536,
                               2147483647LL, -2147483648LL, 4294967295LL, 4294967296LL, 9007199254740993LL,
                               INT64_MAX, INT64_MIN, static_cast<__int128>(UINT64_MAX), static_cast<__int128>(0x8000000000000001ULL),
                               static_cast<__int128>(18446744073709549568ULL)};
    for (__int128 v : values) out.push_back({false, Wrap(v, s.bits, s.isSigned), 0});
    return out;
}

// Calls f with a zero of the element type of t.
template <class F>
auto WithType(EDataType t, F f)
{
    switch (t) {
#define CASE(T) case TDataTypeOf<T>::value: return f(T{});
        ORV_FOR_EACH_NUMERIC_TYPE(CASE)
#undef CASE
    default: return f(int8_t{}); // only numeric types are probed
    }
}

void Fill(std::vector<unsigned char>& buffer, const STypeInfo& t, const std::vector<SProbe>& probes)
{
    WithType(t.type, [&](auto zero) {
        using T = decltype(zero);
        for (const SProbe& p : probes) {
            const T v = std::is_floating_point_v<T> ? static_cast<T>(p.f) : static_cast<T>(p.i);
            const auto* bytes = reinterpret_cast<const unsigned char*>(&v);
            buffer.insert(buffer.end(), bytes, bytes + sizeof v);
        }
    });
}

SProbe LoadAt(const STypeInfo& t, const unsigned char* at)
{
    return WithType(t.type, [&](auto v) {
        std::memcpy(&v, at, sizeof v);
        if constexpr (std::is_floating_point_v<decltype(v)>) {
            return SProbe{true, 0, static_cast<long double>(v)};
        } else {
            return SProbe{false, static_cast<__int128>(v), 0};
        }
    });
}

bool Same(const SProbe& a, const SProbe& b)
{
    if (a.isFloat != b.isFloat) return false;
    if (!a.isFloat) return a.i == b.i;
    if (std::isnan(a.f) || std::isnan(b.f)) return std::isnan(a.f) && std::isnan(b.f);
    return a.f == b.f;
}

// For failure messages; 128-bit integers print through long double.
long double Value(const SProbe& p) { return p.isFloat ? p.f : static_cast<long double>(p.i); }

// Probe sets of one source type. Floating sources get two more: the probes
// within the 32-bit range, and a long run with one value out of that range,
// since whole blocks in range take a faster path.
std::vector<std::vector<SProbe>> ProbeSetsOf(const STypeInfo& s)
{
    std::vector<std::vector<SProbe>> sets{ProbesOf(s)};
    if (!s.isFloat) return sets;
    const long double two31 = std::ldexp(1.0L, 31);
    std::vector<SProbe> inRange;
    for (const SProbe& p : sets[0])
        if (p.f >= -two31 && p.f < two31) inRange.push_back(p);
    sets.push_back(inRange);
    std::vector<SProbe> run;
    for (int i = 0; i < 700; ++i) run.push_back({true, 0, (i * 37 % 1000) * 1.375L - 500.0L});
    run[400].f = 5e9L; // a multiple of 2^9 within float's 24 bits: exact in both
    sets.push_back(run);
    return sets;
}

} // namespace

TEST(ConvertArray, EveryTypePairFollowsTheConversionRule)
{
    for (const STypeInfo& s : types)
        for (const std::vector<SProbe>& probes : ProbeSetsOf(s)) {
            std::vector<unsigned char> source;
            Fill(source, s, probes);
            for (const STypeInfo& d : types) {
                const size_t size = DataTypeSize(d.type);
                std::vector<unsigned char> target(probes.size() * size + 8, 0xA5);
                ASSERT_TRUE(ConvertArray(STypedData(target.data(), d.type), STypedData(source.data(), s.type),
                                         unsigned(probes.size())));
                for (size_t k = 0; k < probes.size(); ++k) {
                    const SProbe got = LoadAt(d, target.data() + k * size);
                    const SProbe want = Expected(probes[k], d);
                    EXPECT_TRUE(Same(got, want)) << "type " << s.type << " value " << Value(probes[k]) << " to type " << d.type
                                                 << ": got " << Value(got) << ", want " << Value(want);
                }
                // Nothing beyond count elements is written.
                for (size_t k = probes.size() * size; k < target.size(); ++k) EXPECT_EQ(target[k], 0xA5);
            }
        }
}

TEST(ConvertArray, RejectedArgumentsWriteNothing)
{
    const double in[] = {300.7, -1.5};
    int32_t guard[2] = {7, 7};
    EXPECT_FALSE(ConvertArray(STypedData(guard, dtRGB24), STypedData(in, dtFlt64), 2));
    EXPECT_FALSE(ConvertArray(STypedData(guard, dtInt32), STypedData(in, dtNoData), 2));
    EXPECT_FALSE(ConvertArray(STypedData(guard, EDataType(-1)), STypedData(in, dtFlt64), 2));
    EXPECT_FALSE(ConvertArray(STypedData(guard, dtInt32), STypedData(static_cast<void*>(nullptr), dtFlt64), 2));
    EXPECT_TRUE(ConvertArray(STypedData(guard, dtInt32), STypedData(static_cast<void*>(nullptr), dtFlt64), 0));
    EXPECT_TRUE(guard[0] == 7 && guard[1] == 7);
}

TEST(ConvertTemperature, HandValuesAndRoundTrips)
{
    // The same temperatures on the four scales, index = ETempType.
    // The same temperatures on the four scales, index = ETempType.
    const double in[4][4] = {{0.0, 32.0, 273.15, 491.67},     // freezing
                             {100.0, 212.0, 373.15, 671.67},  // boiling
                             {-273.15, -459.67, 0.0, 0.0},    // absolute zero
                             {-40.0, -40.0, 233.15, 419.67}}; // where Celsius meets Fahrenheit
    for (int from = 0; from < 4; ++from)
        for (int to = 0; to < 4; ++to) {
            SCOPED_TRACE(testing::Message() << from << "->" << to);
            const double source[4] = {in[0][from], in[1][from], in[2][from], in[3][from]};
            double out[4], back[4];
            ASSERT_TRUE(CMath::ConvertTemperature(STypedData(out, dtFlt64), STypedData(source, dtFlt64), 4, ETempType(from), ETempType(to)));
            ASSERT_TRUE(CMath::ConvertTemperature(STypedData(back, dtFlt64), STypedData(out, dtFlt64), 4, ETempType(to), ETempType(from)));
            for (int i = 0; i < 4; ++i) {
                EXPECT_NEAR(out[i], in[i][to], 1e-9);
                EXPECT_NEAR(back[i], source[i], 1e-9);
            }
        }

    // Literal formulas, not an algebraic rearrangement: (v + 273.15) * 1.8.
    const double v = 21.37;
    double r;
    ASSERT_TRUE(CMath::ConvertTemperature(STypedData(&r, dtFlt64), STypedData(&v, dtFlt64), 1, tempCelsius, tempRankine));
    EXPECT_EQ(r, (v + 273.15) * 1.8);

    // Mixed types: computed in double, stored by the conversion rule
    // (truncation toward zero, wrapping).
    const int16_t celsius[3] = {25, -300, 0};
    uint16_t kelvin[3];
    ASSERT_TRUE(CMath::ConvertTemperature(STypedData(kelvin, dtUInt16), STypedData(celsius, dtInt16), 3, tempCelsius, tempKelvin));
    // 298.15; -26.85 -> -26, wrapped; 273.15.
    EXPECT_EQ(std::vector<uint16_t>(kelvin, kelvin + 3), (std::vector<uint16_t>{298, 65536 - 26, 273}));
    const float hot = 300.7f;
    uint8_t same;
    ASSERT_TRUE(CMath::ConvertTemperature(STypedData(&same, dtUInt8), STypedData(&hot, dtFlt32), 1, tempKelvin, tempKelvin));
    EXPECT_EQ(same, 44);

    // More elements than one internal block, with an odd tail.
    std::vector<float> many(1500), manyOut(1500);
    for (size_t i = 0; i < many.size(); ++i) many[i] = float(i) - 700.0f;
    ASSERT_TRUE(CMath::ConvertTemperature(STypedData(manyOut.data(), dtFlt32), STypedData(many.data(), dtFlt32), 1500, tempFahrenheit, tempCelsius));
    for (size_t i = 0; i < many.size(); ++i) ASSERT_EQ(manyOut[i], float((double(many[i]) - 32.0) / 1.8));

    // In place on integers.
    int32_t f[3] = {32, 212, -40};
    ASSERT_TRUE(CMath::ConvertTemperature<int32_t>(f, 3, tempFahrenheit, tempCelsius));
    EXPECT_EQ(std::vector<int32_t>(f, f + 3), (std::vector<int32_t>{0, 100, -40}));
    uint16_t k[2] = {300, 0};
    ASSERT_TRUE(CMath::ConvertTemperature<uint16_t>(k, 2, tempKelvin, tempCelsius));
    // 26.85; -273.15 wraps like every element conversion.
    EXPECT_EQ(std::vector<uint16_t>(k, k + 2), (std::vector<uint16_t>{26, uint16_t(-273)}));

    // Rejected arguments leave the target alone.
    double guard = 5.0;
    EXPECT_FALSE(CMath::ConvertTemperature(STypedData(&guard, dtFlt64), STypedData(&v, dtFlt64), 1, ETempType(4), tempCelsius));
    EXPECT_FALSE(CMath::ConvertTemperature(STypedData(&guard, dtFlt64), STypedData(&v, dtRGB24), 1, tempCelsius, tempKelvin));
    EXPECT_FALSE(CMath::ConvertTemperature(STypedData(&guard, dtNoData), STypedData(&v, dtFlt64), 1, tempCelsius, tempKelvin));
    EXPECT_EQ(guard, 5.0);
}

TEST(LinearLeastSquareFit, RecoversPolynomials)
{
    // An exact line, constant term first.
    TArray<double> x{1.0, 2.0, 3.0, 4.0}, y{5.0, 7.0, 9.0, 11.0}, c;
    ASSERT_TRUE(LinearLeastSquareFit(x, y, 1, c));
    ASSERT_EQ(c.size(), 2u);
    EXPECT_NEAR(c[0], 3.0, 1e-12);
    EXPECT_NEAR(c[1], 2.0, 1e-12);

    // A cubic over offset x comes back exactly enough to extrapolate.
    TArray<double> cx, cy, cc;
    for (int i = 0; i <= 20; ++i) {
        const double t = 9000.0 + 100.0 * i;
        cx.add(t);
        cy.add(2.0 - 3e-3 * t + 4e-7 * t * t - 1e-11 * t * t * t);
    }
    ASSERT_TRUE(LinearLeastSquareFit(cx, cy, 3, cc));
    ASSERT_EQ(cc.size(), 4u);
    EXPECT_NEAR(cc[0], 2.0, 1e-6);
    EXPECT_NEAR(cc[3] / -1e-11, 1.0, 1e-6);

    // A constant through identical x values works; a line through them is
    // singular.
    TArray<double> same{3.0, 3.0, 3.0}, vals{1.0, 2.0, 3.0}, k;
    ASSERT_TRUE(LinearLeastSquareFit(same, vals, 0, k));
    EXPECT_NEAR(k[0], 2.0, 1e-12);

    TArray<double> untouched{42.0};
    EXPECT_FALSE(LinearLeastSquareFit(same, vals, 1, untouched));
    EXPECT_FALSE(LinearLeastSquareFit(x, y, -1, untouched));
    EXPECT_FALSE(LinearLeastSquareFit(x, y, 4, untouched)); // 4 points, 5 coefficients
    TArray<double> shortY{1.0, 2.0};
    EXPECT_FALSE(LinearLeastSquareFit(x, shortY, 1, untouched));
    TArray<double> withNaN{1.0, std::nan(""), 3.0, 4.0};
    EXPECT_FALSE(LinearLeastSquareFit(withNaN, y, 1, untouched));
    ASSERT_EQ(untouched.size(), 1u);
    EXPECT_EQ(untouched[0], 42.0);
}

namespace {

// Residual of the best polynomial of a degree, made another way: normal
// equations in long double on x centred and scaled to [-1, 1], evaluated in
// that variable, so that no power coefficient of x ever exists.
long double BestResidual(const TArray<double>& x, const TArray<double>& y, int degree)
{
    const int m = degree + 1;
    long double lo = x[0], hi = x[0];
    for (double v : x) {
        lo = std::min<long double>(lo, v);
        hi = std::max<long double>(hi, v);
    }
    const long double mid = (lo + hi) / 2, half = (hi - lo) / 2;
    long double a[9][10] = {};
    for (size_t i = 0; i < x.size(); ++i) {
        long double p[9] = {1.0L};
        for (int j = 1; j < m; ++j) p[j] = p[j - 1] * ((x[i] - mid) / half);
        for (int r = 0; r < m; ++r) {
            for (int c = 0; c < m; ++c) a[r][c] += p[r] * p[c];
            a[r][m] += p[r] * y[i];
        }
    }
    for (int k = 0; k < m; ++k)
        for (int r = k + 1; r < m; ++r) {
            const long double f = a[r][k] / a[k][k];
            for (int c = k; c <= m; ++c) a[r][c] -= f * a[k][c];
        }
    long double s[9];
    for (int k = m - 1; k >= 0; --k) {
        long double v = a[k][m];
        for (int j = k + 1; j < m; ++j) v -= a[k][j] * s[j];
        s[k] = v / a[k][k];
    }
    long double sum = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        long double p = 0;
        for (int j = m - 1; j >= 0; --j) p = p * ((x[i] - mid) / half) + s[j];
        sum += (p - y[i]) * (p - y[i]);
    }
    return std::sqrt(sum);
}

} // namespace

TEST(LinearLeastSquareFit, ResidualOfTheBestFitOverOffsetAndTinyRanges)
{
    // Noise of 0.005 from a fixed generator; curves as calibrations see them:
    // counts against radiances of 1e-5 to 1e-3, and a gentle curve far from 0.
    struct SRange {
        double lo, hi;
        double (*curve)(double);
    };
    const SRange ranges[] = {
        {10000.0, 10100.0, [](double x) { return 3.0 + 0.01 * (x - 10050.0) + 8e-5 * (x - 10050.0) * (x - 10050.0); }},
        {1e-5, 1e-3, [](double x) { return 16000.0 * std::pow(x / 1e-3, 0.8); }},
        {-2e-4, 5e-4, [](double x) { return std::exp(4000.0 * x); }},
    };
    for (const SRange& range : ranges) {
        uint32_t state = 12345;
        TArray<double> x, y;
        for (int i = 0; i < 60; ++i) {
            state = state * 1664525u + 1013904223u;
            const double noise = 0.005 * (double(state >> 8) / double(1u << 24) * 2.0 - 1.0);
            const double xi = range.lo + (range.hi - range.lo) * i / 59.0;
            x.add(xi);
            y.add(range.curve(xi) + noise);
        }
        for (int degree = 1; degree <= 8; ++degree) {
            TArray<double> c;
            ASSERT_TRUE(LinearLeastSquareFit(x, y, degree, c)) << range.lo << " degree " << degree;
            ASSERT_EQ(c.size(), size_t(degree) + 1);
            // The coefficients as a caller uses them: Horner in double.
            double sum = 0.0;
            for (size_t i = 0; i < x.size(); ++i) {
                double p = 0.0;
                for (size_t j = c.size(); j-- > 0;) p = p * x[i] + c[j];
                sum += (p - y[i]) * (p - y[i]);
            }
            const double best = double(BestResidual(x, y, degree));
            EXPECT_LE(std::sqrt(sum), 1.2 * best + 1e-9) << range.lo << " degree " << degree;
        }
    }
}
