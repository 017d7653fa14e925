// stats: per frame the figures of a rectangle (or the whole frame) in a unit.
#include <cstdio>
#include <string>

#include "reduce/kernels/Stats.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

int RunStats(const SStatsOptions& o)
{
    EUnit unit;
    ETempType scale;
    if (!ParseUnitName(o.unit, unit)) return Fail("unknown unit '%s'", o.unit.c_str());
    if (!ParseScale(o.scale, scale)) return Fail("unknown temperature scale '%s' (use C, F, K or R)", o.scale.c_str());
    CRecordingReduction reducer;
    if (!OpenReduction(reducer, o.input, unit, scale, -1, -1)) return kExitFailure;
    const unsigned w = reducer.width(), h = reducer.height();

    SArea area{0, 0, static_cast<uint16_t>(h - 1), static_cast<uint16_t>(w - 1)};
    unsigned rx = 0, ry = 0, rw = w, rh = h;
    if (!o.rect.empty()) {
        char tail = 0;
        if (std::sscanf(o.rect.c_str(), "%u,%u,%u,%u%c", &rx, &ry, &rw, &rh, &tail) != 4 || rw == 0 || rh == 0)
            return Fail("--rect wants X,Y,W,H with W and H above 0, not '%s'", o.rect.c_str());
        if (rx >= w || ry >= h || rw > w - rx || rh > h - ry)
            return Fail("--rect %u,%u,%u,%u lies outside the %ux%u frame", rx, ry, rw, rh, w, h);
        // Inclusive corners.
        area = SArea{static_cast<uint16_t>(ry), static_cast<uint16_t>(rx), static_cast<uint16_t>(ry + rh - 1),
                     static_cast<uint16_t>(rx + rw - 1)};
    }
    uint64_t first = 0, end = 0;
    const uint64_t total = reducer.numFrames();
    if (!ParseFrameRange(o.frames, total, first, end))
        return Fail("%s: bad frame range '%s': the recording has frames 0 to %llu", o.input.c_str(),
                    o.frames.c_str(), static_cast<unsigned long long>(total - 1));

    TArray<float> values;
    TArray<unsigned char> status;
    values.resize(reducer.pixels());
    status.resize(reducer.pixels());
    const std::string label = UnitLabel(unit, scale);
    if (o.csv)
        std::printf("frame,mean,std,min,min_x,min_y,max,max_x,max_y,valid\n");
    else
        std::printf("%s, region x %u y %u, %u x %u\n%6s %10s %9s %10s %11s %10s %11s %8s\n", label.c_str(), rx, ry,
                    rw, rh, "frame", "mean", "std", "min", "at", "max", "at", "valid");
    for (uint64_t i = first; i < end; ++i) {
        if (!reducer.Reduce(i, values.data(), status.data(), values.size()))
            return Fail("%s: %s", o.input.c_str(), reducer.lastError().c_str());
        CStats s;
        if (!GetStats(s, STypedData(values.data(), dtFlt32), status.data(), static_cast<unsigned short>(w),
                      static_cast<unsigned short>(h), area))
            return Fail("%s: frame %llu: the statistics failed", o.input.c_str(), static_cast<unsigned long long>(i));
        if (o.csv)
            std::printf("%llu,%.6g,%.6g,%.6g,%d,%d,%.6g,%d,%d,%u\n", static_cast<unsigned long long>(i), s.mean,
                        s.standardDeviation, s.minValue, s.minPosition.x, s.minPosition.y, s.maxValue,
                        s.maxPosition.x, s.maxPosition.y, s.numPixels);
        else
            std::printf("%6llu %10.3f %9.3f %10.3f (%4d,%4d) %10.3f (%4d,%4d) %8u\n",
                        static_cast<unsigned long long>(i), s.mean, s.standardDeviation, s.minValue, s.minPosition.x,
                        s.minPosition.y, s.maxValue, s.maxPosition.x, s.maxPosition.y, s.numPixels);
    }
    return 0;
}

void AddStats(CLI::App& app)
{
    auto o = std::make_shared<SStatsOptions>();
    CLI::App* cmd = app.add_subcommand("stats", "Per frame mean, deviation, extremes and valid pixels of a region");
    cmd->footer("Positions are x,y in pixels from the top left. 'valid' counts pixels whose status\n"
                "marks no range or data problem; the figures use only those.\n"
                "Example: orvreduce stats scene.qrt --rect 10,10,50,40 --unit temperature --scale C");
    cmd->add_option("FILE", o->input, "Recording to read")->required();
    cmd->add_option("--rect", o->rect, "Region X,Y,W,H; the whole frame by default");
    cmd->add_option("--unit", o->unit, "Unit of the values")->capture_default_str();
    cmd->add_option("--scale", o->scale, "Temperature scale: C, F, K or R")->capture_default_str();
    cmd->add_option("--frames", o->frames, "Frames A:B (B excluded), A: or A; all by default");
    cmd->add_flag("--csv", o->csv, "Comma-separated, one line per frame");
    cmd->callback([o] { g_exitCode = RunStats(*o); });
}

} // namespace orv::reduce::cli
