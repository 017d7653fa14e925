#pragma once
// Memory files for payload round trips in the object tests.
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "orv/File.h"
#include "reduce/store/ReduceObject.h"

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

// The payload an object saves, for layout checks and byte-for-byte comparisons.
inline std::vector<uint8_t> Saved(IReduceObject& object, unsigned flags = 0)
{
    SMemFile mem;
    EXPECT_TRUE(object.Save(mem.file, flags)) << object.GetName();
    return mem.bytes();
}

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
