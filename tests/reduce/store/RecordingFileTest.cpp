#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "orv/PixelType.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "tests/reduce/store/TestObjects.h"

namespace orv::reduce {
namespace {

using namespace test;

// The built-in types register at library load; these tests make sure of the
// few they create, whatever the state of the built-in list.
template <class T>
void EnsureRegistered(const char* name)
{
    if (!reduceObjectFactory().IsRegistered(name)) reduceObjectFactory().Register<T>(name, T::typeID);
}

class RecordingFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        EnsureRegistered<CSourceInfoReduceObject>("SourceInfo");
        EnsureRegistered<CFrameInfoReduceObject>("FrameInfo");
        EnsureRegistered<CFOVReduceObject>("FOV");
    }
};

TEST_F(RecordingFileTest, TypedGettersPassTheirPresetAndCast)
{
    CReduceObjectArray a;
    TSharedPtr<CSourceInfoReduceObject> info = a.GetSourceInfo(true);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->preset, 0xFF);
    EXPECT_EQ(a.GetSourceInfo(true), info); // -1 matches 0xFF exactly
    EXPECT_EQ(a.GetSize(), 1u);

    TSharedPtr<CFrameInfoReduceObject> f3 = a.GetFrameInfo(3, true);
    ASSERT_TRUE(f3);
    EXPECT_EQ(f3->preset, 3);
    EXPECT_EQ(a.GetFrameInfo(3, false), f3);

    EXPECT_FALSE(a.GetFOV(false));
    EXPECT_TRUE(a.GetFOV(true));

    // An entry with the identifier but another class gives null, not a bad cast.
    CReduceObjectArray b;
    b.add(TSharedPtr<IReduceObject>(new CLooseObject(CObjectParametersReduceObject::typeID, "ObjectParameters")));
    b.add(TSharedPtr<IReduceObject>(new CLooseObject(CAbateCfgReduceObject::typeID, "AbateCfg")));
    b.add(TSharedPtr<IReduceObject>(new CLooseObject(CCorrectionCfgReduceObject::typeID, "CorrectionCfg")));
    b.add(TSharedPtr<IReduceObject>(new CLooseObject(CCorrectionReduceObject::typeID, "Correction")));
    EXPECT_TRUE(b.GetObjectOfType(CObjectParametersReduceObject::typeID, -1, false));
    EXPECT_FALSE(b.GetObjectParameters(false));
    EXPECT_FALSE(b.GetAbateCfg(false));
    EXPECT_FALSE(b.GetCorrectionCfg(false));
    EXPECT_FALSE(b.GetCorrection(0, false));
    EXPECT_EQ(b.GetSize(), 4u);
}

TSharedPtr<CSourceInfoReduceObject> MakeInfo(CReduceObjectArray& objects)
{
    TSharedPtr<CSourceInfoReduceObject> info = objects.GetSourceInfo(true);
    info->pixelType = pixelGrayscale; // 2 bytes a pixel
    info->imageWidth = 300;
    info->imageHeight = 200;
    info->frameWidth = 320;
    info->frameHeight = 240;
    info->packetWidth = 640;
    info->packetHeight = 480;
    info->numFramesPerPacket = 4;
    return info;
}

