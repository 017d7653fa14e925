// GetStats over a whole or masked frame with the centre value, and over
// dense gathered arrays.
#include <array>
#include <cmath>
#include <type_traits>

#include "reduce/kernels/StatsKernels.h"

namespace orv::reduce {
namespace priv {
namespace {

inline int Limit(double v, int n)
{
    int i = int(v);
    if (i > n - 1) i = n - 1;
    if (i < 0) i = 0;
    return i;
}

// Sum in the element type's promoted arithmetic; signed sums wrap as the
// hardware does.
template <class T>
inline auto PromotedSum(T a, T b)
{
    if constexpr (std::is_integral_v<T>) {
        using P = decltype(a + b);
        using U = std::make_unsigned_t<P>;
        return P(U(P(a)) + U(P(b)));
    } else {
        return a + b;
    }
}

// The value at the box centre: one pixel, or the mean of two or four reads
// around it, added in the element type's own arithmetic.
template <class T>
void CenterValue(CStats& s, const T* data, const unsigned char* status, int width, int height)
{
    const int fx0 = Limit(std::floor(s.centerPosition.x), width), fx1 = Limit(std::ceil(s.centerPosition.x), width);
    const int fy0 = Limit(std::floor(s.centerPosition.y), height), fy1 = Limit(std::ceil(s.centerPosition.y), height);
    auto at = [&](int x, int y) { return size_t(y) * size_t(width) + size_t(x); };
    if (fx0 == fx1 && fy0 == fy1) {
        s.centerValue = double(data[at(fx0, fy0)]);
        if (status) s.centerStatus = status[at(fx0, fy0)];
    } else if (fx0 == fx1) {
        s.centerValue = PromotedSum(data[at(fx0, fy1)], data[at(fx0, fy0)]) * 0.5;
        if (status) s.centerStatus = status[at(fx0, fy1)] | status[at(fx0, fy0)];
    } else {
        // Four reads even when fy0 equals fy1.
        auto sum = PromotedSum(data[at(fx0, fy0)], data[at(fx0, fy1)]);
        using P = decltype(sum);
        sum = PromotedSum(sum, P(data[at(fx1, fy0)]));
        sum = PromotedSum(sum, P(data[at(fx1, fy1)]));
        s.centerValue = sum * 0.25;
        if (status)
            s.centerStatus = status[at(fx0, fy0)] | status[at(fx0, fy1)] | status[at(fx1, fy0)] | status[at(fx1, fy1)];
    }
}

} // namespace

template <class T>
void GetStats(CStats& stats, const void* source, int width, int height, unsigned char* mask,
              unsigned int maskStride, unsigned char* status)
{
    const T* data = static_cast<const T*>(source);
    ResetStats(stats);
    stats.centerStatus = 0;
    if (mask) stats.minValue = stats.maxValue = 0;
    SStatsAcc acc;
    SStatsBox box;
    if (width > 0 && height > 0) {
        const SArea frame{0, 0, uint16_t(height - 1), uint16_t(width - 1)};
        if (mask) {
            WalkStats<T, true>(data, status, SWalkMask{unsigned(width), frame, mask, maskStride}, acc, box);
        } else {
            AccumulateRect(data, status, unsigned(width), frame, acc);
            box = SStatsBox::Of(frame);
        }
    }
    FinishStats(stats, acc, status != nullptr, width > 0 ? uint32_t(width) : 0u, box);
    if (width > 0 && height > 0) CenterValue(stats, data, status, width, height);
}

// Dense data, element i at frame index indices[i].
template <class T>
void GetStatsDense(CStats& stats, const void* source, unsigned char const* denseStatus, unsigned int const* indices,
                   unsigned int count, unsigned char* frameStatus, unsigned short width, unsigned short)
{
    const T* data = static_cast<const T*>(source);
    ResetStats(stats);
    SStatsAcc acc;
    SStatsBox box;
    const unsigned w = width ? width : 1u;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned int q = indices[i];
        box.Add(q % w, q / w);
        const double v = double(data[i]);
        const unsigned char st = denseStatus ? denseStatus[i] : 0;
        if (frameStatus) {
            acc.AddAll(v, i);
            if (IsValidStatus(frameStatus[q])) acc.AddValid(v, st, i);
        } else {
            acc.AddValid(v, st, i);
        }
    }
    // Ordinals become frame indices.
    if (acc.anyValid) {
        acc.minIndex = indices[acc.minIndex];
        acc.maxIndex = indices[acc.maxIndex];
    }
    if (acc.any) {
        acc.allMinIndex = indices[acc.allMinIndex];
        acc.allMaxIndex = indices[acc.allMaxIndex];
    }
    FinishStats(stats, acc, frameStatus != nullptr, width, box);
}

using TGetStatsKernel = void (*)(CStats&, const void*, int, int, unsigned char*, unsigned int, unsigned char*);
using TGetStatsDenseKernel = void (*)(CStats&, const void*, unsigned char const*, unsigned int const*, unsigned int,
                                      unsigned char*, unsigned short, unsigned short);

namespace {
ORV_TYPE_TABLE(TGetStatsKernel, vecGetStats, GetStats);
ORV_TYPE_TABLE(TGetStatsDenseKernel, vecGetStatsDense, GetStatsDense);
} // namespace

} // namespace priv

void GetStats(CStats& stats, STypedData data, int width, int height, unsigned char* mask, unsigned int maskStride,
              unsigned char* status)
{
    if (unsigned(data.type) > dtFlt64) return;
    priv::vecGetStats[data.type](stats, data.data, width, height, mask, maskStride, status);
}

void GetStats(CStats& stats, STypedData data, unsigned char* status, unsigned int count)
{
    if (unsigned(data.type) > dtFlt64) return;
    priv::vecGetStats[data.type](stats, data.data, int(count), 1, nullptr, 0, status);
}

void GetStats(CStats& stats, STypedData data, unsigned char const* denseStatus, unsigned int const* indices,
              unsigned int count, unsigned char* frameStatus, unsigned short width, unsigned short height)
{
    if (unsigned(data.type) > dtFlt64) return;
    priv::vecGetStatsDense[data.type](stats, data.data, denseStatus, indices, count, frameStatus, width, height);
}

} // namespace orv::reduce
