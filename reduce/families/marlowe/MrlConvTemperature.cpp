// The temperature array and range forms of CMrlConv, on oneTBB.
#include "reduce/families/marlowe/MrlConvBodies.h"

namespace orv::reduce {

using priv::Dispatch;
using priv::RangeCount;
using priv::SArraySignals;
using priv::SRangeSignals;

void CMrlConv::SignalToTemperature(const unsigned short* src, float* dst, unsigned char* status, unsigned int n,
                                   ETempType type) const
{
    Dispatch<true>(*this, SArraySignals{src}, dst, status, n, type);
}

void CMrlConv::SignalToTemperature(unsigned short first, unsigned short last, float* dst, unsigned char* status,
                                   ETempType type) const
{
    Dispatch<true>(*this, SRangeSignals{first}, dst, status, RangeCount(first, last), type);
}

} // namespace orv::reduce
