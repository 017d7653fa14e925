#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "reduce/store/InfoFile.h"
#include "tests/reduce/store/TestObjects.h"

namespace orv::reduce {
namespace {

using namespace test;

const uint8_t kFileIDBytes[16] = {0xF6, 0x13, 0x3C, 0x9C, 0x10, 0x1A, 0xC5, 0x49,
                                  0x86, 0xC9, 0xAC, 0xF8, 0xA9, 0x28, 0xDC, 0xC6};

constexpr uint64_t kNone = ~uint64_t(0);

class InfoFileTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(RegisterTestTypes()); }
};

TEST_F(InfoFileTest, HeaderTableAndFileHeaderBytes)
{
    // The table holds the documented offsets and sizes.
    const SInfoFileField expected[] = {{0, 32}, {32, 16}, {48, 4}, {52, 1}, {53, 8}, {61, 4}, {65, 8}, {73, 4}};
    ASSERT_EQ(std::size(blockHeader::fields), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(blockHeader::fields[i].offset, expected[i].offset) << i;
        EXPECT_EQ(blockHeader::fields[i].size, expected[i].size) << i;
    }

    SMemFile m;
    ASSERT_TRUE(CreateInfoFile(m.file));
    std::vector<uint8_t> b = m.bytes();
    ASSERT_EQ(b.size(), 77u);
    for (size_t i = 16; i < 32; ++i) EXPECT_EQ(b[i], 0) << i;
    EXPECT_EQ(0, std::memcmp(b.data() + 32, kFileIDBytes, 16));
    EXPECT_EQ(HeaderAt(b, 0), (SRawHeader{"VOLK QRT-US File", guidFileID, 4096, -1, kNone, 0, 0, 0}));

    // A header alone loads as an empty file.
    CReduceObjectArray objects;
    objects.add(Payload(0xFF, 1));
    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    EXPECT_TRUE(LoadInfoFile(m.file, objects, blocks));
    EXPECT_EQ(objects.GetSize(), 0u);
    EXPECT_EQ(blocks.size(), 0u);

    // A failing write fails the function.
    unsigned char small[40];
    CMemFile fixed;
    fixed.Attach(small, sizeof small, false);
    EXPECT_FALSE(CreateInfoFile(TSharedPtr<IFile>(&fixed, noDestroy)));
}

