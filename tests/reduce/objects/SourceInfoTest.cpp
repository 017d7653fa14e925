#include <gtest/gtest.h>

#include <string>

#include "orv/PixelType.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

using test::ReadAt;
using test::SMemFile;
using test::WriteAt;

const std::string k64(64, 'C');

CSourceInfoReduceObject MakeFilled()
{
    CSourceInfoReduceObject s;
    s.adBits = 14;
    s.camera = k64.c_str();
    s.presetSequencing = true;
    s.abated = true;
    s.numPresets = 6;
    s.dataType = dtInt32;
    s.imageWidth = 640;
    s.imageHeight = 512;
    s.offset = SRect(-1, 2, 3, 4);
    s.interlaced = true;
    s.pixelType = pixelRGB;
    s.adBitShift = -2;
    s.baseUnit = unitTemperatureFactory;
    s.baseTempType = tempKelvin;
    s.frameWidth = 660;
    s.frameHeight = 520;
    s.packetWidth = 1320;
    s.packetHeight = 260;
    s.numFramesPerPacket = 3;
    s.time.SetTimestamp(133000000000000123LL, 0);
    s.timeValid = true;
    s.cameraModel = "Model";
    s.cameraSerial = "SN-1234567890123"; // exactly 16
    s.lensFilterSerial = "LFS";
    s.classifacation = "UNCLASSIFIED";
    s.bandpassStart = 7.5;
    s.bandpassEnd = 13.25;
    s.bandpassValid = true;
    s.iHFov = 24.5;
    s.iVFov = 18.75;
    s.fovValid = true;
    for (int i = 0; i < 8; ++i) {
        SPresetInfo& p = s.presets[i];
        p.available = i % 2 == 0;
        p.intTime = 0.001 * (i + 1);
        p.intTimeValid = true;
        p.frameRate = 30.0f + static_cast<float>(i);
        p.frameRateValid = i != 3;
        p.numFrames = 100u + static_cast<unsigned>(i);
        p.calibrated = i == 7;
        p.minTemp = -20.0 - i;
        p.maxTemp = 120.0 + i;
    }
    return s;
}

// Two objects hold the same payload when they save the same bytes; the layout
// test below pins what those bytes are. Before the preset table only the
// first `presetBytes` of it are compared, and the preset count is left out.
void ExpectSamePayload(CSourceInfoReduceObject& a, CSourceInfoReduceObject& b, size_t presetBytes = 1024)
{
    const std::vector<uint8_t> x = test::Saved(a), y = test::Saved(b);
    ASSERT_EQ(x.size(), y.size());
    for (size_t i = 8; i < 1024 + presetBytes; ++i) {
        if (i != 464) {
            ASSERT_EQ(x[i], y[i]) << "byte " << i;
        }
    }
}

TEST(SourceInfo, DefaultKeepsTheSourceGeometry)
{
    CSourceInfoReduceObject d = MakeFilled();
    d.valid = false;
    d.gps.valid = 1;
    d.Default();
    EXPECT_TRUE(d.valid);
    EXPECT_TRUE(d.presets[0].available);
    EXPECT_FALSE(d.presets[2].available);
    EXPECT_FALSE(d.gps.isValid());
    EXPECT_NE(d.time.GetTimestamp(0), 0); // now
    // These describe the source and survive Default().
    EXPECT_TRUE(d.offset == SRect(-1, 2, 3, 4));
    EXPECT_TRUE(d.interlaced);
    EXPECT_TRUE(d.pixelType == pixelRGB);
}

