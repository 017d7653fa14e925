#include "orv/ConvertArray.h"

#include <array>
#include <cstring>
#include <utility>

#include "orv/ValueConvert.h"

namespace orv {
namespace {

using TConvertKernel = void (*)(void*, const void*, unsigned int);

template <class D, class S>
void ConvertKernel(void* target, const void* source, unsigned int count)
{
    if constexpr (std::is_same_v<D, S>) {
        std::memmove(target, source, size_t(count) * sizeof(D));
    } else if constexpr (std::is_floating_point_v<S> && std::is_integral_v<D> && sizeof(D) <= 4) {
        // The rule truncates through a 64-bit integer, which SSE2 cannot do in
        // vectors. A block whose values all lie within the 32-bit range gives
        // the same low bits through a 32-bit truncation, which vectorises.
        D* __restrict dst = static_cast<D*>(target);
        const S* __restrict src = static_cast<const S*>(source);
        constexpr unsigned int block = 256;
        constexpr S lo = S(-2147483648.0), hi = S(2147483648.0);
        int32_t truncated[block];
        for (unsigned int start = 0; start < count; start += block) {
            const unsigned int n = count - start < block ? count - start : block;
            const S* __restrict in = src + start;
            int inRange = 1;
            for (unsigned int i = 0; i < n; ++i) {
                const bool ok = in[i] >= lo && in[i] < hi; // false for NaN
                inRange &= ok;
                truncated[i] = static_cast<int32_t>(ok ? in[i] : S(0));
            }
            D* __restrict out = dst + start;
            if (inRange)
                for (unsigned int i = 0; i < n; ++i) out[i] = static_cast<D>(truncated[i]);
            else
                for (unsigned int i = 0; i < n; ++i) out[i] = ConvertValue<D>(in[i]);
        }
    } else {
        // Restrict-qualified so that the compiler vectorises even when one
        // side is a character type.
        D* __restrict dst = static_cast<D*>(target);
        const S* __restrict src = static_cast<const S*>(source);
        for (unsigned int i = 0; i < count; ++i) dst[i] = ConvertValue<D>(src[i]);
    }
}

// Table indexed source * 10 + destination, generated from the element type
// of each EDataType.
template <size_t... I>
constexpr std::array<TConvertKernel, sizeof...(I)> MakeTable(std::index_sequence<I...>)
{
    return {&ConvertKernel<TElement<EDataType(I % 10)>, TElement<EDataType(I / 10)>>...};
}

constexpr auto kernels = MakeTable(std::make_index_sequence<100>{});

} // namespace

bool ConvertArray(STypedData target, STypedData source, unsigned int count)
{
    if (unsigned(target.type) > dtFlt64 || unsigned(source.type) > dtFlt64) return false;
    if (count == 0) return true;
    if (!target.data || !source.data) return false;
    kernels[size_t(source.type) * 10 + size_t(target.type)](target.data, source.data, count);
    return true;
}

} // namespace orv
