/*
 * orvreduce.h: the flat C interface of liborvreduce.
 *
 * For callers that cannot use the C++ classes: C programs, other languages
 * through their foreign function interfaces, acquisition code. It reads source
 * info, frame info and object parameters out of an object array, and builds,
 * measures, exports and saves regions of interest. Each function forwards to
 * the class its family names, in namespace orv::reduce; none adds logic.
 *
 * Plain C99; also compiles as C++. Link with -lorvreduce -lorv
 * (pkg-config --libs orvreduce, or orvreduce::orvreduce in CMake).
 *
 * Handles. Two kinds, both opaque:
 *   - direct: orvreduceReduceObjects (a CReduceObjectArray*), orvreduceRoiList
 *     (a CRoiList*) and orvreduceUnitArray (a TArray<EUnit>*), freed by their
 *     _Free function;
 *   - shared: orvreduceSourceInfo, orvreduceFrameInfo,
 *     orvreduceObjectParameters and orvreduceRoi each hold one reference to
 *     their object. Two handles to one object are independent, and a handle
 *     keeps its object alive after the array or list that held it is gone.
 *     Every shared handle a function returns must be given to its _Free.
 * A null handle from a getter means there is no such object. _Free functions
 * ignore null. An accessor given a null handle, or a handle that holds no
 * object, reads 0, false, a zero structure or a null string, and a setter
 * does nothing.
 *
 * Strings. Every char* result is a copy that the caller owns and releases
 * with orvStrFree (the base library's free for its copies); it is null only
 * for a null handle. Strings passed in are copied.
 *
 * Order of use: orvreduceReduceObjects_Alloc, orvreduceReduceObjects_Load,
 * the getters, the accessors, the _Free of each handle, then
 * orvreduceReduceObjects_Free.
 *
 * Threads: no function takes a lock; one thread at a time per array or list.
 */
#ifndef ORVREDUCE_CAPI_ORVREDUCE_H
#define ORVREDUCE_CAPI_ORVREDUCE_H

#include <stdbool.h>
#include <stdint.h>

/* Exported even from a library built with hidden visibility. */
#if defined(__GNUC__)
#define ORVREDUCE_CAPI __attribute__((visibility("default")))
#else
#define ORVREDUCE_CAPI
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Value types: the C layouts of the library's structures ------------ */

/* 16-byte identifier, printed as {Data1-Data2-Data3-Data4[0..1]-Data4[2..7]}. */
typedef struct orvSGuid {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} orvSGuid;

typedef struct orvSPoint {
    int32_t x;
    int32_t y;
} orvSPoint;

/* Frame offsets use left and top. */
typedef struct orvSRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} orvSRect;

/* Broken-down UTC time; the empty time reads 1601-01-01 00:00:00. */
typedef struct orvSDateTime {
    int32_t year;
    int32_t month;     /* 1-12 */
    int32_t day;       /* 1-31 */
    int32_t hour;      /* 0-23 */
    int32_t minute;    /* 0-59 */
    int32_t second;    /* 0-59 */
    int32_t ticks;     /* 100-ns ticks within the second */
    int32_t dayOfYear; /* 1-366 */
    int32_t dayOfWeek; /* 0 Sunday - 6 Saturday */
} orvSDateTime;

/* Image coordinates of region shapes, in pixels. */
typedef struct orvSPointF {
    double x;
    double y;
} orvSPointF;

/* Note the order: top, left, bottom, right. */
typedef struct orvSRectF {
    double top;
    double left;
    double bottom;
    double right;
} orvSRectF;

/* ---- Handles ------------------------------------------------------------ */

typedef struct orvreduceReduceObjects orvreduceReduceObjects;
typedef struct orvreduceSourceInfo orvreduceSourceInfo;
typedef struct orvreduceFrameInfo orvreduceFrameInfo;
typedef struct orvreduceObjectParameters orvreduceObjectParameters;
typedef struct orvreduceRoi orvreduceRoi;
typedef struct orvreduceRoiList orvreduceRoiList;
typedef struct orvreduceUnitArray orvreduceUnitArray;

/* Releases a string this interface returned; null is ignored. */
ORVREDUCE_CAPI void orvStrFree(char* text);

/* ---- ReduceObjects: the array of a recording's metadata objects --------- */

ORVREDUCE_CAPI orvreduceReduceObjects* orvreduceReduceObjects_Alloc(void);
ORVREDUCE_CAPI void orvreduceReduceObjects_Free(orvreduceReduceObjects* array);
/* Reads the metadata blocks of an info file or recording into the array, as
 * LoadInfoFile does; unknown or damaged objects are skipped. False when the
 * file cannot be read as one. */
