#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "orv/RCalFile.h"

namespace orv {
namespace {

// The example of docs/formats.md.
const char* const kExample = R"(<?xml version="1.0" encoding="UTF-8"?>
<rcal version="1.0">
  <bandpass start="7.5" end="13"/>
  <preset index="0">
    <radiance order="2">0.5 0.0012 3.5e-9</radiance>
    <lookup>
      <row radiance="0.8" temperature="-20"/>
      <row radiance="2.1" temperature="20"/>
      <row radiance="5.6" temperature="100"/>
    </lookup>
    <background type="value">1250</background>
  </preset>
  <preset index="1">
    <radiance order="-1">0.1 0.002</radiance>
    <temperature order="2">-40 55.5 -1.25</temperature>
    <background type="image" width="3" height="2">
      1000 1001 1002
      1010 1011 1012
    </background>
  </preset>
  <preset>
    <radiance order="0"></radiance>
  </preset>
</rcal>
)";

TArray<double> List(std::initializer_list<double> v) { return TArray<double>(v); }

TEST(RCalFile, HandWrittenExampleAnswersEveryQuery)
{
    CRCalFile cal;
    ASSERT_TRUE(cal.FromXML(kExample, std::strlen(kExample)));
    EXPECT_TRUE(cal.HasCoefficients());
    double start = 0, end = 0;
    cal.GetBandpass(start, end);
    EXPECT_DOUBLE_EQ(start, 7.5);
    EXPECT_DOUBLE_EQ(end, 13.0);

    int order = 99;
    TArray<double> c, r, t;
    EXPECT_TRUE(cal.GetPolyOrder(0, order));
    EXPECT_EQ(order, 2);
    EXPECT_TRUE(cal.GetCoefficients(0, c));
    ASSERT_EQ(c.size(), 3u);
    EXPECT_DOUBLE_EQ(c[2], 3.5e-9);
    EXPECT_FALSE(cal.GetTempPolyOrder(0, order));
    EXPECT_EQ(order, 0);
    EXPECT_TRUE(cal.GetLookup(0, r, t));
    ASSERT_EQ(r.size(), 3u);
    EXPECT_DOUBLE_EQ(t[2], 100.0);
    CRCalFile::BACKGROUND_TYPE type = CRCalFile::BACKGROUND_NONE;
    EXPECT_TRUE(cal.GetBackgroundType(0, type));
    EXPECT_EQ(type, CRCalFile::BACKGROUND_VALUE);
    double value = 0;
    EXPECT_TRUE(cal.GetBackgroundValue(0, value));
    EXPECT_DOUBLE_EQ(value, 1250.0);

    EXPECT_TRUE(cal.GetPolyOrder(1, order));
    EXPECT_EQ(order, -1);
    EXPECT_TRUE(cal.GetTempPolyOrder(1, order));
    EXPECT_EQ(order, 2);
    EXPECT_TRUE(cal.GetTempCoefficients(1, c));
    EXPECT_DOUBLE_EQ(c[1], 55.5);
    EXPECT_FALSE(cal.GetLookup(1, r, t));
    EXPECT_TRUE(r.empty());
    cal.GetBackgroundType(1, type);
    EXPECT_EQ(type, 3);
    TArray<double> image;
    unsigned int crc = 0;
    EXPECT_FALSE(cal.GetBackgroundFile(1, 2, 3, image)); // wrong frame size
    EXPECT_TRUE(cal.GetBackgroundFile(1, 3, 2, image));
    ASSERT_EQ(image.size(), 6u);
    EXPECT_DOUBLE_EQ(image[3], 1010.0);
    EXPECT_TRUE(cal.GetBackgroundFileCRC(1, 3, 2, crc));
    EXPECT_EQ(crc, CalcCRC32(0, image.data(), 6 * sizeof(double)));

    // The preset without an index serves the others.
    EXPECT_TRUE(cal.GetPolyOrder(5, order));
    EXPECT_EQ(order, 0);
    EXPECT_TRUE(cal.GetCoefficients(7, c));
    EXPECT_TRUE(c.empty());
    EXPECT_FALSE(cal.GetPolyOrder(8, order));
}

TEST(RCalFile, StreamRoundTripAndPosition)
{
    CRCalFile cal;
    ASSERT_TRUE(cal.SetCoefficients(3, 3, List({0.1, 1.0 / 3.0, -2e-7, 1e-12})));
    ASSERT_TRUE(cal.SetTempCoefficients(3, 1, List({-273.15, 0.1})));
    ASSERT_TRUE(cal.SetLookup(3, List({1, 2, 4}), List({0, 10, 30})));
    ASSERT_TRUE(cal.SetBackgroundImage(3, 2, 2, List({1.5, -2.25, 3e10, 0})));
    ASSERT_TRUE(cal.SetBandpass(3.0, 5.0));
    ASSERT_TRUE(cal.SetCoefficients(0, -2, List({1, 2})));
    ASSERT_TRUE(cal.SetBackgroundValue(0, 7));

    CMemFile* mem = new CMemFile;
    TSharedPtr<IFile> file(mem);
    mem->Create();
    ASSERT_TRUE(cal.Save(file, 0));
    const unsigned long saved = mem->GetSize();
    file->PutUInt32(0xDEADBEEF); // what follows the block in a stream
    uint32_t length = 0;
    std::memcpy(&length, mem->GetData(), 4);
    EXPECT_EQ(length + 4u, saved);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(mem->GetData()) + 4, 5), "<?xml");

    file->SeekToBegin();
    CRCalFile back;
    ASSERT_TRUE(back.Load(file, 0));
    EXPECT_EQ(file->GetPosition(), static_cast<long long>(saved));
    EXPECT_EQ(file->GetDWORD(), 0xDEADBEEFu);
    EXPECT_EQ(back.ToXML(), cal.ToXML());
    TArray<double> c;
    back.GetCoefficients(3, c);
    EXPECT_EQ(c[1], 1.0 / 3.0); // numbers survive exactly
    unsigned int a = 0, b = 1;
    cal.GetBackgroundFileCRC(3, 2, 2, a);
    back.GetBackgroundFileCRC(3, 2, 2, b);
    EXPECT_EQ(a, b);
    EXPECT_FALSE(back.HasPreset(1));

    // Plain XML, as in a hand-written file; copies are deep.
    CMemFile* plainMem = new CMemFile;
    TSharedPtr<IFile> plain(plainMem);
    plainMem->Create();
    ASSERT_TRUE(cal.Save(plain, CRCalFile::kPlainXML));
    plain->SeekToBegin();
    CRCalFile fromPlain;
    ASSERT_TRUE(fromPlain.Load(plain, CRCalFile::kPlainXML));
    CRCalFile copy(fromPlain);
    fromPlain.DefaultCal();
    EXPECT_FALSE(fromPlain.HasCoefficients());
    EXPECT_EQ(copy.ToXML(), cal.ToXML());
}

