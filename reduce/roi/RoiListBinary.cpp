// The older binary region file: magic "SROI", a major and a minor version
// byte, then the regions field by field. Versions 0.0 to 0.2 and 1.0 to 1.5
// are read; 1.5 is written, and only when asked for explicitly.
#include <cstring>

#include "reduce/roi/RoiList.h"

namespace orv::reduce {

namespace {

constexpr unsigned kNameBytes = 128;

// Reads fields in order and remembers the first short read: a file cut
// anywhere is refused at that field instead of reading zeroes on.
class CFieldReader {
public:
    explicit CFieldReader(IFile& file) : m_file(file) {}
    bool ok() const { return m_ok; }
    uint8_t Byte()
    {
        uint8_t v = 0;
        m_ok = m_ok && m_file.GetUInt8(v);
        return v;
    }
    uint32_t DWord()
    {
        uint32_t v = 0;
        m_ok = m_ok && m_file.GetUInt32(v);
        return v;
    }
    int32_t Int32()
    {
        int32_t v = 0;
        m_ok = m_ok && m_file.GetInt32(v);
        return v;
    }
    double Double()
    {
        double v = 0;
        m_ok = m_ok && m_file.GetFlt64(v);
        return v;
    }
    bool Bool()
    {
        bool v = false;
        m_ok = m_ok && m_file.GetBool(v);
        return v;
    }
    CString Name()
    {
        char text[kNameBytes + 1] = {};
        // A name of 128 bytes has no terminator in the file; this one does.
        m_ok = m_ok && m_file.ReadBytes(text, kNameBytes);
        return CString(text);
    }
    unsigned long long Remaining() { return m_file.GetRemaining(); }

private:
    IFile& m_file;
    bool m_ok = true;
};

bool IsAxisAlignedBox(const TArray<SPointF>& p)
{
    return p.size() == 4 && p.get(0).x == p.get(3).x && p.get(0).y == p.get(1).y && p.get(1).x == p.get(2).x &&
           p.get(2).y == p.get(3).y;
}

} // namespace

bool CRoiList::LoadBinary(TSharedPtr<IFile> file)
{
    if (!file || rois.empty()) return false;
    CFieldReader in(*file);
    char magic[4] = {};
    if (!file->ReadBytes(magic, 4) || std::memcmp(magic, "SROI", 4) != 0) return false;
    const uint8_t major = in.Byte(), minor = in.Byte();
    if (!in.ok() || major > 1 || (major == 1 && minor > 5) || (major == 0 && minor >= 3)) return false;
    const bool v1 = major == 1;
    uint32_t fileWidth = width, fileHeight = height;
    if (v1 && minor >= 3) {
        fileWidth = in.DWord();
        fileHeight = in.DWord();
    }
    if (v1 && minor >= 5) {
        rois.get(0)->color = in.DWord();
        rois.get(0)->paletteIndex = in.Int32();
    }
    const uint32_t count = in.DWord();
    if (!in.ok() || count > kMaxBinaryRois) return false;

    const size_t existing = rois.size();
    for (uint32_t i = 0; i < count; ++i) {
        TSharedPtr<SRoi> r(new SRoi);
        r->name = in.Name();
        r->drawName = in.Bool();
        r->namePos = ERoiNamePos(in.DWord());
        r->imageWidth = fileWidth;
        r->imageHeight = fileHeight;
        if (v1 && minor >= 4) {
            r->imageWidth = in.DWord();
            r->imageHeight = in.DWord();
        }
        if (!v1) {
            int32_t top = in.Int32(), left = in.Int32(), bottom = in.Int32(), right = in.Int32();
            r->points = {SPointF(left, top), SPointF(right, top), SPointF(right, bottom), SPointF(left, bottom)};
        } else {
            uint32_t n = in.DWord();
            // Sixteen bytes a point: a count the rest of the file cannot hold
            // is refused before anything is allocated for it.
            if (!in.ok() || n > in.Remaining() / 16) return false;
            r->points.reserve(n);
            for (uint32_t k = 0; k < n; ++k) {
                double x = in.Double();
                r->points.add(SPointF(x, in.Double()));
            }
        }
        r->color = in.DWord();
        r->paletteIndex = v1 && minor >= 5 ? in.Int32() : -1;
        r->type = ERoiType(in.DWord());
        if (v1) r->useEmissivity = in.Bool();
        r->emissivity = in.Double();
        if (major != 0 || minor != 0) {
            r->useDistance = in.Bool();
            r->distance = in.Double();
        }
        if (v1) {
            in.Double(); // reserved
            r->trackMode = EIsothermTrackMode(in.DWord());
            r->useMin = in.Bool();
            r->useMax = in.Bool();
            r->minColor = in.Byte();
            r->maxColor = in.Byte();
            if (minor == 0) {
                double lo = in.Double(), hi = in.Double();
                for (int u = 0; u < kIsothermUnits; ++u) {
                    r->isothermMin[u] = lo;
                    r->isothermMax[u] = hi;
                }
            } else {
                for (int u = 0; u < kIsothermUnits; ++u) {
                    r->isothermMin[u] = in.Double();
                    r->isothermMax[u] = in.Double();
                }
            }
            if (minor >= 2) {
                r->minValueScaled = in.Double();
                r->maxValueScaled = in.Double();
            }
        }
        if (!in.ok()) return false;
        // Deliberate: the left and top edges of a box move in by one on every
        // load, so a box saved and loaded again grows smaller.
        if ((r->type == roiRect || r->type == roiEllipse) && IsAxisAlignedBox(r->points)) {
            r->points.get(0).x += 1.0;
            r->points.get(0).y += 1.0;
            r->points.get(1).y += 1.0;
            r->points.get(3).x += 1.0;
        }
        r->dirty[0] = false;
        r->originalPoints = r->points;
        r->CreateBitmask(width, height);
        r->UpdateBitmask();
        AppendLoaded(r, existing);
    }
    Rescale();
    return true;
}

bool CRoiList::SaveBinary(TSharedPtr<IFile> file)
{
    // The loader takes at most kMaxBinaryRois regions: a longer list would
    // make a file that nothing reads back.
    if (!file || rois.empty() || rois.size() - 1 > kMaxBinaryRois) return false;
    IFile& f = *file;
    f.WriteBytes("SROI", 4);
    f.PutBYTE(1);
    f.PutBYTE(5);
    f.PutDWORD(width);
    f.PutDWORD(height);
    f.PutDWORD(rois.get(0)->color);
    f.PutInt32(rois.get(0)->paletteIndex);
    f.PutDWORD(static_cast<uint32_t>(rois.size() - 1));
    for (size_t i = 1; i < rois.size(); ++i) {
        const SRoi& r = *rois.get(i);
        f.PutFixedLengthString(r.name.c_str(), kNameBytes);
        f.PutBool(r.drawName);
        f.PutDWORD(uint32_t(r.namePos));
        f.PutDWORD(r.imageWidth);
        f.PutDWORD(r.imageHeight);
        f.PutDWORD(static_cast<uint32_t>(r.originalPoints.size()));
        for (const SPointF& p : r.originalPoints) {
            f.PutDouble(p.x);
            f.PutDouble(p.y);
        }
        f.PutDWORD(r.color);
        f.PutInt32(r.paletteIndex);
        f.PutDWORD(uint32_t(r.type));
        f.PutBool(r.useEmissivity);
        f.PutDouble(r.emissivity);
        f.PutBool(r.useDistance);
        f.PutDouble(r.distance);
        f.PutDouble(0.0);
        f.PutDWORD(uint32_t(r.trackMode));
        f.PutBool(r.useMin);
        f.PutBool(r.useMax);
        f.PutBYTE(r.minColor);
        f.PutBYTE(r.maxColor);
        for (int u = 0; u < kIsothermUnits; ++u) {
            f.PutDouble(r.isothermMin[u]);
            f.PutDouble(r.isothermMax[u]);
        }
        f.PutDouble(r.minValueScaled);
        f.PutDouble(r.maxValueScaled);
    }
    return true;
}

} // namespace orv::reduce
