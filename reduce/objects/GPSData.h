#pragma once
// SGPSData: a fixed 184-byte position record as cameras deliver it. The
// fields are named by offset; their meaning belongs to whoever fills them.
#include <cstddef>
#include <cstdint>

namespace orv {

struct SGPSData {
    uint32_t valid;         // 0: non-zero means valid
    uint8_t bytes4[12];     // 4
    double dbl16;           // 16
    double dbl24;           // 24
    float flt32;            // 32
    uint32_t word36;        // 36
    uint8_t bytes40[24];    // 40
    float flt64;            // 64
    uint8_t bytes68[6];     // 68
    uint16_t short74;       // 74
    float flt76;            // 76
    float flt80;            // 80
    float flt84;            // 84
    char datum[28];         // 88, "WGS84" after invalidate()
    uint32_t word116;       // 116
    double dbl120;          // 120
    double dbl128;          // 128
    float flt136;           // 136
    float flt140;           // 140
    uint8_t bytes144[32];   // 144
    uint16_t short176;      // 176
    uint16_t byteOrderMark; // 178, 53 in the writer's byte order
    uint32_t word180;       // 180

    static constexpr uint16_t kByteOrderMark = 53;

    SGPSData() { invalidate(); }

    bool isValid() const { return valid != 0; }
    // The record was written with the other byte order.
    bool isSwapped() const { return byteOrderMark == 0x3500; }
    // Reverses the bytes of every multi-byte number; text and byte areas stay.
    void swap();
    void invalidate();
};

static_assert(sizeof(SGPSData) == 184, "SGPSData is 184 bytes");
static_assert(offsetof(SGPSData, dbl16) == 16 && offsetof(SGPSData, flt64) == 64 &&
                  offsetof(SGPSData, short74) == 74 && offsetof(SGPSData, datum) == 88 &&
                  offsetof(SGPSData, dbl120) == 120 && offsetof(SGPSData, bytes144) == 144 &&
                  offsetof(SGPSData, byteOrderMark) == 178 && offsetof(SGPSData, word180) == 180,
              "SGPSData offsets");

} // namespace orv
