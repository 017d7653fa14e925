#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include "orv/NormFile.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "tests/reduce/objects/MemFile.h"

namespace orv::reduce {
namespace {

using test::ReadAt;
using test::SMemFile;
using test::WriteAt;

// Fills every plane with values that tell the pixels apart.
void Number(CCorrectionReduceObject& c)
{
    for (size_t i = 0; i < c.pixelCount(); ++i) {
        c.gains[i] = 1.0f + static_cast<float>(i);
        c.offsets[i] = static_cast<int16_t>(100 + i);
        c.badPixels[i] = static_cast<uint8_t>(i % 2);
    }
}

TEST(Correction, CreateKeepsPlanesAndDefaults)
{
    CCorrectionReduceObject c;
    c.Create(0, 480, 0, 7);
    EXPECT_EQ(c.width, 0u);
    EXPECT_EQ(c.gains, nullptr);

    c.Create(4, 3, 2, CCorrectionReduceObject::planeGains);
    ASSERT_NE(c.gains, nullptr);
    EXPECT_EQ(c.offsets, nullptr);
    EXPECT_EQ(c.planes, 1);
    EXPECT_FLOAT_EQ(c.gains[11], 1.0f);
    c.gains[5] = 3.0f;

    // Same size and preset: the gains stay, bad pixels arrive with identity.
    c.Create(4, 3, 2, CCorrectionReduceObject::planeBadPixels);
    EXPECT_FLOAT_EQ(c.gains[5], 3.0f);
    EXPECT_EQ(c.planes, 5);
    ASSERT_NE(c.replacements, nullptr);
    EXPECT_EQ(c.replacements[7], 7u);
    EXPECT_EQ(c.badPixels[7], 0);

    c.Init(CCorrectionReduceObject::planeGains | CCorrectionReduceObject::planeOffsets);
    EXPECT_FLOAT_EQ(c.gains[5], 1.0f);
    EXPECT_EQ(c.offsets, nullptr); // absent planes are skipped

    // Another preset starts afresh.
    c.Create(4, 3, 1, CCorrectionReduceObject::planeOffsets);
    EXPECT_EQ(c.gains, nullptr);
    EXPECT_EQ(c.planes, 2);
}

TEST(Correction, FlipMovesTablesAndRewritesReplacements)
{
    CCorrectionReduceObject c;
    c.Create(3, 3, 0, 7);
    Number(c);
    c.replacements[1] = 1; // top row, names itself
    c.replacements[4] = 5; // middle row, names its right neighbour

    c.Flip(false, true);
    // Rows 0 and 2 swap, the middle row stays.
    EXPECT_FLOAT_EQ(c.gains[0], 7.0f);
    EXPECT_FLOAT_EQ(c.gains[4], 5.0f);
    EXPECT_EQ(c.offsets[6], 100);
    EXPECT_EQ(c.replacements[7], 7u); // the pixel that named itself names its new place
    EXPECT_EQ(c.replacements[4], 5u);
    EXPECT_FALSE(c.verticalFlip); // Flip leaves the flags alone
    c.Flip(false, true);

    c.Flip(true, false);
    EXPECT_FLOAT_EQ(c.gains[0], 3.0f);
    EXPECT_EQ(c.replacements[4], 3u); // right neighbour became left neighbour
    EXPECT_EQ(c.replacements[2], 2u);
    c.Flip(true, false);

    // 3 by 3 with both: the middle row is reversed too.
    c.Flip(true, true);
    EXPECT_FLOAT_EQ(c.gains[3], 6.0f);
    EXPECT_FLOAT_EQ(c.gains[5], 4.0f);
    EXPECT_FLOAT_EQ(c.gains[8], 1.0f);
    EXPECT_EQ(c.badPixels[8], 0); // pixel 0's flag
    EXPECT_EQ(c.replacements[4], 3u);
    EXPECT_EQ(c.replacements[8], 8u);

    // Non-square, both flips against the formula evaluated directly.
    CCorrectionReduceObject r;
    r.Create(4, 3, 0, CCorrectionReduceObject::planeBadPixels);
    r.replacements[0] = 6;
    r.Flip(true, true);
    EXPECT_EQ(r.replacements[11], 11u - 6u);
}

TEST(Correction, SetFlippedOnlyFlipsOnChange)
{
    CCorrectionReduceObject c;
    c.Create(2, 2, 0, CCorrectionReduceObject::planeGains);
    for (int i = 0; i < 4; ++i) c.gains[i] = static_cast<float>(i);
    c.SetFlipped(true, false);
    c.SetFlipped(true, false);
    EXPECT_FLOAT_EQ(c.gains[0], 1.0f);
    EXPECT_TRUE(c.horizontalFlip);
    c.SetFlipped(false, true); // from horizontal to vertical: both axes change
    EXPECT_FLOAT_EQ(c.gains[0], 2.0f);
    c.SetFlipped(false, false);
    EXPECT_FLOAT_EQ(c.gains[0], 0.0f);
    EXPECT_FALSE(c.verticalFlip);
}

TEST(Correction, PayloadRoundTripStoresSensorOrientation)
{
    CCorrectionReduceObject c;
    c.Create(3, 2, 4, 7);
    Number(c);
    c.replacements[0] = 5;
    c.SetFlipped(true, false);
    const float flippedFirst = c.gains[0];

    SMemFile mem;
    ASSERT_TRUE(c.Save(mem.file, 0));
    std::vector<uint8_t> bytes = mem.bytes();
    const size_t n = 6;
    ASSERT_EQ(bytes.size(), 32 + n * (4 + 2 + 1 + 4));
    EXPECT_EQ(ReadAt<uint32_t>(bytes, 0), 32u);
    EXPECT_EQ(ReadAt<uint32_t>(bytes, 4), 0x10001u);
    EXPECT_EQ(ReadAt<uint32_t>(bytes, 8), 3u);
    EXPECT_EQ(ReadAt<uint32_t>(bytes, 12), 2u);
    EXPECT_EQ(bytes[16], 7);
    for (size_t i = 17; i < 32; ++i) EXPECT_EQ(bytes[i], 0) << i;
    EXPECT_FLOAT_EQ(ReadAt<float>(bytes, 32), 1.0f); // unflipped
    EXPECT_EQ(ReadAt<int16_t>(bytes, 32 + 4 * n), 100);
    EXPECT_EQ(ReadAt<uint32_t>(bytes, 32 + 7 * n), 5u);
    // The object is as it was.
    EXPECT_FLOAT_EQ(c.gains[0], flippedFirst);
    EXPECT_TRUE(c.horizontalFlip);

    // Loaded back unflipped: saving it again gives the same bytes.
    CCorrectionReduceObject back;
    back.preset = 4;
    mem.Rewind();
    ASSERT_TRUE(back.Load(mem.file, 0x10001, 0));
    EXPECT_FALSE(back.horizontalFlip);
    EXPECT_EQ(test::Saved(back), bytes);

    // Old form: typed width, height, mask, then the planes.
    SMemFile old;
    old.file->PutUInt32(2);
    old.file->PutUInt32(1);
    old.file->PutUInt8(CCorrectionReduceObject::planeOffsets);
    for (int16_t v : {-3, 9}) old.file->PutInt16(v);
    old.Rewind();
    ASSERT_TRUE(back.Load(old.file, 0x10000, 0));
    EXPECT_EQ(back.planes, 2);
    EXPECT_EQ(back.gains, nullptr);
    EXPECT_EQ(back.offsets[0], -3);
    EXPECT_EQ(back.offsets[1], 9);
}

TEST(Correction, CorruptPayloadsAreRefused)
{
    CCorrectionReduceObject c;
    c.Create(3, 2, 0, 7);
    SMemFile mem;
    ASSERT_TRUE(c.Save(mem.file, 0));
    std::vector<uint8_t> good = mem.bytes();

    auto loads = [](std::vector<uint8_t> bytes) {
        SMemFile f(bytes);
        CCorrectionReduceObject o;
        return o.Load(f.file, 0x10001, 0);
    };
    EXPECT_TRUE(loads(good));
    for (size_t size : {good.size() - 1, size_t(0)}) {
        EXPECT_FALSE(loads(std::vector<uint8_t>(good.begin(), good.begin() + static_cast<long>(size)))) << size;
    }
    // Replacements name pixels of the 3 x 2 table: 5 is its last, 6 beyond it.
    const size_t replacementsAt = 32 + 7 * 6;
    const struct {
        size_t at;
        uint32_t value;
        bool loads;
    } cases[] = {{0, 31, false}, {4, 0x20000, false}, {replacementsAt, 5, true}, {replacementsAt, 6, false}};
    for (const auto& c : cases) {
        std::vector<uint8_t> bad = good;
        WriteAt<uint32_t>(bad, c.at, c.value);
        EXPECT_EQ(loads(bad), c.loads) << c.at << " " << c.value;
    }
    // Sizes far beyond the stream, whose product wraps in 32 bits, are refused before allocating.
    std::vector<uint8_t> huge = good;
    WriteAt<uint32_t>(huge, 8, 0xFFFFFFFFu);
    WriteAt<uint32_t>(huge, 12, 0xFFFFFFFFu);
    EXPECT_FALSE(loads(huge));
}

// A private folder for table files, removed with its files afterwards.
struct STempDir {
    std::string path;
    STempDir()
    {
        std::string pattern = testing::TempDir() + "corrXXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back('\0');
        if (mkdtemp(buffer.data())) path = buffer.data();
    }
    ~STempDir()
    {
        for (const char* ext : {".mxg", ".mxo", ".mbp", ".MXG"}) std::remove((path + "/cal" + ext).c_str());
        rmdir(path.c_str());
    }
    CString Name(const char* file) const { return CString((path + "/" + file).c_str()); }
};

TEST(Correction, TableFilesRoundTrip)
{
    STempDir dir;
    ASSERT_FALSE(dir.path.empty());
    CCorrectionReduceObject c;
    c.Create(3, 2, 1, 7);
    Number(c);
    c.replacements[2] = 0;
    ASSERT_TRUE(c.Save(fileSystem(), dir.Name("cal")));

    // By the changed extension, in any case, and by appending.
    for (const char* name : {"cal.MXG", "cal", "cal.mbp"}) {
        CCorrectionReduceObject back;
        back.preset = 1;
        ASSERT_TRUE(back.Load(fileSystem(), dir.Name(name))) << name;
        EXPECT_TRUE(back.valid);
        EXPECT_EQ(test::Saved(back), test::Saved(c));
    }

    // A gain table of another size makes the load fail and leaves the object.
    float other[4] = {1, 1, 1, 1};
    ASSERT_TRUE(CNormFile::SaveGainTable(fileSystem(), dir.Name("cal.mxg"), 2, 2, 1, other));
    CCorrectionReduceObject kept;
    kept.Create(5, 5, 0, 1);
    EXPECT_FALSE(kept.Load(fileSystem(), dir.Name("cal")));
    EXPECT_EQ(kept.width, 5u);

    // A table of the wrong kind under a name is refused too.
    ASSERT_TRUE(CNormFile::SaveOffsetTable(fileSystem(), dir.Name("cal.mxg"), 3, 2, 1, c.offsets));
    EXPECT_FALSE(kept.Load(fileSystem(), dir.Name("cal")));

    // No file at all: empty, valid, true.
    CCorrectionReduceObject none;
    EXPECT_TRUE(none.Load(fileSystem(), dir.Name("missing")));
    EXPECT_TRUE(none.valid);
    EXPECT_EQ(none.planes, 0);
}

TEST(AbateCfg, RecordLayoutAndRoundTrip)
{
    CAbateCfgReduceObject a;
    a.mode = abateLastBrightEnough;
    for (int i = 0; i < 8; ++i) {
        a.order[i] = static_cast<uint8_t>(7 - i);
        a.lowLimits[i] = static_cast<uint16_t>(100 + i);
        a.highLimits[i] = static_cast<uint16_t>(9000 + i);
    }
    SMemFile mem(test::Saved(a));
    const std::vector<uint8_t> b = mem.bytes();
    ASSERT_EQ(b.size(), 288u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 0), 288u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 4), 0x20000u);
    EXPECT_EQ(b[8], 0);
    EXPECT_EQ(b[9], 1);
    EXPECT_EQ(b[10], 8);
    for (size_t i = 11; i < 32; ++i) EXPECT_EQ(b[i], 0);
    // Entry 2 names preset 5 with that preset's limits.
    const size_t e = 32 + 2 * 32;
    EXPECT_EQ(ReadAt<uint32_t>(b, e), 32u);
    EXPECT_EQ(b[e + 4], 5);
    EXPECT_EQ(ReadAt<uint16_t>(b, e + 5), 105);
    EXPECT_EQ(ReadAt<uint16_t>(b, e + 7), 9005);
    for (size_t i = e + 9; i < e + 32; ++i) EXPECT_EQ(b[i], 0);

