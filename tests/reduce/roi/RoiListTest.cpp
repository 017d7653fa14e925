// The region list: names, membership, rescaling, and both file forms:
// round trips, the bytes of every binary version built here, rejections and
// hostile files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "orv/File.h"
#include "reduce/roi/RoiList.h"

using namespace orv;
using namespace orv::reduce;

namespace {

TSharedPtr<IFile> MemFile(const std::vector<uint8_t>& bytes = {})
{
    auto* f = new CMemFile();
    f->Create();
    if (!bytes.empty()) f->Write(bytes.data(), bytes.size());
    f->SeekToBegin();
    return TSharedPtr<IFile>(f);
}
TSharedPtr<IFile> MemFile(const std::string& text) { return MemFile(std::vector<uint8_t>(text.begin(), text.end())); }

std::vector<uint8_t> Bytes(TSharedPtr<IFile> f)
{
    auto* m = static_cast<CMemFile*>(f.get());
    return std::vector<uint8_t>(m->data(), m->data() + m->size());
}

std::vector<std::string> Names(const CRoiList& list)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < list.size(); ++i) out.push_back(list.at(unsigned(i))->name.c_str());
    return out;
}

// Little-endian writer for binary files built by hand.
struct SBytes {
    std::vector<uint8_t> b;
    SBytes& raw(const void* p, size_t n)
    {
        b.insert(b.end(), static_cast<const uint8_t*>(p), static_cast<const uint8_t*>(p) + n);
        return *this;
    }
    SBytes& u8(uint8_t v) { return raw(&v, 1); }
    SBytes& u32(uint32_t v) { return raw(&v, 4); }
    SBytes& i32(int32_t v) { return raw(&v, 4); }
    SBytes& f64(double v) { return raw(&v, 8); }
    SBytes& name(const std::string& s)
    {
        std::string n = s.substr(0, 128);
        n.resize(128, '\0');
        return raw(n.data(), 128);
    }
};

// One region in the rows of binary version major.minor, as the format table lists them.
std::vector<uint8_t> OldFile(int major, int minor, uint32_t count = 1)
{
    const bool v1 = major == 1;
    SBytes f;
    f.raw("SROI", 4).u8(uint8_t(major)).u8(uint8_t(minor));
    if (v1 && minor >= 3) f.u32(200).u32(100);
    if (v1 && minor >= 5) f.u32(0x123456).i32(4);
    f.u32(count);
    for (uint32_t k = 0; k < count; ++k) {
        f.name("Old").u8(0).u32(4);
        if (v1 && minor >= 4) f.u32(400).u32(100);
        if (!v1) f.i32(2).i32(3).i32(12).i32(9); // top, left, bottom, right
        else f.u32(3).f64(10).f64(20).f64(30).f64(20).f64(20).f64(40);
        f.u32(0x00FF00);
        if (v1 && minor >= 5) f.i32(7);
        f.u32(v1 ? roiPolygon : roiRect);
        if (v1) f.u8(1);
        f.f64(0.5);
        if (major || minor) f.u8(1).f64(3.5);
        if (v1) {
            f.f64(99).u32(0).u8(0).u8(1).u8(3).u8(9);
            if (minor == 0) f.f64(1).f64(2);
            for (int u = 0; minor >= 1 && u < 8; ++u) f.f64(u).f64(10 + u);
            if (minor >= 2) f.f64(0.2).f64(0.8);
        }
    }
    return f.b;
}