TEST_F(InfoFileTest, SaveWritesBlocksByteForByteAndLoadsThemBack)
{
    CReduceObjectArray objects;
    objects.add(Payload(0xFF, 0xA1B2C3D4, true, "first"));
    objects.add(Payload(3, 7, false, "second", 1234));
    auto hidden = Payload(0xFF, 8, true, "not persisted");
    hidden->persist = false;
    objects.add(hidden);

    SMemFile m;
    ASSERT_TRUE(SaveInfoFile(m.file, objects, 16 | 4));
    EXPECT_EQ(hidden.DynamicCast<CPayloadObject>()->savedFlags, 0u); // never saved
    std::vector<uint8_t> b = m.bytes();
    const size_t first = 77, firstSize = 4 + 4 + 5, second = first + 77 + firstSize, secondSize = 4 + 4 + 6;
    ASSERT_EQ(b.size(), second + 77 + secondSize);

    // Flags: bit 1 always, bit 0 for valid.
    const uint32_t secondCrc = CalcCRC32(0, b.data() + second + 77, secondSize);
    EXPECT_EQ(HeaderAt(b, first), (SRawHeader{"StoreTestPayload", kPayloadID, 0x10000, -1, kNone, 3, firstSize,
                                              CalcCRC32(0, b.data() + first + 77, firstSize)}));
    EXPECT_EQ(b[first + 16], 0); // terminator and padding
    EXPECT_EQ(ReadAt<uint32_t>(b, first + 77), 0xA1B2C3D4u);
    EXPECT_EQ(HeaderAt(b, second),
              (SRawHeader{"StoreTestPayload", kPayloadID, 0x10000, 3, 1234, 2, secondSize, secondCrc}));

    // The block written to memory and the one written by InitInfoFileBlock and
    // WriteInfoFileBlock to a file are the bytes SaveInfoFile wrote.
    SInfoFileBlock block;
    ASSERT_TRUE(InitInfoFileBlock(block, objects.GetAt(1)));
    uint8_t buffer[77];
    ASSERT_TRUE(WriteInfoFileBlock(buffer, block));
    EXPECT_EQ(0, std::memcmp(buffer, b.data() + second, 77));
    SMemFile one;
    ASSERT_TRUE(WriteInfoFileBlock(one.file, objects.GetAt(1)));
    EXPECT_EQ(one.bytes(), std::vector<uint8_t>(b.begin() + second, b.end()));

    // Load: objects rebuilt, version and flags passed on, the header's preset,
    // frame and valid stand even though Load ran Default().
    CReduceObjectArray loaded;
    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, loaded, blocks, 16 | 4));
    ASSERT_EQ(loaded.GetSize(), 2u);
    ASSERT_EQ(blocks.size(), 2u);
    auto p0 = loaded.GetAt(0).DynamicCast<CPayloadObject>();
    auto p1 = loaded.GetAt(1).DynamicCast<CPayloadObject>();
    ASSERT_TRUE(p0 && p1);
    EXPECT_EQ(p0->value, 0xA1B2C3D4u);
    EXPECT_STREQ(p1->text.c_str(), "second");
    EXPECT_EQ(p0->loadedFlags, 20u);
    EXPECT_EQ(p0->loadedVersion, 0x10000u);
    EXPECT_EQ(p0->preset, 0xFF);
    EXPECT_FALSE(p0->IsPerFrame());
    EXPECT_TRUE(p0->valid);
    EXPECT_EQ(p1->preset, 3);
    EXPECT_EQ(p1->frame, 1234u);
    EXPECT_FALSE(p1->valid);
    EXPECT_EQ(blocks[0].headerOffset, first);
    EXPECT_EQ(blocks[0].dataOffset, first + 77);
    EXPECT_EQ(blocks[1].headerOffset, second);
    EXPECT_EQ(blocks[1].crc, secondCrc);
    EXPECT_STREQ(blocks[1].name, "StoreTestPayload");

    // A scan gives the same directory.
    TArray<SInfoFileBlock> scanned;
    m.mem->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(m.file, scanned, 0));
    ASSERT_EQ(scanned.size(), 2u);
    const SInfoFileBlock &x = scanned[1], &y = blocks[1];
    EXPECT_STREQ(x.name, y.name);
    EXPECT_TRUE(x.typeID == y.typeID && x.version == y.version && x.preset == y.preset && x.frame == y.frame &&
                x.flags == y.flags && x.size == y.size && x.crc == y.crc && x.headerOffset == y.headerOffset &&
                x.dataOffset == y.dataOffset);
}

TEST_F(InfoFileTest, SaveFailsOnUnsavablePersistedObjectsAndSkipsCorrections)
{
    CReduceObjectArray objects;
    objects.add(Payload(0xFF, 1, true, "a"));
    auto noSave = TSharedPtr<IReduceObject>(new CNoSaveObject);
    objects.add(noSave);
    SMemFile m;
    EXPECT_FALSE(SaveInfoFile(m.file, objects, 0));
    // Required: the file stays partly written (the header and the first block).
    EXPECT_EQ(m.bytes().size(), 77u + 77u + 9u);
    noSave->persist = false;
    SMemFile m2;
    EXPECT_TRUE(SaveInfoFile(m2.file, objects, 0));
    EXPECT_EQ(m2.bytes().size(), 77u + 77u + 9u);

    // Flag 8 leaves out "Correction" and "RCal" objects whatever their persist.
    CReduceObjectArray cal;
    cal.add(TSharedPtr<IReduceObject>(new CLooseObject(kCorrectionID, "Correction")));
    cal.add(TSharedPtr<IReduceObject>(new CLooseObject(kRCalID, "RCal")));
    cal.add(TSharedPtr<IReduceObject>(new CLooseObject(kUnknownID, "Other")));
    SMemFile m3;
    ASSERT_TRUE(SaveInfoFile(m3.file, cal, 8));
    std::vector<uint8_t> b = m3.bytes();
    ASSERT_EQ(b.size(), 77u + 78u);
    EXPECT_EQ(HeaderAt(b, 77).name, "Other");
    SMemFile m4;
    ASSERT_TRUE(SaveInfoFile(m4.file, cal, 0));
    EXPECT_EQ(m4.bytes().size(), 77u + 3 * 78u);

    // A write that fails mid-way fails the save.
    unsigned char small[100];
    CMemFile fixed;
    fixed.Attach(small, sizeof small, false);
    EXPECT_FALSE(SaveInfoFile(TSharedPtr<IFile>(&fixed, noDestroy), cal, 0));
    EXPECT_FALSE(SaveInfoFile(TSharedPtr<IFile>(), cal, 0));
}

