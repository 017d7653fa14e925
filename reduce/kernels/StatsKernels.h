#pragma once
// Statistics kernels: one accumulator with the value rules, a walker body
// that feeds it, and a fast path for contiguous runs.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "reduce/kernels/RegionWalk.h"
#include "reduce/kernels/Stats.h"

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
    void operator()(unsigned flat, unsigned, unsigned x, unsigned y) const
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
                    m_count[0] += 1;
                    m_statusAny[0] |= status[k];
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
        if constexpr (!kStatus) m_count[0] += len;
    }

    // The figures into an accumulator, as the in-order rule gives them.
    void Result(SStatsAcc& a) const
    {
        a.sum = a.squares = 0;
        a.count = 0;
        a.statusAny = 0;
        for (int l = 0; l < kLanes; ++l) {
            a.sum += m_sum[l];
            a.squares += m_squares[l];
            a.count += m_count[l];
            a.statusAny |= m_statusAny[l];
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
    static constexpr int kLanes = 8;
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
        // Local lanes: the compiler keeps them in registers and pairs them
        // into vectors; members would go through memory at every pixel.
        double sum[kLanes], squares[kLanes], lmin[kLanes], lmax[kLanes], amin[kLanes], amax[kLanes];
        uint32_t count[kLanes];
        unsigned char any[kLanes];
        uint64_t statusWord = 0; // OR of whole groups of eight status bytes
        for (int l = 0; l < kLanes; ++l) {
            sum[l] = squares[l] = 0;
            count[l] = 0;
            any[l] = 0;
            lmin[l] = m_min.value;
            lmax[l] = m_max.value;
            amin[l] = m_allMin.value;
            amax[l] = m_allMax.value;
        }
        uint32_t k = 0;
        for (; k + kLanes <= m; k += kLanes) {
            double v[kLanes];
            for (int l = 0; l < kLanes; ++l) v[l] = double(p[k + l]);
            if constexpr (kStatus) {
                for (int l = 0; l < kLanes; ++l) {
                    amin[l] = v[l] < amin[l] ? v[l] : amin[l];
                    amax[l] = v[l] > amax[l] ? v[l] : amax[l];
                }
                uint64_t word;
                std::memcpy(&word, st + k, sizeof(word));
                if ((word & 0x1818181818181818ull) == 0) {
                    // Eight valid pixels, the common case: no test per pixel.
                    statusWord |= word;
                    count[0] += kLanes;
                    for (int l = 0; l < kLanes; ++l) {
                        sum[l] += v[l];
                        squares[l] += v[l] * v[l];
                        lmin[l] = v[l] < lmin[l] ? v[l] : lmin[l];
                        lmax[l] = v[l] > lmax[l] ? v[l] : lmax[l];
                    }
                } else {
                    for (int l = 0; l < kLanes; ++l) {
                        if (!IsValidStatus(st[k + l])) continue;
                        any[l] |= st[k + l];
                        count[l] += 1;
                        sum[l] += v[l];
                        squares[l] += v[l] * v[l];
                        lmin[l] = v[l] < lmin[l] ? v[l] : lmin[l];
                        lmax[l] = v[l] > lmax[l] ? v[l] : lmax[l];
                    }
                }
            } else {
                for (int l = 0; l < kLanes; ++l) {
                    sum[l] += v[l];
                    squares[l] += v[l] * v[l];
                    lmin[l] = v[l] < lmin[l] ? v[l] : lmin[l];
                    lmax[l] = v[l] > lmax[l] ? v[l] : lmax[l];
                }
            }
        }
        for (; k < m; ++k) {
            const double v = double(p[k]);
            bool valid = true;
            if constexpr (kStatus) {
                valid = IsValidStatus(st[k]);
                amin[0] = v < amin[0] ? v : amin[0];
                amax[0] = v > amax[0] ? v : amax[0];
                if (valid) {
                    count[0] += 1;
                    any[0] |= st[k];
                }
            }
            if (valid) {
                sum[0] += v;
                squares[0] += v * v;
                lmin[0] = v < lmin[0] ? v : lmin[0];
                lmax[0] = v > lmax[0] ? v : lmax[0];
            }
        }
        for (int l = 0; l < kLanes; ++l) {
            m_sum[l] += sum[l];
            m_squares[l] += squares[l];
            m_count[l] += count[l];
            m_statusAny[l] |= any[l] | (unsigned char)(statusWord >> (8 * l));
        }
        double bmin = lmin[0], bmax = lmax[0];
        for (int l = 1; l < kLanes; ++l) {
            bmin = lmin[l] < bmin ? lmin[l] : bmin;
            bmax = lmax[l] > bmax ? lmax[l] : bmax;
        }
        if (bmin < m_min.value) m_min.Mark(bmin, p, st, flat, m);
        if (bmax > m_max.value) m_max.Mark(bmax, p, st, flat, m);
        if constexpr (kStatus) {
            double cmin = amin[0], cmax = amax[0];
            for (int l = 1; l < kLanes; ++l) {
                cmin = amin[l] < cmin ? amin[l] : cmin;
                cmax = amax[l] > cmax ? amax[l] : cmax;
            }
            if (cmin < m_allMin.value) m_allMin.Mark(cmin, p, st, flat, m);
            if (cmax > m_allMax.value) m_allMax.Mark(cmax, p, st, flat, m);
        }
    }

    double m_sum[kLanes] = {};
    double m_squares[kLanes] = {};
    uint32_t m_count[kLanes] = {};
    unsigned char m_statusAny[kLanes] = {};
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
