// The unsigned 16-bit to float look-up, plain and with AVX2. The build
// targets no particular processor, so the wide loop is compiled for AVX2
// alone and chosen at run time.
#include "reduce/kernels/LUTKernels.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#define ORV_LUT_WIDE 1
#endif

namespace orv::reduce::priv {

void ApplyLUTU16Plain(const uint16_t* src, float* dst, unsigned char* status, unsigned int count, const float* lut,
                      const unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    const bool full = low == 0 && high == 65535;
    if (full && status) ApplyLUTDense<uint16_t, float, true, true>(src, dst, status, count, lut, lutStatus, low, high);
    else if (full) ApplyLUTDense<uint16_t, float, false, true>(src, dst, nullptr, count, lut, lutStatus, low, high);
    else if (status) ApplyLUTDense<uint16_t, float, true, false>(src, dst, status, count, lut, lutStatus, low, high);
    else ApplyLUTDense<uint16_t, float, false, false>(src, dst, nullptr, count, lut, lutStatus, low, high);
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

// The status of 16 pixels, looked up one by one and stored as two words. Out
// of line: inlined, it keeps the caller's 16 indices live across the loop
// and spills them.
__attribute__((noinline)) void StatusBlock(const uint16_t* indices, unsigned char* status,
                                           const unsigned char* lutStatus)
{
    uint64_t words[2] = {0, 0};
    for (unsigned k = 0; k < 16; ++k) words[k / 8] |= uint64_t(lutStatus[indices[k]]) << (8 * (k % 8));
    std::memcpy(status, words, 16);
}

bool HasAvx2()
{
    static const bool avx2 = __builtin_cpu_supports("avx2");
    return avx2;
}

// Pixels of a per-preset call one by one, each through its preset's table.
// Built for AVX2 like its caller: without, each call from the wide loop
// measured three times slower.
__attribute__((noinline, target("avx2"))) void PresetPixels(const uint16_t* src, const unsigned char* presets,
                                                            float* dst, unsigned char* status, unsigned int n,
                                                            const float* const* luts,
                                                            const unsigned char* const* statuses,
                                                            unsigned short low, unsigned short high)
{
    for (unsigned k = 0; k < n; ++k) {
        const unsigned idx = LUTIndex(src[k], low, high);
        dst[k] = luts[presets[k]][idx];
        if (status) status[k] = statuses[presets[k]][idx];
    }
}

// The zero run of a table within low .. high, for calls with status of a
// few thousand pixels; the scan costs a few microseconds.
SZeroRun ZeroRunWithin(const unsigned char* lutStatus, bool scan, unsigned short low, unsigned short high)
{
    if (!scan) return SZeroRun{1, 0};
    SZeroRun run = LongestZeroRun(lutStatus + low, unsigned(high - low) + 1);
    run.low += low, run.high += low;
    return run;
}
bool WorthZeroRuns(const unsigned char* status, unsigned int count)
{
    return status && count >= kZeroRunPixels;
}

// The run of zero status of each table a per-preset call meets, found when
// first met.
class CZeroRuns {
public:
    CZeroRuns(const unsigned char* const* statuses, bool scan, unsigned short low, unsigned short high)
        : m_statuses(statuses), m_scan(scan), m_low(low), m_high(high)
    {
    }
    SZeroRun Of(unsigned char preset)
    {
        if (!m_known[preset]) {
            m_runs[preset] = ZeroRunWithin(m_statuses[preset], m_scan, m_low, m_high);
            m_known[preset] = true;
        }
        return m_runs[preset];
    }

private:
    const unsigned char* const* m_statuses;
    bool m_scan;
    unsigned short m_low, m_high;
    bool m_known[256] = {};
    SZeroRun m_runs[256] = {};
};

// 16 pixels at a time: the indices limited in vector steps (kLimit), the
// values assembled into vectors from single loads (an 8-wide gather costs
// about 11 cycles on recent processors, more than eight loads and inserts).
// Where all 16 indices lie in the table's run of zero status (zero.low ..
// zero.high) the status is stored as zeros, otherwise looked up pixel by
// pixel and stored as two words. With presets (kPresets), a block whose 16
// pixels share their preset byte runs the same way with that preset's table
// (luts and statuses by preset byte); a block of mixed presets goes pixel by
// pixel.
template <bool kLimit, bool kPresets>
__attribute__((target("avx2"))) void U16Avx2(const uint16_t* __restrict src, const unsigned char* __restrict presets,
                                             float* __restrict dst, unsigned char* __restrict status,
                                             unsigned int count, const float* const* luts,
                                             const unsigned char* const* statuses, unsigned short low,
                                             unsigned short high, SZeroRun zero)
{
    const __m256i lowIndex = _mm256_set1_epi16(short(low)), highIndex = _mm256_set1_epi16(short(high));
    // Unsigned 16-bit compares as signed ones on values with the top bit flipped.
    const __m256i flip = _mm256_set1_epi16(short(0x8000));
    auto zeroBound = [](SZeroRun z, bool high) {
        const bool any = z.low <= z.high;
        return short(((any ? (high ? z.high : z.low) : (high ? 0u : 1u))) ^ 0x8000u);
    };
    __m256i zeroLow = _mm256_set1_epi16(zeroBound(zero, false));
    __m256i zeroHigh = _mm256_set1_epi16(zeroBound(zero, true));
    const float* __restrict lut = luts[0];
    const unsigned char* __restrict lutStatus = statuses[0];
    // Only per-preset calls keep runs: a region calls this once a row.
    std::optional<CZeroRuns> runs;
    if constexpr (kPresets) runs.emplace(statuses, WorthZeroRuns(status, count), low, high);
    alignas(32) uint16_t limited[16];
    unsigned int i = 0;
    for (; i + 16 <= count; i += 16) {
        if constexpr (kPresets) {
            const unsigned char first = presets[i];
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(presets + i));
            if (_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(char(first)))) != 0xFFFF) {
                PresetPixels(src + i, presets + i, dst + i, status ? status + i : nullptr, 16, luts, statuses, low,
                             high);
                continue;
            }
            lut = luts[first];
            lutStatus = statuses[first];
            if (status) {
                const SZeroRun z = runs->Of(first);
                zeroLow = _mm256_set1_epi16(zeroBound(z, false));
                zeroHigh = _mm256_set1_epi16(zeroBound(z, true));
            }
        }
        __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
        const uint16_t* p = src + i;
        if constexpr (kLimit) {
            // Blocks with every value inside the limits, the usual ones, load
            // their indices straight from the source.
            const __m256i inside = _mm256_min_epu16(_mm256_max_epu16(raw, lowIndex), highIndex);
            if (_mm256_movemask_epi8(_mm256_cmpeq_epi16(inside, raw)) != -1) {
                raw = inside;
                _mm256_store_si256(reinterpret_cast<__m256i*>(limited), raw);
                p = limited;
            }
        }
        const __m128 q0 = _mm_set_ps(lut[p[3]], lut[p[2]], lut[p[1]], lut[p[0]]);
        const __m128 q1 = _mm_set_ps(lut[p[7]], lut[p[6]], lut[p[5]], lut[p[4]]);
        const __m128 q2 = _mm_set_ps(lut[p[11]], lut[p[10]], lut[p[9]], lut[p[8]]);
        const __m128 q3 = _mm_set_ps(lut[p[15]], lut[p[14]], lut[p[13]], lut[p[12]]);
        _mm256_storeu_ps(dst + i, _mm256_set_m128(q1, q0));
        _mm256_storeu_ps(dst + i + 8, _mm256_set_m128(q3, q2));
        if (!status) continue;
        const __m256i s = _mm256_xor_si256(raw, flip);
        const __m256i outside = _mm256_or_si256(_mm256_cmpgt_epi16(zeroLow, s), _mm256_cmpgt_epi16(s, zeroHigh));
        if (_mm256_testz_si256(outside, outside)) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(status + i), _mm_setzero_si128());
            continue;
        }
        StatusBlock(p, status + i, lutStatus);
    }
    if constexpr (kPresets)
        PresetPixels(src + i, presets + i, dst + i, status ? status + i : nullptr, count - i, luts, statuses, low,
                     high);
    else
        ApplyLUTU16Plain(src + i, dst + i, status ? status + i : nullptr, count - i, lut, lutStatus, low, high);
}

} // namespace
#endif

