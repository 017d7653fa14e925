// Each registered object type's Load, fed directly: the first byte picks the
// type in registration order, then the block version (4 bytes) and the flag
// word's bits that Load looks at (1 byte); the rest is the payload. A loaded
// object must save, and what it saves must load again.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectFactory.h"

using namespace orv;
using namespace orv::reduce;

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
    return 0;
}