TEST(SourceInfo, SavedRecordHasTheDocumentedLayout)
{
    CSourceInfoReduceObject s = MakeFilled();
    std::vector<uint8_t> r = test::Saved(s);
    ASSERT_EQ(r.size(), 2048u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 0), 2048u);
    EXPECT_EQ(ReadAt<uint32_t>(r, 4), 0x20000u);
    EXPECT_EQ(ReadAt<int32_t>(r, 8), 14);
    // A 64-character name fills its field without a terminator.
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&r[12]), 64), k64);
    EXPECT_EQ(r[76], 1);
    EXPECT_EQ(r[77], 0);
    EXPECT_EQ(r[78], 1);
    EXPECT_EQ(r[79], dtInt32);
    EXPECT_EQ(ReadAt<uint16_t>(r, 80), 640);
    EXPECT_EQ(ReadAt<uint16_t>(r, 82), 512);
    EXPECT_EQ(ReadAt<int32_t>(r, 84), -1);
    EXPECT_EQ(ReadAt<int32_t>(r, 88), 2);
    EXPECT_EQ(ReadAt<int32_t>(r, 92), 3);
    EXPECT_EQ(ReadAt<int32_t>(r, 96), 4);
    EXPECT_EQ(r[100], 1);
    EXPECT_TRUE(ReadAt<SGuid>(r, 101) == pixelRGB);
    EXPECT_EQ(ReadAt<int32_t>(r, 117), -2);
    EXPECT_EQ(r[121], unitTemperatureFactory);
    EXPECT_EQ(r[122], tempKelvin);
    EXPECT_EQ(ReadAt<uint16_t>(r, 123), 660);
    EXPECT_EQ(ReadAt<uint16_t>(r, 125), 520);
    EXPECT_EQ(ReadAt<uint16_t>(r, 127), 1320);
    EXPECT_EQ(ReadAt<uint16_t>(r, 129), 260);
    EXPECT_EQ(ReadAt<uint16_t>(r, 131), 3);
    EXPECT_EQ(ReadAt<int64_t>(r, 133), 133000000000000123LL);
    EXPECT_EQ(r[141], 1);
    EXPECT_STREQ(reinterpret_cast<const char*>(&r[142]), "Model");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&r[190]), 16), "SN-1234567890123");
    EXPECT_EQ(r[206], 0); // the field after the full serial starts clean
    EXPECT_STREQ(reinterpret_cast<const char*>(&r[382]), "LFS");
    EXPECT_STREQ(reinterpret_cast<const char*>(&r[398]), "UNCLASSIFIED");
    EXPECT_EQ(ReadAt<double>(r, 430), 7.5);
    EXPECT_EQ(ReadAt<double>(r, 438), 13.25);
    EXPECT_EQ(r[446], 1);
    EXPECT_EQ(ReadAt<double>(r, 447), 24.5);
    EXPECT_EQ(ReadAt<double>(r, 455), 18.75);
    EXPECT_EQ(r[463], 1);
    EXPECT_EQ(r[464], 6);
    for (size_t i = 465; i < 1024; ++i) ASSERT_EQ(r[i], 0) << i;
    for (size_t i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        const size_t p = 1024 + 128 * i;
        EXPECT_EQ(r[p], i % 2 == 0 ? 1 : 0);
        EXPECT_EQ(ReadAt<double>(r, p + 1), 0.001 * static_cast<double>(i + 1));
        EXPECT_EQ(r[p + 9], 1);
        EXPECT_EQ(ReadAt<float>(r, p + 10), 30.0f + static_cast<float>(i));
        EXPECT_EQ(r[p + 14], i != 3 ? 1 : 0);
        EXPECT_EQ(ReadAt<uint32_t>(r, p + 15), 100u + i);
        EXPECT_EQ(r[p + 19], i == 7 ? 1 : 0);
        EXPECT_EQ(ReadAt<double>(r, p + 20), -20.0 - static_cast<double>(i));
        EXPECT_EQ(ReadAt<double>(r, p + 28), 120.0 + static_cast<double>(i));
        for (size_t k = 36; k < 128; ++k) ASSERT_EQ(r[p + k], 0) << k;
    }
    // Saving twice gives the same bytes, as the CRC pass requires.
    EXPECT_EQ(test::Saved(s), r);
}

TEST(SourceInfo, CurrentRecordRoundTrip)
{
    CSourceInfoReduceObject s = MakeFilled();
    s.gps.valid = 7;
    SMemFile f(test::Saved(s));
    CSourceInfoReduceObject back;
    ASSERT_TRUE(back.Load(f.file, 0x20000, 0));
    ExpectSamePayload(s, back);
    EXPECT_EQ(back.numPresets, 6);
    EXPECT_FALSE(back.gps.isValid()); // not part of the payload
    EXPECT_EQ(back.version, 0x20000u);
    EXPECT_EQ(f.mem->GetPosition(), 2048);
}

TEST(SourceInfo, FourPresetRecordOfVersion11)
{
    CSourceInfoReduceObject s = MakeFilled();
    std::vector<uint8_t> r = test::Saved(s);
    r.resize(1536);
    WriteAt<uint32_t>(r, 0, 1536);
    WriteAt<uint32_t>(r, 4, 0x10001);
    SMemFile f(r);
    CSourceInfoReduceObject back;
    ASSERT_TRUE(back.Load(f.file, 0x10001, 0));
    EXPECT_EQ(back.numPresets, 4); // whatever the record said
    ExpectSamePayload(s, back, 4 * 128);
    for (int i = 4; i < 8; ++i) {
        EXPECT_FALSE(back.presets[i].available);
        EXPECT_EQ(back.presets[i].frameRate, 0.0f); // zero from the record, not the default 1.0
        EXPECT_EQ(back.presets[i].numFrames, 0u);
    }
    std::vector<uint8_t> again = test::Saved(back);
    ASSERT_EQ(again.size(), 2048u);
    EXPECT_EQ(ReadAt<uint32_t>(again, 0), 2048u);
    EXPECT_EQ(ReadAt<uint32_t>(again, 4), 0x20000u);
}

