#include "reduce/filters/BareFrameFilters.h"

namespace orv::reduce {

bool CBareFrameFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                  uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects,
                                  uint8_t& preset)
{
    if (!Known(pixelType)) return false;
    return CGenericFilter::ParseFrame(frame, pixelType, width, height, frameSize, pixels, objects, preset);
}

bool CBareFrameFilter::ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                   uint32_t frameSize, uint8_t& preset)
{
    return Known(pixelType) && CGenericFilter::ParsePreset(frame, pixelType, width, height, frameSize, preset);
}

bool CBareFrameFilter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                 uint32_t frameSize, CDateTime& time)
{
    return Known(pixelType) && CGenericFilter::ParseTime(frame, pixelType, width, height, frameSize, time);
}

bool CBareFrameFilter::ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                         uint32_t frameSize, uint64_t& counter)
{
    return Known(pixelType) &&
           CGenericFilter::ParseFrameCounter(frame, pixelType, width, height, frameSize, counter);
}

bool CBareFrameFilter::ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                      uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time)
{
    return Known(pixelType) &&
           CGenericFilter::ParseBasicInfo(frame, pixelType, width, height, frameSize, preset, counter, time);
}

} // namespace orv::reduce
