#pragma once
// The info file: a 77-byte file header and a chain of self-skipping typed
// blocks, one per persisted reduce object. The front of a recording file too.
#include <cstdint>
#include <type_traits>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

// "VOLK QRT-US File" header: identifier and the one container version.
inline constexpr SGuid guidFileID = MakeGuid("{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}");
inline constexpr const char* kInfoFileName = "VOLK QRT-US File";
inline constexpr uint32_t kInfoFileVersion = 4096;

// Flag words of load and save.
enum : unsigned int {
    infoFileSkipCorrection = 8, // no Correction / RCal blocks, either way
    infoFileRecording = 16,     // passed by StartQRTFile
};

// Block header flags.
inline constexpr uint32_t blockFlagValid = 1;  // the object's valid; also set in the "Pixels" block
inline constexpr uint32_t blockFlagObject = 2; // always set in a written object block

// The 77-byte block header, without padding: one table that the reader, the
// writer and the tests share. Fields are written in this order through the
// typed IFile operations.
struct SInfoFileField {
    uint32_t offset;
    uint32_t size;
};
namespace blockHeader {
inline constexpr SInfoFileField name{0, 32};
inline constexpr SInfoFileField typeID{32, 16};
inline constexpr SInfoFileField version{48, 4};
inline constexpr SInfoFileField preset{52, 1};
inline constexpr SInfoFileField frame{53, 8};
inline constexpr SInfoFileField flags{61, 4};
inline constexpr SInfoFileField size{65, 8};
inline constexpr SInfoFileField crc{73, 4};
inline constexpr SInfoFileField fields[] = {name, typeID, version, preset, frame, flags, size, crc};
inline constexpr uint32_t kSize = 77;

constexpr bool Tiles()
{
    uint32_t next = 0;
    for (const SInfoFileField& f : fields) {
        if (f.offset != next) return false;
        next = f.offset + f.size;
    }
    return next == kSize;
}
static_assert(Tiles(), "block header fields tile 0 to 77");
} // namespace blockHeader

// In-memory directory entry of one block.
struct SInfoFileBlock {
    char name[33];
    SGuid typeID;
    uint32_t version;
    int8_t preset;
    uint64_t frame;
    uint32_t flags;
    uint64_t size; // all ones: the last block, running to the end of the file
    uint32_t crc;
    uint64_t headerOffset;
    uint64_t dataOffset; // always headerOffset + 77
};
static_assert(std::is_trivially_copyable_v<SInfoFileBlock>, "grows by reallocation");
static_assert(sizeof(SInfoFileBlock::name) == blockHeader::name.size + 1);
static_assert(sizeof(SInfoFileBlock::typeID) == blockHeader::typeID.size);
static_assert(sizeof(SInfoFileBlock::version) == blockHeader::version.size);
static_assert(sizeof(SInfoFileBlock::preset) == blockHeader::preset.size);
static_assert(sizeof(SInfoFileBlock::frame) == blockHeader::frame.size);
static_assert(sizeof(SInfoFileBlock::flags) == blockHeader::flags.size);
static_assert(sizeof(SInfoFileBlock::size) == blockHeader::size.size);
static_assert(sizeof(SInfoFileBlock::crc) == blockHeader::crc.size);

bool CreateInfoFile(TSharedPtr<IFile> file);

// Fills block from the object (CalcCRC with flags 0); writes nothing.
bool InitInfoFileBlock(SInfoFileBlock& block, TSharedPtr<IReduceObject> object);
bool WriteInfoFileBlock(TSharedPtr<IFile> file, const SInfoFileBlock& block);
// The same 77 bytes into memory.
bool WriteInfoFileBlock(void* buffer, const SInfoFileBlock& block);
// One whole block: header, then the payload.
bool WriteInfoFileBlock(TSharedPtr<IFile> file, TSharedPtr<IReduceObject> object);
// A free block: an anonymous header reserving size zero bytes.
bool WriteFreeInfoFileBlock(TSharedPtr<IFile> file, unsigned long size);

// flags is ignored.
bool ScanInfoFile(TSharedPtr<IFile> file, TArray<SInfoFileBlock>& blocks, unsigned int flags = 0);
bool ScanInfoFile(IFileSystem* fs, CString path, TArray<SInfoFileBlock>& blocks, unsigned int flags = 0);
bool ScanInfoFile(CString path, TArray<SInfoFileBlock>& blocks, unsigned int flags = 0);

// Unknown types and failing Loads are skipped softly: listed, no object.
bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks,
                  unsigned int flags = 0);
bool LoadInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks,
                  unsigned int flags = 0);
bool LoadInfoFile(CString path, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks, unsigned int flags = 0);
bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, unsigned int flags = 0);
bool LoadInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, unsigned int flags = 0);
bool LoadInfoFile(CString path, CReduceObjectArray& objects, unsigned int flags = 0);

// False when a persisted object cannot be saved; the file is then left partly
// written.
bool SaveInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, unsigned int flags = 0);
bool SaveInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, unsigned int flags = 0);
bool SaveInfoFile(CString path, CReduceObjectArray& objects, unsigned int flags = 0);

// Patches every "SourceInfo" block of a finished recording in place with the
// four frame counts (and, with noPackets, frame-sized packets). The file must
// be readable and writable.
bool UpdateInfoFile(TSharedPtr<IFile> file, unsigned int* numFrames, bool noPackets);

} // namespace orv::reduce
