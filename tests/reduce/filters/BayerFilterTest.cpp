#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reduce/filters/BareFrameFilters.h"
#include "reduce/filters/BayerFilter.h"
#include "reduce/filters/BuiltinFilters.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// Colour (0 red, 1 green, 2 blue) of site (x, y), from the 2 x 2 cell the
// pattern's name spells row by row.
int SiteColour(const char* cell, unsigned x, unsigned y)
{
    const char c = cell[(y & 1) * 2 + (x & 1)];
    return c == 'R' ? 0 : c == 'G' ? 1 : 2;
}

// Bilinear reference written differently from the filter: each missing colour
// is the mean of the samples of that colour in the 3 x 3 window, edges
// mirrored (-1 reads 1), rounded half up.
template <class T>
std::vector<T> Reference(const std::vector<T>& mosaic, unsigned w, unsigned h, const char* cell)
{
    auto mirror = [](long i, unsigned n) { return i < 0 ? 1 : i >= long(n) ? long(n) - 2 : i; };
    std::vector<T> rgb(size_t(w) * h * 3);
    for (unsigned y = 0; y < h; ++y) {
        for (unsigned x = 0; x < w; ++x) {
            for (int c = 0; c < 3; ++c) {
                uint64_t sum = 0, count = 0;
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        const long sx = mirror(long(x) + dx, w), sy = mirror(long(y) + dy, h);
                        if (SiteColour(cell, unsigned(sx), unsigned(sy)) != c) continue;
                        sum += mosaic[size_t(sy) * w + size_t(sx)];
                        ++count;
                    }
                }
                T own = mosaic[size_t(y) * w + x];
                rgb[(size_t(y) * w + x) * 3 + c] =
                    SiteColour(cell, x, y) == c ? own : T((sum + count / 2) / count);
            }
        }
    }
    return rgb;
}

struct SPattern {
    SGuid type;
    const char* cell;
    unsigned bytes;
};
const SPattern kPatterns[] = {{pixelBayerBG8, "BGGR", 1},
                              {pixelBayerGB8, "GBRG", 1},
                              {pixelBayerGR8, "GRBG", 1},
                              {pixelBayerRG8, "RGGB", 1},
                              {guidBayerGRBG, "GRBG", 2}};

template <class T>
std::vector<T> Demosaiced(const SPattern& p, std::vector<T>& mosaic, unsigned w, unsigned h)
{
    CBayerFilter f;
    CReduceObjectArray objects;
    std::vector<T> out(size_t(w) * h * 3 + 3, T(0x5A));
    uint8_t preset = 9;
    EXPECT_TRUE(f.ParseFrame(reinterpret_cast<unsigned char*>(mosaic.data()), p.type, uint16_t(w), uint16_t(h),
                             uint32_t(mosaic.size() * sizeof(T)),
                             STypedData(out.data(), sizeof(T) == 1 ? dtRGB24 : dtRGB48), objects, preset));
    EXPECT_EQ(preset, 0);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(out[out.size() - i], T(0x5A)); // nothing past the image
    out.resize(out.size() - 3);
    return out;
}

