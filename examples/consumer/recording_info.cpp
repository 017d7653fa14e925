// A recording's camera, size and emissivity, read through the classes.
// Built with CMake against the installed package: see CMakeLists.txt here.
#include <cstdio>

#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectArray.h"

using namespace orv;
using namespace orv::reduce;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s RECORDING\n", argv[0]);
        return 2;
    }
    CReduceObjectArray objects;
    if (!LoadInfoFile(CString(argv[1]), objects)) {
        std::fprintf(stderr, "%s: not a recording\n", argv[1]);
        return 1;
    }
    TSharedPtr<CSourceInfoReduceObject> info = objects.GetSourceInfo(false);
    TSharedPtr<CObjectParametersReduceObject> scene = objects.GetObjectParameters(false);
    if (!info || !scene) {
        std::fprintf(stderr, "%s: no source info or object parameters\n", argv[1]);
        return 1;
    }
    std::printf("%s: %u x %u, emissivity %.2f\n", info->camera.c_str(), unsigned(info->imageWidth),
                unsigned(info->imageHeight), scene->emissivity);
    return 0;
}
