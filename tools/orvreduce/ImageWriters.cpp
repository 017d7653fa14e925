#include "tools/orvreduce/ImageWriters.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <png.h>

namespace orv::reduce::cli {

namespace {

// Status bits that make a pixel's value meaningless (out of range, no data).
constexpr unsigned char kInvalidStatus = 0x18;

void SilenceTiff(const char*, const char*, va_list) {}

// RGB rows back to back, red first; 16-bit samples in the machine's order.
bool WriteRgbPng(const std::string& path, const unsigned char* rgb, unsigned width, unsigned height, int bitDepth,
                 std::string& error)
{
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) {
        error = "cannot create the PNG file";
        return false;
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!png || !info) {
        if (png) png_destroy_write_struct(&png, nullptr);
        std::fclose(file);
        error = "out of memory for the PNG writer";
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        std::fclose(file);
        error = "writing the PNG file failed";
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, bitDepth, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    // PNG stores 16-bit samples big-endian.
    if (bitDepth == 16) png_set_swap(png);
    const size_t rowBytes = size_t(width) * 3 * (bitDepth / 8);
    for (unsigned y = 0; y < height; ++y) png_write_row(png, const_cast<unsigned char*>(rgb + size_t(y) * rowBytes));
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    if (std::fclose(file) != 0) {
        error = "closing the PNG file failed (disk full?)";
        return false;
    }
    return true;
}

} // namespace

CTiffWriter::~CTiffWriter()
{
    if (m_tiff) TIFFClose(m_tiff);
}

bool CTiffWriter::Open(const std::string& path, std::string& error)
{
    // libtiff would print its warnings itself; failures are reported by us.
    TIFFSetWarningHandler(SilenceTiff);
    TIFFSetErrorHandler(SilenceTiff);
    m_tiff = TIFFOpen(path.c_str(), "w");
    if (!m_tiff) error = "cannot create the TIFF file";
    return m_tiff != nullptr;
}

// Rows per strip: about 64 KiB a strip, what readers expect.
static unsigned RowsPerStrip(unsigned width, unsigned bits)
{
    return std::max(1u, (1u << 16) / (width * bits / 8));
}

static bool StartPage(TIFF* tiff, unsigned width, unsigned height, unsigned bits, unsigned format, uint32_t page,
                      uint32_t pages)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, format);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, RowsPerStrip(width, bits));
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    TIFFSetField(tiff, TIFFTAG_PAGENUMBER, page, pages);
    return true;
}

// Whole strips in one call each: the file is the one row writes give, with
// a twentieth of the calls and no copy through libtiff's row buffer.
static bool WriteStrips(TIFF* tiff, const unsigned char* data, unsigned width, unsigned height, unsigned bits,
                        std::string& error)
{
    const size_t rowBytes = size_t(width) * bits / 8;
    const unsigned rows = RowsPerStrip(width, bits);
    for (unsigned y = 0, strip = 0; y < height; y += rows, ++strip) {
        const size_t bytes = size_t(std::min(rows, height - y)) * rowBytes;
        if (TIFFWriteEncodedStrip(tiff, strip, const_cast<unsigned char*>(data + y * rowBytes), tmsize_t(bytes)) < 0) {
            error = "writing a TIFF strip failed (disk full?)";
            return false;
        }
    }
    if (!TIFFWriteDirectory(tiff)) {
        error = "writing a TIFF page failed (disk full?)";
        return false;
    }
    return true;
}

bool CTiffWriter::AddPage(const float* values, unsigned width, unsigned height, uint32_t page, uint32_t pages,
                          const std::string& description, std::string& error)
{
    StartPage(m_tiff, width, height, 32, SAMPLEFORMAT_IEEEFP, page, pages);
    TIFFSetField(m_tiff, TIFFTAG_IMAGEDESCRIPTION, description.c_str());
    return WriteStrips(m_tiff, reinterpret_cast<const unsigned char*>(values), width, height, 32, error);
}

