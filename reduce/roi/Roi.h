#pragma once
// One region of interest: its shape in floating-point image coordinates, its
// measurement settings, the byte mask of the pixels it covers, and the room
// for the figures measured in it. Also the rasterisers that turn shapes into
// masks and the helpers that walk lines pixel by pixel.
#include <cstdint>

#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/kernels/Stats.h"

namespace orv::reduce {

struct SPointF {
    double x = 0;
    double y = 0;
    SPointF() = default;
    SPointF(double x_, double y_) : x(x_), y(y_) {}
    bool operator==(const SPointF& o) const { return x == o.x && y == o.y; }
};

struct SSizeF {
    double width = 0;
    double height = 0;
};

struct SRectF {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
};

enum ERoiType : int32_t {
    roiRect = 0,
    roiEllipse = 1,
    roiLine = 2,
    roiCursor = 3,
    roiMultiLine = 4,
    roiPolygon = 5,
    roiFreehand = 6,
    roiIsotherm = 7,
    roiMeasurementCursor = 8,
    roiSquare = 9,
    roiCircle = 10,
    roiCrosshair = 11,
    roiImage = 100,
};

enum ERoiNamePos : int32_t {
    namePosTopLeft = 0,
    namePosTop = 1,
    namePosTopRight = 2,
    namePosLeft = 3,
    namePosRight = 4,
    namePosBottomLeft = 5,
    namePosBottom = 6,
    namePosBottomRight = 7,
};

enum EIsothermTrackMode : int32_t {
    trackByColor = 0,
    trackByValue = 1,
};

enum EIsothermUnit : int32_t {
    isoRGB = 0,
    isoCounts = 1,
    isoObjectSignal = 2,
    isoRadiance = 3,
    isoTemperatureC = 4,
    isoTemperatureK = 5,
    isoTemperatureF = 6,
    isoTemperatureR = 7,
};
inline constexpr int kIsothermUnits = 8;

// String forms; parsing ignores case. Unknown texts fall back to Image, TopLeft,
// ByValue (anything but "ByColor") and Counts; unknown values give "Error".
ERoiType ParseRoiType(const CString& text);
const char* RoiTypeToString(ERoiType type);
ERoiNamePos ParseRoiNamePos(const CString& text);
const char* RoiNamePosToString(ERoiNamePos pos);
EIsothermTrackMode ParseIsothermTrackMode(const CString& text);
const char* IsothermTrackModeToString(EIsothermTrackMode mode);
EIsothermUnit ParseIsothermUnit(const CString& text);
const char* IsothermUnitToString(EIsothermUnit unit);

// The isotherm limit slot that values of a data unit belong to.
EIsothermUnit DataUnitToIsothermUnit(EUnit unit, ETempType temp);

struct SRoi {
    CString name = "ROI";
    bool drawName = true;
    ERoiNamePos namePos = namePosTop;
    uint32_t color = 255; // red in the low byte, then green, then blue
    int32_t paletteIndex = -1;
    ERoiType type = roiRect;
    bool useEmissivity = false;
    double emissivity = 1.0;
    bool useDistance = false;
    double distance = 1.0;
    TArray<SPointF> points; // in current image coordinates
    SRect bounds;           // of the last UpdateBitmask; right and bottom exclusive
    unsigned char* bitmask = nullptr;
    uint32_t bitmaskWidth = 0;
    uint32_t bitmaskHeight = 0;
    uint32_t bitmaskStride = 0;
    EIsothermTrackMode trackMode = trackByValue;
    uint8_t minColor = 0;
    uint8_t maxColor = 0;
    double isothermMin[kIsothermUnits] = {};
    double isothermMax[kIsothermUnits] = {};
    double minValueScaled = 0.1;
    double maxValueScaled = 0.9;
    bool useMin = true;
    bool useMax = true;
    bool dirty[kIsothermUnits] = {true, true, true, true, true, true, true, true};
    uint32_t imageWidth = 0; // the size originalPoints refer to; 0 for none
    uint32_t imageHeight = 0;
    TArray<SPointF> originalPoints;
    uint64_t spare1 = 0;
    TArray<unsigned int> indices; // covered pixels, then the centre's four
    TArray<float> values;
    TArray<unsigned char> statuses;
    double centerValue = 0;
    uint8_t centerStatus = 0;
    uint64_t spare2 = 0;
    uint64_t spare3 = 0;
    CStats stats;

    SRoi() = default;
    // Copies everything but the mask, which the owner re-creates.
    SRoi(const SRoi& other);
    SRoi& operator=(const SRoi& other);
    ~SRoi();

    void CreateBitmask(unsigned int width, unsigned int height);
    void DestroyBitmask();
    void UpdateBitmask();

    void GetIndicies(unsigned short width, unsigned short height, TArray<unsigned int>& out);
    void GetIndicies(unsigned short width, unsigned short height);
    void GetCenterIndicies(unsigned short width, unsigned short height, TArray<unsigned int>& out, SPointF& center);
    void GetCenterIndicies(unsigned short width, unsigned short height);
    void GetCenter();

    void GetLineProfilePoints(TArray<SPoint>& out);
    void GetLineProfilePoints(TArray<SPoint>& out, TArray<unsigned int>& counts);

    // The name's spelling is kept for callers that already use it.
    void MarkAllAsDityExcept(EIsothermUnit unit);

    bool ExportBitmask(const CString& path);
    bool ExportSvg(const CString& path);
};

TSharedPtr<SRoi> CreateCursorRoi(const CString& name, SPointF p);
TSharedPtr<SRoi> CreateRectRoi(const CString& name, SRectF r);
TSharedPtr<SRoi> CreateEllipseRoi(const CString& name, SRectF r);
// size is the half-size.
TSharedPtr<SRoi> CreateEllipseRoi(const CString& name, SPointF center, SSizeF size);
// The result is an Ellipse, not a Circle: circles are ellipses with equal axes.
TSharedPtr<SRoi> CreateCircleRoi(const CString& name, SPointF center, float radius);
TSharedPtr<SRoi> CreateLineRoi(const CString& name, SPointF a, SPointF b);

// One polygon edge in half-row units: active on start <= k < end.
struct SEdge {
    int32_t end = 0;
    int32_t start = 0;
    double x = 0;     // at the current half-row
    double slope = 0; // x step per half-row
    double x1 = 0;    // end points, in y order
    double x2 = 0;
    double y1 = 0;
    double y2 = 0;
};

void AddEdge(TArray<SEdge>& edges, SPointF a, SPointF b);
// Even-odd fill of the pixels whose centres lie in the polygon; bounds
// receives the clipped box of the points (right and bottom exclusive).
void RenderPolygonToBitmask(TArray<SPointF> const& points, unsigned char* mask, unsigned short width,
                            unsigned short height, unsigned int stride, SRect& bounds);

// The pixels from a to b in travel order, inside the frame; returns how many
// were added to out.
unsigned int GetPolylinePoints(SPointF a, SPointF b, unsigned short width, unsigned short height,
                               TArray<SPoint>& out);
unsigned int AddPointNoDuplicate(SPoint p, unsigned short width, unsigned short height, TArray<SPoint>& out);
unsigned int InsertPointNoDuplicate(SPoint p, unsigned int index, unsigned short width, unsigned short height,
                                    TArray<SPoint>& out);

// Inserts interior points of the cubic curve into out at index, in curve
// order, until the control polygon is within 0.1 % of the chord.
void FlattenCubicBezier(SPointF p0, SPointF p1, SPointF p2, SPointF p3, TArray<SPointF>& out,
                        unsigned long index);

} // namespace orv::reduce