bool ApplyLUTU16Wide(const uint16_t* src, float* dst, unsigned char* status, unsigned int count, const float* lut,
                     const unsigned char* lutStatus, unsigned short low, unsigned short high)
{
#ifdef ORV_LUT_WIDE
    if (!HasAvx2() || low > high) return false;
    const SZeroRun zero = ZeroRunWithin(lutStatus, WorthZeroRuns(status, count), low, high);
    const float* const luts[1] = {lut};
    const unsigned char* const statuses[1] = {lutStatus};
    if (low == 0 && high == 65535)
        U16Avx2<false, false>(src, nullptr, dst, status, count, luts, statuses, low, high, zero);
    else U16Avx2<true, false>(src, nullptr, dst, status, count, luts, statuses, low, high, zero);
    return true;
#else
    (void)src, (void)dst, (void)status, (void)count, (void)lut, (void)lutStatus, (void)low, (void)high;
    return false;
#endif
}

bool ApplyLUTU16PresetsWide(const uint16_t* src, const unsigned char* presets, float* dst, unsigned char* status,
                            unsigned int count, const float* const* luts, const unsigned char* const* statuses,
                            unsigned short low, unsigned short high)
{
#ifdef ORV_LUT_WIDE
    if (!HasAvx2() || low > high) return false;
    // Presets that change from pixel to pixel leave the wide loop nothing to
    // do: a sample of blocks spread over the call decides.
    const unsigned blocks = count / 16, step = std::max(1u, blocks / 64);
    unsigned sampled = 0, mixed = 0;
    for (unsigned b = 0; b < blocks; b += step, ++sampled)
        mixed += std::memcmp(presets + 16 * b, presets + 16 * b + 1, 15) != 0;
    if (2 * mixed > sampled) return false;
    if (low == 0 && high == 65535)
        U16Avx2<false, true>(src, presets, dst, status, count, luts, statuses, low, high, SZeroRun{1, 0});
    else U16Avx2<true, true>(src, presets, dst, status, count, luts, statuses, low, high, SZeroRun{1, 0});
    return true;
#else
    (void)src, (void)presets, (void)dst, (void)status, (void)count, (void)luts, (void)statuses, (void)low,
        (void)high;
    return false;
#endif
}

} // namespace orv::reduce::priv
