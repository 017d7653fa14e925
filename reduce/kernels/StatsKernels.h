#pragma once
// Statistics kernels: one accumulator with the value rules, a walker body
// that feeds it, and a fast path for contiguous runs.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "reduce/kernels/RegionWalk.h"
#include "reduce/kernels/Stats.h"
#include "reduce/kernels/Vector.h"

namespace orv::reduce::priv {

constexpr uint32_t kNoIndex = 0xFFFFFFFFu;

inline bool IsValidStatus(unsigned char status) { return (status & kStatusInvalidMask) == 0; }

// Bounding box of the region's pixels.
struct SStatsBox {
    bool any = false;
    unsigned int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    void Add(unsigned int x, unsigned int y)
    {
        if (!any) {
            any = true;
            x0 = x1 = x;
            y0 = y1 = y;
            return;
        }
        if (x < x0) x0 = x;
        if (x > x1) x1 = x;
        if (y < y0) y0 = y;
        if (y > y1) y1 = y;
    }
    static SStatsBox Of(SArea a) { return {true, a.left, a.top, a.right, a.bottom}; }
};

// The per-pixel rules. Ties keep the earliest pixel.
struct SStatsAcc {
    bool any = false;
    double allMin = 0, allMax = 0;
    uint32_t allMinIndex = 0, allMaxIndex = 0;
    bool anyValid = false;
    double min = 0, max = 0;
    uint32_t minIndex = 0, maxIndex = 0;
    uint8_t minStatus = 0, maxStatus = 0, statusAny = 0;
    double sum = 0, squares = 0;
    uint32_t count = 0;

