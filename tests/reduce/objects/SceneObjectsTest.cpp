#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <tuple>

#include "orv/Bitmap.h"
#include "orv/Memory.h"
#include "reduce/objects/ColorPalReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FusionReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/VisualPixelDataReduceObject.h"
#include "reduce/objects/WorkspaceReduceObject.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

using test::ReadAt;
using test::SMemFile;
using test::WriteAt;

CObjectParametersReduceObject MakeParameters()
{
    CObjectParametersReduceObject p;
    p.emissivity = 0.95f;
    p.distance = 12.5f;
    p.reflectedTemp = 300.0f;
    p.atmosphereTemp = 290.0f;
    p.extOpticsTemp = 280.0f;
    p.extOpticsTransmission = 0.9f;
    p.estAtmosphericTransmission = 0.8f;
    p.atmosphericTransmission = 0.7f;
    p.relativeHumidity = 0.55f;
    p.reserved = 0xABCD;
    return p;
}

TEST(ObjectParameters, RecordLayoutAndSourceFlag)
{
    CObjectParametersReduceObject p = MakeParameters();
    std::vector<uint8_t> r = test::Saved(p);
    ASSERT_EQ(r.size(), 96u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 0), 96u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 4), 0x10001u);
    EXPECT_EQ(r[8], 0);
    // Nine floats from offset 9 in declaration order, then the reserved word.
    const float floats[] = {0.95f, 12.5f, 300.0f, 290.0f, 280.0f, 0.9f, 0.8f, 0.7f, 0.55f};
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(ReadAt<float>(r, 9 + 4 * i), floats[i]) << i;
    }
    EXPECT_EQ(ReadAt<uint32_t>(r, 45), 0xABCDu);
    for (size_t i = 49; i < 96; ++i) ASSERT_EQ(r[i], 0) << i;

    // Starting a file marks the parameters as the source's; the object stays.
    EXPECT_EQ(test::Saved(p, CObjectParametersReduceObject::kFlagStartFile)[8], 1);
    EXPECT_FALSE(p.source);
}

TEST(ObjectParameters, LoadVersionsAndRefusals)
{
    CObjectParametersReduceObject p = MakeParameters();
    p.source = true;
    const std::vector<uint8_t> good = test::Saved(p);

    SMemFile in(good);
    CObjectParametersReduceObject back;
    ASSERT_TRUE(back.Load(in.file, 0x10001, 0));
    EXPECT_EQ(test::Saved(back), good);

    auto loads = [](const std::vector<uint8_t>& bytes) {
        SMemFile f(bytes);
        CObjectParametersReduceObject o;
        return o.Load(f.file, 0x10001, 0);
    };
    // Record size, a newer major version, a later minor one, and a cut record.
    for (auto [at, value, ok] :
         {std::tuple{0, 95u, false}, std::tuple{4, 0x20000u, false}, std::tuple{4, 0x1FFFFu, true}}) {
        std::vector<uint8_t> r = good;
        WriteAt<uint32_t>(r, at, value);
        EXPECT_EQ(loads(r), ok) << at << " " << value;
    }
    EXPECT_FALSE(loads(std::vector<uint8_t>(good.begin(), good.end() - 1)));

    // Version 1.0: a typed stream.
    SMemFile old;
    old.file->PutBool(true);
    for (float v : {0.5f, 3.0f, 301.0f, 302.0f, 303.0f, 0.25f, 0.125f, 0.0625f, 0.75f}) old.file->PutFlt32(v);
    old.file->PutUInt32(7);
    old.Rewind();
    CObjectParametersReduceObject o;
    ASSERT_TRUE(o.Load(old.file, 0x10000, 0));
    EXPECT_TRUE(o.source);
    EXPECT_EQ(o.emissivity, 0.5f);
    EXPECT_EQ(o.extOpticsTemp, 303.0f);
    EXPECT_EQ(o.atmosphericTransmission, 0.0625f);
    EXPECT_EQ(o.relativeHumidity, 0.75f);
    EXPECT_EQ(o.reserved, 7u);
    std::vector<uint8_t> cut = old.bytes();
    cut.pop_back();
    SMemFile shortStream(cut);
    EXPECT_FALSE(o.Load(shortStream.file, 0x10000, 0));
}