TEST_F(RecordingFileTest, PixelsHeaderFromTheSourceInfo)
{
    CReduceObjectArray objects;
    TSharedPtr<CSourceInfoReduceObject> info = MakeInfo(objects);

    SPixelsHeader h;
    std::memset(static_cast<void*>(&h), 0xAB, sizeof h);
    ASSERT_TRUE(InitPixelsHeader(h, info, false));
    // Every byte: the source info's figures, zero elsewhere.
    SPixelsHeader expected{.headerSize = 512, .version = 0x10001, .dataOffset = 512, .pixelType = pixelGrayscale,
                           .pixelWidth = 2, .imageWidth = 300, .imageHeight = 200, .frameWidth = 320,
                           .frameHeight = 240, .packetWidth = 640, .packetHeight = 480, .numFramesPerPacket = 4,
                           .packetSize = 640 * 480 * 2, .frameStride = 640 * 480 * 2, .reserved1 = {},
                           .frameBlocks = {}, .reserved2 = {}};
    EXPECT_EQ(0, std::memcmp(&h, &expected, sizeof h));
    // Without packets: the frame's size, and no frames a packet.
    ASSERT_TRUE(InitPixelsHeader(h, info, true));
    expected.packetWidth = 320;
    expected.packetHeight = 240;
    expected.numFramesPerPacket = 0;
    expected.packetSize = expected.frameStride = 320 * 240 * 2;
    EXPECT_EQ(0, std::memcmp(&h, &expected, sizeof h));

    // The explicit form: its own type and frame size.
    const SGuid unknownType = MakeGuid("{00000000-1111-2222-3333-444444444444}");
    SMemFile m;
    ASSERT_TRUE(WritePixelsHeader(m.file, info, unknownType, 999, false));
    std::vector<uint8_t> b = m.bytes();
    ASSERT_EQ(b.size(), 77u + 512u);
    EXPECT_EQ(ReadAt<SGuid>(b, 77 + 12), unknownType);
    EXPECT_EQ(ReadAt<uint16_t>(b, 77 + 28), 0); // no such pixel type: width 0
    EXPECT_EQ(ReadAt<uint16_t>(b, 77 + 38), 640);
    EXPECT_EQ(ReadAt<uint32_t>(b, 77 + 44), 999u);
    EXPECT_EQ(ReadAt<uint32_t>(b, 77 + 48), 999u);

    SMemFile n;
    ASSERT_TRUE(WritePixelsHeader(n.file, info, true));
    b = n.bytes();
    EXPECT_EQ(ReadAt<uint32_t>(b, 77 + 44), 320u * 240u * 2u);
    EXPECT_EQ(ReadAt<uint16_t>(b, 77 + 42), 0);
    EXPECT_FALSE(WritePixelsHeader(n.file, TSharedPtr<CSourceInfoReduceObject>(), true));
}

TEST_F(RecordingFileTest, StartAndFinishARecording)
{
    CReduceObjectArray objects;
    MakeInfo(objects);
    SMemFile m;
    ASSERT_TRUE(StartQRTFile(m.file, objects, false));
    const std::vector<uint8_t> frames(3 * 640 * 480 * 2 / 100, 0x3C);
    m.mem->WriteBytes(frames.data(), static_cast<unsigned>(frames.size()));
    const size_t length = m.bytes().size();

    TArray<SInfoFileBlock> blocks;
    m.mem->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(m.file, blocks, 0));
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].typeID, CSourceInfoReduceObject::typeID);
    EXPECT_EQ(blocks[1].typeID, guidPixels);
    SPixelsHeader h;
    m.mem->Seek(static_cast<long long>(blocks[1].dataOffset), IFile::seekBegin);
    ASSERT_TRUE(ReadPixelsHeader(m.file, blocks[1].version, h));
    EXPECT_EQ(h.packetSize, 640u * 480u * 2u);

    unsigned int counts[4] = {10, 0, 30, 40};
    ASSERT_TRUE(FinishQRTFile(m.file, counts, true));
    std::vector<uint8_t> b = m.bytes();
    ASSERT_EQ(b.size(), length); // patched in place
    EXPECT_TRUE(std::equal(frames.begin(), frames.end(), b.end() - static_cast<long>(frames.size())));

    CReduceObjectArray loaded;
    m.mem->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(m.file, loaded, blocks, 0));
    TSharedPtr<CSourceInfoReduceObject> info = loaded.GetSourceInfo(false);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->presets[0].numFrames, 10u);
    EXPECT_EQ(info->presets[2].numFrames, 30u);
    EXPECT_EQ(info->presets[3].numFrames, 40u);
    EXPECT_EQ(info->packetWidth, 320);
    EXPECT_EQ(info->packetHeight, 240);
    EXPECT_EQ(info->numFramesPerPacket, 0);
    // The stored crc is that of the patched payload.
    EXPECT_EQ(blocks[0].crc, CalcCRC32(0, b.data() + blocks[0].dataOffset, blocks[0].size));

    // Failures: no counts, no info file, a source info payload that does not
    // load.
    EXPECT_FALSE(FinishQRTFile(m.file, nullptr, false));
    SMemFile empty;
    EXPECT_FALSE(FinishQRTFile(empty.file, counts, false));
    std::vector<uint8_t> broken = b;
    WriteAt<uint32_t>(broken, blocks[0].dataOffset, 12345); // the record's own size
    SMemFile bad(broken);
    EXPECT_FALSE(FinishQRTFile(bad.file, counts, false));

    // Without a source info the second form has nothing to write from.
    CReduceObjectArray none;
    SMemFile n;
    EXPECT_FALSE(StartQRTFile(n.file, none, true));
}

} // namespace
} // namespace orv::reduce
