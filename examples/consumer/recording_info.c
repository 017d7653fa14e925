/* A recording's camera, size and emissivity, read from C through the flat
 * interface. Build against the installed package with pkg-config:
 *
 *   cc recording_info.c $(pkg-config --cflags --libs orvreduce) -o recording_info
 */
#include <stdio.h>

#include "reduce/capi/orvreduce.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s RECORDING\n", argv[0]);
        return 2;
    }
    orvreduceReduceObjects* objects = orvreduceReduceObjects_Alloc();
    if (!orvreduceReduceObjects_Load(objects, argv[1])) {
        fprintf(stderr, "%s: not a recording\n", argv[1]);
        orvreduceReduceObjects_Free(objects);
        return 1;
    }
    orvreduceSourceInfo* info = orvreduceReduceObjects_GetSourceInfo(objects, false);
    orvreduceObjectParameters* scene = orvreduceReduceObjects_GetObjectParameters(objects, false);
    /* Handles keep their objects alive: the array may go first. */
    orvreduceReduceObjects_Free(objects);
    if (!info || !scene) {
        fprintf(stderr, "%s: no source info or object parameters\n", argv[1]);
        orvreduceSourceInfo_Free(info);
        orvreduceObjectParameters_Free(scene);
        return 1;
    }
    char* camera = orvreduceSourceInfo_camera(info);
    printf("%s: %u x %u, emissivity %.2f\n", camera, (unsigned)orvreduceSourceInfo_imageWidth(info),
           (unsigned)orvreduceSourceInfo_imageHeight(info), orvreduceObjectParameters_emissivity(scene));
    orvStrFree(camera);
    orvreduceSourceInfo_Free(info);
    orvreduceObjectParameters_Free(scene);
    return 0;
}
