// The program's file writers against files written the plain way: TIFF
// pages written a strip at a time hold the same bytes as pages written row
// by row through libtiff.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include <unistd.h>

#include <gtest/gtest.h>
#include <tiffio.h>

#include "tools/orvreduce/ImageWriters.h"

using namespace orv::reduce::cli;

namespace {

std::string Bytes(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

// Pages written row by row, with the tags and strip height the writer uses.
void WriteByRows(const std::string& path, const std::vector<float>& values, const std::vector<unsigned char>& status,
                 unsigned w, unsigned h, unsigned pages, bool statusPages)
{
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    ASSERT_NE(tiff, nullptr);
    for (unsigned p = 0; p < pages; ++p) {
        const unsigned bits = statusPages ? 8 : 32;
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, w);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, h);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, statusPages ? SAMPLEFORMAT_UINT : SAMPLEFORMAT_IEEEFP);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, (1u << 16) / (w * bits / 8));
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        TIFFSetField(tiff, TIFFTAG_PAGENUMBER, p, pages);
        TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, statusPages ? "status" : ("frame " + std::to_string(p)).c_str());
        const unsigned char* base = statusPages ? status.data() + size_t(p) * w * h
                                                : reinterpret_cast<const unsigned char*>(values.data() + size_t(p) * w * h);
        for (unsigned y = 0; y < h; ++y)
            ASSERT_GE(TIFFWriteScanline(tiff, const_cast<unsigned char*>(base + size_t(y) * w * bits / 8), y, 0), 0);
        ASSERT_TRUE(TIFFWriteDirectory(tiff));
    }
    TIFFClose(tiff);
}

} // namespace

TEST(ImageWriters, TiffStripsHoldTheBytesOfRowWrites)
{
    char pattern[] = "/tmp/orvreduce-writers-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    // 700 wide: 23 float rows and 93 status rows a strip, the last strip of
    // each page short.
    const unsigned w = 700, h = 130, pages = 3;
    std::vector<float> values(size_t(w) * h * pages);
    std::vector<unsigned char> status(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        values[i] = float(i % 9973) * 0.37f - 40.0f;
        status[i] = (unsigned char)(i * 2654435761u >> 27);
    }
    for (bool statusPages : {false, true}) {
        const std::string want = dir + "/want.tiff", got = dir + "/got.tiff";
        WriteByRows(want, values, status, w, h, pages, statusPages);
        CTiffWriter writer;
        std::string error;
        ASSERT_TRUE(writer.Open(got, error)) << error;
        for (unsigned p = 0; p < pages; ++p) {
            const bool ok = statusPages
                                ? writer.AddPage(status.data() + size_t(p) * w * h, w, h, p, pages, error)
                                : writer.AddPage(values.data() + size_t(p) * w * h, w, h, p, pages,
                                                 "frame " + std::to_string(p), error);
            ASSERT_TRUE(ok) << error;
        }
        ASSERT_TRUE(writer.Close(error));
        const std::string a = Bytes(want), b = Bytes(got);
        EXPECT_GT(a.size(), size_t(w) * h * pages);
        EXPECT_TRUE(a == b) << (statusPages ? "status" : "values") << " pages differ";
    }
    std::system(("rm -rf " + dir).c_str());
}
