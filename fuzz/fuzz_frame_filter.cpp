// The camera frame decoders: the first byte picks a pixel type, then width
// and height (2 bytes each) and the element type of the pixel buffer
// (1 byte); the rest is one raw frame. Its filter parses the frame into the
// reduce objects and, when the buffer is not too large, into pixels; then
// every other operation that reads a frame runs on it.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/filters/Filter.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// Stored header types: claimed by filters, not in the pixel type table.
const SGuid kHeaderTypes[] = {guidTLKRVHdr, guidTLKMXHdr, guidBRGHdr, guidOSTHdr};

// The peeks, the copy into a recording's slot, the triggers and the header,
// with sub-frame and field numbers taken from the frame's size.
void RunEveryOperation(IFilter& filter, unsigned char* raw, SGuid pixelType, uint16_t width, uint16_t height,
                       uint32_t frameSize)
{
    uint8_t preset = 0;
    uint64_t counter = 0;
    CDateTime time;
    filter.ParseFrameCounter(raw, pixelType, width, height, frameSize, counter);
    filter.ParseTime(raw, pixelType, width, height, frameSize, time);
    filter.ParseBasicInfo(raw, pixelType, width, height, frameSize, preset, counter, time);
    uint32_t counts[kMaxFilterPresets] = {};
    filter.CountPresets(raw, frameSize, pixelType, width, height, 0, counts);

    const auto subFrames = uint16_t(1 + (width & 3));
    const auto subFrameIndex = uint16_t((width >> 2) & 3);
    // A slot of a sub-frame's share, or one that holds the whole frame.
    std::vector<unsigned char> slot((height & 1) ? frameSize : frameSize / subFrames + 1);
    filter.StoreFrame(raw, frameSize, pixelType, width, height, subFrames, subFrameIndex, slot.data(),
                      uint32_t(slot.size()));

    TArray<CString> fields;
    filter.GetTriggerFields(pixelType, fields);
    for (uint8_t field = 0; field < 3; ++field) {
        bool triggered = false;
        uint16_t position = 0;
        filter.CheckForTrigger(raw, frameSize, pixelType, width, height, subFrameIndex, field, triggered, position);
    }

    SGuid headerType;
    uint32_t headerSize = 0;
    filter.GetHeaderInfo(pixelType, width, height, frameSize, headerType, headerSize);
    unsigned char header[256];
    filter.ExtractHeader(raw, pixelType, width, height, frameSize, header, sizeof header);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CReader reader(data, size);
    const uint8_t pick = reader.Take<uint8_t>();
    const uint16_t width = reader.Take<uint16_t>();
    const uint16_t height = reader.Take<uint16_t>();
    const auto type = static_cast<EDataType>(reader.Take<uint8_t>() % (dtNoData + 1));

    const SGuid bases[] = {pixelGrayscale, pixelRGB, pixelYUV};
    constexpr unsigned kHeaderCount = sizeof kHeaderTypes / sizeof kHeaderTypes[0];
    const unsigned choices = kPixelTypeRowCount + 3 + kHeaderCount;
    const unsigned index = pick % choices;
    const SGuid pixelType = index < 3                       ? bases[index]
                            : index < 3 + kPixelTypeRowCount ? pixelTypeTable[index - 3].id
                                                             : kHeaderTypes[index - 3 - kPixelTypeRowCount];
    TSharedPtr<IFilter> filter = filterFactory()->CreateForPixelType(pixelType);
    // JPEG screen frames are decoded by the V410 filter when asked directly.
    if (!filter && pixelType == guidMJPG) filter = filterFactory()->Create("V410");
    if (!filter) return 0;

    // The frame is the caller's own buffer, which the filter may change.
    std::vector<unsigned char> frame(reader.data(), reader.data() + reader.size());
    const auto frameSize = static_cast<uint32_t>(frame.size());
    unsigned char* raw = frame.empty() ? nullptr : frame.data();

    const uint64_t pixelBytes = uint64_t(width) * height * DataTypeSize(type);
    std::vector<unsigned char> pixels(pixelBytes <= (uint64_t(1) << 24) ? pixelBytes : 0);
    STypedData target(pixels.empty() ? nullptr : pixels.data(), type);

    CReduceObjectArray objects;
    uint8_t preset = 0;
    if (raw) {
        filter->ParseFrame(raw, pixelType, width, height, frameSize, target, objects, preset);
        filter->ParsePreset(raw, pixelType, width, height, frameSize, preset);
        void* at = nullptr;
        int stride = 0;
        filter->GetPixels(raw, pixelType, width, height, frameSize, &at, stride);
        RunEveryOperation(*filter, raw, pixelType, width, height, frameSize);
    }
    return 0;
}
