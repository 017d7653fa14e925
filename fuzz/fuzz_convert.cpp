// A hostile recording taken all the way to measured values: the frame is
// decoded, then corrected and converted to every unit the recording offers,
// with the correction tables, calibration and settings the file brings.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/convert/ConvertContext.h"
#include "reduce/filters/RecordingReader.h"

using namespace orv;
using namespace orv::reduce;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    CRecordingReader reader;
    if (!reader.Open(input.Open()) || reader.numFrames() == 0) return 0;
    const uint64_t n = uint64_t(reader.frameWidth()) * reader.frameHeight();
    if (n == 0 || n > (1u << 20)) return 0;

    std::vector<uint16_t> counts(n);
    uint8_t preset = 0;
    if (!reader.DecodeFrame(0, STypedData(counts.data(), dtUInt16), n * 2, preset)) return 0;

    CConvertContext context;
    context.setReduceObjs(&reader.reduceObjs());
    TArray<EUnit> units;
    context.GetUnits(units);
    std::vector<float> values(n), corrected(n);
    std::vector<uint8_t> status(n);
    for (size_t u = 0; u < units.size() && u < 6; ++u) {
        if (!context.SetUnit(units.get(u), tempCelsius)) continue;
        bool presets[8] = {};
        presets[preset % 8] = true;
        if (!context.Update(presets, 8, 0)) continue;
        if (context.needToApplyNUC())
            context.ApplyNUC(STypedData(counts.data(), dtUInt16), STypedData(corrected.data(), dtFlt32),
                             static_cast<unsigned>(n));
        context.Convert(STypedData(counts.data(), dtUInt16), STypedData(values.data(), dtFlt32), status.data(),
                        static_cast<unsigned>(n));
    }
    return 0;
}
