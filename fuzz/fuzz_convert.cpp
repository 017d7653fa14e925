// A hostile recording taken all the way to measured values: the frame is
// decoded, then corrected and converted to every unit the recording offers,
// with the correction tables, calibration and settings the file brings, as a
// whole frame and through every region form. The regions come from the
// decoded pixels, so they too are the input's, and may reach past the frame.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/convert/ConvertContext.h"
#include "reduce/filters/RecordingReader.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// Region forms with and without a preset byte per pixel. Index lists stay
// inside the frame: the caller vouches for them, the context cannot check.
void ConvertRegions(CConvertContext& context, const std::vector<uint16_t>& counts, unsigned short width,
                    unsigned short height)
{
    const size_t n = counts.size();
    // Up to two past the frame's edges, so that regions outside it occur.
    const auto row = [&](size_t i) { return uint16_t(counts[i % n] % (height + 2u)); };
    const auto column = [&](size_t i) { return uint16_t(counts[i % n] % (width + 2u)); };
    const SArea area{row(0), column(1), row(2), column(3)};
    TArray<SScanLine> lines;
    for (size_t i = 0; i < 3; ++i) lines.add(SScanLine{row(4 + i), column(7 + i), column(10 + i)});
    std::vector<uint8_t> mask(n), presets(n);
    for (size_t i = 0; i < n; ++i) {
        mask[i] = counts[i] & 1;
        presets[i] = uint8_t(counts[i] >> 8);
    }
    std::vector<unsigned> indices;
    for (size_t i = 0; i < 16; ++i) indices.push_back(unsigned(counts[(13 + i) % n] % n));

    const STypedData src(const_cast<uint16_t*>(counts.data()), dtUInt16);
    // Scan lines may repeat a row and the index list a pixel, so they can
    // yield more than the frame.
    const size_t room = n + 3 * (size_t(width) + 2) + indices.size();
    std::vector<float> out(room);
    std::vector<uint8_t> status(room);
    const STypedData dst(out.data(), dtFlt32);
    const unsigned count = unsigned(indices.size());
    for (const uint8_t* p : {static_cast<const uint8_t*>(nullptr), static_cast<const uint8_t*>(presets.data())}) {
        if (p) {
            context.Convert(src, p, dst, status.data(), unsigned(n));
            context.Convert(src, p, indices.data(), count, dst, status.data());
            context.Convert(src, p, width, height, area, dst, status.data());
            context.Convert(src, p, width, height, lines, dst, status.data());
            context.Convert(src, p, width, height, area, mask.data(), width, dst, status.data());
        } else {
            context.Convert(src, indices.data(), count, dst, status.data());
            context.Convert(src, width, height, area, dst, status.data());
            context.Convert(src, width, height, lines, dst, status.data());
            context.Convert(src, width, height, area, mask.data(), width, dst, status.data());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    CRecordingReader reader;
    if (!reader.Open(input.Open()) || reader.numFrames() == 0) return 0;
    const unsigned short width = reader.frameWidth(), height = reader.frameHeight();
    const uint64_t n = uint64_t(width) * height;
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
        // The frame's own preset, and others as its first pixel's bits say.
        bool presets[8] = {};
        for (int i = 0; i < 8; ++i) presets[i] = i == preset % 8 || (counts[0] >> i & 1);
        if (!context.Update(presets, 8, 0)) continue;
        // Every preset's frame is the decoded one: the merge still reads the
        // correction tables and limits the file brings.
        STypedData frames[8];
        for (STypedData& f : frames) f = STypedData(counts.data(), dtUInt16);
        std::vector<uint16_t> merged(n);
        context.Abate(frames, static_cast<unsigned>(n), STypedData(merged.data(), dtUInt16), status.data());
        if (context.needToApplyNUC())
            context.ApplyNUC(STypedData(counts.data(), dtUInt16), STypedData(corrected.data(), dtFlt32),
                             static_cast<unsigned>(n));
        context.Convert(STypedData(counts.data(), dtUInt16), STypedData(values.data(), dtFlt32), status.data(),
                        static_cast<unsigned>(n));
        ConvertRegions(context, counts, width, height);
        // One value both ways, and the file's own parameters changed on the
        // fly: the inverse searches and the tables' rebuild see its numbers.
        float value = 0, back = 0;
        unsigned char st = 0;
        context.Convert(float(counts[0]), value, st, preset);
        context.ConvertBack(value, back, st, preset);
        if (TSharedPtr<CObjectParametersReduceObject> params = reader.reduceObjs().GetObjectParameters(false)) {
            if (context.ChangeObjectParameters(params.get()))
                context.Convert(STypedData(counts.data(), dtUInt16), STypedData(values.data(), dtFlt32),
                                status.data(), static_cast<unsigned>(n));
        }
    }
    return 0;
}
