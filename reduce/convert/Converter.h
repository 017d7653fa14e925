#pragma once
#include "orv/Array.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

class IConverter {
public:
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, SArea area);
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, TArray<SScanLine> const& lines);
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, SArea area,
                                      unsigned char const* mask, unsigned int maskWidth);
};

} // namespace orv::reduce