    void AddAll(double v, uint32_t index)
    {
        if (!any) {
            any = true;
            allMin = allMax = v;
            allMinIndex = allMaxIndex = index;
            return;
        }
        if (v > allMax) {
            allMax = v;
            allMaxIndex = index;
        }
        if (v < allMin) {
            allMin = v;
            allMinIndex = index;
        }
    }
    void AddValid(double v, uint8_t status, uint32_t index)
    {
        statusAny |= status;
        if (!anyValid) {
            anyValid = true;
            min = max = v;
            minIndex = maxIndex = index;
            minStatus = maxStatus = status;
        } else {
            if (v > max) {
                max = v;
                maxIndex = index;
                maxStatus = status;
            }
            if (v < min) {
                min = v;
                minIndex = index;
                minStatus = status;
            }
        }
        sum += v;
        squares += v * v;
        ++count;
    }
};

// Clears what every statistics call starts from; mean, extremes and
// positions keep their values when nothing is added.
inline void ResetStats(CStats& s)
{
    s.sum = 0;
    s.variance = 0;
    s.statusAny = s.minStatus = s.maxStatus = 0;
    s.numPixels = 0;
    s.allMinIndex = s.allMaxIndex = kNoIndex;
}

inline SPoint PointOf(uint32_t index, uint32_t width)
{
    return width ? SPoint(int(index % width), int(index / width)) : SPoint(0, 0);
}

// Steps after the pass: positions from flat indices (with the frame width),
// box, mean and population variance, centre position. Without a status array
// the all* figures are the valid ones.
void FinishStats(CStats& s, const SStatsAcc& a, bool withStatus, uint32_t width, const SStatsBox& box);

// Walker body feeding the accumulator; kBox when the walk does not already
// know its bounding box.
template <class T, bool kStatus, bool kBox>
struct TStatsBody {
    static constexpr bool kNeedsXY = kBox;
    const T* data;
    const unsigned char* status;
    SStatsAcc* acc;
    SStatsBox* box;
    void operator()(size_t flat, size_t, unsigned x, unsigned y) const
    {
        const double v = double(data[flat]);
        if constexpr (kBox) box->Add(x, y);
        if constexpr (kStatus) {
            const unsigned char st = status[flat];
            acc->AddAll(v, flat);
            if (IsValidStatus(st)) acc->AddValid(v, st, flat);
        } else {
            acc->AddValid(v, 0, flat);
        }
    }
};

template <class T, bool kBox, class W>
void WalkStats(const T* data, const unsigned char* status, const W& walk, SStatsAcc& acc, SStatsBox& box)
{
    if (status) {
        TStatsBody<T, true, kBox> body{data, status, &acc, &box};
        walk(body);
    } else {
        TStatsBody<T, false, kBox> body{data, status, &acc, &box};
        walk(body);
    }
}

constexpr int kStatsLanes = 8;

// One block's figures: per-lane sums, counts and status bits; extremes in
// (the running ones) and out (the block's, over the running ones).
struct SStatsLanes {
    double sum[kStatsLanes], squares[kStatsLanes];
    uint32_t count;
    unsigned char any; // OR of the valid pixels' status
    double min, max, allMin, allMax;
};

// Extremes are compared in float where that is exact (float and 16-bit
// sources): the same order and the same values as in double, in twice the
// lanes.
template <class T>
using TStatsExtreme =
    std::conditional_t<std::is_same_v<T, float> || (std::is_integral_v<T> && sizeof(T) <= 2), float, double>;

// The pass over one block in eight lanes: lane l takes pixels l, l + 8, ...
// in order, whatever the vector width, so every machine gives the same sums.
// Invalid pixels add zero and offer an infinity to the extremes, which
// leaves both as they were (the running extremes are never NaN).
template <class T, bool kStatus>
ORV_VECTOR_CLONES void StatsBlock(const T* p, const unsigned char* st, uint32_t m, SStatsLanes& out)
{
    using E = TStatsExtreme<T>;
    using VE = TVec4<E>;
    using IE = std::conditional_t<std::is_same_v<E, float>, int32_t, int64_t>;
    constexpr E inf = std::numeric_limits<E>::infinity();
    V4d sum[2] = {}, squares[2] = {};
    VE lmin[2], lmax[2], amin[2], amax[2];
    for (int h = 0; h < 2; ++h) {
        lmin[h] = VE{} + E(out.min);
        lmax[h] = VE{} + E(out.max);
        amin[h] = VE{} + E(out.allMin);
        amax[h] = VE{} + E(out.allMax);
    }
    uint32_t count = 0;
    uint64_t statusWord = 0; // byte l: the OR of lane l's valid pixels' status
    unsigned char any = 0;
    uint32_t k = 0;
    for (; k + kStatsLanes <= m; k += kStatsLanes) {
        VE e[2] = {};
        V4d v[2] = {};
        for (int h = 0; h < 2; ++h) {
            Load4<E>(p + k + 4 * h, e[h]);
            if constexpr (std::is_same_v<E, double>) v[h] = e[h];
            else v[h] = V4d{double(e[h][0]), double(e[h][1]), double(e[h][2]), double(e[h][3])};
        }
        if constexpr (kStatus) {
            uint64_t word;
            std::memcpy(&word, st + k, sizeof(word));
            if ((word & (0x0101010101010101ull * kStatusInvalidMask)) == 0) {
                // Eight valid pixels, the common case: no masks.
                count += kStatsLanes;
                statusWord |= word;
                for (int h = 0; h < 2; ++h) {
                    sum[h] += v[h];
                    squares[h] += v[h] * v[h];
                    lmin[h] = e[h] < lmin[h] ? e[h] : lmin[h];
                    lmax[h] = e[h] > lmax[h] ? e[h] : lmax[h];
                }
                continue;
            }
            const uint64_t invalidBytes = ByteMasks(word, kStatusInvalidMask);
            const unsigned invalid = ByteFlags(invalidBytes);
            count += kStatsLanes - unsigned(__builtin_popcount(invalid));
            statusWord |= word & ~invalidBytes;
            for (int h = 0; h < 2; ++h) {
                const unsigned bits = (invalid >> (4 * h)) & 15;
                const V4l vd = TClearMasks<int64_t>::lanes[bits];
                const TVec4<IE> ve = TClearMasks<IE>::lanes[bits];
                amin[h] = e[h] < amin[h] ? e[h] : amin[h];
                amax[h] = e[h] > amax[h] ? e[h] : amax[h];
                const V4d x = vd ? v[h] : V4d{};
                sum[h] += x;
                squares[h] += x * x;
                const VE lo = ve ? e[h] : VE{} + inf, hi = ve ? e[h] : VE{} - inf;
                lmin[h] = lo < lmin[h] ? lo : lmin[h];
                lmax[h] = hi > lmax[h] ? hi : lmax[h];
            }
        } else {
            count += kStatsLanes;
            for (int h = 0; h < 2; ++h) {
                sum[h] += v[h];
                squares[h] += v[h] * v[h];
                lmin[h] = e[h] < lmin[h] ? e[h] : lmin[h];
                lmax[h] = e[h] > lmax[h] ? e[h] : lmax[h];
            }
        }
    }
    for (int l = 0; l < kStatsLanes; ++l) {
        out.sum[l] = sum[l / 4][l % 4];
        out.squares[l] = squares[l / 4][l % 4];
    }
    // The all-pixel extremes saw only groups with an invalid pixel; the
    // valid extremes cover the rest.
    for (int h = 0; h < 2; ++h) {
        amin[h] = lmin[h] < amin[h] ? lmin[h] : amin[h];
        amax[h] = lmax[h] > amax[h] ? lmax[h] : amax[h];
    }
    double bmin = double(lmin[0][0]), bmax = double(lmax[0][0]);
    double cmin = double(amin[0][0]), cmax = double(amax[0][0]);
    for (int l = 0; l < kStatsLanes; ++l) {
        const double a = double(lmin[l / 4][l % 4]), b = double(lmax[l / 4][l % 4]);
        const double c = double(amin[l / 4][l % 4]), d = double(amax[l / 4][l % 4]);
        bmin = a < bmin ? a : bmin;
        bmax = b > bmax ? b : bmax;
        cmin = c < cmin ? c : cmin;
        cmax = d > cmax ? d : cmax;
    }
    // The tail, in lane 0.
    for (; k < m; ++k) {
        const double v = double(p[k]);
        if constexpr (kStatus) {
            if (v < cmin) cmin = v;
            if (v > cmax) cmax = v;
            if (!IsValidStatus(st[k])) continue;
            any |= st[k];
        }
        count += 1;
        out.sum[0] += v;
        out.squares[0] += v * v;
        if (v < bmin) bmin = v;
        if (v > bmax) bmax = v;
    }
    for (int l = 0; l < kStatsLanes; ++l) any |= (unsigned char)(statusWord >> (8 * l));
    out.count = count;
    out.any = any;
    out.min = bmin;
    out.max = bmax;
    out.allMin = cmin;
    out.allMax = cmax;
}

// Contiguous runs of a frame, for whole frames and rectangles. Sums and
// extremes are kept in eight independent lanes so that the loop pipelines
// and vectorises; only the block in which an extreme last improved is
// remembered, and the extreme's first pixel is found in it at the end, which
// gives the same pixel as the strict in-order rule. Sums are added in lane
// order, so they may differ from an in-order sum by rounding. A NaN first
// pixel (where the in-order rule keeps the NaN) falls back to the walker.
template <class T, bool kStatus>
class TRunStats {
public:
    bool fallback = false;

