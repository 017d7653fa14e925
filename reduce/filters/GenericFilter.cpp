#include "reduce/filters/GenericFilter.h"

#include <cstring>

#include "orv/PixelType.h"
#include "reduce/filters/FrameGeometry.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"

namespace orv::reduce {
namespace {

CDateTime CurrentTime() { return CDateTime::Now(); }

// Bytes of the frame that AdjustFrameData reads for the source's geometry,
// or -1 when the read area starts before the frame.
long long BytesRead(SGuid pixelType, uint64_t width, uint64_t height, const SRect& offset)
{
    if (width == 0 || height == 0) return 0;
    if (IsPixelBaseType(pixelType, pixelGrayscale)) {
        if (offset.left < 0 || offset.top < 0) return -1;
        const uint64_t left = static_cast<uint64_t>(offset.left), top = static_cast<uint64_t>(offset.top);
        return static_cast<long long>(((top + height - 1) * width + left + width) * 2);
    }
    if (IsPixelBaseType(pixelType, pixelRGB)) return static_cast<long long>(width * height * 3);
    if (IsPixelBaseType(pixelType, pixelYUV)) return static_cast<long long>((width / 2) * 4 * height);
    return 0;
}

} // namespace

bool CGenericFilter::HasPixels(SGuid) const { return false; }

bool CGenericFilter::GetPixels(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, void** pixels, int& stride)
{
    if (pixels) *pixels = nullptr;
    stride = 0;
    return false;
}

bool CGenericFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    const bool grayscale = IsPixelBaseType(pixelType, pixelGrayscale);
    if (pixels.type == dtNoData) {
        if (pixels.data && grayscale) return false;
    } else if (grayscale && pixels.type != dtUInt8 && pixels.type != dtUInt16) {
        return false;
    }
    // Only the exact root types are held to RGB output here.
    if ((pixelType == pixelRGB || pixelType == pixelYUV) && pixels.data && pixels.type != dtRGB24) return false;

    TSharedPtr<CSourceInfoReduceObject> source =
        objects.GetObjectOfType(CSourceInfoReduceObject::typeID, -1, false).DynamicCast<CSourceInfoReduceObject>();
    // The frame info exists from here on, also when the frame is refused below.
    objects.GetObjectOfType(CFrameInfoReduceObject::typeID, 0, true);

    const bool wantPixels = pixels.data != nullptr;
    if (wantPixels && !source) return false;

    // The frame must hold everything the copy reads; a short or corrupt frame
    // fails before anything changes.
    if (wantPixels) {
        const long long needed = pixels.type == dtUInt8
                                     ? static_cast<long long>(width) * height
                                     : BytesRead(pixelType, width, height, source->offset);
        if (needed < 0 || static_cast<unsigned long long>(needed) > frameSize) return false;
        if (needed > 0 && !frame) return false;
    }

    NextFrameInfo(objects);

    if (wantPixels) {
        if (pixels.type == dtUInt8) {
            if (width && height) std::memcpy(pixels.data, frame, static_cast<size_t>(width) * height);
        } else {
            // Shift count modulo 32, as the hardware would take it.
            const int mask = static_cast<int>(65535u >> ((16u - static_cast<unsigned>(source->adBits)) & 31u));
            AdjustFrameData(pixels.data, frame, width, height, pixelType, source->offset, source->adBitShift, mask,
                            source->interlaced, false, false);
        }
    }
    preset = 0;
    return true;
}

void CGenericFilter::NextFrameInfo(CReduceObjectArray& objects)
{
    TSharedPtr<CFrameInfoReduceObject> info =
        objects.GetObjectOfType(CFrameInfoReduceObject::typeID, 0, true).DynamicCast<CFrameInfoReduceObject>();
    if (info) {
        info->preset = 0;
        info->valid = true;
        info->frame = m_frameCounter;
        info->time = CurrentTime();
        info->timeSource = timeSourcePC;
        info->extra.Clear();
    }
    ++m_frameCounter; // 16-bit: 65535 is followed by 0
}

bool CGenericFilter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return true;
}

bool CGenericFilter::ParseTime(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, CDateTime& time)
{
    time = CurrentTime();
    return true;
}

bool CGenericFilter::ParseFrameCounter(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint64_t& counter)
{
    counter = m_frameCounter;
    return true;
}

bool CGenericFilter::ParseBasicInfo(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset,
                                    uint64_t& counter, CDateTime& time)
{
    preset = 0;
    counter = m_frameCounter;
    time = CurrentTime();
    return true;
}

} // namespace orv::reduce
