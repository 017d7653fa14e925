#pragma once
// Helpers the sub-commands share: failure messages, opening a recording,
// unit and scale names, output written through a temporary file.
#include <cstdint>
#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>

#include "orv/Types.h"
#include "reduce/roi/RoiList.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/RecordingReduction.h"

namespace orv::reduce::cli {

// Exit codes: 0 all well, 1 the input or the work failed, 2 bad arguments
// (CLI11's own).
inline constexpr int kExitFailure = 1;

// The exit code of the sub-command that ran; set from its callback.
extern int g_exitCode;

// Prints "orvreduce: <message>" on one line to standard error and returns
// kExitFailure, so that commands can `return Fail(...)`.
int Fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Opens a recording; on failure prints why, naming the file, and returns false.
bool OpenRecording(CRecordingReader& reader, const std::string& path);
// The reader's warning (a frame cut short ...), for commands that go on
// reading; one line on standard error, nothing when there is none.
void PrintWarning(CRecordingReader& reader, const std::string& path);

// Opens a recording for reduction to unit and scale with the given
// emissivity and distance (below 0: the recording's own); on failure prints
// why, naming the file, and returns false. Prints the reader's warning.
bool OpenReduction(CRecordingReduction& reduction, const std::string& path, EUnit unit, ETempType scale,
                   double emissivity, double distance);

// Unit names: the system's own texts ("Temperature (User)") or the short
// forms counts, radiance, temperature.
bool ParseUnitName(const std::string& text, EUnit& unit);
bool ParseScale(const std::string& text, ETempType& scale);
const char* ScaleSymbol(ETempType scale);
// "Temperature (User)" and its scale letter for temperatures, else the unit.
std::string UnitLabel(EUnit unit, ETempType scale);

// Frame ranges "A:B" (B excluded), "A:" or "A"; checked against numFrames.
bool ParseFrameRange(const std::string& text, uint64_t numFrames, uint64_t& first, uint64_t& end);

// True when both names lead to one existing file: device and inode after
// links and relative spellings are resolved, never by comparing the names.
bool SameFile(const std::string& a, const std::string& b);
// Fails, naming both, when writing output (or its companion) would replace
// the input; the command then writes nothing.
bool RefuseOverwritingInput(const std::string& input, const std::string& output, const char* what);

// A file written beside its final name and renamed into place by Commit; the
// destructor removes it unless committed, so a failure leaves nothing behind.
class CTempOutput {
public:
    explicit CTempOutput(std::string finalPath);
    ~CTempOutput();
    CTempOutput(const CTempOutput&) = delete;
    CTempOutput& operator=(const CTempOutput&) = delete;
    const std::string& path() const { return m_temp; }
    const std::string& finalPath() const { return m_final; }
    bool Commit();

private:
    std::string m_final;
    std::string m_temp;
    bool m_committed = false;
};

// A one-line progress bar on standard error, drawn only when that is a
// terminal and the work has run for more than half a second.
class CProgress {
public:
    CProgress(const char* what, uint64_t total);
    ~CProgress();
    void Step(uint64_t done);

private:
    const char* m_what;
    uint64_t m_total;
    double m_start;
    bool m_tty;
    bool m_drawn = false;
    int m_lastPercent = -1;
};

// The sub-commands; each adds itself to the application.
void AddInfo(CLI::App& app);
void AddVerify(CLI::App& app);
void AddFrames(CLI::App& app);
void AddConvert(CLI::App& app);
void AddStats(CLI::App& app);
void AddSynth(CLI::App& app);
void AddDemo(CLI::App& app);
void AddRoi(CLI::App& app);

// Loads a region file into list, drawn on a w x h frame; on failure prints
// why, naming the file, and returns false.
bool LoadRegionFile(reduce::CRoiList& list, const std::string& path, unsigned w, unsigned h);

// Entry points shared between commands (demo runs the others).
// An existing file at path is replaced only with force.
int RunSynth(const std::string& path, unsigned width, unsigned height, unsigned frames, bool force);
int RunInfo(const std::string& path, bool json);
int RunVerify(const std::string& path, bool quiet);

struct SConvertOptions {
    std::string input;
    std::string output;
    std::string unit = "Temperature (User)";
    std::string scale = "C";
    std::string frames;
    double emissivity = -1; // negative: the recording's own
    double distance = -1;
    std::string roi; // region file whose outlines a .png shows
    unsigned threads = 0; // 0: every core
    bool quiet = false;
};
int RunConvert(const SConvertOptions& options);

struct SStatsOptions {
    std::string input;
    std::string rect; // X,Y,W,H; empty: the whole frame
    std::string unit = "Temperature (User)";
    std::string scale = "C";
    std::string frames;
    std::string roi; // region file: figures per region instead of --rect
    bool csv = false;
};
int RunStats(const SStatsOptions& options);

} // namespace orv::reduce::cli
