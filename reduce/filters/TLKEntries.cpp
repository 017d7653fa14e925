// The extra frame info entries of the two TLK variants: one table in the
// order both show them, each row marked with the variants that carry it.
//
// This runs for every frame, some 60 entries, so values are formatted with
// std::to_chars (the same digits as printf's "%u" and "%.Nf", both exact)
// and the list is refilled in place rather than cleared and rebuilt.
#include <charconv>
#include <cstdio>

#include "reduce/filters/TLKFilter.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoExtra.h"

namespace orv::reduce {

namespace {

constexpr unsigned kRV = 1, kMX = 2, kBoth = kRV | kMX;

// Writes the value's text from first, returns its end.
using FFormat = char* (*)(char* first, const SHeader& h, bool mx);
constexpr size_t kTextSize = 400; // "%.6f" of the largest double is 300+ characters

struct SEntryRow {
    const char* key;
    unsigned variants;
    const char* unit;
    const char* type;
    FFormat format;
};

char* Dec(char* t, unsigned long long value) { return std::to_chars(t, t + 24, value).ptr; }
char* Int(char* t, long long value) { return std::to_chars(t, t + 24, value).ptr; }
// printf's "%.Nf".
char* Fixed(char* t, double value, int precision)
{
    return std::to_chars(t, t + kTextSize - 1, value, std::chars_format::fixed, precision).ptr;
}
char* Flag(char* t, bool value)
{
    *t = value ? 'T' : 'F';
    return t + 1;
}
// printf's "%0NX" of one value, N digits.
char* Hex(char* t, unsigned value, int digits)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (int i = digits - 1; i >= 0; --i) t[digits - 1 - i] = kDigits[(value >> (4 * i)) & 15];
    return t + digits;
}
char* Text(char* t, const char* text)
{
    while (*text) *t++ = *text++;
    return t;
}

#define ORV_DEC(expr) [](char* t, const SHeader& h, bool) { return Dec(t, (expr)); }
#define ORV_FLAG(expr) [](char* t, const SHeader& h, bool) { return Flag(t, (expr)); }
#define ORV_FIXED(precision, expr) [](char* t, const SHeader& h, bool) { return Fixed(t, double(expr), precision); }
#define ORV_HEX2(expr) [](char* t, const SHeader& h, bool) { return Hex(Text(t, "0x"), (expr), 2); }

// The MX variant shows the FPA temperature in Celsius for these cameras only;
// intended, they report it offset.
char* FPATemp(char* t, const SHeader& h, bool mx)
{
    double value = h.tempFPA;
    if (mx && h.cameraType == 3 && (h.cameraSubType == 4 || h.cameraSubType == 5)) value = double(h.tempFPA) - 273.15;
    return Fixed(t, value, 2);
}

char* FPAControlWord(char* t, const SHeader& h, bool)
{
    t = Text(t, "0x");
    for (uint16_t word : h.fpaControl) t = Hex(t, word, 4);
    return t;
}

char* FPAGain(char* t, const SHeader& h, bool)
{
    if (h.roicType == 10) return Text(t, h.fpaGain == 0 ? "High" : "Low");
    if (h.roicType == 19 || h.roicType == 20) return Text(t, h.fpaGain == 0 ? "High" : h.fpaGain == 1 ? "Med" : "Low");
    return Dec(t, h.fpaGain);
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
    {"ChassisTemp", kRV, "Float", "float", ORV_FIXED(2, h.tempA)},
    {"FrontPanelTemp", kMX, "Float", "float", ORV_FIXED(2, h.tempA)},
    {"AirGapTemp", kMX, "Float", "float", ORV_FIXED(2, h.tempB)},
    {"InternalTemp", kMX, "Float", "float", ORV_FIXED(2, h.tempC)},
    {"FPATemp", kBoth, "Float", "float", &FPATemp},
    {"IntegrationTime", kBoth, "Float", "float", ORV_FIXED(6, h.integrationTime)},
    {"FilterID", kBoth, "Integer", "int", ORV_DEC(h.filterID)},
    {"FPAControlWord", kBoth, "Text", "ascii", &FPAControlWord},
    {"SaturationThreshold", kBoth, "Integer", "int", ORV_DEC(h.saturationThreshold)},
    {"SaturatedPixels", kBoth, "Integer", "int", ORV_DEC(h.saturatedPixels)},
    {"SaturationFlag", kBoth, "Flag", "ascii", ORV_FLAG(h.saturationFlag)},
    {"FrameRate", kBoth, "Float", "float", ORV_FIXED(2, h.frameRate)},
    {"DigitalGain", kBoth, "Float", "float", ORV_FIXED(3, h.digitalGain)},
    {"DigitalOffset", kBoth, "Float", "float", ORV_FIXED(1, h.digitalOffset)},
    {"DetectorType", kBoth, "Integer", "int", ORV_DEC(h.detectorType)},
    {"AnalogOffset", kBoth, "Float", "float", ORV_FIXED(3, h.analogOffset)},
    {"MainBoardTemp", kBoth, "Float", "float", ORV_FIXED(2, h.mainBoardTemp)},
    {"PowerBoardTemp", kBoth, "Float", "float", ORV_FIXED(2, h.powerBoardTemp)},
    {"DigitizerBoardTemp", kBoth, "Float", "float", ORV_FIXED(2, h.digitizerBoardTemp)},
    {"LensTemp", kRV, "Float", "float", ORV_FIXED(2, h.tempD)},
    {"NUCFlagTemp", kMX, "Float", "float", ORV_FIXED(2, h.tempD)},
    {"AnalogIn_1", kBoth, "Float", "float", ORV_FIXED(3, h.analogIn[0])},
    {"AnalogIn_2", kBoth, "Float", "float", ORV_FIXED(3, h.analogIn[1])},
    {"AnalogIn_3", kBoth, "Float", "float", ORV_FIXED(3, h.analogIn[2])},
    {"LockinPhase", kBoth, "Integer", "int", ORV_DEC(h.lockinPhase)},
    {"LockinPeriod", kBoth, "Integer", "int", ORV_DEC(h.lockinPeriod)},
    {"LockinValue", kBoth, "Integer", "int", ORV_DEC(h.lockinValue)},
    {"DigitalIn", kBoth, "Bitfield", "int", ORV_HEX2(h.digitalIn)},
    {"DigitalOut", kBoth, "Bitfield", "int", ORV_HEX2(h.digitalOut)},
    {"ADResolution", kBoth, "Integer", "int", ORV_DEC(h.adResolution)},
    {"ROICType", kBoth, "Integer", "int", ORV_DEC(h.roicType)},
    {"CameraType", kBoth, "Integer", "int", ORV_DEC(h.cameraType)},
    {"CameraSubType", kBoth, "Integer", "int", ORV_DEC(h.cameraSubType)},
    {"CameraSN", kBoth, "Integer", "int", ORV_DEC(h.serialNumber)},
    {"LensID", kBoth, "Integer", "int", ORV_DEC(h.lensID)},
    {"SkimmingEnabled", kMX, "Flag", "ascii", ORV_FLAG(h.skimmingEnabled)},
    {"SkimmingVoltage", kMX, "Float", "float", ORV_FIXED(3, h.skimmingVoltage)},
    {"FPAGain", kMX, "Text", "ascii", &FPAGain},
};

#undef ORV_DEC
#undef ORV_FLAG
#undef ORV_FIXED
#undef ORV_HEX2

// Refills the list entry by entry; Finish drops what the last frame had more.
class CEntryWriter {
public:
    explicit CEntryWriter(CFrameInfoExtra& extra) : m_extra(extra) {}
    void Put(const char* key, const char* text, const char* end, const char* unit, const char* type)
    {
        m_extra.SetAt(m_count++, key, text, size_t(end - text), unit, type);
    }
    void Fixed(const char* key, double value, int precision, const char* unit)
    {
        char text[kTextSize];
        Put(key, text, reduce::Fixed(text, value, precision), unit, "");
    }
    void Int(const char* key, long long value)
    {
        char text[24];
        Put(key, text, reduce::Int(text, value), "Integer", "");
    }
    void Finish() { m_extra.Truncate(m_count); }

private:
    CFrameInfoExtra& m_extra;
    unsigned m_count = 0;
};

// The lens entries of the MX variant, and the field of view that a usable
// focal length gives.
void AddLensEntries(CEntryWriter& out, const SRawHeader& raw, CReduceObjectArray& objects)
{
    STLKLens lens;
    if (tlkDecodeDRAVHeader(lens, raw) == kTLKLensOK) {
        const bool full = (lens.lensType & 7) == 1;
        out.Fixed("LensFocalLength", lens.focalLength, 2, "Float");
        out.Int("LensFOVEncoderPos", lens.fovEncoder);
        out.Int("LensFocusEncoderPos", lens.focusEncoder);
        if (full) {
            out.Fixed("LensAnalogTemp", lens.analogTemp, 2, "Float");
            out.Fixed("LensBoardTemp", lens.boardTemp, 2, "Float");
        }
        out.Fixed("LensExtTemp1", lens.extTemp1, 2, "Float");
        out.Fixed("LensExtTemp2", lens.extTemp2, 2, "Float");
        if (full) out.Fixed("LensExtTemp3", lens.extTemp3, 2, "Float");

        // The detector pitch of 14 um is fixed for this family; a focal
        // length of 0 gives an infinite field of view, not an error.
        const double ifov = double(14.0f / lens.focalLength) * 1000.0;
        if (TSharedPtr<CFOVReduceObject> fov = objects.GetFOV(true)) {
            fov->valid = true;
            fov->iHFov = ifov;
            fov->iVFov = ifov;
            out.Fixed("IHFOV", fov->iHFov, 3, "Float");
            out.Fixed("IVFOV", fov->iVFov, 3, "Float");
        }
    }
    // A focus-only block is never a usable block of the other forms, so its
    // entry is not there yet.
    uint16_t focus = 0;
    if (tlkDecodeMoskHeader(focus, raw) == kTLKLensOK) out.Int("LensFocusEncoderPos", focus);
}

} // namespace

void tlkFillEntries(CFrameInfoExtra& extra, const SHeader& header, const SRawHeader& raw, bool mx,
                    CReduceObjectArray& objects)
{
    CEntryWriter out(extra);
    const unsigned variant = mx ? kMX : kRV;
    char text[kTextSize];
    for (const SEntryRow& row : kEntries) {
        if (!(row.variants & variant)) continue;
        out.Put(row.key, text, row.format(text, header, mx), row.unit, row.type);
    }
    if (mx) AddLensEntries(out, raw, objects);
    out.Finish();
}

} // namespace orv::reduce
