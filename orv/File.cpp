#include "orv/File.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>

namespace orv {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "typed file operations assume a little-endian host");

// ---------------------------------------------------------------------------
// IFile helpers

bool IFile::ReadBytes(void* data, unsigned int size) { return size == 0 || Read(data, size) == size; }

bool IFile::WriteBytes(const void* data, unsigned int size) { return size == 0 || Write(data, size) == size; }

bool IFile::GetUInt8(uint8_t& v) { return ReadBytes(&v, 1); }
bool IFile::GetInt8(int8_t& v) { return ReadBytes(&v, 1); }
bool IFile::GetUInt16(uint16_t& v) { return ReadBytes(&v, 2); }
bool IFile::GetInt16(int16_t& v) { return ReadBytes(&v, 2); }
bool IFile::GetUInt32(uint32_t& v) { return ReadBytes(&v, 4); }
bool IFile::GetInt32(int32_t& v) { return ReadBytes(&v, 4); }
bool IFile::GetUInt64(uint64_t& v) { return ReadBytes(&v, 8); }
bool IFile::GetInt64(int64_t& v) { return ReadBytes(&v, 8); }
bool IFile::GetFlt32(float& v) { return ReadBytes(&v, 4); }
bool IFile::GetFlt64(double& v) { return ReadBytes(&v, 8); }

bool IFile::GetBool(bool& v)
{
    uint8_t b;
    if (!ReadBytes(&b, 1)) return false;
    v = b != 0;
    return true;
}

bool IFile::PutUInt8(uint8_t v) { return WriteBytes(&v, 1); }
bool IFile::PutInt8(int8_t v) { return WriteBytes(&v, 1); }
bool IFile::PutUInt16(uint16_t v) { return WriteBytes(&v, 2); }
bool IFile::PutInt16(int16_t v) { return WriteBytes(&v, 2); }
bool IFile::PutUInt32(uint32_t v) { return WriteBytes(&v, 4); }
bool IFile::PutInt32(int32_t v) { return WriteBytes(&v, 4); }
bool IFile::PutUInt64(uint64_t v) { return WriteBytes(&v, 8); }
bool IFile::PutInt64(int64_t v) { return WriteBytes(&v, 8); }
bool IFile::PutFlt32(float v) { return WriteBytes(&v, 4); }
bool IFile::PutFlt64(double v) { return WriteBytes(&v, 8); }

bool IFile::PutBool(bool v)
{
    uint8_t b = v ? 1 : 0;
    return WriteBytes(&b, 1);
}

uint8_t IFile::GetBYTE()
{
    uint8_t v = 0;
    GetUInt8(v);
    return v;
}
uint32_t IFile::GetDWORD()
{
    uint32_t v = 0;
    GetUInt32(v);
    return v;
}
bool IFile::GetBool()
{
    bool v = false;
    GetBool(v);
    return v;
}
int32_t IFile::GetInt32()
{
    int32_t v = 0;
    GetInt32(v);
    return v;
}
double IFile::GetDouble()
{
    double v = 0;
    GetFlt64(v);
    return v;
}
void IFile::PutBYTE(uint8_t v) { PutUInt8(v); }
void IFile::PutDWORD(uint32_t v) { PutUInt32(v); }
void IFile::PutDouble(double v) { PutFlt64(v); }

bool IFile::GetGUID(SGuid& id) { return ReadBytes(&id, sizeof id); }
bool IFile::PutGUID(SGuid id) { return WriteBytes(&id, sizeof id); }

bool IFile::GetFixedLengthString(char* buffer, unsigned int length)
{
    bool ok = ReadBytes(buffer, length);
    buffer[ok ? length : 0] = '\0';
    return ok;
}

bool IFile::PutFixedLengthString(const char* text, unsigned int length)
{
    size_t n = text ? strnlen(text, length) : 0;
    if (!WriteBytes(text, static_cast<unsigned int>(n))) return false;
    return WriteZeros(length - n);
}

bool IFile::GetString(CString& text)
{
    uint32_t n;
    if (!GetUInt32(n)) return false;
    if (n > GetRemaining()) return false; // a corrupt length never allocates gigabytes
    if (n > static_cast<uint32_t>(INT_MAX)) return false; // more than a CString can hold
    CString s;
    char* p = s.GetBuffer(static_cast<int>(n));
    if (!ReadBytes(p, n)) return false;
    p[n] = '\0';
    s.ReleaseBuffer();
    text = std::move(s);
    return true;
}

