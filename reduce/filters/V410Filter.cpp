#include "reduce/filters/V410Filter.h"

#include <algorithm>
#include <cstring>
#include <span>

#define CHARLS_NO_DEPRECATED_WARNING // JpegLsDecode is the call this format is decoded with
#include <charls/charls.h>

#include "orv/Convert.h"
#include "orv/Jpeg.h"
#include "reduce/filters/BasicData.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/Yuv.h"

namespace orv::reduce {
namespace {

using Bytes = std::span<const unsigned char>;

enum class EGroup { none, ir, mjls, bgr, mjpg, uyvy, yuy2 };

EGroup GroupOf(SGuid t)
{
    if (t == guidV410F7M0 || t == guidV410FNM0 || t == guidV410GIGE || t == guidV410GIGEFlip) return EGroup::ir;
    if (t == guidMJLSIR) return EGroup::mjls;
    if (t == guidV410BGR8) return EGroup::bgr;
    if (t == guidMJPG) return EGroup::mjpg;
    if (t == guidV410UYVY || t == guidUYVY) return EGroup::uyvy;
    if (t == guidV410YUY2) return EGroup::yuy2;
    return EGroup::none; // guidYUY2 and guidBGR8 themselves included
}

bool Infrared(EGroup g) { return g == EGroup::ir || g == EGroup::mjls; }

// The head of a camera block: its magic and the two directory entries, the
// first of which points at the SBasicData.
struct SBlockHead {
    uint32_t magic = 0;
    uint16_t kind1 = 0;       // must be 32
    uint32_t basicOffset = 0; // from the block's start
    uint32_t basicSize = 0;
    uint16_t kind2 = 0;       // must be 1
    uint16_t pixelOrder = 0;  // 1: the IR pixels are big-endian
};
using BlockHeadView =
    TRecordView<SBlockHead, 100, TField<&SBlockHead::magic, 0>, TField<&SBlockHead::kind1, 64>,
                TField<&SBlockHead::basicOffset, 76>, TField<&SBlockHead::basicSize, 80>,
                TField<&SBlockHead::kind2, 96>, TField<&SBlockHead::pixelOrder, 98>>;
inline constexpr TAt<uint32_t> kBasicOffsetAt{76};

// The GigE prefix between the pixels and the block; kept whole besides.
struct SGigEPrefix {
    uint8_t mark = 0;   // bits 0 to 2: mark flags
    uint8_t flags2 = 0; // bits 0 to 2 as the mark byte
    uint8_t digitalIn1 = 0;
    uint8_t digitalIn2 = 0;
    uint16_t counter = 0; // stored big-endian
};
using GigEPrefixView =
    TRecordView<SGigEPrefix, CV410Filter::kPrefixSize, TField<&SGigEPrefix::mark, 2>,
                TField<&SGigEPrefix::flags2, 3>, TField<&SGigEPrefix::digitalIn1, 10>,
                TField<&SGigEPrefix::digitalIn2, 11>, TField<&SGigEPrefix::counter, 12>>;

uint16_t Swap16(uint16_t v) { return static_cast<uint16_t>(v << 8 | v >> 8); }

uint32_t BigEndian32(const unsigned char* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | p[2] << 8 | p[3]; }

bool MagicAt(Bytes frame, size_t offset)
{
    uint32_t word = 0;
    return GetAt(frame, offset, word) && word == CV410Filter::kBlockMagic;
}

// The camera block of an IR frame follows the pixels, at P, or at P + 32 after
// a GigE prefix. False when neither place holds the magic.
bool FindIRBlock(Bytes frame, size_t P, size_t& block, bool& prefix)
{
    prefix = false;
    if (MagicAt(frame, P)) {
        block = P;
        return true;
    }
    if (MagicAt(frame, P + CV410Filter::kPrefixSize)) {
        block = P + CV410Filter::kPrefixSize;
        prefix = true;
        return true;
    }
    return false;
}

// A camera block whose head and kinds pass, and its record copied out and put
// in our byte order. The camera trusts the record's offset; we check that the
// head and the record lie in the frame, and refuse the block otherwise.
struct SCameraBlock {
    SBlockHead head;
    SBasicData record;
    SBasicFields fields;
};

bool ReadCameraBlock(Bytes frame, size_t block, SCameraBlock& b)
{
    if (!BlockHeadView::ReadAt(frame, block, b.head)) return false;
    if (b.head.kind1 != 32 || b.head.kind2 != 1) return false;
    const size_t n = std::min<uint32_t>(b.head.basicSize, SBasicData::kSize);
    const size_t at = block + b.head.basicOffset;
    if (at > frame.size() || frame.size() - at < n) return false;
    // Only n bytes come from the camera; the rest of the record is zero.
    std::memcpy(b.record.bytes, frame.data() + at, n);
    std::memset(b.record.bytes + n, 0, SBasicData::kSize - n);
    if (Get(b.record.bytes, TAt<uint16_t>{0}) != kBasicDataInOrder) b.record.ByteSwap();
    basicData::Table::Read(b.record.bytes, b.fields);
    return true;
}

// A record field read in place, as the camera left it (no swap): at the offset
// the block names, when it lies in the frame.
template <class T>
bool RecordWordInPlace(Bytes frame, size_t block, uint32_t fieldOffset, T& value)
{
    uint32_t basicOffset = 0;
    if (!GetAt(frame, block + kBasicOffsetAt.offset, basicOffset)) return false;
    return GetAt(frame, block + size_t(basicOffset) + fieldOffset, value);
}

bool TimeInPlace(Bytes frame, size_t block, CDateTime& time)
{
    uint32_t seconds = 0, millis = 0;
    if (!RecordWordInPlace(frame, block, basicData::seconds::field.offset, seconds) ||
        !RecordWordInPlace(frame, block, basicData::millis::field.offset, millis))
        return false;
    time = BasicDataTime(seconds, millis);
    return true;
}

// The MJLS layout: 4-byte big-endian length L, L bytes of JPEG-LS, the block.
bool MJLSBlock(Bytes frame, uint32_t& length, SCameraBlock& b)
{
    if (frame.size() < 4) return false;
    length = BigEndian32(frame.data());
    if (frame.size() < uint64_t(length) + 8 || !MagicAt(frame, size_t(length) + 4)) return false;
    return ReadCameraBlock(frame, size_t(length) + 4, b);
}

// Output data types: 3 or 12 for infrared, 10 or 12 for colour.
bool TypeAllowed(EGroup g, EDataType t)
{
    return t == dtNoData || t == (Infrared(g) ? dtUInt16 : dtRGB24);
}

// Bytes a colour frame must hold for its decode (MJPG: its own stream).
uint64_t ColourBytes(EGroup g, uint64_t width, uint64_t height)
{
    switch (g) {
    case EGroup::bgr: return width * height * 3;
    case EGroup::uyvy:
    case EGroup::yuy2: return width * height / 2 * 4;
    default: return 0;
    }
}

void CopyIRPixels(uint16_t* out, const unsigned char* in, size_t n, bool swap, bool turn)
{
    if (!swap && !turn) {
        std::memcpy(out, in, n * 2);
        return;
    }
    if (turn) {
        // The whole image turned by 180 degrees: first input pixel last.
        for (size_t i = 0; i < n; ++i) {
            uint16_t v;
            std::memcpy(&v, in + 2 * i, 2);
            out[n - 1 - i] = swap ? Swap16(v) : v;
        }
        return;
    }
    for (size_t i = 0; i < n; ++i) {
        uint16_t v;
        std::memcpy(&v, in + 2 * i, 2);
        out[i] = Swap16(v);
    }
}

void DecodeBGR(unsigned char* out, const unsigned char* in, size_t width, size_t height)
{
    const size_t row = width * 3;
    for (size_t r = 0; r < height; ++r) {
        const unsigned char* s = in + (height - 1 - r) * row; // rows are stored bottom first
        unsigned char* d = out + r * row;
        for (size_t x = 0; x < width; ++x, s += 3, d += 3) {
            d[0] = s[2];
            d[1] = s[1];
            d[2] = s[0];
        }
    }
}

} // namespace

bool CV410Filter::HasPixels(SGuid pixelType) const { return GroupOf(pixelType) == EGroup::ir; }

bool CV410Filter::GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t, uint32_t,
                            void** pixels, int& stride)
{
    if (GroupOf(pixelType) != EGroup::ir) return false;
    if (pixels) *pixels = frame;
    stride = width * 2;
    return true;
}

