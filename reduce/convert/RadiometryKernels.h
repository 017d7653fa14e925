#pragma once
// Per-pixel bodies and kernel templates of the radiance and temperature
// kernels; included by the files that instantiate their tables.
//
// Each kernel decides everything that does not vary per pixel (polynomial
// order, background form, temperature scale, status) once per call and then
// hands one straight-line body to the region walker, so the pixel loop holds
// no type test, no switch and no call.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "reduce/convert/RadianceKernels.h"
#include "reduce/convert/RadiometryTables.h"
#include "reduce/convert/TemperatureKernels.h"
#include "reduce/convert/TemperatureScale.h"
#include "reduce/kernels/Vector.h"

namespace orv::reduce::priv {

// ---------------------------------------------------------------------------
// Bodies

// dst[i] = value(src[flat], flat): the source element at the pixel's place in
// the frame, the result at its place in the output.
template <class S, class D, class V>
struct TMapBody {
    static constexpr bool kNeedsXY = false;
    const S* src;
    D* dst;
    V value;
    void operator()(unsigned flat, unsigned i, unsigned, unsigned)
    {
        dst[i] = ConvertValue<D>(value(ConvertValue<double>(src[flat]), flat));
    }
};

template <class S, class D, class W, class V>
inline void Map(const void* src, void* dst, const W& walk, V value)
{
    TMapBody<S, D, V> body{static_cast<const S*>(src), static_cast<D*>(dst), value};
    walk(body);
}

// As TMapBody, for values that can fail: value(v, flat, out) returns false to
// end the call; the pixels after it are left as they are.
template <class S, class D, class V>
struct TMapUntilBody {
    static constexpr bool kNeedsXY = false;
    const S* src;
    D* dst;
    V value;
    bool failed = false;
    void operator()(unsigned flat, unsigned i, unsigned, unsigned)
    {
        if (failed) return;
        double out;
        if (value(ConvertValue<double>(src[flat]), flat, out)) dst[i] = ConvertValue<D>(out);
        else failed = true;
    }
};

template <class S, class D, class W, class V>
inline bool MapUntil(const void* src, void* dst, const W& walk, V value)
{
    TMapUntilBody<S, D, V> body{static_cast<const S*>(src), static_cast<D*>(dst), value};
    walk(body);
    return !body.failed;
}

// Judges a stored value against the limits; returns its status flag.
template <class D>
inline unsigned char ApplyLimits(D& value, const SLimits& l)
{
    const double r = value;
    if (r > l.validLow && r < l.validHigh) return 0;
    // The high clamp is tested first on purpose: a value above clampHigh is
    // clamped high even when it is also below clampLow.
    if (r > l.clampHigh) {
        value = ConvertValue<D>(l.clampHigh);
        return kRadianceClampedHigh;
    }
    if (r < l.clampLow) {
        value = ConvertValue<D>(l.clampLow);
        return kRadianceClampedLow;
    }
    return kRadianceOutsideValid;
}

// As TMapBody, then the value rounded to the destination type is judged
// against limits(flat).
template <class S, class D, class V, class L>
struct TMapStatusBody {
    static constexpr bool kNeedsXY = false;
    const S* src;
    D* dst;
    unsigned char* status;
    V value;
    L limits;
    void operator()(unsigned flat, unsigned i, unsigned, unsigned)
    {
        D r = ConvertValue<D>(value(ConvertValue<double>(src[flat]), flat));
        status[i] = ApplyLimits(r, limits(flat));
        dst[i] = r;
    }
};

template <class S, class D, class W, class V, class L>
inline void MapStatus(const void* src, void* dst, const W& walk, unsigned char* status, V value, L limits)
{
    TMapStatusBody<S, D, V, L> body{static_cast<const S*>(src), static_cast<D*>(dst), status, value, limits};
    walk(body);
}

// Coefficients copied out of the caller's array, so that the compiler keeps
// them in registers instead of reloading them after each store.
template <int N>
struct TCoefs {
    double c[N];
    explicit TCoefs(const double* from)
    {
        for (int i = 0; i < N; ++i) c[i] = from[i];
    }
};

// ---------------------------------------------------------------------------
// Radiance polynomial

// Forms of the radiance polynomial: the order itself for -2 to 4, and these.
constexpr int kRadiancePow = 5;   // orders above 4
constexpr int kRadianceZero = -3; // orders below -2

template <class F>
decltype(auto) WithRadianceForm(int order, F&& f)
{
    switch (order) {
    case 0: return f.template operator()<0>();
    case 1: return f.template operator()<1>();
    case 2: return f.template operator()<2>();
    case 3: return f.template operator()<3>();
    case 4: return f.template operator()<4>();
    case -1: return f.template operator()<-1>();
    case -2: return f.template operator()<-2>();
    }
    if (order > 4) return f.template operator()<kRadiancePow>();
    return f.template operator()<kRadianceZero>();
}

// v the signal, c the coefficients, b the background, s the scale.
template <int K>
inline double RadiancePoly(double v, const double* c, int order, double b, double s)
{
    if constexpr (K == 0) return v * s;
    else if constexpr (K == 1) return (c[0] + c[1] * v) * s;
    else if constexpr (K == 2) return (c[0] + c[1] * v + c[2] * v * v) * s;
    else if constexpr (K == 3) return (c[0] + c[1] * v + c[2] * v * v + c[3] * v * v * v) * s;
    else if constexpr (K == 4) return (c[0] + c[1] * v + c[2] * v * v + c[3] * v * v * v + c[4] * v * v * v * v) * s;
    else if constexpr (K == kRadiancePow) {
        double sum = 0.0;
        for (int i = 0; i <= order; ++i) sum += std::pow(v, i) * c[i];
        return s * sum;
    }
    // The offset c0 is deliberately not scaled in this background mode.
    else if constexpr (K == -1)
        return c[1] * (v - b) * s + c[0];
    else if constexpr (K == -2) return (c[1] * (v - b) + c[0]) * s;
    else return 0.0;
}

inline double RadianceValue(double v, const double* c, int order, double b, double s)
{
    return WithRadianceForm(order, [&]<int K>() { return RadiancePoly<K>(v, c, order, b, s); });
}

// Coefficients a form reads.
template <int K>
constexpr int kRadianceCoefs = K >= 1 && K <= 4 ? K + 1 : (K == -1 || K == -2 ? 2 : 0);

// Non-PS radiance kernel over walker W (whole frame and index list; the
// other regions are made of runs of the whole-frame kernel). It takes no
// limits: the status forms judge the stored values in a second pass.
template <class W>
struct TRadiance {
    template <class S, class D>
    struct K {
        static void Run(const void* src, void* dst, const W& walk, const SPoly& p, unsigned char*, const SLimits&)
        {
            const double s = p.scale;
            WithRadianceForm(p.order, [&]<int F>() {
                constexpr int n = kRadianceCoefs<F>;
                if constexpr (F == -1 || F == -2) {
                    const TCoefs<n> k(p.coefficients);
                    if (const double* img = p.backgroundImage) {
                        Map<S, D>(src, dst, walk,
                                  [=](double v, unsigned flat) { return RadiancePoly<F>(v, k.c, 0, img[flat], s); });
                    } else {
                        const double b = p.background;
                        Map<S, D>(src, dst, walk, [=](double v, unsigned) { return RadiancePoly<F>(v, k.c, 0, b, s); });
                    }
                } else if constexpr (n > 0) {
                    const TCoefs<n> k(p.coefficients);
                    Map<S, D>(src, dst, walk, [=](double v, unsigned) { return RadiancePoly<F>(v, k.c, 0, 0.0, s); });
                } else {
                    const double* c = p.coefficients;
                    const int order = p.order;
                    Map<S, D>(src, dst, walk, [=](double v, unsigned) { return RadiancePoly<F>(v, c, order, 0.0, s); });
                }
            });
        }
    };
};

// Judges n stored values against one set of limits.
template <class D>
void JudgeLimits(D* values, unsigned char* status, unsigned int n, const SLimits& limits)
{
    for (unsigned int i = 0; i < n; ++i) status[i] = ApplyLimits(values[i], limits);
}

// The radiance of one pixel of a per-preset call.
inline double RadiancePS(const SPolyPS& set, double v, unsigned flat)
{
    const SPoly& q = set.preset[set.presetIndex[flat] & kPresetMask];
    const double b = q.backgroundImage ? q.backgroundImage[flat] : q.background;
    return RadianceValue(v, q.coefficients, q.order, b, q.scale);
}

// ---------------------------------------------------------------------------
// Temperature methods

// Orders 1 to 6 written out; 0 stands for every other order.
template <class F>
decltype(auto) WithTempOrder(int order, F&& f)
{
    switch (order) {
    case 1: return f.template operator()<1>();
    case 2: return f.template operator()<2>();
    case 3: return f.template operator()<3>();
    case 4: return f.template operator()<4>();
    case 5: return f.template operator()<5>();
    case 6: return f.template operator()<6>();
    }
    return f.template operator()<0>();
}

template <int N>
inline double TempPoly(double x, const double* c)
{
    const double x2 = x * x;
    const double x3 = x2 * x;
    const double x4 = x3 * x;
    const double x5 = x4 * x;
    const double x6 = x5 * x;
    if constexpr (N == 1) return c[0] + c[1] * x;
    else if constexpr (N == 2) return c[0] + c[1] * x + c[2] * x2;
    else if constexpr (N == 3) return c[0] + c[1] * x + c[2] * x2 + c[3] * x3;
    else if constexpr (N == 4) return c[0] + c[1] * x + c[2] * x2 + c[3] * x3 + c[4] * x4;
    else if constexpr (N == 5) return c[0] + c[1] * x + c[2] * x2 + c[3] * x3 + c[4] * x4 + c[5] * x5;
    else return c[0] + c[1] * x + c[2] * x2 + c[3] * x3 + c[4] * x4 + c[5] * x5 + c[6] * x6;
}

// Any order through pow; -1 and below give 0.
inline double TempPolyPow(double x, const double* c, int order)
{
    double sum = 0.0;
    for (int i = 0; i <= order; ++i) sum += c[i] * std::pow(x, i);
    return sum;
}

inline double TempPolyValue(double x, const double* c, int order)
{
    return WithTempOrder(order, [&]<int N>() {
        if constexpr (N == 0) return TempPolyPow(x, c, order);
        else return TempPoly<N>(x, c);
    });
}

// The interval [m-1, m] the reference search takes for x within the rows,
// or 0 when it takes none (a NaN, or rows that do not ascend). A value
// exactly on an inner row lies in two intervals, and the one this search
// reaches first decides the last bit of the result; every faster search
// below defers to it there.
inline int ReferenceInterval(double x, const double* t, int size)
{
    int lo = 1, hi = size - 1, m = size / 2;
    while (lo <= hi) {
        if (t[m] >= x && x >= t[m - 1]) return m;
        if (x < t[m - 1]) hi = m - 1;
        else lo = m + 1;
        m = (lo + hi) / 2;
    }
    return 0;
}

inline double Interpolate(double x, const double* t, const double* temp, int m)
{
    return temp[m - 1] + (temp[m] - temp[m - 1]) * (x - t[m - 1]) / (t[m] - t[m - 1]);
}

// Celsius from a table of at least two rows; inside is false for a value
// beyond either end, which gets the end row's temperature. The reference.
inline double LookupCelsius(double x, const double* t, const double* temp, int size, bool& inside)
{
    inside = false;
    if (x < t[0]) return temp[0];
    if (x > t[size - 1]) return temp[size - 1];
    inside = true;
    const int m = ReferenceInterval(x, t, size);
    return m ? Interpolate(x, t, temp, m) : std::numeric_limits<double>::quiet_NaN();
}

// Whether writing n elements of type D at dst after reading all n of type S
// at src gives what reading and writing them one after the other gives: no
// element would be read after an earlier one was written over it.
template <class S, class D>
inline bool ReadsPrecedeWrites(const S* src, const D* dst, size_t n)
{
    const uintptr_t s = reinterpret_cast<uintptr_t>(src), d = reinterpret_cast<uintptr_t>(dst);
    if (d + n * sizeof(D) <= s || s + n * sizeof(S) <= d) return true;
    return d <= s && sizeof(D) <= sizeof(S);
}

// A temperature table ready for many searches. For finite rows that do not
// fall, a grid of cells over the rows' range gives each value the first row
// to try, and a fixed number of steps without branches (one when no cell
// holds two rows) find its interval; values exactly on a row, rare in
// measured data, take the reference search's interval, so results are the
// same to the bit. Run converts whole runs in chunks so that the two
// divisions of each value sit in loops the compiler vectorises (four wide
// where the processor has AVX2): per value, they cost more than the search.
// Other tables, and calls too small to pay for the grid, search as the
// reference.
class CLookupRows {
public:
    CLookupRows() = default;
    // withGrid: build the grid (worth it from about a thousand values).
    CLookupRows(const double* t, const double* temp, int size, bool withGrid)
        : m_t(t), m_temp(temp), m_size(size)
    {
        if (!withGrid || size < 2) return;
        for (int i = 0; i < size; ++i)
            if (!std::isfinite(t[i]) || std::isnan(temp[i]) || (i && !(t[i - 1] <= t[i]))) return;
        const double range = t[size - 1] - t[0];
        int cells = std::min(kMaxCells, 16 * size);
        m_scale = cells / range;
        if (!(range > 0) || !std::isfinite(range) || !std::isfinite(m_scale)) {
            cells = 1;
            m_scale = 0.0;
        }
        m_lastCell = cells - 1;
        // A cell starts at the first row of a later cell than the rows
        // before it: the cell of a value bounds its row from both sides,
        // whatever the rounding, as the same rule places rows and values.
        m_grid.assign(size_t(cells), 0);
        for (int i = 0; i < size; ++i) ++m_grid[size_t(Cell(t[i]))];
        int first = 0, most = 0;
        for (int& c : m_grid) {
            most = std::max(most, c);
            first += std::exchange(c, first);
        }
        while ((1 << m_steps) <= most) ++m_steps;
        // Row 0, where values below the rows, NaN and the first row itself
        // land, stands for the first interval; all three are written apart.
        m_rows.resize(size_t(size));
        for (int i = 1; i < size; ++i) m_rows[size_t(i)] = SRow{t[i - 1], t[i], temp[i - 1], temp[i]};
        m_rows[0] = m_rows[1];
    }

