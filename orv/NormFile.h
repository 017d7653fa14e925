#pragma once
// CNormFile: the correction table files, one table kind per file: gains
// (".mxg", type 0), offsets (".mxo", type 1) and bad pixels with their
// replacements (".mbp", type 2). The layout is in docs/formats.md.
#include <cstdint>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/String.h"

namespace orv {

// The 64-byte header of a table file, as a table of (offset, size).
namespace normFileHeader {
struct SField {
    uint32_t offset;
    uint32_t size;
};
inline constexpr uint32_t kSize = 64;
inline constexpr uint32_t kMagic = 0x4D524F4E; // "NORM" as it lies in the file
inline constexpr uint32_t kVersion = 0x10000;
inline constexpr SField magic{0, 4};
inline constexpr SField headerSize{4, 4};
inline constexpr SField version{8, 4};
inline constexpr SField tableType{12, 4};
inline constexpr SField width{16, 4};
inline constexpr SField height{20, 4};
inline constexpr SField preset{24, 2};
inline constexpr SField elementType{26, 1};
inline constexpr SField secondElementType{27, 1};
inline constexpr SField dataSize{28, 8};
inline constexpr SField dataCRC{36, 4};
inline constexpr SField reserved{40, 20};
inline constexpr SField headerCRC{60, 4};
inline constexpr SField fields[] = {magic,    headerSize, version,  tableType, width,    height,   preset,
                                    elementType, secondElementType, dataSize, dataCRC, reserved, headerCRC};
} // namespace normFileHeader

class CNormFile {
public:
    enum ETableType : int { typeNone = -1, typeGain = 0, typeOffset = 1, typeBadPixel = 2 };

    // The two tables of a bad pixel file.
    struct SBadPixels {
        const uint8_t* flags = nullptr;         // non-zero marks a bad pixel
        const uint32_t* replacements = nullptr; // flat index of the pixel that stands in
    };

    CNormFile();
    ~CNormFile();

    // Reads a table file. False, with the object left empty, for a missing
    // file, a wrong magic or version, inconsistent sizes or a bad CRC.
    bool Load(IFileSystem* fs, const CString& path);

    // typeNone when nothing is loaded.
    int GetType() const { return m_type; }
    unsigned int xPixels() const { return m_width; }
    unsigned int yPixels() const { return m_height; }
    unsigned short preset() const { return m_preset; }
    // Null unless the loaded file holds that kind of table.
    const float* GetGains() const;
    const int16_t* GetOffsets() const;
    SBadPixels GetBadPixels() const;

    // Write width * height elements of each table; false when the file could
    // not be written or the size is empty or too large.
    static bool SaveGainTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                              unsigned short preset, const float* gains);
    static bool SaveOffsetTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                                unsigned short preset, const int16_t* offsets);
    static bool SaveBadPixelTable(IFileSystem* fs, const CString& path, unsigned int width, unsigned int height,
                                  unsigned short preset, const uint8_t* badPixels, const uint32_t* replacements);

    // Largest table accepted, in pixels (a 16384 x 16384 sensor).
    static constexpr uint64_t kMaxPixels = uint64_t(16384) * 16384;

private:
    void Clear();

    int m_type = typeNone;
    unsigned int m_width = 0;
    unsigned int m_height = 0;
    unsigned short m_preset = 0;
    TArray<float> m_gains;
    TArray<int16_t> m_offsets;
    TArray<uint8_t> m_badPixels;
    TArray<uint32_t> m_replacements;
};

} // namespace orv