TEST(RoiList, NamesAndMembership)
{
    CRoiList list;
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list.at(0)->type, roiImage);
    EXPECT_EQ(list.at(0)->color, 0x808080u);
    EXPECT_FALSE(list.at(1));

    struct { ERoiType type; int n; const char* name; } names[] = {
        {roiRect, 1, "Rectangle 1"}, {roiMultiLine, 3, "Multi Line 3"}, {roiMeasurementCursor, 2, "Measurement Cursor 2"},
        {roiCrosshair, 2, "Crosshair 2"}, {roiCircle, 10, "Circle 10"}, {roiImage, 1, "ROI 1"}, {ERoiType(12), 5, "ROI 5"}};
    for (const auto& t : names) EXPECT_STREQ(CRoiList::MakeName(t.type, t.n).c_str(), t.name);

    TSharedPtr<SRoi> l1 = CreateLineRoi("Line 1", {0, 0}, {5, 5}), l3 = CreateLineRoi("Line 3", {1, 1}, {2, 2});
    list.add(l1);
    list.add(l3);
    EXPECT_STREQ(list.NewName(roiLine).c_str(), "Line 2");
    EXPECT_STREQ(list.NewName(roiImage).c_str(), "ROI 1");
    EXPECT_FALSE(list.CanRenameRoi(l1, "Line 3"));
    EXPECT_TRUE(list.CanRenameRoi(l1, "Line 1"));

    list.setActiveRoi(l3);
    EXPECT_EQ(list.activeIndex, 2u);
    list.remove(list.at(0)); // the image stays
    list.remove(l1);         // the active index does not follow
    EXPECT_EQ(Names(list), (std::vector<std::string>{"Image", "Line 3"}));
    EXPECT_EQ(list.activeIndex, 2u);
    EXPECT_FALSE(list.activeRoi());
    list.setActiveRoi(l1);
    EXPECT_EQ(list.activeIndex, 0u);
    EXPECT_EQ(list.IndexOf(l1), CRoiList::kNotFound);
    list.removeAll();
    EXPECT_EQ(list.size(), 1u);
}

TEST(RoiList, RescaleFollowsEachRegionsOwnImageSize)
{
    CRoiList list;
    list.SetImageSize(200, 50);
    TSharedPtr<SRoi> r = CreateRectRoi("r", SRectF{10, 20, 40, 60});
    r->imageWidth = r->imageHeight = 100;
    // Never given an image size: taken in the list's coordinates as it is.
    TSharedPtr<SRoi> loose = CreateCursorRoi("c", {7, 8});
    list.add(r);
    list.add(loose);
    list.Rescale();
    EXPECT_EQ(r->points[0], SPointF(40, 5));
    EXPECT_EQ(r->points[2], SPointF(120, 20));
    EXPECT_EQ(r->bounds, SRect(40, 5, 120, 20));
    EXPECT_EQ(loose->points[0], SPointF(7, 8));
    EXPECT_EQ(loose->bitmaskWidth, 200u);
    list.SetImageSize(100, 100);
    EXPECT_EQ(r->points[2], SPointF(60, 40));
}

