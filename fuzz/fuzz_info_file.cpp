// The info file: the block walk, and the load that hands each block to its
// registered type's Load. What loads must save, and the saved file must load
// back to as many objects.
#include <cstdio>
#include <cstdlib>

#include "fuzz/FuzzInput.h"
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    {
        TArray<SInfoFileBlock> blocks;
        ScanInfoFile(input.Open(), blocks, 0);
    }
    for (unsigned int flags : {0u, unsigned(infoFileSkipCorrection)}) {
        CReduceObjectArray objects;
        TArray<SInfoFileBlock> blocks;
        if (!LoadInfoFile(input.Open(), objects, blocks, flags)) continue;
        if (objects.GetSize() > blocks.size()) std::abort();

        // The lookups walk every loaded object.
        objects.GetSourceInfo(false);
        for (unsigned char preset = 0; preset < 4; ++preset) {
            objects.GetFrameInfo(preset, false);
            objects.GetCorrection(preset, false);
        }
        objects.GetCorrectionCfg(false);
        objects.GetObjectParameters(false);
        objects.GetAbateCfg(false);
        objects.GetFOV(false);

        CMemFile saved;
        saved.Create();
        TSharedPtr<IFile> file(&saved, noDestroy);
        if (!SaveInfoFile(file, objects, flags)) continue;
        file->SeekToBegin();
        CReduceObjectArray again;
        if (!LoadInfoFile(file, again, flags)) {
            std::fprintf(stderr, "a saved info file does not load\n");
            std::abort();
        }
        if (again.GetSize() != objects.GetSize()) {
            std::fprintf(stderr, "%u objects saved, %u loaded back\n", objects.GetSize(), again.GetSize());
            std::abort();
        }
    }
    return 0;
}
