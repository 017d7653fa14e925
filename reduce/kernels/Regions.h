#pragma once
// Region forms shared by every pixel kernel. Coordinates are image
// coordinates and both ends of every range are inclusive.
#include <cstdint>

namespace orv::reduce {

// Rectangle; a whole frame of width w and height h is (0, 0, h - 1, w - 1).
// bottom < top or right < left is empty.
struct SArea {
    uint16_t top = 0;
    uint16_t left = 0;
    uint16_t bottom = 0;
    uint16_t right = 0;
};

// One horizontal run of a row; a region is a TArray of them, taken in array
// order.
struct SScanLine {
    uint16_t row = 0;
    uint16_t first = 0;
    uint16_t last = 0;
};

} // namespace orv::reduce
