#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/TLKFilter.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr uint16_t kW = 64, kH = 2;

// A frame of (kH + 1) rows, written byte by byte at the header's offsets.
struct SFrame {
    std::vector<unsigned char> bytes = std::vector<unsigned char>(size_t(kW) * 2 * (kH + 1), 0);
    void U8(size_t at, unsigned v) { bytes[at] = uint8_t(v); }
    void U16(size_t at, unsigned v) { U8(at, v & 0xFF), U8(at + 1, v >> 8); }
    void U32(size_t at, uint32_t v) { U16(at, v & 0xFFFF), U16(at + 2, v >> 16); }
    void HiLo(size_t at, uint32_t v) { U16(at, v >> 16), U16(at + 2, v & 0xFFFF); }
    unsigned char* data() { return bytes.data(); }
    uint32_t size() const { return uint32_t(bytes.size()); }
};

// Every field set to a value whose text is known.
SFrame FullHeader()
{
    SFrame f;
    f.U8(0, 7);
    f.U8(1, 1); // 11.1 MHz
    f.HiLo(2, 1u << 31 | 123u << 18 | 14u << 12 | 35u << 6 | 27u);
    f.HiLo(6, 1500); // 1 ms 500 us
    f.U16(10, 0xC003 | 0x20 | 0x08);
    f.U16(12, 27315), f.U16(14, 29815), f.U16(16, 31315), f.U16(18, 30000);
    f.U32(20, 0x89ABCDEF);
    f.U32(24, 11100);
    f.U16(28, uint16_t(-9));
    f.U16(30, 5);
    const unsigned fpa[5] = {0x0001, 0x00AB, 0x1234, 0xFFFF, 0x0000};
    for (int i = 0; i < 5; ++i) f.U16(34 + 2 * i, fpa[i]);
    f.U16(44, 4000);
    f.U32(46, 0x80000000u | 1234);
    f.U32(50, 111000); // 100 Hz at 11.1 MHz
    f.U16(54, 8192);
    f.U16(56, uint16_t(-3));
    f.U8(58, 2), f.U8(59, 19), f.U8(60, 3), f.U8(61, 5);
    f.U16(62, uint16_t(-1250));
    f.U16(64, 30315), f.U16(66, 31315), f.U16(68, 32315), f.U16(70, 28315);
    f.U16(72, 3300), f.U16(74, 0), f.U16(76, 65535);
    f.U32(78, 77), f.U32(82, 1000000), f.U16(86, 42);
    f.U8(88, 0xA5), f.U8(89, 0x0F);
    f.U16(90, 14), f.U16(92, 4321), f.U16(94, 9);
    f.U8(122, 1); // "Med" for ROIC 19
    f.U8(123, 3);
    f.U16(124, 250);
    return f;
}

struct SExpected {
    const char* key;
    const char* value;
    const char* unit;
    const char* type;
};

// Rows of both variants, the variant-only ones marked by the first letter of
// their value list: R for RV only, M for MX only.
const SExpected kCommonHead[] = {
    {"ActivePreset", "3", "Counter", "int"},     {"FrameCounter", "2309737967", "Counter", "int"},
    {"HeaderID", "7", "Integer", "int"},         {"IRIGLocked", "T", "Flag", "ascii"},
    {"Trigger", "T", "Flag", "ascii"},
};