    bool Fast() const { return m_steps > 0; }

    double Celsius(double x, bool& inside) const
    {
        const double* t = m_t;
        if (!Fast()) return LookupCelsius(x, t, m_temp, m_size, inside);
        inside = false;
        if (x < t[0]) return m_temp[0];
        if (x > t[m_size - 1]) return m_temp[m_size - 1];
        inside = true;
        if (x != x) return std::numeric_limits<double>::quiet_NaN();
        int m = Row(x, Cell(x));
        if (t[m] == x && !(m = ReferenceInterval(x, t, m_size))) return std::numeric_limits<double>::quiet_NaN();
        return Interpolate(x, t, m_temp, m);
    }

    // dst[k] = the temperature of src[k] / em in scale To, for k below n,
    // as Celsius would give it; Fast() tables only. Returns n, or, when
    // allowClamp is false, the index of the first value outside the table,
    // the values before it written. Per chunk: the values and their cells,
    // then each value's row (the one scalar loop), then the interpolation;
    // values outside the rows, NaN and values on a row are noted on the way
    // and written last.
    template <ETempType To, class S, class D>
    ORV_VECTOR_CLONES unsigned int Run(const S* src, D* dst, unsigned int n, double em, bool allowClamp) const
    {
        constexpr unsigned int kChunk = 256;
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        const double* t = m_t;
        const double t0 = t[0], tn = t[m_size - 1];
        double x[kChunk], at[kChunk];
        int cell[kChunk];
        unsigned int outside[kChunk];
        // 64-bit row indices: the compiler vectorises the interpolation
        // over gathered rows only with indices as wide as the values.
        int64_t row[kChunk];
        for (unsigned int done = 0; done < n; done += kChunk) {
            const unsigned int m = std::min(kChunk, n - done);
            const S* s = src + done;
            for (unsigned int k = 0; k < m; ++k) {
                const double v = ConvertValue<double>(s[k]) / em;
                // Values outside the rows, and NaN, search from the first.
                const double w = v >= t0 ? (v <= tn ? v : tn) : t0;
                x[k] = v;
                at[k] = w;
                cell[k] = Cell(w);
            }
            unsigned int outsides = 0;
            bool onRow = false;
            switch (m_steps) {
            case 1: FindRows<1>(x, at, cell, m, row, outside, outsides, onRow); break;
            case 2: FindRows<2>(x, at, cell, m, row, outside, outsides, onRow); break;
            default: FindRows<0>(x, at, cell, m, row, outside, outsides, onRow); break;
            }
            unsigned int stop = m;
            if (!allowClamp)
                for (unsigned int q = 0; q < outsides && stop == m; ++q)
                    if (!(x[outside[q]] != x[outside[q]])) stop = outside[q];
            D* out = dst + done;
            const SRow* rows = m_rows.data();
            for (unsigned int k = 0; k < stop; ++k) {
                const SRow& r = rows[row[k]];
                out[k] = ConvertValue<D>(
                    ConvertScale<tempCelsius, To>(r.c0 + (r.c1 - r.c0) * (x[k] - r.t0) / (r.t1 - r.t0)));
            }
            for (unsigned int q = 0; q < outsides && outside[q] < stop; ++q) {
                const double v = x[outside[q]];
                const double c = v < t0 ? m_temp[0] : v > tn ? m_temp[m_size - 1] : kNaN;
                out[outside[q]] = ConvertValue<D>(ConvertScale<tempCelsius, To>(c));
            }
            if (onRow)
                for (unsigned int k = 0; k < stop; ++k)
                    if (t[row[k]] == x[k]) {
                        const int r = ReferenceInterval(x[k], t, m_size);
                        out[k] = ConvertValue<D>(
                            ConvertScale<tempCelsius, To>(r ? Interpolate(x[k], t, m_temp, r) : kNaN));
                    }
            if (stop < m) return done + stop;
        }
        return n;
    }

private:
    static constexpr int kMaxCells = 4096;

