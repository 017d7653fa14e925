#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

#include "orv/File.h"

using orv::CCalcCRC32File;
using orv::CMemFile;
using orv::CString;
using orv::IFile;
using orv::TSharedPtr;

namespace {

std::vector<unsigned char> Bytes(CMemFile& f) { return std::vector<unsigned char>(f.data(), f.data() + f.size()); }

TSharedPtr<IFile> MemFileOf(const void* data, size_t size)
{
    auto* f = new CMemFile();
    f->Create();
    f->Write(data, size);
    f->SeekToBegin();
    return TSharedPtr<IFile>(f);
}

// Claims to be 4 GiB long and hands out a string length of 2^31 + 1.
class CHugeFile : public IFile {
public:
    unsigned long Write(const void*, unsigned long) override { return 0; }
    unsigned long Read(void* data, unsigned long size) override
    {
        unsigned char* p = static_cast<unsigned char*>(data);
        for (unsigned long i = 0; i < size; ++i, ++m_pos) p[i] = m_pos == 3 ? 0x80 : m_pos == 0 ? 1 : 0;
        return size;
    }
    long long GetPosition() override { return m_pos; }
    bool Seek(long long, int) override { return false; }
    long long GetLength() override { return 1LL << 32; }

private:
    long long m_pos = 0;
};

} // namespace

TEST(IFile, TypedPutsAreLittleEndianAtExactOffsets)
{
    CMemFile f;
    ASSERT_TRUE(f.Create());
    EXPECT_TRUE(f.PutUInt8(0x12));                   // 0
    EXPECT_TRUE(f.PutInt8(-2));                      // 1
    EXPECT_TRUE(f.PutUInt16(0x3456));                // 2
    EXPECT_TRUE(f.PutInt16(-2));                     // 4
    EXPECT_TRUE(f.PutUInt32(0x89ABCDEFu));           // 6
    EXPECT_TRUE(f.PutInt32(-3));                     // 10
    EXPECT_TRUE(f.PutUInt64(0x0102030405060708ull)); // 14
    EXPECT_TRUE(f.PutInt64(-4));                     // 22
    EXPECT_TRUE(f.PutFlt32(1.5f));                   // 30
    EXPECT_TRUE(f.PutFlt64(-2.0));                   // 34
    EXPECT_TRUE(f.PutBool(true));                    // 42, one byte
    EXPECT_TRUE(f.PutBool(false));                   // 43
    f.PutBYTE(0xAB);                                 // 44
    f.PutDWORD(0x11223344);                          // 45
    f.PutDouble(0.5);                                // 49
    EXPECT_TRUE(f.PutGUID(orv::MakeGuid("{00112233-4455-6677-8899-AABBCCDDEEFF}"))); // 57

    const std::vector<unsigned char> expected = {
        0x12, 0xFE, 0x56, 0x34, 0xFE, 0xFF, 0xEF, 0xCD, 0xAB, 0x89,             // 0
        0xFD, 0xFF, 0xFF, 0xFF,                                                 // 10
        0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,                         // 14
        0xFC, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,                         // 22
        0x00, 0x00, 0xC0, 0x3F,                                                 // 30: 1.5f
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0,                         // 34: -2.0
        0x01, 0x00, 0xAB, 0x44, 0x33, 0x22, 0x11,                               // 42
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xE0, 0x3F,                         // 49: 0.5
        0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,                         // 57
        0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF,
    };
    EXPECT_EQ(Bytes(f), expected);

    // And back.
    ASSERT_TRUE(f.SeekToBegin());
    uint8_t u8; int8_t i8; uint16_t u16; int16_t i16; uint32_t u32; int32_t i32;
    uint64_t u64; int64_t i64; float f32; double f64; bool b1, b2;
    EXPECT_TRUE(f.GetUInt8(u8) && f.GetInt8(i8) && f.GetUInt16(u16) && f.GetInt16(i16) && f.GetUInt32(u32) &&
                f.GetInt32(i32) && f.GetUInt64(u64) && f.GetInt64(i64) && f.GetFlt32(f32) && f.GetFlt64(f64) &&
                f.GetBool(b1) && f.GetBool(b2));
    EXPECT_EQ(std::make_tuple(u8, i8, u16, i16, u32, i32, u64, i64, f32, f64, b1, b2),
              std::make_tuple(uint8_t(0x12), int8_t(-2), uint16_t(0x3456), int16_t(-2), 0x89ABCDEFu, -3,
                              uint64_t(0x0102030405060708ull), int64_t(-4), 1.5f, -2.0, true, false));
    // Braces read in order.
    EXPECT_EQ((std::tuple{f.GetBYTE(), f.GetDWORD(), f.GetDouble()}), std::make_tuple(0xAB, 0x11223344u, 0.5));
    orv::SGuid id;
    EXPECT_TRUE(f.GetGUID(id));
    EXPECT_EQ(id, orv::MakeGuid("{00112233-4455-6677-8899-AABBCCDDEEFF}"));

    // At the end every getter fails; the unchecked forms give 0.
    EXPECT_FALSE(f.GetUInt8(u8));
    EXPECT_EQ(f.GetDWORD(), 0u);
    EXPECT_FALSE(f.GetBool());
    // A value that is only partly there is not read.
    f.Seek(-2, IFile::seekCurrent);
    EXPECT_FALSE(f.GetUInt32(u32));
    // Any non-zero byte reads as true.
    f.SeekToBegin();
    EXPECT_TRUE(f.GetBool());
}

