#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "reduce/objects/BrennicFrameInfoReduceObject.h"
#include "reduce/objects/CorvaneFrameInfoReduceObject.h"
#include "reduce/objects/FrameHeaderReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/GPSData.h"

namespace orv::reduce {
namespace {

std::string S(const CString& s) { return s.c_str(); }

TEST(FrameInfoExtra, EntriesByName)
{
    CFrameInfoExtra x;
    x.Add("Gain", "2", "dB", "int");
    x.Add("Temp", "25.5", "C", "float");
    EXPECT_EQ(x.nValues(), 2u);
    EXPECT_EQ(x.FindValue("gain"), 0u);
    EXPECT_EQ(x.FindValue("TEMP"), 1u);
    EXPECT_EQ(x.FindValue("none"), CFrameInfoExtra::kNotFound);

    // The fixed items' names are ignored in any case.
    for (const char* fixed : {"time", "FRAMENUMBER", "Preset", "timesource"}) {
        x.Add(fixed, "1", "", "");
        x.SetUnit(fixed, "u");
        x.AddPlaceholder(fixed, "u", "t");
    }
    EXPECT_EQ(x.nValues(), 2u);

    // SetValue replaces all three fields; the placeholder keeps the value.
    x.SetValue("gain", "3", "", "");
    EXPECT_EQ(S(x.GetValue("Gain")), "3");
    EXPECT_EQ(S(x.GetUnit("Gain")), "");
    x.AddPlaceholder("Gain", "x", "int");
    EXPECT_EQ(S(x.GetValue("Gain")), "3");
    EXPECT_EQ(S(x.GetUnit("Gain")), "x");
    x.AddPlaceholder("New", "mm", "float");
    EXPECT_EQ(x.FindValue("New"), 2u);
    EXPECT_EQ(S(x.GetValue("New")), "");

    x.SetClass("Other", "hdr");
    EXPECT_EQ(S(x.GetClass("other")), "hdr");
    EXPECT_EQ(S(x.GetValue("Other")), "");
    EXPECT_EQ(S(x.GetType("missing")), "");

    CFrameInfoExtra copy = x;
    copy.Remove("Temp");
    copy.Remove("unknown");
    EXPECT_EQ(copy.nValues(), 3u);
    EXPECT_EQ(x.nValues(), 4u);
    EXPECT_EQ(copy.FindValue("New"), 1u);
    copy.Clear();
    EXPECT_EQ(copy.nValues(), 0u);
    EXPECT_EQ(S(x.GetValue("Temp")), "25.5");
}

TEST(FrameInfoExtra, EntryProxy)
{
    CFrameInfoExtra x;
    x["Count"] = 5;
    EXPECT_EQ(S(x.GetValue("Count")), "5");
    x["Ratio"] = 2.5;
    EXPECT_EQ(S(x.GetValue("Ratio")), "2.500000");
    x["Big"] = 1234567890123L;
    EXPECT_EQ(S(x.GetValue("Big")), "1234567890123");
    EXPECT_EQ(static_cast<long>(x["Big"]), 1234567890123L);
    EXPECT_EQ(static_cast<int>(x["Count"]), 5);
    EXPECT_EQ(static_cast<double>(x["Ratio"]), 2.5);

    // Assignment clears what was there besides the value.
    x["Count"].setUnit("frames");
    x["Count"].setType("int");
    EXPECT_EQ(S(x["Count"].getUnit()), "frames");
    x["Count"] = 6;
    EXPECT_EQ(S(x["Count"].getUnit()), "");
    EXPECT_EQ(S(x["Count"].getType()), "");
    EXPECT_EQ(S(x["Count"].setValue("7")), "7");

    CFrameInfoExtra::CEntry absent = x["Absent"];
    EXPECT_FALSE(absent.Exists());
    EXPECT_EQ(x.nValues(), 3u); // a proxy alone creates nothing
    absent = CString("now");
    EXPECT_TRUE(absent.Exists());

    EXPECT_EQ(S(x[1].name()), "Ratio");
    EXPECT_FALSE(x[99].Exists());
    EXPECT_FALSE(x[-1].Exists());
    EXPECT_EQ(S(x[99].name()), "");

    // One proxy assigned to another copies the value.
    x["Copy"] = x["Ratio"];
    EXPECT_EQ(S(x.GetValue("Copy")), "2.500000");
    CString asText = x["Count"];
    EXPECT_EQ(S(asText), "7");
}

TEST(FrameInfo, FixedAndExtraEntries)
{
    CFrameInfoReduceObject f;
    EXPECT_EQ(f.NumEntries(), 4u);

    f.frame = 123456789012ULL;
    f.preset = 200;
    f.extra.Add("Gain", "3", "dB", "int");
    EXPECT_EQ(f.NumEntries(), 5u);

    // The four fixed items, then the extra list; the preset byte reads as unsigned.
    const char* entries[5][4] = {{"Time", "", "IRIG", "ascii"},
                                 {"FrameNumber", "123456789012", "counter", "int"},
                                 {"Preset", "200", "counter", "int"},
                                 {"TimeSource", "Unknown", "none", "ascii"},
                                 {"Gain", "3", "dB", "int"}};
    for (unsigned i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        const CFrameInfoReduceObject::SEntry e = f.GetAt(i);
        EXPECT_TRUE(e.exists);
        EXPECT_EQ(S(e.name), entries[i][0]);
        if (i != 0) { // an empty time's text is the date class's business
            EXPECT_EQ(S(e.value), entries[i][1]);
        }
        EXPECT_EQ(S(e.unit), entries[i][2]);
        EXPECT_EQ(S(e.type), entries[i][3]);
    }
    EXPECT_FALSE(f.GetAt(f.NumEntries()).exists);
    EXPECT_EQ(S(f.GetValueAt(f.NumEntries())), "");
    EXPECT_EQ(S(f.GetNameAt(4)), "Gain");

    // The extra entry's index is that of the extra list: 0, like "Time".
    EXPECT_EQ(f.GetIndex("gain"), 0u);
    EXPECT_EQ(f.GetIndex("TIME"), 0u);
    EXPECT_EQ(f.GetIndex("TimeSource"), 3u);
    EXPECT_EQ(f.GetIndex("none"), CFrameInfoExtra::kNotFound);

    EXPECT_EQ(S(f.GetValue("framenumber")), "123456789012");
    EXPECT_EQ(S(f.GetUnit("Gain")), "dB");
    CString value = f.Get("Gain");
    EXPECT_EQ(S(value), "3");
}

TEST(FrameInfo, SetValueParsesTheFixedItems)
{
    CFrameInfoReduceObject f;
    // Time source names in any case; an unknown one resets.
    const struct {
        const char* text;
        ETimeSource source;
        const char* shown;
    } sources[] = {{"irig", timeSourceIRIG, "IRIG"},
                   {"camera", timeSourceCamera, "Camera"},
                   {"Pc", timeSourcePC, "PC"},
                   {"GPS", timeSourceUnknown, "Unknown"}};
    for (const auto& t : sources) {
        f.SetValue(t.text[0] == 'c' ? "timesource" : "TimeSource", t.text);
        EXPECT_EQ(f.timeSource, t.source) << t.text;
        EXPECT_EQ(S(f.GetAt(3).value), t.shown);
    }

    f.SetValue("FrameNumber", "18446744073709551615");
    EXPECT_EQ(f.frame, ~uint64_t(0));
    f.SetValue("FrameNumber", "42");
    EXPECT_EQ(f.frame, 42u);
    f.SetValue("Preset", "3");
    EXPECT_EQ(f.preset, 3);
    f.SetValue("Preset", "-1");
    EXPECT_EQ(f.preset, 0xFF);

    f.SetValue("Gain", "9");
    EXPECT_EQ(S(f.extra.GetValue("Gain")), "9");

    // Default keeps where the object belongs and drops the extra entries.
    f.Default();
    EXPECT_EQ(f.extra.nValues(), 0u);
    EXPECT_EQ(f.frame, 42u);
    EXPECT_EQ(f.preset, 0xFF);
}

TEST(FrameInfo, DuplicatesOfPerFrameObjects)
{
    CFrameInfoReduceObject f;
    f.frame = 9;
    f.preset = 1;
    f.timeSource = timeSourceCamera;
    f.extra.Add("A", "1", "u", "int");
    auto fd = f.Duplicate().DynamicCast<CFrameInfoReduceObject>();
    ASSERT_TRUE(fd);
    EXPECT_EQ(fd->frame, 9u);
    EXPECT_EQ(fd->preset, 1);
    EXPECT_EQ(fd->timeSource, timeSourceCamera);
    fd->extra.SetValue("A", "2", "", "");
    EXPECT_EQ(S(f.extra.GetValue("A")), "1");

    CFrameHeaderReduceObject h;
    h.headerType = MakeGuid("01234567-89AB-CDEF-0123-456789ABCDEF");
    h.data.add(1);
    h.data.add(2);
    h.version = 0x30000;
    auto hd = h.Duplicate().DynamicCast<CFrameHeaderReduceObject>();
    ASSERT_TRUE(hd);
    EXPECT_TRUE(hd->headerType == h.headerType);
    ASSERT_EQ(hd->data.size(), 2u);
    EXPECT_EQ(hd->data[1], 2);

    CBrennicFrameInfoReduceObject b;
    for (unsigned i = 0; i < CBrennicFrameInfoReduceObject::kBufferSize; ++i) b.data[i] = static_cast<uint8_t>(i + 1);
    b.length = 150;
    auto bd = b.Duplicate().DynamicCast<CBrennicFrameInfoReduceObject>();
    ASSERT_TRUE(bd);
    EXPECT_EQ(bd->length, 150);
    EXPECT_EQ(bd->data[95], 96);
    EXPECT_EQ(bd->data[96], 0); // the copy stops at 96 bytes by design

    CCorvaneFrameInfoReduceObject c;
    c.record.qwords[1] = 77;
    c.record.flags5[4] = 1;
    auto cd = c.Duplicate().DynamicCast<CCorvaneFrameInfoReduceObject>();
    ASSERT_TRUE(cd);
    EXPECT_EQ(std::memcmp(&cd->record, &c.record, sizeof c.record), 0);
}

template <class T>
T At(const SGPSData& g, size_t offset)
{
    T v;
    std::memcpy(&v, reinterpret_cast<const unsigned char*>(&g) + offset, sizeof v);
    return v;
}

TEST(GPSData, InvalidateAndSwap)
{
    SGPSData g;
    EXPECT_FALSE(g.isValid());
    EXPECT_FALSE(g.isSwapped());
    EXPECT_EQ(At<uint32_t>(g, 0), 0u);
    for (size_t off : {16, 24, 120, 128}) EXPECT_EQ(At<double>(g, off), -1.0) << off;
    for (size_t off : {32, 64, 76, 80, 84, 136, 140}) EXPECT_EQ(At<float>(g, off), -1.0f) << off;
    EXPECT_EQ(At<uint16_t>(g, 178), 53);
    EXPECT_STREQ(reinterpret_cast<const char*>(&g) + 88, "WGS84");
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&g)[115], 0);

    g.valid = 1;
    g.word36 = 0x01020304;
    g.short74 = 0x0A0B;
    g.dbl16 = 1.5;
    const SGPSData original = g;
    g.swap();
    EXPECT_TRUE(g.isSwapped());
    EXPECT_EQ(At<uint32_t>(g, 0), 0x01000000u);
    EXPECT_EQ(At<uint32_t>(g, 36), 0x04030201u);
    EXPECT_EQ(At<uint16_t>(g, 74), 0x0B0A);
    EXPECT_EQ(At<uint16_t>(g, 178), 0x3500);
    EXPECT_STREQ(reinterpret_cast<const char*>(&g) + 88, "WGS84");
    double d;
    uint64_t bits;
    std::memcpy(&d, reinterpret_cast<const unsigned char*>(&g) + 16, 8);
    std::memcpy(&bits, &d, 8);
    EXPECT_EQ(bits, __builtin_bswap64(0x3FF8000000000000ULL));
    g.swap();
    EXPECT_EQ(std::memcmp(&g, &original, sizeof g), 0);
    EXPECT_TRUE(g.isValid());
}

} // namespace
} // namespace orv::reduce