std::vector<SExpected> Expected(bool mx)
{
    std::vector<SExpected> e(std::begin(kCommonHead), std::end(kCommonHead));
    if (mx) e.push_back({"RecordStart", "T", "Flag", "ascii"});
    e.insert(e.end(), {{"VideoNUCOn", "F", "Flag", "ascii"},
                       {"GigENucOn", "T", "Flag", "ascii"},
                       {"CameraLinkNUCOn", "F", "Flag", "ascii"},
                       {"FlagInFOV", "T", "Flag", "ascii"}});
    if (mx) {
        e.insert(e.end(), {{"FrontPanelTemp", "0.00", "Float", "float"},
                           {"AirGapTemp", "25.00", "Float", "float"},
                           {"InternalTemp", "40.00", "Float", "float"},
                           {"FPATemp", "26.85", "Float", "float"}});
    } else {
        e.insert(e.end(), {{"ChassisTemp", "0.00", "Float", "float"}, {"FPATemp", "300.00", "Float", "float"}});
    }
    e.insert(e.end(), {{"IntegrationTime", "1.000000", "Float", "float"},
                       {"FilterID", "5", "Integer", "int"},
                       {"FPAControlWord", "0x000100AB1234FFFF0000", "Text", "ascii"},
                       {"SaturationThreshold", "4000", "Integer", "int"},
                       {"SaturatedPixels", "1234", "Integer", "int"},
                       {"SaturationFlag", "T", "Flag", "ascii"},
                       {"FrameRate", "100.00", "Float", "float"},
                       {"DigitalGain", "0.500", "Float", "float"},
                       {"DigitalOffset", "-1.5", "Float", "float"},
                       {"DetectorType", "2", "Integer", "int"},
                       {"AnalogOffset", "-1.250", "Float", "float"},
                       {"MainBoardTemp", "30.00", "Float", "float"},
                       {"PowerBoardTemp", "40.00", "Float", "float"},
                       {"DigitizerBoardTemp", "50.00", "Float", "float"}});
    e.push_back(mx ? SExpected{"NUCFlagTemp", "10.00", "Float", "float"}
                   : SExpected{"LensTemp", "10.00", "Float", "float"});
    e.insert(e.end(), {{"AnalogIn_1", "3.300", "Float", "float"},
                       {"AnalogIn_2", "0.000", "Float", "float"},
                       {"AnalogIn_3", "65.535", "Float", "float"},
                       {"LockinPhase", "77", "Integer", "int"},
                       {"LockinPeriod", "1000000", "Integer", "int"},
                       {"LockinValue", "42", "Integer", "int"},
                       {"DigitalIn", "0xA5", "Bitfield", "int"},
                       {"DigitalOut", "0x0F", "Bitfield", "int"},
                       {"ADResolution", "14", "Integer", "int"},
                       {"ROICType", "19", "Integer", "int"},
                       {"CameraType", "3", "Integer", "int"},
                       {"CameraSubType", "5", "Integer", "int"},
                       {"CameraSN", "4321", "Integer", "int"},
                       {"LensID", "9", "Integer", "int"}});
    if (mx) {
        e.insert(e.end(), {{"SkimmingEnabled", "T", "Flag", "ascii"},
                           {"SkimmingVoltage", "2.500", "Float", "float"},
                           {"FPAGain", "Med", "Text", "ascii"}});
    }
    return e;
}

void ExpectEntries(const CFrameInfoExtra& extra, const std::vector<SExpected>& expected, unsigned first = 0)
{
    for (size_t i = 0; i < expected.size(); ++i) {
        const CFrameInfoExtra::SEntry* e = extra.EntryAt(unsigned(first + i));
        ASSERT_NE(e, nullptr) << expected[i].key;
        EXPECT_STREQ(e->name.c_str(), expected[i].key);
        EXPECT_STREQ(e->value.c_str(), expected[i].value) << expected[i].key;
        EXPECT_STREQ(e->unit.c_str(), expected[i].unit) << expected[i].key;
        EXPECT_STREQ(e->type.c_str(), expected[i].type) << expected[i].key;
    }
}

TSharedPtr<CFrameInfoReduceObject> Parse(IFilter& f, SFrame& frame, SGuid type, CReduceObjectArray& objects,
                                         uint32_t size = 0)
{
    uint8_t preset = 0xFF;
    if (!f.ParseFrame(frame.data(), type, kW, kH, size ? size : frame.size(), STypedData(), objects, preset))
        return nullptr;
    return objects.GetFrameInfo(preset, false);
}

} // namespace