    // An interval: its two rows and their temperatures.
    struct SRow {
        double t0, t1, c0, c1;
    };

    // Values from t[0] to the last row only.
    int Cell(double x) const
    {
        const double p = (x - m_t[0]) * m_scale;
        return int(p < m_lastCell ? p : m_lastCell);
    }

    // The first row not below x; kSteps 0 for m_steps.
    template <int kSteps = 0>
    int Row(double x, int cell) const
    {
        int r = m_grid[size_t(cell)];
        const int last = m_size - 1;
        const int steps = kSteps ? kSteps : m_steps;
        for (int step = 1 << (steps - 1); step; step >>= 1) r += m_t[std::min(r + step - 1, last)] < x ? step : 0;
        return r;
    }

    // The rows of m values of a chunk; lists the values outside the rows
    // or NaN (at differs from x), and tells whether any lies on a row.
    template <int kSteps>
    void FindRows(const double* x, const double* at, const int* cell, unsigned int m, int64_t* row,
                  unsigned int* outside, unsigned int& outsides, bool& onRow) const
    {
        for (unsigned int k = 0; k < m; ++k) {
            const double v = x[k], w = at[k];
            const int r = Row<kSteps>(w, cell[k]);
            row[k] = r;
            onRow |= m_t[r] == v;
            outside[outsides] = k;
            outsides += w != v;
        }
    }