bool CV410Filter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                             uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    const SOmbriaFrameObjects o = FetchOmbriaObjects(objects);
    preset = 0;
    const EGroup group = GroupOf(pixelType);
    if (group == EGroup::none || !TypeAllowed(group, pixels.type) || !o.complete()) return false;
    // "No data" never receives pixels, whatever pointer comes with it.
    const bool wantPixels = pixels.data && pixels.type != dtNoData;
    const Bytes bytes(frame, frame ? frameSize : 0);
    const size_t n = size_t(width) * height;
    CFrameInfoReduceObject& info = *o.info;

    if (Infrared(group)) {
        SCameraBlock b;
        bool prefix = false;
        uint32_t length = 0;
        if (group == EGroup::ir) {
            size_t block = 0;
            if (!FindIRBlock(bytes, n * 2, block, prefix) || !ReadCameraBlock(bytes, block, b)) return false;
        } else if (!MJLSBlock(bytes, length, b)) {
            return false;
        }
        SBasicFields& f = b.fields;
        f.height = height;
        f.lastRow = static_cast<uint16_t>(height - 1);
        BasicDataToObjectParameters(f, *o.params);
        BasicDataToFactoryCal(f, *o.cal);
        info.preset = 0;
        info.valid = f.infoInvalid == 0;
        info.extra.Clear();
        const unsigned char* prefixBytes = prefix ? frame + n * 2 : nullptr;
        if (prefix) {
            SGigEPrefix p;
            GigEPrefixView::Read(prefixBytes, p);
            info.extra.Add("DigitalIn1", CUInt8::ToString(p.digitalIn1), "Flag", "int");
            info.extra.Add("DigitalIn2", CUInt8::ToString(p.digitalIn2), "Flag", "int");
            info.extra.Add("Mark", CUInt8::ToString(p.mark), "Flag", "int");
            info.frame = Swap16(p.counter);
            info.time = CDateTime::Now();
            info.timeSource = timeSourcePC;
            hasCameraTime = false;
            const unsigned t = p.mark | p.flags2;
            f.triggerA = 1;
            f.triggerB = 0;
            f.triggerCount = (t & 7) ? 1 : 0;
            f.triggerFlags = (t & 7) ? static_cast<uint16_t>(1 + ((t & 2) ? 16 : 0) + ((t & 4) ? 32 : 0)) : 0;
        } else {
            // MJLS frames count in software; the IR block carries the camera's counter.
            info.frame = group == EGroup::ir ? f.frameCounter : frameCount;
            info.time = BasicDataTime(f.seconds, f.millis);
            info.timeSource = timeSourceCamera;
            hasCameraTime = true;
        }
        hasMeasData = group == EGroup::ir;
        basicData::Table::Write(f, b.record.bytes);
        StoreCameraInfo(*o.camera, b.record.bytes, SBasicData::kSize, prefixBytes);
        StepCounter();

        if (wantPixels) {
            auto* out = static_cast<uint16_t*>(pixels.data);
            if (group == EGroup::ir) {
                CopyIRPixels(out, frame, n, b.head.pixelOrder == 1, pixelType == guidV410GIGEFlip);
            } else {
                // The decoder's result is not the frame's: a bad stream still parses.
                auto result = JpegLsDecode(out, n * 2, frame + 4, length, nullptr, nullptr);
                (void)result;
            }
        }
        return true;
    }

    // Colour: a frame too short for its pixels fails before anything changes.
    const uint64_t needed = ColourBytes(group, width, height);
    if (wantPixels && needed > frameSize) return false;
    o.cal->valid = false;
    info.preset = 0;
    info.valid = true;
    info.frame = frameCount;
    info.time = CDateTime::Now();
    info.extra.Clear();
    info.timeSource = timeSourcePC;
    o.camera->valid = false;
    hasMeasData = hasCameraTime = false;
    StepCounter();
    if (wantPixels) {
        auto* out = static_cast<unsigned char*>(pixels.data);
        switch (group) {
        case EGroup::bgr: DecodeBGR(out, frame, width, height); break;
        case EGroup::uyvy: UYVYToRGB(out, frame, n / 2); break;
        case EGroup::yuy2: YUY2ToRGB(out, frame, n / 2); break;
        case EGroup::mjpg:
            // The output's size is the frame's, as the cameras' readers pass it,
            // but never more than the buffer holds.
            if (frame) JpegDecode(out, std::min<uint64_t>(frameSize, n * 3), frame, frameSize);
            break;
        default: break;
        }
    }
    return true;
}

