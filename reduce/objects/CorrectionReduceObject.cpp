#include "reduce/objects/CorrectionReduceObject.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

#include "orv/NormFile.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = correctionRecord;

namespace {

// Payload reads and writes go in pieces that fit the 32-bit size of IFile's
// byte operations.
constexpr uint64_t kChunk = 1u << 30;

bool ReadPlane(IFile& file, void* data, uint64_t bytes)
{
    auto* p = static_cast<unsigned char*>(data);
    while (bytes > 0) {
        uint64_t part = std::min(bytes, kChunk);
        if (!file.ReadBytes(p, static_cast<unsigned int>(part))) return false;
        p += part;
        bytes -= part;
    }
    return true;
}

bool WritePlane(IFile& file, const void* data, uint64_t bytes)
{
    const auto* p = static_cast<const unsigned char*>(data);
    while (bytes > 0) {
        uint64_t part = std::min(bytes, kChunk);
        if (!file.WriteBytes(p, static_cast<unsigned int>(part))) return false;
        p += part;
        bytes -= part;
    }
    return true;
}

// Bytes per pixel of the planes of a mask.
uint64_t BytesPerPixel(unsigned char mask)
{
    uint64_t bytes = 0;
    if (mask & CCorrectionReduceObject::planeGains) bytes += sizeof(float);
    if (mask & CCorrectionReduceObject::planeOffsets) bytes += sizeof(int16_t);
    if (mask & CCorrectionReduceObject::planeBadPixels) bytes += sizeof(uint8_t) + sizeof(uint32_t);
    return bytes;
}

template <class T>
void FlipPlane(T* data, uint32_t w, uint32_t h, bool horizontal, bool vertical)
{
    const size_t n = static_cast<size_t>(w) * h;
    if (horizontal && vertical) {
        std::reverse(data, data + n); // (x, y) <-> (W-1-x, H-1-y) is index i <-> n-1-i
    } else if (vertical) {
        for (uint32_t top = 0, bottom = h - 1; top < bottom; ++top, --bottom)
            std::swap_ranges(data + static_cast<size_t>(top) * w, data + static_cast<size_t>(top + 1) * w,
                             data + static_cast<size_t>(bottom) * w);
    } else if (horizontal) {
        for (uint32_t y = 0; y < h; ++y) std::reverse(data + static_cast<size_t>(y) * w, data + static_cast<size_t>(y + 1) * w);
    }
}

// The last extension of the file name part of path, with its dot; empty when none.
size_t ExtensionStart(const CString& path)
{
    const char* s = path.c_str();
    size_t n = path.length();
    for (size_t i = n; i-- > 0;) {
        if (s[i] == '.') return i;
        if (s[i] == '/' || s[i] == '\\') break;
    }
    return n;
}

// The three table file names of path: its extension changed when it is one of
// the three, the three extensions appended otherwise.
void TableFileNames(const CString& path, CString names[3])
{
    static const char* const kExtensions[3] = {".mxg", ".mxo", ".mbp"};
    size_t dot = ExtensionStart(path);
    CString ext = path.substr(dot);
    bool known = false;
    for (const char* e : kExtensions)
        if (strcasecmp(ext.c_str(), e) == 0) known = true;
    CString stem = known ? path.substr(0, static_cast<long>(dot)) : path;
    for (int i = 0; i < 3; ++i) names[i] = stem + kExtensions[i];
}

} // namespace

bool CCorrectionReduceObject::Register()
{
    return reduceObjectFactory().Register<CCorrectionReduceObject>(kName, typeID);
}

CCorrectionReduceObject::CCorrectionReduceObject() { version = 0x10001; }

CCorrectionReduceObject::~CCorrectionReduceObject() { Default(); }

TSharedPtr<IReduceObject> CCorrectionReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CCorrectionReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    target->Default();
    CopyCommonTo(*target);
    target->width = width;
    target->height = height;
    const size_t n = pixelCount();
    if (gains) {
        target->gains = new float[n];
        std::memcpy(target->gains, gains, n * sizeof(float));
    }
    if (offsets) {
        target->offsets = new int16_t[n];
        std::memcpy(target->offsets, offsets, n * sizeof(int16_t));
    }
    if (badPixels) {
        target->badPixels = new uint8_t[n];
        std::memcpy(target->badPixels, badPixels, n);
    }
    if (replacements) {
        target->replacements = new uint32_t[n];
        std::memcpy(target->replacements, replacements, n * sizeof(uint32_t));
    }
    target->planes = planes;
    target->verticalFlip = verticalFlip;
    target->horizontalFlip = horizontalFlip;
    return copy;
}

