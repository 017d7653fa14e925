// The region record: string forms, constructors, copying, masks, pixel
// indices and the centre.
#include "reduce/roi/Roi.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orv::reduce {

namespace {

struct SNamedValue {
    int value;
    const char* name;
};

constexpr SNamedValue kRoiTypes[] = {
    {roiRect, "Rect"},           {roiEllipse, "Ellipse"},   {roiLine, "Line"},
    {roiCursor, "Cursor"},       {roiMultiLine, "MultiLine"}, {roiPolygon, "Polygon"},
    {roiFreehand, "Freehand"},   {roiIsotherm, "Isotherm"}, {roiMeasurementCursor, "MeasurementCursor"},
    {roiSquare, "Square"},       {roiCircle, "Circle"},     {roiCrosshair, "Crosshair"},
    {roiImage, "Image"},
};
constexpr const char* kNamePos[] = {"TopLeft",    "Top",    "TopRight", "Left",
                                    "Right",      "BottomLeft", "Bottom", "BottomRight"};
constexpr const char* kTrackModes[] = {"ByColor", "ByValue"};
constexpr const char* kIsothermUnitNames[] = {"RGB",          "Counts",       "ObjectSignal", "Radiance",
                                              "TemperatureC", "TemperatureK", "TemperatureF", "TemperatureR"};

template <size_t N>
int FindNoCase(const char* const (&names)[N], const CString& text)
{
    for (size_t i = 0; i < N; ++i)
        if (scasecmp(text.c_str(), names[i]) == 0) return int(i);
    return -1;
}

TSharedPtr<SRoi> NewRoi(const CString& name, ERoiType type, std::initializer_list<SPointF> points)
{
    TSharedPtr<SRoi> roi(new SRoi);
    roi->name = name;
    roi->type = type;
    for (const SPointF& p : points) roi->points.add(p);
    roi->originalPoints = roi->points;
    return roi;
}

TSharedPtr<SRoi> NewBoxRoi(const CString& name, ERoiType type, SRectF r)
{
    return NewRoi(name, type, {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}});
}

} // namespace

ERoiType ParseRoiType(const CString& text)
{
    // Only the twelve shapes are parsed; everything else, "Image" too, is the image.
    for (size_t i = 0; i < 12; ++i)
        if (scasecmp(text.c_str(), kRoiTypes[i].name) == 0) return ERoiType(kRoiTypes[i].value);
    return roiImage;
}

const char* RoiTypeToString(ERoiType type)
{
    for (const SNamedValue& t : kRoiTypes)
        if (t.value == type) return t.name;
    return "Error";
}

ERoiNamePos ParseRoiNamePos(const CString& text)
{
    int i = FindNoCase(kNamePos, text);
    return ERoiNamePos(i < 0 ? 0 : i);
}

const char* RoiNamePosToString(ERoiNamePos pos)
{
    return pos >= 0 && pos < 8 ? kNamePos[pos] : "Error";
}

EIsothermTrackMode ParseIsothermTrackMode(const CString& text)
{
    return text == "ByColor" ? trackByColor : trackByValue;
}

const char* IsothermTrackModeToString(EIsothermTrackMode mode)
{
    return mode >= 0 && mode < 2 ? kTrackModes[mode] : "Error";
}

EIsothermUnit ParseIsothermUnit(const CString& text)
{
    int i = FindNoCase(kIsothermUnitNames, text);
    return EIsothermUnit(i < 0 ? isoCounts : i);
}

const char* IsothermUnitToString(EIsothermUnit unit)
{
    return unit >= 0 && unit < kIsothermUnits ? kIsothermUnitNames[unit] : "Error";
}

EIsothermUnit DataUnitToIsothermUnit(EUnit unit, ETempType temp)
{
    switch (int(unit)) {
    case 1: case 4: return isoRadiance;
    case 2: case 5:
        switch (int(temp)) {
        case 1: return isoTemperatureF;
        case 2: return isoTemperatureK;
        case 3: return isoTemperatureR;
        default: return isoTemperatureC;
        }
    case 3: return isoObjectSignal;
    case 8: case 9: case 10: case 11: return isoRGB;
    default: return isoCounts;
    }
}

