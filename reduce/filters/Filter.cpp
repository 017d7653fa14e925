#include "reduce/filters/Filter.h"

#include <algorithm>
#include <cstring>

namespace orv::reduce {

bool IFilter::ParseFrame(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, STypedData, CReduceObjectArray&,
                         uint8_t& preset)
{
    preset = 0;
    return false;
}

bool IFilter::ParseReduceObjects(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                 uint32_t frameSize, CReduceObjectArray& objects, uint8_t& preset)
{
    return ParseFrame(frame, pixelType, width, height, frameSize, STypedData(static_cast<void*>(nullptr), dtNoData), objects, preset);
}

bool IFilter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return false;
}

bool IFilter::ParseFrameCounter(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint64_t& counter)
{
    counter = 0;
    return false;
}

bool IFilter::StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid, uint16_t, uint16_t, uint16_t,
                         uint16_t, void* out, uint32_t outSize)
{
    const uint32_t n = std::min(frameSize, outSize);
    if (n != 0) std::memcpy(out, frame, n);
    return true;
}

bool IFilter::CheckForTrigger(const unsigned char*, uint32_t, SGuid, uint16_t, uint16_t, uint16_t, uint8_t,
                              bool& triggered, uint16_t& position)
{
    triggered = false;
    position = 0;
    return true;
}

bool IFilter::HasTime(SGuid) const { return false; }

bool IFilter::HasFrameCounter(SGuid) const { return false; }

uint64_t IFilter::FrameCounterMaxValue(SGuid) const { return 65535; }

bool IFilter::GetTriggerFields(SGuid, TArray<CString>& names) const
{
    names.clear();
    return false;
}

bool IFilter::CountPresets(unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                           uint16_t height, uint16_t subFrameIndex, uint32_t* counts)
{
    if (subFrameIndex != 0) return false;
    uint8_t preset = 0;
    if (!ParsePreset(frame, pixelType, width, height, frameSize, preset)) return false;
    // A corrupt frame may claim any preset; counts has room for eight only.
    if (preset >= kMaxFilterPresets || !counts) return false;
    ++counts[preset];
    return true;
}

bool IFilter::HasHeader(SGuid) const { return false; }

bool IFilter::GetHeaderInfo(SGuid, uint16_t, uint16_t, uint32_t, SGuid& headerType, uint32_t& headerSize) const
{
    headerType = SGuid{};
    headerSize = 0;
    return false;
}

bool IFilter::ExtractHeader(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, void*, uint32_t) { return false; }

bool IFilter::GetConfigSize(SGuid, uint32_t& size) const
{
    size = 0;
    return false;
}

bool IFilter::SetConfig(SGuid, const void*, uint32_t) { return false; }

bool IFilter::GetConfig(SGuid, void*, uint32_t) const { return false; }

} // namespace orv::reduce
