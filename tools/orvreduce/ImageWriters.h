#pragma once
// Output files of convert: float TIFF, NumPy array, CSV text and a false
// colour PNG preview. Each writer returns false with a reason in error.
#include <cstdint>
#include <cstdio>
#include <string>

#include <tiffio.h>

namespace orv::reduce::cli {

// Multi-page TIFF, one page per frame: 32-bit float values, or 8-bit status.
class CTiffWriter {
public:
    ~CTiffWriter();
    bool Open(const std::string& path, std::string& error);
    bool AddPage(const float* values, unsigned width, unsigned height, uint32_t page, uint32_t pages,
                 const std::string& description, std::string& error);
    bool AddPage(const unsigned char* status, unsigned width, unsigned height, uint32_t page, uint32_t pages,
                 std::string& error);
    bool Close(std::string& error);

private:
    TIFF* m_tiff = nullptr;
};

// A .npy file of shape (frames, height, width), little-endian float32.
class CNpyWriter {
public:
    ~CNpyWriter();
    bool Open(const std::string& path, uint64_t frames, unsigned width, unsigned height, std::string& error);
    // n values: one frame or a block of whole frames, in one write.
    bool AddFrames(const float* values, size_t n, std::string& error);
    bool Close(std::string& error);

private:
    FILE* m_file = nullptr;
};

// One block of rows per frame, each preceded by a "# frame N" line.
bool WriteCsvFrame(FILE* file, uint64_t index, const float* values, const unsigned char* status, unsigned width,
                   unsigned height, std::string& error);

// A false colour picture with a colour bar and its range, for a person.
// overlay (optional, one per pixel): a non-zero top byte draws the pixel in
// the colour of the low three bytes, red in the lowest.
bool WritePreviewPng(const std::string& path, const float* values, const unsigned char* status, unsigned width,
                     unsigned height, const std::string& unitLabel, std::string& error,
                     const uint32_t* overlay = nullptr);

// A colour frame as it is: interleaved RGB, red first, 8 or 16 bits a sample.
bool WriteColourPng(const std::string& path, const void* rgb, bool sixteenBits, unsigned width, unsigned height,
                    std::string& error);

} // namespace orv::reduce::cli