TEST(ObjectParameters, EqualsCopyToAndDuplicate)
{
    CObjectParametersReduceObject a, b;
    b.atmosphericTransmission = 0.1f;
    b.source = true;
    b.reserved = 1;
    EXPECT_TRUE(a.Equals(&b)); // these three are deliberately not compared
    b.relativeHumidity = 0.31f;
    EXPECT_FALSE(a.Equals(&b));
    b.relativeHumidity = a.relativeHumidity;
    b.distance = std::nextafter(a.distance, 3.0f);
    EXPECT_FALSE(a.Equals(&b)); // any difference of a float exceeds 1e-8
    EXPECT_FALSE(a.Equals(nullptr));

    CObjectParametersReduceObject src = MakeParameters();
    src.frame = 4;
    src.preset = 2;
    src.persist = false;
    src.version = 0x10000;
    CObjectParametersReduceObject dst;
    src.CopyTo(&dst);
    EXPECT_TRUE(dst.Equals(&src));
    EXPECT_EQ(dst.atmosphericTransmission, 0.7f);
    EXPECT_EQ(dst.reserved, 0xABCDu);
    EXPECT_EQ(dst.frame, 4u);
    EXPECT_EQ(dst.preset, 2);
    EXPECT_FALSE(dst.persist);
    EXPECT_EQ(dst.version, 0x10001u);
}

TEST(FOV, RecordAndOldStream)
{
    CFOVReduceObject f;
    f.iHFov = 24.0;
    f.iVFov = 18.0;
    std::vector<uint8_t> r = test::Saved(f);
    ASSERT_EQ(r.size(), 64u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 0), 64u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 4), 0x10001u);
    EXPECT_EQ(ReadAt<double>(r, 8), 24.0);
    EXPECT_EQ(ReadAt<double>(r, 16), 18.0);
    for (size_t i = 24; i < 64; ++i) ASSERT_EQ(r[i], 0) << i;

    auto load = [](const std::vector<uint8_t>& bytes, unsigned version, CFOVReduceObject& o) {
        SMemFile in(bytes);
        return o.Load(in.file, version, 0);
    };
    CFOVReduceObject back;
    ASSERT_TRUE(load(r, 0x10001, back));
    EXPECT_EQ(back.iHFov, 24.0);
    EXPECT_EQ(back.iVFov, 18.0);
    WriteAt<uint32_t>(r, 4, 0x20000); // 2.0 itself is still accepted
    EXPECT_TRUE(load(r, 0x10001, back));
    WriteAt<uint32_t>(r, 4, 0x20001);
    EXPECT_FALSE(load(r, 0x10001, back));
    WriteAt<uint32_t>(r, 4, 0x10001);
    WriteAt<uint32_t>(r, 0, 65);
    EXPECT_FALSE(load(r, 0x10001, back));

    SMemFile old;
    old.file->PutFlt64(1.25);
    old.file->PutFlt64(2.5);
    old.Rewind();
    CFOVReduceObject o;
    ASSERT_TRUE(o.Load(old.file, 0x10000, 0));
    EXPECT_EQ(o.iHFov, 1.25);
    EXPECT_EQ(o.iVFov, 2.5);
}

TEST(Workspace, LengthPrefixedText)
{
    CWorkspaceReduceObject w;
    EXPECT_EQ(test::Saved(w), std::vector<uint8_t>(4, 0));

    w.workspace = "<layout a=\"1\"/>";
    std::vector<uint8_t> r = test::Saved(w);
    ASSERT_EQ(r.size(), 4u + 15u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 0), 15u);
    EXPECT_EQ(std::string(r.begin() + 4, r.end()), "<layout a=\"1\"/>");

    for (unsigned version : {0x10000u, 0x20000u}) {
        SMemFile in(r);
        CWorkspaceReduceObject back;
        ASSERT_TRUE(back.Load(in.file, version, 0));
        EXPECT_STREQ(back.workspace.c_str(), "<layout a=\"1\"/>");
    }

    // A length beyond the data fails and leaves the text empty.
    std::vector<uint8_t> bad = r;
    WriteAt<uint32_t>(bad, 0, 0xFFFFFFF0u);
    SMemFile in(bad);
    CWorkspaceReduceObject back;
    back.workspace = "old";
    EXPECT_FALSE(back.Load(in.file, 0x10000, 0));
    EXPECT_TRUE(back.workspace.empty());
    bad.resize(10);
    WriteAt<uint32_t>(bad, 0, 15u);
    SMemFile cut(bad);
    EXPECT_FALSE(back.Load(cut.file, 0x10000, 0));
}

