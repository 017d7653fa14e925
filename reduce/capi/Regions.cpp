// The flat interface over regions of interest, their list and unit arrays.
// Each function forwards to SRoi or CRoiList; an empty handle reads as zero.
#include <algorithm>

#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/capi/Handles.h"
#include "reduce/roi/Roi.h"
#include "reduce/roi/RoiList.h"

using namespace orv;
using namespace orv::reduce;
using namespace orv::reduce::priv;

namespace orv::reduce::priv {
template <>
struct SHandleOf<orvreduceRoi> {
    using Object = SRoi;
};
template <>
struct SHandleOf<orvreduceRoiList> {
    using Object = CRoiList;
};
template <>
struct SHandleOf<orvreduceUnitArray> {
    using Object = TArray<EUnit>;
};
} // namespace orv::reduce::priv

#define ORV_SAME_FIELD(C, Cpp, field) static_assert(offsetof(C, field) == offsetof(Cpp, field), #field)
static_assert(sizeof(orvSPointF) == sizeof(SPointF));
ORV_SAME_FIELD(orvSPointF, SPointF, x);
ORV_SAME_FIELD(orvSPointF, SPointF, y);
static_assert(sizeof(orvSRectF) == sizeof(SRectF));
ORV_SAME_FIELD(orvSRectF, SRectF, top);
ORV_SAME_FIELD(orvSRectF, SRectF, left);
ORV_SAME_FIELD(orvSRectF, SRectF, bottom);
ORV_SAME_FIELD(orvSRectF, SRectF, right);

namespace {

// A figure of the region's last statistics.
template <class Field>
Field Stat(const orvreduceRoi* handle, Field CStats::*field)
{
    const SRoi* roi = Shared(handle);
    return roi ? roi->stats.*field : Field{};
}

// The flat interface names each new shape itself, then adds it.
template <class Create>
orvreduceRoi* AddShape(orvreduceRoiList* handle, ERoiType type, Create create)
{
    CRoiList* list = Direct(handle);
    if (!list) return nullptr;
    TSharedPtr<SRoi> roi = create(list->NewName(type));
    list->add(roi);
    return NewShared<orvreduceRoi>(roi);
}

} // namespace

