// The parts of the recording file that read the source info: the pixels
// header built from it, and the patch of its blocks when a recording ends.
#include <cstring>
#include <limits>

#include "orv/PixelType.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"

namespace orv::reduce {

namespace {

void FillPixelsHeader(SPixelsHeader& header, const CSourceInfoReduceObject& info, SGuid pixelType, bool noPackets)
{
    header = SPixelsHeader{};
    header.headerSize = kPixelsHeaderSize;
    header.version = kPixelsBlockVersion;
    header.dataOffset = kPixelsHeaderSize;
    header.pixelType = pixelType;
    header.pixelWidth = PixelWidth(pixelType);
    header.imageWidth = info.imageWidth;
    header.imageHeight = info.imageHeight;
    header.frameWidth = info.frameWidth;
    header.frameHeight = info.frameHeight;
    header.packetWidth = noPackets ? info.frameWidth : info.packetWidth;
    header.packetHeight = noPackets ? info.frameHeight : info.packetHeight;
    header.numFramesPerPacket = noPackets ? 0 : info.numFramesPerPacket;
}

} // namespace

bool InitPixelsHeader(SPixelsHeader& header, TSharedPtr<CSourceInfoReduceObject> info, bool noPackets)
{
    if (!info) return false;
    FillPixelsHeader(header, *info, info->pixelType, noPackets);
    header.packetSize = static_cast<uint32_t>(uint64_t(header.packetWidth) * header.packetHeight * header.pixelWidth);
    header.frameStride = header.packetSize;
    return true;
}

bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> info, SGuid pixelType,
                       unsigned int frameSize, bool noPackets)
{
    if (!info) return false;
    SPixelsHeader header;
    FillPixelsHeader(header, *info, pixelType, noPackets);
    header.packetSize = frameSize;
    header.frameStride = frameSize;
    return WritePixelsHeader(file, header);
}

bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> info, bool noPackets)
{
    if (!info) return false;
    uint64_t width = noPackets ? info->frameWidth : info->packetWidth;
    uint64_t height = noPackets ? info->frameHeight : info->packetHeight;
    auto frameSize = static_cast<unsigned int>(width * height * PixelWidth(info->pixelType));
    return WritePixelsHeader(file, info, info->pixelType, frameSize, noPackets);
}

bool StartQRTFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, bool noPackets)
{
    if (!SaveInfoFile(file, objects, infoFileRecording)) return false;
    return WritePixelsHeader(file, objects.GetSourceInfo(false), noPackets);
}

bool FinishQRTFile(TSharedPtr<IFile> file, unsigned int* numFrames, bool noPackets)
{
    return UpdateInfoFile(file, numFrames, noPackets);
}

bool UpdateInfoFile(TSharedPtr<IFile> file, unsigned int* numFrames, bool noPackets)
{
    if (!file || !numFrames) return false;
    TArray<SInfoFileBlock> blocks;
    file->SeekToBegin();
    if (!ScanInfoFile(file, blocks, 0)) return false;
    CMemFile memory;
    memory.Create();
    TSharedPtr<IFile> payload(&memory, noDestroy);
    for (SInfoFileBlock& block : blocks) {
        if (block.typeID != CSourceInfoReduceObject::typeID) continue;
        // A payload is patched in memory: never more than the file holds.
        file->Seek(static_cast<long long>(block.dataOffset), IFile::seekBegin);
        if (block.size > file->GetRemaining() || block.size > std::numeric_limits<uint32_t>::max()) return false;
        auto size = static_cast<unsigned int>(block.size);
        if (!memory.SetSize(size) || !file->ReadBytes(memory.data(), size)) return false;
        memory.SeekToBegin();
        CSourceInfoReduceObject info;
        if (!info.Load(payload, block.version, 0)) return false;
        // The buffer is patched, not the object; a payload too short for the
        // patch is written back as it was.
        CSourceInfoReduceObject::UpdateNumFrames(memory.data(), size, numFrames, 4);
        if (noPackets)
            CSourceInfoReduceObject::UpdatePacketing(memory.data(), size, info.frameWidth, info.frameHeight, 0);
        memory.SeekToBegin();
        CalcCRC32(block.crc, payload);
        file->Seek(static_cast<long long>(block.headerOffset), IFile::seekBegin);
        if (!WriteInfoFileBlock(file, block) || !file->WriteBytes(memory.data(), size)) return false;
        memory.Reset();
    }
    return true;
}

} // namespace orv::reduce