TEST(IFile, FixedLengthStrings)
{
    CMemFile f;
    f.Create();
    EXPECT_TRUE(f.PutFixedLengthString("abc", 32));
    ASSERT_EQ(f.size(), 32u);
    EXPECT_EQ(std::memcmp(f.data(), "abc", 3), 0);
    int zeros = 0;
    for (size_t i = 0; i < 32; ++i) zeros += f.data()[i] == 0;
    EXPECT_EQ(zeros, 29);

    // Longer text is cut; nothing terminates it.
    EXPECT_TRUE(f.PutFixedLengthString("0123456789", 4));
    EXPECT_TRUE(f.PutFixedLengthString(nullptr, 2));
    ASSERT_EQ(f.size(), 38u);
    EXPECT_EQ(std::memcmp(f.data() + 32, "0123\0\0", 6), 0);

    // A full 32 bytes come back terminated in a 33-byte buffer.
    CMemFile g;
    g.Create();
    g.WriteString(std::string(32, 'Z').c_str());
    g.WriteString("tail");
    g.SeekToBegin();
    char buffer[34];
    std::memset(buffer, 0x55, sizeof buffer);
    EXPECT_TRUE(g.GetFixedLengthString(buffer, 32));
    EXPECT_EQ(std::strlen(buffer), 32u);
    EXPECT_EQ(buffer[33], 0x55); // nothing past the 33 bytes
    EXPECT_EQ(g.GetPosition(), 32);
    // Too few bytes left: false and an empty, terminated buffer.
    EXPECT_FALSE(g.GetFixedLengthString(buffer, 8));
    EXPECT_STREQ(buffer, "");
}

TEST(IFile, StringsTextAndZeros)
{
    CMemFile f;
    f.Create();
    EXPECT_TRUE(f.PutString(CString("hello")));
    EXPECT_TRUE(f.PutString(CString()));
    EXPECT_TRUE(f.WriteString("txt"));
    EXPECT_TRUE(f.WriteFormattedString("<%d>", 7));
    EXPECT_TRUE(f.WriteZeros(5000));
    ASSERT_EQ(f.size(), 4u + 5 + 4 + 3 + 3 + 5000);
    const unsigned char head[] = {5, 0, 0, 0, 'h', 'e', 'l', 'l', 'o', 0, 0, 0, 0, 't', 'x', 't', '<', '7', '>'};
    EXPECT_EQ(std::memcmp(f.data(), head, sizeof head), 0);
    EXPECT_EQ(f.data()[f.size() - 1], 0);

    f.SeekToBegin();
    CString s("unchanged");
    EXPECT_TRUE(f.GetString(s));
    EXPECT_STREQ(s.c_str(), "hello");
    EXPECT_TRUE(f.GetString(s));
    EXPECT_TRUE(s.empty());

    // A length larger than what is left, or only part of a length, is
    // refused, the string untouched.
    for (const std::string& bad : {std::string("\xE8\x03\0\0abc", 7), std::string("\xFF\xFF\xFF\xFF" "a", 5),
                                   std::string("\1\0", 2)}) {
        s = "unchanged";
        EXPECT_FALSE(MemFileOf(bad.data(), bad.size())->GetString(s)) << bad.size();
        EXPECT_STREQ(s.c_str(), "unchanged");
    }
    // Even where the stream claims enough bytes, a length that no string
    // can hold is refused before anything is allocated or read.
    CHugeFile big;
    EXPECT_FALSE(big.GetString(s));
    EXPECT_STREQ(s.c_str(), "unchanged");
}

