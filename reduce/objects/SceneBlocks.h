#pragma once
// Blocks that cameras deliver for display: colour palette, fusion settings
// and visual image data, and the RGB triple of palette tables. Only the
// parts named here are read by this library.
#include <cstdint>

namespace orv {

struct SRGB {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};
static_assert(sizeof(SRGB) == 3, "SRGB is three bytes");

// A camera's colour palette block. Colours are stored as three bytes of
// luminance and colour differences; note the two orders.
struct SColorPal {
    static constexpr unsigned kEntriesOffset = 112;

    uint16_t numEntries;      // 0
    uint8_t bytes2[4];        // 2
    uint8_t color1[3];        // 6: Y, Cr, Cb
    uint8_t color2[3];        // 9: Y, Cr, Cb
    uint8_t bytes12[100];     // 12
    uint8_t entries[256][3];  // 112: Y, Cb, Cr each
};
static_assert(sizeof(SColorPal) == 880, "SColorPal layout");

// A camera's fusion settings block; carried, never interpreted.
struct SFusion {
    uint8_t bytes[1];
};

// A camera's visual image block; carried and freed, never interpreted.
struct SVisualPixelData {
    uint8_t bytes[1];
};

} // namespace orv
