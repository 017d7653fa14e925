#pragma once
// Vector types for the hot loops, and the attribute that builds a loop a
// second time for AVX2 (chosen by the loader from the CPU it runs on).
// Without FMA in the clone list, both versions round every operation the
// same way, so results do not depend on the machine.
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace orv::reduce::priv {

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define ORV_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define ORV_VECTOR_CLONES
#endif

// Four lanes of T; a power of two in size for every element type.
template <class T>
struct TVec4Of {
    typedef T type __attribute__((vector_size(4 * sizeof(T))));
};
template <class T>
using TVec4 = typename TVec4Of<T>::type;
using V4d = TVec4<double>;

using V4l = TVec4<int64_t>;

// Four consecutive elements converted to U (exact for every pair used here
// but 64-bit integers to double, which round as a scalar conversion does).
// Results go through references: vector returns would change the ABI
// between clones.
template <class U, class T>
inline void Load4(const T* p, TVec4<U>& out)
{
    // Element by element: GCC turns this into one widening load, where a
    // vector conversion of a loaded vector goes through halves.
    if constexpr (std::is_integral_v<T> && sizeof(T) >= 4) {
        // Through memory: from wide integers GCC 12 misreads the vector
        // form as uninitialised.
        const U lanes[4] = {U(p[0]), U(p[1]), U(p[2]), U(p[3])};
        std::memcpy(&out, lanes, sizeof(out));
    } else {
        out = TVec4<U>{U(p[0]), U(p[1]), U(p[2]), U(p[3])};
    }
}

// 0xFF in each byte of the word that has any bit of the mask (below 0x80).
inline uint64_t ByteMasks(uint64_t word, uint8_t mask)
{
    const uint64_t m = 0x0101010101010101ull * mask;
    const uint64_t high = ((word & m) + 0x7F7F7F7F7F7F7F7Full) & 0x8080808080808080ull;
    return (high >> 7) * 0xFF;
}

// Bit i set where byte i of ByteMasks' result is set.
inline unsigned ByteFlags(uint64_t masks) { return unsigned(((masks & 0x0101010101010101ull) * 0x0102040810204080ull) >> 56); }

// Lane masks (all ones where bit l of the index is clear) for four lanes of
// integer type I.
#define ORV_CLEAR_MASK(b) \
    {(b)&1 ? I(0) : I(-1), (b)&2 ? I(0) : I(-1), (b)&4 ? I(0) : I(-1), (b)&8 ? I(0) : I(-1)}
template <class I>
struct TClearMasks {
    static constexpr TVec4<I> lanes[16] = {
        ORV_CLEAR_MASK(0),  ORV_CLEAR_MASK(1),  ORV_CLEAR_MASK(2),  ORV_CLEAR_MASK(3),
        ORV_CLEAR_MASK(4),  ORV_CLEAR_MASK(5),  ORV_CLEAR_MASK(6),  ORV_CLEAR_MASK(7),
        ORV_CLEAR_MASK(8),  ORV_CLEAR_MASK(9),  ORV_CLEAR_MASK(10), ORV_CLEAR_MASK(11),
        ORV_CLEAR_MASK(12), ORV_CLEAR_MASK(13), ORV_CLEAR_MASK(14), ORV_CLEAR_MASK(15)};
};
#undef ORV_CLEAR_MASK

} // namespace orv::reduce::priv
