#pragma once
// The "Pixels" block that ends a recording file: its 512-byte header says how
// the frame data after it are laid out and has eight slots for extra
// per-frame data.
#include <cstddef>
#include <cstdint>

#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

class CSourceInfoReduceObject;

inline constexpr SGuid guidPixels = MakeGuid("{48A16EF9-457E-47E8-9F70-5495781A1B64}");
inline constexpr const char* kPixelsBlockName = "Pixels";
inline constexpr uint32_t kPixelsBlockVersion = 0x10001;
inline constexpr uint32_t kPixelsHeaderSize = 512;
// The form of block versions up to 0x10000.
inline constexpr uint32_t kOldPixelsHeaderSize = 44;

// A slot for extra per-frame data. A non-zero size marks a used slot; the
// last 12 bytes are only carried.
struct SFrameBlockEntry {
    SGuid id;
    uint32_t size;
    uint8_t reserved[12];
};
static_assert(sizeof(SFrameBlockEntry) == 32);

// Little-endian and packed; the declaration order is the file's.
struct SPixelsHeader {
    static constexpr uint32_t kNotFound = ~uint32_t(0);

    uint32_t headerSize;
    uint32_t version;
    uint32_t dataOffset; // from the start of this structure
    SGuid pixelType;
    uint16_t pixelWidth; // bytes per pixel
    uint16_t imageWidth;
    uint16_t imageHeight;
    uint16_t frameWidth;
    uint16_t frameHeight;
    uint16_t packetWidth;
    uint16_t packetHeight;
    uint16_t numFramesPerPacket;
    uint32_t packetSize;
    uint32_t frameStride;
    uint8_t reserved1[76];
    SFrameBlockEntry frameBlocks[8];
    uint8_t reserved2[128];

    // Slot index of id over the eight slots; kNotFound when absent.
    uint32_t FindFrameBlock(SGuid id) const;
    // Index of the slot taken; kNotFound if id is already there or no slot is
    // free.
    uint32_t AddFrameBlock(const SFrameBlockEntry& entry);
};
static_assert(sizeof(SPixelsHeader) == kPixelsHeaderSize);
static_assert(offsetof(SPixelsHeader, pixelType) == 12 && offsetof(SPixelsHeader, pixelWidth) == 28);
static_assert(offsetof(SPixelsHeader, numFramesPerPacket) == 42 && offsetof(SPixelsHeader, packetSize) == 44);
static_assert(offsetof(SPixelsHeader, frameStride) == 48 && offsetof(SPixelsHeader, frameBlocks) == 128);
static_assert(offsetof(SPixelsHeader, reserved2) == 384);

bool InitPixelsHeader(SPixelsHeader& header, TSharedPtr<CSourceInfoReduceObject> info, bool noPackets);
// The "Pixels" block header, then the 512 bytes as they are.
bool WritePixelsHeader(TSharedPtr<IFile> file, const SPixelsHeader& header);
bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> info, SGuid pixelType,
                       unsigned int frameSize, bool noPackets);
bool WritePixelsHeader(TSharedPtr<IFile> file, TSharedPtr<CSourceInfoReduceObject> info, bool noPackets);
// Reads from the payload of the "Pixels" block; version is the block's.
// header is unchanged when the read fails.
bool ReadPixelsHeader(TSharedPtr<IFile> file, unsigned int version, SPixelsHeader& header);

// Info file with flags 16, then the "Pixels" block; frame data follow at the
// file's position.
bool StartQRTFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, const SPixelsHeader& header);
// The array must hold a source info.
bool StartQRTFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, bool noPackets);
// numFrames points to four counts, one per preset.
bool FinishQRTFile(TSharedPtr<IFile> file, unsigned int* numFrames, bool noPackets);

} // namespace orv::reduce
