// The extra frame info entries of the two TLK variants: one table in the
// order both show them, each row marked with the variants that carry it.
#include <cstdio>

#include "reduce/filters/TLKFilter.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoExtra.h"

namespace orv::reduce {

namespace {

constexpr unsigned kRV = 1, kMX = 2, kBoth = kRV | kMX;

using FFormat = int (*)(char* text, size_t size, const SHeader& h, bool mx);

struct SEntryRow {
    const char* key;
    unsigned variants;
    const char* unit;
    const char* type;
    FFormat format;
};

int Flag(char* t, bool value) { return std::snprintf(t, 2, "%s", value ? "T" : "F"); }

#define ORV_DEC(expr) [](char* t, size_t n, const SHeader& h, bool) { return std::snprintf(t, n, "%u", unsigned(expr)); }
#define ORV_FLAG(expr) [](char* t, size_t, const SHeader& h, bool) { return Flag(t, expr); }
#define ORV_FLOAT(fmt, expr) \
    [](char* t, size_t n, const SHeader& h, bool) { return std::snprintf(t, n, fmt, double(expr)); }

// The MX variant shows the FPA temperature in Celsius for these cameras only;
// intended, they report it offset.
int FPATemp(char* t, size_t n, const SHeader& h, bool mx)
{
    double value = h.tempFPA;
    if (mx && h.cameraType == 3 && (h.cameraSubType == 4 || h.cameraSubType == 5)) value = double(h.tempFPA) - 273.15;
    return std::snprintf(t, n, "%0.2f", value);
}

int FPAGain(char* t, size_t n, const SHeader& h, bool)
{
    const char* text = nullptr;
    if (h.roicType == 10) text = h.fpaGain == 0 ? "High" : "Low";
    else if (h.roicType == 19 || h.roicType == 20) text = h.fpaGain == 0 ? "High" : h.fpaGain == 1 ? "Med" : "Low";
    if (text) return std::snprintf(t, n, "%s", text);
    return std::snprintf(t, n, "%u", unsigned(h.fpaGain));
}

const SEntryRow kEntries[] = {
    {"ActivePreset", kBoth, "Counter", "int", ORV_DEC(h.activePreset)},
    {"FrameCounter", kBoth, "Counter", "int", ORV_DEC(h.frameCounter)},
    {"HeaderID", kBoth, "Integer", "int", ORV_DEC(h.headerID)},
    {"IRIGLocked", kBoth, "Flag", "ascii", ORV_FLAG(h.irigLocked)},
    {"Trigger", kBoth, "Flag", "ascii", ORV_FLAG(h.trigger)},
    {"RecordStart", kMX, "Flag", "ascii", ORV_FLAG(h.recordStart)},
    {"VideoNUCOn", kBoth, "Flag", "ascii", ORV_FLAG(h.videoNUCOn)},
    {"GigENucOn", kBoth, "Flag", "ascii", ORV_FLAG(h.gigENUCOn)},
    {"CameraLinkNUCOn", kBoth, "Flag", "ascii", ORV_FLAG(h.cameraLinkNUCOn)},
    {"FlagInFOV", kBoth, "Flag", "ascii", ORV_FLAG(h.flagInFOV)},
    {"ChassisTemp", kRV, "Float", "float", ORV_FLOAT("%0.2f", h.tempA)},
    {"FrontPanelTemp", kMX, "Float", "float", ORV_FLOAT("%0.2f", h.tempA)},
    {"AirGapTemp", kMX, "Float", "float", ORV_FLOAT("%0.2f", h.tempB)},
    {"InternalTemp", kMX, "Float", "float", ORV_FLOAT("%0.2f", h.tempC)},
    {"FPATemp", kBoth, "Float", "float", &FPATemp},
    {"IntegrationTime", kBoth, "Float", "float", ORV_FLOAT("%f", h.integrationTime)},
    {"FilterID", kBoth, "Integer", "int", ORV_DEC(h.filterID)},
    {"FPAControlWord", kBoth, "Text", "ascii",
     [](char* t, size_t n, const SHeader& h, bool) {
         return std::snprintf(t, n, "0x%04X%04X%04X%04X%04X", h.fpaControl[0], h.fpaControl[1], h.fpaControl[2],
                              h.fpaControl[3], h.fpaControl[4]);
     }},
    {"SaturationThreshold", kBoth, "Integer", "int", ORV_DEC(h.saturationThreshold)},
    {"SaturatedPixels", kBoth, "Integer", "int", ORV_DEC(h.saturatedPixels)},
    {"SaturationFlag", kBoth, "Flag", "ascii", ORV_FLAG(h.saturationFlag)},
    {"FrameRate", kBoth, "Float", "float", ORV_FLOAT("%0.2f", h.frameRate)},
    {"DigitalGain", kBoth, "Float", "float", ORV_FLOAT("%0.3f", h.digitalGain)},
    {"DigitalOffset", kBoth, "Float", "float", ORV_FLOAT("%0.1f", h.digitalOffset)},
    {"DetectorType", kBoth, "Integer", "int", ORV_DEC(h.detectorType)},
    {"AnalogOffset", kBoth, "Float", "float", ORV_FLOAT("%0.3f", h.analogOffset)},
    {"MainBoardTemp", kBoth, "Float", "float", ORV_FLOAT("%0.2f", h.mainBoardTemp)},
    {"PowerBoardTemp", kBoth, "Float", "float", ORV_FLOAT("%0.2f", h.powerBoardTemp)},
    {"DigitizerBoardTemp", kBoth, "Float", "float", ORV_FLOAT("%0.2f", h.digitizerBoardTemp)},
    {"LensTemp", kRV, "Float", "float", ORV_FLOAT("%0.2f", h.tempD)},
    {"NUCFlagTemp", kMX, "Float", "float", ORV_FLOAT("%0.2f", h.tempD)},
    {"AnalogIn_1", kBoth, "Float", "float", ORV_FLOAT("%0.3f", h.analogIn[0])},
    {"AnalogIn_2", kBoth, "Float", "float", ORV_FLOAT("%0.3f", h.analogIn[1])},
    {"AnalogIn_3", kBoth, "Float", "float", ORV_FLOAT("%0.3f", h.analogIn[2])},
    {"LockinPhase", kBoth, "Integer", "int", ORV_DEC(h.lockinPhase)},
    {"LockinPeriod", kBoth, "Integer", "int", ORV_DEC(h.lockinPeriod)},
    {"LockinValue", kBoth, "Integer", "int", ORV_DEC(h.lockinValue)},
    {"DigitalIn", kBoth, "Bitfield", "int",
     [](char* t, size_t n, const SHeader& h, bool) { return std::snprintf(t, n, "0x%02X", unsigned(h.digitalIn)); }},
    {"DigitalOut", kBoth, "Bitfield", "int",
     [](char* t, size_t n, const SHeader& h, bool) { return std::snprintf(t, n, "0x%02X", unsigned(h.digitalOut)); }},
    {"ADResolution", kBoth, "Integer", "int", ORV_DEC(h.adResolution)},
    {"ROICType", kBoth, "Integer", "int", ORV_DEC(h.roicType)},
    {"CameraType", kBoth, "Integer", "int", ORV_DEC(h.cameraType)},
    {"CameraSubType", kBoth, "Integer", "int", ORV_DEC(h.cameraSubType)},
    {"CameraSN", kBoth, "Integer", "int", ORV_DEC(h.serialNumber)},
    {"LensID", kBoth, "Integer", "int", ORV_DEC(h.lensID)},
    {"SkimmingEnabled", kMX, "Flag", "ascii", ORV_FLAG(h.skimmingEnabled)},
    {"SkimmingVoltage", kMX, "Float", "float", ORV_FLOAT("%0.3f", h.skimmingVoltage)},
    {"FPAGain", kMX, "Text", "ascii", &FPAGain},
};

#undef ORV_DEC
#undef ORV_FLAG
#undef ORV_FLOAT

void AddRows(CFrameInfoExtra& extra, const SHeader& header, unsigned variant)
{
    // Wide enough for any row: "%f" of a double can be 300+ characters.
    char text[400];
    const bool mx = variant == kMX;
    for (const SEntryRow& row : kEntries) {
        if (!(row.variants & variant)) continue;
        row.format(text, sizeof text, header, mx);
        extra.Add(row.key, text, row.unit, row.type);
    }
}

void AddFloat(CFrameInfoExtra& extra, const char* key, const char* format, double value, const char* unit)
{
    char text[400];
    std::snprintf(text, sizeof text, format, value);
    extra.Add(key, text, unit, "");
}

void AddInt(CFrameInfoExtra& extra, const char* key, int value)
{
    char text[16];
    std::snprintf(text, sizeof text, "%d", value);
    extra.Add(key, text, "Integer", "");
}

} // namespace

void CTLKFilterRV::AddEntries(CFrameInfoExtra& extra, const SHeader& header) const { AddRows(extra, header, kRV); }

void CTLKFilterMX::AddEntries(CFrameInfoExtra& extra, const SHeader& header) const { AddRows(extra, header, kMX); }

void CTLKFilterMX::AddLensEntries(CFrameInfoExtra& extra, const SRawHeader& raw, CReduceObjectArray& objects)
{
    STLKLens lens;
    if (tlkDecodeDRAVHeader(lens, raw) == kTLKLensOK) {
        const bool full = (lens.lensType & 7) == 1;
        AddFloat(extra, "LensFocalLength", "%0.2f", lens.focalLength, "Float");
        AddInt(extra, "LensFOVEncoderPos", lens.fovEncoder);
        AddInt(extra, "LensFocusEncoderPos", lens.focusEncoder);
        if (full) {
            AddFloat(extra, "LensAnalogTemp", "%0.2f", lens.analogTemp, "Float");
            AddFloat(extra, "LensBoardTemp", "%0.2f", lens.boardTemp, "Float");
        }
        AddFloat(extra, "LensExtTemp1", "%0.2f", lens.extTemp1, "Float");
        AddFloat(extra, "LensExtTemp2", "%0.2f", lens.extTemp2, "Float");
        if (full) AddFloat(extra, "LensExtTemp3", "%0.2f", lens.extTemp3, "Float");

        // The detector pitch of 14 um is fixed for this family; a focal
        // length of 0 gives an infinite field of view, not an error.
        const double ifov = double(14.0f / lens.focalLength) * 1000.0;
        if (TSharedPtr<CFOVReduceObject> fov = objects.GetFOV(true)) {
            fov->valid = true;
            fov->iHFov = ifov;
            fov->iVFov = ifov;
            AddFloat(extra, "IHFOV", "%0.3f", fov->iHFov, "Float");
            AddFloat(extra, "IVFOV", "%0.3f", fov->iVFov, "Float");
        }
    }
    uint16_t focus = 0;
    if (tlkDecodeMoskHeader(focus, raw) == kTLKLensOK) AddInt(extra, "LensFocusEncoderPos", focus);
}

} // namespace orv::reduce
