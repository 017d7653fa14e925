// Region gathers over every pair of element types, against a plain
// reference walk written here.
#include <gtest/gtest.h>

#include <vector>

#include "KernelTestUtil.h"
#include "reduce/convert/Converter.h"
#include "reduce/kernels/ImageData.h"

using namespace orv;
using namespace orv::reduce;

namespace {

constexpr unsigned short W = 7, H = 5;

struct SPixelRef {
    unsigned flat;    // the pixel
    unsigned rowStart; // first element of its row
};

std::vector<SPixelRef> RectPixels(SArea a)
{
    std::vector<SPixelRef> r;
    for (int y = a.top; y <= a.bottom; ++y)
        for (int x = a.left; x <= a.right; ++x) r.push_back({unsigned(y * W + x), unsigned(y * W)});
    return r;
}

std::vector<SPixelRef> LinePixels(const TArray<SScanLine>& lines)
{
    std::vector<SPixelRef> r;
    for (const SScanLine& l : lines)
        for (int x = l.first; x <= l.last; ++x) r.push_back({unsigned(l.row * W + x), unsigned(l.row * W)});
    return r;
}

std::vector<SPixelRef> MaskPixels(SArea a, const std::vector<unsigned char>& mask, unsigned stride)
{
    std::vector<SPixelRef> r;
    for (int y = a.top; y <= a.bottom; ++y)
        for (int x = a.left; x <= a.right; ++x)
            if (mask[y * stride + x]) r.push_back({unsigned(y * W + x), unsigned(y * W)});
    return r;
}

enum class EForm { Index, Rect, Lines, Mask };

struct SFixture {
    SArea rect{1, 2, 3, 5};
    TArray<SScanLine> lines{{0, 1, 3}, {4, 6, 6}, {3, 4, 2}, {2, 0, 6}};
    std::vector<unsigned char> mask;
    unsigned stride = 9;
    std::vector<unsigned> indices{34, 0, 5, 5, 17, 33, 8};
    SFixture()
    {
        std::mt19937 rng(7);
        mask.resize(stride * H);
        for (auto& m : mask) m = (rng() % 3 == 0) ? 0 : (unsigned char)(rng() % 255 + 1);
    }
    std::vector<SPixelRef> Pixels(EForm f) const
    {
        switch (f) {
        case EForm::Index: {
            std::vector<SPixelRef> r;
            for (unsigned q : indices) r.push_back({q, q});
            return r;
        }
        case EForm::Rect: return RectPixels(rect);
        case EForm::Lines: return LinePixels(lines);
        default: return MaskPixels(rect, mask, stride);
        }
    }
    bool Call(EForm f, STypedData s, const unsigned char* ss, STypedData d, unsigned char* ds) const
    {
        switch (f) {
        case EForm::Index: return GetImageData(s, ss, d, ds, indices.data(), unsigned(indices.size()));
        case EForm::Rect: return GetImageData(s, ss, d, ds, W, H, rect);
        case EForm::Lines: return GetImageData(s, ss, d, ds, W, H, lines);
        default: return GetImageData(s, ss, d, ds, W, H, rect, mask.data(), stride);
        }
    }
};

} // namespace

