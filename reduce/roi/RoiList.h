#pragma once
// The ordered regions of one image. Element 0 is always the image region,
// which stands for the whole frame. The list names new regions, holds the
// active one, rescales every shape when the image size changes, and reads and
// writes region files: written as XML, read as XML or the older binary form.
#include <cstdint>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "orv/XMLFile.h"
#include "reduce/roi/Roi.h"

namespace orv::reduce {

class CRoiList {
public:
    static constexpr unsigned int kAll = 0xFFFFFFFF; // `which`: every region
    static constexpr unsigned int kNotFound = 0xFFFFFFFF;
    static constexpr unsigned int kMaxBinaryRois = 256;

    unsigned int width = 0;
    unsigned int height = 0;
    TArray<TSharedPtr<SRoi>> rois;
    unsigned int activeIndex = 0;

    CRoiList();

    size_t size() const { return rois.size(); }
    // Empty when index is out of range.
    TSharedPtr<SRoi> at(unsigned int index) const;
    TSharedPtr<SRoi> activeRoi() const { return at(activeIndex); }
    void setActiveRoi(TSharedPtr<SRoi> roi);
    // By pointer identity; kNotFound when absent.
    unsigned int IndexOf(TSharedPtr<SRoi> roi) const;

    // Sizes the region's mask to the list's image and appends it.
    void add(TSharedPtr<SRoi> roi);
    // The image region cannot be removed; activeIndex is left as it is.
    void remove(TSharedPtr<SRoi> roi);
    void removeAll();

    static CString MakeName(ERoiType type, int n);
    // The first "<Type> n" not yet used in the list.
    CString NewName(ERoiType type) const;
    bool CanRenameRoi(TSharedPtr<SRoi> roi, const CString& name) const;

    void SetImageSize(unsigned short w, unsigned short h);
    // Points follow originalPoints from each region's own image size to the list's.
    void Rescale();

    bool Load(const CString& path);
    bool Load(TSharedPtr<IFile> file);
    bool LoadBinary(TSharedPtr<IFile> file);
    bool LoadXml(TSharedPtr<IFile> file);
    bool LoadXml(CXMLFile& xml);

    bool Save(const CString& path, unsigned int which = kAll);
    bool Save(TSharedPtr<IFile> file, unsigned int which = kAll);
    bool SaveXml(TSharedPtr<IFile> file, unsigned int which = kAll);
    bool SaveXml(CXMLFile& xml, unsigned int which = kAll);
    bool SaveBinary(TSharedPtr<IFile> file);

private:
    // Renames roi "<name> (n)" while it clashes with the first `existing`
    // elements, and appends it without add.
    void AppendLoaded(TSharedPtr<SRoi> roi, size_t existing);
};

// "#RRGGBB" to red in the low byte; any other length gives 255 (red).
uint32_t ParseColor(const CString& text);

} // namespace orv::reduce
