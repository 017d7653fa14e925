#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "tests/reduce/store/TestObjects.h"

namespace orv::reduce {
namespace {

using namespace test;

SFrameBlockEntry Entry(uint32_t tag, uint32_t size)
{
    SFrameBlockEntry e{};
    e.id = tag ? MakeGuid("{F0000000-0000-4000-8000-000000000000}") : SGuid{};
    e.id.Data1 += tag;
    e.size = size;
    for (uint8_t i = 0; i < 12; ++i) e.reserved[i] = static_cast<uint8_t>(tag + i);
    return e;
}

TEST(PixelsHeaderTest, FrameBlockSlots)
{
    SPixelsHeader h{};
    EXPECT_EQ(h.FindFrameBlock(Entry(1, 4).id), SPixelsHeader::kNotFound);
    EXPECT_EQ(h.AddFrameBlock(Entry(1, 4)), 0u);
    const SFrameBlockEntry first = Entry(1, 4);
    EXPECT_EQ(0, std::memcmp(&h.frameBlocks[0], &first, 32)); // all 32 bytes copied
    EXPECT_EQ(h.AddFrameBlock(Entry(1, 8)), SPixelsHeader::kNotFound); // same id
    EXPECT_EQ(h.frameBlocks[1].size, 0u);
    EXPECT_EQ(h.FindFrameBlock(Entry(1, 0).id), 0u);

    // A zero identifier with a size occupies its slot; the next add goes on.
    h.frameBlocks[1] = Entry(0, 16);
    EXPECT_EQ(h.AddFrameBlock(Entry(2, 4)), 2u);
    for (uint32_t tag = 3; tag <= 7; ++tag) EXPECT_EQ(h.AddFrameBlock(Entry(tag, 4)), tag);
    EXPECT_EQ(h.AddFrameBlock(Entry(9, 4)), SPixelsHeader::kNotFound); // a ninth
    EXPECT_EQ(h.FindFrameBlock(Entry(7, 0).id), 7u);
}

TEST(PixelsHeaderTest, WriteAndReadBothForms)
{
    SPixelsHeader h{.headerSize = 512, .version = 0x10001, .dataOffset = 512,
                    .pixelType = MakeGuid("{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}"), .pixelWidth = 2,
                    .imageWidth = 640, .imageHeight = 512, .frameWidth = 641, .frameHeight = 513, .packetWidth = 1282,
                    .packetHeight = 257, .numFramesPerPacket = 3, .packetSize = 1282 * 257 * 2,
                    .frameStride = 1282 * 257 * 2, .reserved1 = {}, .frameBlocks = {}, .reserved2 = {}};
    h.AddFrameBlock(Entry(1, 24));

    SMemFile m;
    ASSERT_TRUE(WritePixelsHeader(m.file, h));
    std::vector<uint8_t> b = m.bytes();
    ASSERT_EQ(b.size(), 77u + 512u);
    EXPECT_EQ(HeaderAt(b, 0), (SRawHeader{"Pixels", guidPixels, 0x10001, -1, ~uint64_t(0), 1, ~uint64_t(0), 0}));
    // The 512 bytes at their documented offsets.
    const size_t p = 77;
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 0), 512u);
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 4), 0x10001u);
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 8), 512u);
    EXPECT_EQ(ReadAt<SGuid>(b, p + 12), h.pixelType);
    const uint16_t shorts[] = {2, 640, 512, 641, 513, 1282, 257, 3};
    for (size_t i = 0; i < 8; ++i) EXPECT_EQ(ReadAt<uint16_t>(b, p + 28 + 2 * i), shorts[i]) << i;
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 44), 1282u * 257u * 2u);
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 48), 1282u * 257u * 2u);
    for (size_t i = 52; i < 128; ++i) EXPECT_EQ(b[p + i], 0) << i;
    EXPECT_EQ(ReadAt<SGuid>(b, p + 128), Entry(1, 0).id);
    EXPECT_EQ(ReadAt<uint32_t>(b, p + 144), 24u);
    EXPECT_EQ(b[p + 148], 1);

    // Read back the current form.
    SPixelsHeader r{};
    m.mem->Seek(77, IFile::seekBegin);
    ASSERT_TRUE(ReadPixelsHeader(m.file, 0x10001, r));
    EXPECT_EQ(0, std::memcmp(&r, &h, sizeof r));

    // The old 44-byte form.
    std::vector<uint8_t> old(44, 0xEE);
    WriteAt(old, 0, h.pixelType);
    WriteAt<uint16_t>(old, 16, 2);
    for (size_t i = 0; i < 7; ++i) WriteAt<uint16_t>(old, 26 + 2 * i, shorts[i + 1]);
    WriteAt<uint32_t>(old, 40, 12345);
    SMemFile o(old);
    SPixelsHeader oh;
    std::memset(static_cast<void*>(&oh), 0x77, sizeof oh);
    ASSERT_TRUE(ReadPixelsHeader(o.file, 0x10000, oh));
    // The same fields, the stored size for both sizes, and zero elsewhere.
    SPixelsHeader expected = h;
    expected.headerSize = expected.dataOffset = 44;
    expected.version = 0x10000;
    expected.packetSize = expected.frameStride = 12345;
    expected.frameBlocks[0] = SFrameBlockEntry{};
    EXPECT_EQ(0, std::memcmp(&oh, &expected, sizeof oh));

    // Short reads fail and leave the header as it was.
    for (unsigned version : {0x10000u, 0x10001u}) {
        SMemFile s(std::vector<uint8_t>(43, 1));
        SPixelsHeader keep;
        std::memset(static_cast<void*>(&keep), 0x5C, sizeof keep);
        SPixelsHeader copy = keep;
        EXPECT_FALSE(ReadPixelsHeader(s.file, version, keep));
        EXPECT_EQ(0, std::memcmp(&keep, &copy, sizeof keep));
    }

    unsigned char small[100];
    CMemFile fixed;
    fixed.Attach(small, sizeof small, false);
    EXPECT_FALSE(WritePixelsHeader(TSharedPtr<IFile>(&fixed, noDestroy), h));
}

TEST(PixelsHeaderTest, StartWritesTheObjectsWithFlag16ThenTheHeader)
{
    ASSERT_TRUE(RegisterTestTypes());
    CReduceObjectArray objects;
    objects.add(Payload(0xFF, 5));
    SPixelsHeader h{};
    h.headerSize = 512;
    SMemFile m;
    ASSERT_TRUE(StartQRTFile(m.file, objects, h));
    EXPECT_EQ(objects.GetAt(0).DynamicCast<CPayloadObject>()->savedFlags, 16u);
    SMemFile expected;
    ASSERT_TRUE(SaveInfoFile(expected.file, objects, 16) && WritePixelsHeader(expected.file, h));
    EXPECT_EQ(m.bytes(), expected.bytes());

    // A save that fails fails the start.
    objects.add(TSharedPtr<IReduceObject>(new CNoSaveObject));
    SMemFile f;
    EXPECT_FALSE(StartQRTFile(f.file, objects, h));
}

} // namespace
} // namespace orv::reduce