TEST(SourceInfo, RefusesRecordsWithWrongSizeOrVersion)
{
    CSourceInfoReduceObject s = MakeFilled();
    const std::vector<uint8_t> good = test::Saved(s);
    auto refused = [](std::vector<uint8_t> bytes, unsigned version) {
        SMemFile f(bytes);
        CSourceInfoReduceObject o;
        return !o.Load(f.file, version, 0);
    };
    // Record size, a newer major version than this reader knows, a later minor one.
    const struct {
        size_t at;
        uint32_t value;
        bool loads;
    } cases[] = {{0, 2047, false}, {4, 0x30000, false}, {4, 0x2FFFF, true}};
    for (const auto& c : cases) {
        std::vector<uint8_t> r = good;
        WriteAt<uint32_t>(r, c.at, c.value);
        EXPECT_NE(refused(r, 0x20000), c.loads) << c.at << " " << c.value;
    }
    EXPECT_TRUE(refused(std::vector<uint8_t>(good.begin(), good.begin() + 2000), 0x20000)); // short read

    std::vector<uint8_t> v11 = good;
    v11.resize(1536);
    WriteAt<uint32_t>(v11, 4, 0x10001);
    EXPECT_TRUE(refused(v11, 0x10001)); // record size still says 2048
    WriteAt<uint32_t>(v11, 0, 1536);
    EXPECT_FALSE(refused(v11, 0x10001));
    WriteAt<uint32_t>(v11, 4, 0x20000); // the stored version beats the block's claim
    EXPECT_TRUE(refused(v11, 0x10001));
}

// The typed stream of version 0x10000 and below.
void WriteStream(IFile& f, bool numericPixelType)
{
    f.PutInt32(12);
    f.PutString("Old Camera");
    f.PutBool(true);
    f.PutBool(false);
    f.PutUInt8(dtUInt8);
    f.PutUInt16(320);
    f.PutUInt16(240);
    // Rectangle in the order second, first, fourth, third.
    for (int32_t v : {20, 10, 40, 30}) f.PutInt32(v);
    f.PutBool(true);
    if (numericPixelType) f.PutUInt32(1);
    else f.PutGUID(pixelRGB48);
    f.PutInt32(4);
    f.PutUInt8(unitRadianceUser);
    f.PutUInt8(tempFahrenheit);
    for (uint16_t v : {1, 2, 3, 4, 5}) f.PutUInt16(v);
    f.PutInt64(99887766);
    f.PutBool(true);
    const char* texts[12] = {"m", "mp", "ms", "l", "lp", "ls", "f", "fp", "fs", "lf", "lfp", "lfs"};
    for (const char* t : texts) f.PutString(t);
    for (int i = 0; i < 4; ++i) {
        f.PutBool(true);
        f.PutFlt64(0.5 * i);
        f.PutBool(true);
        f.PutFlt32(60.0f);
        f.PutBool(false);
        f.PutUInt32(10u * static_cast<unsigned>(i));
        f.PutBool(true);
        f.PutFlt64(-5.0);
        f.PutFlt64(55.0 + i);
    }
}

