#include "reduce/store/PixelsHeader.h"

#include <cstring>

#include "reduce/store/InfoFile.h"

namespace orv::reduce {

namespace {

SInfoFileBlock PixelsBlock()
{
    SInfoFileBlock block{};
    StrCpy(block.name, kPixelsBlockName, sizeof block.name);
    block.typeID = guidPixels;
    block.version = kPixelsBlockVersion;
    block.preset = -1;
    block.frame = ~uint64_t(0);
    block.flags = blockFlagValid;
    block.size = ~uint64_t(0); // ends the chain; the frame data run to the end of the file
    block.crc = 0;
    return block;
}

} // namespace

uint32_t SPixelsHeader::FindFrameBlock(SGuid id) const
{
    for (uint32_t i = 0; i < 8; ++i)
        if (frameBlocks[i].id == id) return i;
    return kNotFound;
}

uint32_t SPixelsHeader::AddFrameBlock(const SFrameBlockEntry& entry)
{
    if (FindFrameBlock(entry.id) != kNotFound) return kNotFound;
    for (uint32_t i = 0; i < 8; ++i) {
        if (frameBlocks[i].size == 0) {
            frameBlocks[i] = entry;
            return i;
        }
    }
    return kNotFound;
}

bool WritePixelsHeader(TSharedPtr<IFile> file, const SPixelsHeader& header)
{
    return file && WriteInfoFileBlock(file, PixelsBlock()) && file->WriteBytes(&header, sizeof header);
}

bool ReadPixelsHeader(TSharedPtr<IFile> file, unsigned int version, SPixelsHeader& header)
{
    if (!file) return false;
    if (version > 0x10000) {
        SPixelsHeader read;
        if (!file->ReadBytes(&read, sizeof read)) return false;
        header = read;
        return true;
    }
    // The old 44-byte form: type, width, 8 skipped bytes, seven sizes, one
    // stored size that serves as both packet size and frame stride.
    unsigned char old[kOldPixelsHeaderSize];
    if (!file->ReadBytes(old, sizeof old)) return false;
    header = SPixelsHeader{};
    header.headerSize = kOldPixelsHeaderSize;
    header.version = 0x10000;
    header.dataOffset = kOldPixelsHeaderSize;
    std::memcpy(&header.pixelType, old, 16);
    std::memcpy(&header.pixelWidth, old + 16, 2);
    uint16_t sizes[7];
    std::memcpy(sizes, old + 26, sizeof sizes);
    header.imageWidth = sizes[0];
    header.imageHeight = sizes[1];
    header.frameWidth = sizes[2];
    header.frameHeight = sizes[3];
    header.packetWidth = sizes[4];
    header.packetHeight = sizes[5];
    header.numFramesPerPacket = sizes[6];
    std::memcpy(&header.packetSize, old + 40, 4);
    header.frameStride = header.packetSize;
    return true;
}

bool StartQRTFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, const SPixelsHeader& header)
{
    return SaveInfoFile(file, objects, infoFileRecording) && WritePixelsHeader(file, header);
}

} // namespace orv::reduce
