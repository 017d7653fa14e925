#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "orv/PixelType.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr uint16_t kWidth = 4, kHeight = 3;
constexpr uint32_t kFrameBytes = kWidth * kHeight * 2;

uint16_t Value(unsigned frame, unsigned pixel) { return static_cast<uint16_t>(frame * 1000 + pixel); }

struct SRecording {
    CMemFile* mem = nullptr;
    TSharedPtr<IFile> file;
};

// A grayscale recording of `frames` frames, finished with `declared` frames
// in preset 0.
SRecording MakeRecording(unsigned frames, unsigned declared)
{
    SRecording r;
    r.mem = new CMemFile;
    r.mem->Create();
    r.file = TSharedPtr<IFile>(r.mem);
    CReduceObjectArray objects;
    TSharedPtr<CSourceInfoReduceObject> source = objects.GetSourceInfo(true);
    source->pixelType = pixelGrayscale;
    source->imageWidth = source->frameWidth = kWidth;
    source->imageHeight = source->frameHeight = kHeight;
    EXPECT_TRUE(StartQRTFile(r.file, objects, true));
    for (unsigned f = 0; f < frames; ++f)
        for (unsigned p = 0; p < kWidth * kHeight; ++p) r.file->PutUInt16(Value(f, p));
    unsigned counts[4] = {declared, 0, 0, 0};
    EXPECT_TRUE(FinishQRTFile(r.file, counts, true));
    return r;
}

bool Says(const CRecordingReader& reader, const char* words)
{
    return std::strstr(reader.lastError().c_str(), words) != nullptr;
}

} // namespace

TEST(RecordingReader, ReadsAndDecodesAFinishedRecording)
{
    SRecording rec = MakeRecording(3, 3);
    const std::vector<unsigned char> bytes(rec.mem->data(), rec.mem->data() + rec.mem->size());

    CRecordingReader reader;
    ASSERT_TRUE(reader.Open(rec.file)) << reader.lastError().c_str();
    EXPECT_TRUE(reader.lastError().empty());
    EXPECT_TRUE(reader.warning().empty()) << reader.warning().c_str();
    EXPECT_EQ(reader.numFrames(), 3u);
    EXPECT_EQ(reader.declaredFrames(), 3u);
    EXPECT_EQ(reader.trailingBytes(), 0u);
    EXPECT_EQ(reader.frameSize(), kFrameBytes);
    EXPECT_EQ(reader.pixelType(), pixelGrayscale);
    EXPECT_EQ(reader.frameWidth(), kWidth);
    EXPECT_EQ(reader.frameHeight(), kHeight);
    ASSERT_TRUE(reader.sourceInfo());
    ASSERT_GE(reader.blocks().size(), 2u);
    EXPECT_STREQ(reader.blocks().get(0).name, "SourceInfo");
    EXPECT_STREQ(reader.blocks().get(reader.blocks().size() - 1).name, "Pixels");
    EXPECT_EQ(reader.dataOffset(), reader.pixelsBlock().dataOffset + kPixelsHeaderSize);
    EXPECT_EQ(reader.dataOffset() + 3 * kFrameBytes, bytes.size());
    ASSERT_TRUE(reader.filter());
    EXPECT_STREQ(reader.filter()->GetName(), "Generic");

    // Raw bytes of a middle frame, then frames decoded out of order.
    std::vector<uint16_t> raw(kWidth * kHeight);
    ASSERT_TRUE(reader.ReadFrame(1, raw.data(), kFrameBytes));
    for (unsigned p = 0; p < raw.size(); ++p) ASSERT_EQ(raw[p], Value(1, p));
    uint8_t preset = 9;
    std::vector<uint16_t> pixels(kWidth * kHeight);
    EXPECT_EQ(reader.PixelBufferSize(dtUInt16), kFrameBytes);
    ASSERT_TRUE(reader.DecodeFrame(2, STypedData(pixels.data(), dtUInt16), kFrameBytes, preset))
        << reader.lastError().c_str();
    EXPECT_EQ(preset, 0);
    for (unsigned p = 0; p < pixels.size(); ++p) ASSERT_EQ(pixels[p], Value(2, p));
    ASSERT_TRUE(reader.DecodeFrame(0, STypedData(static_cast<void*>(nullptr), dtNoData), 0, preset));
    TSharedPtr<CFrameInfoReduceObject> info = reader.reduceObjs().GetFrameInfo(0, false);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->frame, 1u); // the generic filter counts decoded frames

    // Reading left the file as it was.
    ASSERT_EQ(rec.mem->size(), bytes.size());
    EXPECT_EQ(std::memcmp(rec.mem->data(), bytes.data(), bytes.size()), 0);
}

