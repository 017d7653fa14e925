#include "reduce/store/InfoFile.h"

#include <cstring>
#include <limits>

#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace {

constexpr uint64_t kAllOnes = ~uint64_t(0);

bool SkippedByFlags(SGuid typeID, unsigned int flags)
{
    return (flags & infoFileSkipCorrection) &&
           (typeID == CCorrectionReduceObject::typeID || typeID == CRCalReduceObject::typeID);
}

// The eight fields in table order, each through its typed operation.
bool WriteHeader(IFile& file, const SInfoFileBlock& block)
{
    return file.PutFixedLengthString(block.name, blockHeader::name.size) && file.PutGUID(block.typeID) &&
           file.PutUInt32(block.version) && file.PutInt8(block.preset) && file.PutUInt64(block.frame) &&
           file.PutUInt32(block.flags) && file.PutUInt64(block.size) && file.PutUInt32(block.crc);
}

bool ReadHeader(IFile& file, SInfoFileBlock& block)
{
    return file.GetFixedLengthString(block.name, blockHeader::name.size) && file.GetGUID(block.typeID) &&
           file.GetUInt32(block.version) && file.GetInt8(block.preset) && file.GetUInt64(block.frame) &&
           file.GetUInt32(block.flags) && file.GetUInt64(block.size) && file.GetUInt32(block.crc);
}

SInfoFileBlock FileHeader()
{
    SInfoFileBlock block{};
    StrCpy(block.name, kInfoFileName, sizeof block.name);
    block.typeID = guidFileID;
    block.version = kInfoFileVersion;
    block.preset = -1;
    block.frame = kAllOnes;
    return block;
}

bool CheckFileHeader(IFile& file)
{
    SInfoFileBlock block{};
    if (!ReadHeader(file, block)) return false;
    // 17 bytes: the name and its terminator.
    if (std::memcmp(block.name, kInfoFileName, 17) != 0) return false;
    return block.typeID == guidFileID && block.version == kInfoFileVersion && block.preset == -1 &&
           block.frame == kAllOnes && block.flags == 0 && block.size == 0 && block.crc == 0;
}

// Moves to an absolute offset. An offset beyond what a seek can express (a
// corrupt size) lands at the end, which ends the walk like any seek past the
// end of the data.
void SeekTo(IFile& file, uint64_t offset)
{
    uint64_t length = static_cast<uint64_t>(file.GetLength());
    if (offset > static_cast<uint64_t>(std::numeric_limits<long long>::max()) || offset > length) offset = length;
    file.Seek(static_cast<long long>(offset), IFile::seekBegin);
}

// Offset after a payload; saturates instead of wrapping.
uint64_t PayloadEnd(uint64_t dataOffset, uint64_t size)
{
    return size > kAllOnes - dataOffset ? kAllOnes : dataOffset + size;
}

uint64_t Position(IFile& file)
{
    long long position = file.GetPosition();
    return position < 0 ? 0 : static_cast<uint64_t>(position);
}

// Header of an object's block; the payload's length and crc come from a
// first, counting Save.
bool FillBlock(SInfoFileBlock& block, IReduceObject& object, unsigned int flags)
{
    unsigned long size = 0;
    if (!object.CalcCRC(block.crc, size, flags)) return false;
    block.size = size;
    StrCpy(block.name, object.GetName(), sizeof block.name);
    block.typeID = object.GetTypeID();
    block.version = object.version;
    block.preset = static_cast<int8_t>(object.preset);
    block.frame = object.frame;
    block.flags = blockFlagObject | (object.valid ? blockFlagValid : 0);
    return true;
}

} // namespace

bool CreateInfoFile(TSharedPtr<IFile> file)
{
    return file && WriteHeader(*file, FileHeader());
}

bool InitInfoFileBlock(SInfoFileBlock& block, TSharedPtr<IReduceObject> object)
{
    block = SInfoFileBlock{};
    return object && FillBlock(block, *object, 0);
}

bool WriteInfoFileBlock(TSharedPtr<IFile> file, const SInfoFileBlock& block)
{
    return file && WriteHeader(*file, block);
}

bool WriteInfoFileBlock(void* buffer, const SInfoFileBlock& block)
{
    if (!buffer) return false;
    CMemFile memory;
    memory.Attach(static_cast<unsigned char*>(buffer), blockHeader::kSize, false);
    return WriteHeader(memory, block);
}

bool WriteInfoFileBlock(TSharedPtr<IFile> file, TSharedPtr<IReduceObject> object)
{
    if (!file) return false;
    SInfoFileBlock block;
    return InitInfoFileBlock(block, object) && WriteHeader(*file, block) && object->Save(file, 0);
}

bool WriteFreeInfoFileBlock(TSharedPtr<IFile> file, unsigned long size)
{
    if (!file) return false;
    SInfoFileBlock block{};
    block.preset = -1;
    block.frame = kAllOnes;
    block.size = size;
    return WriteHeader(*file, block) && file->WriteZeros(size);
}