// A palette block of n entries; colours are (Y, Cr, Cb), entries (Y, Cb, Cr).
std::vector<uint8_t> PaletteBlock(uint16_t count, size_t entriesHeld)
{
    std::vector<uint8_t> b(SColorPal::kEntriesOffset + 3 * entriesHeld, 0);
    std::memcpy(b.data(), &count, 2);
    const uint8_t c1[3] = {128, 128, 128};
    const uint8_t c2[3] = {100, 200, 50}; // Y, Cr, Cb
    std::memcpy(&b[6], c1, 3);
    std::memcpy(&b[9], c2, 3);
    for (size_t i = 0; i < entriesHeld; ++i) {
        b[112 + 3 * i] = static_cast<uint8_t>(i);
        b[112 + 3 * i + 1] = 128;
        b[112 + 3 * i + 2] = 128;
    }
    if (entriesHeld > 1) {
        b[112 + 3] = 100; // Y
        b[112 + 4] = 50;  // Cb
        b[112 + 5] = 200; // Cr
    }
    return b;
}

TEST(ColorPal, PaletteFromLuminanceAndColourDifferences)
{
    CColorPalReduceObject c;
    SRGB table[256];
    EXPECT_FALSE(c.GetRGBPalette(table));

    std::vector<uint8_t> block = PaletteBlock(256, 256);
    c.Init(reinterpret_cast<SColorPal*>(block.data()), static_cast<unsigned>(block.size()), 7);
    EXPECT_EQ(c.word(), 7u);
    block[112] = 0xEE; // the object holds its own copy
    ASSERT_TRUE(c.GetRGBPalette(table));

    auto rgb = [](const SRGB& c) { return std::make_tuple(int(c.red), int(c.green), int(c.blue)); };
    // Neutral grey stays grey.
    EXPECT_EQ(rgb(table[128]), std::make_tuple(128, 128, 128));
    EXPECT_EQ(table[0].red, 0);
    // Y 100, Cb 50, Cr 200: R = 100 + 72 * 1.4022 = 200.9, G = 100 + 78 * 0.344136
    // - 72 * 0.714136 = 75.4, B = 100 - 78 * 1.772 < 0.
    EXPECT_EQ(rgb(table[1]), std::make_tuple(200, 75, 0));
    // The second colour is stored Y, Cr, Cb and converts to the same triple.
    EXPECT_EQ(rgb(c.colors()[0]), std::make_tuple(128, 128, 128));
    EXPECT_EQ(rgb(c.colors()[1]), std::make_tuple(200, 75, 0));

    auto d = c.Duplicate().DynamicCast<CColorPalReduceObject>();
    ASSERT_TRUE(d);
    ASSERT_NE(d->block(), c.block());
    EXPECT_EQ(std::memcmp(d->block(), c.block(), block.size()), 0);
    ASSERT_NE(d->table(), nullptr);
    EXPECT_EQ(d->table()[1].red, 200);
}

TEST(ColorPal, EntryCountIsBoundedByTheBlock)
{
    // The count claims more entries than the block holds (and than the table).
    std::vector<uint8_t> block = PaletteBlock(0xFFFF, 4);
    CColorPalReduceObject c;
    c.Init(reinterpret_cast<SColorPal*>(block.data()), static_cast<unsigned>(block.size()), 0);
    SRGB table[256];
    ASSERT_TRUE(c.GetRGBPalette(table));
    EXPECT_EQ(table[3].red, 3);
    EXPECT_EQ(table[4].red, 0); // not held: stays zero

    // A block too short for its two colours gives no table.
    CColorPalReduceObject tiny;
    tiny.Init(reinterpret_cast<SColorPal*>(block.data()), 8, 0);
    EXPECT_FALSE(tiny.GetRGBPalette(table));
}

