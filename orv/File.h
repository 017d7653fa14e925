#pragma once
// IFile: a byte stream with a position; TSharedPtr<IFile> is how it travels.
// Typed operations are little-endian; a Boolean is one byte; floats are IEEE
// 754. IFileSystem opens paths and lists directories.
#include <cstdint>

#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "orv/Types.h"

namespace orv {

class IFile {
public:
    // Seek origins. Only these two are used by the system.
    enum { seekBegin = 1, seekCurrent = 2, seekEnd = 3 };

    virtual ~IFile() = default;

    // Bytes moved; may be fewer than asked at the end of the data.
    virtual unsigned long Write(const void* data, unsigned long size) = 0;
    virtual unsigned long Read(void* data, unsigned long size) = 0;
    virtual long long GetPosition() = 0;
    // False when the origin is unknown or the result would be negative.
    // Seeking past the end is allowed; reads there return nothing.
    virtual bool Seek(long long offset, int whence) = 0;
    // Total size of the stream in bytes.
    virtual long long GetLength() = 0;

    // --- non-virtual helpers on top of the four operations -------------------
    bool ReadBytes(void* data, unsigned int size);
    bool WriteBytes(const void* data, unsigned int size);

    bool GetUInt8(uint8_t& v);
    bool GetInt8(int8_t& v);
    bool GetUInt16(uint16_t& v);
    bool GetInt16(int16_t& v);
    bool GetUInt32(uint32_t& v);
    bool GetInt32(int32_t& v);
    bool GetUInt64(uint64_t& v);
    bool GetInt64(int64_t& v);
    bool GetFlt32(float& v);
    bool GetFlt64(double& v);
    bool GetBool(bool& v);

    bool PutUInt8(uint8_t v);
    bool PutInt8(int8_t v);
    bool PutUInt16(uint16_t v);
    bool PutInt16(int16_t v);
    bool PutUInt32(uint32_t v);
    bool PutInt32(int32_t v);
    bool PutUInt64(uint64_t v);
    bool PutInt64(int64_t v);
    bool PutFlt32(float v);
    bool PutFlt64(double v);
    bool PutBool(bool v);

    // The same without a failure report: 0 / false when nothing could be read.
    uint8_t GetBYTE();
    uint32_t GetDWORD();
    bool GetBool();
    int32_t GetInt32();
    double GetDouble();
    void PutBYTE(uint8_t v);
    void PutDWORD(uint32_t v);
    void PutDouble(double v);

    // The 16 bytes as they lie in the structure (little-endian fields).
    bool GetGUID(SGuid& id);
    bool PutGUID(SGuid id);

    // Reads exactly length bytes into buffer and terminates it; buffer has
    // room for length + 1.
    bool GetFixedLengthString(char* buffer, unsigned int length);
    // Writes exactly length bytes: the text cut, or padded with zeroes.
    bool PutFixedLengthString(const char* text, unsigned int length);

    // Variable-length string: unsigned 32-bit byte count, then the bytes, no
    // terminator (docs/formats.md). Lengths beyond the remaining bytes fail.
    bool GetString(CString& text);
    bool PutString(const CString& text);

    // Text output, no terminator written.
    bool WriteString(const char* text);
    bool WriteFormattedString(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool WriteZeros(unsigned long count);

    bool SeekToBegin() { return Seek(0, seekBegin); }
    // Bytes from the position to the end; 0 at or past the end.
    unsigned long long GetRemaining();
};

using IFilePtr = TSharedPtr<IFile>;

// An IFile over memory. Writes past the end grow the buffer (when owned).
class CMemFile : public IFile {
public:
    CMemFile();
    ~CMemFile() override;
    CMemFile(const CMemFile&) = delete;
    CMemFile& operator=(const CMemFile&) = delete;

    // Starts an empty, owned buffer.
    bool Create();
    // Uses data of size bytes; with own the file frees it (with Free) and may
    // grow it, without it writes stop at size.
    bool Attach(unsigned char* data, unsigned long size, bool own);
    // Sets the data size (grows with zeroes when owned); the position stays.
    bool SetSize(long size);
    unsigned long GetSize() const { return m_size; }
    unsigned char* GetData() { return m_data; }
    unsigned long size() const { return m_size; }
    unsigned char* data() { return m_data; }
    // Empties the file and puts the position at 0.
    void Reset();

    unsigned long Write(const void* data, unsigned long size) override;
    unsigned long Read(void* data, unsigned long size) override;
    long long GetPosition() override { return m_position; }
    bool Seek(long long offset, int whence) override;
    long long GetLength() override { return static_cast<long long>(m_size); }

private:
    bool Reserve(unsigned long capacity);
    void Release();

    unsigned char* m_data = nullptr;
    unsigned long m_size = 0;
    unsigned long m_capacity = 0;
    unsigned long long m_position = 0;
    bool m_own = false;
};

// An IFile that stores nothing and keeps the CRC-32 (zlib's) of all bytes
// written, and their count.
class CCalcCRC32File : public IFile {
public:
    CCalcCRC32File() = default;
    unsigned int GetCRC() const { return m_crc; }
    unsigned long GetSize() const { return m_size; }

    unsigned long Write(const void* data, unsigned long size) override;
    unsigned long Read(void*, unsigned long) override { return 0; }
    long long GetPosition() override { return static_cast<long long>(m_size); }
    bool Seek(long long, int) override { return false; }
    long long GetLength() override { return static_cast<long long>(m_size); }

private:
    unsigned int m_crc = 0;
    unsigned long m_size = 0;
};

// CRC-32 of the file from its position to its end; the same value that a
// CCalcCRC32File reports for the same bytes. The position ends at the end.
bool CalcCRC32(unsigned int& crc, TSharedPtr<IFile> file);
// CRC-32 of a memory block, continuing from crc (0 to start).
unsigned int CalcCRC32(unsigned int crc, const void* data, unsigned long size);

struct CDirectoryEntry {
    CString name;     // file name without directory
    CString fullPath; // directory + name
    bool isDirectory = false;
    unsigned long long size = 0;
    int64_t modified = 0; // seconds since 1970-01-01
};

class CDirectoryListing : public TArray<CDirectoryEntry> {
public:
    CDirectoryListing() = default;
    CDirectoryListing(CDirectoryListing&&) = default;
    CDirectoryListing& operator=(CDirectoryListing&&) = default;
};

class IFileSystem {
public:
    // Open modes: bit 1 read, bit 3 write, bit 4 must exist, bit 5 create or
    // truncate. The two used: 18 (read an existing file) and 40 (create or
    // overwrite for writing).
    enum : unsigned { modeRead = 2, modeWrite = 8, modeExisting = 16, modeCreate = 32 };
    enum : unsigned { openRead = modeRead | modeExisting, openWrite = modeWrite | modeCreate };

    virtual ~IFileSystem() = default;
    // Null on failure.
    virtual TSharedPtr<IFile> Open(const CString& path, unsigned int mode) = 0;
    // Entries of directory whose names match pattern ('*' matches any run,
    // '?' one character), sorted by name; '.' and '..' are left out.
    virtual CDirectoryListing List(const CString& directory, const CString& pattern) = 0;
    virtual bool Exists(const CString& path) = 0;
    virtual bool Remove(const CString& path) = 0;
};

// The process-wide file system over the host's files.
IFileSystem* fileSystem();

} // namespace orv
