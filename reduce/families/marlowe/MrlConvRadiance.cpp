// The radiance array and range forms of CMrlConv, on oneTBB.
#include "reduce/families/marlowe/MrlConvBodies.h"

namespace orv::reduce {

using priv::Dispatch;
using priv::RangeCount;
using priv::SArraySignals;
using priv::SRangeSignals;

void CMrlConv::SignalToRadiance(const unsigned short* src, float* dst, unsigned char* status, unsigned int n) const
{
    Dispatch<false>(*this, SArraySignals{src}, dst, status, n, tempKelvin);
}

void CMrlConv::SignalToRadiance(unsigned short first, unsigned short last, float* dst, unsigned char* status) const
{
    Dispatch<false>(*this, SRangeSignals{first}, dst, status, RangeCount(first, last), tempKelvin);
}

} // namespace orv::reduce