TEST(CMemFile, PositionSizeAndBorrowedBuffers)
{
    CMemFile f;
    f.Create();
    f.WriteString("0123456789");
    EXPECT_EQ(f.GetRemaining(), 0u);
    EXPECT_TRUE(f.Seek(4, IFile::seekBegin));
    EXPECT_EQ(f.GetRemaining(), 6u);
    EXPECT_TRUE(f.Seek(2, IFile::seekCurrent));
    EXPECT_EQ(f.GetPosition(), 6);
    EXPECT_TRUE(f.Seek(-1, IFile::seekEnd));
    EXPECT_EQ(f.GetRemaining(), 1u);
    EXPECT_FALSE(f.Seek(-1, IFile::seekBegin));
    EXPECT_FALSE(f.Seek(0, 0));
    EXPECT_EQ(f.GetPosition(), 9);

    // Past the end: nothing remains, nothing reads, a write fills the gap.
    EXPECT_TRUE(f.Seek(20, IFile::seekBegin));
    EXPECT_EQ(f.GetRemaining(), 0u);
    char c;
    EXPECT_EQ(f.Read(&c, 1), 0u);
    EXPECT_TRUE(f.PutUInt8('!'));
    ASSERT_EQ(f.GetSize(), 21u);
    for (int i = 10; i < 20; ++i) EXPECT_EQ(f.GetData()[i], 0) << i;
    EXPECT_EQ(f.GetData()[20], '!');

    EXPECT_TRUE(f.SetSize(4));
    EXPECT_TRUE(f.SetSize(8)); // grows with zeroes after the cut
    EXPECT_EQ(std::memcmp(f.data(), "0123\0\0\0\0", 8), 0);
    EXPECT_FALSE(f.SetSize(-1));
    f.Reset();
    EXPECT_EQ(f.size(), 0u);
    EXPECT_EQ(f.GetPosition(), 0);

    // A borrowed buffer is read and written in place and never grows.
    unsigned char outside[6] = {'a', 'b', 'c', 'd', 'e', 'f'};
    CMemFile b;
    EXPECT_TRUE(b.Attach(outside, sizeof outside, false));
    EXPECT_EQ(b.GetSize(), 6u);
    b.Seek(4, IFile::seekBegin);
    EXPECT_EQ(b.Write("XYZ", 3), 2u);
    EXPECT_FALSE(b.PutUInt8(1));
    EXPECT_FALSE(b.SetSize(10));
    EXPECT_EQ(std::memcmp(outside, "abcdXY", 6), 0);
    b.SeekToBegin();
    uint16_t v;
    EXPECT_TRUE(b.GetUInt16(v));
    EXPECT_EQ(v, 'a' | ('b' << 8));

    // An owned buffer is freed by the file and may grow.
    auto* mine = static_cast<unsigned char*>(orv::Alloc(4));
    std::memcpy(mine, "wxyz", 4);
    CMemFile o;
    o.Attach(mine, 4, true);
    o.Seek(0, IFile::seekEnd);
    EXPECT_TRUE(o.WriteString("++"));
    EXPECT_EQ(std::memcmp(o.data(), "wxyz++", 6), 0);
}

TEST(CRC32, FileAndFunctionAgree)
{
    // The standard check value of CRC-32.
    EXPECT_EQ(orv::CalcCRC32(0u, "123456789", 9), 0xCBF43926u);

    CCalcCRC32File sink;
    sink.WriteString("1234");
    sink.PutUInt8('5');
    sink.WriteString("6789");
    EXPECT_EQ(sink.GetCRC(), 0xCBF43926u);
    EXPECT_EQ(sink.GetSize(), 9u);

    // CalcCRC32 over a file starts at its position and ends at its end.
    TSharedPtr<IFile> f = MemFileOf("xx123456789", 11);
    f->Seek(2, IFile::seekBegin);
    unsigned int crc = 0;
    EXPECT_TRUE(orv::CalcCRC32(crc, f));
    EXPECT_EQ(crc, 0xCBF43926u);
    EXPECT_EQ(f->GetRemaining(), 0u);
    EXPECT_FALSE(orv::CalcCRC32(crc, TSharedPtr<IFile>()));

    // Over more than one read buffer, written through typed puts in one and
    // recomputed from the bytes of the other.
    CMemFile data;
    data.Create();
    auto* crcFile = new CCalcCRC32File();
    TSharedPtr<IFile> crcPtr(crcFile);
    uint32_t x = 12345;
    for (int i = 0; i < 50000; ++i) {
        x = x * 1103515245u + 12345u;
        data.PutUInt32(x);
        crcFile->PutUInt32(x);
    }
    data.SeekToBegin();
    TSharedPtr<IFile> dataPtr(&data, orv::noDestroy);
    EXPECT_TRUE(orv::CalcCRC32(crc, dataPtr));
    EXPECT_EQ(crc, crcFile->GetCRC());
    EXPECT_EQ(crc, orv::CalcCRC32(0u, data.data(), data.size()));
    // Continuing from an earlier value equals one pass over the whole.
    unsigned int half = orv::CalcCRC32(0u, data.data(), 1000);
    EXPECT_EQ(orv::CalcCRC32(half, data.data() + 1000, data.size() - 1000), crc);
}

