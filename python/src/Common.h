#pragma once
// Shared pieces of the extension module: how library failures become Python
// exceptions, and the binders of each part.
#include <pybind11/pybind11.h>

#include <string>

#include "orv/String.h"

namespace orv::reduce::python {

namespace py = pybind11;

// A file that cannot be opened, read or decoded.
[[noreturn]] inline void RaiseOSError(const std::string& what)
{
    PyErr_SetString(PyExc_OSError, what.c_str());
    throw py::error_already_set();
}

inline std::string Text(const CString& s) { return std::string(s.c_str(), s.length()); }

void BindRecording(py::module_& m);
void BindRoi(py::module_& m);

} // namespace orv::reduce::python
