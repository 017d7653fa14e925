#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <unistd.h>
#include <vector>

#include "orv/NormFile.h"

namespace orv {
namespace {

struct STempFile {
    std::string path = testing::TempDir() + "normfile_" + std::to_string(getpid()) + ".mxg";
    ~STempFile() { std::remove(path.c_str()); }
    CString name() const { return CString(path.c_str()); }

    std::vector<uint8_t> Read() const
    {
        std::vector<uint8_t> bytes;
        if (FILE* f = std::fopen(path.c_str(), "rb")) {
            int c;
            while ((c = std::fgetc(f)) != EOF) bytes.push_back(static_cast<uint8_t>(c));
            std::fclose(f);
        }
        return bytes;
    }
    void Write(const std::vector<uint8_t>& bytes) const
    {
        if (FILE* f = std::fopen(path.c_str(), "wb")) {
            std::fwrite(bytes.data(), 1, bytes.size(), f);
            std::fclose(f);
        }
    }
};

template <class T>
T At(const std::vector<uint8_t>& b, size_t offset)
{
    T v{};
    std::memcpy(&v, b.data() + offset, sizeof v);
    return v;
}

TEST(NormFile, TablesRoundTripWithDocumentedHeader)
{
    STempFile tmp;
    const float gains[6] = {1.0f, 0.5f, 2.0f, 1.25f, 0.75f, 1.5f};
    ASSERT_TRUE(CNormFile::SaveGainTable(fileSystem(), tmp.name(), 3, 2, 5, gains));
    std::vector<uint8_t> b = tmp.Read();
    ASSERT_EQ(b.size(), 64u + 24u);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 4), "NORM");
    // Header size, version, reserved word, width, height, preset, float
    // gains, no second table, data size.
    EXPECT_EQ(std::tuple(At<uint32_t>(b, 4), At<uint32_t>(b, 8), At<uint32_t>(b, 12), At<uint32_t>(b, 16),
                         At<uint32_t>(b, 20), At<uint16_t>(b, 24), b[26], b[27], At<uint64_t>(b, 28)),
              std::tuple(64u, 0x10000u, 0u, 3u, 2u, 5, 8, 12, 24u));
    EXPECT_EQ(At<uint32_t>(b, 36), CalcCRC32(0, b.data() + 64, 24));
    EXPECT_EQ(At<uint32_t>(b, 60), CalcCRC32(0, b.data(), 60));
    EXPECT_FLOAT_EQ(At<float>(b, 64 + 8), 2.0f);

    CNormFile f;
    ASSERT_TRUE(f.Load(fileSystem(), tmp.name()));
    EXPECT_EQ(std::tuple(f.GetType(), f.xPixels(), f.yPixels(), f.preset()), std::tuple(0, 3u, 2u, 5));
    ASSERT_NE(f.GetGains(), nullptr);
    EXPECT_FLOAT_EQ(f.GetGains()[5], 1.5f);
    EXPECT_EQ(f.GetOffsets(), nullptr);
    EXPECT_EQ(f.GetBadPixels().flags, nullptr);

    const int16_t offsets[2] = {-7, 300};
    ASSERT_TRUE(CNormFile::SaveOffsetTable(fileSystem(), tmp.name(), 2, 1, 0, offsets));
    ASSERT_TRUE(f.Load(fileSystem(), tmp.name()));
    EXPECT_EQ(f.GetType(), 1);
    EXPECT_EQ(f.GetOffsets()[0], -7);
    EXPECT_EQ(f.GetGains(), nullptr);

    const uint8_t bad[3] = {0, 1, 0};
    const uint32_t replace[3] = {0, 2, 2};
    ASSERT_TRUE(CNormFile::SaveBadPixelTable(fileSystem(), tmp.name(), 1, 3, 7, bad, replace));
    b = tmp.Read();
    ASSERT_EQ(b.size(), 64u + 3u + 12u);
    EXPECT_EQ(std::tuple(b[26], b[27]), std::tuple(1, 5));
    EXPECT_EQ(At<uint32_t>(b, 64 + 3 + 4), 2u); // replacements follow the flags
    ASSERT_TRUE(f.Load(fileSystem(), tmp.name()));
    EXPECT_EQ(f.GetType(), 2);
    EXPECT_EQ(f.GetBadPixels().flags[1], 1);
    EXPECT_EQ(f.GetBadPixels().replacements[1], 2u);

    EXPECT_FALSE(CNormFile::SaveGainTable(fileSystem(), tmp.name(), 0, 2, 0, gains));
    EXPECT_FALSE(f.Load(fileSystem(), CString((tmp.path + ".none").c_str())));
    EXPECT_EQ(f.GetType(), -1);
}

TEST(NormFile, DamagedFilesAreRefused)
{
    STempFile tmp;
    const float gains[4] = {1, 2, 3, 4};
    ASSERT_TRUE(CNormFile::SaveGainTable(fileSystem(), tmp.name(), 2, 2, 0, gains));
    const std::vector<uint8_t> good = tmp.Read();
    CNormFile f;

    auto fixHeaderCRC = [](std::vector<uint8_t>& b) {
        const uint32_t crc = CalcCRC32(0, b.data(), 60);
        std::memcpy(b.data() + 60, &crc, 4);
    };
    const std::pair<const char*, std::function<void(std::vector<uint8_t>&)>> damage[] = {
        {"magic", [](auto& b) { b[0] = 'X'; }},
        {"data CRC", [](auto& b) { b[64 + 5] ^= 1; }},
        // Height 3 with a header CRC fixed up: the size no longer matches.
        {"size", [&](auto& b) { b[20] = 3, fixHeaderCRC(b); }},
        {"header CRC", [](auto& b) { b[17] = 0xFF; }},
        {"truncated", [](auto& b) { b.pop_back(); }},
        {"short header", [](auto& b) { b.resize(10); }},
        {"trailing byte", [](auto& b) { b.push_back(0); }},
        // A header claiming a huge table, CRC made consistent, over a small file.
        {"huge", [&](auto& b) { std::memset(b.data() + 16, 0xFF, 8), fixHeaderCRC(b); }}};
    for (const auto& [what, change] : damage) {
        std::vector<uint8_t> b = good;
        change(b);
        tmp.Write(b);
        EXPECT_FALSE(f.Load(fileSystem(), tmp.name())) << what;
        EXPECT_EQ(f.GetGains(), nullptr) << what;
    }
    tmp.Write(good);
    EXPECT_TRUE(f.Load(fileSystem(), tmp.name()));

    // A replacement must name a pixel of the table: 3 is the last of 2 x 2,
    // 4 lies beyond it, with every CRC right.
    const uint8_t bad[4] = {0, 1, 0, 0};
    uint32_t replacements[4] = {0, 3, 2, 3};
    ASSERT_TRUE(CNormFile::SaveBadPixelTable(fileSystem(), tmp.name(), 2, 2, 0, bad, replacements));
    EXPECT_TRUE(f.Load(fileSystem(), tmp.name()));
    replacements[1] = 4;
    ASSERT_TRUE(CNormFile::SaveBadPixelTable(fileSystem(), tmp.name(), 2, 2, 0, bad, replacements));
    EXPECT_FALSE(f.Load(fileSystem(), tmp.name()));
    EXPECT_EQ(f.GetBadPixels().replacements, nullptr);
}

} // namespace
} // namespace orv