bool CV410Filter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return true;
}

bool CV410Filter::ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                    uint32_t frameSize, uint64_t& counter)
{
    if (GroupOf(pixelType) != EGroup::ir) {
        counter = frameCount;
        return true;
    }
    const Bytes bytes(frame, frame ? frameSize : 0);
    const size_t P = size_t(width) * height * 2;
    if (P + 64 > frameSize) return false;
    if (MagicAt(bytes, P)) {
        // Read where the record lies, in the camera's order; false if it is outside the frame.
        uint16_t value = 0;
        if (!RecordWordInPlace(bytes, P, basicData::frameCounter::field.offset, value)) return false;
        counter = value;
        return true;
    }
    if (MagicAt(bytes, P + kPrefixSize)) {
        counter = uint16_t(frame[P + 12] << 8 | frame[P + 13]);
        return true;
    }
    return false;
}

bool CV410Filter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                            uint32_t frameSize, CDateTime& time)
{
    const Bytes bytes(frame, frame ? frameSize : 0);
    if (pixelType == guidV410F7M0 || pixelType == guidV410FNM0) {
        const size_t P = size_t(width) * height * 2;
        if (P + 64 > frameSize || !MagicAt(bytes, P)) return false;
        return TimeInPlace(bytes, P, time);
    }
    if (pixelType == guidMJLSIR) {
        SCameraBlock b;
        uint32_t length = 0;
        if (!MJLSBlock(bytes, length, b)) return false;
        time = BasicDataTime(b.fields.seconds, b.fields.millis);
        time = CDateTime::Now(); // the camera's time is dropped here, as the readers expect
        return true;
    }
    time = CDateTime::Now();
    return true;
}

