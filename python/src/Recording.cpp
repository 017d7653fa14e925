// Recordings for Python: frames into numpy arrays, frame info, verification.
// The GIL is released while frames are read and converted; a lock per
// recording keeps two Python threads from sharing one file position.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "orv/PixelType.h"
#include "python/src/Common.h"
#include "reduce/convert/Converter.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/roi/RoiRecordingMeter.h"
#include "reduce/store/RecordingReduction.h"
#include "reduce/store/VerifyRecording.h"

namespace orv::reduce::python {

namespace {

// numpy's element type and the number of channels of a raw pixel.
py::dtype RawDtype(EDataType type, size_t& channels)
{
    channels = 1;
    switch (type) {
    case dtInt8: return py::dtype::of<int8_t>();
    case dtUInt8: return py::dtype::of<uint8_t>();
    case dtInt16: return py::dtype::of<int16_t>();
    case dtUInt16: return py::dtype::of<uint16_t>();
    case dtInt32: return py::dtype::of<int32_t>();
    case dtUInt32: return py::dtype::of<uint32_t>();
    case dtInt64: return py::dtype::of<int64_t>();
    case dtUInt64: return py::dtype::of<uint64_t>();
    case dtFlt32: return py::dtype::of<float>();
    case dtFlt64: return py::dtype::of<double>();
    case dtRGB24: channels = 3; return py::dtype::of<uint8_t>();
    case dtRGB48: channels = 3; return py::dtype::of<uint16_t>();
    default: throw py::value_error("the recording's pixels have no element type");
    }
}

class CPyRecording {
public:
    explicit CPyRecording(const std::string& path) : m_path(path)
    {
        m_reduction = std::make_unique<CRecordingReduction>();
        bool ok;
        {
            py::gil_scoped_release release;
            ok = m_reduction->Open(CString(path));
        }
        if (!ok) RaiseOSError(path + ": " + Text(m_reduction->lastError()));
    }

    void Close()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        m_reduction->Close();
    }
    bool closed() const { return !m_reduction->isOpen(); }
    const std::string& path() const { return m_path; }

    uint64_t NumFrames()
    {
        Check();
        return m_reduction->numFrames();
    }

    py::dict Info()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        Check();
        CRecordingReduction& r = *m_reduction;
        py::dict d;
        d["path"] = m_path;
        d["width"] = r.width();
        d["height"] = r.height();
        d["frames"] = r.numFrames();
        d["pixel_type"] = Text(PixelTypeName(r.reader().pixelType()));
        std::vector<std::string> units;
        for (EUnit u : r.units()) units.emplace_back(UnitToString(u));
        d["units"] = units;
        auto info = r.reader().sourceInfo();
        if (info) {
            d["base_unit"] = std::string(UnitToString(info->baseUnit));
            d["camera"] = Text(info->camera);
            d["camera_model"] = Text(info->cameraModel);
            d["camera_serial"] = Text(info->cameraSerial);
            d["lens"] = Text(info->lens);
            d["ad_bits"] = info->adBits;
            py::list presets;
            for (unsigned p = 0; p < info->numPresets && p < 8; ++p) {
                const auto& s = info->presets[p];
                py::dict preset;
                preset["index"] = p;
                preset["available"] = s.available;
                preset["calibrated"] = s.calibrated;
                preset["frame_rate"] = s.frameRateValid ? py::object(py::float_(s.frameRate)) : py::none();
                preset["integration_time"] = s.intTimeValid ? py::object(py::float_(s.intTime)) : py::none();
                preset["min_temperature"] = s.minTemp;
                preset["max_temperature"] = s.maxTemp;
                presets.append(preset);
            }
            d["presets"] = presets;
        }
        auto params = r.reader().reduceObjs().GetObjectParameters(false);
        if (params) {
            d["emissivity"] = params->emissivity;
            d["distance"] = params->distance;
        }
        return d;
    }