TEST(TLKFilter, EveryHeaderFieldInBothVariants)
{
    for (bool mx : {false, true}) {
        SCOPED_TRACE(mx ? "MX" : "RV");
        CTLKFilterRV rv;
        CTLKFilterMX mxf;
        IFilter& f = mx ? static_cast<IFilter&>(mxf) : rv;
        SFrame frame = FullHeader();
        CReduceObjectArray objects;
        TSharedPtr<CFrameInfoReduceObject> info = Parse(f, frame, mx ? guidTLKMX : guidTLKRV, objects);
        ASSERT_TRUE(info);
        EXPECT_EQ(info->preset, 3);
        EXPECT_EQ(info->frame, 0x89ABCDEFu);
        EXPECT_TRUE(info->valid);
        EXPECT_EQ(info->timeSource, timeSourceIRIG);
        const SDateTime t = info->time.ToStruct();
        EXPECT_EQ(t.dayOfYear, 123);
        EXPECT_EQ(t.hour, 14);
        EXPECT_EQ(t.minute, 35);
        EXPECT_EQ(t.second, 27);
        EXPECT_EQ(t.ticks, 15000); // 1 ms 500 us
        const std::vector<SExpected> expected = Expected(mx);
        EXPECT_EQ(info->extra.nValues(), expected.size()); // no lens block: no lens entries
        ExpectEntries(info->extra, expected);
    }
}

TEST(TLKFilter, DecodedValuesThatNoEntryShows)
{
    SFrame frame = FullHeader();
    SHeader h;
    tlkDecodeHeader(h, frame.data(), frame.size());
    EXPECT_FLOAT_EQ(h.value28, -4.5f);
    EXPECT_EQ(h.clockHz, 11100000u);
    EXPECT_FALSE(h.flag13);
    frame.U16(10, 0x2000);
    tlkDecodeHeader(h, frame.data(), frame.size());
    EXPECT_TRUE(h.flag13);
    frame.U8(59, 18); // inverted for this sensor
    tlkDecodeHeader(h, frame.data(), frame.size());
    EXPECT_FALSE(h.flag13);

    // Any other clock select is 6.25 MHz: 6250 ticks are 1 ms as well.
    frame.U8(1, 2);
    frame.U32(24, 6250);
    tlkDecodeHeader(h, frame.data(), frame.size());
    EXPECT_EQ(h.clockHz, 6250000u);
    EXPECT_DOUBLE_EQ(h.integrationTime, 1.0);
}

TEST(TLKFilter, FPAGainTextAndFPATempByCamera)
{
    struct {
        unsigned roic, gain;
        const char* text;
    } gains[] = {{10, 0, "High"}, {10, 1, "Low"}, {10, 2, "Low"}, {19, 0, "High"}, {20, 1, "Med"},
                 {20, 2, "Low"},  {7, 0, "0"},    {7, 200, "200"}};
    CTLKFilterMX f;
    for (const auto& g : gains) {
        SFrame frame = FullHeader();
        frame.U8(59, g.roic);
        frame.U8(122, g.gain);
        CReduceObjectArray objects;
        auto info = Parse(f, frame, guidTLKMX, objects);
        ASSERT_TRUE(info);
        EXPECT_STREQ(info->extra.GetValue("FPAGain").c_str(), g.text) << g.roic << " " << g.gain;
    }
    // Only camera 3 with sub-type 4 or 5 shows the FPA in Celsius.
    const unsigned cameras[][3] = {{3, 4, 1}, {3, 5, 1}, {3, 6, 0}, {2, 5, 0}};
    for (const auto& c : cameras) {
        SFrame frame = FullHeader();
        frame.U8(60, c[0]), frame.U8(61, c[1]);
        CReduceObjectArray objects;
        auto info = Parse(f, frame, guidTLKMX, objects);
        ASSERT_TRUE(info);
        EXPECT_STREQ(info->extra.GetValue("FPATemp").c_str(), c[2] ? "26.85" : "300.00");
    }
}