namespace {

// A fresh directory of its own, removed with what it holds.
struct STempDir {
    std::filesystem::path path = std::filesystem::path(testing::TempDir()) / ("orvfs-" + std::to_string(getpid()));
    STempDir() { std::filesystem::remove_all(path), std::filesystem::create_directories(path); }
    ~STempDir() { std::filesystem::remove_all(path); }
};

} // namespace

TEST(FileSystem, OpenModesAndListing)
{
    STempDir dir;
    orv::IFileSystem* fs = orv::fileSystem();
    ASSERT_NE(fs, nullptr);
    const CString base(dir.path.c_str());
    const CString path = base + "/cal.mxg";

    // 18 reads an existing file only.
    EXPECT_TRUE(fs->Open(path, 18).isNull());
    EXPECT_FALSE(fs->Exists(path));

    // 40 creates, and overwrites what was there.
    {
        TSharedPtr<IFile> w = fs->Open(path, 40);
        ASSERT_FALSE(w.isNull());
        EXPECT_TRUE(w->PutUInt32(0xDEADBEEF));
        EXPECT_TRUE(w->WriteString("a longer first version"));
    }
    {
        TSharedPtr<IFile> w = fs->Open(path, 40);
        ASSERT_FALSE(w.isNull());
        EXPECT_TRUE(w->PutUInt32(0xCAFEF00D));
        EXPECT_TRUE(w->PutString(CString("second")));
    }
    {
        TSharedPtr<IFile> r = fs->Open(path, 18);
        ASSERT_FALSE(r.isNull());
        EXPECT_EQ(r->GetLength(), 14);
        EXPECT_EQ(r->GetDWORD(), 0xCAFEF00Du);
        CString s;
        EXPECT_TRUE(r->GetString(s));
        EXPECT_STREQ(s.c_str(), "second");
        EXPECT_EQ(r->GetRemaining(), 0u);
        EXPECT_TRUE(r->Seek(2, IFile::seekBegin));
        EXPECT_EQ(r->GetRemaining(), 12u);
        EXPECT_EQ(r->Write("x", 1), 0u); // opened for reading only
    }
    // A directory is not a file.
    EXPECT_TRUE(fs->Open(base, 18).isNull());

    for (const char* name : {"cal.mxo", "cal.mbp", "other.mxg", "liborvreduceA.so", "notes.txt"})
        ASSERT_FALSE(fs->Open(base + "/" + name, 40).isNull());

    orv::CDirectoryListing all = fs->List(base, CString("*"));
    ASSERT_EQ(all.size(), 6u);
    const char* sorted[] = {"cal.mbp", "cal.mxg", "cal.mxo", "liborvreduceA.so", "notes.txt", "other.mxg"};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_STREQ(all[i].name.c_str(), sorted[i]);
        EXPECT_STREQ(all[i].fullPath.c_str(), (base + "/" + sorted[i]).c_str());
    }
    orv::CDirectoryListing mxg;
    mxg = fs->List(base + "/", CString("*.mxg")); // a trailing separator is not doubled
    ASSERT_EQ(mxg.size(), 2u);
    EXPECT_STREQ(mxg[0].name.c_str(), "cal.mxg");
    EXPECT_STREQ(mxg[1].fullPath.c_str(), (base + "/other.mxg").c_str());
    EXPECT_EQ(fs->List(base, CString("liborvreduce*.so")).size(), 1u);
    EXPECT_EQ(fs->List(base, CString("cal*")).size(), 3u);
    EXPECT_EQ(fs->List(base, CString("*.none")).size(), 0u);
    EXPECT_EQ(fs->List(base + "/missing", CString("*")).size(), 0u);

    EXPECT_TRUE(fs->Remove(path));
    EXPECT_FALSE(fs->Exists(path));
    EXPECT_FALSE(fs->Remove(path));
}