TEST(RecordingReader, FrameRangeAndBufferChecks)
{
    CRecordingReader reader;
    uint8_t preset = 0;
    std::vector<uint16_t> buffer(kWidth * kHeight + 1);
    EXPECT_FALSE(reader.ReadFrame(0, buffer.data(), kFrameBytes));
    EXPECT_TRUE(Says(reader, "no recording"));

    SRecording rec = MakeRecording(2, 2);
    ASSERT_TRUE(reader.Open(rec.file));
    EXPECT_FALSE(reader.ReadFrame(2, buffer.data(), kFrameBytes));
    EXPECT_TRUE(Says(reader, "frame 2 is out of range")) << reader.lastError().c_str();
    EXPECT_FALSE(reader.ReadFrame(~uint64_t(0), buffer.data(), kFrameBytes));
    EXPECT_FALSE(reader.ReadFrame(0, buffer.data(), kFrameBytes - 1));
    EXPECT_TRUE(Says(reader, "cannot hold"));
    EXPECT_FALSE(reader.DecodeFrame(0, STypedData(buffer.data(), dtUInt16), kFrameBytes - 2, preset));
    EXPECT_TRUE(Says(reader, "pixel buffer"));
    // A type the filter does not give for grayscale.
    EXPECT_FALSE(reader.DecodeFrame(0, STypedData(buffer.data(), dtUInt64), 1000, preset));
    EXPECT_TRUE(Says(reader, "cannot decode frame 0"));
    EXPECT_FALSE(reader.DecodeFrame(5, STypedData(buffer.data(), dtUInt16), kFrameBytes, preset));
    EXPECT_TRUE(Says(reader, "out of range"));
    // A success clears the reason.
    EXPECT_TRUE(reader.ReadFrame(1, buffer.data(), kFrameBytes));
    EXPECT_TRUE(reader.lastError().empty());
}

TEST(RecordingReader, TruncatedRecordings)
{
    // Cut inside the last frame: the whole frames stay readable.
    SRecording rec = MakeRecording(3, 3);
    CRecordingReader reader;
    ASSERT_TRUE(reader.Open(rec.file));
    const uint64_t start = reader.dataOffset();
    const unsigned long full = rec.mem->size();
    rec.mem->SetSize(static_cast<long>(start + 2 * kFrameBytes + 5));
    ASSERT_TRUE(reader.Open(rec.file));
    EXPECT_EQ(reader.numFrames(), 2u);
    EXPECT_EQ(reader.trailingBytes(), 5u);
    EXPECT_NE(std::strstr(reader.warning().c_str(), "cut short"), nullptr);
    std::vector<unsigned char> buffer(kFrameBytes);
    EXPECT_TRUE(reader.ReadFrame(1, buffer.data(), kFrameBytes));
    EXPECT_FALSE(reader.ReadFrame(2, buffer.data(), kFrameBytes));
    EXPECT_TRUE(Says(reader, "frame 2 is cut short: 5 of 24 bytes")) << reader.lastError().c_str();

    // Whole frames missing against the source info's count.
    rec.mem->SetSize(static_cast<long>(start + kFrameBytes));
    ASSERT_TRUE(reader.Open(rec.file));
    EXPECT_EQ(reader.numFrames(), 1u);
    EXPECT_NE(std::strstr(reader.warning().c_str(), "declares 3 frames"), nullptr) << reader.warning().c_str();

    // Cut inside the "Pixels" header, and inside a block header.
    rec.mem->SetSize(static_cast<long>(start - 100));
    EXPECT_FALSE(reader.Open(rec.file));
    EXPECT_TRUE(Says(reader, "inside its header")) << reader.lastError().c_str();
    EXPECT_FALSE(reader.isOpen());
    rec.mem->SetSize(77 + 40);
    EXPECT_FALSE(reader.Open(rec.file));
    EXPECT_TRUE(Says(reader, "block header is cut short")) << reader.lastError().c_str();
    EXPECT_EQ(reader.blocks().size(), 0u);
    EXPECT_LT(rec.mem->size(), full);
}

