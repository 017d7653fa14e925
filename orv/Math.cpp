#include "orv/Math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
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

namespace {

// Number of distinct values, counted up to `enough`: a Vandermonde matrix
// has full column rank exactly when x holds as many distinct values as it
// has columns.
size_t DistinctUpTo(const TArray<double>& x, size_t enough)
{
    std::vector<double> seen;
    for (size_t i = 0; i < x.size() && seen.size() < enough; ++i)
        if (std::find(seen.begin(), seen.end(), x.get(i)) == seen.end()) seen.push_back(x.get(i));
    return seen.size();
}

// One-sided Jacobi SVD of the n x m column-major matrix a (m small): a's
// columns become U * diag(sigma), v the m x m right singular vectors. More
// accurate than bidiagonalisation for the small singular values that decide
// a truncation.
void JacobiSVD(std::vector<double>& a, size_t n, size_t m, std::vector<double>& v)
{
    v.assign(m * m, 0.0);
    for (size_t j = 0; j < m; ++j) v[j * m + j] = 1.0;
    const double eps = std::numeric_limits<double>::epsilon();
    for (int sweep = 0; sweep < 60; ++sweep) {
        bool rotated = false;
        for (size_t p = 0; p + 1 < m; ++p) {
            for (size_t q = p + 1; q < m; ++q) {
                double* up = &a[p * n];
                double* uq = &a[q * n];
                double alpha = 0.0, beta = 0.0, gamma = 0.0;
                for (size_t i = 0; i < n; ++i) {
                    alpha += up[i] * up[i];
                    beta += uq[i] * uq[i];
                    gamma += up[i] * uq[i];
                }
                if (!(std::fabs(gamma) > eps * std::sqrt(alpha * beta))) continue;
                rotated = true;
                const double zeta = (beta - alpha) / (2.0 * gamma);
                const double t = std::copysign(1.0, zeta) / (std::fabs(zeta) + std::sqrt(1.0 + zeta * zeta));
                const double c = 1.0 / std::sqrt(1.0 + t * t);
                const double s = c * t;
                for (size_t i = 0; i < n; ++i) {
                    const double x = up[i], y = uq[i];
                    up[i] = c * x - s * y;
                    uq[i] = s * x + c * y;
                }
                double* vp = &v[p * m];
                double* vq = &v[q * m];
                for (size_t i = 0; i < m; ++i) {
                    const double x = vp[i], y = vq[i];
                    vp[i] = c * x - s * y;
                    vq[i] = s * x + c * y;
                }
            }
        }
        if (!rotated) break;
    }
}

} // namespace

bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients)
{
    if (degree < 0 || x.size() != y.size()) return false;
    const size_t n = x.size();
    const size_t m = size_t(degree) + 1;
    if (n < m) return false;
    for (size_t i = 0; i < n; ++i)
        if (!std::isfinite(x.get(i)) || !std::isfinite(y.get(i))) return false;
    if (DistinctUpTo(x, m) < m) return false;

    // The caller wants powers of x. Fitting in a centred variable and
    // mapping back is exact in theory but not in double: at degree 7 over
    // 10000..10100 the mapped terms cancel at 1e16 and no rounding of them
    // keeps the residual. So the fit is made on the powers themselves, each
    // column scaled to unit length, and the directions that double cannot
    // resolve (singular values below n * eps of the largest) are left out:
    // the coefficients stay small enough for their sum to be evaluated, and
    // the residual stays next to that of the exact fit.
    std::vector<double> a(n * m);
    std::vector<double> scale(m);
    for (size_t j = 0; j < m; ++j) {
        double* col = &a[j * n];
        double norm = 0.0;
        for (size_t i = 0; i < n; ++i) {
            col[i] = std::pow(x.get(i), double(j));
            norm = std::hypot(norm, col[i]);
        }
        if (!(norm > 0.0) || !std::isfinite(norm)) return false;
        for (size_t i = 0; i < n; ++i) col[i] /= norm;
        scale[j] = norm;
    }
    std::vector<double> v;
    JacobiSVD(a, n, m, v);

    std::vector<double> sigma(m);
    double largest = 0.0;
    for (size_t j = 0; j < m; ++j) {
        double s2 = 0.0;
        for (size_t i = 0; i < n; ++i) s2 += a[j * n + i] * a[j * n + i];
        sigma[j] = std::sqrt(s2);
        largest = std::fmax(largest, sigma[j]);
    }
    if (!(largest > 0.0)) return false;
    const double cut = largest * double(n) * std::numeric_limits<double>::epsilon();
    std::vector<double> z(m, 0.0);
    for (size_t j = 0; j < m; ++j) {
        if (!(sigma[j] > cut)) continue;
        double uy = 0.0;
        for (size_t i = 0; i < n; ++i) uy += a[j * n + i] * y.get(i);
        const double w = uy / (sigma[j] * sigma[j]);
        for (size_t k = 0; k < m; ++k) z[k] += w * v[j * m + k];
    }

    std::vector<double> result(m);
    for (size_t j = 0; j < m; ++j) {
        result[j] = z[j] / scale[j];
        if (!std::isfinite(result[j])) return false;
    }
    coefficients.clear();
    coefficients.reserve(m);
    for (double c : result) coefficients.add(c);
    return true;
}

} // namespace orv
