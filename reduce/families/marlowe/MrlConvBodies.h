#pragma once
// The parallel bodies of CMrlConv's array and range forms: one per polyOrder
// case, with and without a status array, so that the choice is made once per
// call and not per pixel. Radiance and temperature forms instantiate them in
// files of their own (MrlConvRadiance.cpp, MrlConvTemperature.cpp).
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>

#include "reduce/families/marlowe/MrlConv.h"

namespace orv::reduce::priv {

// The eight polyOrder cases: 1, -1, -2, 2, 3, 4, 0, and any other.
enum EOrderCase { kOrder1, kOrderM1, kOrderM2, kOrder2, kOrder3, kOrder4, kOrder0, kOrderOther };

inline EOrderCase CaseOf(int order)
{
    switch (order) {
    case 1: return kOrder1;
    case -1: return kOrderM1;
    case -2: return kOrderM2;
    case 2: return kOrder2;
    case 3: return kOrder3;
    case 4: return kOrder4;
    case 0: return kOrder0;
    default: return kOrderOther;
    }
}

// Radiance before the limits, with the case fixed at compile time; the same
// arithmetic as CMrlConv::RawRadiance.
template <EOrderCase C>
inline double Raw(const CMrlConv& m, unsigned short s)
{
    const double* c = m.cal.coeffs;
    if constexpr (C == kOrder0) return s * m.radianceScale;
    if constexpr (C == kOrder1) return (c[1] * s + c[0]) * m.radianceScale;
    if constexpr (C == kOrderM1) return c[1] * (s - m.cal.signalOffset) * m.radianceScale + c[0];
    if constexpr (C == kOrderM2) return (c[1] * (s - m.cal.signalOffset) + c[0]) * m.radianceScale;
    if constexpr (C == kOrder2 || C == kOrder3 || C == kOrder4) {
        constexpr int k = C == kOrder2 ? 2 : C == kOrder3 ? 3 : 4;
        return CMrlConv::polyValue(s, k, c) * m.radianceScale;
    }
    if constexpr (C == kOrderOther) return m.RawRadiance(s);
}

// Signal i of the call: from the array, or first + i of a range.
struct SArraySignals {
    const unsigned short* src;
    unsigned short operator()(unsigned int i) const { return src[i]; }
};
struct SRangeSignals {
    unsigned short first;
    unsigned short operator()(unsigned int i) const { return static_cast<unsigned short>(first + i); }
};

template <EOrderCase C, bool Status, bool Temperature, class Signals>
void Run(const CMrlConv& m, Signals signals, float* dst, unsigned char* status, unsigned int n, ETempType type)
{
    tbb::parallel_for(
        tbb::blocked_range<unsigned int>(0, n, 1),
        [&](const tbb::blocked_range<unsigned int>& range) {
            for (unsigned int i = range.begin(); i != range.end(); ++i) {
                float r = float(Raw<C>(m, signals(i)));
                const unsigned char flag = m.Limit(r);
                if constexpr (Status) status[i] = flag;
                if constexpr (Temperature)
                    dst[i] = m.RadianceToTemperature(r, nullptr, type);
                else
                    dst[i] = r;
            }
        },
        tbb::auto_partitioner());
}

template <bool Temperature, class Signals>
void Dispatch(const CMrlConv& m, Signals signals, float* dst, unsigned char* status, unsigned int n,
              ETempType type)
{
    if (n == 0) return;
#define ORV_MRL_CASE(C)                                                                  \
    case C:                                                                              \
        if (status)                                                                      \
            Run<C, true, Temperature>(m, signals, dst, status, n, type);                 \
        else                                                                             \
            Run<C, false, Temperature>(m, signals, dst, status, n, type);                \
        return;
    switch (CaseOf(m.cal.polyOrder)) {
        ORV_MRL_CASE(kOrder1)
        ORV_MRL_CASE(kOrderM1)
        ORV_MRL_CASE(kOrderM2)
        ORV_MRL_CASE(kOrder2)
        ORV_MRL_CASE(kOrder3)
        ORV_MRL_CASE(kOrder4)
        ORV_MRL_CASE(kOrder0)
        ORV_MRL_CASE(kOrderOther)
    }
#undef ORV_MRL_CASE
}

inline unsigned int RangeCount(unsigned short first, unsigned short last)
{
    return last < first ? 0u : unsigned(last) - first + 1u;
}

} // namespace orv::reduce::priv