    const double* m_t = nullptr;
    const double* m_temp = nullptr;
    int m_size = 0;
    int m_steps = 0; // 0: no grid, the reference search
    double m_scale = 0.0;
    double m_lastCell = 0.0;
    std::vector<int> m_grid;
    std::vector<SRow> m_rows;
};

// Pixels a walk visits, to judge whether a grid pays.
inline size_t WalkPixels(const SWalkCount& w) { return w.count; }
inline size_t WalkPixels(const SWalkIndices& w) { return w.count; }
inline size_t WalkPixels(const SWalkRect& w) { return RegionPixels(w.area); }
inline size_t WalkPixels(const SWalkScanLines& w) { return RegionPixels(*w.lines); }
inline size_t WalkPixels(const SWalkMask& w) { return RegionPixels(w.area); }
constexpr size_t kLookupGridPixels = 1024;

// Table values over a walk: the runs of a region through CLookupRows::Run,
// an index list (its runs are mostly single pixels) one value at a time.
template <ETempType To, class S, class D, class W>
bool LookupWalk(const CLookupRows& rows, const S* src, D* dst, const W& walk, double em, bool allowClamp)
{
    const auto one = [&](double r, double& out) {
        bool inside;
        const double c = rows.Celsius(r / em, inside);
        if (!inside && !allowClamp) return false;
        out = ConvertScale<tempCelsius, To>(c);
        return true;
    };
    if constexpr (!std::is_same_v<W, SWalkIndices>) {
        if (rows.Fast()) {
            bool failed = false;
            walk.Runs([&](size_t flat, size_t i, unsigned int n) {
                if (failed) return;
                const S* s = src + flat;
                D* d = dst + i;
                if (ReadsPrecedeWrites(s, d, n)) {
                    failed = rows.Run<To>(s, d, n, em, allowClamp) < n;
                    return;
                }
                for (unsigned int k = 0; k < n && !failed; ++k) {
                    double out;
                    if (one(ConvertValue<double>(s[k]), out)) d[k] = ConvertValue<D>(out);
                    else failed = true;
                }
            });
            return !failed;
        }
    }
    return MapUntil<S, D>(src, dst, walk, [&](double r, unsigned, double& out) { return one(r, out); });
}

// The presets a walk meets, as bits. Each pixel's preset has the low bits
// common to all pixels and none that no pixel has: two dense reductions
// the compiler vectorises. One or two presets so bounded all appear; more
// are each confirmed by a dense search, since the records of presets that
// do not appear may be empty and must not be read.
template <class W>
unsigned PresetsMet(const W& walk, const unsigned char* presetIndex)
{
    unsigned char any = 0, all = 0xFF;
    bool met = false;
    walk.Runs([&](size_t flat, size_t, unsigned int n) {
        const unsigned char* p = presetIndex + flat;
        unsigned char o = 0, a = 0xFF;
        for (unsigned int k = 0; k < n; ++k) {
            o |= p[k];
            a &= p[k];
        }
        any |= o;
        all &= a;
        met = true;
    });
    unsigned set = 0;
    for (unsigned p = 0; met && p <= kPresetMask; ++p)
        if ((p & ~any & kPresetMask) == 0 && (p & all) == (all & kPresetMask)) set |= 1u << p;
    if (std::popcount(set) <= 2) return set;
    unsigned found = 0;
    for (unsigned q = 0; q <= kPresetMask; ++q) {
        if (!(set >> q & 1)) continue;
        bool seen = false;
        walk.Runs([&](size_t flat, size_t, unsigned int n) {
            const unsigned char* p = presetIndex + flat;
            bool here = false;
            for (unsigned int k = 0; k < n; ++k) here |= (p[k] & kPresetMask) == q;
            seen = seen || here;
        });
        if (seen) found |= 1u << q;
    }
    return found;
}

inline bool SameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof(double)) == 0;
}
inline bool SameValues(const double* a, const double* b, int n)
{
    return n <= 0 || a == b || std::memcmp(a, b, size_t(n) * sizeof(double)) == 0;
}
// Two temperature tables, rows and temperatures, the same to the bit.
inline bool SameTable(const double* t, const double* temp, int size, const double* t2, const double* temp2, int size2)
{
    return size == size2 && SameValues(t, t2, size) && SameValues(temp, temp2, size);
}

// Planck's law inverted at the middle of the band. Its constants 11910.66
// and 14388.3 differ from the 11910.7 and 14388.4 of Radiance on purpose, so
// a round trip through both does not close exactly.
struct SPlanck {
    double w, a, w5;
    SPlanck(double bandEnd, double bandStart, double emissivity)
        : w(0.5 * (bandEnd - bandStart) + bandStart), a((bandEnd - bandStart) * 11910.66 * emissivity),
          w5(std::pow(w, 5.0))
    {
    }
    double Kelvin(double radiance) const { return 14388.3 / (std::log(a / (w5 * radiance) + 1.0) * w); }
};

// The calibration curve T = B / log(R / x + F), x the black body signal less
// the offset O. The floor keeps the logarithm above zero for signals beyond
// the curve's pole; no signal gives 0 Kelvin.
inline double RBFKelvin(double radiance, double emissivity, double R, double B, double F, double O)
{
    const double x = radiance / emissivity - O;
    if (x <= 0.0) return 0.0;
    const double g = R / x + F;
    const double floor = F <= 1.0 ? 1.0002 : F * 1.0002;
    return B / std::log(std::max(floor, g));
}

template <class W>
struct TCoeffs {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SCoeffsArgs& a)
        {
            const double em = a.emissivity;
            WithScale<tempCelsius>(a.tempType, [&]<ETempType To>() {
                WithTempOrder(a.order, [&]<int N>() {
                    if constexpr (N == 0) {
                        const double* c = a.coefficients;
                        const int order = a.order;
                        Map<S, D>(src, dst, walk, [=](double r, unsigned) {
                            return ConvertScale<tempCelsius, To>(TempPolyPow(r / em, c, order));
                        });
                    } else {
                        const TCoefs<N + 1> k(a.coefficients);
                        Map<S, D>(src, dst, walk, [=](double r, unsigned) {
                            return ConvertScale<tempCelsius, To>(TempPoly<N>(r / em, k.c));
                        });
                    }
                });
            });
            return true;
        }
    };
};

template <class W>
struct TCoeffsPS {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SCoeffsPSArgs& a)
        {
            // The record's fields in locals: stores of the results could
            // otherwise alias them, and each pixel would read them again.
            const unsigned char* presetIndex = a.presetIndex;
            const int* orders = a.orders;
            double* const* coefficients = a.coefficients;
            const double em = a.emissivity;
            return WithScale<tempCelsius>(a.tempType, [&]<ETempType To>() {
                return MapUntil<S, D>(src, dst, walk, [=](double r, unsigned flat, double& out) {
                    const unsigned p = presetIndex[flat];
                    // This form serves presets 0 to 3 only, and orders from 1 up: intended.
                    if (p > 3) return false;
                    const int order = orders[p];
                    if (order < 1) return false;
                    const double* c = coefficients[p];
                    const double x = r / em;
                    // The running sum is kept in float and each term uses pow: intended.
                    float sum = 0.0f;
                    for (int i = 0; i <= order; ++i) sum = static_cast<float>(sum + c[i] * std::pow(x, i));
                    out = ConvertScale<tempCelsius, To>(sum);
                    return true;
                });
            });
        }
    };
};

template <class W>
struct TLookup {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SLookupArgs& a)
        {
            if (a.size < 2) return false;
            const CLookupRows rows(a.table, a.temperatures, a.size, WalkPixels(walk) >= kLookupGridPixels);
            return WithScale<tempCelsius>(a.tempType, [&]<ETempType To>() {
                return LookupWalk<To>(rows, static_cast<const S*>(src), static_cast<D*>(dst), walk, a.emissivity,
                                      a.allowClamp);
            });
        }
    };
};

