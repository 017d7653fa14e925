// Region figures over frames: the statistics walk scan lines taken once from
// each mask, so a region costs its own pixels, not the frame's.
#include "reduce/roi/RoiMeasure.h"

#include <algorithm>

namespace orv::reduce {

namespace {

double ValueAt(STypedData frame, size_t i)
{
    switch (frame.type) {
    case dtInt8: return static_cast<const int8_t*>(frame.data)[i];
    case dtUInt8: return static_cast<const uint8_t*>(frame.data)[i];
    case dtInt16: return static_cast<const int16_t*>(frame.data)[i];
    case dtUInt16: return static_cast<const uint16_t*>(frame.data)[i];
    case dtInt32: return static_cast<const int32_t*>(frame.data)[i];
    case dtUInt32: return static_cast<const uint32_t*>(frame.data)[i];
    case dtInt64: return double(static_cast<const int64_t*>(frame.data)[i]);
    case dtUInt64: return double(static_cast<const uint64_t*>(frame.data)[i]);
    case dtFlt32: return static_cast<const float*>(frame.data)[i];
    default: return static_cast<const double*>(frame.data)[i];
    }
}

void MaskRuns(const SRoi& r, unsigned short w, unsigned short h, TArray<SScanLine>& lines)
{
    const int32_t top = std::max(r.bounds.top, 0), left = std::max(r.bounds.left, 0);
    const int32_t bottom = std::min<int32_t>({r.bounds.bottom, int32_t(h), int32_t(r.bitmaskHeight)});
    const int32_t right = std::min<int32_t>({r.bounds.right, int32_t(w), int32_t(r.bitmaskWidth)});
    for (int32_t y = top; y < bottom; ++y) {
        const unsigned char* row = r.bitmask + size_t(y) * r.bitmaskStride;
        for (int32_t x = left; x < right;) {
            if (!row[x]) {
                ++x;
                continue;
            }
            int32_t first = x;
            while (x < right && row[x]) ++x;
            lines.add(SScanLine{uint16_t(y), uint16_t(first), uint16_t(x - 1)});
        }
    }
}

} // namespace

bool CRoiMeter::Prepare(const CRoiList& list)
{
    m_regions.clear();
    m_width = static_cast<unsigned short>(list.width);
    m_height = static_cast<unsigned short>(list.height);
    if (m_width == 0 || m_height == 0) return false;
    for (size_t i = 0; i < list.size(); ++i) {
        SRegion g;
        g.roi = list.at(unsigned(i));
        SRoi& r = *g.roi;
        g.whole = r.type == roiImage || !r.bitmask;
        if (!g.whole) MaskRuns(r, m_width, m_height, g.lines);
        TArray<unsigned int> center;
        SPointF c;
        r.GetCenterIndicies(m_width, m_height, center, c);
        for (int k = 0; k < 4; ++k) g.center[k] = center.get(k);
        if (r.points.empty()) {
            // The image region has no shape: its centre is the frame's.
            const uint32_t x0 = (m_width - 1u) / 2, x1 = m_width / 2, y0 = (m_height - 1u) / 2, y1 = m_height / 2;
            const uint32_t c4[4] = {y0 * m_width + x0, y0 * m_width + x1, y1 * m_width + x0, y1 * m_width + x1};
            std::copy(c4, c4 + 4, g.center);
        }
        r.GetLineProfilePoints(g.profile);
        m_regions.add(std::move(g));
    }
    return true;
}

bool CRoiMeter::Measure(size_t index, STypedData frame, unsigned char const* status, SRoiFigures& out) const
{
    if (index >= m_regions.size() || unsigned(frame.type) > dtFlt64 || !frame.data) return false;
    const SRegion& g = m_regions.get(index);
    bool ok = g.whole ? GetStats(out.stats, frame, status, m_width, m_height)
                      : GetStats(out.stats, frame, status, m_width, m_height, g.lines);
    if (!ok) return false;
    double sum = 0;
    uint8_t st = 0;
    for (uint32_t i : g.center) {
        sum += ValueAt(frame, i);
        if (status) st |= status[i];
    }
    out.centerValue = sum * 0.25;
    out.centerStatus = st;
    out.profilePoints = g.profile;
    out.profile.clear();
    out.profileStatus.clear();
    for (const SPoint& p : g.profile) {
        const size_t i = size_t(p.y) * m_width + size_t(p.x);
        out.profile.add(ValueAt(frame, i));
        out.profileStatus.add(status ? status[i] : 0);
    }
    return true;
}

} // namespace orv::reduce
