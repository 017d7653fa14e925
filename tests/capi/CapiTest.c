/* The flat interface, used from C as a C caller would. Argument: a synthetic
 * recording of 64 x 48 pixels ("orvreduce synth", emissivity 0.95). */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "reduce/capi/orvreduce.h"

orvreduceReduceObjects* capiTestDecodeFrame(const char* path, unsigned int frame);

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

/* A new object of each kind, made by the object factory. */
static void TestAlloc(void)
{
    orvreduceSourceInfo* info = orvreduceSourceInfo_Alloc();
    orvreduceFrameInfo* frame = orvreduceFrameInfo_Alloc();
    orvreduceObjectParameters* scene = orvreduceObjectParameters_Alloc();
    CHECK(Text(orvreduceSourceInfo_camera(info), "Unknown Camera"));
    CHECK(orvreduceSourceInfo_presetFrameRate(info, 7) == 1.0f);
    CHECK(Text(orvreduceFrameInfo_GetNameAt(frame, 3), "TimeSource"));
    CHECK(orvreduceObjectParameters_reflectedTemp(scene) == 293.15f);
    orvreduceSourceInfo_Free(info);
    orvreduceFrameInfo_Free(frame);
    orvreduceObjectParameters_Free(scene);
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
    if (failures) fprintf(stderr, "%d checks failed\n", failures);
    else printf("all checks passed\n");
    return failures ? 1 : 0;
}
