// Each registered object type's Load, fed directly: the first byte picks the
// type in registration order, then the block version (4 bytes) and the flag
// word's bits that Load looks at (1 byte); the rest is the payload. A loaded
// object must save, and what it saves must load again. Then, as the only
// calibration of a Counts recording, the object goes to every converter that
// takes it up, so hostile factory calibrations reach the family mathematics.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "reduce/convert/ConverterFactory.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectFactory.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// Counts spread over the range, and the value forms of each offered unit
// both ways, for presets 0 and 1 active.
void ConvertWith(TSharedPtr<IReduceObject> object)
{
    CReduceObjectArray objs;
    object->valid = true;
    object->preset = 0;
    objs.add(object);
    TArray<SConverterUnits> converters;
    if (!converterFactory()->GetConverterUnits(converters, unitCounts, objs)) return;
    uint16_t counts[64];
    for (unsigned i = 0; i < 64; ++i) counts[i] = static_cast<uint16_t>(i * 1040u + (i & 1));
    uint8_t presets[64];
    for (unsigned i = 0; i < 64; ++i) presets[i] = static_cast<uint8_t>(i % 3);
    float out[64];
    unsigned char status[64];
    bool active[2] = {true, true};
    for (const SConverterUnits& c : converters)
        for (EUnit unit : c.units) {
            if (unit == unitCounts) continue;
            TSharedPtr<IConverter> conv = converterFactory()->CreateByGUID(c.id);
            if (!conv || !conv->Update(unitCounts, tempCelsius, objs, unit, tempCelsius, active, 2, 0)) continue;
            conv->BaseToOutput(STypedData(counts, dtUInt16), STypedData(out, dtFlt32), status, 64u);
            conv->BaseToOutput(STypedData(counts, dtUInt16), presets, STypedData(out, dtFlt32), status, 64u);
            for (unsigned i = 0; i < 64; i += 9) {
                float value = 0, back = 0;
                unsigned char st = 0;
                conv->SignalToOutput(counts[i], value, st, 0);
                conv->OutputToBase(value, back, st, 1);
            }
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const TArray<CString> names = [] {
        TArray<CString> out;
        reduceObjectFactory().GetNames(out);
        return out;
    }();
    if (names.size() == 0) return 0;

    fuzz::CReader reader(data, size);
    const uint8_t pick = reader.Take<uint8_t>();
    const uint32_t version = reader.Take<uint32_t>();
    const unsigned int flags = reader.Take<uint8_t>() & (infoFileSkipCorrection | infoFileRecording);
    const CString& name = names.get(pick % names.size());

    fuzz::CInput input(reader.data(), reader.size());
    TSharedPtr<IReduceObject> object = reduceObjectFactory().CreateByName(name);
    if (!object || !object->Load(input.Open(), version, flags)) return 0;

    // The correction reads frames at the replacement indices unchecked.
    if (auto* correction = dynamic_cast<CCorrectionReduceObject*>(object.get()); correction && correction->replacements) {
        const uint64_t pixels = uint64_t(correction->width) * correction->height;
        for (uint64_t i = 0; i < pixels; ++i)
            if (correction->replacements[i] >= pixels) {
                std::fprintf(stderr, "Correction: replacement %u of pixel %llu is outside the table\n",
                             correction->replacements[i], (unsigned long long)i);
                std::abort();
            }
    }

    TSharedPtr<IReduceObject> copy = object->Duplicate();
    unsigned int crc = 0;
    unsigned long length = 0;
    object->CalcCRC(crc, length, flags);

    CMemFile saved;
    saved.Create();
    TSharedPtr<IFile> file(&saved, noDestroy);
    if (!object->Save(file, flags)) return 0;
    if (length != saved.GetSize()) {
        std::fprintf(stderr, "%s: CalcCRC counts %lu bytes, Save writes %lu\n", name.c_str(), length, saved.GetSize());
        std::abort();
    }
    file->SeekToBegin();
    TSharedPtr<IReduceObject> again = reduceObjectFactory().CreateByName(name);
    if (!again->Load(file, object->version, flags)) {
        std::fprintf(stderr, "%s: what Save wrote does not load\n", name.c_str());
        std::abort();
    }
    ConvertWith(object);
    return 0;
}
