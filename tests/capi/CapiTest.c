/* The flat interface, used from C as a C caller would. Argument: a synthetic
 * recording of 64 x 48 pixels ("orvreduce synth", emissivity 0.95). */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "reduce/capi/orvreduce.h"

orvreduceReduceObjects* capiTestDecodeFrame(const char* path, unsigned int frame);
int capiTestPixel(const char* path, unsigned int frame, unsigned int x, unsigned int y);
bool capiTestMeasure(orvreduceRoiList* list, const char* path, unsigned int frame);
orvreduceUnitArray* capiTestUnits(void);

static int failures = 0;

#define CHECK(cond)                                                              \
    do {                                                                         \
        if (!(cond)) {                                                           \
            fprintf(stderr, "%s:%d: CHECK(%s) failed\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                          \
        }                                                                        \
    } while (0)

/* Compares a returned copy with the expected text, then frees it. */
static int Text(char* text, const char* expected)
{
    int same = text && strcmp(text, expected) == 0;
    if (!same) fprintf(stderr, "  got \"%s\", expected \"%s\"\n", text ? text : "(null)", expected);
    orvStrFree(text);
    return same;
}

/* Getters on an empty array: null without create; with create a new object
 * that stays in the array, so that two handles reach the same object. */
static void TestGettersAndSharedHandles(void)
{
    orvreduceReduceObjects* array = orvreduceReduceObjects_Alloc();
    CHECK(orvreduceReduceObjects_GetSourceInfo(array, false) == NULL);
    CHECK(orvreduceReduceObjects_GetFrameInfo(array, 2, false) == NULL);
    CHECK(orvreduceReduceObjects_GetObjectParameters(array, false) == NULL);

    orvreduceSourceInfo* created = orvreduceReduceObjects_GetSourceInfo(array, true);
    orvreduceSourceInfo* found = orvreduceReduceObjects_GetSourceInfo(array, false);
    CHECK(created != NULL && found != NULL && created != found);
    CHECK(Text(orvreduceSourceInfo_camera(found), "Unknown Camera"));

    orvreduceObjectParameters* a = orvreduceReduceObjects_GetObjectParameters(array, true);
    orvreduceObjectParameters* b = orvreduceReduceObjects_GetObjectParameters(array, false);
    orvreduceObjectParameters_setDistance(a, 7.5f);
    CHECK(orvreduceObjectParameters_distance(b) == 7.5f);

    orvreduceFrameInfo* frame = orvreduceReduceObjects_GetFrameInfo(array, 2, true);
    CHECK(orvreduceFrameInfo_preset(frame) == 2);

    /* The handles keep their objects after the array is gone. */
    orvreduceReduceObjects_Free(array);
    orvreduceSourceInfo_Free(created);
    CHECK(Text(orvreduceSourceInfo_camera(found), "Unknown Camera"));
    CHECK(orvreduceObjectParameters_distance(b) == 7.5f);
    orvreduceObjectParameters_Free(a);
    CHECK(orvreduceObjectParameters_distance(b) == 7.5f);
    CHECK(orvreduceFrameInfo_numEntries(frame) == 4);
    orvreduceSourceInfo_Free(found);
    orvreduceObjectParameters_Free(b);
    orvreduceFrameInfo_Free(frame);
}

/* Null handles are no crash: frees ignore them, reads give zero or null. */
static void TestNullHandles(void)
{
    orvreduceReduceObjects_Free(NULL);
    orvreduceSourceInfo_Free(NULL);
    orvreduceFrameInfo_Free(NULL);
    orvreduceObjectParameters_Free(NULL);
    orvStrFree(NULL);
    CHECK(orvreduceReduceObjects_GetSourceInfo(NULL, true) == NULL);
    CHECK(orvreduceReduceObjects_GetFrameInfo(NULL, 0, true) == NULL);
    CHECK(orvreduceReduceObjects_GetObjectParameters(NULL, true) == NULL);
    CHECK(!orvreduceReduceObjects_Load(NULL, "x.qrt"));
    CHECK(orvreduceSourceInfo_camera(NULL) == NULL);
    CHECK(orvreduceSourceInfo_imageWidth(NULL) == 0);
    CHECK(orvreduceSourceInfo_presetMaxTemp(NULL, 0) == 0.0);
    CHECK(orvreduceSourceInfo_offset(NULL).right == 0);
    CHECK(orvreduceSourceInfo_time(NULL).year == 0);
    CHECK(orvreduceFrameInfo_GetValue(NULL, "Time") == NULL);
    CHECK(orvreduceFrameInfo_GetIndex(NULL, "Time") == ~0u);
    CHECK(orvreduceObjectParameters_emissivity(NULL) == 0.0f);
    orvreduceObjectParameters_setEmissivity(NULL, 0.5f);

    orvreduceReduceObjects* array = orvreduceReduceObjects_Alloc();
    CHECK(!orvreduceReduceObjects_Load(array, NULL));
    CHECK(!orvreduceReduceObjects_Load(array, "/nonexistent/scene.qrt"));
    CHECK(orvreduceReduceObjects_GetSourceInfo(array, false) == NULL);
    orvreduceReduceObjects_Free(array);
}

/* A new object of each kind, made by the object factory, on its own. */
static void TestAlloc(void)
{
    orvreduceSourceInfo* info = orvreduceSourceInfo_Alloc();
    orvreduceFrameInfo* frame = orvreduceFrameInfo_Alloc();
    orvreduceObjectParameters* a = orvreduceObjectParameters_Alloc();
    orvreduceObjectParameters* b = orvreduceObjectParameters_Alloc();
    char* camera = orvreduceSourceInfo_camera(info);
    CHECK(camera != NULL);
    orvStrFree(camera);
    CHECK(orvreduceFrameInfo_numEntries(frame) == 4 && Text(orvreduceFrameInfo_GetNameAt(frame, 3), "TimeSource"));
    orvreduceObjectParameters_setDistance(a, 123.0f);
    CHECK(orvreduceObjectParameters_distance(a) == 123.0f && orvreduceObjectParameters_distance(b) != 123.0f);
    orvreduceSourceInfo_Free(info);
    orvreduceFrameInfo_Free(frame);
    orvreduceObjectParameters_Free(a);
    orvreduceObjectParameters_Free(b);
}

static void TestRecording(const char* path)
{
    orvreduceReduceObjects* array = orvreduceReduceObjects_Alloc();
    CHECK(orvreduceReduceObjects_Load(array, path));
    orvreduceSourceInfo* info = orvreduceReduceObjects_GetSourceInfo(array, false);
    orvreduceObjectParameters* scene = orvreduceReduceObjects_GetObjectParameters(array, false);
    orvreduceReduceObjects_Free(array);
    CHECK(info != NULL && scene != NULL);

    CHECK(Text(orvreduceSourceInfo_camera(info), "orvreduce synthetic scene"));
    CHECK(Text(orvreduceSourceInfo_cameraModel(info), "Synthetic"));
    CHECK(Text(orvreduceSourceInfo_lensSerial(info), ""));
    CHECK(orvreduceSourceInfo_imageWidth(info) == 64 && orvreduceSourceInfo_imageHeight(info) == 48);
    CHECK(orvreduceSourceInfo_frameWidth(info) == 64 && orvreduceSourceInfo_frameHeight(info) == 48);
    CHECK(orvreduceSourceInfo_dataType(info) == 3); /* unsigned 16-bit counts */
    CHECK(orvreduceSourceInfo_baseUnit(info) == 0);
    CHECK(orvreduceSourceInfo_presetAvailable(info, 0));
    CHECK(orvreduceSourceInfo_presetFrameRate(info, 0) == 30.0f && orvreduceSourceInfo_presetIntTime(info, 0) == 0.001);
    CHECK(orvreduceSourceInfo_bandpassValid(info) && orvreduceSourceInfo_bandpassEnd(info) == 14.0);
    /* Preset indices past the eighth read as nothing. */
    CHECK(!orvreduceSourceInfo_presetAvailable(info, 8) && orvreduceSourceInfo_presetMaxTemp(info, 255) == 0.0);
    CHECK(orvreduceSourceInfo_presetFrameRate(info, 8) == 0.0f);
    /* The time structure crosses field for field: a valid recent time. */
    orvSDateTime t = orvreduceSourceInfo_time(info);
    CHECK(orvreduceSourceInfo_timeValid(info));
    CHECK(t.year >= 2024 && t.month >= 1 && t.month <= 12 && t.day >= 1 && t.day <= 31);
    CHECK(t.dayOfYear >= 1 && t.dayOfYear <= 366 && t.dayOfWeek >= 0 && t.dayOfWeek <= 6);
    /* 16-bit grey pixels: {6D4A7D67-C5FB-4DE1-9904-E56F067AB126}. */
    orvSGuid g = orvreduceSourceInfo_pixelType(info);
    CHECK(g.Data1 == 0x6D4A7D67u && g.Data2 == 0xC5FB && g.Data3 == 0x4DE1 && g.Data4[0] == 0x99 && g.Data4[7] == 0x26);

    /* Emissivity as recorded; the setter stores even a value above 1, and
     * changes nothing else. */
    CHECK(fabsf(orvreduceObjectParameters_emissivity(scene) - 0.95f) < 1e-6f);
    float distance = orvreduceObjectParameters_distance(scene);
    float humidity = orvreduceObjectParameters_relativeHumidity(scene);
    orvreduceObjectParameters_setEmissivity(scene, 1.5f);
    orvreduceObjectParameters_setAtmosphereTemp(scene, -40.0f);
    CHECK(orvreduceObjectParameters_emissivity(scene) == 1.5f);
    CHECK(orvreduceObjectParameters_atmosphereTemp(scene) == -40.0f);
    CHECK(orvreduceObjectParameters_distance(scene) == distance);
    CHECK(orvreduceObjectParameters_relativeHumidity(scene) == humidity);
    orvreduceSourceInfo_Free(info);
    orvreduceObjectParameters_Free(scene);
}

/* Frame 2 decoded: the fixed items and the table by name and by index. */
static void TestFrameInfo(const char* path)
{
    orvreduceReduceObjects* array = capiTestDecodeFrame(path, 2);
    CHECK(array != NULL);
    orvreduceFrameInfo* frame = orvreduceReduceObjects_GetFrameInfo(array, 0, false);
    orvreduceReduceObjects_Free(array);
    CHECK(frame != NULL);

    unsigned int n = orvreduceFrameInfo_numEntries(frame);
    CHECK(n >= 4);
    CHECK(Text(orvreduceFrameInfo_GetNameAt(frame, 0), "Time"));
    CHECK(Text(orvreduceFrameInfo_GetNameAt(frame, 1), "FrameNumber"));
    CHECK(Text(orvreduceFrameInfo_GetValue(frame, "framenumber"), "2"));
    CHECK(Text(orvreduceFrameInfo_GetValueAt(frame, 1), "2"));
    CHECK(Text(orvreduceFrameInfo_GetValue(frame, "TimeSource"), "PC"));
    CHECK(orvreduceFrameInfo_timeSource(frame) == 1);
    CHECK(orvreduceFrameInfo_GetIndex(frame, "Preset") == 2);
    CHECK(orvreduceFrameInfo_preset(frame) == 0);
    /* Unknown names and indices past the end: empty copies, never null. */
    CHECK(Text(orvreduceFrameInfo_GetValue(frame, "NoSuchItem"), ""));
    CHECK(Text(orvreduceFrameInfo_GetUnit(frame, "NoSuchItem"), ""));
    CHECK(Text(orvreduceFrameInfo_GetNameAt(frame, n), ""));
    CHECK(Text(orvreduceFrameInfo_GetTypeAt(frame, 0xFFFFFFFFu), ""));
    CHECK(Text(orvreduceFrameInfo_GetUnitAt(frame, n + 100), ""));

    /* The time structure against the text form of the same time, which
     * ends in hh:mm:ss.ffffff. */
    orvSDateTime t = orvreduceFrameInfo_time(frame);
    char* text = orvreduceFrameInfo_GetValue(frame, "Time");
    int hour = -1, minute = -1, second = -1, micro = -1;
    const char* tail = text ? text + strlen(text) : NULL;
    CHECK(tail && strlen(text) >= 15 && sscanf(tail - 15, "%d:%d:%d.%d", &hour, &minute, &second, &micro) == 4);
    CHECK(t.hour == hour && t.minute == minute && t.second == second && t.ticks / 10 == micro);
    orvStrFree(text);
    orvreduceFrameInfo_Free(frame);
}

/* First bytes of a file, or an empty string. */
static void Head(const char* path, char* out, size_t n)
{
    FILE* f = fopen(path, "rb");
    size_t got = f ? fread(out, 1, n - 1, f) : 0;
    out[got] = '\0';
    if (f) fclose(f);
}

/* Regions built, named, measured on frame 1, exported, saved and loaded. */
static void TestRegions(const char* path)
{
    orvreduceRoiList* list = orvreduceRoiList_Alloc();
    CHECK(orvreduceRoiList_size(list) == 1);
    orvreduceRoi* image = orvreduceRoiList_at(list, 0);
    CHECK(Text(orvreduceRoi_name(image), "Image") && orvreduceRoi_type(image) == 100);
    CHECK(orvreduceRoiList_at(list, 1) == NULL && orvreduceRoiList_at(list, 0xFFFFFFFFu) == NULL);

    orvSRectF box = {10, 20, 14, 25}; /* top, left, bottom, right */
    orvSPointF at = {30.2, 20.4}, from = {5, 40}, to = {50, 40};
    orvreduceRoi* rect = orvreduceRoiList_AddRect(list, box);
    orvreduceRoi* rect2 = orvreduceRoiList_AddRect(list, box);
    orvreduceRoi* cursor = orvreduceRoiList_AddCursor(list, &at);
    orvreduceRoi* line = orvreduceRoiList_AddLine(list, &from, &to);
    orvreduceRoi* ellipse = orvreduceRoiList_AddEllipse(list, box);
    CHECK(orvreduceRoiList_AddCursor(list, NULL) == NULL && orvreduceRoiList_AddLine(list, &from, NULL) == NULL);
    CHECK(orvreduceRoiList_AddRect(NULL, box) == NULL);
    CHECK(orvreduceRoiList_size(list) == 6);
    CHECK(Text(orvreduceRoi_name(rect), "Rectangle 1") && Text(orvreduceRoi_name(rect2), "Rectangle 2"));
    CHECK(Text(orvreduceRoi_name(cursor), "Cursor 1") && Text(orvreduceRoi_name(line), "Line 1"));
    CHECK(Text(orvreduceRoi_name(ellipse), "Ellipse 1"));
    CHECK(orvreduceRoi_type(rect) == 0 && orvreduceRoi_type(ellipse) == 1 && orvreduceRoi_type(line) == 2 &&
          orvreduceRoi_type(cursor) == 3);

    /* The region's setters limit; the scene's (above) do not. */
    orvreduceRoi_setEmissivity(rect, 1.5);
    CHECK(orvreduceRoi_emissivity(rect) == 1.0);
    orvreduceRoi_setEmissivity(rect, -0.25);
    CHECK(orvreduceRoi_emissivity(rect) == 0.0);
    orvreduceRoi_setEmissivity(rect, 0.8);
    orvreduceRoi_setDistance(rect, -3.0);
    CHECK(orvreduceRoi_distance(rect) == 0.0);
    orvreduceRoi_setDistance(rect, 4.5);
    orvreduceRoi_setUseEmissivity(rect, true);
    CHECK(orvreduceRoi_useEmissivity(rect) && !orvreduceRoi_useDistance(rect));
    orvreduceRoi_setUseDistance(rect, true);
    CHECK(orvreduceRoi_useDistance(rect));

    /* Measured: the cursor is the one pixel under it, the box's extremes are
     * pixels of the frame at the places given, inside the box. */
    CHECK(capiTestMeasure(list, path, 1));
    CHECK(orvreduceRoi_numPixels(cursor) == 1);
    CHECK(orvreduceRoi_mean(cursor) == capiTestPixel(path, 1, 30, 20));
    CHECK(orvreduceRoi_minPosition(cursor).x == 30 && orvreduceRoi_minPosition(cursor).y == 20);
    orvSPoint lo = orvreduceRoi_minPosition(rect), hi = orvreduceRoi_maxPosition(rect);
    CHECK(lo.x >= 20 && lo.x <= 25 && lo.y >= 10 && lo.y <= 14 && hi.x >= 20 && hi.x <= 25);
    CHECK(orvreduceRoi_minValue(rect) == capiTestPixel(path, 1, lo.x, lo.y));
    CHECK(orvreduceRoi_maxValue(rect) == capiTestPixel(path, 1, hi.x, hi.y));
    CHECK(orvreduceRoi_minValue(rect) <= orvreduceRoi_mean(rect) && orvreduceRoi_mean(rect) <= orvreduceRoi_maxValue(rect));
    CHECK(fabs(orvreduceRoi_sum(rect) - orvreduceRoi_mean(rect) * orvreduceRoi_numPixels(rect)) < 1e-6 * orvreduceRoi_sum(rect));
    CHECK(orvreduceRoi_standardDeviation(rect) >= 0 && orvreduceRoi_standardDeviation(cursor) == 0);
    CHECK(orvreduceRoi_numPixels(image) == 64 * 48);
    orvSPointF c = orvreduceRoi_centerPosition(cursor);
    CHECK(c.x == 30 && c.y == 20);
    /* A length belongs to lines only. */
    CHECK(orvreduceRoi_lengthValid(line) == orvreduceRoi_areaValid(line));
    CHECK(!orvreduceRoi_lengthValid(rect) && !orvreduceRoi_lengthValid(cursor));

    /* Exports: an SVG drawing and a bitmap. */
    char file[4096], head[8];
    snprintf(file, sizeof file, "%s.rect.svg", path);
    CHECK(orvreduceRoi_ExportSvg(rect, file));
    Head(file, head, sizeof head);
    CHECK(head[0] == '<');
    remove(file);
    snprintf(file, sizeof file, "%s.rect.bmp", path);
    CHECK(orvreduceRoi_ExportBitmask(rect, file));
    Head(file, head, sizeof head);
    CHECK(head[0] == 'B' && head[1] == 'M');
    CHECK(!orvreduceRoi_ExportSvg(rect, NULL) && !orvreduceRoi_ExportSvg(NULL, file));
    remove(file);

    /* Remove: the handle stays usable; the image region stays. */
    orvreduceRoiList_Remove(list, rect2);
    orvreduceRoiList_Remove(list, image);
    CHECK(orvreduceRoiList_size(list) == 5);
    CHECK(Text(orvreduceRoi_name(rect2), "Rectangle 2"));
    orvreduceRoi* second = orvreduceRoiList_at(list, 2);
    CHECK(Text(orvreduceRoi_name(second), "Cursor 1"));
    orvreduceRoi_Free(second);
    orvreduceRoi* again = orvreduceRoiList_AddRect(list, box); /* the freed name is taken again */
    CHECK(Text(orvreduceRoi_name(again), "Rectangle 2"));
    orvreduceRoi_Free(again);

    /* Saved and loaded into a new list: same regions, same settings. */
    snprintf(file, sizeof file, "%s.rois.xml", path);
    CHECK(orvreduceRoiList_Save(list, file));
    orvreduceRoiList* loaded = orvreduceRoiList_Alloc();
    CHECK(orvreduceRoiList_Load(loaded, file));
    CHECK(orvreduceRoiList_size(loaded) == orvreduceRoiList_size(list));
    orvreduceRoi* back = orvreduceRoiList_at(loaded, 1);
    CHECK(Text(orvreduceRoi_name(back), "Rectangle 1") && orvreduceRoi_type(back) == 0);
    CHECK(orvreduceRoi_emissivity(back) == 0.8 && orvreduceRoi_distance(back) == 4.5);
    CHECK(orvreduceRoi_useEmissivity(back) && orvreduceRoi_useDistance(back));
    orvreduceRoi_Free(back);
    CHECK(!orvreduceRoiList_Load(loaded, "/nonexistent/rois.xml") && !orvreduceRoiList_Load(loaded, NULL));
    CHECK(!orvreduceRoiList_Save(loaded, "/nonexistent/dir/rois.xml"));
    remove(file);
    orvreduceRoiList_Free(loaded);

    /* The handles outlive their list. */
    orvreduceRoiList_RemoveAll(list);
    CHECK(orvreduceRoiList_size(list) == 1);
    orvreduceRoiList_Free(list);
    CHECK(orvreduceRoi_mean(cursor) == capiTestPixel(path, 1, 30, 20));
    CHECK(Text(orvreduceRoi_name(ellipse), "Ellipse 1"));
    orvreduceRoi* handles[] = {image, rect, rect2, cursor, line, ellipse};
    for (size_t i = 0; i < sizeof handles / sizeof handles[0]; ++i) orvreduceRoi_Free(handles[i]);

    /* Null lists and regions. */
    orvreduceRoiList_Free(NULL);
    orvreduceRoi_Free(NULL);
    orvreduceRoiList_RemoveAll(NULL);
    orvreduceRoiList_Remove(NULL, NULL);
    CHECK(orvreduceRoiList_size(NULL) == 0 && orvreduceRoiList_at(NULL, 0) == NULL);
    CHECK(orvreduceRoi_name(NULL) == NULL && orvreduceRoi_mean(NULL) == 0.0 && !orvreduceRoi_lengthValid(NULL));
    orvreduceRoi_setEmissivity(NULL, 0.5);
}

static void TestUnitArray(void)
{
    orvreduceUnitArray* units = capiTestUnits();
    CHECK(orvreduceUnitArray_size(units) == 2);
    CHECK(orvreduceUnitArray_at(units, 0) == 0 && orvreduceUnitArray_at(units, 1) == 2);
    orvreduceUnitArray_Free(units);
    orvreduceUnitArray_Free(NULL);
    CHECK(orvreduceUnitArray_size(NULL) == 0 && orvreduceUnitArray_at(NULL, 0) == 12);
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s SYNTHETIC_RECORDING\n", argv[0]);
        return 2;
    }
    TestGettersAndSharedHandles();
    TestNullHandles();
    TestAlloc();
    TestRecording(argv[1]);
    TestFrameInfo(argv[1]);
    TestRegions(argv[1]);
    TestUnitArray();
    if (failures) fprintf(stderr, "%d checks failed\n", failures);
    else printf("all checks passed\n");
    return failures ? 1 : 0;
}
