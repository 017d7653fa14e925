// Region files, XML or binary, loaded into a list of a small frame size
// taken from the first two bytes; every loaded shape is rasterised and walked.
// Pixel indices must lie in the frame, and a list that loaded must save and
// load again with as many regions.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "reduce/roi/RoiList.h"

using namespace orv;
using namespace orv::reduce;

namespace {

void Check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

void Walk(CRoiList& list, unsigned short w, unsigned short h)
{
    for (size_t i = 1; i < list.size(); ++i) {
        SRoi& r = *list.at(unsigned(i));
        r.GetIndicies(w, h);
        for (unsigned k : r.indices) Check(k < unsigned(w) * h, "index outside the frame");
        r.GetCenterIndicies(w, h);
        for (unsigned k : r.indices) Check(k < unsigned(w) * h, "centre index outside the frame");
        r.GetCenter();
        TArray<SPoint> profile;
        r.GetLineProfilePoints(profile);
        for (const SPoint& p : profile) Check(p.x >= 0 && p.y >= 0 && p.x < w && p.y < h, "profile outside the frame");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2) return 0;
    const unsigned short w = static_cast<unsigned short>(1 + data[0] % 96);
    const unsigned short h = static_cast<unsigned short>(1 + data[1] % 64);
    fuzz::CInput input(data + 2, size - 2);
    CRoiList list;
    list.SetImageSize(w, h);
    if (!list.Load(input.Open())) return 0;
    Walk(list, w, h);
    // A different frame size rescales and redraws every shape.
    list.SetImageSize(static_cast<unsigned short>(w + 7), static_cast<unsigned short>(h / 2 + 1));
    Walk(list, static_cast<unsigned short>(w + 7), static_cast<unsigned short>(h / 2 + 1));

    CMemFile saved;
    saved.Create();
    TSharedPtr<IFile> file(&saved, noDestroy);
    Check(list.Save(file), "a loaded list does not save");
    file->SeekToBegin();
    CRoiList again;
    Check(again.Load(file), "a saved list does not load");
    Check(again.size() == list.size(), "a saved list loads with another count");

    if (list.size() <= CRoiList::kMaxBinaryRois + 1) {
        CMemFile binary;
        binary.Create();
        TSharedPtr<IFile> bfile(&binary, noDestroy);
        Check(list.SaveBinary(bfile), "a loaded list does not save as binary");
        bfile->SeekToBegin();
        CRoiList back;
        Check(back.Load(bfile), "a binary list does not load");
        Check(back.size() == list.size(), "a binary list loads with another count");
    }
    return 0;
}