    // Frames (indices already checked non-negative by the package) to
    // values and, when asked, status planes.
    py::tuple Read(const std::vector<int64_t>& frames, const std::string& unitText, int scale,
                   double emissivity, double distance, bool withStatus, unsigned threads, py::object into)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        Check();
        CRecordingReduction& r = *m_reduction;
        for (int64_t f : frames)
            if (f < 0 || uint64_t(f) >= r.numFrames())
                throw py::index_error("frame " + std::to_string(f) + " is outside 0 to " +
                                      std::to_string(r.numFrames()) + " - 1");
        SetUnit(unitText, scale);
        SetParameters(emissivity, distance);
        const size_t n = frames.size(), h = r.height(), w = r.width(), pixels = r.pixels();
        // The caller's array when given (checked before anything is read),
        // else a new one.
        py::array_t<float> values;
        if (!into.is_none()) {
            if (!py::isinstance<py::array_t<float, py::array::c_style>>(into))
                throw py::value_error("out must be a C-contiguous float32 numpy array");
            values = into.cast<py::array_t<float, py::array::c_style>>();
            if (values.ndim() != 3 || size_t(values.shape(0)) != n || size_t(values.shape(1)) != h ||
                size_t(values.shape(2)) != w)
                throw py::value_error("out must have the shape (" + std::to_string(n) + ", " + std::to_string(h) +
                                      ", " + std::to_string(w) + ")");
            if (!values.writeable()) throw py::value_error("out is read-only");
        } else {
            values = py::array_t<float>({n, h, w});
        }
        py::array_t<uint8_t> status;
        std::vector<uint8_t> scratch;
        uint8_t* statusOut;
        if (withStatus) {
            status = py::array_t<uint8_t>({n, h, w});
            statusOut = status.mutable_data();
        } else {
            scratch.resize(pixels);
            statusOut = scratch.data();
        }
        float* out = values.mutable_data();
        bool ok = true;
        {
            py::gil_scoped_release release;
            // Runs of consecutive frames are reduced on the threads, each
            // block straight into its place in the array; lone frames here.
            for (size_t i = 0; i < n && ok;) {
                size_t run = 1;
                while (i + run < n && frames[i + run] == frames[i] + int64_t(run)) ++run;
                const uint64_t at = uint64_t(frames[i]);
                if (run == 1) {
                    ok = r.Reduce(at, out + i * pixels, statusOut + (withStatus ? i * pixels : 0), pixels);
                } else {
                    float* values = out + i * pixels;
                    uint8_t* planes = withStatus ? statusOut + i * pixels : nullptr;
                    ok = r.ReduceFrames(
                        at, at + run, threads, [](uint64_t, uint64_t, const float*, const unsigned char*) { return true; },
                        0, [&](uint64_t first, uint64_t, float*& v, unsigned char*& st) {
                            v = values + (first - at) * pixels;
                            if (planes) st = planes + (first - at) * pixels;
                        });
                }
                i += run;
            }
        }
        // The reduction's reasons name the frame.
        if (!ok) RaiseOSError(m_path + ": " + Text(r.lastError()));
        return withStatus ? py::make_tuple(values, status) : py::make_tuple(values, py::none());
    }

    py::array Raw(int64_t index)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        Check();
        CRecordingReduction& r = *m_reduction;
        CheckIndex(index);
        bool ok;
        {
            py::gil_scoped_release release;
            ok = r.Decode(uint64_t(index));
        }
        if (!ok) RaiseOSError(m_path + ": frame " + std::to_string(index) + ": " + Text(r.lastError()));
        STypedData raw = r.raw();
        size_t channels;
        py::dtype dtype = RawDtype(raw.type, channels);
        std::vector<size_t> shape{r.height(), r.width()};
        if (channels > 1) shape.push_back(channels);
        py::array out(dtype, shape);
        std::memcpy(out.mutable_data(), raw.data, size_t(out.nbytes()));
        return out;
    }

    // The frame's entries as name -> text, and its time in ticks.
    py::tuple FrameInfo(int64_t index)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        Check();
        CheckIndex(index);
        TSharedPtr<CFrameInfoReduceObject> fi;
        {
            py::gil_scoped_release release;
            fi = m_reduction->FrameInfo(uint64_t(index));
        }
        if (!fi) RaiseOSError(m_path + ": frame " + std::to_string(index) + ": " + Text(m_reduction->lastError()));
        py::dict entries, units;
        for (unsigned i = 0; i < fi->NumEntries(); ++i) {
            auto e = fi->GetAt(i);
            if (!e.exists) continue;
            entries[py::str(Text(e.name))] = Text(e.value);
            if (e.unit.length()) units[py::str(Text(e.name))] = Text(e.unit);
        }
        py::object ticks = fi->time.IsEmpty() ? py::object(py::none()) : py::object(py::int_(fi->time.ticks()));
        return py::make_tuple(entries, units, ticks, int(fi->timeSource));
    }

    py::tuple Verify()
    {
        CRecordingVerifier v;
        bool ok;
        {
            py::gil_scoped_release release;
            ok = v.Verify(CString(m_path));
        }
        py::list blocks;
        for (const SBlockCheck& b : v.blocks()) {
            py::dict d;
            d["name"] = Text(b.name);
            d["type"] = Text(GuidToString(b.typeID));
            d["version"] = b.version;
            d["preset"] = b.preset;
            d["frame"] = b.frame;
            d["offset"] = b.offset;
            d["size"] = b.size == ~uint64_t(0) ? py::object(py::none()) : py::object(py::int_(b.size));
            d["stored_crc"] = b.storedCrc;
            d["computed_crc"] = b.crcChecked ? py::object(py::int_(b.computedCrc)) : py::object(py::none());
            d["ok"] = b.ok;
            d["reason"] = Text(b.reason);
            blocks.append(d);
        }
        return py::make_tuple(ok, blocks, Text(v.lastError()));
    }

    // Every region of list over frames: one row per frame and region, as
    // columns. emissivity and distance (below 0: the recording's own) hold
    // for regions that do not set their own.
    py::dict Measure(CRoiList& list, const std::vector<int64_t>& frames, const std::string& unitText, int scale,
                     double emissivity, double distance)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        Check();
        CRecordingReduction& r = *m_reduction;
        SetUnit(unitText, scale);
        for (int64_t f : frames) CheckIndex(f);
        if (emissivity >= 0 && !(emissivity > 0 && emissivity <= 1))
            throw py::value_error("the emissivity must lie in (0, 1]");
        SetParameters(-1, -1);
        CRoiRecordingMeter meter;
        if (!meter.Prepare(r, list, emissivity, distance)) throw py::value_error(m_path + ": " + Text(meter.lastError()));
        // The meter leaves the reduction in these parameters.
        m_emissivity = emissivity < 0 ? -1 : emissivity;
        m_distance = distance < 0 ? -1 : distance;
        const size_t regions = list.size(), rows = frames.size() * regions;
        py::array_t<int64_t> frame(rows), region(rows), ticks(rows), minX(rows), minY(rows), maxX(rows), maxY(rows), valid(rows);
        py::array_t<double> mean(rows), stdDev(rows), minV(rows), maxV(rows), center(rows);
        std::vector<uint8_t> ok(frames.size(), 0);
        std::vector<std::vector<double>> profiles(rows);
        std::vector<uint8_t> hasProfile(rows, 0);
        size_t failed = 0;
        {
            py::gil_scoped_release release;
            TArray<SRoiFigures> figures;
            size_t row = 0;
            for (size_t i = 0; i < frames.size(); ++i) {
                if (!meter.Measure(uint64_t(frames[i]), figures) || figures.size() != regions) {
                    failed = i;
                    break;
                }
                ok[i] = 1;
                TSharedPtr<CFrameInfoReduceObject> fi = r.reader().reduceObjs().GetFrameInfo(r.preset(), false);
                const int64_t t = fi && !fi->time.IsEmpty() ? fi->time.ticks() : -1;
                for (size_t k = 0; k < regions; ++k, ++row) {
                    const CStats& st = figures[k].stats;
                    frame.mutable_at(row) = frames[i];
                    region.mutable_at(row) = int64_t(k);
                    if (figures[k].profilePoints.size()) {
                        hasProfile[row] = 1;
                        profiles[row].assign(figures[k].profile.begin(), figures[k].profile.end());
                    }
                    ticks.mutable_at(row) = t;
                    mean.mutable_at(row) = st.mean;
                    stdDev.mutable_at(row) = st.standardDeviation;
                    minV.mutable_at(row) = st.minValue;
                    maxV.mutable_at(row) = st.maxValue;
                    minX.mutable_at(row) = st.minPosition.x;
                    minY.mutable_at(row) = st.minPosition.y;
                    maxX.mutable_at(row) = st.maxPosition.x;
                    maxY.mutable_at(row) = st.maxPosition.y;
                    valid.mutable_at(row) = st.numPixels;
                    center.mutable_at(row) = figures[k].centerValue;
                }
            }
        }
        if (frames.size() && !ok.back())
            RaiseOSError(m_path + ": frame " + std::to_string(frames[failed]) + ": " + Text(meter.lastError()));
        py::list names, types, profile;
        for (size_t i = 0, row = 0; i < frames.size(); ++i)
            for (size_t k = 0; k < regions; ++k, ++row) {
                names.append(Text(list.at(unsigned(k))->name));
                types.append(std::string(RoiTypeToString(list.at(unsigned(k))->type)));
                profile.append(hasProfile[row] ? py::object(py::array_t<double>(profiles[row].size(), profiles[row].data()))
                                               : py::object(py::none()));
            }
        py::dict d;
        d["frame"] = frame;
        d["ticks"] = ticks;
        d["region"] = region;
        d["name"] = names;
        d["type"] = types;
        d["mean"] = mean;
        d["std"] = stdDev;
        d["min"] = minV;
        d["min_x"] = minX;
        d["min_y"] = minY;
        d["max"] = maxV;
        d["max_x"] = maxX;
        d["max_y"] = maxY;
        d["valid"] = valid;
        d["center"] = center;
        d["profile"] = profile;
        return d;
    }

