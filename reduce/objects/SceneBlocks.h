#pragma once
// Blocks that cameras deliver for display: colour palette, fusion settings
// and visual image data, and the RGB triple of palette tables. Only the
// parts named here are read by this library.
#include <cstdint>

#include "reduce/objects/PackedRecord.h"

namespace orv {

struct SRGB {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
};
static_assert(sizeof(SRGB) == 3, "SRGB is three bytes");

// A camera's colour palette block, read in place over the bytes held (a
// block may be cut short). Colours are stored as three bytes of luminance and
// colour differences; note the two orders.
namespace reduce::colorPalRecord {
inline constexpr uint32_t kSize = 880;
inline constexpr TAt<uint16_t> numEntries{0};
inline constexpr SRecordField color1{6, 3};    // Y, Cr, Cb
inline constexpr SRecordField color2{9, 3};    // Y, Cr, Cb
inline constexpr SRecordField entries{112, 768}; // 256 of Y, Cb, Cr
inline constexpr SRecordField fields[] = {numEntries, {2, 4}, color1, color2, {12, 100}, entries};
static_assert(RecordFieldsTile(fields, kSize), "colour palette fields tile 0 to 880");
} // namespace reduce::colorPalRecord

struct SColorPal {
    static constexpr unsigned kEntriesOffset = reduce::colorPalRecord::entries.offset;
    uint8_t bytes[reduce::colorPalRecord::kSize];
};

// A camera's fusion settings block; carried, never interpreted.
struct SFusion {
    uint8_t bytes[1];
};

// A camera's visual image block; carried and freed, never interpreted.
struct SVisualPixelData {
    uint8_t bytes[1];
};

} // namespace orv
