// The finishing rules of all statistics, the incremental calculator and the
// ordinal-to-position helpers.
#include <cmath>

#include "reduce/kernels/StatsKernels.h"

namespace orv::reduce {
namespace priv {

namespace {
// Mean, population variance in one pass, centre of the box.
void FinishFigures(CStats& s, uint32_t n, int x0, int y0, int x1, int y1)
{
    if (n != 0) {
        s.width = uint32_t(x1 - x0 + 1);
        s.height = uint32_t(y1 - y0 + 1);
        s.mean = s.sum / n;
        if (n > 1) {
            s.variance = s.variance / n - s.mean * s.mean;
            // A tiny negative residue gives a NaN here; it is not repaired.
            s.standardDeviation = std::sqrt(s.variance);
        } else {
            s.variance = s.standardDeviation = 0;
        }
    } else {
        s.width = s.height = 0;
        s.variance = s.standardDeviation = 0;
    }
    s.centerPosition.x = float(x0 + x1) * 0.5f;
    s.centerPosition.y = float(y0 + y1) * 0.5f;
}
} // namespace

void FinishStats(CStats& s, const SStatsAcc& a, bool withStatus, uint32_t width, const SStatsBox& box)
{
    s.sum = a.sum;
    s.variance = a.squares;
    s.numPixels = a.count;
    s.statusAny = a.statusAny;
    if (a.anyValid) {
        s.minValue = a.min;
        s.maxValue = a.max;
        s.minIndex = a.minIndex;
        s.maxIndex = a.maxIndex;
        s.minStatus = a.minStatus;
        s.maxStatus = a.maxStatus;
        s.minPosition = PointOf(a.minIndex, width);
        s.maxPosition = PointOf(a.maxIndex, width);
    }
    if (!withStatus) {
        if (a.anyValid) {
            s.allMinValue = s.minValue;
            s.allMaxValue = s.maxValue;
            s.allMinIndex = s.minIndex;
            s.allMaxIndex = s.maxIndex;
            s.allMinPosition = s.minPosition;
            s.allMaxPosition = s.maxPosition;
        }
    } else if (a.any) {
        s.allMinValue = a.allMin;
        s.allMaxValue = a.allMax;
        s.allMinIndex = a.allMinIndex;
        s.allMaxIndex = a.allMaxIndex;
        s.allMinPosition = PointOf(a.allMinIndex, width);
        s.allMaxPosition = PointOf(a.allMaxIndex, width);
    }
    s.firstPosition = SPoint(int(box.x0), int(box.y0));
    s.lastPosition = SPoint(int(box.x1), int(box.y1));
    s.firstIndex = box.y0 * width + box.x0;
    s.lastIndex = box.y1 * width + box.x1;
    FinishFigures(s, s.numPixels, int(box.x0), int(box.y0), int(box.x1), int(box.y1));
}

} // namespace priv

using priv::kNoIndex;

void CStatsCalculator::Start()
{
    m_stats.statusAny = m_stats.minStatus = m_stats.maxStatus = 0;
    m_stats.sum = 0;
    m_stats.variance = 0;
    m_stats.numPixels = 0;
    m_stats.allMinIndex = m_stats.allMaxIndex = kNoIndex;
    m_ordinal = 0;
}

void CStatsCalculator::AddData(double value, unsigned char status, int x, int y)
{
    CStats& s = m_stats;
    const SPoint at(x, y);
    if (s.allMinIndex == kNoIndex) {
        s.allMinValue = s.allMaxValue = value;
        s.allMinIndex = s.allMaxIndex = m_ordinal;
        s.allMinPosition = s.allMaxPosition = at;
        s.firstPosition = s.lastPosition = at;
    } else {
        if (value > s.allMaxValue) {
            s.allMaxValue = value;
            s.allMaxIndex = m_ordinal;
            s.allMaxPosition = at;
        }
        if (value < s.allMinValue) {
            s.allMinValue = value;
            s.allMinIndex = m_ordinal;
            s.allMinPosition = at;
        }
        if (x < s.firstPosition.x) s.firstPosition.x = x;
        if (y < s.firstPosition.y) s.firstPosition.y = y;
        if (x > s.lastPosition.x) s.lastPosition.x = x;
        if (y > s.lastPosition.y) s.lastPosition.y = y;
    }
    if (priv::IsValidStatus(status)) {
        s.statusAny |= status;
        if (s.numPixels == 0) {
            s.minValue = s.maxValue = value;
            s.minIndex = s.maxIndex = m_ordinal;
            s.minPosition = s.maxPosition = at;
            s.minStatus = s.maxStatus = status;
        } else {
            if (value > s.maxValue) {
                s.maxValue = value;
                s.maxIndex = m_ordinal;
                s.maxPosition = at;
                s.maxStatus = status;
            }
            if (value < s.minValue) {
                s.minValue = value;
                s.minIndex = m_ordinal;
                s.minPosition = at;
                s.minStatus = status;
            }
        }
        s.sum += value;
        s.variance += value * value;
        ++s.numPixels;
    }
    ++m_ordinal;
}

void CStatsCalculator::Finish()
{
    CStats& s = m_stats;
    priv::FinishFigures(s, s.numPixels, s.firstPosition.x, s.firstPosition.y, s.lastPosition.x, s.lastPosition.y);
}

// ---- ordinals to positions ------------------------------------------------

namespace {

uint32_t* const* OrdinalsOf(CStats& s, uint32_t* (&list)[6])
{
    list[0] = &s.minIndex;
    list[1] = &s.maxIndex;
    list[2] = &s.allMinIndex;
    list[3] = &s.allMaxIndex;
    list[4] = &s.firstIndex;
    list[5] = &s.lastIndex;
    return list;
}

SPoint* const* PositionsOf(CStats& s, SPoint* (&list)[6])
{
    list[0] = &s.minPosition;
    list[1] = &s.maxPosition;
    list[2] = &s.allMinPosition;
    list[3] = &s.allMaxPosition;
    list[4] = &s.firstPosition;
    list[5] = &s.lastPosition;
    return list;
}

template <class F>
void MapSix(CStats& s, F map)
{
    uint32_t* ordinals[6];
    SPoint* points[6];
    OrdinalsOf(s, ordinals);
    PositionsOf(s, points);
    for (int k = 0; k < 6; ++k) map(*ordinals[k], *points[k]);
}

void AreaPoint(SArea a, uint32_t k, SPoint& p)
{
    const uint32_t w = uint32_t(a.right) + 1u - a.left;
    if (w == 0) return;
    p = SPoint(int(k % w + a.left), int(k / w + a.top));
}

// An ordinal beyond the last line leaves the point as it was.
void LinePoint(TArray<SScanLine> const& lines, uint32_t k, SPoint& p)
{
    uint32_t b = 0;
    for (size_t n = 0; n < lines.size(); ++n) {
        const SScanLine& line = lines[n];
        const uint32_t len = uint32_t(line.last) - line.first + 1u;
        if (line.last >= line.first && k < b + len) {
            p = SPoint(int(line.first + (k - b)), int(line.row));
            return;
        }
        if (line.last >= line.first) b += len;
    }
}

void FramePoint(unsigned short width, uint32_t k, SPoint& p)
{
    if (width) p = SPoint(int(k % width), int(k / width));
}

} // namespace

void CalcPositions(CStats& stats, SArea area)
{
    MapSix(stats, [&](uint32_t k, SPoint& p) { AreaPoint(area, k, p); });
}

void CalcPositions(CStats& stats, TArray<SScanLine> const& lines)
{
    MapSix(stats, [&](uint32_t k, SPoint& p) { LinePoint(lines, k, p); });
}

void CalcPositions(CStats& stats, unsigned short width, unsigned short)
{
    MapSix(stats, [&](uint32_t k, SPoint& p) { FramePoint(width, k, p); });
}

void CalcPositions(CStats& stats, unsigned short width, unsigned short, unsigned int const* indices,
                   unsigned int count)
{
    // An ordinal outside the list stands for frame index 0.
    MapSix(stats, [&](uint32_t k, SPoint& p) { FramePoint(width, k < count ? indices[k] : 0u, p); });
}

unsigned int CalcPositions(CStats& stats, SArea area, unsigned char const* mask, unsigned int maskStride)
{
    uint32_t* ordinals[6];
    SPoint* points[6];
    OrdinalsOf(stats, ordinals);
    PositionsOf(stats, points);
    uint32_t k = 0;
    if (area.bottom < area.top || area.right < area.left) return 0;
    for (uint32_t y = area.top; y <= area.bottom; ++y) {
        const unsigned char* row = mask + size_t(y) * maskStride;
        for (uint32_t x = area.left; x <= area.right; ++x) {
            if (!row[x]) continue;
            // Each of the six is tested on its own: one pixel may settle several.
            for (int j = 0; j < 6; ++j)
                if (*ordinals[j] == k) *points[j] = SPoint(int(x), int(y));
            ++k;
        }
    }
    return k;
}

void IndiciesToPoints(SArea area, TArray<unsigned int> const& indices, TArray<SPoint>& points)
{
    points.resize(indices.size());
    for (size_t i = 0; i < indices.size(); ++i) AreaPoint(area, indices.get(i), points.get(i));
}

void IndiciesToPoints(TArray<SScanLine> const& lines, TArray<unsigned int> const& indices, TArray<SPoint>& points)
{
    points.resize(indices.size());
    for (size_t i = 0; i < indices.size(); ++i) LinePoint(lines, indices.get(i), points.get(i));
}

void IndiciesToPoints(unsigned short width, unsigned short, TArray<unsigned int> const& indices,
                      TArray<SPoint>& points)
{
    points.resize(indices.size());
    for (size_t i = 0; i < indices.size(); ++i) FramePoint(width, indices.get(i), points.get(i));
}

} // namespace orv::reduce