bool CV410Filter::ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                 uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time)
{
    preset = 0;
    const EGroup group = GroupOf(pixelType);
    const Bytes bytes(frame, frame ? frameSize : 0);
    if (group == EGroup::ir) {
        const size_t P = size_t(width) * height * 2;
        if (P + 64 > frameSize) return false;
        if (MagicAt(bytes, P)) {
            uint16_t value = 0;
            if (!RecordWordInPlace(bytes, P, basicData::frameCounter::field.offset, value)) return false;
            if (!TimeInPlace(bytes, P, time)) return false;
            counter = value;
            return true;
        }
        if (MagicAt(bytes, P + kPrefixSize)) {
            counter = uint16_t(frame[P + 12] << 8 | frame[P + 13]);
            time = CDateTime::Now();
            return true;
        }
        return false;
    }
    if (group == EGroup::mjls) {
        SCameraBlock b;
        uint32_t length = 0;
        if (!MJLSBlock(bytes, length, b)) return false;
    }
    counter = frameCount;
    time = CDateTime::Now();
    return true;
}

bool CV410Filter::StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                             uint16_t height, uint16_t subFrames, uint16_t subFrameIndex, void* out,
                             uint32_t outSize)
{
    if (subFrames <= 1) return IFilter::StoreFrame(frame, frameSize, pixelType, width, height, subFrames,
                                                   subFrameIndex, out, outSize);
    uint64_t T = 0;
    unsigned char* t = CopySubFrame(frame, frameSize, width, height, subFrames, subFrameIndex, out, outSize, 0, T);
    if (!t) return false;

    if (pixelType != guidV410F7M0 && pixelType != guidV410GIGE && pixelType != guidV410GIGEFlip) return true;
    const Bytes trailer(t, T);
    if (MagicAt(trailer, kPrefixSize)) {
        unsigned counter = unsigned(trailer[12]) << 8 | trailer[13];
        if (subFrames == 2) counter = counter * 2 | subFrameIndex;
        else if (subFrames == 4) counter = counter * 4 | subFrameIndex;
        t[12] = static_cast<unsigned char>(counter >> 8);
        t[13] = static_cast<unsigned char>(counter);
        return true;
    }
    return MagicAt(trailer, 0);
}

bool CV410Filter::CheckForTrigger(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                                  uint16_t height, uint16_t, uint8_t field, bool& triggered, uint16_t& position)
{
    triggered = false;
    position = 0;
    if (GroupOf(pixelType) != EGroup::ir) return false;
    const Bytes bytes(frame, frame ? frameSize : 0);
    const size_t P = size_t(width) * height * 2;
    if (MagicAt(bytes, P + kPrefixSize)) {
        SGigEPrefix p;
        GigEPrefixView::Read(frame + P, p);
        if (field == 0) triggered = p.digitalIn1 != 0;
        else if (field == 1) triggered = p.digitalIn2 != 0;
        else if (field == 2) triggered = (p.mark & 3) != 0;
        return true;
    }
    if (MagicAt(bytes, P)) {
        SCameraBlock b;
        if (!ReadCameraBlock(bytes, P, b)) return false;
        const uint32_t count = b.fields.triggerCount;
        if (lastTriggerCountValid && count > lastTriggerCount && field == 2) triggered = true;
        lastTriggerCount = count;
        lastTriggerCountValid = true;
        return true;
    }
    return true;
}

bool CV410Filter::HasTime(SGuid pixelType) const
{
    return pixelType == guidV410F7M0 || pixelType == guidV410FNM0 || pixelType == guidMJLSIR;
}

bool CV410Filter::HasFrameCounter(SGuid pixelType) const { return GroupOf(pixelType) == EGroup::ir; }

uint64_t CV410Filter::FrameCounterMaxValue(SGuid) const { return 65535; }

bool CV410Filter::GetTriggerFields(SGuid pixelType, TArray<CString>& names) const
{
    names.clear();
    if (pixelType == guidV410GIGE || pixelType == guidV410GIGEFlip) {
        names.add("DigitalIn1");
        names.add("DigitalIn2");
        names.add("Mark");
    }
    return true;
}

} // namespace orv::reduce
