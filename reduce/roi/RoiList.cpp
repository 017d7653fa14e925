// The region list: membership, names, the active region, rescaling, and the
// choice between the two file forms.
#include "reduce/roi/RoiList.h"

#include <algorithm>
#include <cstring>

#include "orv/Convert.h"

namespace orv::reduce {

CRoiList::CRoiList()
{
    TSharedPtr<SRoi> image(new SRoi);
    image->type = roiImage;
    image->name = "Image";
    image->paletteIndex = 0;
    image->color = 0x808080;
    image->emissivity = 1.0;
    image->distance = 1.0;
    rois.add(image);
}

TSharedPtr<SRoi> CRoiList::at(unsigned int index) const
{
    return index < rois.size() ? rois.get(index) : TSharedPtr<SRoi>();
}

void CRoiList::setActiveRoi(TSharedPtr<SRoi> roi)
{
    unsigned int i = IndexOf(roi);
    activeIndex = i == kNotFound ? 0 : i;
}

unsigned int CRoiList::IndexOf(TSharedPtr<SRoi> roi) const
{
    for (size_t i = 0; i < rois.size(); ++i)
        if (rois.get(i).get() == roi.get()) return static_cast<unsigned int>(i);
    return kNotFound;
}

void CRoiList::add(TSharedPtr<SRoi> roi)
{
    if (!roi) return;
    roi->CreateBitmask(width, height);
    roi->UpdateBitmask();
    rois.add(roi);
}

void CRoiList::remove(TSharedPtr<SRoi> roi)
{
    unsigned int i = IndexOf(roi);
    if (i != kNotFound && i != 0) rois.remove(i);
}

void CRoiList::removeAll()
{
    while (rois.size() > 1) rois.remove(rois.size() - 1);
    activeIndex = 0;
}

CString CRoiList::MakeName(ERoiType type, int n)
{
    static constexpr const char* kPatterns[] = {
        "Rectangle %d", "Ellipse %d", "Line %d",   "Cursor %d",   "Multi Line %d", "Polygon %d",
        "Freehand %d",  "Isotherm %d", "Measurement Cursor %d", "Square %d", "Circle %d", "Crosshair %d"};
    if (type >= roiRect && type <= roiCrosshair) return CString::FromFormat(kPatterns[type], n);
    return CString::FromFormat("ROI %d", n);
}

CString CRoiList::NewName(ERoiType type) const
{
    for (int n = 1;; ++n) {
        CString name = MakeName(type, n);
        bool used = false;
        for (const TSharedPtr<SRoi>& r : rois)
            if (r->name == name) {
                used = true;
                break;
            }
        if (!used) return name;
    }
}

bool CRoiList::CanRenameRoi(TSharedPtr<SRoi> roi, const CString& name) const
{
    for (const TSharedPtr<SRoi>& r : rois)
        if (r.get() != roi.get() && r->name == name) return false;
    return true;
}

void CRoiList::SetImageSize(unsigned short w, unsigned short h)
{
    width = w;
    height = h;
    for (const TSharedPtr<SRoi>& r : rois) r->CreateBitmask(w, h);
    Rescale();
}

void CRoiList::Rescale()
{
    for (size_t i = 1; i < rois.size(); ++i) {
        SRoi& r = *rois.get(i);
        // A region that was never given an image size (the constructors leave
        // 0) is taken to be in the list's coordinates: scaling from 0 would
        // make every point infinite.
        if ((r.imageWidth == width && r.imageHeight == height) || r.imageWidth == 0 || r.imageHeight == 0) {
            r.points = r.originalPoints;
        } else {
            size_t n = std::min(r.points.size(), r.originalPoints.size());
            for (size_t k = 0; k < n; ++k) {
                const SPointF& o = r.originalPoints.get(k);
                r.points.get(k) = SPointF(o.x / r.imageWidth * width, o.y / r.imageHeight * height);
            }
        }
        r.UpdateBitmask();
    }
}

void CRoiList::AppendLoaded(TSharedPtr<SRoi> roi, size_t existing)
{
    const CString base = roi->name;
    int c = 1;
    for (bool renamed = true; renamed;) {
        renamed = false;
        for (size_t i = 1; i < existing && i < rois.size(); ++i) {
            if (rois.get(i)->name == roi->name) {
                roi->name = CString::FromFormat("%s (%d)", base.c_str(), c++);
                renamed = true;
            }
        }
    }
    rois.add(roi);
}

bool CRoiList::Load(const CString& path)
{
    TSharedPtr<IFile> file = fileSystem()->Open(path, IFileSystem::openRead);
    if (!file) return false;
    return Load(file);
}

bool CRoiList::Load(TSharedPtr<IFile> file)
{
    if (!file) return false;
    char magic[4] = {0, 0, 0, 0};
    unsigned long n = file->Read(magic, 4);
    file->Seek(-static_cast<long long>(n), IFile::seekCurrent);
    if (n == 4 && std::memcmp(magic, "SROI", 4) == 0) return LoadBinary(file);
    return LoadXml(file);
}

bool CRoiList::Save(const CString& path, unsigned int which)
{
    TSharedPtr<IFile> file = fileSystem()->Open(path, IFileSystem::openWrite);
    if (!file) return false;
    return Save(file, which);
}

bool CRoiList::Save(TSharedPtr<IFile> file, unsigned int which) { return SaveXml(file, which); }

uint32_t ParseColor(const CString& text)
{
    if (text.length() != 7) return 255;
    // The first character is not looked at; it is '#' in every file written.
    const char* s = text.c_str();
    auto pair = [s](int at) { return uint32_t(CUInt8::ParseHex(CString(s + at, 2).c_str())); };
    return pair(1) | pair(3) << 8 | pair(5) << 16;
}

} // namespace orv::reduce