template <class T>
void CheckPattern(const SPattern& p, unsigned w, unsigned h, unsigned seed)
{
    SCOPED_TRACE(p.cell);
    // A flat colour field gives that colour everywhere, borders included.
    const T colour[3] = {T(sizeof(T) == 1 ? 200 : 51000), T(sizeof(T) == 1 ? 17 : 300), T(sizeof(T) == 1 ? 99 : 65535)};
    std::vector<T> mosaic(size_t(w) * h);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) mosaic[size_t(y) * w + x] = colour[SiteColour(p.cell, x, y)];
    std::vector<T> out = Demosaiced(p, mosaic, w, h);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], colour[i % 3]) << i;

    // Random samples against the reference.
    uint32_t state = seed;
    for (T& v : mosaic) {
        state = state * 1664525u + 1013904223u;
        v = T(state >> (sizeof(T) == 1 ? 24 : 16));
    }
    out = Demosaiced(p, mosaic, w, h);
    EXPECT_EQ(out, Reference(mosaic, w, h, p.cell));

    // A linear ramp in every channel is reproduced exactly away from the edges.
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            const int c = SiteColour(p.cell, x, y);
            mosaic[size_t(y) * w + x] = T(10 + 3 * x + 5 * y + 20 * c);
        }
    out = Demosaiced(p, mosaic, w, h);
    for (unsigned y = 1; y + 1 < h; ++y)
        for (unsigned x = 1; x + 1 < w; ++x)
            for (int c = 0; c < 3; ++c) ASSERT_EQ(out[(size_t(y) * w + x) * 3 + c], T(10 + 3 * x + 5 * y + 20 * c));
}

} // namespace

TEST(BayerFilter, DemosaicEveryPatternAgainstReference)
{
    const unsigned sizes[][2] = {{8, 6}, {7, 5}, {2, 2}, {3, 9}};
    for (const SPattern& p : kPatterns) {
        for (const auto& s : sizes) {
            SCOPED_TRACE(std::to_string(s[0]) + "x" + std::to_string(s[1]));
            if (p.bytes == 1) CheckPattern<uint8_t>(p, s[0], s[1], s[0] * 31 + s[1]);
            else CheckPattern<uint16_t>(p, s[0], s[1], s[0] * 31 + s[1]);
        }
    }
}

TEST(BayerFilter, OutputTypesAndShortFrames)
{
    CBayerFilter f;
    CReduceObjectArray objects;
    uint8_t preset = 0;
    std::vector<unsigned char> frame(4 * 4 * 2, 10), out(4 * 4 * 6, 0);
    const STypedData rgb24(out.data(), dtRGB24), rgb48(out.data(), dtRGB48);
    EXPECT_FALSE(f.ParseFrame(frame.data(), pixelBayerRG8, 4, 4, 16, rgb48, objects, preset));
    EXPECT_FALSE(f.ParseFrame(frame.data(), guidBayerGRBG, 4, 4, 32, rgb24, objects, preset));
    EXPECT_FALSE(f.ParseFrame(frame.data(), pixelBayerRG8, 4, 4, 16, STypedData(out.data(), dtUInt8), objects,
                              preset));
    EXPECT_FALSE(f.ParseFrame(frame.data(), pixelBayerRG8, 4, 4, 15, rgb24, objects, preset));
    EXPECT_FALSE(f.ParseFrame(frame.data(), guidBayerGRBG, 4, 4, 31, rgb48, objects, preset));
    EXPECT_FALSE(f.ParseFrame(frame.data(), pixelGrayscale, 4, 4, 32, rgb24, objects, preset));
    EXPECT_EQ(f.frameCounter(), 0); // refused frames are not counted
    EXPECT_TRUE(f.ParseFrame(frame.data(), pixelBayerGB8, 4, 4, 16, rgb24, objects, preset));
    // Objects alone need no frame bytes.
    EXPECT_TRUE(f.ParseReduceObjects(frame.data(), guidBayerGRBG, 4, 4, 0, objects, preset));
    TSharedPtr<CFrameInfoReduceObject> info = objects.GetFrameInfo(0, false);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->frame, 1u);
    EXPECT_EQ(info->timeSource, timeSourcePC);
    void* at = &out;
    int stride = 5;
    EXPECT_FALSE(f.HasPixels(pixelBayerRG8));
    EXPECT_FALSE(f.GetPixels(frame.data(), pixelBayerRG8, 4, 4, 16, &at, stride));
    EXPECT_EQ(at, nullptr);
}

