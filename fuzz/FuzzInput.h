#pragma once
// What the fuzz targets share: the input served as a file that is only read,
// through IFile or through a file system, and checked to be unchanged after
// the parser is done with it.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "orv/File.h"

namespace orv::fuzz {

// The input bytes behind memory files. The parsers read a private copy; a
// byte that differs afterwards was written through a file opened for reading.
class CInput {
public:
    CInput(const uint8_t* data, size_t size) : m_original(data, data + size), m_copy(m_original) {}
    CInput(const CInput&) = delete;
    CInput& operator=(const CInput&) = delete;
    ~CInput()
    {
        if (m_copy != m_original) {
            std::fprintf(stderr, "the parser changed the file it only read\n");
            std::abort();
        }
    }

    const uint8_t* data() const { return m_original.data(); }
    size_t size() const { return m_original.size(); }

    // A new read-only file over the bytes, at position 0. A borrowed buffer
    // cannot grow, so a write can only overwrite, which the destructor sees.
    TSharedPtr<IFile> Open()
    {
        auto* memory = new CMemFile;
        memory->Attach(m_copy.empty() ? nullptr : m_copy.data(), static_cast<unsigned long>(m_copy.size()), false);
        return TSharedPtr<IFile>(memory);
    }

private:
    std::vector<uint8_t> m_original;
    std::vector<uint8_t> m_copy;
};

// A file system of one file, kPath, holding the input; everything else is
// missing and nothing can be written.
class CInputFileSystem : public IFileSystem {
public:
    static constexpr const char* kPath = "/fuzz/input";

    explicit CInputFileSystem(CInput& input) : m_input(input) {}

    TSharedPtr<IFile> Open(const CString& path, unsigned int mode) override
    {
        if ((mode & modeWrite) || !(path == kPath)) return nullptr;
        return m_input.Open();
    }
    CDirectoryListing List(const CString&, const CString&) override { return {}; }
    bool Exists(const CString& path) override { return path == kPath; }
    bool Remove(const CString&) override { return false; }

private:
    CInput& m_input;
};

// Takes fixed-size fields off the front of the input; zeroes once it runs out.
class CReader {
public:
    CReader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

    template <class T>
    T Take()
    {
        T value{};
        const size_t n = m_size < sizeof value ? m_size : sizeof value;
        if (n) std::memcpy(&value, m_data, n);
        m_data += n;
        m_size -= n;
        return value;
    }
    const uint8_t* data() const { return m_data; }
    size_t size() const { return m_size; }

private:
    const uint8_t* m_data;
    size_t m_size;
};

} // namespace orv::fuzz