void CCorrectionReduceObject::Default()
{
    IReduceObject::Default();
    delete[] gains;
    delete[] offsets;
    delete[] badPixels;
    delete[] replacements;
    gains = nullptr;
    offsets = nullptr;
    badPixels = nullptr;
    replacements = nullptr;
    width = height = 0;
    planes = 0;
    verticalFlip = horizontalFlip = false;
}

void CCorrectionReduceObject::Create(unsigned int w, unsigned int h, int presetIndex, unsigned char newPlanes)
{
    if (static_cast<uint32_t>(w * h) == 0) return; // the product in 32 bits, as intended
    if (w != width || h != height || static_cast<uint8_t>(presetIndex) != preset) {
        Default();
        width = w;
        height = h;
        preset = static_cast<uint8_t>(presetIndex);
    }
    newPlanes &= planeAll;
    planes |= newPlanes;
    const size_t n = pixelCount();
    unsigned char fresh = 0;
    if ((newPlanes & planeGains) && !gains) {
        gains = new float[n];
        fresh |= planeGains;
    }
    if ((newPlanes & planeOffsets) && !offsets) {
        offsets = new int16_t[n];
        fresh |= planeOffsets;
    }
    if ((newPlanes & planeBadPixels) && (!badPixels || !replacements)) {
        if (!badPixels) badPixels = new uint8_t[n];
        if (!replacements) replacements = new uint32_t[n];
        fresh |= planeBadPixels;
    }
    Init(fresh);
}

void CCorrectionReduceObject::Init(unsigned char mask)
{
    const size_t n = pixelCount();
    if ((mask & planeGains) && gains) std::fill(gains, gains + n, 1.0f);
    if ((mask & planeOffsets) && offsets) std::fill(offsets, offsets + n, int16_t(0));
    if ((mask & planeBadPixels) && badPixels) std::fill(badPixels, badPixels + n, uint8_t(0));
    if ((mask & planeBadPixels) && replacements)
        for (size_t i = 0; i < n; ++i) replacements[i] = static_cast<uint32_t>(i);
}

void CCorrectionReduceObject::Flip(bool horizontal, bool vertical)
{
    if ((!horizontal && !vertical) || width == 0 || height == 0) return;
    const uint32_t w = width, h = height;
    if ((planes & planeGains) && gains) FlipPlane(gains, w, h, horizontal, vertical);
    if ((planes & planeOffsets) && offsets) FlipPlane(offsets, w, h, horizontal, vertical);
    if (!(planes & planeBadPixels) || !badPixels || !replacements) return;
    FlipPlane(badPixels, w, h, horizontal, vertical);
    FlipPlane(replacements, w, h, horizontal, vertical);
    // The replacements are positions themselves and move with the picture.
    // Unsigned arithmetic: a corrupt index past the frame wraps, it never traps.
    const size_t n = pixelCount();
    uint32_t* r = replacements;
    if (horizontal && vertical) {
        for (size_t i = 0; i < n; ++i) r[i] = (h - 1 - r[i] / w) * w + (w - 1 - r[i] % w);
    } else if (vertical) {
        for (size_t i = 0; i < n; ++i) r[i] = (h - 1 - r[i] / w) * w + r[i] % w;
    } else {
        for (size_t i = 0; i < n; ++i) r[i] = w * (1 + r[i] / w) - 1 - r[i] % w;
    }
}

void CCorrectionReduceObject::SetFlipped(bool horizontal, bool vertical)
{
    Flip(horizontal != horizontalFlip, vertical != verticalFlip);
    horizontalFlip = horizontal;
    verticalFlip = vertical;
}

bool CCorrectionReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    Default();
    if (!file) return false;
    uint32_t w = 0, h = 0;
    uint8_t mask = 0;
    if (fileVersion > 0x10000) {
        unsigned char r[rec::kSize] = {};
        if (!file->ReadBytes(r, rec::kSize)) return false;
        rec::SHead head;
        rec::Table::Read(r, head);
        if (Get(r, kRecordSize) != rec::kSize || head.version >= 0x20000) return false;
        w = head.width;
        h = head.height;
        mask = head.planes;
    } else {
        if (!file->GetUInt32(w) || !file->GetUInt32(h) || !file->GetUInt8(mask)) return false;
    }
    mask &= planeAll;
    // A size field that promises more than the stream holds is corrupt: refuse
    // it before allocating anything.
    const uint64_t n = static_cast<uint64_t>(w) * h;
    const uint64_t remaining = file->GetRemaining();
    if (BytesPerPixel(mask) != 0 && (n > remaining || n * BytesPerPixel(mask) > remaining)) return false;

    Create(w, h, preset, mask);
    if ((mask & planeGains) && gains && !ReadPlane(*file, gains, n * sizeof(float))) return false;
    if ((mask & planeOffsets) && offsets && !ReadPlane(*file, offsets, n * sizeof(int16_t))) return false;
    if ((mask & planeBadPixels) && badPixels) {
        if (!ReadPlane(*file, badPixels, n)) return false;
        if (!ReadPlane(*file, replacements, n * sizeof(uint32_t))) return false;
        // A replacement names a pixel of the table; the correction reads
        // frames there without a check, so one beyond the table is refused.
        for (uint64_t i = 0; i < n; ++i)
            if (replacements[i] >= n) return false;
    }
    if (fileVersion <= 0x10000) {
        planes = mask;
        horizontalFlip = verticalFlip = false;
    }
    return true;
}

