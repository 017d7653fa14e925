// Regions of interest and region lists for Python.
#include <pybind11/stl.h>

#include <utility>
#include <vector>

#include "python/src/Common.h"
#include "reduce/roi/Roi.h"
#include "reduce/roi/RoiList.h"

namespace orv::reduce::python {

namespace {

// A region shared with the list that holds it: changes show in both.
struct SPyRoi {
    TSharedPtr<SRoi> roi;
};

using Points = std::vector<std::pair<double, double>>;

SPyRoi Made(TSharedPtr<SRoi> roi)
{
    if (!roi) throw py::value_error("the region could not be made");
    return SPyRoi{roi};
}

SPyRoi MakeWithPoints(const std::string& name, ERoiType type, const Points& points, size_t least)
{
    if (points.size() < least)
        throw py::value_error(std::string("a ") + RoiTypeToString(type) + " region needs at least " +
                              std::to_string(least) + " points");
    TSharedPtr<SRoi> roi(new SRoi);
    roi->name = CString(name);
    roi->type = type;
    for (const auto& p : points) roi->points.add(SPointF(p.first, p.second));
    return SPyRoi{roi};
}

} // namespace

void BindRoi(py::module_& m)
{
    py::class_<SPyRoi>(m, "Roi", "One region of interest: its shape in image coordinates and its settings.")
        .def_static("rect", [](const std::string& name, double left, double top, double right, double bottom) {
            SRectF r;
            r.left = left; r.top = top; r.right = right; r.bottom = bottom;
            return Made(CreateRectRoi(CString(name), r));
        }, py::arg("name"), py::arg("left"), py::arg("top"), py::arg("right"), py::arg("bottom"))
        .def_static("ellipse", [](const std::string& name, double cx, double cy, double rx, double ry) {
            SSizeF half;
            half.width = rx; half.height = ry;
            return Made(CreateEllipseRoi(CString(name), SPointF(cx, cy), half));
        }, py::arg("name"), py::arg("cx"), py::arg("cy"), py::arg("rx"), py::arg("ry"))
        .def_static("circle", [](const std::string& name, double cx, double cy, float radius) {
            return Made(CreateCircleRoi(CString(name), SPointF(cx, cy), radius));
        }, py::arg("name"), py::arg("cx"), py::arg("cy"), py::arg("radius"))
        .def_static("line", [](const std::string& name, double x0, double y0, double x1, double y1) {
            return Made(CreateLineRoi(CString(name), SPointF(x0, y0), SPointF(x1, y1)));
        }, py::arg("name"), py::arg("x0"), py::arg("y0"), py::arg("x1"), py::arg("y1"))
        .def_static("spot", [](const std::string& name, double x, double y) {
            return Made(CreateCursorRoi(CString(name), SPointF(x, y)));
        }, py::arg("name"), py::arg("x"), py::arg("y"))
        .def_static("polygon", [](const std::string& name, const Points& points) {
            return MakeWithPoints(name, roiPolygon, points, 3);
        }, py::arg("name"), py::arg("points"))
        .def_static("polyline", [](const std::string& name, const Points& points) {
            return MakeWithPoints(name, roiMultiLine, points, 2);
        }, py::arg("name"), py::arg("points"))
        .def_property("name", [](const SPyRoi& r) { return Text(r.roi->name); },
                      [](SPyRoi& r, const std::string& name) { r.roi->name = CString(name); })
        .def_property_readonly("type", [](const SPyRoi& r) { return std::string(RoiTypeToString(r.roi->type)); })
        .def_property_readonly("points", [](const SPyRoi& r) {
            Points out;
            for (const SPointF& p : r.roi->points) out.emplace_back(p.x, p.y);
            return out;
        })
        .def_property("emissivity",
            [](const SPyRoi& r) { return r.roi->useEmissivity ? py::object(py::float_(r.roi->emissivity)) : py::object(py::none()); },
            [](SPyRoi& r, py::object e) {
                if (e.is_none()) { r.roi->useEmissivity = false; return; }
                double v = e.cast<double>();
                if (!(v > 0 && v <= 1)) throw py::value_error("the emissivity must lie in (0, 1]");
                r.roi->useEmissivity = true;
                r.roi->emissivity = v;
            }, "The region's own emissivity, or None for the recording's.")
        .def_property("distance",
            [](const SPyRoi& r) { return r.roi->useDistance ? py::object(py::float_(r.roi->distance)) : py::object(py::none()); },
            [](SPyRoi& r, py::object d) {
                if (d.is_none()) { r.roi->useDistance = false; return; }
                double v = d.cast<double>();
                if (!(v >= 0) || v > 1e9) throw py::value_error("the distance must be a number of metres from 0");
                r.roi->useDistance = true;
                r.roi->distance = v;
            }, "The region's own object distance in metres, or None for the recording's.")
        .def("__repr__", [](const SPyRoi& r) {
            return "<Roi " + Text(r.roi->name) + ": " + RoiTypeToString(r.roi->type) + ", " +
                   std::to_string(r.roi->points.size()) + " points>";
        });

    py::class_<CRoiList>(m, "RoiList", "An ordered list of regions on one image size; element 0 is the whole image.")
        .def(py::init<>())
        .def_static("load", [](const std::string& path) {
            auto list = std::make_unique<CRoiList>();
            if (!list->Load(CString(path))) RaiseOSError(path + ": not a readable region file");
            return list;
        }, py::arg("path"), "Reads a region file (XML, or the older binary form).")
        .def("save", [](CRoiList& l, const std::string& path) {
            if (!l.Save(CString(path))) RaiseOSError(path + ": the region file could not be written");
        }, py::arg("path"), "Writes the list as an XML region file.")
        .def("set_image_size", [](CRoiList& l, unsigned w, unsigned h) {
            if (w == 0 || h == 0 || w > 65535 || h > 65535) throw py::value_error("the image size must lie in 1 to 65535");
            l.SetImageSize(static_cast<unsigned short>(w), static_cast<unsigned short>(h));
        }, py::arg("width"), py::arg("height"))
        .def_property_readonly("image_size", [](const CRoiList& l) { return std::make_pair(l.width, l.height); })
        .def("add", [](CRoiList& l, const SPyRoi& r) { l.add(r.roi); }, py::arg("roi"))
        .def("remove", [](CRoiList& l, const SPyRoi& r) { l.remove(r.roi); }, py::arg("roi"))
        .def("__len__", &CRoiList::size)
        .def("__getitem__", [](const CRoiList& l, py::ssize_t i) {
            py::ssize_t n = static_cast<py::ssize_t>(l.size());
            if (i < 0) i += n;
            if (i < 0 || i >= n) throw py::index_error("region index out of range");
            return SPyRoi{l.at(static_cast<unsigned>(i))};
        })
        .def_property_readonly("names", [](const CRoiList& l) {
            std::vector<std::string> out;
            for (size_t i = 0; i < l.size(); ++i) out.push_back(Text(l.at(unsigned(i))->name));
            return out;
        });
}

} // namespace orv::reduce::python