extern "C" {

// ---- Roi

void orvreduceRoi_Free(orvreduceRoi* handle) { FreeShared(handle); }
char* orvreduceRoi_name(const orvreduceRoi* h) { return ReadText(h, &SRoi::name); }
int32_t orvreduceRoi_type(const orvreduceRoi* h)
{
    const SRoi* roi = Shared(h);
    return roi ? roi->type : 0;
}
double orvreduceRoi_emissivity(const orvreduceRoi* h) { return Read(h, &SRoi::emissivity); }
double orvreduceRoi_distance(const orvreduceRoi* h) { return Read(h, &SRoi::distance); }
// Limited, unlike orvreduceObjectParameters_setEmissivity: a region's
// emissivity is a user's entry, the scene's is stored as measured.
void orvreduceRoi_setEmissivity(orvreduceRoi* h, double value) { Write(h, &SRoi::emissivity, std::clamp(value, 0.0, 1.0)); }
void orvreduceRoi_setDistance(orvreduceRoi* h, double value) { Write(h, &SRoi::distance, value < 0 ? 0.0 : value); }
bool orvreduceRoi_useEmissivity(const orvreduceRoi* h) { return Read(h, &SRoi::useEmissivity); }
void orvreduceRoi_setUseEmissivity(orvreduceRoi* h, bool use) { Write(h, &SRoi::useEmissivity, use); }
bool orvreduceRoi_useDistance(const orvreduceRoi* h) { return Read(h, &SRoi::useDistance); }
void orvreduceRoi_setUseDistance(orvreduceRoi* h, bool use) { Write(h, &SRoi::useDistance, use); }

double orvreduceRoi_mean(const orvreduceRoi* h) { return Stat(h, &CStats::mean); }
double orvreduceRoi_sum(const orvreduceRoi* h) { return Stat(h, &CStats::sum); }
double orvreduceRoi_standardDeviation(const orvreduceRoi* h) { return Stat(h, &CStats::standardDeviation); }
double orvreduceRoi_minValue(const orvreduceRoi* h) { return Stat(h, &CStats::minValue); }
double orvreduceRoi_maxValue(const orvreduceRoi* h) { return Stat(h, &CStats::maxValue); }
double orvreduceRoi_centerValue(const orvreduceRoi* h) { return Stat(h, &CStats::centerValue); }
double orvreduceRoi_pixelArea(const orvreduceRoi* h) { return Stat(h, &CStats::pixelArea); }
double orvreduceRoi_area(const orvreduceRoi* h) { return Stat(h, &CStats::area); }
double orvreduceRoi_length(const orvreduceRoi* h) { return Stat(h, &CStats::length); }
uint32_t orvreduceRoi_numPixels(const orvreduceRoi* h) { return Stat(h, &CStats::numPixels); }
orvSPoint orvreduceRoi_minPosition(const orvreduceRoi* h) { return ToC<orvSPoint>(Stat(h, &CStats::minPosition)); }
orvSPoint orvreduceRoi_maxPosition(const orvreduceRoi* h) { return ToC<orvSPoint>(Stat(h, &CStats::maxPosition)); }
orvSPointF orvreduceRoi_centerPosition(const orvreduceRoi* h)
{
    SCenterPoint center = Stat(h, &CStats::centerPosition);
    return orvSPointF{center.x, center.y};
}
bool orvreduceRoi_areaValid(const orvreduceRoi* h) { return Stat(h, &CStats::areaValid); }
// A length belongs to lines and polylines only.
bool orvreduceRoi_lengthValid(const orvreduceRoi* h)
{
    const SRoi* roi = Shared(h);
    return roi && (roi->type == roiLine || roi->type == roiMultiLine) && roi->stats.areaValid;
}
bool orvreduceRoi_ExportBitmask(orvreduceRoi* h, const char* path)
{
    SRoi* roi = Shared(h);
    return roi && path && roi->ExportBitmask(CString(path));
}
bool orvreduceRoi_ExportSvg(orvreduceRoi* h, const char* path)
{
    SRoi* roi = Shared(h);
    return roi && path && roi->ExportSvg(CString(path));
}

// ---- RoiList

orvreduceRoiList* orvreduceRoiList_Alloc(void) { return reinterpret_cast<orvreduceRoiList*>(new CRoiList); }
void orvreduceRoiList_Free(orvreduceRoiList* list) { delete Direct(list); }
unsigned int orvreduceRoiList_size(const orvreduceRoiList* list)
{
    return list ? static_cast<unsigned int>(Direct(list)->size()) : 0;
}
void orvreduceRoiList_RemoveAll(orvreduceRoiList* list)
{
    if (list) Direct(list)->removeAll();
}
orvreduceRoi* orvreduceRoiList_at(const orvreduceRoiList* list, unsigned int index)
{
    return list ? NewShared<orvreduceRoi>(Direct(list)->at(index)) : nullptr;
}
orvreduceRoi* orvreduceRoiList_AddCursor(orvreduceRoiList* list, const orvSPointF* position)
{
    if (!position) return nullptr;
    return AddShape(list, roiCursor,
                    [&](const CString& name) { return CreateCursorRoi(name, FromC<SPointF>(*position)); });
}
orvreduceRoi* orvreduceRoiList_AddRect(orvreduceRoiList* list, orvSRectF rect)
{
    return AddShape(list, roiRect, [&](const CString& name) { return CreateRectRoi(name, FromC<SRectF>(rect)); });
}
orvreduceRoi* orvreduceRoiList_AddLine(orvreduceRoiList* list, const orvSPointF* from, const orvSPointF* to)
{
    if (!from || !to) return nullptr;
    return AddShape(list, roiLine, [&](const CString& name) {
        return CreateLineRoi(name, FromC<SPointF>(*from), FromC<SPointF>(*to));
    });
}
orvreduceRoi* orvreduceRoiList_AddEllipse(orvreduceRoiList* list, orvSRectF rect)
{
    return AddShape(list, roiEllipse,
                    [&](const CString& name) { return CreateEllipseRoi(name, FromC<SRectF>(rect)); });
}
void orvreduceRoiList_Remove(orvreduceRoiList* list, const orvreduceRoi* roi)
{
    if (list && roi) Direct(list)->remove(*reinterpret_cast<const TSharedPtr<SRoi>*>(roi));
}
bool orvreduceRoiList_Load(orvreduceRoiList* list, const char* path)
{
    return list && path && Direct(list)->Load(CString(path));
}
bool orvreduceRoiList_Save(orvreduceRoiList* list, const char* path)
{
    return list && path && Direct(list)->Save(CString(path), CRoiList::kAll);
}

// ---- UnitArray

unsigned int orvreduceUnitArray_size(const orvreduceUnitArray* array)
{
    return array ? static_cast<unsigned int>(Direct(array)->size()) : 0;
}
// Checked access: an index past the end throws the base library's
// out-of-range exception, which this interface does not catch.
int32_t orvreduceUnitArray_at(const orvreduceUnitArray* array, unsigned int index)
{
    return array ? Direct(array)->at(index) : unitError;
}
void orvreduceUnitArray_Free(orvreduceUnitArray* array) { delete Direct(array); }

} // extern "C"
