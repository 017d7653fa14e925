// CRCalFile, the user calibration: the first byte picks the form (bare XML
// through Load, the length-prefixed stream through Load, or FromXML); the
// rest is the stream. A calibration that loads answers every query and
// survives ToXML / FromXML and Save / Load.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "orv/RCalFile.h"

using namespace orv;

namespace {

void Query(const CRCalFile& cal)
{
    double start = 0, end = 0;
    cal.GetBandpass(start, end);
    cal.HasCoefficients();
    for (int preset = -1; preset <= CRCalFile::kPresets; ++preset) {
        int order = 0;
        TArray<double> a, b;
        CRCalFile::BACKGROUND_TYPE type{};
        double value = 0;
        unsigned int crc = 0;
        cal.GetPolyOrder(preset, order);
        cal.GetTempPolyOrder(preset, order);
        cal.GetCoefficients(preset, a);
        cal.GetTempCoefficients(preset, a);
        cal.GetLookup(preset, a, b);
        cal.GetBackgroundType(preset, type);
        cal.GetBackgroundValue(preset, value);
        cal.GetBackgroundFile(preset, 2, 2, a);
        cal.GetBackgroundFileCRC(preset, 2, 2, crc);
    }
}

[[noreturn]] void Fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    const uint8_t form = data[0] % 3;
    fuzz::CInput input(data + 1, size - 1);
    CRCalFile cal;
    bool loaded = false;
    if (form == 2)
        loaded = cal.FromXML(reinterpret_cast<const char*>(input.data()), input.size());
    else
        loaded = cal.Load(input.Open(), form == 0 ? CRCalFile::kPlainXML : 0);
    if (!loaded) return 0;
    Query(cal);

    const CString text = cal.ToXML();
    CRCalFile fromText;
    if (!fromText.FromXML(text.c_str(), text.length())) Fail("ToXML of a loaded calibration does not load");

    CMemFile saved;
    saved.Create();
    TSharedPtr<IFile> file(&saved, noDestroy);
    if (!cal.Save(file, 0)) Fail("a loaded calibration does not save");
    file->SeekToBegin();
    CRCalFile again;
    if (!again.Load(file, 0)) Fail("a saved calibration does not load");
    return 0;
}