    void Run(const T* data, const unsigned char* status, uint32_t flat, uint32_t len)
    {
        uint32_t k = 0;
        if constexpr (kStatus) {
            // Up to the first valid pixel: the lanes start from it.
            for (; k < len && !m_min.started; ++k) {
                const double v = double(data[k]);
                if (!StartOrUpdateAll(v, data + k, status + k, flat + k)) return;
                if (IsValidStatus(status[k])) {
                    if (v != v) {
                        fallback = true;
                        return;
                    }
                    m_min.Start(v, data + k, status + k, flat + k);
                    m_max.Start(v, data + k, status + k, flat + k);
                    m_sum[0] += v;
                    m_squares[0] += v * v;
                    m_count += 1;
                    m_statusAny |= status[k];
                }
            }
        } else {
            if (len && !m_min.started) {
                const double v = double(data[0]);
                if (v != v) {
                    fallback = true;
                    return;
                }
                m_min.Start(v, data, nullptr, flat);
                m_max.Start(v, data, nullptr, flat);
            }
        }
        for (uint32_t b = k; b < len; b += kBlock) {
            const uint32_t m = len - b < kBlock ? len - b : kBlock;
            Block(data + b, kStatus ? status + b : nullptr, flat + b, m);
        }
    }

    // The figures into an accumulator, as the in-order rule gives them.
    void Result(SStatsAcc& a) const
    {
        a.sum = a.squares = 0;
        a.count = m_count;
        a.statusAny = m_statusAny;
        for (int l = 0; l < kLanes; ++l) {
            a.sum += m_sum[l];
            a.squares += m_squares[l];
        }
        if (m_min.started) {
            a.anyValid = true;
            m_min.Find(a.min, a.minIndex, a.minStatus, kStatus);
            m_max.Find(a.max, a.maxIndex, a.maxStatus, kStatus);
        }
        if constexpr (kStatus) {
            if (m_allMin.started) {
                a.any = true;
                uint8_t unused;
                m_allMin.Find(a.allMin, a.allMinIndex, unused, false);
                m_allMax.Find(a.allMax, a.allMaxIndex, unused, false);
            }
        }
    }

private:
    static constexpr int kLanes = kStatsLanes;
    static constexpr uint32_t kBlock = 512;

    // Running extreme and the block in which it last improved.
    struct STrack {
        bool started = false;
        double value = 0;
        const T* block = nullptr;
        const unsigned char* status = nullptr;
        uint32_t flat = 0, len = 0;
        void Start(double v, const T* p, const unsigned char* st, uint32_t f)
        {
            started = true;
            Mark(v, p, st, f, 1);
        }
        void Mark(double v, const T* p, const unsigned char* st, uint32_t f, uint32_t n)
        {
            value = v;
            block = p;
            status = st;
            flat = f;
            len = n;
        }
        // The first pixel of the block equal to the extreme (valid, if asked).
        void Find(double& v, uint32_t& index, uint8_t& st, bool validOnly) const
        {
            for (uint32_t k = 0; k < len; ++k) {
                if (validOnly && !IsValidStatus(status[k])) continue;
                if (double(block[k]) == value) {
                    v = double(block[k]);
                    index = flat + k;
                    st = status ? status[k] : 0;
                    return;
                }
            }
        }
    };

