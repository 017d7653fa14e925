// The whole-range unsigned 16-bit to float look-up, plain and with AVX2
// gathers. The build targets no particular processor, so the wide loop is
// compiled for AVX2 alone and chosen at run time.
#include "reduce/kernels/LUTKernels.h"

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

#ifdef ORV_LUT_WIDE
namespace {

// 16 pixels at a time. The status bytes are gathered as the aligned 32-bit
// word that holds them and shifted down: the word of index i ends at
// (i | 3), which a 65536-entry table always holds.
__attribute__((target("avx2"))) void FullU16Avx2(const uint16_t* src, float* dst, unsigned char* status,
                                                 unsigned int count, const float* lut,
                                                 const unsigned char* lutStatus)
{
    const __m256i lowBits = _mm256_set1_epi32(3);
    const __m256i byteMask = _mm256_set1_epi32(0xFF);
    const __m256i wordMask = _mm256_set1_epi32(~3);
    const int* words = reinterpret_cast<const int*>(lutStatus);
    unsigned int i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        const __m256i a = _mm256_cvtepu16_epi32(_mm256_castsi256_si128(raw));
        const __m256i b = _mm256_cvtepu16_epi32(_mm256_extracti128_si256(raw, 1));
        _mm256_storeu_ps(dst + i, _mm256_i32gather_ps(lut, a, 4));
        _mm256_storeu_ps(dst + i + 8, _mm256_i32gather_ps(lut, b, 4));
        if (status) {
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
    FullU16Avx2(src, dst, status, count, lut, lutStatus);
    return true;
#else
    (void)src, (void)dst, (void)status, (void)count, (void)lut, (void)lutStatus;
    return false;
#endif
}

} // namespace orv::reduce::priv
