// Polynomials whose coefficients change from pixel to pixel with the
// pixel's preset, four pixels at a time.
#include <cstring>

#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce::priv {

namespace {

typedef int32_t V8i __attribute__((vector_size(32)));

// The eight presets' values of coefficient i lie in two vectors, lo[i]
// (presets 0 to 3) and hi[i]: a shuffle by the pixels' preset numbers gives
// four pixels' coefficients, which AVX2 does in register permutes instead
// of loads. The indices address the doubles' 32-bit halves, 2p and 2p + 1,
// so that each shuffle is one permute; with no preset above 3 met, hi is
// never read.
template <int M>
inline void PresetPairs(const double (*values)[kPresetValues], V4d (&lo)[M], V4d (&hi)[M])
{
    for (int i = 0; i < M; ++i) {
        lo[i] = V4d{values[0][i], values[1][i], values[2][i], values[3][i]};
        hi[i] = V4d{values[4][i], values[5][i], values[6][i], values[7][i]};
    }
}

// The shuffle indices of four pixels from their preset bytes.
inline void PresetIndices(const unsigned char* pi, V8i& idx)
{
    const V4l twice = (V4l{pi[0], pi[1], pi[2], pi[3]} & int64_t(kPresetMask)) * 2;
    idx = (V8i)(twice | (twice + 1) << 32);
}

#define ORV_PICK(i)                                                                                                 \
    (kHigh ? (V4d)__builtin_shuffle((V8i)lo[i], (V8i)hi[i], idx) : (V4d)__builtin_shuffle((V8i)lo[i], idx))

template <int N, bool kHigh>
ORV_VECTOR_CLONES void TempPolyPresetsOf(const double* v, double* out, unsigned int n, const unsigned char* pi,
                                         const double (*coefs)[kPresetValues], double em)
{
    V4d lo[N + 1], hi[N + 1];
    PresetPairs(coefs, lo, hi);
    const V4d emv = V4d{em, em, em, em};
    unsigned int k = 0;
    for (; k + 4 <= n; k += 4) {
        V8i idx;
        PresetIndices(pi + k, idx);
        V4d x;
        std::memcpy(&x, v + k, sizeof(x));
        x = x / emv;
        // The scalar form's order: powers by repeated products, terms
        // added from the lowest.
        V4d sum = ORV_PICK(0) + ORV_PICK(1) * x, power = x;
        for (int i = 2; i <= N; ++i) {
            power = power * x;
            sum = sum + ORV_PICK(i) * power;
        }
        std::memcpy(out + k, &sum, sizeof(sum));
    }
    for (; k < n; ++k) out[k] = TempPoly<N>(v[k] / em, coefs[pi[k] & kPresetMask]);
}

// The radiance forms with coefficients (orders 1 to 4, and the two with a
// background value), each written as RadiancePoly writes it.
template <int F, bool kHigh>
ORV_VECTOR_CLONES void RadiancePolyPresetsOf(const double* v, double* out, unsigned int n, const unsigned char* pi,
                                             const double (*values)[kPresetValues])
{
    constexpr int nc = kRadianceCoefs<F>;
    V4d lo[nc + 2], hi[nc + 2];
    PresetPairs(values, lo, hi);
    unsigned int k = 0;
    for (; k + 4 <= n; k += 4) {
        V8i idx;
        PresetIndices(pi + k, idx);
        V4d x, r;
        std::memcpy(&x, v + k, sizeof(x));
        const V4d scale = ORV_PICK(nc);
        if constexpr (F == -1) {
            r = ORV_PICK(1) * (x - ORV_PICK(nc + 1)) * scale + ORV_PICK(0);
        } else if constexpr (F == -2) {
            r = (ORV_PICK(1) * (x - ORV_PICK(nc + 1)) + ORV_PICK(0)) * scale;
        } else {
            // c[i] * v * v ...: the coefficient times v, i times over.
            V4d sum = ORV_PICK(0) + ORV_PICK(1) * x;
            for (int i = 2; i < nc; ++i) {
                V4d term = ORV_PICK(i);
                for (int j = 0; j < i; ++j) term = term * x;
                sum = sum + term;
            }
            r = sum * scale;
        }
        std::memcpy(out + k, &r, sizeof(r));
    }
    for (; k < n; ++k) {
        const double* c = values[pi[k] & kPresetMask];
        out[k] = RadiancePoly<F>(v[k], c, 0, c[nc + 1], c[nc]);
    }
}

#undef ORV_PICK

} // namespace

template <int N>
void TempPolyPresets(const double* v, double* out, unsigned int n, const unsigned char* pi,
                     const double (*coefs)[kPresetValues], double em, bool high)
{
    if (high) TempPolyPresetsOf<N, true>(v, out, n, pi, coefs, em);
    else TempPolyPresetsOf<N, false>(v, out, n, pi, coefs, em);
}

template <int F>
void RadiancePolyPresets(const double* v, double* out, unsigned int n, const unsigned char* pi,
                         const double (*values)[kPresetValues], bool high)
{
    if (high) RadiancePolyPresetsOf<F, true>(v, out, n, pi, values);
    else RadiancePolyPresetsOf<F, false>(v, out, n, pi, values);
}

#define ORV_RADIANCE_POLY_PRESETS(F)                                                                                \
    template void RadiancePolyPresets<F>(const double*, double*, unsigned int, const unsigned char*,               \
                                         const double (*)[kPresetValues], bool)
ORV_RADIANCE_POLY_PRESETS(1);
ORV_RADIANCE_POLY_PRESETS(2);
ORV_RADIANCE_POLY_PRESETS(3);
ORV_RADIANCE_POLY_PRESETS(4);
ORV_RADIANCE_POLY_PRESETS(-1);
ORV_RADIANCE_POLY_PRESETS(-2);
#undef ORV_RADIANCE_POLY_PRESETS

#define ORV_TEMP_POLY_PRESETS(N)                                                                                    \
    template void TempPolyPresets<N>(const double*, double*, unsigned int, const unsigned char*,                   \
                                     const double (*)[kPresetValues], double, bool)
ORV_TEMP_POLY_PRESETS(1);
ORV_TEMP_POLY_PRESETS(2);
ORV_TEMP_POLY_PRESETS(3);
ORV_TEMP_POLY_PRESETS(4);
ORV_TEMP_POLY_PRESETS(5);
ORV_TEMP_POLY_PRESETS(6);
#undef ORV_TEMP_POLY_PRESETS

} // namespace orv::reduce::priv