TEST(SourceInfo, TypedStreamOfOldVersions)
{
    SMemFile f;
    WriteStream(*f.file, false);
    f.Rewind();
    CSourceInfoReduceObject s;
    s.abated = true;
    s.bandpassEnd = 9.0;
    s.classifacation = "x";
    s.numPresets = 8;
    s.presets[6].numFrames = 66;
    ASSERT_TRUE(s.Load(f.file, 0x10000, 0));
    EXPECT_EQ(s.adBits, 12);
    EXPECT_STREQ(s.camera.c_str(), "Old Camera");
    EXPECT_TRUE(s.presetSequencing);
    EXPECT_EQ(s.dataType, dtUInt8);
    EXPECT_EQ(s.imageHeight, 240);
    EXPECT_TRUE(s.offset == SRect(10, 20, 30, 40));
    EXPECT_TRUE(s.pixelType == pixelRGB48);
    EXPECT_EQ(s.adBitShift, 4);
    EXPECT_EQ(s.baseUnit, unitRadianceUser);
    EXPECT_EQ(s.baseTempType, tempFahrenheit);
    EXPECT_EQ(s.frameWidth, 1);
    EXPECT_EQ(s.numFramesPerPacket, 5);
    EXPECT_EQ(s.time.GetTimestamp(0), 99887766);
    EXPECT_STREQ(s.cameraModel.c_str(), "m");
    EXPECT_STREQ(s.lensFilterSerial.c_str(), "lfs");
    EXPECT_EQ(s.presets[3].numFrames, 30u);
    EXPECT_EQ(s.presets[3].maxTemp, 58.0);
    EXPECT_FALSE(s.presets[3].frameRateValid);
    EXPECT_EQ(s.numPresets, 4);
    EXPECT_TRUE(s.classifacation.empty());
    // Not in the stream: keep their state.
    EXPECT_TRUE(s.abated);
    EXPECT_EQ(s.bandpassEnd, 9.0);
    EXPECT_EQ(s.presets[6].numFrames, 66u);

    // Version 0 stores the pixel type as a number.
    SMemFile g;
    WriteStream(*g.file, true);
    g.Rewind();
    CSourceInfoReduceObject old;
    ASSERT_TRUE(old.Load(g.file, 0, 0));
    EXPECT_TRUE(old.pixelType == OldPixelTypeUInt32ToNewPixelType(1));
    EXPECT_EQ(old.adBitShift, 4);

    // Any cut of the stream fails without reading past it.
    std::vector<uint8_t> full = f.bytes();
    for (size_t cut : {size_t(0), size_t(3), size_t(20), full.size() / 2, full.size() - 1}) {
        SMemFile c(std::vector<uint8_t>(full.begin(), full.begin() + static_cast<long>(cut)));
        CSourceInfoReduceObject o;
        EXPECT_FALSE(o.Load(c.file, 0x10000, 0)) << cut;
    }
}

TEST(SourceInfo, UpdateNumFramesAndPacketingPatchInPlace)
{
    CSourceInfoReduceObject s;
    s.abated = false;
    for (SPresetInfo& p : s.presets) p.available = true;
    std::vector<uint8_t> r = test::Saved(s);
    const std::vector<uint8_t> before = r;

    unsigned int frames[9] = {5, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(r.data(), 2048, frames, 9));
    EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(r.data(), 2047, frames, 4));
    EXPECT_FALSE(CSourceInfoReduceObject::UpdateNumFrames(nullptr, 2048, frames, 4));
    EXPECT_EQ(r, before);
    EXPECT_TRUE(CSourceInfoReduceObject::UpdateNumFrames(r.data(), 2048, nullptr, 0));

    ASSERT_TRUE(CSourceInfoReduceObject::UpdateNumFrames(r.data(), 2048, frames, 4));
    EXPECT_EQ(ReadAt<uint32_t>(r, 1024 + 15), 5u);
    EXPECT_EQ(r[1024], 1);
    EXPECT_EQ(r[1024 + 128], 0);
    EXPECT_EQ(r[1024 + 384], 0);
    EXPECT_EQ(r[1024 + 512], 1); // beyond count: untouched

    // An abated record keeps its availability bytes.
    s.abated = true;
    r = test::Saved(s);
    ASSERT_TRUE(CSourceInfoReduceObject::UpdateNumFrames(r.data(), 2048, frames, 2));
    EXPECT_EQ(ReadAt<uint32_t>(r, 1024 + 15), 5u);
    EXPECT_EQ(r[1024 + 128], 1);

    EXPECT_FALSE(CSourceInfoReduceObject::UpdatePacketing(r.data(), 1536, 1, 2, 3));
    ASSERT_TRUE(CSourceInfoReduceObject::UpdatePacketing(r.data(), 2048, 0x1234, 0x5678, 9));
    EXPECT_EQ(ReadAt<uint16_t>(r, 127), 0x1234);
    EXPECT_EQ(ReadAt<uint16_t>(r, 129), 0x5678);
    EXPECT_EQ(ReadAt<uint16_t>(r, 131), 9);

    // The patched record reads back.
    SMemFile f(r);
    CSourceInfoReduceObject back;
    ASSERT_TRUE(back.Load(f.file, 0x20000, 0));
    EXPECT_EQ(back.presets[0].numFrames, 5u);
    EXPECT_EQ(back.packetWidth, 0x1234);
}

TEST(SourceInfo, DuplicateCopiesTheRecordAndWhatIsNotSaved)
{
    // Preset and version of copies are checked for every type with the registration.
    CSourceInfoReduceObject s = MakeFilled();
    s.gps.valid = 3;
    s.spare = true;
    s.frame = 17;
    auto d = s.Duplicate().DynamicCast<CSourceInfoReduceObject>();
    ASSERT_TRUE(d);
    ExpectSamePayload(s, *d);
    EXPECT_EQ(d->gps.valid, 3u);
    EXPECT_TRUE(d->spare);
    EXPECT_EQ(d->frame, 17u);
}

} // namespace
} // namespace orv::reduce
