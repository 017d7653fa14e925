#include "orv/NormFile.h"

#include <algorithm>
#include <cstring>

#include "orv/Types.h"

namespace orv {

namespace hdr = normFileHeader;

namespace {

static_assert(hdr::headerCRC.offset + hdr::headerCRC.size == hdr::kSize, "the header CRC closes the header");

constexpr uint64_t kChunk = 1u << 30;

template <class T>
void Put(unsigned char* base, hdr::SField f, T value)
{
    static_assert(sizeof(T) <= 8);
    if (sizeof(T) == f.size) std::memcpy(base + f.offset, &value, sizeof(T));
}

template <class T>
T Get(const unsigned char* base, hdr::SField f)
{
    T value{};
    if (sizeof(T) == f.size) std::memcpy(&value, base + f.offset, sizeof(T));
    return value;
}

// Element types of the tables of each kind; dtNoData where a kind has no second table.
struct SKind {
    EDataType first;
    uint32_t firstSize;
    EDataType second;
    uint32_t secondSize;
};

constexpr SKind kKinds[3] = {
    {dtFlt32, 4, dtNoData, 0},
    {dtInt16, 2, dtNoData, 0},
    {dtUInt8, 1, dtUInt32, 4},
};

bool WriteAll(IFile& file, const void* data, uint64_t bytes)
{
    const auto* p = static_cast<const unsigned char*>(data);
    while (bytes > 0) {
        uint64_t part = std::min(bytes, kChunk);
        if (!file.WriteBytes(p, static_cast<unsigned int>(part))) return false;
        p += part;
        bytes -= part;
    }
    return true;
}

bool ReadAll(IFile& file, void* data, uint64_t bytes, unsigned int& crc)
{
    auto* p = static_cast<unsigned char*>(data);
    while (bytes > 0) {
        uint64_t part = std::min(bytes, kChunk);
        if (!file.ReadBytes(p, static_cast<unsigned int>(part))) return false;
        crc = CalcCRC32(crc, p, static_cast<unsigned long>(part));
        p += part;
        bytes -= part;
    }
    return true;
}

// Writes one file: the header, then the first table, then the second if any.
bool SaveTable(IFileSystem* fs, const CString& path, int type, unsigned int width, unsigned int height,
               unsigned short preset, const void* first, const void* second)
{
    if (!fs || !first) return false;
    const SKind& kind = kKinds[type];
    if (kind.secondSize && !second) return false;
    const uint64_t n = static_cast<uint64_t>(width) * height;
    if (n == 0 || n > CNormFile::kMaxPixels) return false;

    // The data CRC goes into the header, so compute it before writing.
    const uint64_t firstBytes = n * kind.firstSize, secondBytes = n * kind.secondSize;
    unsigned int dataCRC = CalcCRC32(0, first, static_cast<unsigned long>(firstBytes));
    if (secondBytes) dataCRC = CalcCRC32(dataCRC, second, static_cast<unsigned long>(secondBytes));

    unsigned char h[hdr::kSize] = {};
    Put<uint32_t>(h, hdr::magic, hdr::kMagic);
    Put<uint32_t>(h, hdr::headerSize, hdr::kSize);
    Put<uint32_t>(h, hdr::version, hdr::kVersion);
    Put<uint32_t>(h, hdr::tableType, static_cast<uint32_t>(type));
    Put<uint32_t>(h, hdr::width, width);
    Put<uint32_t>(h, hdr::height, height);
    Put<uint16_t>(h, hdr::preset, preset);
    Put<uint8_t>(h, hdr::elementType, static_cast<uint8_t>(kind.first));
    Put<uint8_t>(h, hdr::secondElementType, static_cast<uint8_t>(kind.second));
    Put<uint64_t>(h, hdr::dataSize, firstBytes + secondBytes);
    Put<uint32_t>(h, hdr::dataCRC, dataCRC);
    Put<uint32_t>(h, hdr::headerCRC, CalcCRC32(0, h, hdr::headerCRC.offset));

    TSharedPtr<IFile> file = fs->Open(path, IFileSystem::openWrite);
    if (!file) return false;
    return file->WriteBytes(h, hdr::kSize) && WriteAll(*file, first, firstBytes) &&
           (secondBytes == 0 || WriteAll(*file, second, secondBytes));
}

} // namespace

CNormFile::CNormFile() = default;
CNormFile::~CNormFile() = default;

void CNormFile::Clear()
{
    m_type = typeNone;
    m_width = m_height = 0;
    m_preset = 0;
    m_gains.Destroy();
    m_offsets.Destroy();
    m_badPixels.Destroy();
    m_replacements.Destroy();
}

const float* CNormFile::GetGains() const { return m_type == typeGain ? m_gains.data() : nullptr; }

const int16_t* CNormFile::GetOffsets() const { return m_type == typeOffset ? m_offsets.data() : nullptr; }

CNormFile::SBadPixels CNormFile::GetBadPixels() const
{
    SBadPixels bad;
    if (m_type == typeBadPixel) {
        bad.flags = m_badPixels.data();
        bad.replacements = m_replacements.data();
    }
    return bad;
}

bool CNormFile::Load(IFileSystem* fs, const CString& path)
{
    Clear();
    if (!fs) return false;
    TSharedPtr<IFile> file = fs->Open(path, IFileSystem::openRead);
    if (!file) return false;

    unsigned char h[hdr::kSize];
    if (!file->ReadBytes(h, hdr::kSize)) return false;
    if (Get<uint32_t>(h, hdr::magic) != hdr::kMagic || Get<uint32_t>(h, hdr::headerSize) != hdr::kSize ||
        (Get<uint32_t>(h, hdr::version) >> 16) != (hdr::kVersion >> 16) ||
        Get<uint32_t>(h, hdr::headerCRC) != CalcCRC32(0, h, hdr::headerCRC.offset))
        return false;
    const uint32_t type = Get<uint32_t>(h, hdr::tableType);
    if (type > typeBadPixel) return false;
    const SKind& kind = kKinds[type];
    if (Get<uint8_t>(h, hdr::elementType) != kind.first || Get<uint8_t>(h, hdr::secondElementType) != kind.second)
        return false;
    const uint32_t width = Get<uint32_t>(h, hdr::width), height = Get<uint32_t>(h, hdr::height);
    const uint64_t n = static_cast<uint64_t>(width) * height;
    if (n == 0 || n > kMaxPixels) return false;
    // The size field, the sizes and the file must all tell the same length,
    // so a corrupt field never makes us allocate what the file does not hold.
    const uint64_t firstBytes = n * kind.firstSize, secondBytes = n * kind.secondSize;
    if (Get<uint64_t>(h, hdr::dataSize) != firstBytes + secondBytes ||
        file->GetRemaining() != firstBytes + secondBytes)
        return false;

    unsigned int crc = 0;
    bool ok = false;
    switch (type) {
    case typeGain:
        m_gains.resize(n);
        ok = ReadAll(*file, m_gains.data(), firstBytes, crc);
        break;
    case typeOffset:
        m_offsets.resize(n);
        ok = ReadAll(*file, m_offsets.data(), firstBytes, crc);
        break;
    default:
        m_badPixels.resize(n);
        m_replacements.resize(n);
        ok = ReadAll(*file, m_badPixels.data(), firstBytes, crc) &&
             ReadAll(*file, m_replacements.data(), secondBytes, crc);
        break;
    }
    if (!ok || crc != Get<uint32_t>(h, hdr::dataCRC)) {
        Clear();
        return false;
    }
    // A replacement names a pixel of the table; the correction reads frames
    // there without a check, so one beyond the table is refused here.
    for (uint32_t replacement : m_replacements)
        if (replacement >= n) {
            Clear();
            return false;
        }
    m_type = static_cast<int>(type);
    m_width = width;
    m_height = height;
    m_preset = Get<uint16_t>(h, hdr::preset);
    return true;
}

bool CNormFile::SaveGainTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                              unsigned short preset, const float* gains)
{
    return SaveTable(fs, path, typeGain, width, height, preset, gains, nullptr);
}

bool CNormFile::SaveOffsetTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                                unsigned short preset, const int16_t* offsets)
{
    return SaveTable(fs, path, typeOffset, width, height, preset, offsets, nullptr);
}

bool CNormFile::SaveBadPixelTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                                  unsigned short preset, const uint8_t* badPixels, const uint32_t* replacements)
{
    return SaveTable(fs, path, typeBadPixel, width, height, preset, badPixels, replacements);
}

} // namespace orv
