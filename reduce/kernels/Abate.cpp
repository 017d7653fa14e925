#include "reduce/kernels/Abate.h"

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "orv/ValueConvert.h"

namespace orv::reduce::priv {
namespace {

// Half away from zero, by hand as the clamped path has always done it.
inline float RoundHalfAway(float f)
{
    float r = std::trunc(f);
    if (f >= 0 && f - r >= 0.5f) r += 1.0f;
    else if (f < 0 && r - f >= 0.5f) r -= 1.0f;
    return r;
}

struct SPresetArrays {
    const void* frame;
    const float* gain;
    const short* offset;
    const unsigned int* map;
};

// Unsigned 16-bit: the gain product is rounded, unlike ApplyNUC, which
// truncates; unclamped it is rounded before the offset is added, clamped
// after. Both orders are intended.
inline uint16_t PresetValue(const SPresetArrays& a, unsigned int i, bool clamp, float minF, float maxF,
                            uint16_t*)
{
    const unsigned int j = a.map ? a.map[i] : i;
    const uint16_t s = static_cast<const uint16_t*>(a.frame)[j];
    if (!clamp) {
        if (!a.gain) return a.offset ? uint16_t(s + a.offset[j]) : s;
        const float r = std::roundf(float(s) * a.gain[j]);
        if (!a.offset) return ConvertValue<uint16_t>(r);
        return ConvertValue<uint16_t>(double(r) + double(a.offset[j]));
    }
    float f;
    if (!a.gain) f = a.offset ? float(int(s) + int(a.offset[j])) : float(s);
    else f = a.offset ? float(s) * a.gain[j] + float(a.offset[j]) : float(s) * a.gain[j];
    float r;
    if (minF > f) r = std::trunc(minF);
    else if (!a.gain) r = std::trunc(maxF < f ? maxF : f);
    else if (f > maxF) r = std::trunc(maxF);
    else r = RoundHalfAway(f);
    return ConvertValue<uint16_t>(r);
}

inline float PresetValue(const SPresetArrays& a, unsigned int i, bool clamp, float minF, float maxF, float*)
{
    const unsigned int j = a.map ? a.map[i] : i;
    const float s = static_cast<const float*>(a.frame)[j];
    float f;
    if (!a.gain) f = a.offset ? float(a.offset[j]) + s : s;
    else f = a.offset ? s * a.gain[j] + float(a.offset[j]) : s * a.gain[j];
    if (clamp) {
        if (minF > f) return minF;
        return maxF < f ? maxF : f;
    }
    return f;
}

inline bool NotAbove(uint16_t v, unsigned short limit) { return v <= limit; }
inline bool NotBelow(uint16_t v, unsigned short limit) { return v >= limit; }
inline bool NotAbove(float v, unsigned short limit) { return v <= float(limit); }
inline bool NotBelow(float v, unsigned short limit) { return v >= float(limit); }

template <class T, bool kFromLast>
void Merge(const SPresetArrays* arrays, const unsigned char* candidates, int last, unsigned int count,
           T* destination, unsigned char* presetOut, const unsigned short* lowLimits,
           const unsigned short* highLimits, bool clamp, float minF, float maxF)
{
    T* tag = nullptr;
    for (unsigned int i = 0; i < count; ++i) {
        int chosen = kFromLast ? 0 : last;
        if constexpr (!kFromLast) {
            for (int p = 0; p <= last; ++p) {
                const unsigned c = candidates[p];
                if (NotAbove(PresetValue(arrays[c], i, clamp, minF, maxF, tag), highLimits[c])) {
                    chosen = p;
                    break;
                }
            }
        } else {
            for (int p = last; p >= 0; --p) {
                const unsigned c = candidates[p];
                if (NotBelow(PresetValue(arrays[c], i, clamp, minF, maxF, tag), lowLimits[c])) {
                    chosen = p;
                    break;
                }
            }
        }
        const unsigned c = candidates[chosen];
        presetOut[i] = static_cast<unsigned char>(c);
        destination[i] = PresetValue(arrays[c], i, clamp, minF, maxF, tag);
    }
}

} // namespace

template <class T>
bool Abate(T** frames, unsigned int count, T* destination, unsigned char* presetOut, bool* present,
           unsigned char* order, unsigned short* lowLimits, unsigned short* highLimits, unsigned int mode, float** gain,
           short** offset, unsigned int** map, bool clamp, double minimum, double maximum)
{
    unsigned char candidates[8];
    int n = 0;
    for (int k = 0; k < 8; ++k)
        if (present[order[k]]) candidates[n++] = order[k];
    if (n == 0) return false;
    SPresetArrays arrays[8];
    for (int c = 0; c < 8; ++c)
        arrays[c] = {frames[c], gain ? gain[c] : nullptr, offset ? offset[c] : nullptr, map ? map[c] : nullptr};
    const float minF = float(minimum), maxF = float(maximum);
    if (mode == 0)
        Merge<T, false>(arrays, candidates, n - 1, count, destination, presetOut, lowLimits, highLimits, clamp, minF,
                        maxF);
    else
        Merge<T, true>(arrays, candidates, n - 1, count, destination, presetOut, lowLimits, highLimits, clamp, minF,
                       maxF);
    return true;
}

template bool Abate<uint16_t>(uint16_t**, unsigned int, uint16_t*, unsigned char*, bool*, unsigned char*,
                              unsigned short*, unsigned short*, unsigned int, float**, short**, unsigned int**, bool, double,
                              double);
template bool Abate<float>(float**, unsigned int, float*, unsigned char*, bool*, unsigned char*, unsigned short*,
                           unsigned short*, unsigned int, float**, short**, unsigned int**, bool, double, double);

} // namespace orv::reduce::priv

namespace orv::reduce {

bool Abate(EDataType type, void** frames, unsigned int count, void* destination, unsigned char* presetOut,
           bool* present, unsigned char* order, unsigned short* lowLimits, unsigned short* highLimits, unsigned int mode,
           float** gain, short** offset, unsigned int** map, bool clamp, double minimum, double maximum)
{
    // The kernel gets its own copy of the eight frame pointers.
    if (type == dtUInt16) {
        uint16_t* copy[8];
        for (int k = 0; k < 8; ++k) copy[k] = static_cast<uint16_t*>(frames[k]);
        return priv::Abate<uint16_t>(copy, count, static_cast<uint16_t*>(destination), presetOut, present, order,
                                     lowLimits, highLimits, mode, gain, offset, map, clamp, minimum, maximum);
    }
    if (type == dtFlt32) {
        float* copy[8];
        for (int k = 0; k < 8; ++k) copy[k] = static_cast<float*>(frames[k]);
        return priv::Abate<float>(copy, count, static_cast<float*>(destination), presetOut, present, order,
                                  lowLimits, highLimits, mode, gain, offset, map, clamp, minimum, maximum);
    }
    return false;
}

} // namespace orv::reduce
