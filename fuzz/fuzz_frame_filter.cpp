// The camera frame decoders: the first byte picks a pixel type, then width
// and height (2 bytes each) and the element type of the pixel buffer
// (1 byte); the rest is one raw frame. Its filter parses the frame into the
// reduce objects and, when the buffer is not too large, into pixels.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/filters/Filter.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CReader reader(data, size);
    const uint8_t pick = reader.Take<uint8_t>();
    const uint16_t width = reader.Take<uint16_t>();
    const uint16_t height = reader.Take<uint16_t>();
    const auto type = static_cast<EDataType>(reader.Take<uint8_t>() % (dtNoData + 1));

    const SGuid bases[] = {pixelGrayscale, pixelRGB, pixelYUV};
    const unsigned choices = kPixelTypeRowCount + 3;
    const unsigned index = pick % choices;
    const SGuid pixelType = index < 3 ? bases[index] : pixelTypeTable[index - 3].id;
    TSharedPtr<IFilter> filter = filterFactory()->CreateForPixelType(pixelType);
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
    }
    return 0;
}
