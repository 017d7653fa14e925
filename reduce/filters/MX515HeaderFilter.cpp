#include "reduce/filters/MX515HeaderFilter.h"

#include <algorithm>
#include <cstring>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/Yuv.h"

namespace orv::reduce {

bool CMX515HeaderFilter::HasPixels(SGuid pixelType) const { return IsInfrared(pixelType); }

bool CMX515HeaderFilter::GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t, uint32_t,
                                   void** pixels, int& stride)
{
    if (!IsInfrared(pixelType)) return false;
    if (pixels) *pixels = frame;
    stride = width * 2;
    return true;
}

bool CMX515HeaderFilter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return true;
}

bool CMX515HeaderFilter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                   uint32_t frameSize, CDateTime& time)
{
    unsigned char* header = IsInfrared(pixelType) ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
    if (!header) {
        time = CDateTime::Now();
        return true;
    }
    PutMX515HeaderInOrder(header);
    const SBasicFields f = MX515Fields(header);
    time = BasicDataTime(f.seconds, f.millis);
    return true;
}

bool CMX515HeaderFilter::HasTime(SGuid pixelType) const { return IsInfrared(pixelType); }

bool CMX515HeaderFilter::IsVideo(SGuid pixelType) const
{
    return std::find(m_types.begin() + 1, m_types.end(), pixelType) != m_types.end();
}

bool CMX515HeaderFilter::BeginFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                    uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects,
                                    uint8_t& preset, SOmbriaFrameObjects& o, unsigned char*& header) const
{
    o = FetchOmbriaObjects(objects);
    preset = 0;
    header = nullptr;
    if (!o.complete()) return false;
    if (IsInfrared(pixelType)) {
        if (pixels.type != dtUInt16 && pixels.type != dtNoData) return false;
        header = MX515HeaderOf(frame, frameSize, width, height);
        if (!header) return false;
        PutMX515HeaderInOrder(header);
        return true;
    }
    if (!IsVideo(pixelType)) return false;
    if (pixels.type != dtRGB24 && pixels.type != dtNoData) return false;
    // "No data" never receives pixels, whatever pointer comes with it.
    const bool wantPixels = pixels.data && pixels.type != dtNoData;
    const size_t n = size_t(width) * height;
    return !(wantPixels && (!frame || uint64_t(n / 2) * 4 > frameSize));
}

SBasicFields CMX515HeaderFilter::StoreHeader(const SOmbriaFrameObjects& o, const unsigned char* header)
{
    StoreCameraInfo(*o.camera, header, SMX515Header::kSize, nullptr);
    const SBasicFields f = MX515Fields(header);
    BasicDataToObjectParameters(f, *o.params);
    BasicDataToFactoryCal(f, *o.cal);
    CFrameInfoReduceObject& info = *o.info;
    info.preset = 0;
    info.extra.Clear();
    info.time = BasicDataTime(f.seconds, f.millis);
    info.timeSource = timeSourceCamera;
    return f;
}

void CMX515HeaderFilter::StoreVideoFrameInfo(const SOmbriaFrameObjects& o)
{
    o.cal->valid = false;
    o.camera->valid = false;
    CFrameInfoReduceObject& info = *o.info;
    info.preset = 0;
    info.valid = true;
    info.time = CDateTime::Now();
    info.timeSource = timeSourcePC;
    info.extra.Clear();
    info.frame = frameCount++;
}

void CMX515HeaderFilter::CopyPixels(const unsigned char* frame, bool infrared, uint16_t width, uint16_t height,
                                    STypedData pixels)
{
    if (!pixels.data || pixels.type == dtNoData) return;
    const size_t n = size_t(width) * height;
    if (infrared) std::memcpy(pixels.data, frame, n * 2);
    else UYVYToRGB(static_cast<unsigned char*>(pixels.data), frame, n / 2);
}

} // namespace orv::reduce