bool CTiffWriter::AddPage(const unsigned char* status, unsigned width, unsigned height, uint32_t page,
                          uint32_t pages, std::string& error)
{
    StartPage(m_tiff, width, height, 8, SAMPLEFORMAT_UINT, page, pages);
    TIFFSetField(m_tiff, TIFFTAG_IMAGEDESCRIPTION, "status");
    return WriteStrips(m_tiff, status, width, height, 8, error);
}

bool CTiffWriter::Close(std::string& error)
{
    TIFF* tiff = m_tiff;
    m_tiff = nullptr;
    if (!tiff) return true;
    TIFFFlush(tiff);
    TIFFClose(tiff);
    (void)error;
    return true;
}

CNpyWriter::~CNpyWriter()
{
    if (m_file) std::fclose(m_file);
}

bool CNpyWriter::Open(const std::string& path, uint64_t frames, unsigned width, unsigned height, std::string& error)
{
    m_file = std::fopen(path.c_str(), "wb");
    if (!m_file) {
        error = "cannot create the .npy file";
        return false;
    }
    std::string dict = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(frames) + ", " +
                       std::to_string(height) + ", " + std::to_string(width) + "), }";
    // Version 1.0: magic, version, 16-bit header length; header padded with
    // spaces and a newline so the data start on a multiple of 64.
    size_t total = 10 + dict.size() + 1;
    size_t padded = (total + 63) / 64 * 64;
    dict.append(padded - total, ' ');
    dict += '\n';
    unsigned char head[10] = {0x93, 'N', 'U', 'M', 'P', 'Y', 1, 0, 0, 0};
    head[8] = static_cast<unsigned char>(dict.size() & 0xff);
    head[9] = static_cast<unsigned char>(dict.size() >> 8);
    if (std::fwrite(head, 1, 10, m_file) != 10 || std::fwrite(dict.data(), 1, dict.size(), m_file) != dict.size()) {
        error = "writing the .npy header failed";
        return false;
    }
    return true;
}

bool CNpyWriter::AddFrames(const float* values, size_t n, std::string& error)
{
    if (std::fwrite(values, sizeof(float), n, m_file) != n) {
        error = "writing frames failed (disk full?)";
        return false;
    }
    return true;
}

bool CNpyWriter::Close(std::string& error)
{
    FILE* f = m_file;
    m_file = nullptr;
    if (f && std::fclose(f) != 0) {
        error = "closing the .npy file failed (disk full?)";
        return false;
    }
    return true;
}

bool WriteCsvFrame(FILE* file, uint64_t index, const float* values, const unsigned char* status, unsigned width,
                   unsigned height, std::string& error)
{
    std::fprintf(file, "# frame %llu\n", static_cast<unsigned long long>(index));
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            size_t i = size_t(y) * width + x;
            if (x) std::fputc(',', file);
            // An invalid pixel is an empty field, not a number that looks real.
            if (!(status[i] & kInvalidStatus) && std::isfinite(values[i])) std::fprintf(file, "%.6g", values[i]);
        }
        std::fputc('\n', file);
    }
    if (std::ferror(file)) {
        error = "writing the CSV file failed (disk full?)";
        return false;
    }
    return true;
}