private:
    void SetUnit(const std::string& unitText, int scale)
    {
        EUnit unit = ParseUnit(unitText.c_str());
        if (unit == unitError) throw py::value_error("unknown unit \"" + unitText + "\"");
        if (scale < tempCelsius || scale > tempRankine) throw py::value_error("unknown temperature scale");
        CRecordingReduction& r = *m_reduction;
        if (r.unit() != unit || r.scale() != ETempType(scale)) {
            if (!r.SetUnit(unit, ETempType(scale))) throw py::value_error(m_path + ": " + Text(r.lastError()));
        }
    }
    void SetParameters(double emissivity, double distance)
    {
        if (emissivity == m_emissivity && distance == m_distance) return;
        if (!m_reduction->SetObjectParameters(emissivity, distance))
            throw py::value_error(m_path + ": " + Text(m_reduction->lastError()));
        m_emissivity = emissivity < 0 ? -1 : emissivity;
        m_distance = distance < 0 ? -1 : distance;
    }
    void Check() const
    {
        if (!m_reduction->isOpen()) throw py::value_error("the recording " + m_path + " is closed");
    }
    void CheckIndex(int64_t index) const
    {
        if (index < 0 || uint64_t(index) >= m_reduction->numFrames())
            throw py::index_error("frame " + std::to_string(index) + " is outside 0 to " +
                                  std::to_string(m_reduction->numFrames()) + " - 1");
    }

    std::string m_path;
    std::unique_ptr<CRecordingReduction> m_reduction;
    std::mutex m_lock;
    double m_emissivity = -1;
    double m_distance = -1;
};

} // namespace

void BindRecording(py::module_& m)
{
    py::class_<CPyRecording>(m, "_Recording")
        .def(py::init<const std::string&>(), py::arg("path"))
        .def("close", &CPyRecording::Close)
        .def_property_readonly("closed", &CPyRecording::closed)
        .def_property_readonly("path", &CPyRecording::path)
        .def("num_frames", &CPyRecording::NumFrames)
        .def("info", &CPyRecording::Info)
        .def("read", &CPyRecording::Read, py::arg("frames"), py::arg("unit"), py::arg("scale"),
             py::arg("emissivity"), py::arg("distance"), py::arg("status"), py::arg("threads"), py::arg("out"))
        .def("raw", &CPyRecording::Raw, py::arg("index"))
        .def("frame_info", &CPyRecording::FrameInfo, py::arg("index"))
        .def("verify", &CPyRecording::Verify)
        .def("measure", &CPyRecording::Measure, py::arg("rois"), py::arg("frames"), py::arg("unit"), py::arg("scale"),
             py::arg("emissivity"), py::arg("distance"));
}

} // namespace orv::reduce::python