bool IFile::PutString(const CString& text)
{
    uint32_t n = static_cast<uint32_t>(text.length());
    return PutUInt32(n) && WriteBytes(text.c_str(), n);
}

bool IFile::WriteString(const char* text) { return text ? WriteBytes(text, static_cast<unsigned>(strlen(text))) : true; }

bool IFile::WriteFormattedString(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CString s = CString::FromFormatV(format, args);
    va_end(args);
    return WriteBytes(s.c_str(), static_cast<unsigned>(s.length()));
}

bool IFile::WriteZeros(unsigned long count)
{
    static const unsigned char zeros[4096] = {};
    while (count > 0) {
        unsigned long n = std::min<unsigned long>(count, sizeof zeros);
        if (Write(zeros, n) != n) return false;
        count -= n;
    }
    return true;
}

unsigned long long IFile::GetRemaining()
{
    long long pos = GetPosition();
    long long len = GetLength();
    return (pos < 0 || len <= pos) ? 0 : static_cast<unsigned long long>(len - pos);
}

// ---------------------------------------------------------------------------
// CMemFile

CMemFile::CMemFile() = default;

CMemFile::~CMemFile() { Release(); }

void CMemFile::Release()
{
    if (m_own) Free(m_data);
    m_data = nullptr;
    m_size = m_capacity = 0;
    m_position = 0;
    m_own = false;
}

bool CMemFile::Create()
{
    Release();
    m_own = true;
    return true;
}

bool CMemFile::Attach(unsigned char* data, unsigned long size, bool own)
{
    Release();
    m_data = data;
    m_size = m_capacity = data ? size : 0;
    m_own = own;
    return true;
}

bool CMemFile::Reserve(unsigned long capacity)
{
    if (capacity <= m_capacity) return true;
    if (!m_own && m_data) return false; // a borrowed buffer cannot grow
    unsigned long grown = std::max<unsigned long>(capacity, m_capacity * 2);
    void* p = Realloc(m_data, grown);
    if (!p) return false;
    m_data = static_cast<unsigned char*>(p);
    m_capacity = grown;
    m_own = true;
    return true;
}

bool CMemFile::SetSize(long size)
{
    if (size < 0) return false;
    unsigned long n = static_cast<unsigned long>(size);
    if (n > m_size) {
        if (!Reserve(n)) return false;
        std::memset(m_data + m_size, 0, n - m_size);
    }
    m_size = n;
    return true;
}

void CMemFile::Reset()
{
    m_size = 0;
    m_position = 0;
}

unsigned long CMemFile::Write(const void* data, unsigned long size)
{
    if (size == 0) return 0;
    unsigned long long end = m_position + size;
    if (end > m_capacity && !Reserve(static_cast<unsigned long>(end))) {
        // Borrowed buffer: write what fits.
        if (m_position >= m_capacity) return 0;
        size = static_cast<unsigned long>(m_capacity - m_position);
        end = m_capacity;
    }
    if (m_position > m_size) std::memset(m_data + m_size, 0, m_position - m_size);
    std::memcpy(m_data + m_position, data, size);
    m_position = end;
    if (end > m_size) m_size = static_cast<unsigned long>(end);
    return size;
}

unsigned long CMemFile::Read(void* data, unsigned long size)
{
    if (m_position >= m_size) return 0;
    unsigned long n = std::min<unsigned long long>(size, m_size - m_position);
    std::memcpy(data, m_data + m_position, n);
    m_position += n;
    return n;
}

bool CMemFile::Seek(long long offset, int whence)
{
    long long base;
    switch (whence) {
    case seekBegin: base = 0; break;
    case seekCurrent: base = static_cast<long long>(m_position); break;
    case seekEnd: base = static_cast<long long>(m_size); break;
    default: return false;
    }
    long long target = base + offset;
    if (target < 0) return false;
    m_position = static_cast<unsigned long long>(target);
    return true;
}

// ---------------------------------------------------------------------------
// CRC-32

unsigned int CalcCRC32(unsigned int crc, const void* data, unsigned long size)
{
    const Bytef* p = static_cast<const Bytef*>(data);
    uLong c = crc;
    while (size > 0) {
        uInt n = static_cast<uInt>(std::min<unsigned long>(size, 1u << 30));
        c = crc32(c, p, n);
        p += n;
        size -= n;
    }
    return static_cast<unsigned int>(c);
}