TEST(ImageData, EveryTypePairEveryFormAgainstReference)
{
    SFixture fx;
    std::mt19937 rng(1);
    std::vector<unsigned char> srcStatus(W * H);
    for (auto& s : srcStatus) s = (unsigned char)(rng() | 1);
    for (EDataType st : kt::kTypes) {
        kt::SBuf src(st, W * H);
        for (size_t i = 0; i < W * H; ++i) src.Set(i, kt::Sample(st, rng));
        for (EDataType dt : kt::kTypes) {
            for (EForm form : {EForm::Index, EForm::Rect, EForm::Lines, EForm::Mask}) {
                const auto pixels = fx.Pixels(form);
                const size_t n = pixels.size();
                // Status modes: both arrays, destination only, source only.
                for (int mode = 0; mode < 3; ++mode) {
                    kt::SBuf dst(dt, n + 2);
                    std::vector<unsigned char> dstStatus(n + 2, 0xEE);
                    // Mode 1: a destination status alone; mode 2: a source status alone,
                    // which is ignored.
                    const unsigned char* ss = mode == 0 ? srcStatus.data() : (mode == 1 ? nullptr : srcStatus.data());
                    unsigned char* ds = mode == 2 ? nullptr : dstStatus.data();
                    ASSERT_TRUE(fx.Call(form, src.typed(), ss, dst.typed(), ds));
                    for (size_t i = 0; i < n; ++i) {
                        // Only the status-carrying rectangle and scan-line gathers read column 0.
                        const bool rowStart = mode == 0 && (form == EForm::Rect || form == EForm::Lines);
                        const unsigned at = rowStart ? pixels[i].rowStart : pixels[i].flat;
                        const long double want = kt::RefConvert(src.Get(at), st, dt);
                        ASSERT_TRUE(kt::SameValue(dst.Get(i), want))
                            << "types " << st << "->" << dt << " form " << int(form) << " mode " << mode << " i " << i;
                        if (mode == 0) {
                            ASSERT_EQ(dstStatus[i], srcStatus[at]);
                        } else if (mode == 1) {
                            ASSERT_EQ(dstStatus[i], 0);
                        }
                    }
                    // Nothing beyond the region's size.
                    for (size_t b = n * DataTypeSize(dt); b < dst.bytes.size(); ++b) ASSERT_EQ(dst.bytes[b], 0xA5);
                    if (mode != 2) {
                        EXPECT_EQ(dstStatus[n], 0xEE);
                    }
                }
            }
        }
    }
}

TEST(ImageData, DeliberateColumnZeroGatherAndDocumentedValues)
{
    // 7 x 5 unsigned 16-bit frame holding its flat index.
    std::vector<uint16_t> frame(W * H);
    std::vector<unsigned char> status(W * H);
    for (unsigned i = 0; i < W * H; ++i) {
        frame[i] = uint16_t(i);
        status[i] = uint8_t(100 + i);
    }
    float out[3];
    unsigned char outStatus[3];
    const SArea area{1, 3, 1, 5};
    ASSERT_TRUE(GetImageData(STypedData(frame.data(), dtUInt16), status.data(), STypedData(out, dtFlt32), outStatus, W, H, area));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(out[i], 7.0f); // (0, 1), three times
        EXPECT_EQ(outStatus[i], 107);
    }
    ASSERT_TRUE(GetImageData(STypedData(frame.data(), dtUInt16), nullptr, STypedData(out, dtFlt32), outStatus, W, H, area));
    EXPECT_EQ(out[0], 10.0f);
    EXPECT_EQ(out[1], 11.0f);
    EXPECT_EQ(out[2], 12.0f);
    EXPECT_EQ(outStatus[0] | outStatus[1] | outStatus[2], 0);

    // The conversion rule's own examples.
    unsigned int one = 0;
    double big[1] = {300.7};
    uint8_t small = 0;
    ASSERT_TRUE(GetImageData(STypedData(big, dtFlt64), nullptr, STypedData(&small, dtUInt8), nullptr, &one, 1));
    EXPECT_EQ(small, 44);
    float negative = -1.5f;
    uint16_t wrapped = 0;
    ASSERT_TRUE(GetImageData(STypedData(&negative, dtFlt32), nullptr, STypedData(&wrapped, dtUInt16), nullptr, &one, 1));
    EXPECT_EQ(wrapped, 65535);
    double huge = 18446744073709549568.0;
    uint64_t kept = 0;
    ASSERT_TRUE(GetImageData(STypedData(&huge, dtFlt64), nullptr, STypedData(&kept, dtUInt64), nullptr, &one, 1));
    EXPECT_EQ(kept, 18446744073709549568ull);
    int8_t minusOne = -1;
    uint32_t pattern = 0;
    ASSERT_TRUE(GetImageData(STypedData(&minusOne, dtInt8), nullptr, STypedData(&pattern, dtUInt32), nullptr, &one, 1));
    EXPECT_EQ(pattern, 0xFFFFFFFFu);
}