TEST_F(InfoFileTest, LongNamesAreCutAndTerminatedOnRead)
{
    const char* longName = "ANameOfMoreThanThirtyTwoBytesLong!!";
    CReduceObjectArray objects;
    objects.add(TSharedPtr<IReduceObject>(new CLooseObject(kUnknownID, longName)));
    SMemFile m;
    ASSERT_TRUE(SaveInfoFile(m.file, objects, 0));
    std::vector<uint8_t> b = m.bytes();
    EXPECT_EQ(0, std::memcmp(b.data() + 77, longName, 32)); // no terminator in the file
    EXPECT_EQ(ReadAt<SGuid>(b, 77 + 32), kUnknownID); // the identifier follows at once
    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(m.file, blocks, 0));
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_EQ(std::string(blocks[0].name), std::string(longName, 32));
}

// A file of: header, unknown block, failing Load, short Load, free block, a
// payload, each chosen to exercise one rule of the walk.
std::vector<uint8_t> MixedFile()
{
    SMemFile m;
    CreateInfoFile(m.file);
    CLooseObject unknown(kUnknownID, "Unknown");
    CFailLoadObject fail;
    CShortLoadObject shortLoad;
    WriteInfoFileBlock(m.file, TSharedPtr<IReduceObject>(&unknown, noDestroy));
    WriteInfoFileBlock(m.file, TSharedPtr<IReduceObject>(&fail, noDestroy));
    WriteInfoFileBlock(m.file, TSharedPtr<IReduceObject>(&shortLoad, noDestroy));
    WriteFreeInfoFileBlock(m.file, 10);
    WriteInfoFileBlock(m.file, Payload(2, 0x600D, true, "last", 5));
    return m.bytes();
}

TEST_F(InfoFileTest, LoadSkipsUnknownTypesFailedLoadsAndFreeBlocks)
{
    std::vector<uint8_t> bytes = MixedFile();
    const size_t freeBlock = 77 + 78 + 81 + 93;
    EXPECT_EQ(HeaderAt(bytes, freeBlock), (SRawHeader{"", SGuid{}, 0, -1, kNone, 0, 10, 0}));
    for (size_t i = 0; i < 10; ++i) EXPECT_EQ(bytes[freeBlock + 77 + i], 0);

    SMemFile m(bytes);
    CReduceObjectArray objects;
    TArray<SInfoFileBlock> blocks;
    ASSERT_TRUE(LoadInfoFile(m.file, objects, blocks, 0));
    ASSERT_EQ(blocks.size(), 5u);
    EXPECT_EQ(blocks[0].typeID, kUnknownID);
    EXPECT_EQ(blocks[1].typeID, kFailLoadID);
    EXPECT_EQ(blocks[3].headerOffset, freeBlock);
    ASSERT_EQ(objects.GetSize(), 2u);
    EXPECT_EQ(objects.GetAt(0)->GetTypeID(), kShortLoadID);
    auto last = objects.GetAt(1).DynamicCast<CPayloadObject>();
    ASSERT_TRUE(last);
    EXPECT_EQ(last->value, 0x600Du); // found although the short Load left 12 bytes
    EXPECT_EQ(m.bytes(), bytes);     // a load never writes

    // The forms without a block list.
    CReduceObjectArray again;
    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, again));
    EXPECT_EQ(again.GetSize(), 2u);
}