TEST(RCalFile, BadCalibrationsAreRefused)
{
    auto parses = [](const std::string& body) {
        std::string xml = "<rcal version=\"1.0\">" + body + "</rcal>";
        CRCalFile cal;
        return cal.FromXML(xml.data(), xml.size());
    };
    EXPECT_TRUE(parses("<preset index=\"2\"><radiance order=\"1\">0 1</radiance></preset>"));
    // Too few, too many and bad numbers; a preset index out of range or twice;
    // a lookup not ascending or of one row; an unknown element; a bandpass
    // backwards; an image whose CRC does not match its numbers, and one that
    // claims far more numbers than its text holds.
    for (const char* bad : {"<preset index=\"2\"><radiance order=\"2\">0 1</radiance></preset>",
                            "<preset index=\"2\"><radiance order=\"1\">0 1 2</radiance></preset>",
                            "<preset index=\"2\"><radiance order=\"1\">0 x</radiance></preset>",
                            "<preset index=\"2\"><radiance order=\"1\">0 nan</radiance></preset>",
                            "<preset index=\"8\"/>", "<preset index=\"1\"/><preset index=\"1\"/>",
                            "<preset index=\"0\"><lookup><row radiance=\"2\" temperature=\"1\"/>"
                            "<row radiance=\"2\" temperature=\"3\"/></lookup></preset>",
                            "<preset index=\"0\"><lookup><row radiance=\"2\" temperature=\"1\"/></lookup></preset>",
                            "<preset index=\"0\"><background type=\"image\" width=\"2\" height=\"1\">1 2</background>"
                            "<bogus/></preset>",
                            "<bandpass start=\"12\" end=\"8\"/>",
                            "<preset index=\"0\"><background type=\"image\" width=\"2\" height=\"1\" "
                            "crc=\"00000000\">1 2</background></preset>",
                            "<preset index=\"0\"><background type=\"image\" width=\"65535\" height=\"65535\">"
                            "1 2</background></preset>"})
        EXPECT_FALSE(parses(bad)) << bad;
    CRCalFile cal;
    for (const char* bad : {"<other/>", "<rcal version=\"2.0\"/>", "<rcal version=\"1.0\"><preset"})
        EXPECT_FALSE(cal.FromXML(bad, std::strlen(bad))) << bad;
    EXPECT_FALSE(cal.SetLookup(0, List({1, 2}), List({1})));
    EXPECT_FALSE(cal.SetCoefficients(0, 40, List({})));
    EXPECT_FALSE(cal.HasPreset(0));

    // A refused load leaves the calibration as it was; so does a length
    // beyond the stream.
    ASSERT_TRUE(cal.SetCoefficients(4, 1, List({0, 1})));
    CMemFile* mem = new CMemFile;
    TSharedPtr<IFile> file(mem);
    mem->Create();
    file->PutUInt32(1000);
    file->WriteString("<rcal version=\"1.0\"/>");
    file->SeekToBegin();
    EXPECT_FALSE(cal.Load(file, 0));
    EXPECT_TRUE(cal.HasPreset(4));
}

} // namespace
} // namespace orv
