// synth --pixel-type: recordings of the V410, R7Q, Sarnet and MX515 cameras,
// with the frame layouts their filters decode, so that those decoders can be
// tried without a camera.
//
// The scene is synth's (a 20 to 35 C gradient and a 120 C disc moving across),
// stored as the cameras store it:
//   V410 IR (F7M0)           pixels, camera block, record little-endian
//   V410 IR (FNM0)           pixels, camera block, record big-endian
//   V410 IR (GigE)           big-endian pixels, GigE prefix (digital inputs,
//                            mark, counter), camera block, record big-endian
//   V410 IR (GigE, Flipped)  the image turned by 180 degrees, prefix, block
//   R7Q IR (MJLS)            JPEG-LS compressed pixels, camera block (big-endian)
//   R7Q Screen (MJPG)        a JPEG image of the scene in false colour
//   V410 BGR (24-bit)        false colour, rows bottom first, blue first
//   V410 YUV (UYVY), (YUY2)  false colour as 4:2:2 YUV; Sarnet and MX515 video too
//   Sarnet IR, MX515 IR      pixels and a 1148-byte header, big-endian
// Counts follow the Ombria model the record carries: image = R / (exp(B / T)
// - F) / gain, T in Kelvin, with emissivity 1 and distance 0, so that the
// factory calibration gives the scene back.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <jpeglib.h> // after <cstdio>, which it needs

#define CHARLS_NO_DEPRECATED_WARNING // the classic one-call encoder
#include <charls/charls.h>

#include "orv/PixelType.h"
#include "reduce/filters/BasicData.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "tools/orvreduce/Synth.h"