    // false after a NaN first pixel.
    bool StartOrUpdateAll(double v, const T* p, const unsigned char* st, uint32_t f)
    {
        if (!m_allMin.started) {
            if (v != v) {
                fallback = true;
                return false;
            }
            m_allMin.Start(v, p, st, f);
            m_allMax.Start(v, p, st, f);
            return true;
        }
        if (v > m_allMax.value) m_allMax.Mark(v, p, st, f, 1);
        if (v < m_allMin.value) m_allMin.Mark(v, p, st, f, 1);
        return true;
    }

    void Block(const T* p, const unsigned char* st, uint32_t flat, uint32_t m)
    {
        SStatsLanes lanes;
        lanes.min = m_min.value;
        lanes.max = m_max.value;
        lanes.allMin = m_allMin.value;
        lanes.allMax = m_allMax.value;
        StatsBlock<T, kStatus>(p, st, m, lanes);
        m_count += lanes.count;
        m_statusAny |= lanes.any;
        for (int l = 0; l < kLanes; ++l) {
            m_sum[l] += lanes.sum[l];
            m_squares[l] += lanes.squares[l];
        }
        if (lanes.min < m_min.value) m_min.Mark(lanes.min, p, st, flat, m);
        if (lanes.max > m_max.value) m_max.Mark(lanes.max, p, st, flat, m);
        if constexpr (kStatus) {
            if (lanes.allMin < m_allMin.value) m_allMin.Mark(lanes.allMin, p, st, flat, m);
            if (lanes.allMax > m_allMax.value) m_allMax.Mark(lanes.allMax, p, st, flat, m);
        }
    }

    double m_sum[kLanes] = {};
    double m_squares[kLanes] = {};
    uint32_t m_count = 0;
    unsigned char m_statusAny = 0;
    STrack m_min, m_max, m_allMin, m_allMax;
};

// Rectangle statistics through contiguous runs: the whole rectangle when it
// spans full rows, else row by row. False when the walker must redo it.
template <class T, bool kStatus>
bool RunRectStats(const T* data, const unsigned char* status, unsigned int width, SArea area, SStatsAcc& acc)
{
    TRunStats<T, kStatus> run;
    const uint32_t n = uint32_t(area.right) - area.left + 1;
    if (area.left == 0 && n == width) {
        const uint32_t flat = uint32_t(area.top) * width;
        const uint32_t len = (uint32_t(area.bottom) - area.top + 1) * width;
        run.Run(data + flat, kStatus ? status + flat : nullptr, flat, len);
    } else {
        for (uint32_t y = area.top; y <= area.bottom && !run.fallback; ++y) {
            const uint32_t flat = y * width + area.left;
            run.Run(data + flat, kStatus ? status + flat : nullptr, flat, n);
        }
    }
    if (run.fallback) return false;
    run.Result(acc);
    return true;
}

// Scan-line statistics through the same runs, one per line in array order;
// the box of the lines' ends. False when the walker must redo it.
template <class T, bool kStatus>
bool RunLineStats(const T* data, const unsigned char* status, unsigned int width, TArray<SScanLine> const& lines,
                  SStatsAcc& acc, SStatsBox& box)
{
    TRunStats<T, kStatus> run;
    for (size_t n = 0; n < lines.size() && !run.fallback; ++n) {
        const SScanLine& line = lines.get(n);
        if (line.last < line.first) continue;
        const uint32_t flat = uint32_t(line.row) * width + line.first;
        run.Run(data + flat, kStatus ? status + flat : nullptr, flat, uint32_t(line.last) - line.first + 1);
        box.Add(line.first, line.row);
        box.Add(line.last, line.row);
    }
    if (run.fallback) return false;
    run.Result(acc);
    return true;
}

// The rectangle kernel's pass, without the finishing steps.
template <class T>
void AccumulateRect(const T* data, const unsigned char* status, unsigned int width, SArea area, SStatsAcc& acc)
{
    if (area.bottom < area.top || area.right < area.left) return;
    const bool done = status ? RunRectStats<T, true>(data, status, width, area, acc)
                             : RunRectStats<T, false>(data, nullptr, width, area, acc);
    if (done) return;
    acc = SStatsAcc{};
    SStatsBox box;
    WalkStats<T, false>(data, status, SWalkRect{width, area}, acc, box);
}

} // namespace orv::reduce::priv