TEST(RecordingReader, FilesThatAreNotRecordings)
{
    CRecordingReader reader;
    // Not an info file at all.
    auto* mem = new CMemFile;
    mem->Create();
    TSharedPtr<IFile> file(mem);
    for (int i = 0; i < 300; ++i) file->PutUInt8(static_cast<uint8_t>(i));
    EXPECT_FALSE(reader.Open(file));
    EXPECT_TRUE(Says(reader, "wrong file header")) << reader.lastError().c_str();
    mem->SetSize(0);
    EXPECT_FALSE(reader.Open(file));
    EXPECT_TRUE(Says(reader, "wrong file header"));

    // An info file without frames.
    CReduceObjectArray objects;
    objects.GetSourceInfo(true);
    mem->Reset();
    ASSERT_TRUE(SaveInfoFile(file, objects, 0));
    EXPECT_FALSE(reader.Open(file));
    EXPECT_TRUE(Says(reader, "no \"Pixels\" block")) << reader.lastError().c_str();

    // A "Pixels" header with a frame size of 0 gives no frames to count.
    SRecording rec = MakeRecording(1, 1);
    ASSERT_TRUE(reader.Open(rec.file));
    const uint64_t strideAt = reader.pixelsBlock().dataOffset + 48;
    std::memset(rec.mem->data() + strideAt, 0, 4);
    EXPECT_FALSE(reader.Open(rec.file));
    EXPECT_TRUE(Says(reader, "frame size of 0"));
}

TEST(RecordingReader, DamagedBytesNeverBreakTheReader)
{
    // Every byte of the front of a recording, in turn, set to 0xFF and to
    // 0x7F: opening and decoding either works or fails with a reason.
    SRecording rec = MakeRecording(2, 2);
    const std::vector<unsigned char> good(rec.mem->data(), rec.mem->data() + rec.mem->size());
    std::vector<uint16_t> pixels(kWidth * kHeight);
    const size_t front = good.size() - 2 * kFrameBytes;
    for (size_t at = 0; at < front; ++at)
        for (unsigned char value : {0xFF, 0x7F}) {
            std::memcpy(rec.mem->data(), good.data(), good.size());
            rec.mem->data()[at] = value;
            CRecordingReader reader;
            if (!reader.Open(rec.file)) {
                ASSERT_FALSE(reader.lastError().empty()) << at;
                continue;
            }
            for (uint64_t i = 0; i <= reader.numFrames(); ++i) {
                uint8_t preset = 0;
                const bool ok = reader.DecodeFrame(i, STypedData(pixels.data(), dtUInt16),
                                                   pixels.size() * sizeof(uint16_t), preset);
                ASSERT_TRUE(ok || !reader.lastError().empty()) << at;
            }
        }
}

