#include "reduce/objects/GPSData.h"

#include <algorithm>
#include <cstring>

namespace orv {

namespace {

template <class T>
void Reverse(T& value)
{
    auto* bytes = reinterpret_cast<unsigned char*>(&value);
    std::reverse(bytes, bytes + sizeof(T));
}

} // namespace

void SGPSData::invalidate()
{
    std::memset(this, 0, sizeof *this);
    dbl16 = dbl24 = -1.0;
    flt32 = -1.0f;
    flt64 = -1.0f;
    flt76 = flt80 = flt84 = -1.0f;
    std::memcpy(datum, "WGS84", 5);
    dbl120 = dbl128 = -1.0;
    flt136 = flt140 = -1.0f;
    byteOrderMark = kByteOrderMark;
}

void SGPSData::swap()
{
    for (uint32_t* word : {&valid, &word36, &word116, &word180}) Reverse(*word);
    for (double* value : {&dbl16, &dbl24, &dbl120, &dbl128}) Reverse(*value);
    for (float* value : {&flt32, &flt64, &flt76, &flt80, &flt84, &flt136, &flt140}) Reverse(*value);
    for (uint16_t* value : {&short74, &short176, &byteOrderMark}) Reverse(*value);
}

} // namespace orv