TEST(ImageData, EmptyRegionsWriteNothing)
{
    std::vector<float> frame(W * H, 1.0f);
    std::vector<unsigned char> status(W * H, 3);
    float out[4] = {9, 9, 9, 9};
    unsigned char outStatus[4] = {9, 9, 9, 9};
    const STypedData s(frame.data(), dtFlt32), d(out, dtFlt32);
    const SArea inverted{3, 0, 2, 6}, leftRight{1, 5, 1, 4};
    EXPECT_TRUE(GetImageData(s, status.data(), d, outStatus, W, H, inverted));
    EXPECT_TRUE(GetImageData(s, nullptr, d, outStatus, W, H, inverted));
    EXPECT_TRUE(GetImageData(s, nullptr, d, outStatus, W, H, leftRight));
    EXPECT_TRUE(GetImageData(s, status.data(), d, outStatus, W, H, leftRight));
    TArray<SScanLine> none;
    EXPECT_TRUE(GetImageData(s, nullptr, d, outStatus, W, H, none));
    std::vector<unsigned char> zeros(W * H, 0);
    EXPECT_TRUE(GetImageData(s, status.data(), d, outStatus, W, H, SArea{0, 0, 4, 6}, zeros.data(), W));
    EXPECT_TRUE(GetImageData(s, nullptr, d, outStatus, W, H, SArea{0, 0, 4, 6}, zeros.data(), W));
    EXPECT_TRUE(GetImageData(s, nullptr, d, outStatus, nullptr, 0));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(out[i], 9.0f);
        EXPECT_EQ(outStatus[i], 9);
    }
}

TEST(ImageData, BadTypesTouchNothing)
{
    SFixture fx;
    std::vector<double> frame(W * H, 2.0);
    std::vector<unsigned char> status(W * H, 1);
    for (EForm form : {EForm::Index, EForm::Rect, EForm::Lines, EForm::Mask}) {
        for (int side = 0; side < 2; ++side) {
            for (EDataType bad : {dtRGB24, dtNoData, EDataType(-1)}) {
                std::vector<double> out(W * H, 5.0);
                std::vector<unsigned char> outStatus(W * H, 5);
                const STypedData s(frame.data(), side == 0 ? bad : dtFlt64);
                const STypedData d(out.data(), side == 1 ? bad : dtFlt64);
                EXPECT_FALSE(fx.Call(form, s, status.data(), d, outStatus.data()));
                EXPECT_FALSE(fx.Call(form, s, nullptr, d, outStatus.data()));
                for (size_t i = 0; i < out.size(); ++i) {
                    ASSERT_EQ(out[i], 5.0);
                    ASSERT_EQ(outStatus[i], 5);
                }
            }
        }
    }
}

TEST(ImageData, CalcNumPixels)
{
    EXPECT_EQ(IConverter::CalcNumPixels(0, 0, SArea{1, 2, 3, 5}), 12u);
    EXPECT_EQ(IConverter::CalcNumPixels(0, 0, SArea{0, 0, 511, 639}), 640u * 512u);
    EXPECT_EQ(IConverter::CalcNumPixels(640, 512, SArea{4, 0, 3, 10}), 0u);
    EXPECT_EQ(IConverter::CalcNumPixels(0, 0, SArea{0, 0, 65535, 65535}), 0u); // 2^32 wraps in 32 bits
    TArray<SScanLine> lines{{0, 1, 3}, {9, 5, 5}};
    EXPECT_EQ(IConverter::CalcNumPixels(0, 0, lines), 4u);
    EXPECT_EQ(IConverter::CalcNumPixels(0, 0, TArray<SScanLine>{}), 0u);
    SFixture fx;
    EXPECT_EQ(IConverter::CalcNumPixels(W, H, fx.rect, fx.mask.data(), fx.stride), fx.Pixels(EForm::Mask).size());
    EXPECT_EQ(IConverter::CalcNumPixels(W, H, SArea{3, 0, 2, 6}, fx.mask.data(), fx.stride), 0u);
}