TEST(TLKFilter, LensBlocksAndFieldOfView)
{
    struct SCase {
        const char* name;
        void (*fill)(SFrame&);
        std::vector<SExpected> entries;
        double ifov; // 0: no field of view object
    };
    const SCase cases[] = {
        {"version 0",
         [](SFrame& f) {
             f.U16(96, 0x0009); // type bits 1; byte 97, the version, 0
             f.U32(98, 250);
             f.U32(102, 0xABFFFFFE); // -2 in the low 24 bits
             f.U32(106, 0x00012345);
             f.U16(110, 215), f.U16(112, uint16_t(-55)), f.U16(114, 100), f.U16(116, 200), f.U16(118, 300);
             f.U16(120, 0xBEEF);
         },
         {{"LensFocalLength", "25.00", "Float", ""},
          {"LensFOVEncoderPos", "-2", "Integer", ""},
          {"LensFocusEncoderPos", "74565", "Integer", ""},
          {"LensAnalogTemp", "21.50", "Float", ""},
          {"LensBoardTemp", "-5.50", "Float", ""},
          {"LensExtTemp1", "10.00", "Float", ""},
          {"LensExtTemp2", "20.00", "Float", ""},
          {"LensExtTemp3", "30.00", "Float", ""},
          {"IHFOV", "560.000", "Float", ""},
          {"IVFOV", "560.000", "Float", ""}},
         double(14.0f / 25.0f) * 1000.0},
        {"version 1, type 1",
         [](SFrame& f) {
             f.U8(96, 0xF9), f.U8(97, 1); // bits 0-2 give 1
             f.U16(98, 0x0064), f.U8(100, 0);
             f.U16(101, 0x0010), f.U8(103, 0xFF);
             f.U16(104, 5), f.U8(106, 1);
             f.U16(107, 1), f.U16(109, 2), f.U16(111, 3), f.U16(113, 4), f.U16(115, 5), f.U8(117, 6);
         },
         {{"LensFocalLength", "10.00", "Float", ""},
          {"LensFOVEncoderPos", "-65520", "Integer", ""},
          {"LensFocusEncoderPos", "65541", "Integer", ""},
          {"LensAnalogTemp", "0.10", "Float", ""},
          {"LensBoardTemp", "0.20", "Float", ""},
          {"LensExtTemp1", "0.30", "Float", ""},
          {"LensExtTemp2", "0.40", "Float", ""},
          {"LensExtTemp3", "0.50", "Float", ""},
          {"IHFOV", "1400.000", "Float", ""},
          {"IVFOV", "1400.000", "Float", ""}},
         double(14.0f / 10.0f) * 1000.0},
        {"version 1, type 3",
         [](SFrame& f) {
             f.U8(96, 3), f.U8(97, 1);
             f.U16(98, 0x2345), f.U8(100, 1);
             f.U16(107, 123), f.U16(109, uint16_t(-10)), f.U16(111, 999);
         },
         {{"LensFocalLength", "7456.50", "Float", ""},
          {"LensFOVEncoderPos", "0", "Integer", ""},
          {"LensFocusEncoderPos", "0", "Integer", ""},
          {"LensExtTemp1", "12.30", "Float", ""},
          {"LensExtTemp2", "-1.00", "Float", ""},
          {"IHFOV", "1.878", "Float", ""},
          {"IVFOV", "1.878", "Float", ""}},
         double(14.0f / 7456.5f) * 1000.0},
        {"focal length 0",
         [](SFrame& f) { f.U8(96, 1); },
         {{"LensFocalLength", "0.00", "Float", ""}},
         INFINITY},
        {"Mosk", [](SFrame& f) { f.U8(96, 1), f.U8(97, 2), f.U16(98, 5000); },
         {{"LensFocusEncoderPos", "5000", "Integer", ""}}, 0},
        {"version 0, type 2", [](SFrame& f) { f.U8(96, 2), f.U32(98, 250); }, {}, 0},
        {"version 1, type 2", [](SFrame& f) { f.U8(96, 2), f.U8(97, 1), f.U16(98, 250); }, {}, 0},
        {"version 3", [](SFrame& f) { f.U8(96, 1), f.U8(97, 3), f.U16(98, 250); }, {}, 0},
    };
    const unsigned headerEntries = unsigned(Expected(true).size());
    for (const SCase& c : cases) {
        SCOPED_TRACE(c.name);
        SFrame frame = FullHeader();
        c.fill(frame);
        CTLKFilterMX f;
        CReduceObjectArray objects;
        auto info = Parse(f, frame, guidTLKMX, objects);
        ASSERT_TRUE(info);
        ExpectEntries(info->extra, c.entries, headerEntries);
        TSharedPtr<CFOVReduceObject> fov = objects.GetFOV(false);
        if (c.ifov == 0) {
            EXPECT_EQ(info->extra.nValues(), headerEntries + c.entries.size());
            EXPECT_FALSE(fov);
        } else {
            ASSERT_TRUE(fov);
            EXPECT_TRUE(fov->valid);
            EXPECT_EQ(fov->iHFov, c.ifov);
            EXPECT_EQ(fov->iVFov, c.ifov);
        }
        // The RV variant shows no lens entries at all.
        CTLKFilterRV rv;
        CReduceObjectArray rvObjects;
        auto rvInfo = Parse(rv, frame, guidTLKRV, rvObjects);
        ASSERT_TRUE(rvInfo);
        EXPECT_EQ(rvInfo->extra.nValues(), Expected(false).size());
    }
}