TEST(RoiList, XmlRoundTripAndText)
{
    CRoiList list;
    list.SetImageSize(64, 48);
    list.at(0)->color = 0x0000FF; // red first in the text
    list.at(0)->paletteIndex = 3;
    TSharedPtr<SRoi> e = CreateEllipseRoi("Bearing", SPointF(20.25, 10), SSizeF{5, 3});
    e->useEmissivity = true;
    e->emissivity = 0.123456789012345678;
    e->useDistance = true;
    e->distance = 2.5;
    e->color = 0x10FF20;
    e->imageWidth = 64;
    e->imageHeight = 48;
    TSharedPtr<SRoi> iso(new SRoi);
    iso->type = roiIsotherm;
    iso->name = "Hot";
    iso->trackMode = trackByColor;
    iso->minColor = 12;
    iso->isothermMin[isoTemperatureK] = 300;
    iso->isothermMax[isoTemperatureK] = 350.5;
    iso->dirty[isoTemperatureK] = false;
    TSharedPtr<SRoi> line = CreateLineRoi("Weld", {1, 2}, {30, 40});
    line->drawName = false;
    line->namePos = namePosBottomRight;
    list.add(e);
    list.add(iso);
    list.add(line);
    list.setActiveRoi(iso);

    TSharedPtr<IFile> f = MemFile();
    ASSERT_TRUE(list.Save(f));
    std::vector<uint8_t> raw = Bytes(f);
    std::string text(raw.begin(), raw.end());
    for (const char* want : {"<roiList activeRoiIndex=\"2\" imageHeight=\"48\" imageWidth=\"64\" version=\"1.6\"",
                             "<imageRoi paletteIndex=\"3\" color=\"#FF0000\"",
                             "color=\"#20FF10\" imageHeight=\"48\" imageWidth=\"64\" namePos=\"Top\" drawName=\"T\" "
                             "type=\"Ellipse\" name=\"Bearing\"",
                             "emissivity=\"0.12345678901235\"", "x=\"15.25\" y=\"7\"", "unit=\"TemperatureK\"",
                             "trackMode=\"ByColor\"", "namePos=\"BottomRight\" drawName=\"F\" type=\"Line\""}) {
        EXPECT_NE(text.find(want), std::string::npos) << want << "\n" << text;
    }
    EXPECT_EQ(text.find("isothermSettings", text.find("Weld")), std::string::npos);

    CRoiList back;
    back.SetImageSize(64, 48);
    f->SeekToBegin();
    ASSERT_TRUE(back.Load(f));
    ASSERT_EQ(Names(back), (std::vector<std::string>{"Image", "Bearing", "Hot", "Weld"}));
    EXPECT_EQ(back.activeIndex, 2u);
    EXPECT_EQ(back.at(0)->color, 0x0000FFu);
    const SRoi& e2 = *back.at(1);
    EXPECT_EQ(e2.type, roiEllipse);
    EXPECT_EQ(e2.color, 0x10FF20u);
    EXPECT_NEAR(e2.emissivity, 0.123456789012345678, 1e-14);
    EXPECT_TRUE(e2.useEmissivity && e2.useDistance);
    EXPECT_EQ(e2.distance, 2.5);
    EXPECT_EQ(e2.originalPoints.size(), 4u);
    EXPECT_EQ(e2.points[1], SPointF(25.25, 7));
    EXPECT_NE(e2.bitmask, nullptr);
    const SRoi& i2 = *back.at(2);
    EXPECT_EQ(i2.trackMode, trackByColor);
    EXPECT_EQ(i2.minColor, 12);
    EXPECT_EQ(i2.isothermMax[isoTemperatureK], 350.5);
    for (int u = 0; u < kIsothermUnits; ++u) EXPECT_EQ(i2.dirty[u], u != isoTemperatureK);
    EXPECT_FALSE(back.at(3)->drawName);
    EXPECT_EQ(back.at(3)->namePos, namePosBottomRight);

    // One region only: that one, and an active index of 0.
    TSharedPtr<IFile> one = MemFile();
    ASSERT_TRUE(list.SaveXml(one, 2));
    raw = Bytes(one);
    text.assign(raw.begin(), raw.end());
    EXPECT_NE(text.find("activeRoiIndex=\"0\""), std::string::npos);
    EXPECT_NE(text.find("name=\"Hot\""), std::string::npos);
    EXPECT_EQ(text.find("Bearing"), std::string::npos);

    // Loading the same file again renames: "Name (1)", then "Name (2)".
    for (int k = 0; k < 2; ++k) {
        f->SeekToBegin();
        ASSERT_TRUE(back.Load(f));
    }
    EXPECT_EQ(back.at(4)->name, "Bearing (1)");
    EXPECT_EQ(back.at(7)->name, "Bearing (2)");
    EXPECT_EQ(back.activeIndex, 2u); // kept once the list holds regions
}

TEST(RoiList, XmlVersionsAndColors)
{
    struct { const char* version; bool ok; } versions[] = {
        {"1.6", true}, {"1.9", true}, {"0.1", true}, {"2.0", false}, {"1", false}, {"1.2.3", false}, {"x.1", false}};
    for (const auto& v : versions) {
        CRoiList list;
        std::string xml = std::string("<roiList version=\"") + v.version +
                          "\"><rois><roi name=\"A\" type=\"rect\"><points><point x=\"1\" y=\"2\"/></points></roi></rois></roiList>";
        EXPECT_EQ(list.Load(MemFile(xml)), v.ok) << v.version;
        EXPECT_EQ(list.size(), v.ok ? 2u : 1u) << v.version;
    }
    struct { const char* text; uint32_t color; } colors[] = {
        {"#FF0000", 255}, {"#0000FF", 0xFF0000}, {"red", 255}, {"x00ff80", 0x80FF00}, {"#FF00001", 255}, {"", 255}};
    for (const auto& c : colors) EXPECT_EQ(ParseColor(c.text), c.color) << c.text;
}