TSharedPtr<SRoi> CreateCursorRoi(const CString& name, SPointF p) { return NewRoi(name, roiCursor, {p}); }
TSharedPtr<SRoi> CreateRectRoi(const CString& name, SRectF r) { return NewBoxRoi(name, roiRect, r); }
TSharedPtr<SRoi> CreateEllipseRoi(const CString& name, SRectF r) { return NewBoxRoi(name, roiEllipse, r); }

TSharedPtr<SRoi> CreateEllipseRoi(const CString& name, SPointF center, SSizeF size)
{
    SRectF r;
    r.top = center.y - size.height;
    r.left = center.x - size.width;
    r.bottom = center.y + size.height;
    r.right = center.x + size.width;
    return NewBoxRoi(name, roiEllipse, r);
}

TSharedPtr<SRoi> CreateCircleRoi(const CString& name, SPointF center, float radius)
{
    // Deliberately an Ellipse: nothing downstream treats circles apart.
    return CreateEllipseRoi(name, center, SSizeF{radius, radius});
}

TSharedPtr<SRoi> CreateLineRoi(const CString& name, SPointF a, SPointF b) { return NewRoi(name, roiLine, {a, b}); }

SRoi::SRoi(const SRoi& other) { *this = other; }

SRoi& SRoi::operator=(const SRoi& other)
{
    if (this == &other) return *this;
    DestroyBitmask();
    name = other.name;
    drawName = other.drawName;
    namePos = other.namePos;
    color = other.color;
    paletteIndex = other.paletteIndex;
    type = other.type;
    useEmissivity = other.useEmissivity;
    emissivity = other.emissivity;
    useDistance = other.useDistance;
    distance = other.distance;
    points = other.points;
    bounds = other.bounds;
    trackMode = other.trackMode;
    minColor = other.minColor;
    maxColor = other.maxColor;
    std::copy(other.isothermMin, other.isothermMin + kIsothermUnits, isothermMin);
    std::copy(other.isothermMax, other.isothermMax + kIsothermUnits, isothermMax);
    minValueScaled = other.minValueScaled;
    maxValueScaled = other.maxValueScaled;
    useMin = other.useMin;
    useMax = other.useMax;
    std::copy(other.dirty, other.dirty + kIsothermUnits, dirty);
    imageWidth = other.imageWidth;
    imageHeight = other.imageHeight;
    originalPoints = other.originalPoints;
    spare1 = other.spare1;
    indices = other.indices;
    values = other.values;
    statuses = other.statuses;
    centerValue = other.centerValue;
    centerStatus = other.centerStatus;
    spare2 = other.spare2;
    spare3 = other.spare3;
    stats = other.stats;
    return *this;
}

SRoi::~SRoi() { DestroyBitmask(); }

void SRoi::CreateBitmask(unsigned int width, unsigned int height)
{
    if (type == roiImage) {
        DestroyBitmask();
        return;
    }
    if (bitmask && bitmaskWidth == width && bitmaskHeight == height) return;
    DestroyBitmask();
    bitmaskWidth = width;
    bitmaskHeight = height;
    bitmaskStride = (width + 3) & ~3u;
    // Zeroed, not left uninitialised: nothing here fills an Isotherm's mask,
    // and the exports and GetIndicies read it.
    bitmask = new unsigned char[size_t(bitmaskStride) * height]();
}

void SRoi::DestroyBitmask()
{
    delete[] bitmask;
    bitmask = nullptr;
    bitmaskWidth = bitmaskHeight = bitmaskStride = 0;
}

