// What the C test cannot do through the flat interface: decode frames, so
// that the frame info objects hold a frame's items.
#include "reduce/capi/orvreduce.h"
#include "reduce/filters/RecordingReader.h"

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