template <class W>
struct TLookupPS {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SLookupPSArgs& a)
        {
            const bool grid = WalkPixels(walk) >= kLookupGridPixels;
            // One table for all presets met: the single-table path.
            if (const unsigned met = std::is_same_v<W, SWalkIndices> ? 0 : PresetsMet(walk, a.presetIndex)) {
                const unsigned first = unsigned(std::countr_zero(met));
                const int size = a.sizes[first];
                bool one = size >= 2;
                for (unsigned p = first + 1; one && p <= kPresetMask; ++p)
                    one = !(met >> p & 1) || SameTable(a.tables[p], a.temperatures[p], a.sizes[p], a.tables[first],
                                                       a.temperatures[first], size);
                if (one) {
                    const CLookupRows rows(a.tables[first], a.temperatures[first], size, grid);
                    return WithScale<tempCelsius>(a.tempType, [&]<ETempType To>() {
                        return LookupWalk<To>(rows, static_cast<const S*>(src), static_cast<D*>(dst), walk,
                                              a.emissivity, a.allowClamp);
                    });
                }
            }
            // Each preset's table is prepared when the preset first appears:
            // the tables of presets that never do are not read.
            CLookupRows rows[kPresetMask + 1];
            bool ready[kPresetMask + 1] = {};
            return WithScale<tempCelsius>(a.tempType, [&]<ETempType To>() {
                return MapUntil<S, D>(src, dst, walk, [&](double r, unsigned flat, double& out) {
                    const unsigned p = a.presetIndex[flat] & kPresetMask;
                    const int size = a.sizes[p];
                    if (size < 2) return false;
                    if (!ready[p]) {
                        rows[p] = CLookupRows(a.tables[p], a.temperatures[p], size, grid);
                        ready[p] = true;
                    }
                    bool inside;
                    const double c = rows[p].Celsius(r / a.emissivity, inside);
                    if (!inside && !a.allowClamp) return false;
                    out = ConvertScale<tempCelsius, To>(c);
                    return true;
                });
            });
        }
    };
};

template <class W>
struct TPlanck {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SPlanckArgs& a)
        {
            const SPlanck k(a.bandEnd, a.bandStart, a.emissivity);
            WithScale<tempKelvin>(a.tempType, [&]<ETempType To>() {
                Map<S, D>(src, dst, walk,
                          [=](double r, unsigned) { return ConvertScale<tempKelvin, To>(k.Kelvin(r)); });
            });
            return true;
        }
    };
};

template <class W>
struct TRBF {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SRBFArgs& a)
        {
            const double em = a.emissivity, R = a.R, B = a.B, F = a.F, O = a.O;
            WithScale<tempKelvin>(a.tempType, [&]<ETempType To>() {
                Map<S, D>(src, dst, walk, [=](double r, unsigned) {
                    return ConvertScale<tempKelvin, To>(RBFKelvin(r, em, R, B, F, O));
                });
            });
            return true;
        }
    };
};

template <class W>
struct TRBFPS {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SRBFPSArgs& a)
        {
            WithScale<tempKelvin>(a.tempType, [&]<ETempType To>() {
                Map<S, D>(src, dst, walk, [&a](double r, unsigned flat) {
                    const unsigned p = a.presetIndex[flat] & kPresetMask;
                    return ConvertScale<tempKelvin, To>(RBFKelvin(r, a.emissivity, a.R[p], a.B[p], a.F[p], a.O[p]));
                });
            });
            return true;
        }
    };
};

// ---------------------------------------------------------------------------
// Per-preset method choice

// Temperature of one radiance by a preset's method, in the wanted scale.
inline double TemperatureOf(const STempMethod& m, const STempSet& set, const SPlanck& planck, double radiance)
{
    switch (m.method) {
    case methodLookup: {
        bool inside;
        const double c = LookupCelsius(radiance / set.emissivity, m.table, m.temperatures, m.size, inside);
        return ConvertScale(c, tempCelsius, set.tempType);
    }
    case methodCoeffs:
        return ConvertScale(TempPolyValue(radiance / set.emissivity, m.coefficients, m.order), tempCelsius,
                            set.tempType);
    case methodPlanck: break;
    }
    return ConvertScale(planck.Kelvin(radiance), tempKelvin, set.tempType);
}

// How far the presets met agree, judged against the first of them: not at
// all (the choice stays per pixel), in form (values by preset) or fully
// (one preset's computation serves all, bit for bit).
enum ELikeness : int { likeNone, likeForm, likeFull };

constexpr bool UsesBackground(int order)
{
    return order == -1 || order == -2;
}

// Radiance forms: the order itself, all orders below -2 alike.
inline ELikeness RadianceLikeness(const SPoly& a, const SPoly& b)
{
    if (a.order != b.order && !(a.order < -2 && b.order < -2)) return likeNone;
    const bool background = UsesBackground(a.order);
    if (background && !a.backgroundImage != !b.backgroundImage) return likeNone;
    const int coefs =
        WithRadianceForm(a.order, [&]<int F>() { return F == kRadiancePow ? a.order + 1 : kRadianceCoefs<F>; });
    bool same = SameBits(a.scale, b.scale) && SameValues(a.coefficients, b.coefficients, coefs);
    if (background)
        same = same && (a.backgroundImage ? a.backgroundImage == b.backgroundImage : SameBits(a.background, b.background));
    return same ? likeFull : likeForm;
}

inline ELikeness TempLikeness(const STempMethod& a, const STempMethod& b)
{
    if (a.method != b.method) return likeNone;
    switch (a.method) {
    case methodLookup:
        return SameTable(a.table, a.temperatures, a.size, b.table, b.temperatures, b.size) ? likeFull : likeForm;
    case methodCoeffs:
        if (a.order != b.order) return likeNone;
        return SameValues(a.coefficients, b.coefficients, a.order + 1) ? likeFull : likeForm;
    case methodPlanck: break;
    }
    return likeFull; // band and emissivity are common
}

// The least agreement of the presets in met with the first of them.
template <class T, class L>
ELikeness Likeness(unsigned met, const T* preset, L like, unsigned& first)
{
    first = met ? unsigned(std::countr_zero(met)) : 0;
    ELikeness least = likeFull;
    for (unsigned p = first + 1; p <= kPresetMask; ++p)
        if (met >> p & 1) least = std::min(least, like(preset[first], preset[p]));
    return least;
}

// Per-preset polynomials in blocks of at most kPresetBlock values, through
// the stack: the block's values in double, then the polynomial of each of
// them with its preset's coefficients, four at a time.
constexpr unsigned int kPresetBlock = 256;
// The most values a preset's polynomial reads: seven temperature
// coefficients, or five radiance coefficients, the scale and the background.
constexpr int kPresetValues = 7;