namespace orv::reduce::cli {

namespace {

enum class ELayout { block, gige, mjls, mjpg, bgr, uyvy, yuy2, header };

struct SCameraType {
    SGuid id;
    ELayout layout;
    bool bigEndian; // the record or header as a big-endian camera writes it
};

const SCameraType kCameraTypes[] = {
    {guidV410F7M0, ELayout::block, false}, {guidV410FNM0, ELayout::block, true},
    {guidV410GIGE, ELayout::gige, true},   {guidV410GIGEFlip, ELayout::gige, false},
    {guidMJLSIR, ELayout::mjls, true},     {guidMJPG, ELayout::mjpg, false},
    {guidV410BGR8, ELayout::bgr, false},   {guidV410UYVY, ELayout::uyvy, false},
    {guidV410YUY2, ELayout::yuy2, false},  {guidSarnetF7M0, ELayout::header, true},
    {guidSarnetUYVY, ELayout::uyvy, false}, {guidMX515F7M2, ELayout::header, true},
    {guidMX515F7M3, ELayout::uyvy, false}, {guidMX515UYVY, ELayout::uyvy, false},
};

// The calibration in the record.
constexpr float kR = 15000.0f, kB = 1400.0f, kF = 1.0f, kGain = 0.01f;
constexpr uint32_t kStartSeconds = 1700000000; // 2023-11-14
constexpr size_t kHeadSize = 100;

double CameraSceneCelsius(unsigned x, unsigned y, unsigned f, unsigned w, unsigned h, unsigned n)
{
    const double cx = w / 4.0 + f * (w / 2.0) / (n > 1 ? n - 1 : 1), cy = h / 2.0;
    const double r = std::fmin(w, h) / 8.0, dx = x - cx, dy = y - cy;
    return dx * dx + dy * dy <= r * r ? 120.0 : 20.0 + 15.0 * x / (w - 1);
}

uint16_t OmbriaCounts(double celsius)
{
    const double objSig = kR / (std::exp(kB / (celsius + 273.15)) - kF);
    return static_cast<uint16_t>(std::fmin(std::nearbyint(objSig / kGain), 65535.0));
}

// False colour: blue through green to red over 15 to 125 C.
void FalseColour(double celsius, unsigned char* rgb)
{
    const double t = std::fmin(std::fmax((celsius - 15.0) / 110.0, 0.0), 1.0);
    rgb[0] = static_cast<unsigned char>(255 * t);
    rgb[1] = static_cast<unsigned char>(255 * (1 - std::fabs(2 * t - 1)));
    rgb[2] = static_cast<unsigned char>(255 * (1 - t));
}

template <class T>
void PutLE(std::vector<unsigned char>& b, size_t at, T v)
{
    std::memcpy(b.data() + at, &v, sizeof v);
}

void PutBE16(unsigned char* p, uint16_t v)
{
    p[0] = static_cast<unsigned char>(v >> 8);
    p[1] = static_cast<unsigned char>(v);
}

// The measurement record of frame f in our order, then swapped if wanted.
SBasicData Record(unsigned f, unsigned height, bool bigEndian)
{
    SBasicFields v;
    v.mark = kBasicDataInOrder;
    v.height = static_cast<uint16_t>(height);
    v.lastRow = static_cast<uint16_t>(height - 1);
    v.frameCounter = static_cast<uint16_t>(f);
    v.emissivity = 1.0f;
    v.distance = 0.0f;
    v.reflectedTemp = v.atmosphereTemp = v.extOpticsTemp = 293.15f;
    v.extOpticsTransmission = 1.0f;
    v.relativeHumidity = 0.5f;
    v.R = kR;
    v.B = kB;
    v.F = kF;
    v.alpha1 = 0.006569f;
    v.alpha2 = 0.01262f;
    v.beta1 = -0.002276f;
    v.beta2 = -0.00667f;
    v.X = 1.9f;
    v.rangeHighTemp = 773.15f;
    v.rangeLowTemp = 223.15f;
    v.clampHighTemp = 573.15f;
    v.clampLowTemp = 223.15f;
    v.validHighTemp = 473.15f;
    v.validLowTemp = 233.15f;
    v.gain = kGain;
    v.imgHigh = 65535;
    v.seconds = kStartSeconds + f / 30;
    v.millis = f % 30 * 33;
    v.triggerCount = f / 3;
    SBasicData r{};
    basicData::Table::Write(v, r.bytes);
    if (bigEndian) r.ByteSwap();
    return r;
}

// Camera block: head, then the record at kHeadSize.
void PutBlock(std::vector<unsigned char>& b, size_t at, const SBasicData& r, bool pixelsBigEndian)
{
    PutLE<uint32_t>(b, at, 0x464646);
    PutLE<uint16_t>(b, at + 64, 32);
    PutLE<uint32_t>(b, at + 76, kHeadSize);
    PutLE<uint32_t>(b, at + 80, SBasicData::kSize);
    PutLE<uint16_t>(b, at + 96, 1);
    PutLE<uint16_t>(b, at + 98, pixelsBigEndian ? 1 : 0);
    std::memcpy(b.data() + at + kHeadSize, r.bytes, SBasicData::kSize);
}

bool EncodeJpeg(const std::vector<unsigned char>& rgb, unsigned w, unsigned h, std::vector<unsigned char>& out)
{
    jpeg_compress_struct c{};
    jpeg_error_mgr err{};
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    unsigned char* mem = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&c, &mem, &size);
    c.image_width = w;
    c.image_height = h;
    c.input_components = 3;
    c.in_color_space = JCS_RGB;
    jpeg_set_defaults(&c);
    jpeg_set_quality(&c, 90, TRUE);
    jpeg_start_compress(&c, TRUE);
    while (c.next_scanline < h) {
        JSAMPROW row = const_cast<unsigned char*>(rgb.data() + size_t(c.next_scanline) * w * 3);
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    const bool fits = size <= out.size();
    if (fits) std::memcpy(out.data(), mem, size);
    free(mem);
    return fits;
}

// RGB to studio-range 4:2:2 YUV, the inverse of the filters' conversion.
void RGBToYUVPair(const unsigned char* a, const unsigned char* b, unsigned char* out, bool uyvy)
{
    auto y = [](const unsigned char* p) { return uint8_t(((66 * p[0] + 129 * p[1] + 25 * p[2] + 128) >> 8) + 16); };
    const int r = (a[0] + b[0]) / 2, g = (a[1] + b[1]) / 2, bl = (a[2] + b[2]) / 2;
    const auto u = uint8_t(((-38 * r - 74 * g + 112 * bl + 128) >> 8) + 128);
    const auto v = uint8_t(((112 * r - 94 * g - 18 * bl + 128) >> 8) + 128);
    if (uyvy) {
        out[0] = u, out[1] = y(a), out[2] = v, out[3] = y(b);
    } else {
        out[0] = y(a), out[1] = u, out[2] = y(b), out[3] = v;
    }
}

size_t FrameStride(ELayout layout, size_t n)
{
    switch (layout) {
    case ELayout::block: return n * 2 + kHeadSize + SBasicData::kSize;
    case ELayout::gige: return n * 2 + 32 + kHeadSize + SBasicData::kSize;
    case ELayout::mjls: return n * 2 + n / 2 + 4096 + kHeadSize + SBasicData::kSize;
    case ELayout::mjpg: return n * 3 + 4096;
    case ELayout::bgr: return n * 3;
    case ELayout::uyvy:
    case ELayout::yuy2: return n * 2;
    case ELayout::header: return n * 2 + SMX515Header::kSize;
    }
    return 0;
}

bool WriteFrame(const SCameraType& t, unsigned f, unsigned w, unsigned h, unsigned frames,
                std::vector<unsigned char>& b)
{
    const size_t n = size_t(w) * h;
    std::fill(b.begin(), b.end(), 0);
    std::vector<uint16_t> counts(n);
    std::vector<unsigned char> rgb(n * 3);
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            const double c = CameraSceneCelsius(x, y, f, w, h, frames);
            counts[size_t(y) * w + x] = OmbriaCounts(c);
            FalseColour(c, &rgb[(size_t(y) * w + x) * 3]);
        }
    switch (t.layout) {
    case ELayout::block:
    case ELayout::gige: {
        const bool gige = t.layout == ELayout::gige;
        const bool flip = t.id == guidV410GIGEFlip;
        for (size_t i = 0; i < n; ++i) {
            const uint16_t v = counts[flip ? n - 1 - i : i];
            if (gige && t.bigEndian) PutBE16(&b[2 * i], v);
            else PutLE<uint16_t>(b, 2 * i, v);
        }
        size_t block = n * 2;
        if (gige) {
            unsigned char* p = &b[block];
            p[2] = f % 5 == 0 ? 0x01 : 0x00; // mark
            p[3] = f % 7 == 0 ? 0x04 : 0x00;
            p[10] = f % 2;
            p[11] = f / 2 % 2;
            PutBE16(p + 12, static_cast<uint16_t>(f));
            block += 32;
        }
        PutBlock(b, block, Record(f, h, t.bigEndian), gige && t.bigEndian);
        return true;
    }
    case ELayout::mjls: {
        JlsParameters params{};
        params.width = static_cast<int32_t>(w);
        params.height = static_cast<int32_t>(h);
        params.bitsPerSample = 16;
        params.components = 1;
        size_t length = 0;
        const size_t room = b.size() - 4 - kHeadSize - SBasicData::kSize;
        if (JpegLsEncode(b.data() + 4, room, &length, counts.data(), n * 2, &params, nullptr) !=
            CharlsApiResultType::OK)
            return false;
        b[0] = uint8_t(length >> 24), b[1] = uint8_t(length >> 16), b[2] = uint8_t(length >> 8),
        b[3] = uint8_t(length);
        PutBlock(b, 4 + length, Record(f, h, t.bigEndian), false);
        return true;
    }
    case ELayout::mjpg: return EncodeJpeg(rgb, w, h, b);
    case ELayout::bgr:
        for (unsigned y = 0; y < h; ++y)
            for (unsigned x = 0; x < w; ++x) {
                const unsigned char* s = &rgb[(size_t(h - 1 - y) * w + x) * 3];
                unsigned char* d = &b[(size_t(y) * w + x) * 3];
                d[0] = s[2], d[1] = s[1], d[2] = s[0];
            }
        return true;
    case ELayout::uyvy:
    case ELayout::yuy2:
        for (size_t i = 0; i + 1 < n; i += 2)
            RGBToYUVPair(&rgb[i * 3], &rgb[i * 3 + 3], &b[i * 2], t.layout == ELayout::uyvy);
        return true;
    case ELayout::header: {
        for (size_t i = 0; i < n; ++i) PutLE<uint16_t>(b, 2 * i, counts[i]);
        SBasicData r = Record(f, h, false);
        SMX515Header header;
        std::memcpy(header.bytes, r.bytes, SMX515Header::kSize);
        if (t.bigEndian) header.ByteSwap();
        std::memcpy(&b[n * 2], header.bytes, SMX515Header::kSize);
        return true;
    }
    }
    return false;
}

} // namespace