TEST(Fusion, KeepsACopyOfTheBlock)
{
    CFusionReduceObject f;
    uint8_t raw[40];
    for (int i = 0; i < 40; ++i) raw[i] = static_cast<uint8_t>(i * 3);
    f.Init(reinterpret_cast<SFusion*>(raw), sizeof raw, 9);
    raw[0] = 0xFF;
    ASSERT_NE(f.block(), nullptr);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(f.block())[0], 0);
    EXPECT_EQ(f.blockSize(), 40u);
    auto d = f.Duplicate().DynamicCast<CFusionReduceObject>();
    ASSERT_TRUE(d);
    ASSERT_NE(d->block(), f.block());
    EXPECT_EQ(std::memcmp(d->block(), f.block(), 40), 0);
    EXPECT_EQ(d->word(), 9u);
    f.Init(nullptr, 0, 0);
    EXPECT_EQ(f.block(), nullptr);
}

// A 24-bit source whose pixel (x, y) holds x low, x high and y low.
SBitmap PatternBitmap(unsigned width, unsigned height)
{
    SBitmap b;
    InitBitmap(b);
    EXPECT_TRUE(CreateBitmap(width, height, 24, b));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            unsigned char* p = b.pixels + y * b.bytesPerRow + 3 * x;
            p[0] = static_cast<unsigned char>(x);
            p[1] = static_cast<unsigned char>(x >> 8);
            p[2] = static_cast<unsigned char>(y);
        }
    return b;
}

TEST(VisualPixelData, CropAndScaleAreMadeOnce)
{
    CVisualPixelDataReduceObject v;
    EXPECT_EQ(v.GetCroppedBitmap(0, 0, 2.0f).pixels, nullptr); // nothing to crop yet

    auto* block = static_cast<SVisualPixelData*>(Alloc(16));
    v.Init(PatternBitmap(640, 480), block, 1, 2);

    SBitmap crop = v.GetCroppedBitmap(0, 0, 2.0f);
    ASSERT_NE(crop.pixels, nullptr);
    EXPECT_EQ(crop.width, 320u);
    EXPECT_EQ(crop.height, 240u);
    auto pixel = [](const SBitmap& b, unsigned x, unsigned y) {
        const unsigned char* p = b.pixels + y * b.bytesPerRow + 3 * x;
        return std::make_tuple(p[0] | (p[1] << 8), static_cast<int>(p[2]));
    };
    EXPECT_EQ(pixel(crop, 0, 0), std::make_tuple(160, 120));
    EXPECT_EQ(pixel(crop, 319, 239), std::make_tuple(479, 359 & 0xFF));

    // Later calls return the first crop, whatever they ask.
    SBitmap again = v.GetCroppedBitmap(10, 10, 4.0f);
    EXPECT_EQ(again.pixels, crop.pixels);
    EXPECT_EQ(again.width, 320u);

    SBitmap scaled = v.GetScaledBitmap(160, 120, 2.0f, 0, 0);
    ASSERT_NE(scaled.pixels, nullptr);
    EXPECT_EQ(scaled.width, 160u);
    EXPECT_EQ(scaled.height, 120u);
    EXPECT_EQ(v.GetScaledBitmap(64, 64, 1.0f, 0, 0).width, 160u);

    // A new image starts over; x and y move the window from the centre.
    v.Init(PatternBitmap(64, 48), nullptr, 0, 0);
    crop = v.GetCroppedBitmap(5, -3, 2.0f);
    ASSERT_NE(crop.pixels, nullptr);
    EXPECT_EQ(crop.width, 32u);
    EXPECT_EQ(pixel(crop, 0, 0), std::make_tuple(16 + 5, 12 - 3));

    // A window pushed past the edges is cut to the image instead of read beyond it.
    v.Init(PatternBitmap(64, 48), nullptr, 0, 0);
    crop = v.GetCroppedBitmap(1000, -1000, 2.0f);
    ASSERT_NE(crop.pixels, nullptr);
    v.Init(PatternBitmap(64, 48), nullptr, 0, 0);
    crop = v.GetCroppedBitmap(-40, 30, 2.0f);
    ASSERT_NE(crop.pixels, nullptr);
    EXPECT_EQ(pixel(crop, 0, 23), std::make_tuple(0, 0)); // row 65 of 48: left zero

    auto d = v.Duplicate().DynamicCast<CVisualPixelDataReduceObject>();
    ASSERT_TRUE(d);
    ASSERT_NE(d->source().pixels, v.source().pixels);
    EXPECT_EQ(std::memcmp(d->source().pixels, v.source().pixels, v.source().bytesPerRow * 48), 0);
}

} // namespace
} // namespace orv::reduce
