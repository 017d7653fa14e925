// frames: the per-frame information of a recording, as its filter reads it.
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "reduce/filters/GenericFilter.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

namespace {

// Quotes a CSV field when it needs it.
std::string Csv(const CString& text)
{
    std::string s = text.c_str();
    if (s.find_first_of(",\"\n") == std::string::npos) return s;
    std::string q = "\"";
    for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
}

} // namespace

static int RunFrames(const std::string& path, uint64_t first, uint64_t count, bool csv)
{
    CRecordingReader reader;
    if (!OpenRecording(reader, path)) return kExitFailure;
    if (!reader.filter())
        return Fail("%s: no filter reads pixel type %s", path.c_str(), GuidToString(reader.pixelType()).c_str());
    const uint64_t total = reader.numFrames();
    if (first >= total)
        return Fail("%s: --first %llu, but the recording has %llu frames", path.c_str(),
                    static_cast<unsigned long long>(first), static_cast<unsigned long long>(total));
    PrintWarning(reader, path);
    uint64_t end = count == 0 || count > total - first ? total : first + count;
    // Bare frames carry no counter: start the generic filter's at the first
    // frame asked for, so numbers match positions in the file.
    if (auto generic = reader.filter().DynamicCast<CGenericFilter>())
        generic->setFrameCounter(static_cast<uint16_t>(first));

    // Camera headers may add entries in some frames only (a lens block
    // that comes and goes): CSV columns are every name of the range, in the
    // order of first appearance, found in a pass over the objects alone.
    std::vector<std::string> columns;
    if (csv) {
        std::set<std::string> seen;
        for (uint64_t i = first; i < end; ++i) {
            uint8_t preset = 0;
            if (!reader.DecodeFrame(i, STypedData(), 0, preset))
                return Fail("%s: frame %llu: %s", path.c_str(), static_cast<unsigned long long>(i),
                            reader.lastError().c_str());
            if (auto fi = reader.reduceObjs().GetFrameInfo(preset, false)) {
                for (unsigned k = 0, n = fi->NumEntries(); k < n; ++k) {
                    std::string name = fi->GetNameAt(k).c_str();
                    if (seen.insert(name).second) columns.push_back(name);
                }
            }
        }
        if (auto generic = reader.filter().DynamicCast<CGenericFilter>())
            generic->setFrameCounter(static_cast<uint16_t>(first));
        std::printf("index");
        for (const std::string& name : columns) std::printf(",%s", Csv(name.c_str()).c_str());
        std::printf("\n");
    }

    for (uint64_t i = first; i < end; ++i) {
        uint8_t preset = 0;
        if (!reader.DecodeFrame(i, STypedData(), 0, preset))
            return Fail("%s: frame %llu: %s", path.c_str(), static_cast<unsigned long long>(i),
                        reader.lastError().c_str());
        auto fi = reader.reduceObjs().GetFrameInfo(preset, false);
        if (!fi) return Fail("%s: frame %llu: the filter gave no frame info", path.c_str(),
                             static_cast<unsigned long long>(i));
        unsigned n = fi->NumEntries();
        if (csv) {
            std::printf("%llu", static_cast<unsigned long long>(i));
            // A name this frame lacks is an empty field.
            for (const std::string& name : columns) std::printf(",%s", Csv(fi->GetValue(name.c_str())).c_str());
            std::printf("\n");
        } else {
            std::printf("frame %llu\n", static_cast<unsigned long long>(i));
            for (unsigned k = 0; k < n; ++k) {
                CFrameInfoReduceObject::SEntry e = fi->GetAt(k);
                std::printf("  %-24s %s%s%s\n", e.name.c_str(), e.value.c_str(), e.unit.empty() ? "" : " ",
                            e.unit.c_str());
            }
        }
    }
    return 0;
}

void AddFrames(CLI::App& app)
{
    struct SArgs {
        std::string path;
        uint64_t first = 0;
        uint64_t count = 0;
        bool csv = false;
    };
    auto args = std::make_shared<SArgs>();
    CLI::App* cmd = app.add_subcommand("frames", "List the frame info of each frame (time, number, preset ...)");
    cmd->footer("Example: orvreduce frames scene.qrt --first 10 --count 5 --csv");
    cmd->add_option("FILE", args->path, "Recording to read")->required();
    cmd->add_option("--first", args->first, "First frame, counted from 0")->capture_default_str();
    cmd->add_option("--count", args->count, "Number of frames; 0 for all that follow")->capture_default_str();
    cmd->add_flag("--csv", args->csv, "One line per frame, comma-separated, with a header line");
    cmd->callback([args] { g_exitCode = RunFrames(args->path, args->first, args->count, args->csv); });
}

} // namespace orv::reduce::cli