namespace {

struct SRGB {
    unsigned char r, g, b;
};

// An "iron" style scale: black, blue, magenta, red, orange, yellow, white.
SRGB Palette(double t)
{
    static const double stops[][3] = {{0, 0, 0},     {32, 0, 140},   {140, 0, 160},  {220, 40, 60},
                                      {250, 130, 0}, {255, 220, 40}, {255, 255, 255}};
    const int n = 7;
    t = std::clamp(t, 0.0, 1.0) * (n - 1);
    int i = std::min(static_cast<int>(t), n - 2);
    double f = t - i;
    auto mix = [&](int c) { return static_cast<unsigned char>(stops[i][c] + (stops[i + 1][c] - stops[i][c]) * f + 0.5); };
    return {mix(0), mix(1), mix(2)};
}

// A 3 x 5 font for the colour bar's numbers.
const char* Glyph(char c)
{
    switch (c) {
    case '0': return "111101101101111";
    case '1': return "010110010010111";
    case '2': return "111001111100111";
    case '3': return "111001111001111";
    case '4': return "101101111001001";
    case '5': return "111100111001111";
    case '6': return "111100111101111";
    case '7': return "111001001001001";
    case '8': return "111101111101111";
    case '9': return "111101111001111";
    case '-': return "000000111000000";
    case '.': return "000000000000010";
    default: return "000000000000000";
    }
}

class CCanvas {
public:
    CCanvas(unsigned w, unsigned h) : width(w), height(h), rgb(size_t(w) * h * 3, 40) {}
    void Set(unsigned x, unsigned y, SRGB c)
    {
        if (x >= width || y >= height) return;
        unsigned char* p = &rgb[(size_t(y) * width + x) * 3];
        p[0] = c.r;
        p[1] = c.g;
        p[2] = c.b;
    }
    void Text(unsigned x, unsigned y, const std::string& s, unsigned scale)
    {
        for (char c : s) {
            const char* g = Glyph(c);
            for (unsigned gy = 0; gy < 5; ++gy)
                for (unsigned gx = 0; gx < 3; ++gx)
                    if (g[gy * 3 + gx] == '1')
                        for (unsigned sy = 0; sy < scale; ++sy)
                            for (unsigned sx = 0; sx < scale; ++sx)
                                Set(x + gx * scale + sx, y + gy * scale + sy, {255, 255, 255});
            x += 4 * scale;
        }
    }
    unsigned width, height;
    std::vector<unsigned char> rgb;
};

std::string Number(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, std::fabs(v) >= 1000 ? "%.0f" : "%.1f", v);
    return text;
}

} // namespace

bool WritePreviewPng(const std::string& path, const float* values, const unsigned char* status, unsigned width,
                     unsigned height, const std::string& unitLabel, std::string& error, const uint32_t* overlay)
{
    (void)unitLabel;
    const size_t n = size_t(width) * height;
    double lo = INFINITY, hi = -INFINITY;
    for (size_t i = 0; i < n; ++i) {
        if ((status[i] & kInvalidStatus) || !std::isfinite(values[i])) continue;
        lo = std::min(lo, double(values[i]));
        hi = std::max(hi, double(values[i]));
    }
    if (!(lo <= hi)) lo = hi = 0;
    if (hi - lo < 1e-6) hi = lo + 1;

    const unsigned scale = height >= 200 ? 2 : 1;
    const unsigned barWidth = 16 * scale, margin = 8 * scale, textWidth = 4 * scale * 7;
    CCanvas canvas(width + margin + barWidth + margin + textWidth + margin, std::max(height, 60u));
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            size_t i = size_t(y) * width + x;
            bool bad = (status[i] & kInvalidStatus) || !std::isfinite(values[i]);
            canvas.Set(x, y, bad ? SRGB{0, 160, 0} : Palette((values[i] - lo) / (hi - lo)));
            if (overlay && (overlay[i] >> 24))
                canvas.Set(x, y, SRGB{uint8_t(overlay[i]), uint8_t(overlay[i] >> 8), uint8_t(overlay[i] >> 16)});
        }
    const unsigned bx = width + margin, top = 4 * scale, bottom = height - 4 * scale;
    for (unsigned y = top; y < bottom; ++y)
        for (unsigned x = bx; x < bx + barWidth; ++x)
            canvas.Set(x, y, Palette(double(bottom - 1 - y) / std::max(1u, bottom - top - 1)));
    canvas.Text(bx + barWidth + margin / 2, top, Number(hi), scale);
    canvas.Text(bx + barWidth + margin / 2, bottom - 5 * scale, Number(lo), scale);
    canvas.Text(bx + barWidth + margin / 2, (top + bottom) / 2 - 2 * scale, Number((lo + hi) / 2), scale);

    return WriteRgbPng(path, canvas.rgb.data(), canvas.width, canvas.height, 8, error);
}

bool WriteColourPng(const std::string& path, const void* rgb, bool sixteenBits, unsigned width, unsigned height,
                    std::string& error)
{
    return WriteRgbPng(path, static_cast<const unsigned char*>(rgb), width, height, sixteenBits ? 16 : 8, error);
}

} // namespace orv::reduce::cli
