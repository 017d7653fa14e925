// What the C test cannot do through the flat interface: decode frames (so
// that the frame info objects hold a frame's items), measure regions, and
// make a unit list.
#include "reduce/capi/orvreduce.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/roi/RoiList.h"
#include "reduce/roi/RoiMeasure.h"

using namespace orv;
using namespace orv::reduce;

// Decodes frames 0 to frame in order, as a viewer would (the filter counts
// the frames it sees), and returns a new array with the objects.
extern "C" orvreduceReduceObjects* capiTestDecodeFrame(const char* path, unsigned int frame)
{
    CRecordingReader reader;
    uint8_t preset = 0;
    if (!reader.Open(CString(path))) return nullptr;
    for (unsigned int i = 0; i <= frame; ++i)
        if (!reader.DecodeFrame(i, STypedData(), 0, preset)) return nullptr;
    auto* objects = new CReduceObjectArray;
    for (unsigned int i = 0; i < reader.reduceObjs().GetSize(); ++i) objects->push_back(reader.reduceObjs().GetAt(i));
    return reinterpret_cast<orvreduceReduceObjects*>(objects);
}

// One pixel of frame `frame`, in counts: the reference the C test measures
// against.
extern "C" int capiTestPixel(const char* path, unsigned int frame, unsigned int x, unsigned int y)
{
    CRecordingReader reader;
    uint8_t preset = 0;
    if (!reader.Open(CString(path)) || x >= reader.frameWidth() || y >= reader.frameHeight()) return -1;
    TArray<uint16_t> counts;
    counts.resize(size_t(reader.frameWidth()) * reader.frameHeight());
    for (unsigned int i = 0; i <= frame; ++i)
        if (!reader.DecodeFrame(i, STypedData(counts.data(), dtUInt16), counts.size() * 2, preset)) return -1;
    return counts[size_t(y) * reader.frameWidth() + x];
}

// Measures every region of the list over frame `frame` in counts, with the
// class interface as a viewer does, and leaves the figures in the regions.
extern "C" bool capiTestMeasure(orvreduceRoiList* handle, const char* path, unsigned int frame)
{
    CRecordingReader reader;
    uint8_t preset = 0;
    if (!reader.Open(CString(path))) return false;
    TArray<uint16_t> counts;
    counts.resize(size_t(reader.frameWidth()) * reader.frameHeight());
    for (unsigned int i = 0; i <= frame; ++i)
        if (!reader.DecodeFrame(i, STypedData(counts.data(), dtUInt16), counts.size() * 2, preset)) return false;
    CRoiList& list = *reinterpret_cast<CRoiList*>(handle);
    list.SetImageSize(reader.frameWidth(), reader.frameHeight());
    CRoiMeter meter;
    if (!meter.Prepare(list)) return false;
    for (size_t i = 0; i < meter.size(); ++i) {
        SRoiFigures figures;
        if (!meter.Measure(i, STypedData(counts.data(), dtUInt16), nullptr, figures)) return false;
        meter.roi(i)->stats = figures.stats;
    }
    return true;
}

// A unit list as a converter offers one.
extern "C" orvreduceUnitArray* capiTestUnits(void)
{
    auto* units = new TArray<EUnit>;
    units->push_back(unitCounts);
    units->push_back(unitTemperatureUser);
    return reinterpret_cast<orvreduceUnitArray*>(units);
}