bool ScanInfoFile(TSharedPtr<IFile> file, TArray<SInfoFileBlock>& blocks, unsigned int)
{
    if (!file || !CheckFileHeader(*file)) return false;
    blocks.clear();
    while (file->GetRemaining() != 0) {
        SInfoFileBlock block;
        if (!ReadHeader(*file, block)) return false;
        block.dataOffset = Position(*file);
        block.headerOffset = block.dataOffset - blockHeader::kSize;
        blocks.add(block);
        if (block.size == kAllOnes) break;
        // A payload cut by the end of the file scans as good: the seek lands
        // past the end and the walk stops.
        SeekTo(*file, PayloadEnd(block.dataOffset, block.size));
    }
    return true;
}

bool ScanInfoFile(IFileSystem* fs, CString path, TArray<SInfoFileBlock>& blocks, unsigned int flags)
{
    if (!fs) return false;
    TSharedPtr<IFile> file = fs->Open(path, IFileSystem::openRead);
    return file && ScanInfoFile(file, blocks, flags);
}

bool ScanInfoFile(CString path, TArray<SInfoFileBlock>& blocks, unsigned int flags)
{
    return ScanInfoFile(fileSystem(), path, blocks, flags);
}

bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks,
                  unsigned int flags)
{
    if (!file || !CheckFileHeader(*file)) return false;
    objects.Reset();
    blocks.clear();
    CReduceObjectFactory& factory = reduceObjectFactory();
    while (file->GetRemaining() != 0) {
        SInfoFileBlock block;
        if (!ReadHeader(*file, block)) return false;
        block.dataOffset = Position(*file);
        block.headerOffset = block.dataOffset - blockHeader::kSize;
        uint64_t next = PayloadEnd(block.dataOffset, block.size);
        if (SkippedByFlags(block.typeID, flags)) {
            SeekTo(*file, next); // not even listed
            continue;
        }
        if (TSharedPtr<IReduceObject> object = factory.CreateByTypeID(block.typeID)) {
            auto restore = [&] {
                object->preset = static_cast<uint8_t>(block.preset);
                object->frame = block.frame;
                object->valid = (block.flags & blockFlagValid) != 0;
            };
            restore();
            // A failing Load drops the object, not the file.
            if (object->Load(file, block.version, flags)) {
                restore(); // Load may have run Default()
                objects.add(object);
            }
        }
        blocks.add(block);
        if (block.size == kAllOnes) break;
        // From the block, not from what Load consumed.
        SeekTo(*file, next);
    }
    return true;
}

bool LoadInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks,
                  unsigned int flags)
{
    if (!fs) return false;
    TSharedPtr<IFile> file = fs->Open(path, IFileSystem::openRead);
    return file && LoadInfoFile(file, objects, blocks, flags);
}

bool LoadInfoFile(CString path, CReduceObjectArray& objects, TArray<SInfoFileBlock>& blocks, unsigned int flags)
{
    return LoadInfoFile(fileSystem(), path, objects, blocks, flags);
}

bool LoadInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, unsigned int flags)
{
    TArray<SInfoFileBlock> blocks;
    return LoadInfoFile(file, objects, blocks, flags);
}

bool LoadInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, unsigned int flags)
{
    TArray<SInfoFileBlock> blocks;
    return LoadInfoFile(fs, path, objects, blocks, flags);
}

bool LoadInfoFile(CString path, CReduceObjectArray& objects, unsigned int flags)
{
    TArray<SInfoFileBlock> blocks;
    return LoadInfoFile(path, objects, blocks, flags);
}

bool SaveInfoFile(TSharedPtr<IFile> file, CReduceObjectArray& objects, unsigned int flags)
{
    if (!file || !WriteHeader(*file, FileHeader())) return false;
    for (unsigned int i = 0; i < objects.GetSize(); ++i) {
        TSharedPtr<IReduceObject> object = objects.GetAt(i);
        if (!object || SkippedByFlags(object->GetTypeID(), flags) || !object->ShouldPersist(flags)) continue;
        // A persisted type without Save fails the whole save; required, so
        // callers clear persist on such objects first.
        SInfoFileBlock block{};
        if (!FillBlock(block, *object, flags)) return false;
        if (!WriteHeader(*file, block) || !object->Save(file, flags)) return false;
    }
    // Nothing terminates the chain: the end of the file is its end.
    return true;
}

bool SaveInfoFile(IFileSystem* fs, CString path, CReduceObjectArray& objects, unsigned int flags)
{
    if (!fs) return false;
    TSharedPtr<IFile> file = fs->Open(path, IFileSystem::openWrite);
    return file && SaveInfoFile(file, objects, flags);
}

bool SaveInfoFile(CString path, CReduceObjectArray& objects, unsigned int flags)
{
    return SaveInfoFile(fileSystem(), path, objects, flags);
}

} // namespace orv::reduce