// out[k] = TempPoly<N>(v[k] / em, coefs[pi[k] & kPresetMask]), to the bit;
// v may be out; high when a preset above 3 may occur.
template <int N>
void TempPolyPresets(const double* v, double* out, unsigned int n, const unsigned char* pi,
                     const double (*coefs)[kPresetValues], double em, bool high);

// out[k] = RadiancePoly<F>(v[k], c, 0, c[nc + 1], c[nc]) with c the
// values of pixel k's preset: its nc coefficients, its scale, its
// background; F a form with coefficients. v may be out.
template <int F>
void RadiancePolyPresets(const double* v, double* out, unsigned int n, const unsigned char* pi,
                         const double (*values)[kPresetValues], bool high);

// A per-preset run of n values from s into d (s may be d) in blocks on the
// stack: poly(v, out, count, pi) takes a block's values in double and gives
// their results, Celsius for temperatures, which are stored in scale To.
// Each step is a loop of its own, which the compiler vectorises.
template <ETempType To, class S, class D, class P>
void PresetBlocks(const S* s, D* d, unsigned int n, const unsigned char* pi, P poly)
{
    const auto load = [](const S* __restrict from, double* __restrict to, unsigned int count) {
        for (unsigned int k = 0; k < count; ++k) to[k] = ConvertValue<double>(from[k]);
    };
    const auto store = [](const double* __restrict from, D* __restrict to, unsigned int count) {
        for (unsigned int k = 0; k < count; ++k) to[k] = ConvertValue<D>(ConvertScale<tempCelsius, To>(from[k]));
    };
    double v[kPresetBlock];
    for (unsigned int k0 = 0; k0 < n; k0 += kPresetBlock) {
        const unsigned int count = std::min(kPresetBlock, n - k0);
        if constexpr (std::is_same_v<S, double>) {
            poly(s + k0, v, count, pi + k0);
        } else {
            load(s + k0, v, count);
            poly(v, v, count, pi + k0);
        }
        store(v, d + k0, count);
    }
}

// The radiance of a dense run of a per-preset call: n values from s into d,
// flat the run's place in the frame. One preset's kernel when all presets
// met compute alike; else, with one form, that form's loop with each
// pixel's coefficients, background and scale.
template <class S, class D>
void RadianceRunPS(const S* s, D* d, unsigned int n, size_t flat, const SPolyPS& set, unsigned met, ELikeness like,
                   unsigned first)
{
    if (like == likeFull) {
        SPoly p = set.preset[first];
        if (p.backgroundImage) p.backgroundImage += flat;
        vecCountsToRadianceImg[SourceByFloatIndexOf<S, D>](s, d, SWalkCount{n}, p, nullptr, SLimits{});
        return;
    }
    const unsigned char* pi = set.presetIndex + flat;
    WithRadianceForm(set.preset[first].order, [&]<int F>() {
        constexpr int nc = kRadianceCoefs<F>;
        // Each preset's coefficients, scale and background value; only the
        // presets met are read: the others' records may be empty.
        double values[kPresetMask + 1][kPresetValues] = {};
        const double* image[kPresetMask + 1] = {};
        for (unsigned p = 0; p <= kPresetMask; ++p) {
            if (!(met >> p & 1)) continue;
            const SPoly& q = set.preset[p];
            for (int i = 0; i < nc; ++i) values[p][i] = q.coefficients[i];
            values[p][nc] = q.scale;
            values[p][nc + 1] = q.background;
            image[p] = q.backgroundImage ? q.backgroundImage + flat : nullptr;
        }
        if constexpr (nc == 0) {
            for (unsigned int k = 0; k < n; ++k) {
                const SPoly& q = set.preset[pi[k] & kPresetMask];
                d[k] = ConvertValue<D>(RadiancePoly<F>(ConvertValue<double>(s[k]), q.coefficients, q.order, 0.0, q.scale));
            }
        } else if (UsesBackground(F) && image[first]) {
            for (unsigned int k = 0; k < n; ++k) {
                const unsigned p = pi[k] & kPresetMask;
                const double r = RadiancePoly<F>(ConvertValue<double>(s[k]), values[p], 0, image[p][k], values[p][nc]);
                d[k] = ConvertValue<D>(r);
            }
        } else {
            PresetBlocks<tempCelsius>(s, d, n, pi,
                                      [&](const double* v, double* out, unsigned int count, const unsigned char* p) {
                                          RadiancePolyPresets<F>(v, out, count, p, values, met > 15);
                                      });
        }
    });
}

// The temperature methods of the presets met, prepared once per call.
struct SPresetTemps {
    const STempSet* set = nullptr;
    unsigned met = 0, first = 0;
    ELikeness like = likeNone;
    SPlanck planck{0.0, 0.0, 1.0};
    double coefs[kPresetMask + 1][kPresetValues] = {};
    CLookupRows rows[kPresetMask + 1];

    SPresetTemps(const STempSet& s, unsigned presetsMet, size_t pixels)
        : set(&s), met(presetsMet), planck(s.bandEnd, s.bandStart, s.emissivity)
    {
        like = Likeness(met, s.preset, TempLikeness, first);
        if (like == likeNone) return;
        for (unsigned p = 0; p <= kPresetMask; ++p) {
            if (!(met >> p & 1) || (like == likeFull && p != first)) continue;
            const STempMethod& m = s.preset[p];
            if (m.method == methodLookup) rows[p] = CLookupRows(m.table, m.temperatures, m.size, pixels >= kLookupGridPixels);
            if (m.method == methodCoeffs && m.order <= 6)
                for (int i = 0; i <= m.order; ++i) coefs[p][i] = m.coefficients[i];
        }
    }
};

// The temperature of a dense run of a per-preset call, from the radiance
// in s into d (s may be d), pi the run's preset bytes; t.like is not
// likeNone. The method and order are chosen once; each pixel takes its
// preset's coefficients or table.
template <ETempType To, class S, class D>
void TemperatureRunPS(const S* s, D* d, unsigned int n, const unsigned char* pi, const SPresetTemps& t)
{
    const STempMethod& m = t.set->preset[t.first];
    const double em = t.set->emissivity;
    const auto each = [&](auto celsius) {
        for (unsigned int k = 0; k < n; ++k)
            d[k] = ConvertValue<D>(ConvertScale<tempCelsius, To>(celsius(ConvertValue<double>(s[k]) / em, k)));
    };
    switch (m.method) {
    case methodLookup:
        if (t.like == likeFull) {
            const CLookupRows& rows = t.rows[t.first];
            if (rows.Fast()) rows.Run<To>(s, d, n, em, true);
            else
                each([&](double x, unsigned int) {
                    bool inside;
                    return rows.Celsius(x, inside);
                });
            return;
        }
        each([&](double x, unsigned int k) {
            bool inside;
            return t.rows[pi[k] & kPresetMask].Celsius(x, inside);
        });
        return;
    case methodCoeffs:
        WithTempOrder(m.order, [&]<int N>() {
            if constexpr (N == 0) {
                each([&](double x, unsigned int k) {
                    return TempPolyPow(x, t.set->preset[pi[k] & kPresetMask].coefficients, m.order);
                });
            } else if (t.like == likeFull) {
                const TCoefs<N + 1> c(t.coefs[t.first]);
                each([&](double x, unsigned int) { return TempPoly<N>(x, c.c); });
            } else {
                PresetBlocks<To>(s, d, n, pi,
                                 [&](const double* v, double* out, unsigned int count, const unsigned char* p) {
                                     TempPolyPresets<N>(v, out, count, p, t.coefs, em, t.met > 15);
                                 });
            }
        });
        return;
    case methodPlanck: break;
    }
    const SPlanck planck = t.planck;
    for (unsigned int k = 0; k < n; ++k)
        d[k] = ConvertValue<D>(ConvertScale<tempKelvin, To>(planck.Kelvin(ConvertValue<double>(s[k]))));
}