TEST(TLKFilter, EachFrameReplacesTheEntriesOfTheLast)
{
    SFrame lensFrame = FullHeader();
    lensFrame.U8(96, 1), lensFrame.U32(98, 250);
    SFrame plain = FullHeader();
    CTLKFilterMX f;
    CReduceObjectArray objects;
    auto info = Parse(f, lensFrame, guidTLKMX, objects);
    ASSERT_TRUE(info);
    const size_t header = Expected(true).size();
    EXPECT_EQ(info->extra.nValues(), header + 10);
    info->extra.Add("Note", "kept?", "", "");
    info->extra.SetClass("FrameCounter", "mine");
    info = Parse(f, plain, guidTLKMX, objects);
    EXPECT_EQ(info->extra.nValues(), header);
    ExpectEntries(info->extra, Expected(true));
    EXPECT_TRUE(info->extra.GetClass("FrameCounter").empty());
    info = Parse(f, lensFrame, guidTLKMX, objects);
    EXPECT_TRUE(info->extra.GetValue("LensFocalLength") == "25.00");
}

TEST(TLKFilter, PeeksTriggersAndTimeSource)
{
    SFrame frame = FullHeader();
    frame.U16(10, 0xC003);
    CTLKFilterRV rv;
    CTLKFilterMX mx;
    for (IFilter* f : {static_cast<IFilter*>(&rv), static_cast<IFilter*>(&mx)}) {
        const SGuid type = f == &rv ? guidTLKRV : guidTLKMX;
        uint8_t preset = 0;
        uint64_t counter = 0;
        CDateTime time;
        ASSERT_TRUE(f->ParseBasicInfo(frame.data(), type, kW, kH, frame.size(), preset, counter, time));
        EXPECT_EQ(preset, 3);
        EXPECT_EQ(counter, 0x89ABCDEFu);
        EXPECT_EQ(time.ToStruct().minute, 35);
        bool triggered = false;
        uint16_t position = 9;
        EXPECT_TRUE(f->CheckForTrigger(frame.data(), frame.size(), type, kW, kH, 0, 0, triggered, position));
        EXPECT_TRUE(triggered);
        EXPECT_EQ(position, 0);
        // Frames shorter than the header, and unknown types, fail.
        EXPECT_FALSE(f->CheckForTrigger(frame.data(), 125, type, kW, kH, 0, 0, triggered, position));
        EXPECT_FALSE(f->CheckForTrigger(frame.data(), frame.size(), guidBRG, kW, kH, 0, 0, triggered, position));
        EXPECT_FALSE(f->ParsePreset(frame.data(), guidBRG, kW, kH, frame.size(), preset));
        // A peek needs its own field in the frame, nothing more.
        EXPECT_FALSE(f->ParseFrameCounter(frame.data(), type, kW, kH, 23, counter));
        EXPECT_TRUE(f->ParseFrameCounter(frame.data(), type, kW, kH, 24, counter));
        EXPECT_FALSE(f->ParsePreset(frame.data(), type, kW, kH, 11, preset));
        EXPECT_FALSE(f->ParseTime(frame.data(), type, kW, kH, 9, time));
        EXPECT_FALSE(f->ParseBasicInfo(frame.data(), type, kW, kH, 23, preset, counter, time));
    }
    bool triggered = false;
    uint16_t position = 0;
    EXPECT_FALSE(rv.CheckForTrigger(frame.data(), frame.size(), guidTLKRV, kW, kH, 0, 1, triggered, position));
    EXPECT_TRUE(mx.CheckForTrigger(frame.data(), frame.size(), guidTLKMX, kW, kH, 0, 1, triggered, position));
    EXPECT_TRUE(triggered);
    EXPECT_FALSE(mx.CheckForTrigger(frame.data(), frame.size(), guidTLKMX, kW, kH, 0, 2, triggered, position));
    frame.U16(10, 0x8000);
    EXPECT_TRUE(mx.CheckForTrigger(frame.data(), frame.size(), guidTLKMX, kW, kH, 0, 1, triggered, position));
    EXPECT_FALSE(triggered);

    TArray<CString> names{"stale"};
    EXPECT_TRUE(rv.GetTriggerFields(guidBRG, names));
    ASSERT_EQ(names.size(), 1u);
    EXPECT_TRUE(mx.GetTriggerFields(guidTLKMX, names));
    ASSERT_EQ(names.size(), 2u);
    EXPECT_TRUE(names[0] == "Trigger" && names[1] == "RecordStart");

    // Unlocked IRIG is the camera's clock.
    frame.HiLo(2, 123u << 18);
    CReduceObjectArray objects;
    auto info = Parse(rv, frame, guidTLKRV, objects);
    ASSERT_TRUE(info);
    EXPECT_TRUE(info->GetAt(3).value == "Camera");
    EXPECT_TRUE(info->extra.GetValue("IRIGLocked") == "F");
}

