#include "orv/Bitmap.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orv/Memory.h"

namespace orv {

void InitBitmap(SBitmap& bitmap)
{
    bitmap = SBitmap{};
}

bool CreateBitmap(unsigned int width, unsigned int height, unsigned int bitsPerPixel, SBitmap& bitmap)
{
    InitBitmap(bitmap);
    if (width == 0 || height == 0 || bitsPerPixel == 0 || bitsPerPixel > 64 || bitsPerPixel % 8 != 0) return false;
    const uint64_t bytesPerRow = (uint64_t(width) * bitsPerPixel + 31) / 32 * 4;
    const uint64_t total = bytesPerRow * height;
    if (total > 0x7FFFFFFFu) return false;
    void* pixels = Alloc(size_t(total));
    if (!pixels) return false;
    std::memset(pixels, 0, size_t(total));
    bitmap.width = width;
    bitmap.height = height;
    bitmap.bytesPerRow = uint32_t(bytesPerRow);
    bitmap.bitsPerPixel = bitsPerPixel;
    bitmap.pixels = static_cast<unsigned char*>(pixels);
    return true;
}

void DestroyBitmap(SBitmap& bitmap)
{
    Free(bitmap.pixels);
    InitBitmap(bitmap);
}

namespace {

bool IsUsable24(const SBitmap& b)
{
    return b.pixels && b.bitsPerPixel == 24 && b.width > 0 && b.height > 0 && uint64_t(b.bytesPerRow) >= uint64_t(b.width) * 3;
}

unsigned char ToByte(double v)
{
    v += 0.5;
    return v <= 0.0 ? 0 : v >= 255.0 ? 255 : static_cast<unsigned char>(v);
}

// Sample position and weight of the upper neighbour along one axis.
struct SLinearTap {
    uint32_t lower;
    uint32_t upper;
    double weight;
};

std::vector<SLinearTap> LinearTaps(uint32_t sourceSize, uint32_t targetSize)
{
    std::vector<SLinearTap> taps(targetSize);
    const double ratio = double(sourceSize) / double(targetSize);
    for (uint32_t i = 0; i < targetSize; ++i) {
        double s = (i + 0.5) * ratio - 0.5;
        s = s < 0.0 ? 0.0 : s > sourceSize - 1.0 ? sourceSize - 1.0 : s;
        const uint32_t lower = static_cast<uint32_t>(s);
        taps[i].lower = lower;
        taps[i].upper = lower + 1 < sourceSize ? lower + 1 : lower;
        taps[i].weight = s - lower;
    }
    return taps;
}

void ResizeBilinear(const SBitmap& source, SBitmap& target)
{
    const std::vector<SLinearTap> xs = LinearTaps(source.width, target.width);
    const std::vector<SLinearTap> ys = LinearTaps(source.height, target.height);
    for (uint32_t ty = 0; ty < target.height; ++ty) {
        const unsigned char* r0 = source.pixels + size_t(ys[ty].lower) * source.bytesPerRow;
        const unsigned char* r1 = source.pixels + size_t(ys[ty].upper) * source.bytesPerRow;
        const double fy = ys[ty].weight;
        unsigned char* out = target.pixels + size_t(ty) * target.bytesPerRow;
        for (uint32_t tx = 0; tx < target.width; ++tx) {
            const size_t a = size_t(xs[tx].lower) * 3;
            const size_t b = size_t(xs[tx].upper) * 3;
            const double fx = xs[tx].weight;
            for (int c = 0; c < 3; ++c) {
                const double top = r0[a + c] + (r0[b + c] - r0[a + c]) * fx;
                const double bottom = r1[a + c] + (r1[b + c] - r1[a + c]) * fx;
                out[size_t(tx) * 3 + c] = ToByte(top + (bottom - top) * fy);
            }
        }
    }
}

// Source pixels covered by one target pixel along one axis, with the covered
// fraction of each, normalised to sum to one.
struct SAreaSpan {
    uint32_t first;
    uint32_t count;
    size_t weights; // index of the first weight
};

void AreaSpans(uint32_t sourceSize, uint32_t targetSize, std::vector<SAreaSpan>& spans, std::vector<double>& weights)
{
    // In units of 1 / (sourceSize * targetSize) the target pixel i spans
    // [i * S, (i + 1) * S) and source pixel j spans [j * T, (j + 1) * T), so
    // the overlaps are exact integers.
    const uint64_t S = sourceSize, T = targetSize;
    spans.resize(targetSize);
    weights.clear();
    for (uint64_t i = 0; i < T; ++i) {
        const uint64_t begin = i * S, end = (i + 1) * S;
        const uint64_t first = begin / T;
        uint64_t last = (end + T - 1) / T; // one past
        if (last > S) last = S;
        spans[i] = {uint32_t(first), uint32_t(last - first), weights.size()};
        for (uint64_t j = first; j < last; ++j) {
            const uint64_t lo = j * T > begin ? j * T : begin;
            const uint64_t hi = (j + 1) * T < end ? (j + 1) * T : end;
            weights.push_back(double(hi - lo) / double(S));
        }
    }
}

void ResizeArea(const SBitmap& source, SBitmap& target)
{
    std::vector<SAreaSpan> xs, ys;
    std::vector<double> wx, wy;
    AreaSpans(source.width, target.width, xs, wx);
    AreaSpans(source.height, target.height, ys, wy);
    for (uint32_t ty = 0; ty < target.height; ++ty) {
        const SAreaSpan& sy = ys[ty];
        unsigned char* out = target.pixels + size_t(ty) * target.bytesPerRow;
        for (uint32_t tx = 0; tx < target.width; ++tx) {
            const SAreaSpan& sx = xs[tx];
            double sum[3] = {0.0, 0.0, 0.0};
            for (uint32_t j = 0; j < sy.count; ++j) {
                const unsigned char* row = source.pixels + size_t(sy.first + j) * source.bytesPerRow + size_t(sx.first) * 3;
                double rowSum[3] = {0.0, 0.0, 0.0};
                for (uint32_t i = 0; i < sx.count; ++i) {
                    const double w = wx[sx.weights + i];
                    rowSum[0] += w * row[i * 3];
                    rowSum[1] += w * row[i * 3 + 1];
                    rowSum[2] += w * row[i * 3 + 2];
                }
                const double w = wy[sy.weights + j];
                for (int c = 0; c < 3; ++c) sum[c] += w * rowSum[c];
            }
            for (int c = 0; c < 3; ++c) out[size_t(tx) * 3 + c] = ToByte(sum[c]);
        }
    }
}

} // namespace

bool ResizeImage(const SBitmap& source, SBitmap& target, int mode)
{
    if (!IsUsable24(source) || !IsUsable24(target)) return false;
    switch (mode) {
    case resizeBilinear:
        ResizeBilinear(source, target);
        return true;
    case resizeArea:
        ResizeArea(source, target);
        return true;
    default:
        return false;
    }
}

bool SaveBitmapFile(const SBitmap& bitmap, IFileSystem* fileSystem, const CString& path)
{
    if (!fileSystem || !IsUsable24(bitmap)) return false;
    if (bitmap.width > 0x7FFFFFFFu || bitmap.height > 0x7FFFFFFFu) return false;
    const uint64_t rowBytes = uint64_t(bitmap.width) * 3;
    const uint64_t paddedRow = (rowBytes + 3) & ~uint64_t(3);
    const uint64_t imageSize = paddedRow * bitmap.height;
    const uint64_t headerSize = 14 + 40;
    if (headerSize + imageSize > 0xFFFFFFFFu) return false;

    TSharedPtr<IFile> file = fileSystem->Open(path, IFileSystem::openWrite);
    if (!file) return false;

    bool ok = true;
    // BITMAPFILEHEADER
    ok &= file->WriteBytes("BM", 2);
    ok &= file->PutUInt32(uint32_t(headerSize + imageSize));
    ok &= file->PutUInt16(0);
    ok &= file->PutUInt16(0);
    ok &= file->PutUInt32(uint32_t(headerSize));
    // BITMAPINFOHEADER
    ok &= file->PutUInt32(40);
    ok &= file->PutInt32(int32_t(bitmap.width));
    ok &= file->PutInt32(int32_t(bitmap.height)); // positive: bottom-up rows
    ok &= file->PutUInt16(1);                      // planes
    ok &= file->PutUInt16(24);                     // bits per pixel
    ok &= file->PutUInt32(0);                      // BI_RGB
    ok &= file->PutUInt32(uint32_t(imageSize));
    ok &= file->PutInt32(2835); // 72 dots per inch, in pixels a metre
    ok &= file->PutInt32(2835);
    ok &= file->PutUInt32(0); // colours used
    ok &= file->PutUInt32(0); // important colours
    if (!ok) return false;

    std::vector<unsigned char> row(size_t(paddedRow), 0);
    for (uint32_t y = bitmap.height; y-- > 0;) {
        std::memcpy(row.data(), bitmap.pixels + size_t(y) * bitmap.bytesPerRow, size_t(rowBytes));
        if (file->Write(row.data(), row.size()) != row.size()) return false;
    }
    return true;
}

} // namespace orv