TEST(RoiList, BinaryRoundTripShrinksBoxes)
{
    CRoiList list;
    list.SetImageSize(80, 60);
    TSharedPtr<SRoi> r = CreateRectRoi("Board", SRectF{10, 20, 30, 50});
    r->imageWidth = 80;
    r->imageHeight = 60;
    r->paletteIndex = 9;
    r->isothermMin[5] = -4;
    std::string longName(140, 'n');
    TSharedPtr<SRoi> p = CreateLineRoi(longName.c_str(), {1, 2}, {3, 4});
    p->type = roiPolygon;
    list.add(r);
    list.add(p);
    TSharedPtr<IFile> f = MemFile();
    ASSERT_TRUE(list.SaveBinary(f));
    std::vector<uint8_t> b = Bytes(f);
    // Header at its offsets: magic, 1, 5, sizes, image colour and palette, count.
    ASSERT_GE(b.size(), 26u + 128);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 4), "SROI");
    EXPECT_EQ(b[4], 1);
    EXPECT_EQ(b[5], 5);
    uint32_t v;
    std::memcpy(&v, &b[6], 4);
    EXPECT_EQ(v, 80u);
    std::memcpy(&v, &b[14], 4);
    EXPECT_EQ(v, 0x808080u);
    std::memcpy(&v, &b[22], 4);
    EXPECT_EQ(v, 2u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&b[26])), "Board");
    // Per region 335 bytes of fixed rows (name 128, ..., 16 isotherm limits,
    // the two scaled limits) and 16 a point.
    EXPECT_EQ(b.size(), 26u + (335 + 4 * 16) + (335 + 2 * 16));

    CRoiList back;
    back.SetImageSize(80, 60);
    f->SeekToBegin();
    ASSERT_TRUE(back.Load(f));
    ASSERT_EQ(back.size(), 3u);
    const SRoi& r2 = *back.at(1);
    // Left and top move in by one on every load.
    EXPECT_EQ(r2.points[0], SPointF(21, 11));
    EXPECT_EQ(r2.points[1], SPointF(50, 11));
    EXPECT_EQ(r2.points[2], SPointF(50, 30));
    EXPECT_EQ(r2.points[3], SPointF(21, 30));
    EXPECT_EQ(r2.paletteIndex, 9);
    EXPECT_EQ(r2.isothermMin[5], -4);
    for (int u = 0; u < kIsothermUnits; ++u) EXPECT_EQ(r2.dirty[u], u != 0);
    // A name of 128 bytes or more keeps its first 128.
    EXPECT_EQ(std::string(back.at(2)->name.c_str()), longName.substr(0, 128));
    EXPECT_EQ(back.at(2)->points.size(), 2u);
    // As many regions as the loader takes, and not one more.
    while (list.size() - 1 < CRoiList::kMaxBinaryRois) list.add(CreateRectRoi("r", SRectF{1, 1, 2, 2}));
    TSharedPtr<IFile> full = MemFile();
    ASSERT_TRUE(list.SaveBinary(full));
    full->SeekToBegin();
    EXPECT_TRUE(back.Load(full));
    list.add(CreateRectRoi("r", SRectF{1, 1, 2, 2}));
    TSharedPtr<IFile> over = MemFile();
    EXPECT_FALSE(list.SaveBinary(over));
    EXPECT_EQ(over->GetLength(), 0);
}

TEST(RoiList, EveryOlderBinaryVersion)
{
    for (int major = 0; major <= 1; ++major) {
        for (int minor = 0; minor <= (major ? 5 : 2); ++minor) {
            CRoiList list;
            list.SetImageSize(200, 100);
            ASSERT_TRUE(list.Load(MemFile(OldFile(major, minor)))) << major << "." << minor;
            ASSERT_EQ(list.size(), 2u);
            const SRoi& r = *list.at(1);
            const bool v1 = major == 1;
            EXPECT_EQ(r.name, "Old");
            EXPECT_FALSE(r.drawName);
            EXPECT_EQ(r.namePos, namePosRight);
            EXPECT_EQ(r.imageWidth, v1 && minor >= 4 ? 400u : 200u);
            EXPECT_EQ(r.color, 0x00FF00u);
            EXPECT_EQ(r.paletteIndex, v1 && minor >= 5 ? 7 : -1);
            EXPECT_EQ(list.at(0)->color, v1 && minor >= 5 ? 0x123456u : 0x808080u);
            EXPECT_EQ(r.emissivity, 0.5);
            EXPECT_EQ(r.useEmissivity, v1);
            EXPECT_EQ(r.useDistance, major || minor);
            EXPECT_EQ(r.distance, major || minor ? 3.5 : 1.0);
            if (!v1) {
                // The box (top 2, left 3, bottom 12, right 9), shrunk on load.
                EXPECT_EQ(r.type, roiRect);
                EXPECT_EQ(r.originalPoints[0], SPointF(4, 3));
                EXPECT_EQ(r.originalPoints[2], SPointF(9, 12));
                continue;
            }
            EXPECT_EQ(r.type, roiPolygon);
            ASSERT_EQ(r.originalPoints.size(), 3u);
            EXPECT_EQ(r.originalPoints[2], SPointF(20, 40));
            // Scaled from the region's own image size to the list's.
            EXPECT_EQ(r.points[2], minor >= 4 ? SPointF(10, 40) : SPointF(20, 40));
            EXPECT_EQ(r.trackMode, trackByColor);
            EXPECT_FALSE(r.useMin);
            EXPECT_TRUE(r.useMax);
            EXPECT_EQ(r.maxColor, 9);
            EXPECT_EQ(r.isothermMin[6], minor == 0 ? 1.0 : 6.0);
            EXPECT_EQ(r.isothermMax[6], minor == 0 ? 2.0 : 16.0);
            EXPECT_EQ(r.maxValueScaled, minor >= 2 ? 0.8 : 0.9);
        }
    }
}