// Dense runs of a per-preset call through run(s, d, n, flat) when reading a
// run whole before writing it gives the same result; other runs, and index
// lists (whose runs are mostly single pixels), through the per-pixel
// body(v, flat) in walk order.
template <class S, class D, class W, class R, class B>
void RunsOrPixels(const void* src, void* dst, const W& walk, R run, B body)
{
    const S* s = static_cast<const S*>(src);
    D* d = static_cast<D*>(dst);
    if constexpr (!std::is_same_v<W, SWalkIndices>) {
        walk.Runs([&](size_t flat, size_t i, unsigned int n) {
            if (ReadsPrecedeWrites(s + flat, d + i, n)) {
                run(s + flat, d + i, n, flat);
                return;
            }
            for (unsigned int k = 0; k < n; ++k)
                d[i + k] = ConvertValue<D>(body(ConvertValue<double>(s[flat + k]), unsigned(flat + k)));
        });
    } else {
        Map<S, D>(src, dst, walk, body);
    }
}

template <class W, bool kStatus>
struct TRadiancePS {
    template <class S, class D>
    struct K {
        static void Run(const void* src, void* dst, const W& walk, const SPolyPS& set, unsigned char* status)
        {
            const auto value = [&set](double v, unsigned flat) { return RadiancePS(set, v, flat); };
            if constexpr (kStatus) {
                MapStatus<S, D>(src, dst, walk, status, value, [&set](unsigned flat) -> const SLimits& {
                    return set.limits[set.presetIndex[flat] & kPresetMask];
                });
            } else {
                const unsigned met = std::is_same_v<W, SWalkIndices> ? 0 : PresetsMet(walk, set.presetIndex);
                unsigned first;
                const ELikeness like = Likeness(met, set.preset, RadianceLikeness, first);
                if (like == likeNone) {
                    Map<S, D>(src, dst, walk, value);
                    return;
                }
                RunsOrPixels<S, D>(src, dst, walk, [&](const S* s, D* d, unsigned int n, size_t flat) {
                    RadianceRunPS(s, d, n, flat, set, met, like, first);
                }, value);
            }
        }
    };
};

template <class W>
struct TRadianceToTemperaturePS {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const STempSet& set)
        {
            const SPlanck planck(set.bandEnd, set.bandStart, set.emissivity);
            const auto value = [&](double r, unsigned flat) {
                return TemperatureOf(set.preset[set.presetIndex[flat] & kPresetMask], set, planck, r);
            };
            const unsigned met = std::is_same_v<W, SWalkIndices> ? 0 : PresetsMet(walk, set.presetIndex);
            const SPresetTemps temps(set, met, WalkPixels(walk));
            if (temps.like == likeNone) {
                Map<S, D>(src, dst, walk, value);
                return true;
            }
            WithScale<tempCelsius>(set.tempType, [&]<ETempType To>() {
                RunsOrPixels<S, D>(src, dst, walk, [&](const S* s, D* d, unsigned int n, size_t flat) {
                    TemperatureRunPS<To>(s, d, n, set.presetIndex + flat, temps);
                }, value);
            });
            return true;
        }
    };
};

// Radiance and temperature of each pixel; the radiance is held in the
// destination's type on the way. Runs that can be read whole go in two
// dense passes, the radiance into the destination and the temperature in
// place, each with its form chosen once.
template <class W>
struct TCountsToTemperaturePS {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SPolyPS& poly, const STempSet& set)
        {
            const SPlanck planck(set.bandEnd, set.bandStart, set.emissivity);
            const auto value = [&](double v, unsigned flat) {
                const double radiance = ConvertValue<D>(RadiancePS(poly, v, flat));
                return TemperatureOf(set.preset[set.presetIndex[flat] & kPresetMask], set, planck, radiance);
            };
            const unsigned met = std::is_same_v<W, SWalkIndices> ? 0 : PresetsMet(walk, set.presetIndex);
            unsigned first;
            const ELikeness like = Likeness(met, poly.preset, RadianceLikeness, first);
            const SPresetTemps temps(set, like == likeNone ? 0 : met, WalkPixels(walk));
            if (like == likeNone || temps.like == likeNone) {
                Map<S, D>(src, dst, walk, value);
                return true;
            }
            WithScale<tempCelsius>(set.tempType, [&]<ETempType To>() {
                RunsOrPixels<S, D>(src, dst, walk, [&](const S* s, D* d, unsigned int n, size_t flat) {
                    RadianceRunPS(s, d, n, flat, poly, met, like, first);
                    TemperatureRunPS<To>(d, d, n, set.presetIndex + flat, temps);
                }, value);
            });
            return true;
        }
    };
};

// ---------------------------------------------------------------------------
// Records of the public interface in the kernels' form

inline SPoly PolyOf(const SRadianceParams& p, double scale)
{
    return SPoly{p.coefficients, p.order, p.background, p.backgroundImage, scale};
}

inline SPolyPS PolySetOf(const unsigned char* presetIndex, const bool* presetActive, const SRadianceParams* params,
                         double scale)
{
    SPolyPS set;
    set.presetIndex = presetIndex;
    for (int p = 0; p < 8; ++p)
        set.preset[p] = SPoly{params[p].coefficients, params[p].order, params[p].background, nullptr, scale};
    // Per-pixel backgrounds serve presets 0 to 3 only: the limit of four is
    // part of the design of the per-preset kernels, although objects carry
    // eight slots. Other pixels take their preset's scalar background.
    for (int p = 0; p < 4; ++p)
        if (presetActive && presetActive[p] && params[p].backgroundImage)
            set.preset[p].backgroundImage = params[p].backgroundImage;
    return set;
}

