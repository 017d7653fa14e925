#pragma once
// Memory files for payload round trips in the object tests.
#include <cstdint>
#include <cstring>
#include <vector>

#include "orv/File.h"

namespace orv::reduce::test {

// An empty, growing memory file and a shared pointer that owns it.
struct SMemFile {
    CMemFile* mem = new CMemFile;
    TSharedPtr<IFile> file{mem};

    SMemFile() { mem->Create(); }
    explicit SMemFile(const std::vector<uint8_t>& bytes) : SMemFile()
    {
        mem->WriteBytes(bytes.data(), static_cast<unsigned>(bytes.size()));
        mem->SeekToBegin();
    }

    std::vector<uint8_t> bytes() const { return std::vector<uint8_t>(mem->data(), mem->data() + mem->size()); }
    void Rewind() { mem->SeekToBegin(); }
};

template <class T>
T ReadAt(const std::vector<uint8_t>& bytes, size_t offset)
{
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

template <class T>
void WriteAt(std::vector<uint8_t>& bytes, size_t offset, T value)
{
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(bytes.data() + offset, &value, sizeof(T));
}

} // namespace orv::reduce::test
