// Region files in XML: root roiList, version "1.6" written, any 0.x or 1.x read.
#include <cstdio>

#include "orv/Convert.h"
#include "reduce/roi/RoiList.h"

namespace orv::reduce {

namespace {

CString Number(double v) { return CString::FromFormat("%0.14g", v); }

CString ColorText(uint32_t c)
{
    return CString::FromFormat("#%02X%02X%02X", c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
}

using CNode = CXMLFile::CNode;

CNode* Child(CNode* parent, const char* name) { return parent->InsertChild(new CNode(name)); }

// Attribute readers that keep the present value when the text is missing or bad.
void Read(const CNode* n, const char* name, double& v) { CFlt64::Parse(n->GetAttribute(name).c_str(), v); }
void Read(const CNode* n, const char* name, bool& v) { CBool::Parse(n->GetAttribute(name).c_str(), v); }
void Read(const CNode* n, const char* name, uint32_t& v) { CUInt32::Parse(n->GetAttribute(name).c_str(), v); }
void Read(const CNode* n, const char* name, uint8_t& v) { CUInt8::Parse(n->GetAttribute(name).c_str(), v); }

void WriteRoi(CNode* rois, const SRoi& r)
{
    CNode* n = Child(rois, "roi");
    n->SetAttribute("paletteIndex", CInt32::ToString(r.paletteIndex));
    n->SetAttribute("color", ColorText(r.color));
    n->SetAttribute("imageHeight", CUInt32::ToString(r.imageHeight));
    n->SetAttribute("imageWidth", CUInt32::ToString(r.imageWidth));
    n->SetAttribute("namePos", RoiNamePosToString(r.namePos));
    n->SetAttribute("drawName", CBool::ToString(r.drawName));
    n->SetAttribute("type", RoiTypeToString(r.type));
    n->SetAttribute("name", r.name);
    CNode* op = Child(n, "objectParameters");
    op->SetAttribute("useDistance", CBool::ToString(r.useDistance));
    op->SetAttribute("distance", Number(r.distance));
    op->SetAttribute("useEmissivity", CBool::ToString(r.useEmissivity));
    op->SetAttribute("emissivity", Number(r.emissivity));
    if (r.type == roiIsotherm) {
        CNode* iso = Child(n, "isothermSettings");
        iso->SetAttribute("maxValueScaled", Number(r.maxValueScaled));
        iso->SetAttribute("minValueScaled", Number(r.minValueScaled));
        iso->SetAttribute("maxColor", CUInt8::ToString(r.maxColor));
        iso->SetAttribute("minColor", CUInt8::ToString(r.minColor));
        iso->SetAttribute("useMax", CBool::ToString(r.useMax));
        iso->SetAttribute("useMin", CBool::ToString(r.useMin));
        iso->SetAttribute("trackMode", IsothermTrackModeToString(r.trackMode));
        CNode* values = Child(iso, "isothermValues");
        for (int u = 0; u < kIsothermUnits; ++u) {
            if (r.dirty[u]) continue;
            CNode* v = Child(values, "isothermValue");
            v->SetAttribute("max", Number(r.isothermMax[u]));
            v->SetAttribute("min", Number(r.isothermMin[u]));
            v->SetAttribute("unit", IsothermUnitToString(EIsothermUnit(u)));
        }
    }
    CNode* pts = Child(n, "points");
    for (const SPointF& p : r.originalPoints) {
        CNode* pt = Child(pts, "point");
        pt->SetAttribute("x", Number(p.x));
        pt->SetAttribute("y", Number(p.y));
    }
}

TSharedPtr<SRoi> ReadRoi(const CNode* n)
{
    TSharedPtr<SRoi> r(new SRoi);
    r->name = n->GetAttribute("name");
    r->type = ParseRoiType(n->GetAttribute("type"));
    Read(n, "drawName", r->drawName);
    r->namePos = ParseRoiNamePos(n->GetAttribute("namePos"));
    r->color = ParseColor(n->GetAttribute("color"));
    r->paletteIndex = CInt32::Parse(n->GetAttribute("paletteIndex", "-1").c_str());
    Read(n, "imageWidth", r->imageWidth);
    Read(n, "imageHeight", r->imageHeight);
    if (const CNode* op = n->FindChild("objectParameters")) {
        Read(op, "useDistance", r->useDistance);
        Read(op, "distance", r->distance);
        Read(op, "useEmissivity", r->useEmissivity);
        Read(op, "emissivity", r->emissivity);
    }
    if (const CNode* iso = n->FindChild("isothermSettings")) {
        Read(iso, "maxValueScaled", r->maxValueScaled);
        Read(iso, "minValueScaled", r->minValueScaled);
        Read(iso, "maxColor", r->maxColor);
        Read(iso, "minColor", r->minColor);
        Read(iso, "useMax", r->useMax);
        Read(iso, "useMin", r->useMin);
        r->trackMode = ParseIsothermTrackMode(iso->GetAttribute("trackMode"));
        if (const CNode* values = iso->FindChild("isothermValues")) {
            for (const CNode* v = values->FindChild("isothermValue"); v; v = v->FindNext("isothermValue")) {
                EIsothermUnit u = ParseIsothermUnit(v->GetAttribute("unit"));
                Read(v, "min", r->isothermMin[u]);
                Read(v, "max", r->isothermMax[u]);
                r->dirty[u] = false;
            }
        }
    }
    if (const CNode* pts = n->FindChild("points")) {
        for (const CNode* p = pts->FindChild("point"); p; p = p->FindNext("point")) {
            SPointF pt;
            Read(p, "x", pt.x);
            Read(p, "y", pt.y);
            r->originalPoints.add(pt);
        }
    }
    r->points = r->originalPoints;
    return r;
}

} // namespace

bool CRoiList::SaveXml(TSharedPtr<IFile> file, unsigned int which)
{
    if (!file) return false;
    CXMLFile xml;
    return SaveXml(xml, which) && xml.Save(file);
}

bool CRoiList::SaveXml(CXMLFile& xml, unsigned int which)
{
    if (rois.empty()) return false;
    CNode* root = new CNode("roiList");
    root->SetAttribute("activeRoiIndex", CUInt32::ToString(which == kAll ? activeIndex : 0));
    root->SetAttribute("imageHeight", CUInt32::ToString(height));
    root->SetAttribute("imageWidth", CUInt32::ToString(width));
    root->SetAttribute("version", "1.6");
    if (!xml.Insert(root, true)) {
        delete root;
        return false;
    }
    CNode* image = Child(root, "imageRoi");
    image->SetAttribute("paletteIndex", CInt32::ToString(rois.get(0)->paletteIndex));
    image->SetAttribute("color", ColorText(rois.get(0)->color));
    CNode* list = Child(root, "rois");
    for (size_t i = 1; i < rois.size(); ++i)
        if (which == kAll || which == i) WriteRoi(list, *rois.get(i));
    return true;
}

bool CRoiList::LoadXml(TSharedPtr<IFile> file)
{
    if (!file) return false;
    CXMLFile xml;
    if (!xml.Load(file)) return false;
    xml.FindFirst("roiList");
    return LoadXml(xml);
}

bool CRoiList::LoadXml(CXMLFile& xml)
{
    const CNode* root = xml.GetCurr();
    if (!root || !(root->GetName() == "roiList") || !root->GetAttributes().Exists("version")) return false;
    TArray<CString> parts;
    root->GetAttribute("version").Split(parts, ".");
    uint8_t major = 0;
    // A major number that is not a number is refused like one above 1.
    if (parts.size() != 2 || !CUInt8::Parse(parts[0].c_str(), major) || major > 1) return false;
    if (rois.size() == 1) Read(root, "activeRoiIndex", activeIndex);
    if (const CNode* image = root->FindChild("imageRoi"); image && !rois.empty()) {
        rois.get(0)->paletteIndex = CInt32::Parse(image->GetAttribute("paletteIndex", "-1").c_str());
        rois.get(0)->color = ParseColor(image->GetAttribute("color"));
    }
    const size_t existing = rois.size();
    if (const CNode* list = root->FindChild("rois")) {
        for (const CNode* n = list->FindChild("roi"); n; n = n->FindNext("roi")) {
            TSharedPtr<SRoi> r = ReadRoi(n);
            r->CreateBitmask(width, height);
            AppendLoaded(r, existing);
        }
    }
    Rescale();
    return true;
}

} // namespace orv::reduce
