// The whole-range unsigned 16-bit to float look-up, plain and with AVX2
// gathers. The build targets no particular processor, so the wide loop is
// compiled for AVX2 alone and chosen at run time.
#include "reduce/kernels/LUTKernels.h"

#include <bit>
#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#define ORV_LUT_WIDE 1
#endif

namespace orv::reduce::priv {

void ApplyLUTFullU16Plain(const uint16_t* __restrict src, float* __restrict dst, unsigned char* __restrict status,
                          unsigned int count, const float* __restrict lut, const unsigned char* __restrict lutStatus)
{
    if (status) {
        for (unsigned int i = 0; i < count; ++i) {
            const unsigned idx = src[i];
            dst[i] = lut[idx];
            status[i] = lutStatus[idx];
        }
    } else {
        for (unsigned int i = 0; i < count; ++i) dst[i] = lut[src[i]];
    }
}

SZeroRun LongestZeroRun(const unsigned char* lutStatus, unsigned int entries)
{
    // Eight entries at a time: a word of zeros extends the open run, any
    // other word closes it after its zero bytes at the low end and opens the
    // next one with its zero bytes at the high end. Runs inside one word are
    // too short to matter and are not looked for.
    SZeroRun best{1, 0};
    long open = -1;
    auto close = [&](unsigned end) {
        if (open >= 0 && end + 1 > unsigned(open) && (best.low > best.high || end - unsigned(open) > best.high - best.low))
            best = SZeroRun{unsigned(open), end};
    };
    unsigned int k = 0;
    for (; k + 8 <= entries; k += 8) {
        uint64_t w;
        std::memcpy(&w, lutStatus + k, 8);
        if (w == 0) {
            if (open < 0) open = long(k);
            continue;
        }
        // Little-endian: entry k is the word's lowest byte.
        const unsigned lowZeros = unsigned(std::countr_zero(w)) / 8, highZeros = unsigned(std::countl_zero(w)) / 8;
        if (open >= 0 && lowZeros > 0) close(k + lowZeros - 1);
        else if (open >= 0) close(k - 1);
        open = highZeros > 0 ? long(k + 8 - highZeros) : -1;
    }
    for (; k < entries; ++k) {
        if (lutStatus[k] == 0) {
            if (open < 0) open = long(k);
        } else {
            if (open >= 0) close(k - 1);
            open = -1;
        }
    }
    if (open >= 0 && entries > 0) close(entries - 1);
    return best;
}

#ifdef ORV_LUT_WIDE
namespace {

// 16 pixels at a time. Where all 16 indices lie in the table's run of zero
// status (zero.low .. zero.high) the status is stored as zeros; elsewhere the
// status bytes are gathered as the aligned 32-bit word that holds them and
// shifted down: the word of index i ends at (i | 3), which a 65536-entry
// table always holds.
__attribute__((target("avx2"))) void FullU16Avx2(const uint16_t* src, float* dst, unsigned char* status,
                                                 unsigned int count, const float* lut,
                                                 const unsigned char* lutStatus, SZeroRun zero)
{
    const __m256i lowBits = _mm256_set1_epi32(3);
    const __m256i byteMask = _mm256_set1_epi32(0xFF);
    const __m256i wordMask = _mm256_set1_epi32(~3);
    const int* words = reinterpret_cast<const int*>(lutStatus);
    // Unsigned 16-bit compares as signed ones on values with the top bit flipped.
    const bool anyZero = zero.low <= zero.high;
    const __m256i flip = _mm256_set1_epi16(short(0x8000));
    const __m256i zeroLow = _mm256_set1_epi16(short((anyZero ? zero.low : 1u) ^ 0x8000u));
    const __m256i zeroHigh = _mm256_set1_epi16(short((anyZero ? zero.high : 0u) ^ 0x8000u));
    unsigned int i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        const __m256i a = _mm256_cvtepu16_epi32(_mm256_castsi256_si128(raw));
        const __m256i b = _mm256_cvtepu16_epi32(_mm256_extracti128_si256(raw, 1));
        _mm256_storeu_ps(dst + i, _mm256_i32gather_ps(lut, a, 4));
        _mm256_storeu_ps(dst + i + 8, _mm256_i32gather_ps(lut, b, 4));
        if (status) {
            const __m256i s = _mm256_xor_si256(raw, flip);
            const __m256i outside = _mm256_or_si256(_mm256_cmpgt_epi16(zeroLow, s), _mm256_cmpgt_epi16(s, zeroHigh));
            if (_mm256_testz_si256(outside, outside)) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(status + i), _mm_setzero_si128());
                continue;
            }
            // Byte addresses, scale 1: the gather reads 4 bytes at each.
            const __m256i wa = _mm256_i32gather_epi32(words, _mm256_and_si256(a, wordMask), 1);
            const __m256i wb = _mm256_i32gather_epi32(words, _mm256_and_si256(b, wordMask), 1);
            const __m256i sa =
                _mm256_and_si256(_mm256_srlv_epi32(wa, _mm256_slli_epi32(_mm256_and_si256(a, lowBits), 3)), byteMask);
            const __m256i sb =
                _mm256_and_si256(_mm256_srlv_epi32(wb, _mm256_slli_epi32(_mm256_and_si256(b, lowBits), 3)), byteMask);
            // Pack per 128-bit lane, then put the lanes back in order.
            const __m256i halves = _mm256_permute4x64_epi64(_mm256_packus_epi32(sa, sb), 0xD8);
            const __m128i bytes =
                _mm_packus_epi16(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(status + i), bytes);
        }
    }
    ApplyLUTFullU16Plain(src + i, dst + i, status ? status + i : nullptr, count - i, lut, lutStatus);
}

} // namespace
#endif

bool ApplyLUTFullU16Wide(const uint16_t* src, float* dst, unsigned char* status, unsigned int count,
                         const float* lut, const unsigned char* lutStatus)
{
#ifdef ORV_LUT_WIDE
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (!avx2) return false;
    // The scan costs a few microseconds: worth it from a few thousand pixels.
    const SZeroRun zero = status && count >= kZeroRunPixels ? LongestZeroRun(lutStatus, 65536) : SZeroRun{1, 0};
    FullU16Avx2(src, dst, status, count, lut, lutStatus, zero);
    return true;
#else
    (void)src, (void)dst, (void)status, (void)count, (void)lut, (void)lutStatus;
    return false;
#endif
}

} // namespace orv::reduce::priv
