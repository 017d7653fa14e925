#include "orv/Math.h"

#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "orv/ConvertArray.h"
#include "orv/ValueConvert.h"

namespace orv {
namespace {

// Temperatures pass through a small double buffer: one loop per element type
// in, one per formula, one per element type out. Each loop is straight-line
// and vectorisable, and the result equals converting element by element.
constexpr unsigned int kChunk = 512;

using TToDouble = void (*)(double*, const void*, unsigned int);
using TFromDouble = void (*)(void*, const double*, unsigned int);
using TFormula = void (*)(double*, unsigned int);

template <class S>
void ToDouble(double* __restrict dst, const void* source, unsigned int n)
{
    const S* __restrict src = static_cast<const S*>(source);
    for (unsigned int i = 0; i < n; ++i) dst[i] = ConvertValue<double>(src[i]);
}

template <class D>
void FromDouble(void* target, const double* __restrict src, unsigned int n)
{
    D* __restrict dst = static_cast<D*>(target);
    for (unsigned int i = 0; i < n; ++i) dst[i] = ConvertValue<D>(src[i]);
}

template <size_t... I>
constexpr std::array<TToDouble, sizeof...(I)> MakeToDouble(std::index_sequence<I...>)
{
    return {&ToDouble<TElement<EDataType(I)>>...};
}
template <size_t... I>
constexpr std::array<TFromDouble, sizeof...(I)> MakeFromDouble(std::index_sequence<I...>)
{
    return {&FromDouble<TElement<EDataType(I)>>...};
}
constexpr auto toDouble = MakeToDouble(std::make_index_sequence<10>{});
constexpr auto fromDouble = MakeFromDouble(std::make_index_sequence<10>{});

template <class F>
void Apply(double* v, unsigned int n, F f)
{
    for (unsigned int i = 0; i < n; ++i) v[i] = f(v[i]);
}

// The formulas are written exactly as the scales define them; rewriting
// (v + 273.15) * 1.8 as v * 1.8 + 491.67 would change the last bits.
void CtoF(double* v, unsigned int n) { Apply(v, n, [](double x) { return x * 1.8 + 32.0; }); }
void CtoK(double* v, unsigned int n) { Apply(v, n, [](double x) { return x + 273.15; }); }
void CtoR(double* v, unsigned int n) { Apply(v, n, [](double x) { return (x + 273.15) * 1.8; }); }
void FtoC(double* v, unsigned int n) { Apply(v, n, [](double x) { return (x - 32.0) / 1.8; }); }
void FtoK(double* v, unsigned int n) { Apply(v, n, [](double x) { return (x + 459.67) / 1.8; }); }
void FtoR(double* v, unsigned int n) { Apply(v, n, [](double x) { return x + 459.67; }); }
void KtoC(double* v, unsigned int n) { Apply(v, n, [](double x) { return x - 273.15; }); }
void KtoF(double* v, unsigned int n) { Apply(v, n, [](double x) { return x * 1.8 - 459.67; }); }
void KtoR(double* v, unsigned int n) { Apply(v, n, [](double x) { return x * 1.8; }); }
void RtoC(double* v, unsigned int n) { Apply(v, n, [](double x) { return x / 1.8 - 273.15; }); }
void RtoF(double* v, unsigned int n) { Apply(v, n, [](double x) { return x - 459.67; }); }
void RtoK(double* v, unsigned int n) { Apply(v, n, [](double x) { return x / 1.8; }); }

// Indexed from * 4 + to, in ETempType order Celsius, Fahrenheit, Kelvin,
// Rankine; equal scales have no formula.
constexpr TFormula formulas[16] = {
    nullptr, CtoF,    CtoK,    CtoR,
    FtoC,    nullptr, FtoK,    FtoR,
    KtoC,    KtoF,    nullptr, KtoR,
    RtoC,    RtoF,    RtoK,    nullptr,
};

} // namespace

bool CMath::ConvertTemperature(STypedData dst, STypedData src, unsigned int n, ETempType from, ETempType to)
{
    if (unsigned(dst.type) > dtFlt64 || unsigned(src.type) > dtFlt64) return false;
    if (unsigned(from) > tempRankine || unsigned(to) > tempRankine) return false;
    if (n == 0) return true;
    if (!dst.data || !src.data) return false;
    if (from == to) return ConvertArray(dst, src, n);

    const TToDouble in = toDouble[src.type];
    const TFromDouble out = fromDouble[dst.type];
    const TFormula formula = formulas[from * 4 + to];
    const size_t srcSize = DataTypeSize(src.type);
    const size_t dstSize = DataTypeSize(dst.type);
    const unsigned char* s = static_cast<const unsigned char*>(src.data);
    unsigned char* d = static_cast<unsigned char*>(dst.data);
    double buffer[kChunk];
    for (unsigned int done = 0; done < n;) {
        const unsigned int m = n - done < kChunk ? n - done : kChunk;
        in(buffer, s + size_t(done) * srcSize, m);
        formula(buffer, m);
        out(d + size_t(done) * dstSize, buffer, m);
        done += m;
    }
    return true;
}

template <class T>
bool CMath::ConvertTemperature(T* data, unsigned int n, ETempType from, ETempType to)
{
    const STypedData typed(data, TDataTypeOf<T>::value);
    return ConvertTemperature(typed, typed, n, from, to);
}

#define ORV_INSTANTIATE(T) template bool CMath::ConvertTemperature<T>(T*, unsigned int, ETempType, ETempType);
ORV_FOR_EACH_NUMERIC_TYPE(ORV_INSTANTIATE)
#undef ORV_INSTANTIATE

bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients)
{
    if (degree < 0 || x.size() != y.size()) return false;
    const size_t n = x.size();
    const size_t m = size_t(degree) + 1;
    if (n < m) return false;

    double lo = x.get(0), hi = x.get(0);
    for (size_t i = 1; i < n; ++i) {
        lo = std::fmin(lo, x.get(i));
        hi = std::fmax(hi, x.get(i));
    }
    if (!std::isfinite(lo) || !std::isfinite(hi)) return false;
    const double centre = 0.5 * (lo + hi);
    // All x equal: only a constant can be fitted; the rank test below
    // rejects anything more.
    const double half = hi > lo ? 0.5 * (hi - lo) : 1.0;

    // Column-major design matrix in t = (x - centre) / half, in [-1, 1].
    std::vector<double> a(n * m);
    std::vector<double> b(n);
    for (size_t i = 0; i < n; ++i) {
        const double t = (x.get(i) - centre) / half;
        double p = 1.0;
        for (size_t j = 0; j < m; ++j) {
            a[j * n + i] = p;
            p *= t;
        }
        b[i] = y.get(i);
    }

    // Householder QR; R's diagonal kept apart, R above it stays in a.
    std::vector<double> diag(m);
    for (size_t k = 0; k < m; ++k) {
        double* col = &a[k * n];
        double norm = 0.0;
        for (size_t i = k; i < n; ++i) norm = std::hypot(norm, col[i]);
        const double alpha = col[k] > 0.0 ? -norm : norm;
        diag[k] = alpha;
        col[k] -= alpha; // col[k..n) is now the reflector v
        double vv = 0.0;
        for (size_t i = k; i < n; ++i) vv += col[i] * col[i];
        if (vv == 0.0) continue; // zero column: caught by the rank test
        for (size_t j = k + 1; j < m; ++j) {
            double* cj = &a[j * n];
            double s = 0.0;
            for (size_t i = k; i < n; ++i) s += col[i] * cj[i];
            s = 2.0 * s / vv;
            for (size_t i = k; i < n; ++i) cj[i] -= s * col[i];
        }
        double s = 0.0;
        for (size_t i = k; i < n; ++i) s += col[i] * b[i];
        s = 2.0 * s / vv;
        for (size_t i = k; i < n; ++i) b[i] -= s * col[i];
    }

    double largest = 0.0;
    for (size_t k = 0; k < m; ++k) largest = std::fmax(largest, std::fabs(diag[k]));
    if (!(largest > 0.0)) return false;
    for (size_t k = 0; k < m; ++k)
        if (!(std::fabs(diag[k]) > largest * 1e-12)) return false;

    // Back substitution: coefficients in t.
    std::vector<double> c(m);
    for (size_t k = m; k-- > 0;) {
        double s = b[k];
        for (size_t j = k + 1; j < m; ++j) s -= a[j * n + k] * c[j];
        c[k] = s / diag[k];
    }

    // Back to powers of x: Horner's scheme on polynomials, with
    // t = scale * x + shift.
    const double scale = 1.0 / half;
    const double shift = -centre / half;
    std::vector<double> p(m, 0.0);
    p[0] = c[m - 1];
    for (size_t k = m - 1; k-- > 0;) {
        // p = p * (scale * x + shift) + c[k]; p has degree m - 2 - k here.
        for (size_t j = m - 1 - k; j > 0; --j) p[j] = p[j] * shift + p[j - 1] * scale;
        p[0] = p[0] * shift + c[k];
    }
    for (double v : p)
        if (!std::isfinite(v)) return false;

    coefficients.clear();
    coefficients.reserve(m);
    for (double v : p) coefficients.add(v);
    return true;
}

} // namespace orv