TEST(RecordingReader, SizesTheFrameStrideCannotBackAreRefused)
{
    // Frames of 4x3 pixels, 24 bytes: at most 16 pixels a byte, 384, may be
    // claimed for a frame or an image. The source info is patched at its
    // documented offsets, and its CRC made good.
    constexpr unsigned kImageAt = 80, kFrameAt = 123;
    struct SCase {
        uint16_t frameWidth, frameHeight, imageWidth, imageHeight;
        const char* says; // null: opens
    } cases[] = {
        {24, 16, 4, 3, nullptr},
        {0, 0, 24, 16, nullptr}, // no frame size: the pixels header's 4x3
        {25, 16, 4, 3, "the frame size 25x16 disagrees with the frame stride: 400 pixels cannot come from 24 bytes"},
        {65535, 65535, 4, 3, "frame size 65535x65535"},
        {4, 3, 65535, 2, "the image size 65535x2 disagrees with the frame stride: 131070 pixels cannot come from 24"},
    };
    SRecording rec = MakeRecording(2, 2);
    CRecordingReader reader;
    ASSERT_TRUE(reader.Open(rec.file));
    const SInfoFileBlock info = reader.blocks().get(0);
    ASSERT_STREQ(info.name, "SourceInfo");
    const std::vector<unsigned char> good(rec.mem->data(), rec.mem->data() + rec.mem->size());
    for (const SCase& c : cases) {
        std::memcpy(rec.mem->data(), good.data(), good.size());
        unsigned char* payload = rec.mem->data() + info.dataOffset;
        const uint16_t sizes[4] = {c.imageWidth, c.imageHeight, c.frameWidth, c.frameHeight};
        std::memcpy(payload + kImageAt, &sizes[0], 4);
        std::memcpy(payload + kFrameAt, &sizes[2], 4);
        const uint32_t crc = CalcCRC32(0, payload, static_cast<unsigned long>(info.size));
        std::memcpy(rec.mem->data() + info.headerOffset + 73, &crc, 4);
        const bool opened = reader.Open(rec.file);
        EXPECT_EQ(opened, c.says == nullptr) << c.frameWidth << "x" << c.frameHeight;
        if (c.says) {
            EXPECT_TRUE(Says(reader, c.says)) << reader.lastError().c_str();
        }
    }
}

// Without shift, mask or offset the pixels are read straight into the
// buffer; with them the filter copies. Either way the values are the
// filter's and its frame counter advances.
TEST(RecordingReader, DecodedPixelsWithAndWithoutTheFiltersCopy)
{
    SRecording rec = MakeRecording(3, 3);
    CRecordingReader reader;
    ASSERT_TRUE(reader.Open(rec.file));
    unsigned decoded = 0;
    for (int shift : {0, 1, 32, -3}) {
        reader.sourceInfo()->adBitShift = shift;
        for (unsigned f : {2u, 0u}) {
            std::vector<uint16_t> pixels(kWidth * kHeight + 1, 0xBEEF);
            uint8_t preset = 9;
            ASSERT_TRUE(reader.DecodeFrame(f, STypedData(pixels.data(), dtUInt16), kFrameBytes, preset));
            EXPECT_EQ(preset, 0);
            EXPECT_EQ(reader.reduceObjs().GetFrameInfo(0, false)->frame, decoded++);
            for (unsigned p = 0; p < kWidth * kHeight; ++p)
                ASSERT_EQ(pixels[p], uint16_t(unsigned(Value(f, p)) << (unsigned(shift < 0 ? -shift : shift) & 31)))
                    << "shift " << shift;
            EXPECT_EQ(pixels.back(), 0xBEEF);
        }
    }
    reader.sourceInfo()->adBitShift = 0;
    std::vector<uint16_t> pixels(kWidth * kHeight);
    uint8_t preset = 0;
    EXPECT_FALSE(reader.DecodeFrame(3, STypedData(pixels.data(), dtUInt16), kFrameBytes, preset));
    EXPECT_FALSE(reader.DecodeFrame(1, STypedData(pixels.data(), dtUInt16), kFrameBytes - 1, preset));
}