namespace {
const SCameraType* CameraType(SGuid pixelType)
{
    for (const SCameraType& c : kCameraTypes)
        if (c.id == pixelType) return &c;
    return nullptr;
}
} // namespace

bool SynthV410Handles(SGuid pixelType) { return CameraType(pixelType) != nullptr; }

int SynthV410(const SSynthRequest& r)
{
    const SGuid pixelType = r.pixelType;
    const SCameraType* t = CameraType(pixelType);
    if (!t) return Fail("synth: not a V410, R7Q, Sarnet or MX515 pixel type");
    const bool colour = t->layout == ELayout::mjpg || t->layout == ELayout::bgr || t->layout == ELayout::uyvy ||
                        t->layout == ELayout::yuy2;
    if ((t->layout == ELayout::uyvy || t->layout == ELayout::yuy2) && r.width % 2)
        return Fail("synth: YUV frames need an even width, not %u", r.width);

    CReduceObjectArray objs;
    auto info = objs.GetSourceInfo(true);
    if (!info) return Fail("synth: could not build the source info");
    info->camera = "orvreduce synthetic camera";
    info->cameraModel = PixelTypeName(pixelType);
    info->pixelType = pixelType;
    info->dataType = colour ? dtRGB24 : dtUInt16;
    info->baseUnit = colour ? unitRGB24 : unitCounts;
    info->imageWidth = info->frameWidth = static_cast<uint16_t>(r.width);
    info->imageHeight = info->frameHeight = static_cast<uint16_t>(r.height);
    info->numPresets = 1;
    info->presets[0].available = true;
    info->presets[0].frameRate = 30.0f;
    info->presets[0].frameRateValid = true;
    info->time = CDateTime::Now();
    info->timeValid = true;
    info->valid = true;
    if (!colour) {
        // The recording starts with the calibration of its first frame, as a
        // camera's does; every frame's block then brings its own.
        SBasicFields first;
        basicData::Table::Read(Record(0, r.height, false).bytes, first);
        auto params = objs.GetObjectParameters(true);
        auto cal = objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true)
                       .DynamicCast<COmbriaFactoryCalReduceObject>();
        if (!params || !cal) return Fail("synth: could not build the calibration objects");
        BasicDataToObjectParameters(first, *params);
        BasicDataToFactoryCal(first, *cal);
        params->valid = true;
    }

    const size_t stride = FrameStride(t->layout, size_t(r.width) * r.height);
    CSynthFile out(r.path);
    if (!out.Start(objs, static_cast<uint32_t>(stride))) return kExitFailure;
    std::vector<unsigned char> frame(stride);
    CProgress progress("synth", r.frames);
    for (unsigned f = 0; f < r.frames; ++f) {
        if (!WriteFrame(*t, f, r.width, r.height, r.frames, frame))
            return Fail("%s: frame %u does not fit its slot of %zu bytes", r.path.c_str(), f, stride);
        if (!out.AddFrame(frame.data(), static_cast<uint32_t>(stride), f)) return kExitFailure;
        progress.Step(f + 1);
    }
    unsigned int counts[4] = {r.frames, 0, 0, 0};
    return out.Finish(counts) ? 0 : kExitFailure;
}

} // namespace orv::reduce::cli