bool CCorrectionReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    unsigned char mask = 0;
    if (gains) mask |= planeGains;
    if (offsets) mask |= planeOffsets;
    if (badPixels && replacements) mask |= planeBadPixels;

    unsigned char r[rec::kSize];
    rec::Table::Write(rec::SHead{version, width, height, mask}, r);
    if (!file->WriteBytes(r, rec::kSize)) return false;

    // Tables are stored in sensor orientation; the object is put back after.
    const bool flipped = horizontalFlip || verticalFlip;
    if (flipped) Flip(horizontalFlip, verticalFlip);
    const uint64_t n = pixelCount();
    bool ok = true;
    if (ok && (mask & planeGains)) ok = WritePlane(*file, gains, n * sizeof(float));
    if (ok && (mask & planeOffsets)) ok = WritePlane(*file, offsets, n * sizeof(int16_t));
    if (ok && (mask & planeBadPixels))
        ok = WritePlane(*file, badPixels, n) && WritePlane(*file, replacements, n * sizeof(uint32_t));
    if (flipped) Flip(horizontalFlip, verticalFlip);
    return ok;
}

bool CCorrectionReduceObject::Load(IFileSystem* fs, CString path)
{
    if (!fs) return false;
    CString names[3];
    TableFileNames(path, names);
    CNormFile files[3];
    bool loaded[3];
    for (int i = 0; i < 3; ++i) loaded[i] = files[i].Load(fs, names[i]);

    // Each file must hold its own kind of table, and all must agree in size.
    int first = -1;
    for (int i = 0; i < 3; ++i) {
        if (!loaded[i]) continue;
        if (files[i].GetType() != i) return false;
        if (first < 0) {
            first = i;
        } else if (files[i].xPixels() != files[first].xPixels() || files[i].yPixels() != files[first].yPixels()) {
            return false;
        }
    }

    horizontalFlip = verticalFlip = false;
    unsigned char mask = 0;
    for (int i = 0; i < 3; ++i)
        if (loaded[i]) mask |= static_cast<unsigned char>(1u << i);
    if (first >= 0) Create(files[first].xPixels(), files[first].yPixels(), preset, mask);
    // Valid also when no file was found: an empty correction is a correct one.
    valid = true;
    horizontalFlip = verticalFlip = false;
    if (first < 0) return true;

    const size_t n = pixelCount();
    if (loaded[0] && gains) std::memcpy(gains, files[0].GetGains(), n * sizeof(float));
    if (loaded[1] && offsets) std::memcpy(offsets, files[1].GetOffsets(), n * sizeof(int16_t));
    if (loaded[2] && badPixels && replacements) {
        CNormFile::SBadPixels bad = files[2].GetBadPixels();
        std::memcpy(badPixels, bad.flags, n);
        std::memcpy(replacements, bad.replacements, n * sizeof(uint32_t));
    }
    return true;
}

bool CCorrectionReduceObject::Save(IFileSystem* fs, CString path)
{
    if (!fs) return false;
    CString names[3];
    TableFileNames(path, names);
    const uint16_t presetWord = preset;
    // The files hold sensor orientation, like the payload.
    const bool flipped = horizontalFlip || verticalFlip;
    if (flipped) Flip(horizontalFlip, verticalFlip);
    bool ok = true;
    if (ok && (planes & planeGains) && gains)
        ok = CNormFile::SaveGainTable(fs, names[0], width, height, presetWord, gains);
    if (ok && (planes & planeOffsets) && offsets)
        ok = CNormFile::SaveOffsetTable(fs, names[1], width, height, presetWord, offsets);
    if (ok && (planes & planeBadPixels) && badPixels && replacements)
        ok = CNormFile::SaveBadPixelTable(fs, names[2], width, height, presetWord, badPixels, replacements);
    if (flipped) Flip(horizontalFlip, verticalFlip);
    return ok;
}

} // namespace orv::reduce
