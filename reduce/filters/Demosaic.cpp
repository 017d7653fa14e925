#include "reduce/filters/Demosaic.h"

#include <cstddef>

namespace orv::reduce {

namespace {

// Mirror an index that is one step outside [0, n) back inside, keeping its
// parity; a line of one sample has no neighbour and uses itself.
inline unsigned Mirror(long i, unsigned n)
{
    if (n < 2) return 0;
    if (i < 0) return 1;
    if (i >= long(n)) return n - 2;
    return unsigned(i);
}

// One output row. The row's own colour P (red or blue, at channel p) sits on
// the columns of parity pParity, green on the others; the other colour S is
// on the rows above and below. At a P site: P own, green the orthogonal
// mean, S the diagonal mean. At a green site: green own, P the horizontal
// mean, S the vertical one.
// P, the row's own channel, is a template argument so that the stores have
// fixed offsets.
template <class T, unsigned P>
class TRow {
public:
    static constexpr unsigned pc = P, sc = 2 - P;

    TRow(const T* up, const T* mid, const T* down, T* out) : u(up), m(mid), d(down), o(out) {}

    inline void PSite(unsigned x, unsigned l, unsigned r) const
    {
        T* px = o + std::size_t(x) * 3;
        px[pc] = m[x];
        px[1] = T((unsigned(m[l]) + m[r] + u[x] + d[x] + 2) >> 2);
        px[sc] = T((unsigned(u[l]) + u[r] + d[l] + d[r] + 2) >> 2);
    }
    inline void GSite(unsigned x, unsigned l, unsigned r) const
    {
        T* px = o + std::size_t(x) * 3;
        px[pc] = T((unsigned(m[l]) + m[r] + 1) >> 1);
        px[1] = m[x];
        px[sc] = T((unsigned(u[x]) + d[x] + 1) >> 1);
    }
    inline void Site(unsigned x, unsigned l, unsigned r, bool pSite) const
    {
        if (pSite) PSite(x, l, r);
        else GSite(x, l, r);
    }

    void Run(unsigned width, unsigned pParity) const
    {
        Site(0, Mirror(-1, width), Mirror(1, width), pParity == 0);
        if (width < 2) return;
        // The interior in pairs, so that each loop body knows its sites.
        unsigned x = 1;
        const unsigned last = width - 1;
        if ((1u & 1u) == pParity) {
            for (; x + 1 < last; x += 2) {
                PSite(x, x - 1, x + 1);
                GSite(x + 1, x, x + 2);
            }
        } else {
            for (; x + 1 < last; x += 2) {
                GSite(x, x - 1, x + 1);
                PSite(x + 1, x, x + 2);
            }
        }
        for (; x < last; ++x) Site(x, x - 1, x + 1, (x & 1u) == pParity);
        Site(last, last - 1, Mirror(long(width), width), (last & 1u) == pParity);
    }

private:
    const T* u;
    const T* m;
    const T* d;
    T* o;
};

template <class T>
void Demosaic(const T* src, T* dst, unsigned width, unsigned height, EBayerPattern pattern)
{
    if (width == 0 || height == 0) return;
    const unsigned redX = pattern & 1u, redY = (pattern >> 1) & 1u;
    for (unsigned y = 0; y < height; ++y) {
        const T* up = src + std::size_t(Mirror(long(y) - 1, height)) * width;
        const T* mid = src + std::size_t(y) * width;
        const T* down = src + std::size_t(Mirror(long(y) + 1, height)) * width;
        T* out = dst + std::size_t(y) * width * 3;
        const bool redRow = (y & 1u) == redY;
        // Red rows hold red on redX's columns, blue rows blue on the others.
        if (redRow) TRow<T, 0>(up, mid, down, out).Run(width, redX);
        else TRow<T, 2>(up, mid, down, out).Run(width, 1u - redX);
    }
}

} // namespace

void DemosaicBilinear(const uint8_t* src, uint8_t* dst, unsigned width, unsigned height, EBayerPattern pattern)
{
    Demosaic(src, dst, width, height, pattern);
}

void DemosaicBilinear(const uint16_t* src, uint16_t* dst, unsigned width, unsigned height, EBayerPattern pattern)
{
    Demosaic(src, dst, width, height, pattern);
}

} // namespace orv::reduce
