#pragma once
// Region walkers and table generation for the typed kernels.
//
// Each walker visits the pixels of one region form in region order and calls
// body(flat, i, x, y): flat is the pixel's index in the frame (or in the
// source array for the count and index forms), i the dense destination
// index, x and y the image coordinates. A kernel is one per-pixel body handed
// to a walker, so instances multiply by element types only. Bodies that do
// not use x and y say so with kNeedsXY = false, which spares the index
// walker its division.
#include <array>
#include <cstddef>
#include <utility>

#include "orv/Array.h"
#include "orv/ValueConvert.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce::priv {

// Bit of a status byte that excludes a pixel from the valid figures.
constexpr unsigned char kStatusInvalidMask = 0x18;

template <class B>
constexpr bool NeedsXY()
{
    if constexpr (requires { B::kNeedsXY; }) return B::kNeedsXY;
    else return true;
}

// Besides the per-pixel walk, each walker gives its runs of consecutive
// pixels, Runs(f) calling f(flat, i, n): a kernel that has a dense form then
// needs no loop of its own per region form.

// A dense run of count elements: flat = i, x = i, y = 0.
struct SWalkCount {
    unsigned int count;
    template <class B>
    void operator()(B& body) const
    {
        for (unsigned int i = 0; i < count; ++i) body(i, i, i, 0u);
    }
    template <class F>
    void Runs(F&& f) const
    {
        if (count) f(size_t(0), size_t(0), count);
    }
};

// An index list in list order; entries may repeat and are not checked.
struct SWalkIndices {
    unsigned int const* indices;
    unsigned int count;
    unsigned int width; // only for x and y; 0 when the body needs none
    template <class B>
    void operator()(B& body) const
    {
        for (unsigned int i = 0; i < count; ++i) {
            const unsigned int flat = indices[i];
            if constexpr (NeedsXY<B>()) body(flat, i, flat % width, flat / width);
            else body(flat, i, 0u, 0u);
        }
    }
    // Consecutive indices make one run.
    template <class F>
    void Runs(F&& f) const
    {
        for (unsigned int i = 0; i < count;) {
            const unsigned int start = i, first = indices[i];
            while (++i < count && indices[i] == indices[i - 1] + 1u) {
            }
            f(size_t(first), size_t(start), i - start);
        }
    }
};

// A rectangle, row by row.
struct SWalkRect {
    unsigned int width;
    SArea area;
    template <class B>
    void operator()(B& body) const
    {
        if (area.bottom < area.top || area.right < area.left) return;
        const unsigned int l = area.left;
        const unsigned int n = unsigned(area.right) - l + 1;
        unsigned int i = 0;
        for (unsigned int y = area.top; y <= area.bottom; ++y, i += n) {
            // Indices in size_t and a counted loop: the compiler sees
            // contiguous accesses and vectorises.
            const size_t row = size_t(y) * width + l;
            for (unsigned int k = 0; k < n; ++k) body(row + k, size_t(i) + k, l + k, y);
        }
    }
    template <class F>
    void Runs(F&& f) const
    {
        if (area.bottom < area.top || area.right < area.left) return;
        const unsigned int n = unsigned(area.right) - area.left + 1;
        size_t i = 0;
        for (unsigned int y = area.top; y <= area.bottom; ++y, i += n) f(size_t(y) * width + area.left, i, n);
    }
};

// Scan lines in array order, through the checked accessor.
struct SWalkScanLines {
    unsigned int width;
    TArray<SScanLine> const* lines;
    template <class B>
    void operator()(B& body) const
    {
        unsigned int i = 0;
        const size_t count = lines->size();
        for (size_t n = 0; n < count; ++n) {
            const SScanLine& line = (*lines)[n];
            const unsigned int y = line.row;
            if (line.last < line.first) continue;
            const unsigned int x0 = line.first, len = unsigned(line.last) - x0 + 1;
            const size_t row = size_t(y) * width + x0;
            for (unsigned int k = 0; k < len; ++k) body(row + k, size_t(i) + k, x0 + k, y);
            i += len;
        }
    }
    template <class F>
    void Runs(F&& f) const
    {
        size_t i = 0;
        for (const SScanLine& line : *lines) {
            if (line.last < line.first) continue;
            const unsigned int len = unsigned(line.last) - line.first + 1;
            f(size_t(line.row) * width + line.first, i, len);
            i += len;
        }
    }
};

// A rectangle filtered by a mask of its own stride; a zero byte skips the
// pixel.
struct SWalkMask {
    unsigned int width;
    SArea area;
    unsigned char const* mask;
    unsigned int stride;
    template <class B>
    void operator()(B& body) const
    {
        if (area.bottom < area.top || area.right < area.left) return;
        unsigned int i = 0;
        for (unsigned int y = area.top; y <= area.bottom; ++y) {
            const unsigned char* m = mask + size_t(y) * stride;
            const unsigned int row = y * width;
            for (unsigned int x = area.left; x <= area.right; ++x)
                if (m[x]) body(row + x, i++, x, y);
        }
    }
    // The non-zero stretches of each mask row.
    template <class F>
    void Runs(F&& f) const
    {
        if (area.bottom < area.top || area.right < area.left) return;
        size_t i = 0;
        for (unsigned int y = area.top; y <= area.bottom; ++y) {
            const unsigned char* m = mask + size_t(y) * stride;
            for (unsigned int x = area.left; x <= area.right;) {
                if (!m[x]) {
                    ++x;
                    continue;
                }
                const unsigned int first = x;
                while (x <= area.right && m[x]) ++x;
                f(size_t(y) * width + first, i, x - first);
                i += x - first;
            }
        }
    }
};

// Pixels a region yields, as the kernels walk it (an inverted rectangle
// yields none).
inline unsigned int RegionPixels(SArea area)
{
    if (area.bottom < area.top || area.right < area.left) return 0;
    return (unsigned(area.bottom) - area.top + 1) * (unsigned(area.right) - area.left + 1);
}
unsigned int RegionPixels(TArray<SScanLine> const& lines);
unsigned int RegionPixels(SArea area, unsigned char const* mask, unsigned int stride);

// Element type of table position I of a full table (source * 10 + destination).
template <size_t I> using TSourceOf = TElement<EDataType(I / 10)>;
template <size_t I> using TDestOf = TElement<EDataType(I % 10)>;
template <size_t I> using TTypeOf = TElement<EDataType(I)>;

} // namespace orv::reduce::priv

// Generates a constant table of 100 kernels kernel<Source, Destination>,
// indexed source * 10 + destination, from the one list of element types.
#define ORV_PAIR_TABLE(Type, name, kernel)                                                      \
    template <size_t... I>                                                                      \
    constexpr std::array<Type, 100> name##Make(std::index_sequence<I...>)                       \
    {                                                                                           \
        return {&kernel<::orv::reduce::priv::TSourceOf<I>, ::orv::reduce::priv::TDestOf<I>>...}; \
    }                                                                                           \
    constexpr std::array<Type, 100> name = name##Make(std::make_index_sequence<100>{})

// A table of 10 kernels kernel<Source>, indexed by the source type.
#define ORV_TYPE_TABLE(Type, name, kernel)                                 \
    template <size_t... I>                                                 \
    constexpr std::array<Type, 10> name##Make(std::index_sequence<I...>)   \
    {                                                                      \
        return {&kernel<::orv::reduce::priv::TTypeOf<I>>...};              \
    }                                                                      \
    constexpr std::array<Type, 10> name = name##Make(std::make_index_sequence<10>{})
