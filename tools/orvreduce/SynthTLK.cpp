// synth --pixel-type TLK-RV / TLK-MX: the known scene behind the camera
// header row of the TLK family, at 30 frames a second. The headers exercise
// what the filters decode: IRIG time (unlocked for the first two frames),
// triggers, temperatures, and the lens block in turn in its four forms
// (version 0, version 1 with the long and the short layout, the focus-only
// block).
#include <cstring>
#include <vector>

#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/TLKHeader.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tools/orvreduce/Synth.h"

namespace orv::reduce::cli {

namespace {

class CHeaderWriter {
public:
    explicit CHeaderWriter(unsigned char* row) : m_row(row) { std::memset(m_row, 0, kTLKHeaderSize); }
    void U8(unsigned at, unsigned v) { m_row[at] = uint8_t(v); }
    void U16(unsigned at, unsigned v) { U8(at, v & 0xFF), U8(at + 1, (v >> 8) & 0xFF); }
    void U32(unsigned at, uint32_t v) { U16(at, v & 0xFFFF), U16(at + 2, v >> 16); }
    void HiLo(unsigned at, uint32_t v) { U16(at, v >> 16), U16(at + 2, v & 0xFFFF); }

private:
    unsigned char* m_row;
};

// Hundredths of a kelvin of a Celsius temperature.
unsigned Kelvin100(double celsius) { return unsigned(celsius * 100.0 + 27315.0 + 0.5); }

void WriteHeader(unsigned char* row, unsigned f)
{
    CHeaderWriter h(row);
    h.U8(0, 2);
    h.U8(1, 1); // 11.1 MHz
    // 30 frames a second from day 200, 12:00:00.
    const unsigned second = f / 30, micro = (f % 30) * 33333;
    const uint32_t irig = (f >= 2 ? 1u << 31 : 0) | 200u << 18 | (12u + second / 3600 % 12) << 12 |
                          (second / 60 % 60) << 6 | (second % 60);
    h.HiLo(2, irig);
    h.HiLo(6, micro);
    unsigned status = 0x10 | 0x08;    // video and GigE NUC on, preset 0
    if (f % 10 == 5) status |= 0x8000; // trigger
    if (f == 0) status |= 0x4000;      // record start
    if (f % 20 < 2) status |= 0x20;    // flag in the field of view
    h.U16(10, status);
    h.U16(12, Kelvin100(30.0)), h.U16(14, Kelvin100(28.5)), h.U16(16, Kelvin100(35.0));
    h.U16(18, 7700); // 77 K
    h.U32(20, 1000 + f);
    h.U32(24, 11100); // 1 ms
    h.U16(30, 2);
    const unsigned fpa[5] = {0x0102, 0x0304, 0x0506, 0x0708, 0x090A};
    for (unsigned i = 0; i < 5; ++i) h.U16(34 + 2 * i, fpa[i]);
    h.U16(44, 16000);
    h.U32(50, 370000); // 30 Hz
    h.U16(54, 16383);
    h.U8(58, 1), h.U8(59, 19), h.U8(60, 3), h.U8(61, 4);
    h.U16(62, 250);
    h.U16(64, Kelvin100(40.0)), h.U16(66, Kelvin100(45.0)), h.U16(68, Kelvin100(42.0)), h.U16(70, Kelvin100(25.0));
    h.U16(72, 1200), h.U16(74, 3300), h.U16(76, 5000);
    h.U8(88, 0x01);
    h.U16(90, 14), h.U16(92, 1234), h.U16(94, 7);
    // The lens zooms slowly from 25 mm.
    const unsigned focal = 250 + f % 50;
    switch (f % 4) {
    case 0: // version 0, full layout
        h.U16(96, 1);
        h.U32(98, focal);
        h.U32(102, uint32_t(-1200) & 0xFFFFFF);
        h.U32(106, 5400 + f);
        h.U16(110, 215), h.U16(112, 248), h.U16(114, 201), h.U16(116, 199), h.U16(118, 230);
        break;
    case 1: // version 1, long layout
    case 2: // version 1, short layout
        h.U8(96, f % 4 == 1 ? 1 : 3), h.U8(97, 1);
        h.U16(98, focal & 0xFFFF), h.U8(100, focal >> 16);
        h.U16(101, uint32_t(-1200) & 0xFFFF), h.U8(103, 0xFF);
        h.U16(104, 5400 + f), h.U8(106, 0);
        h.U16(107, 215), h.U16(109, 248), h.U16(111, 201), h.U16(113, 199), h.U16(115, 230);
        break;
    default: // focus encoder only
        h.U8(96, 1), h.U8(97, 2);
        h.U16(98, 5400 + f);
        break;
    }
    h.U8(122, f / 10 % 3);
    h.U8(123, 1);
    h.U16(124, 150);
}

} // namespace

bool SynthTLKHandles(SGuid pixelType) { return pixelType == guidTLKRV || pixelType == guidTLKMX; }

int SynthTLK(const SSynthRequest& r)
{
    if (r.width * 2 < kTLKHeaderSize)
        return Fail("synth: TLK frames need a width of at least %u to hold their header row", kTLKHeaderSize / 2);
    CReduceObjectArray objs;
    if (!FillSynthObjects(objs, r.width, r.height)) return Fail("synth: could not build the calibration objects");
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    info->pixelType = r.pixelType;
    info->camera = r.pixelType == guidTLKRV ? "orvreduce synthetic TLK-RV" : "orvreduce synthetic TLK-MX";

    const size_t rowBytes = size_t(r.width) * 2;
    const auto frameSize = uint32_t(rowBytes * (r.height + 1));
    CSynthFile out(r.path);
    if (!out.Start(objs, frameSize)) return kExitFailure;
    std::vector<unsigned char> frame(frameSize);
    CProgress progress("synth", r.frames);
    for (unsigned f = 0; f < r.frames; ++f) {
        WriteHeader(frame.data(), f);
        std::memset(frame.data() + kTLKHeaderSize, 0, rowBytes - kTLKHeaderSize);
        for (unsigned y = 0; y < r.height; ++y) {
            unsigned char* p = frame.data() + rowBytes * (y + 1);
            for (unsigned x = 0; x < r.width; ++x, p += 2) {
                const uint16_t c = SynthSceneCounts(x, y, f, r.width, r.height, r.frames);
                p[0] = uint8_t(c & 0xFF);
                p[1] = uint8_t(c >> 8);
            }
        }
        if (!out.AddFrame(frame.data(), frameSize, f)) return kExitFailure;
        progress.Step(f + 1);
    }
    unsigned counts[4] = {r.frames, 0, 0, 0};
    return out.Finish(counts) ? 0 : kExitFailure;
}

} // namespace orv::reduce::cli
