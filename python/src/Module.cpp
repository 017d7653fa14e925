// The extension module's entry: a thin layer over the reduce library, with
// the pythonic surface in the orvreduce package around it.
#include "python/src/Common.h"

PYBIND11_MODULE(_orvreduce, m)
{
    m.doc() = "Core of the orvreduce package: recordings, regions and their figures.";
    orv::reduce::python::BindRecording(m);
    orv::reduce::python::BindRoi(m);
}
