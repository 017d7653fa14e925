#pragma once
// Statistics of a region: count, sum, mean, deviation, extremes with their
// places, bounding box and centre.
#include <cstdint>

#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

// The centre of the bounding box, x then y, in single precision.
struct SCenterPoint {
    float x = 0;
    float y = 0;
};

// One record of figures. A pixel is valid when there is no status array or
// its status has no bit of 0x18 set; the all* figures and the bounding box
// count every pixel, the rest only valid ones.
class CStats {
public:
    double mean = 0;
    double sum = 0;
    double variance = 0; // the sum of squares while accumulating
    double standardDeviation = 0;
    double minValue = 0;
    double maxValue = 0;
    SPoint minPosition;
    SPoint maxPosition;
    uint32_t minIndex = 0;
    uint32_t maxIndex = 0;
    double allMinValue = 0;
    double allMaxValue = 0;
    SPoint allMinPosition;
    SPoint allMaxPosition;
    uint32_t allMinIndex = 0; // all ones: none
    uint32_t allMaxIndex = 0;
    uint32_t numPixels = 0;
    double area = 0;
    double length = 0;
    double spare = 0;
    double centerValue = 0;
    bool areaValid = false;
    SCenterPoint centerPosition;
    double pixelArea = 0;
    SPoint firstPosition;
    SPoint lastPosition;
    uint32_t firstIndex = 0;
    uint32_t lastIndex = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t statusAny = 0;
    uint8_t minStatus = 0;
    uint8_t maxStatus = 0;
    uint8_t centerStatus = 0;
};

// Statistics of values produced one at a time: Start, AddData..., Finish.
// Indices are ordinals of AddData calls, excluded pixels included.
class CStatsCalculator {
public:
    explicit CStatsCalculator(CStats& stats) : m_stats(stats) {}
    void Start();
    void AddData(double value, unsigned char status, int x, int y);
    void Finish();

private:
    CStats& m_stats;
    uint32_t m_ordinal = 0;
};

// Typed frame statistics; false for a type above 9.
bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, SArea area);
// The whole frame; false also for a zero width or height.
bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height);
bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, TArray<SScanLine> const& lines);
bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, unsigned int const* indices, unsigned int count);
// The mask is ignored: the figures are those of the whole rectangle. Callers
// that need masked figures gather with GetImageData first.
bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride);
// Whole frame or masked frame, with the centre value.
void GetStats(CStats& stats, STypedData data, int width, int height, unsigned char* mask, unsigned int maskStride,
              unsigned char* status);
// A dense array; positions are ordinals along it.
void GetStats(CStats& stats, STypedData data, unsigned char* status, unsigned int count);
// A dense array gathered from a frame: element i belongs to frame index
// indices[i]; validity comes from frameStatus, the recorded status from
// denseStatus.
void GetStats(CStats& stats, STypedData data, unsigned char const* denseStatus, unsigned int const* indices,
              unsigned int count, unsigned char* frameStatus, unsigned short width, unsigned short height);

// Turn the six ordinals of stats (min, max, allMin, allMax, first, last)
// into frame coordinates for statistics taken over a gathered array.
void CalcPositions(CStats& stats, SArea area);
void CalcPositions(CStats& stats, TArray<SScanLine> const& lines);
void CalcPositions(CStats& stats, unsigned short width, unsigned short height);
void CalcPositions(CStats& stats, unsigned short width, unsigned short height, unsigned int const* indices,
                   unsigned int count);
// Returns the number of non-zero mask bytes of the rectangle.
unsigned int CalcPositions(CStats& stats, SArea area, unsigned char const* mask, unsigned int maskStride);

void IndiciesToPoints(SArea area, TArray<unsigned int> const& indices, TArray<SPoint>& points);
void IndiciesToPoints(TArray<SScanLine> const& lines, TArray<unsigned int> const& indices, TArray<SPoint>& points);
void IndiciesToPoints(unsigned short width, unsigned short height, TArray<unsigned int> const& indices,
                      TArray<SPoint>& points);

} // namespace orv::reduce