    CAbateCfgReduceObject back;
    ASSERT_TRUE(back.Load(mem.file, 0x20000, 0));
    EXPECT_EQ(test::Saved(back), b);

    // Save flag 16 marks the source whatever the object holds.
    EXPECT_EQ(test::Saved(a, CAbateCfgReduceObject::kSaveAsSource)[8], 1);

    // A bad entry size and an entry count other than 8 are refused.
    for (size_t at : {size_t(32 + 7 * 32), size_t(10)}) {
        std::vector<uint8_t> bad = b;
        bad[at] = at == 10 ? 4 : 31;
        SMemFile badFile(bad);
        EXPECT_FALSE(back.Load(badFile.file, 0x20000, 0)) << at;
    }
}

TEST(AbateCfg, OlderFormsAndPresetFolding)
{
    // A 160-byte record: entries 4 to 7 get their defaults.
    std::vector<uint8_t> r(160, 0);
    WriteAt<uint32_t>(r, 0, 160);
    WriteAt<uint32_t>(r, 4, 0x10001);
    r[10] = 4;
    for (int i = 0; i < 4; ++i) {
        const size_t e = 32 + 32 * i;
        WriteAt<uint32_t>(r, e, 32);
        r[e + 4] = static_cast<uint8_t>(3 - i);
        WriteAt<uint16_t>(r, e + 5, 10);
        WriteAt<uint16_t>(r, e + 7, 20);
    }
    r[32 + 4] = 200; // entry 0 names preset 200: stored under 7
    SMemFile f(r);
    CAbateCfgReduceObject a;
    for (auto& v : a.lowLimits) v = 1;
    ASSERT_TRUE(a.Load(f.file, 0x10001, 0));
    EXPECT_EQ(a.order[0], 7);
    EXPECT_EQ(a.order[1], 2);
    for (int i = 4; i < 8; ++i) {
        EXPECT_EQ(a.order[i], i);
        EXPECT_EQ(a.lowLimits[i], 1000);
        EXPECT_EQ(a.highLimits[i], 15000);
    }
    EXPECT_EQ(a.lowLimits[2], 10);

    // A typed stream of four presets leaves entries 4 to 7 as they were.
    SMemFile t;
    t.file->PutBool(true);
    t.file->PutUInt8(1);
    for (uint16_t i = 0; i < 4; ++i) {
        t.file->PutUInt16(static_cast<uint16_t>(i + 1));
        t.file->PutUInt16(static_cast<uint16_t>(i + 11));
    }
    for (uint8_t i = 0; i < 4; ++i) t.file->PutUInt8(static_cast<uint8_t>(3 - i));
    t.Rewind();
    CAbateCfgReduceObject s;
    s.highLimits[6] = 77;
    ASSERT_TRUE(s.Load(t.file, 0x10000, 0));
    EXPECT_TRUE(s.source);
    EXPECT_EQ(s.lowLimits[3], 4);
    EXPECT_EQ(s.highLimits[0], 11);
    EXPECT_EQ(s.order[0], 3);
    EXPECT_EQ(s.highLimits[6], 77);
    // Truncated typed stream.
    SMemFile shortStream(std::vector<uint8_t>{1, 0, 5});
    EXPECT_FALSE(s.Load(shortStream.file, 0x10000, 0));
}

TEST(AbateSortHelper, FloatAscendingThenDoubleDescending)
{
    TArray<SAbateSortHelper> items;
    for (const SAbateSortHelper& item : {SAbateSortHelper{0, 2.0f, 1.0}, SAbateSortHelper{1, 1.0f, 1.0},
                                         SAbateSortHelper{2, 2.0f, 5.0}, SAbateSortHelper{3, -1.0f, 0.0},
                                         SAbateSortHelper{4, 1.0f, 3.0}}) {
        items.add(item);
    }
    SAbateSortHelper::Sort(items);
    const uint32_t expected[] = {3, 4, 1, 2, 0};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(items[i].item, expected[i]) << i;
}

} // namespace
} // namespace orv::reduce
