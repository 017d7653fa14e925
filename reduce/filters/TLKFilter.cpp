#include "reduce/filters/TLKFilter.h"

#include <algorithm>
#include <cstring>

#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"

namespace orv::reduce {

namespace {

// Reads one little-endian field at offset, when the frame holds it.
template <class T>
bool ReadField(const unsigned char* frame, uint32_t frameSize, uint32_t offset, T& value)
{
    if (!frame || frameSize < offset || frameSize - offset < sizeof(T)) return false;
    std::memcpy(&value, frame + offset, sizeof(T));
    return true;
}

bool ReadTime(const unsigned char* frame, uint32_t frameSize, CDateTime& time, bool& locked)
{
    uint16_t words[4];
    if (!ReadField(frame, frameSize, 2, words)) return false;
    SHeader header;
    tlkDecodeIRIG(words, header, locked);
    // An out-of-range field leaves the time as it was; the call still
    // succeeds, as a frame with a header always has a time.
    time.SetYDHMS(header.day, header.hour, header.minute, header.second, header.millisecond, header.microsecond);
    return true;
}

} // namespace

bool CTLKFilter::HasPixels(SGuid pixelType) const
{
    // MX frames of the header type are taken to carry the image as well;
    // intended.
    if (pixelType == m_headerType) return m_mx;
    return pixelType == pixelGrayscale || pixelType == m_pixelType;
}

bool CTLKFilter::GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, void** pixels, int& stride)
{
    // The pointer handed out must lead to a whole image inside the frame.
    const uint64_t rowBytes = uint64_t(width) * 2;
    if (!HasPixels(pixelType) || !frame || rowBytes * (uint64_t(height) + 1) > frameSize) {
        if (pixels) *pixels = nullptr;
        stride = 0;
        return false;
    }
    if (pixels) *pixels = frame + rowBytes;
    stride = int(rowBytes);
    return true;
}

bool CTLKFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                            uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    if (!Known(pixelType) || !frame) return false;
    // The image is copied as 16-bit values; a buffer of another element
    // size would be overrun.
    if (pixels.data && DataTypeSize(pixels.type) != 2) return false;

    SRawHeader raw;
    tlkDecodeHeaderRaw(raw, frame, frameSize);
    SHeader header;
    tlkHeaderFromRawHeader(header, raw);

    uint8_t framePreset = header.activePreset;
    if (m_mx && pixelType == m_headerType) {
        // Stored headers of an abated recording all belong to preset 0.
        TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(false);
        if (source && source->abated) framePreset = 0;
    }
    preset = framePreset;

    TSharedPtr<CFrameInfoReduceObject> info =
        objects.GetObjectOfType(CFrameInfoReduceObject::typeID, framePreset, true).DynamicCast<CFrameInfoReduceObject>();
    if (info) {
        info->valid = true;
        info->preset = framePreset;
        info->frame = header.frameCounter;
        info->time.SetYDHMS(header.day, header.hour, header.minute, header.second, header.millisecond,
                            header.microsecond);
        info->timeSource = header.irigLocked ? timeSourceIRIG : timeSourceCamera;
        // Extra data cleared and filled anew, in one pass.
        tlkFillEntries(info->extra, header, raw, m_mx, objects);
    }

    if (pixels.data) {
        // A frame shorter than its header row holds no image: nothing is
        // copied, where a plain subtraction would wrap around.
        const uint64_t rowBytes = uint64_t(width) * 2;
        const uint64_t available = frameSize > rowBytes ? frameSize - rowBytes : 0;
        const uint64_t n = std::min<uint64_t>(available, rowBytes * height);
        if (n) std::memcpy(pixels.data, frame + rowBytes, size_t(n));
    }
    return true;
}

bool CTLKFilter::ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t, uint16_t, uint32_t frameSize,
                             uint8_t& preset)
{
    uint16_t status = 0;
    if (!Known(pixelType) || !ReadField(frame, frameSize, 10, status)) return false;
    preset = uint8_t(status & 3);
    return true;
}

bool CTLKFilter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t, uint16_t, uint32_t frameSize,
                           CDateTime& time)
{
    bool locked = false;
    return Known(pixelType) && ReadTime(frame, frameSize, time, locked);
}

bool CTLKFilter::ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t, uint16_t, uint32_t frameSize,
                                   uint64_t& counter)
{
    uint32_t value = 0;
    if (!Known(pixelType) || !ReadField(frame, frameSize, 20, value)) return false;
    counter = value;
    return true;
}

bool CTLKFilter::ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time)
{
    // All three fields lie in the first 24 bytes: test once, then read.
    if (!Known(pixelType) || !frame || frameSize < 24) return false;
    return ParsePreset(frame, pixelType, width, height, frameSize, preset) &&
           ParseFrameCounter(frame, pixelType, width, height, frameSize, counter) &&
           ParseTime(frame, pixelType, width, height, frameSize, time);
}

bool CTLKFilter::CheckForTrigger(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t,
                                 uint16_t, uint16_t, uint8_t field, bool& triggered, uint16_t& position)
{
    if (field > (m_mx ? 1 : 0)) return false;
    if (!Known(pixelType)) return false;
    if (!frame || frameSize < kTLKHeaderSize) return false;
    uint16_t status = 0;
    ReadField(frame, frameSize, 10, status);
    triggered = ((status >> (field == 0 ? 15 : 14)) & 1) != 0;
    position = 0;
    return true;
}

bool CTLKFilter::GetTriggerFields(SGuid, TArray<CString>& names) const
{
    names.clear();
    names.add("Trigger");
    if (m_mx) names.add("RecordStart");
    return true;
}

bool CTLKFilter::HasHeader(SGuid pixelType) const { return pixelType == m_pixelType; }

bool CTLKFilter::GetHeaderInfo(SGuid pixelType, uint16_t width, uint16_t, uint32_t, SGuid& headerType,
                               uint32_t& headerSize) const
{
    if (pixelType != m_pixelType) {
        headerType = SGuid{};
        headerSize = 0;
        return false;
    }
    headerType = m_headerType;
    headerSize = width < 48 ? uint32_t(width) * 2 : 96;
    return true;
}

bool CTLKFilter::ExtractHeader(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                               uint32_t frameSize, void* out, uint32_t outSize)
{
    SGuid headerType;
    uint32_t headerSize = 0;
    if (!GetHeaderInfo(pixelType, width, height, frameSize, headerType, headerSize)) return false;
    if (!out && outSize) return false;
    if (outSize) std::memset(out, 0, outSize);
    // Never more than the frame holds.
    const uint32_t n = std::min({headerSize, outSize, frame ? frameSize : 0u});
    if (n) std::memcpy(out, frame, n);
    return true;
}

} // namespace orv::reduce