TEST(TLKFilter, HeaderAndPixelAccess)
{
    CTLKFilterRV rv;
    CTLKFilterMX mx;
    SGuid type;
    uint32_t size = 0;
    const std::pair<uint16_t, uint32_t> sizes[] = {{47, 94}, {48, 96}, {640, 96}};
    for (const auto& [width, expected] : sizes) {
        EXPECT_TRUE(rv.GetHeaderInfo(guidTLKRV, width, 1, 0, type, size));
        EXPECT_EQ(size, expected);
        EXPECT_EQ(type, guidTLKRVHdr);
    }
    EXPECT_FALSE(rv.GetHeaderInfo(guidTLKRVHdr, 640, 1, 0, type, size));
    EXPECT_TRUE(mx.GetHeaderInfo(guidTLKMX, 640, 1, 0, type, size));
    EXPECT_EQ(type, guidTLKMXHdr);
    EXPECT_TRUE(mx.HasHeader(guidTLKMX));
    EXPECT_FALSE(mx.HasHeader(guidTLKMXHdr));

    SFrame frame = FullHeader();
    for (size_t i = 0; i < frame.bytes.size(); ++i) frame.bytes[i] = uint8_t(i * 7 + 1);
    std::vector<unsigned char> out(200, 0xEE);
    ASSERT_TRUE(rv.ExtractHeader(frame.data(), guidTLKRV, kW, kH, frame.size(), out.data(), 200));
    EXPECT_EQ(std::memcmp(out.data(), frame.data(), 96), 0);
    for (size_t i = 96; i < 200; ++i) EXPECT_EQ(out[i], 0) << i;
    // Never more than the frame holds.
    std::fill(out.begin(), out.end(), 0xEE);
    ASSERT_TRUE(rv.ExtractHeader(frame.data(), guidTLKRV, kW, kH, 10, out.data(), 200));
    EXPECT_EQ(out[9], frame.bytes[9]);
    EXPECT_EQ(out[10], 0);
    EXPECT_FALSE(rv.ExtractHeader(frame.data(), guidTLKRVHdr, kW, kH, frame.size(), out.data(), 200));

    EXPECT_FALSE(rv.HasPixels(guidTLKRVHdr));
    EXPECT_TRUE(mx.HasPixels(guidTLKMXHdr));
    EXPECT_TRUE(rv.HasPixels(pixelGrayscale));
    void* at = nullptr;
    int stride = 0;
    ASSERT_TRUE(mx.GetPixels(frame.data(), guidTLKMXHdr, kW, kH, frame.size(), &at, stride));
    EXPECT_EQ(at, frame.data() + kW * 2);
    EXPECT_EQ(stride, kW * 2);
    EXPECT_FALSE(mx.GetPixels(frame.data(), guidTLKMX, kW, kH, frame.size() - 1, &at, stride));
    EXPECT_EQ(at, nullptr);

    // The image follows the header row; a short frame gives what it holds,
    // a frame without a whole header row nothing.
    CReduceObjectArray objects;
    uint8_t preset = 0;
    std::vector<uint16_t> pixels(size_t(kW) * kH + 1, 0xAAAA);
    ASSERT_TRUE(rv.ParseFrame(frame.data(), guidTLKRV, kW, kH, frame.size(), STypedData(pixels.data(), dtUInt16),
                              objects, preset));
    EXPECT_EQ(std::memcmp(pixels.data(), frame.data() + kW * 2, size_t(kW) * kH * 2), 0);
    EXPECT_EQ(pixels.back(), 0xAAAA);
    std::fill(pixels.begin(), pixels.end(), 0xAAAA);
    ASSERT_TRUE(rv.ParseFrame(frame.data(), guidTLKRV, kW, kH, kW * 2 + 6, STypedData(pixels.data(), dtUInt16),
                              objects, preset));
    EXPECT_EQ(std::memcmp(pixels.data(), frame.data() + kW * 2, 6), 0);
    EXPECT_EQ(pixels[3], 0xAAAA);
    std::fill(pixels.begin(), pixels.end(), 0xAAAA);
    ASSERT_TRUE(rv.ParseFrame(frame.data(), guidTLKRV, kW, kH, 100, STypedData(pixels.data(), dtUInt16), objects,
                              preset));
    EXPECT_EQ(pixels[0], 0xAAAA);
    // Only 16-bit buffers: an 8-bit one would be overrun.
    EXPECT_FALSE(rv.ParseFrame(frame.data(), guidTLKRV, kW, kH, frame.size(), STypedData(pixels.data(), dtUInt8),
                               objects, preset));
    EXPECT_FALSE(rv.ParseFrame(frame.data(), guidTLKMX, kW, kH, frame.size(), STypedData(), objects, preset));
}

