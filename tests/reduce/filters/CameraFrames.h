#pragma once
// Camera frames written byte by byte at the documented offsets, in either
// byte order, without the filters' own tables.
#include <cstdint>
#include <cstring>
#include <vector>

namespace orv::reduce::test {

struct CBytes {
    std::vector<unsigned char> b;
    explicit CBytes(size_t n) : b(n, 0) {}
    template <class T>
    void Put(size_t at, T value, bool bigEndian = false)
    {
        unsigned char raw[sizeof(T)];
        std::memcpy(raw, &value, sizeof(T));
        for (size_t i = 0; i < sizeof(T); ++i) b.at(at + i) = bigEndian ? raw[sizeof(T) - 1 - i] : raw[i];
    }
    template <class T>
    T Get(size_t at) const
    {
        T v;
        std::memcpy(&v, &b.at(at), sizeof(T));
        return v;
    }
};

// Values of the measurement record that the filters read, by offset.
struct SRecordValues {
    uint16_t counter = 0x1234;
    float objPar[8] = {0.95f, 3.5f, 290.0f, 291.0f, 292.0f, 0.9f, 0.8f, 0.45f}; // 32 .. 60
    float rbf[3] = {14000.0f, 1400.0f, 1.25f};                                 // 88, 92, 96
    float atm[5] = {0.006f, 0.012f, -0.003f, -0.004f, 1.9f};                  // 112 .. 128
    float ranges[6] = {400.0f, 250.0f, 420.0f, 240.0f, 410.0f, 245.0f};       // 144 .. 164
    int32_t offset = -1200;                                                    // 776
    float gain = 0.0025f;                                                      // 780
    uint16_t imgLow = 100, imgHigh = 60000, nonLinear = 1;                     // 784, 786, 788
    float nonLinearFactor = 1.5e-6f;                                           // 792
    int32_t nonLinearZero = 7000;                                              // 796
    uint32_t seconds = 1700000000, millis = 250;                               // 900, 904
    uint32_t triggerCount = 0;                                                 // 968
    uint16_t infoInvalid = 0;                                                  // 1130
};

// The record as the camera writes it. Big-endian records reverse every field
// the camera's map swaps; bytes 112 to 115 are left as they are, since the
// map leaves them alone.
inline void WriteRecord(CBytes& f, size_t at, const SRecordValues& v, bool bigEndian)
{
    f.Put<uint16_t>(at + 0, 2, bigEndian);
    f.Put<uint16_t>(at + 24, v.counter, bigEndian);
    for (int i = 0; i < 8; ++i) f.Put<float>(at + 32 + 4 * i, v.objPar[i], bigEndian);
    for (int i = 0; i < 3; ++i) f.Put<float>(at + 88 + 4 * i, v.rbf[i], bigEndian);
    for (int i = 0; i < 5; ++i) f.Put<float>(at + 112 + 4 * i, v.atm[i], bigEndian && i > 0);
    for (int i = 0; i < 6; ++i) f.Put<float>(at + 144 + 4 * i, v.ranges[i], bigEndian);
    f.Put<int32_t>(at + 776, v.offset, bigEndian);
    f.Put<float>(at + 780, v.gain, bigEndian);
    f.Put<uint16_t>(at + 784, v.imgLow, bigEndian);
    f.Put<uint16_t>(at + 786, v.imgHigh, bigEndian);
    f.Put<uint16_t>(at + 788, v.nonLinear, bigEndian);
    f.Put<float>(at + 792, v.nonLinearFactor, bigEndian);
    f.Put<int32_t>(at + 796, v.nonLinearZero, bigEndian);
    f.Put<uint32_t>(at + 900, v.seconds, bigEndian);
    f.Put<uint32_t>(at + 904, v.millis, bigEndian);
    f.Put<uint32_t>(at + 968, v.triggerCount, bigEndian);
    f.Put<uint16_t>(at + 1130, v.infoInvalid, bigEndian);
}

inline int64_t CameraTicks(uint32_t seconds, uint32_t millis)
{
    return int64_t(seconds) * 10000000 + 0x19DB1DED53E8000LL + int64_t(millis) * 10000;
}

} // namespace orv::reduce::test