TEST_F(InfoFileTest, FlagEightSkipsCorrectionBlocksWithoutListingThem)
{
    SMemFile m;
    CreateInfoFile(m.file);
    CLooseObject correction(kCorrectionID, "Correction");
    CLooseObject rcal(kRCalID, "RCal");
    WriteInfoFileBlock(m.file, TSharedPtr<IReduceObject>(&correction, noDestroy));
    WriteInfoFileBlock(m.file, TSharedPtr<IReduceObject>(&rcal, noDestroy));
    WriteInfoFileBlock(m.file, Payload(0xFF, 5, true, "after"));

    CReduceObjectArray objects;
    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, objects, blocks, 8));
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_EQ(blocks[0].typeID, kPayloadID);
    ASSERT_EQ(objects.GetSize(), 1u);

    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, objects, blocks, 0));
    EXPECT_EQ(blocks.size(), 3u);
    // The scan ignores its flags.
    m.mem->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(m.file, blocks, 8));
    EXPECT_EQ(blocks.size(), 3u);
}

TEST_F(InfoFileTest, BadFileHeadersAreRefusedAndLeaveTheArraysAlone)
{
    SMemFile good;
    CreateInfoFile(good.file);
    WriteInfoFileBlock(good.file, Payload(0xFF, 1, true, "x"));
    const std::vector<uint8_t> bytes = good.bytes();

    struct SChange {
        const char* what;
        size_t offset;
        uint8_t value;
    };
    const SChange changes[] = {
        {"name", 0, 'v'},       {"name terminator", 16, ' '}, {"identifier", 40, 0},
        {"version 4097", 48, 1}, {"version high", 50, 1},      {"preset", 52, 0x7F}, {"frame", 60, 0x7F},
        {"flags", 61, 1},        {"size", 65, 1},              {"crc", 76, 1},
    };
    for (const SChange& c : changes) {
        std::vector<uint8_t> b = bytes;
        b[c.offset] = c.value;
        SMemFile m(b);
        CReduceObjectArray objects;
        objects.add(Payload(0xFF, 77));
        TArray<SInfoFileBlock> blocks;
        blocks.add(SInfoFileBlock{});
        EXPECT_FALSE(LoadInfoFile(m.file, objects, blocks, 0)) << c.what;
        EXPECT_EQ(objects.GetSize(), 1u) << c.what;
        EXPECT_EQ(blocks.size(), 1u) << c.what;
        m.mem->SeekToBegin();
        EXPECT_FALSE(ScanInfoFile(m.file, blocks, 0)) << c.what;
        EXPECT_EQ(blocks.size(), 1u) << c.what;
    }
    // Only the 17 bytes of the name and its terminator are compared: the
    // padding after them is not checked.
    std::vector<uint8_t> padded = bytes;
    padded[31] = 'x';
    SMemFile m(padded);
    TArray<SInfoFileBlock> blocks;
    EXPECT_TRUE(ScanInfoFile(m.file, blocks, 0));
    EXPECT_EQ(blocks.size(), 1u);
}

TEST_F(InfoFileTest, TruncationInsideHeadersFailsInsidePayloadsDoesNot)
{
    std::vector<uint8_t> bytes = MixedFile();
    const size_t payloadBlock = 77 + 78 + 81 + 93 + 87;
    // Cut inside the last block's header: false, blocks before it stay listed.
    // Cut inside the last payload: its Load fails and the object is dropped,
    // but the walk is true.
    const struct {
        size_t length;
        bool ok;
        size_t blocks, objects;
    } cuts[] = {{payloadBlock + 40, false, 4, 1}, {bytes.size() - 3, true, 5, 1}};
    for (const auto& c : cuts) {
        SCOPED_TRACE(c.length);
        SMemFile m(std::vector<uint8_t>(bytes.begin(), bytes.begin() + static_cast<long>(c.length)));
        CReduceObjectArray objects;
        TArray<SInfoFileBlock> blocks;
        EXPECT_EQ(LoadInfoFile(m.file, objects, blocks, 0), c.ok);
        EXPECT_EQ(blocks.size(), c.blocks);
        EXPECT_EQ(objects.GetSize(), c.objects);
        m.mem->SeekToBegin();
        EXPECT_EQ(ScanInfoFile(m.file, blocks, 0), c.ok);
        EXPECT_EQ(blocks.size(), c.blocks);
    }
}