TEST(RoiList, BinaryRejections)
{
    struct { std::vector<uint8_t> bytes; const char* what; } bad[] = {
        {OldFile(0, 3), "0.3"}, {OldFile(1, 6), "1.6"}, {OldFile(2, 0), "2.0"}, {OldFile(1, 5, 257), "257 regions"}};
    for (const auto& t : bad) {
        CRoiList list;
        EXPECT_FALSE(list.LoadBinary(MemFile(t.bytes))) << t.what;
        EXPECT_EQ(list.size(), 1u) << t.what;
    }
    // A point count beyond the file, and a file cut anywhere: false, and only
    // the regions read completely are kept.
    std::vector<uint8_t> huge = OldFile(1, 5);
    const size_t countAt = 26 + 128 + 1 + 4 + 8;
    std::memset(&huge[countAt], 0xFF, 4);
    CRoiList list;
    EXPECT_FALSE(list.Load(MemFile(huge)));
    EXPECT_EQ(list.size(), 1u);
    std::vector<uint8_t> two = OldFile(1, 5, 2);
    const size_t one = (two.size() - 26) / 2;
    for (size_t n = 0; n < two.size(); ++n) {
        CRoiList cut;
        EXPECT_FALSE(cut.LoadBinary(MemFile(std::vector<uint8_t>(two.begin(), two.begin() + long(n))))) << n;
        EXPECT_EQ(cut.size(), n >= 26 + one ? 2u : 1u) << n;
    }
}

TEST(RoiList, HostileXml)
{
    std::string deep = "<roiList version=\"1.6\"><rois>";
    for (int i = 0; i < 20000; ++i) deep += "<a>";
    for (int i = 0; i < 20000; ++i) deep += "</a>";
    deep += "</rois></roiList>";
    const std::string name(300, 'x');
    struct { std::string xml; bool ok; size_t size; } cases[] = {
        {"<roiList version=\"1.6\"><rois><roi", false, 1},
        {"<other version=\"1.6\"/>", false, 1},
        {"<roiList/>", false, 1},
        {deep, true, 1},
        {"<roiList version=\"1.6\" imageWidth=\"4\" imageHeight=\"0\"><rois>"
         "<roi name=\"" + name + "\" type=\"Polygon\" imageWidth=\"0\" imageHeight=\"4294967295\"><points>"
         "<point x=\"nan\" y=\"-1e308\"/><point x=\"-5\" y=\"inf\"/><point x=\"1e300\" y=\"3\"/></points></roi>"
         "<roi type=\"Line\" imageWidth=\"7\" imageHeight=\"7\"><points><point x=\"-1e9\" y=\"nan\"/>"
         "<point x=\"1e9\" y=\"12\"/></points></roi>"
         "<roi type=\"Ellipse\"><points><point x=\"1\" y=\"1\"/><point x=\"1\" y=\"1\"/>"
         "<point x=\"1\" y=\"1\"/><point x=\"1\" y=\"1\"/></points></roi></rois></roiList>", true, 4},
    };
    for (const auto& c : cases) {
        CRoiList list;
        list.SetImageSize(32, 16);
        EXPECT_EQ(list.Load(MemFile(c.xml)), c.ok) << c.xml.substr(0, 60);
        ASSERT_EQ(list.size(), c.size);
        for (size_t i = 1; i < list.size(); ++i) {
            SRoi& r = *list.at(unsigned(i));
            r.GetIndicies(32, 16);
            for (unsigned k : r.indices) EXPECT_LT(k, 32u * 16);
        }
        if (c.size == 4) {
            EXPECT_EQ(list.at(1)->name.length(), 300u);
        }
    }
}

} // namespace