ORVREDUCE_CAPI bool orvreduceReduceObjects_Load(orvreduceReduceObjects* array, const char* path);
/* With create, a missing object is made, added to the array, and returned. */
ORVREDUCE_CAPI orvreduceSourceInfo* orvreduceReduceObjects_GetSourceInfo(orvreduceReduceObjects* array, bool create);
ORVREDUCE_CAPI orvreduceFrameInfo* orvreduceReduceObjects_GetFrameInfo(orvreduceReduceObjects* array,
                                                                      unsigned char preset, bool create);
ORVREDUCE_CAPI orvreduceObjectParameters* orvreduceReduceObjects_GetObjectParameters(orvreduceReduceObjects* array,
                                                                                    bool create);

/* ---- SourceInfo: the recording as a whole -------------------------------
 * One accessor per field. The preset ones take the preset index 0 to 7 and
 * read 0 or false for a higher one. Enumerations come as integers: dataType
 * 0-12 (0 int8 ... 9 double, 10 RGB24, 11 RGB48, 12 none), baseUnit 0-12
 * (0 Counts, 1 Radiance (User), 2 Temperature (User), ...), baseTempType 0
 * Celsius, 1 Fahrenheit, 2 Kelvin, 3 Rankine. */

/* A new object on its own, in no array. */
ORVREDUCE_CAPI orvreduceSourceInfo* orvreduceSourceInfo_Alloc(void);
ORVREDUCE_CAPI void orvreduceSourceInfo_Free(orvreduceSourceInfo* handle);
ORVREDUCE_CAPI int32_t orvreduceSourceInfo_adBits(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_camera(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_presetSequencing(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_superframing(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_abated(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint8_t orvreduceSourceInfo_numPresets(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_presetAvailable(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI double orvreduceSourceInfo_presetIntTime(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI bool orvreduceSourceInfo_presetIntTimeValid(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI float orvreduceSourceInfo_presetFrameRate(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI bool orvreduceSourceInfo_presetFrameRateValid(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI uint32_t orvreduceSourceInfo_presetNumFrames(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI bool orvreduceSourceInfo_presetCalibrated(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI double orvreduceSourceInfo_presetMinTemp(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI double orvreduceSourceInfo_presetMaxTemp(const orvreduceSourceInfo* handle, uint8_t preset);
ORVREDUCE_CAPI int32_t orvreduceSourceInfo_dataType(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_imageWidth(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_imageHeight(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI orvSRect orvreduceSourceInfo_offset(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_interlaced(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI orvSGuid orvreduceSourceInfo_pixelType(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI int32_t orvreduceSourceInfo_adBitShift(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI int32_t orvreduceSourceInfo_baseUnit(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI int32_t orvreduceSourceInfo_baseTempType(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_frameWidth(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_frameHeight(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_packetWidth(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_packetHeight(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI uint16_t orvreduceSourceInfo_numFramesPerPacket(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI orvSDateTime orvreduceSourceInfo_time(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_timeValid(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_cameraModel(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_cameraPartNumber(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_cameraSerial(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lens(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lensPartNumber(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lensSerial(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_filter(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_filterPartNumber(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_filterSerial(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lensFilter(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lensFilterPartNumber(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI char* orvreduceSourceInfo_lensFilterSerial(const orvreduceSourceInfo* handle);
/* Spelled so in the files this field comes from. */
ORVREDUCE_CAPI char* orvreduceSourceInfo_classifacation(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI double orvreduceSourceInfo_bandpassStart(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI double orvreduceSourceInfo_bandpassEnd(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_bandpassValid(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI double orvreduceSourceInfo_iHFov(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI double orvreduceSourceInfo_iVFov(const orvreduceSourceInfo* handle);
ORVREDUCE_CAPI bool orvreduceSourceInfo_fovValid(const orvreduceSourceInfo* handle);

/* ---- FrameInfo: one frame's items, as one table of text entries ---------
 * Entries 0 to 3 are the fixed items "Time", "FrameNumber", "Preset" and
 * "TimeSource"; the camera's own items follow. By name the comparison
 * ignores case. */

ORVREDUCE_CAPI orvreduceFrameInfo* orvreduceFrameInfo_Alloc(void);
ORVREDUCE_CAPI void orvreduceFrameInfo_Free(orvreduceFrameInfo* handle);
ORVREDUCE_CAPI orvSDateTime orvreduceFrameInfo_time(const orvreduceFrameInfo* handle);
ORVREDUCE_CAPI uint64_t orvreduceFrameInfo_frame(const orvreduceFrameInfo* handle);
ORVREDUCE_CAPI uint8_t orvreduceFrameInfo_preset(const orvreduceFrameInfo* handle);
/* 0 unknown, 1 PC, 2 Camera, 3 IRIG. */
ORVREDUCE_CAPI int32_t orvreduceFrameInfo_timeSource(const orvreduceFrameInfo* handle);
ORVREDUCE_CAPI unsigned int orvreduceFrameInfo_numEntries(const orvreduceFrameInfo* handle);
/* 0 to 3 for the fixed items; for a camera item its place among the camera
 * items (add 4 for the ...At functions); all ones for an unknown name. */
ORVREDUCE_CAPI unsigned int orvreduceFrameInfo_GetIndex(const orvreduceFrameInfo* handle, const char* name);
/* Unknown names and indices past the end give an empty string. */
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetNameAt(const orvreduceFrameInfo* handle, unsigned int index);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetValue(const orvreduceFrameInfo* handle, const char* name);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetValueAt(const orvreduceFrameInfo* handle, unsigned int index);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetUnit(const orvreduceFrameInfo* handle, const char* name);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetUnitAt(const orvreduceFrameInfo* handle, unsigned int index);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetType(const orvreduceFrameInfo* handle, const char* name);
ORVREDUCE_CAPI char* orvreduceFrameInfo_GetTypeAt(const orvreduceFrameInfo* handle, unsigned int index);

/* ---- ObjectParameters: the scene, read by every radiometric conversion --
 * Temperatures in Kelvin, distance in metres, transmissions and emissivity
 * as fractions, relative humidity as a fraction. The setters store the value
 * as given, without any limit (unlike orvreduceRoi_setEmissivity), and touch
 * no other field. */

ORVREDUCE_CAPI orvreduceObjectParameters* orvreduceObjectParameters_Alloc(void);
ORVREDUCE_CAPI void orvreduceObjectParameters_Free(orvreduceObjectParameters* handle);
ORVREDUCE_CAPI bool orvreduceObjectParameters_source(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI float orvreduceObjectParameters_emissivity(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setEmissivity(orvreduceObjectParameters* handle, float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_distance(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setDistance(orvreduceObjectParameters* handle, float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_reflectedTemp(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setReflectedTemp(orvreduceObjectParameters* handle, float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_atmosphereTemp(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setAtmosphereTemp(orvreduceObjectParameters* handle, float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_extOpticsTemp(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setExtOpticsTemp(orvreduceObjectParameters* handle, float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_extOpticsTransmission(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setExtOpticsTransmission(orvreduceObjectParameters* handle,
                                                                       float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_estAtmosphericTransmission(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setEstAtmosphericTransmission(orvreduceObjectParameters* handle,
                                                                            float value);
ORVREDUCE_CAPI float orvreduceObjectParameters_atmosphericTransmission(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI float orvreduceObjectParameters_relativeHumidity(const orvreduceObjectParameters* handle);
ORVREDUCE_CAPI void orvreduceObjectParameters_setRelativeHumidity(orvreduceObjectParameters* handle, float value);

/* ---- Roi: one region of interest, on a shared handle --------------------
 * type: 0 Rect, 1 Ellipse, 2 Line, 3 Cursor, 4 MultiLine, 5 Polygon,
 * 6 Freehand, 7 Isotherm, 8 MeasurementCursor, 9 Square, 10 Circle,
 * 11 Crosshair, 100 Image (the whole frame). The figures are those of the
 * region's last statistics, as the caller's measurement left them. */

ORVREDUCE_CAPI void orvreduceRoi_Free(orvreduceRoi* handle);
ORVREDUCE_CAPI char* orvreduceRoi_name(const orvreduceRoi* handle);
ORVREDUCE_CAPI int32_t orvreduceRoi_type(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_emissivity(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_distance(const orvreduceRoi* handle);
/* Limited to 0 .. 1, unlike orvreduceObjectParameters_setEmissivity. */
ORVREDUCE_CAPI void orvreduceRoi_setEmissivity(orvreduceRoi* handle, double value);
/* A negative distance is stored as 0. */
ORVREDUCE_CAPI void orvreduceRoi_setDistance(orvreduceRoi* handle, double value);
ORVREDUCE_CAPI bool orvreduceRoi_useEmissivity(const orvreduceRoi* handle);
ORVREDUCE_CAPI void orvreduceRoi_setUseEmissivity(orvreduceRoi* handle, bool use);
ORVREDUCE_CAPI bool orvreduceRoi_useDistance(const orvreduceRoi* handle);
ORVREDUCE_CAPI void orvreduceRoi_setUseDistance(orvreduceRoi* handle, bool use);
ORVREDUCE_CAPI double orvreduceRoi_mean(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_sum(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_standardDeviation(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_minValue(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_maxValue(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_centerValue(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_pixelArea(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_area(const orvreduceRoi* handle);
ORVREDUCE_CAPI double orvreduceRoi_length(const orvreduceRoi* handle);
ORVREDUCE_CAPI uint32_t orvreduceRoi_numPixels(const orvreduceRoi* handle);
ORVREDUCE_CAPI orvSPoint orvreduceRoi_minPosition(const orvreduceRoi* handle);
ORVREDUCE_CAPI orvSPoint orvreduceRoi_maxPosition(const orvreduceRoi* handle);
/* Kept in single precision, handed out as doubles. */
ORVREDUCE_CAPI orvSPointF orvreduceRoi_centerPosition(const orvreduceRoi* handle);
ORVREDUCE_CAPI bool orvreduceRoi_areaValid(const orvreduceRoi* handle);
/* For Line and MultiLine the area flag; false for every other type. */
ORVREDUCE_CAPI bool orvreduceRoi_lengthValid(const orvreduceRoi* handle);
/* The mask as a 24-bit bitmap file; the shape as SVG. */
ORVREDUCE_CAPI bool orvreduceRoi_ExportBitmask(orvreduceRoi* handle, const char* path);
ORVREDUCE_CAPI bool orvreduceRoi_ExportSvg(orvreduceRoi* handle, const char* path);

/* ---- RoiList: the regions of one image ----------------------------------
 * Element 0 is always the image region. The Add functions name the new
 * region ("Rectangle 1", "Cursor 2", ...: the first free number of its
 * kind), add it and return a new handle to it. Files are written as XML
 * and read as XML or the older binary form. */

ORVREDUCE_CAPI orvreduceRoiList* orvreduceRoiList_Alloc(void);
ORVREDUCE_CAPI void orvreduceRoiList_Free(orvreduceRoiList* list);
ORVREDUCE_CAPI unsigned int orvreduceRoiList_size(const orvreduceRoiList* list);
/* Removes all but the image region. */
ORVREDUCE_CAPI void orvreduceRoiList_RemoveAll(orvreduceRoiList* list);
/* Null for an index past the end. */
ORVREDUCE_CAPI orvreduceRoi* orvreduceRoiList_at(const orvreduceRoiList* list, unsigned int index);
ORVREDUCE_CAPI orvreduceRoi* orvreduceRoiList_AddCursor(orvreduceRoiList* list, const orvSPointF* position);
ORVREDUCE_CAPI orvreduceRoi* orvreduceRoiList_AddRect(orvreduceRoiList* list, orvSRectF rect);
ORVREDUCE_CAPI orvreduceRoi* orvreduceRoiList_AddLine(orvreduceRoiList* list, const orvSPointF* from,
                                                      const orvSPointF* to);
ORVREDUCE_CAPI orvreduceRoi* orvreduceRoiList_AddEllipse(orvreduceRoiList* list, orvSRectF rect);
/* The handle stays valid (and must still be freed); the image region is
 * never removed. */
ORVREDUCE_CAPI void orvreduceRoiList_Remove(orvreduceRoiList* list, const orvreduceRoi* roi);
ORVREDUCE_CAPI bool orvreduceRoiList_Load(orvreduceRoiList* list, const char* path);
ORVREDUCE_CAPI bool orvreduceRoiList_Save(orvreduceRoiList* list, const char* path);

/* ---- UnitArray: a list of units (0 Counts, 1 Radiance (User), ...) ------ */

ORVREDUCE_CAPI unsigned int orvreduceUnitArray_size(const orvreduceUnitArray* array);
/* Checked access: an index past the end throws the base library's
 * out-of-range exception, which in C ends the program; compare with
 * orvreduceUnitArray_size first. A null array reads 12, no unit. */
ORVREDUCE_CAPI int32_t orvreduceUnitArray_at(const orvreduceUnitArray* array, unsigned int index);
ORVREDUCE_CAPI void orvreduceUnitArray_Free(orvreduceUnitArray* array);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ORVREDUCE_CAPI_ORVREDUCE_H */