TEST(TLKFilter, StoredHeadersReadAsFramesWithoutLensBlock)
{
    // A lens block lies in the memory behind a 96-byte stored header; it is
    // not the header's and must not be read.
    SFrame frame = FullHeader();
    frame.U8(96, 1), frame.U8(97, 2), frame.U16(98, 5000);
    CTLKFilterMX mx;
    CReduceObjectArray objects;
    auto info = Parse(mx, frame, guidTLKMXHdr, objects, 96);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->extra.nValues(), Expected(true).size());
    EXPECT_TRUE(info->extra.GetValue("FPAGain") == "High"); // byte 122 reads 0
    EXPECT_TRUE(info->extra.GetValue("LensID") == "9");
    // A field cut by the end reads zero: the lens identifier at 94 needs 96.
    info = Parse(mx, frame, guidTLKMXHdr, objects, 95);
    ASSERT_TRUE(info);
    EXPECT_TRUE(info->extra.GetValue("LensID") == "0");

    // Stored headers of an abated recording are preset 0.
    objects.GetSourceInfo(true)->abated = true;
    uint8_t preset = 9;
    ASSERT_TRUE(mx.ParseFrame(frame.data(), guidTLKMXHdr, kW, kH, 96, STypedData(), objects, preset));
    EXPECT_EQ(preset, 0);
    EXPECT_EQ(objects.GetFrameInfo(0, false)->frame, 0x89ABCDEFu);
    ASSERT_TRUE(mx.ParseFrame(frame.data(), guidTLKMX, kW, kH, 96, STypedData(), objects, preset));
    EXPECT_EQ(preset, 3);
}

TEST(TLKFilter, FactoryAndRegistration)
{
    for (const auto& [type, name] : {std::pair{guidTLKRV, "TLK-RV"}, std::pair{guidTLKRVHdr, "TLK-RV"},
                                     std::pair{guidTLKMX, "TLK-MX"}, std::pair{guidTLKMXHdr, "TLK-MX"}}) {
        TSharedPtr<IFilter> f = filterFactory()->CreateForPixelType(type);
        ASSERT_TRUE(f) << name;
        EXPECT_STREQ(f->GetName(), name);
        EXPECT_TRUE(f->HasTime(type) && f->HasFrameCounter(type));
        EXPECT_EQ(f->FrameCounterMaxValue(type), 4294967295u);
    }
}
