#pragma once
// Helpers the sub-commands share: failure messages, opening a recording,
// unit and scale names, output written through a temporary file.
#include <cstdint>
#include <cstdio>
#include <string>

#include <CLI/CLI.hpp>

#include "orv/Types.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/objects/SourceInfoReduceObject.h"

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

// Unit names: the system's own texts ("Temperature (User)") or the short
// forms counts, radiance, temperature.
bool ParseUnitName(const std::string& text, EUnit& unit);
bool ParseScale(const std::string& text, ETempType& scale);
const char* ScaleSymbol(ETempType scale);
// "Temperature (User)" and its scale letter for temperatures, else the unit.
std::string UnitLabel(EUnit unit, ETempType scale);

// Frame ranges "A:B" (B excluded), "A:" or "A"; checked against numFrames.
bool ParseFrameRange(const std::string& text, uint64_t numFrames, uint64_t& first, uint64_t& end);

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

// Entry points shared between commands (demo runs the others).
int RunSynth(const std::string& path, unsigned width, unsigned height, unsigned frames);
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
    bool quiet = false;
};
int RunConvert(const SConvertOptions& options);

struct SStatsOptions {
    std::string input;
    std::string rect; // X,Y,W,H; empty: the whole frame
    std::string unit = "Temperature (User)";
    std::string scale = "C";
    std::string frames;
    bool csv = false;
};
int RunStats(const SStatsOptions& options);

} // namespace orv::reduce::cli
