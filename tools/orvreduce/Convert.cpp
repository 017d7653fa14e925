// convert: frames reduced to a unit and written as float TIFF, NumPy, CSV or
// a PNG preview. Output goes to a temporary file that is renamed into place
// only when every frame has been written.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "reduce/convert/Converter.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/ImageWriters.h"

namespace orv::reduce::cli {

namespace {

std::string Extension(const std::string& path)
{
    size_t dot = path.find_last_of('.');
    size_t slash = path.find_last_of('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string e = path.substr(dot + 1);
    for (char& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return e;
}

// "out.tiff" -> "out.status.tiff"
std::string StatusPath(const std::string& path)
{
    size_t dot = path.find_last_of('.');
    return path.substr(0, dot) + ".status" + path.substr(dot);
}

// Each region's edge pixels in its own colour (0xBBGGRR, flagged in the top
// byte): the pixels of its mask with a 4-neighbour outside it or at the
// frame's edge; lines and cursors are all edge.
void RegionOutlines(const CRoiList& list, TArray<uint32_t>& out)
{
    const int w = int(list.width), h = int(list.height);
    out.resize(size_t(w) * h);
    for (size_t k = 1; k < list.size(); ++k) {
        const SRoi& r = *list.at(unsigned(k));
        if (!r.bitmask) continue;
        auto in = [&](int x, int y) {
            return x >= 0 && y >= 0 && x < w && y < h && r.bitmask[size_t(y) * r.bitmaskStride + size_t(x)];
        };
        for (int y = std::max(r.bounds.top, 0); y < std::min(r.bounds.bottom, h); ++y)
            for (int x = std::max(r.bounds.left, 0); x < std::min(r.bounds.right, w); ++x)
                if (in(x, y) && !(in(x - 1, y) && in(x + 1, y) && in(x, y - 1) && in(x, y + 1)))
                    out[size_t(y) * w + x] = 0x1000000u | (r.color & 0xFFFFFF);
    }
}

} // namespace

int RunConvert(const SConvertOptions& o)
{
    EUnit unit;
    ETempType scale;
    if (!ParseUnitName(o.unit, unit)) return Fail("unknown unit '%s'", o.unit.c_str());
    if (!ParseScale(o.scale, scale)) return Fail("unknown temperature scale '%s' (use C, F, K or R)", o.scale.c_str());
    if (o.emissivity >= 0 && (o.emissivity <= 0 || o.emissivity > 1))
        return Fail("--emissivity must lie in (0, 1], not %g", o.emissivity);
    const std::string ext = Extension(o.output);
    if (ext != "tif" && ext != "tiff" && ext != "npy" && ext != "csv" && ext != "png")
        return Fail("%s: the output type follows the extension: .tiff, .npy, .csv or .png", o.output.c_str());

    // Before anything is read or written: the output must not replace the
    // input, whatever the spelling, link or companion file.
    if (RefuseOverwritingInput(o.input, o.output, "the output")) return kExitFailure;
    if ((ext == "tif" || ext == "tiff") && RefuseOverwritingInput(o.input, StatusPath(o.output), "the status file"))
        return kExitFailure;
    // A colour picture has no single value a pixel: it goes to PNG as it is.
    const bool colour = unit == unitRGB24 || unit == unitRGB48;
    if (colour && ext != "png")
        return Fail("%s: \"%s\" is written as a PNG picture only; for values choose \"Red Channel\", "
                    "\"Green Channel\", \"Blue Channel\" or \"RGB Average\"",
                    o.output.c_str(), UnitToString(unit));

    CRecordingReduction reducer;
    if (!OpenReduction(reducer, o.input, unit, scale, o.emissivity, o.distance)) return kExitFailure;
    const uint64_t total = reducer.numFrames();
    uint64_t first = 0, end = 0;
    if (!ParseFrameRange(o.frames, total, first, end))
        return Fail("%s: bad frame range '%s': the recording has frames 0 to %llu", o.input.c_str(),
                    o.frames.c_str(), static_cast<unsigned long long>(total - 1));
    // A picture shows one frame: the first of the range.
    if (ext == "png") end = first + 1;

    const unsigned w = reducer.width(), h = reducer.height();
    const size_t n = reducer.pixels();
    TArray<uint32_t> outlines;
    if (!o.roi.empty()) {
        if (ext != "png") return Fail("--roi draws region outlines on .png pictures only, not on .%s", ext.c_str());
        CRoiList list;
        if (!LoadRegionFile(list, o.roi, w, h)) return kExitFailure;
        RegionOutlines(list, outlines);
    }
    const std::string label = UnitLabel(unit, scale);
    const uint64_t count = end - first;

    CTempOutput out(o.output);
    std::unique_ptr<CTempOutput> statusOut;
    std::string error, errorPath = o.output;
    CTiffWriter tiff, tiffStatus;
    CNpyWriter npy;
    FILE* csv = nullptr;
    auto failOutput = [&](const std::string& path) {
        if (csv) std::fclose(csv);
        return Fail("%s: %s", path.c_str(), error.c_str());
    };
    if (ext == "tif" || ext == "tiff") {
        statusOut = std::make_unique<CTempOutput>(StatusPath(o.output));
        if (!tiff.Open(out.path(), error)) return failOutput(o.output);
        if (!tiffStatus.Open(statusOut->path(), error)) return failOutput(statusOut->finalPath());
    } else if (ext == "npy") {
        if (!npy.Open(out.path(), count, w, h, error)) return failOutput(o.output);
    } else if (ext == "csv") {
        csv = std::fopen(out.path().c_str(), "w");
        if (!csv) return Fail("%s: cannot create the file", o.output.c_str());
        std::fprintf(csv, "# %s, %s, %ux%u\n", o.input.c_str(), label.c_str(), w, h);
    }

    // Blocks of frames arrive in frame order from the reducing threads and
    // are written here, one block at a time.
    CProgress progress("convert", count);
    if (colour) {
        if (!reducer.Decode(first)) return Fail("%s: %s", o.input.c_str(), reducer.lastError().c_str());
        if (!WriteColourPng(out.path(), reducer.raw().data, reducer.raw().type == dtRGB48, w, h, error))
            return failOutput(o.output);
        progress.Step(1);
    }
    auto write = [&](uint64_t at, uint64_t frames, const float* values, const unsigned char* status) {
        if (ext == "npy") {
            if (!npy.AddFrames(values, frames * n, error)) return false;
            progress.Step(static_cast<uint32_t>(at + frames - first));
            return true;
        }
        for (uint64_t k = 0; k < frames; ++k) {
            const uint64_t i = at + k;
            const float* v = values + k * n;
            const unsigned char* st = status + k * n;
            const uint32_t page = static_cast<uint32_t>(i - first), pages = static_cast<uint32_t>(count);
            bool ok = true;
            if (ext == "tif" || ext == "tiff") {
                std::string description = "frame " + std::to_string(i) + ", " + label;
                ok = tiff.AddPage(v, w, h, page, pages, description, error);
                if (ok && !tiffStatus.AddPage(st, w, h, page, pages, error)) {
                    errorPath = statusOut->finalPath();
                    return false;
                }
            } else if (ext == "csv") {
                ok = WriteCsvFrame(csv, i, v, st, w, h, error);
            } else {
                ok = WritePreviewPng(out.path(), v, st, w, h, label, error,
                                     outlines.empty() ? nullptr : outlines.data());
            }
            if (!ok) return false;
            progress.Step(page + 1);
        }
        return true;
    };
    if (!colour && !reducer.ReduceFrames(first, end, o.threads, write)) {
        if (!error.empty()) return failOutput(errorPath);
        if (csv) std::fclose(csv);
        return Fail("%s: %s", o.input.c_str(), reducer.lastError().c_str());
    }

    bool closed = true;
    if (ext == "tif" || ext == "tiff") closed = tiff.Close(error) && tiffStatus.Close(error);
    else if (ext == "npy") closed = npy.Close(error);
    else if (ext == "csv") {
        closed = std::fclose(csv) == 0;
        csv = nullptr;
        if (!closed) error = "closing the file failed (disk full?)";
    }
    if (!closed) return failOutput(o.output);
    if (!out.Commit()) return Fail("%s: cannot rename the finished file into place", o.output.c_str());
    if (statusOut && !statusOut->Commit())
        return Fail("%s: cannot rename the finished file into place", statusOut->finalPath().c_str());
    if (!o.quiet) {
        std::printf("wrote %s: %llu frame%s (%llu to %llu), %ux%u, %s\n", o.output.c_str(),
                    static_cast<unsigned long long>(count), count == 1 ? "" : "s",
                    static_cast<unsigned long long>(first), static_cast<unsigned long long>(end - 1), w, h,
                    label.c_str());
        if (statusOut) std::printf("wrote %s: the status byte of every pixel\n", statusOut->finalPath().c_str());
    }
    return 0;
}

void AddConvert(CLI::App& app)
{
    auto o = std::make_shared<SConvertOptions>();
    CLI::App* cmd = app.add_subcommand("convert", "Reduce frames to a unit and write them as TIFF, NumPy, CSV or PNG");
    cmd->footer(
        "The output type follows the extension of OUT:\n"
        "  .tiff/.tif  32-bit float, one page per frame; the status bytes go to OUT.status.tiff\n"
        "  .npy        float32 array of shape (frames, height, width)\n"
        "  .csv        one block of rows per frame; invalid pixels are empty fields\n"
        "  .png        false colour picture of the first frame asked for, with a colour bar;\n"
        "              a colour recording in \"RGB (24-bit)\" or \"RGB (48-bit)\" as it is\n"
        "Units: \"Counts\", \"Radiance (User)\", \"Temperature (User)\" (or counts, radiance,\n"
        "temperature); colour recordings offer \"Red Channel\", \"Green Channel\", \"Blue Channel\"\n"
        "and \"RGB Average\"; 'orvreduce info FILE' lists those the recording offers.\n"
        "Example: orvreduce convert scene.qrt --unit temperature --scale K --frames 0:10 -o t.tiff");
    cmd->add_option("FILE", o->input, "Recording to read")->required();
    cmd->add_option("--roi", o->roi, "Region file whose outlines the .png shows, each in its colour");
    cmd->add_option("-o,--output", o->output, "Output file; its extension chooses the type")->required();
    cmd->add_option("--unit", o->unit, "Unit of the values")->capture_default_str();
    cmd->add_option("--scale", o->scale, "Temperature scale: C, F, K or R")->capture_default_str();
    cmd->add_option("--frames", o->frames, "Frames A:B (B excluded), A: or A; all by default");
    cmd->add_option("--emissivity", o->emissivity, "Replace the recording's emissivity, in (0, 1]");
    cmd->add_option("--distance", o->distance, "Replace the recording's object distance, metres");
    cmd->add_option("--threads", o->threads, "Threads that reduce frames; 0 or none: every core")
        ->check(CLI::Range(0u, 1024u));
    cmd->add_flag("-q,--quiet", o->quiet, "Print nothing on success");
    cmd->callback([o] { g_exitCode = RunConvert(*o); });
}

} // namespace orv::reduce::cli