unsigned long CCalcCRC32File::Write(const void* data, unsigned long size)
{
    m_crc = CalcCRC32(m_crc, data, size);
    m_size += size;
    return size;
}

bool CalcCRC32(unsigned int& crc, TSharedPtr<IFile> file)
{
    if (!file) return false;
    unsigned char buffer[65536];
    unsigned int c = 0;
    for (;;) {
        unsigned long n = file->Read(buffer, sizeof buffer);
        if (n == 0) break;
        c = CalcCRC32(c, buffer, n);
    }
    crc = c;
    return true;
}

// ---------------------------------------------------------------------------
// Host file system

namespace {

class CDiskFile : public IFile {
public:
    explicit CDiskFile(int fd) : m_fd(fd) {}
    ~CDiskFile() override { ::close(m_fd); }

    unsigned long Write(const void* data, unsigned long size) override
    {
        const char* p = static_cast<const char*>(data);
        unsigned long done = 0;
        while (done < size) {
            ssize_t n = ::write(m_fd, p + done, size - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            done += static_cast<unsigned long>(n);
        }
        return done;
    }
    unsigned long Read(void* data, unsigned long size) override
    {
        char* p = static_cast<char*>(data);
        unsigned long done = 0;
        while (done < size) {
            ssize_t n = ::read(m_fd, p + done, size - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            done += static_cast<unsigned long>(n);
        }
        return done;
    }
    long long GetPosition() override { return ::lseek(m_fd, 0, SEEK_CUR); }
    bool Seek(long long offset, int whence) override
    {
        int w = whence == seekBegin ? SEEK_SET : whence == seekCurrent ? SEEK_CUR : whence == seekEnd ? SEEK_END : -1;
        if (w < 0) return false;
        return ::lseek(m_fd, offset, w) >= 0;
    }
    long long GetLength() override
    {
        struct stat st;
        return ::fstat(m_fd, &st) == 0 ? static_cast<long long>(st.st_size) : 0;
    }

private:
    int m_fd;
};

class CHostFileSystem : public IFileSystem {
public:
    TSharedPtr<IFile> Open(const CString& path, unsigned int mode) override
    {
        bool read = mode & modeRead, write = mode & modeWrite;
        int flags = read && write ? O_RDWR : write ? O_WRONLY : O_RDONLY;
        if (mode & modeCreate) flags |= O_CREAT | O_TRUNC;
        if (!(mode & modeExisting) && write && !(mode & modeCreate)) flags |= O_CREAT;
        flags |= O_CLOEXEC;
        int fd = ::open(path.c_str(), flags, 0666);
        if (fd < 0) return TSharedPtr<IFile>();
        struct stat st;
        if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
            ::close(fd);
            return TSharedPtr<IFile>();
        }
        return TSharedPtr<IFile>(new CDiskFile(fd));
    }

    CDirectoryListing List(const CString& directory, const CString& pattern) override
    {
        CDirectoryListing out;
        DIR* dir = ::opendir(directory.empty() ? "." : directory.c_str());
        if (!dir) return out;
        CString prefix = directory;
        if (!prefix.empty() && prefix.c_str()[prefix.length() - 1] != '/') prefix += "/";
        while (dirent* e = ::readdir(dir)) {
            if (!std::strcmp(e->d_name, ".") || !std::strcmp(e->d_name, "..")) continue;
            if (::fnmatch(pattern.empty() ? "*" : pattern.c_str(), e->d_name, 0) != 0) continue;
            CDirectoryEntry entry;
            entry.name = e->d_name;
            entry.fullPath = prefix + e->d_name;
            struct stat st;
            if (::stat(entry.fullPath.c_str(), &st) == 0) {
                entry.isDirectory = S_ISDIR(st.st_mode);
                entry.size = static_cast<unsigned long long>(st.st_size);
                entry.modified = st.st_mtime;
            }
            out.add(entry);
        }
        ::closedir(dir);
        std::sort(out.begin(), out.end(),
                  [](const CDirectoryEntry& a, const CDirectoryEntry& b) { return a.name < b.name; });
        return out;
    }

    bool Exists(const CString& path) override
    {
        struct stat st;
        return ::stat(path.c_str(), &st) == 0;
    }

    bool Remove(const CString& path) override { return ::unlink(path.c_str()) == 0; }
};

} // namespace

IFileSystem* fileSystem()
{
    static CHostFileSystem instance;
    return &instance;
}

} // namespace orv
