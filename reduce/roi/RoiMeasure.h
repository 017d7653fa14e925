#pragma once
// Figures of the regions of a list over frames of values: statistics over
// each region's pixels, its centre value, and the profile of line regions.
// The pixel runs, centres and profile points are taken once from the masks
// and serve every frame of the same size.
#include <cstdint>

#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "orv/Types.h"
#include "reduce/kernels/Regions.h"
#include "reduce/kernels/Stats.h"
#include "reduce/roi/RoiList.h"

namespace orv::reduce {

// One region over one frame.
struct SRoiFigures {
    CStats stats;           // over the region's pixels; the image region: the whole frame
    double centerValue = 0; // mean of the four pixels around the centre
    uint8_t centerStatus = 0;
    TArray<SPoint> profilePoints; // Line and MultiLine: the pixels along the line
    TArray<double> profile;       // their values
    TArray<uint8_t> profileStatus;
};

class CRoiMeter {
public:
    // Takes the regions and masks of the list as they are now, on its image
    // size; call again after the list changes. False for a list without a size.
    bool Prepare(const CRoiList& list);
    size_t size() const { return m_regions.size(); }
    TSharedPtr<SRoi> roi(size_t index) const { return index < m_regions.size() ? m_regions.get(index).roi : nullptr; }
    unsigned short width() const { return m_width; }
    unsigned short height() const { return m_height; }

    // Region `index` over a frame of the prepared size, any element type 0 to
    // 9; status (may be null) as the statistics read it. False for an index
    // or type out of range.
    bool Measure(size_t index, STypedData frame, unsigned char const* status, SRoiFigures& out) const;

private:
    struct SRegion {
        TSharedPtr<SRoi> roi;
        bool whole = false;
        TArray<SScanLine> lines;
        uint32_t center[4] = {0, 0, 0, 0};
        TArray<SPoint> profile;
    };
    TArray<SRegion> m_regions;
    unsigned short m_width = 0;
    unsigned short m_height = 0;
};

} // namespace orv::reduce