TEST(BareFrameFilters, PixelsAsGenericFramesAndNoHeader)
{
    CKordanFilter kordan;
    CVelmarFilter velmar;
    COstrelFilter ostrel;
    CBrennicFilter brennic;
    const std::pair<CBareFrameFilter*, SGuid> filters[] = {
        {&kordan, guidKordan}, {&velmar, guidVelmar}, {&ostrel, guidOST}, {&brennic, guidBRG}};
    for (const auto& [f, type] : filters) {
        SCOPED_TRACE(f->GetName());
        CReduceObjectArray objects;
        TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(true);
        source->adBits = 14;
        source->offset = SRect(0, 1, 0, 0); // a header row above the image
        const uint16_t frame[9] = {0xFFFF, 0xFFFF, 0xFFFF, 1, 2, 0x4003, 4, 5, 6};
        auto* raw = reinterpret_cast<unsigned char*>(const_cast<uint16_t*>(frame));
        uint16_t out[6] = {};
        uint8_t preset = 9;
        ASSERT_TRUE(f->ParseFrame(raw, type, 3, 2, 18, STypedData(out, dtUInt16), objects, preset));
        const uint16_t expected[6] = {1, 2, 3, 4, 5, 6}; // 14 bits
        EXPECT_EQ(std::memcmp(out, expected, sizeof out), 0);
        EXPECT_EQ(preset, 0);
        EXPECT_FALSE(f->ParseFrame(raw, type, 3, 2, 17, STypedData(out, dtUInt16), objects, preset));
        EXPECT_TRUE(f->ParseFrame(raw, pixelGrayscale, 3, 2, 18, STypedData(out, dtUInt16), objects, preset));
        EXPECT_FALSE(f->ParseFrame(raw, guidTLKRV, 3, 2, 18, STypedData(out, dtUInt16), objects, preset));
        uint64_t counter = 0;
        EXPECT_TRUE(f->ParseFrameCounter(raw, type, 3, 2, 18, counter));
        EXPECT_EQ(counter, 2u); // two frames parsed
        // The stored header types are claimed, not read.
        for (SGuid hdr : {guidBRGHdr, guidOSTHdr}) {
            EXPECT_FALSE(f->ParseFrame(raw, hdr, 3, 2, 18, STypedData(), objects, preset));
            EXPECT_FALSE(f->ParseFrameCounter(raw, hdr, 3, 2, 18, counter));
        }
        EXPECT_FALSE(f->HasHeader(type));
        EXPECT_FALSE(f->HasTime(type) || f->HasFrameCounter(type));
        TArray<CString> names;
        EXPECT_FALSE(f->GetTriggerFields(type, names));
    }
}

TEST(BareFrameFilters, FactoryOrderAndClaims)
{
    // Built-in filters follow the family order, the generic one last.
    const char* order[] = {"V410",  "Bayer",  "TLK-RV", "TLK-MX", "Brennic", "Sarnet",
                           "Kordan", "MX515", "Ostrel", "Velmar", "Generic"};
    unsigned k = 0;
    for (unsigned i = 0; i < builtinFilterCount; ++i) {
        while (k < 11 && std::strcmp(order[k], builtinFilters[i].name) != 0) ++k;
        EXPECT_LT(k, 11u) << builtinFilters[i].name;
    }
    const std::pair<SGuid, const char*> claims[] = {
        {guidBayerGRBG, "Bayer"}, {pixelBayerBG8, "Bayer"},  {pixelBayerRG8, "Bayer"},  {guidKordan, "Kordan"},
        {guidVelmar, "Velmar"},   {guidOST, "Ostrel"},       {guidOSTHdr, "Ostrel"},    {guidBRG, "Brennic"},
        {guidBRGHdr, "Brennic"},  {guidTLKRVHdr, "TLK-RV"}, {guidTLKMX, "TLK-MX"}};
    for (const auto& [type, name] : claims) {
        TSharedPtr<IFilter> f = filterFactory()->CreateForPixelType(type);
        ASSERT_TRUE(f) << name;
        EXPECT_STREQ(f->GetName(), name);
    }
}