TEST_F(InfoFileTest, SizeAllOnesEndsTheChain)
{
    SMemFile m;
    CreateInfoFile(m.file);
    WriteInfoFileBlock(m.file, Payload(0xFF, 1));
    SInfoFileBlock last{};
    StrCpy(last.name, "Tail", sizeof last.name);
    last.typeID = kUnknownID;
    last.preset = -1;
    last.frame = kNone;
    last.flags = 1;
    last.size = kNone;
    WriteInfoFileBlock(m.file, last);
    // What follows looks like a block but is data.
    WriteInfoFileBlock(m.file, Payload(0xFF, 2));
    m.mem->WriteZeros(1000);

    CReduceObjectArray objects;
    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, objects, blocks, 0));
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[1].size, kNone);
    EXPECT_EQ(objects.GetSize(), 1u);
    m.mem->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(m.file, blocks, 0));
    EXPECT_EQ(blocks.size(), 2u);
}

TEST_F(InfoFileTest, PathFormsOpenReadAndWrite)
{
    char dir[] = "/tmp/orvstoreXXXXXX";
    ASSERT_TRUE(mkdtemp(dir));
    CString path = CString(dir) + "/info.qrt";
    CReduceObjectArray objects;
    objects.add(Payload(1, 3, true, "disk", 2));
    ASSERT_TRUE(SaveInfoFile(path, objects, 0));
    CReduceObjectArray loaded;
    TArray<SInfoFileBlock> blocks;
    ASSERT_TRUE(LoadInfoFile(path, loaded, blocks, 0));
    EXPECT_EQ(loaded.GetSize(), 1u);
    ASSERT_TRUE(LoadInfoFile(fileSystem(), path, loaded, 0));
    ASSERT_TRUE(ScanInfoFile(fileSystem(), path, blocks, 0));
    EXPECT_EQ(blocks.size(), 1u);
    ASSERT_TRUE(ScanInfoFile(path, blocks));

    CString missing = CString(dir) + "/missing.qrt";
    EXPECT_FALSE(LoadInfoFile(missing, loaded, 0));
    EXPECT_FALSE(ScanInfoFile(missing, blocks, 0));
    EXPECT_FALSE(LoadInfoFile(nullptr, path, loaded, 0));
    EXPECT_FALSE(SaveInfoFile(CString(dir) + "/no/such/dir.qrt", objects, 0));
    unlink(path.c_str());
    rmdir(dir);
}

TEST_F(InfoFileTest, CorruptedFilesNeverCrashOrWrite)
{
    std::vector<uint8_t> bytes = MixedFile();
    // Every prefix.
    for (size_t n = 0; n <= bytes.size(); ++n) {
        std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + n);
        SMemFile m(cut);
        CReduceObjectArray objects;
        TArray<SInfoFileBlock> blocks;
        bool loaded = LoadInfoFile(m.file, objects, blocks, 0);
        if (n < 77) {
            EXPECT_FALSE(loaded) << n;
        }
        m.mem->SeekToBegin();
        ScanInfoFile(m.file, blocks, 0);
        EXPECT_EQ(m.bytes(), cut);
    }
    // Every byte, flipped in several ways, including sizes that point far
    // beyond the end and string lengths that claim gigabytes.
    for (size_t i = 0; i < bytes.size(); ++i) {
        for (uint8_t mask : {0x01, 0x80, 0xFF}) {
            std::vector<uint8_t> b = bytes;
            b[i] ^= mask;
            SMemFile m(b);
            CReduceObjectArray objects;
            TArray<SInfoFileBlock> blocks;
            LoadInfoFile(m.file, objects, blocks, 0);
            EXPECT_LE(blocks.size(), 5u);
            m.mem->SeekToBegin();
            ScanInfoFile(m.file, blocks, 0);
            EXPECT_EQ(m.bytes(), b);
        }
    }
}

} // namespace
} // namespace orv::reduce