inline STempMethod MethodOf(const STemperatureParams& t)
{
    STempMethod m;
    if (t.lookupRadiance && t.lookupTemperature && t.lookupSize >= 2) {
        m.method = methodLookup;
        m.table = t.lookupRadiance;
        m.temperatures = t.lookupTemperature;
        m.size = t.lookupSize;
    } else if (t.tempCoefficients && t.tempOrder > 0) {
        m.method = methodCoeffs;
        m.coefficients = t.tempCoefficients;
        m.order = t.tempOrder;
    }
    return m;
}

// presets records: 1 for the single-preset forms, 8 by preset.
inline STempSet TempSetOf(const STemperatureParams* params, int presets, const SCommonParams& common,
                          const unsigned char* presetIndex)
{
    STempSet set;
    for (int p = 0; p < presets; ++p) set.preset[p] = MethodOf(params[p]);
    set.emissivity = common.emissivity;
    set.bandEnd = common.bandpassEnd;
    set.bandStart = common.bandpassStart;
    set.tempType = common.tempType;
    set.presetIndex = presetIndex;
    return set;
}

// A temperature table of kernel family Kernel over walker W.
#define ORV_TEMPERATURE_TABLE(name, Kernel, W, Args)                                                                   \
    const ::orv::reduce::priv::TFloatByFloat<::orv::reduce::priv::TTemperatureKernel<W, Args>> name =                  \
        ::orv::reduce::priv::FloatByFloatTable<::orv::reduce::priv::TTemperatureKernel<W, Args>, Kernel<W>::K>()

// Checks the types, then calls the table's kernel.
template <class W, class A>
inline bool RunTemperature(const TFloatByFloat<TTemperatureKernel<W, A>>& table, STypedData src, STypedData dst,
                           const W& walk, const A& args)
{
    const int t = FloatByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return table[t](src.data, dst.data, walk, args);
}

// Elements a walker yields.
inline unsigned int WalkSize(const SWalkCount& w)
{
    return w.count;
}
inline unsigned int WalkSize(const SWalkIndices& w)
{
    return w.count;
}
inline unsigned int WalkSize(const SWalkRect& w)
{
    return RegionPixels(w.area);
}
inline unsigned int WalkSize(const SWalkScanLines& w)
{
    return RegionPixels(*w.lines);
}
inline unsigned int WalkSize(const SWalkMask& w)
{
    return RegionPixels(w.area, w.mask, w.stride);
}

// The tables of each region form, for the kernels that build on other kernels.
template <class W>
struct TRegionTables;
#define ORV_REGION_TABLES(W, Suffix)                                                                                   \
    template <>                                                                                                        \
    struct TRegionTables<W> {                                                                                          \
        static constexpr const auto& radiance = ::orv::reduce::vecCountsToRadiance##Suffix;                            \
        static constexpr const auto& lookup = ::orv::reduce::vecToTemperatureLookup##Suffix;                           \
        static constexpr const auto& coeffs = ::orv::reduce::vecToTemperatureCoeffs##Suffix;                           \
        static constexpr const auto& planck = ::orv::reduce::vecToTemperaturePlanck##Suffix;                           \
    };
ORV_REGION_TABLES(SWalkCount, Img)
ORV_REGION_TABLES(SWalkIndices, Idx)
ORV_REGION_TABLES(SWalkRect, Rect)
ORV_REGION_TABLES(SWalkScanLines, ScanLines)
ORV_REGION_TABLES(SWalkMask, Mask)
#undef ORV_REGION_TABLES

// Region forms of the non-PS radiance and polynomial kernels: each run of
// the region goes through the whole-frame kernel, so a region adds no pixel
// loops of its own and a rectangle's rows run as dense, vectorised loops.
template <class W>
struct TRadianceRuns {
    template <class S, class D>
    struct K {
        static void Run(const void* src, void* dst, const W& walk, const SPoly& p, unsigned char*, const SLimits&)
        {
            const TRadianceKernel<SWalkCount> dense = vecCountsToRadianceImg[SourceByFloatIndexOf<S, D>];
            const S* s = static_cast<const S*>(src);
            D* d = static_cast<D*>(dst);
            walk.Runs([&](size_t flat, size_t i, unsigned int n) {
                SPoly run = p;
                if (run.backgroundImage) run.backgroundImage += flat;
                dense(s + flat, d + i, SWalkCount{n}, run, nullptr, SLimits{});
            });
        }
    };
};

template <class W>
struct TCoeffsRuns {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SCoeffsArgs& a)
        {
            const auto dense = vecToTemperatureCoeffsImg[FloatByFloatIndexOf<S, D>];
            const S* s = static_cast<const S*>(src);
            D* d = static_cast<D*>(dst);
            walk.Runs([&](size_t flat, size_t i, unsigned int n) { dense(s + flat, d + i, SWalkCount{n}, a); });
            return true;
        }
    };
};

// Temperature by the method of preset 0 of set, through the method's own
// kernel at float-by-float position t; a table is clamped at its ends.
template <class W>
bool RunMethod(int t, const void* src, void* dst, const W& walk, const STempSet& set)
{
    const STempMethod& m = set.preset[0];
    switch (m.method) {
    case methodLookup:
        return TRegionTables<W>::lookup[t](
            src, dst, walk, SLookupArgs{m.table, m.temperatures, m.size, true, set.emissivity, set.tempType});
    case methodCoeffs:
        return TRegionTables<W>::coeffs[t](src, dst, walk,
                                           SCoeffsArgs{m.coefficients, m.order, set.emissivity, set.tempType});
    case methodPlanck: break;
    }
    return TRegionTables<W>::planck[t](src, dst, walk,
                                       SPlanckArgs{set.bandEnd, set.bandStart, set.emissivity, set.tempType});
}

// Radiance with limits: the values first, then each stored value judged.
template <class W>
struct TRadianceThenLimits {
    template <class S, class D>
    struct K {
        static void Run(const void* src, void* dst, const W& walk, const SPoly& p, unsigned char* status,
                        const SLimits& limits)
        {
            TRegionTables<W>::radiance[SourceByFloatIndexOf<S, D>](src, dst, walk, p, nullptr, SLimits{});
            JudgeLimits(static_cast<D*>(dst), status, WalkSize(walk), limits);
        }
    };
};

template <class W>
struct TRadianceToTemperature {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const STempSet& set)
        {
            return RunMethod(FloatByFloatIndexOf<S, D>, src, dst, walk, set);
        }
    };
};

// The radiance of the region goes densely into the destination, in its
// type, and the temperature follows in place: one kernel per step, each with
// its loop decided once.
template <class W>
struct TCountsToTemperature {
    template <class S, class D>
    struct K {
        static bool Run(const void* src, void* dst, const W& walk, const SPoly& poly, const STempSet& set)
        {
            TRegionTables<W>::radiance[SourceByFloatIndexOf<S, D>](src, dst, walk, poly, nullptr, SLimits{});
            return RunMethod(FloatByFloatIndexOf<D, D>, dst, dst, SWalkCount{WalkSize(walk)}, set);
        }
    };
};

} // namespace orv::reduce::priv