void SRoi::GetIndicies(unsigned short width, unsigned short height, TArray<unsigned int>& out)
{
    out.clear();
    if (!bitmask) {
        uint32_t n = uint32_t(width) * height;
        out.reserve(n);
        for (uint32_t i = 0; i < n; ++i) out.add(i);
        return;
    }
    int64_t left = std::min(bounds.left, bounds.right), right = std::max(bounds.left, bounds.right);
    int64_t top = std::min(bounds.top, bounds.bottom), bottom = std::max(bounds.top, bounds.bottom);
    // The walk takes right and bottom inclusively, limited to the last column
    // and row; the bytes just past a shape are clear, so this lists the same
    // pixels. It also stays inside a mask smaller than the frame asked for.
    left = std::clamp<int64_t>(left, 0, width);
    top = std::clamp<int64_t>(top, 0, height);
    right = std::min<int64_t>({right, int64_t(width) - 1, int64_t(bitmaskWidth) - 1});
    bottom = std::min<int64_t>({bottom, int64_t(height) - 1, int64_t(bitmaskHeight) - 1});
    for (int64_t y = top; y <= bottom; ++y) {
        const unsigned char* row = bitmask + size_t(y) * bitmaskStride;
        for (int64_t x = left; x <= right; ++x)
            if (row[x]) out.add(uint32_t(y * width + x));
    }
}

void SRoi::GetIndicies(unsigned short width, unsigned short height)
{
    GetIndicies(width, height, indices);
    values.resize(indices.size());
    statuses.resize(indices.size());
}

void SRoi::GetCenterIndicies(unsigned short width, unsigned short height, TArray<unsigned int>& out, SPointF& center)
{
    int64_t x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    if (points.empty()) {
        center = SPointF(-1, -1);
    } else {
        double minX = points.get(0).x, maxX = minX, minY = points.get(0).y, maxY = minY;
        for (const SPointF& p : points) {
            minX = std::min(minX, p.x);
            maxX = std::max(maxX, p.x);
            minY = std::min(minY, p.y);
            maxY = std::max(maxY, p.y);
        }
        // One less than the box centre, deliberately.
        center = SPointF((minX + maxX) / 2 - 1.0, (minY + maxY) / 2 - 1.0);
        auto limit = [](double v, unsigned short size) {
            double top = size ? size - 1.0 : 0.0;
            return int64_t(std::isnan(v) ? 0.0 : std::clamp(v, 0.0, top));
        };
        x0 = limit(std::floor(center.x), width);
        x1 = limit(std::ceil(center.x), width);
        y0 = limit(std::floor(center.y), height);
        y1 = limit(std::ceil(center.y), height);
    }
    out.add(uint32_t(y0 * width + x0));
    out.add(uint32_t(y0 * width + x1));
    out.add(uint32_t(y1 * width + x0));
    out.add(uint32_t(y1 * width + x1));
}

void SRoi::GetCenterIndicies(unsigned short width, unsigned short height)
{
    SPointF center;
    GetCenterIndicies(width, height, indices, center);
    values.resize(indices.size());
    statuses.resize(indices.size());
}

void SRoi::GetCenter()
{
    size_t n = values.size();
    if (n < 4) return;
    double sum = 0;
    uint8_t status = 0;
    for (size_t i = n - 4; i < n; ++i) {
        sum += values.get(i);
        if (i < statuses.size()) status |= statuses.get(i);
    }
    centerValue = sum * 0.25;
    centerStatus = status;
    values.resize(n - 4);
    statuses.resize(statuses.size() >= 4 ? statuses.size() - 4 : 0);
    indices.resize(indices.size() >= 4 ? indices.size() - 4 : 0);
}

void SRoi::GetLineProfilePoints(TArray<SPoint>& out)
{
    TArray<unsigned int> counts;
    GetLineProfilePoints(out, counts);
}

void SRoi::GetLineProfilePoints(TArray<SPoint>& out, TArray<unsigned int>& counts)
{
    if ((type != roiLine && type != roiMultiLine) || points.size() < 2) return;
    for (size_t i = 0; i + 1 < points.size(); ++i)
        counts.add(GetPolylinePoints(points.get(i), points.get(i + 1), static_cast<unsigned short>(bitmaskWidth),
                                     static_cast<unsigned short>(bitmaskHeight), out));
}

void SRoi::MarkAllAsDityExcept(EIsothermUnit unit)
{
    for (int i = 0; i < kIsothermUnits; ++i) dirty[i] = i != unit;
}

} // namespace orv::reduce
