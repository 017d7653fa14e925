#include "tools/orvreduce/Common.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "reduce/convert/Converter.h"

namespace orv::reduce::cli {

namespace {

double Seconds()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

std::string Lower(std::string s)
{
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool ParseIndex(const std::string& text, uint64_t& value)
{
    if (text.empty() || text.size() > 18) return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + uint64_t(c - '0');
    }
    return true;
}

} // namespace

int Fail(const char* format, ...)
{
    char text[2048];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    // One line, whatever the library's texts hold.
    for (char* p = text; *p; ++p)
        if (*p == '\n' || *p == '\r') *p = ' ';
    std::fprintf(stderr, "orvreduce: %s\n", text);
    return kExitFailure;
}

bool OpenRecording(CRecordingReader& reader, const std::string& path)
{
    if (!fileSystem()->Exists(path.c_str())) {
        Fail("%s: no such file", path.c_str());
        return false;
    }
    if (!reader.Open(CString(path.c_str()))) {
        const char* why = reader.lastError().c_str();
        Fail("%s: %s", path.c_str(), *why ? why : "not a recording");
        return false;
    }
    if (!reader.sourceInfo()) {
        Fail("%s: the recording has no source info block", path.c_str());
        return false;
    }
    return true;
}

void PrintWarning(CRecordingReader& reader, const std::string& path)
{
    if (!reader.warning().empty())
        std::fprintf(stderr, "orvreduce: %s: warning: %s\n", path.c_str(), reader.warning().c_str());
}

bool OpenReduction(CRecordingReduction& reduction, const std::string& path, EUnit unit, ETempType scale,
                   double emissivity, double distance)
{
    if (!fileSystem()->Exists(path.c_str())) {
        Fail("%s: no such file", path.c_str());
        return false;
    }
    if (!reduction.Open(CString(path.c_str())) || !reduction.SetUnit(unit, scale) ||
        !reduction.SetObjectParameters(emissivity, distance)) {
        Fail("%s: %s", path.c_str(), reduction.lastError().c_str());
        return false;
    }
    PrintWarning(reduction.reader(), path);
    return true;
}

bool ParseUnitName(const std::string& text, EUnit& unit)
{
    std::string t = Lower(text);
    if (t == "counts") unit = unitCounts;
    else if (t == "radiance") unit = unitRadianceUser;
    else if (t == "temperature" || t == "temp") unit = unitTemperatureUser;
    else {
        unit = ParseUnit(text.c_str());
        return unit != unitError;
    }
    return true;
}

bool ParseScale(const std::string& text, ETempType& scale)
{
    std::string t = Lower(text);
    if (t == "c" || t == "celsius") scale = tempCelsius;
    else if (t == "f" || t == "fahrenheit") scale = tempFahrenheit;
    else if (t == "k" || t == "kelvin") scale = tempKelvin;
    else if (t == "r" || t == "rankine") scale = tempRankine;
    else return false;
    return true;
}

const char* ScaleSymbol(ETempType scale)
{
    switch (scale) {
    case tempCelsius: return "C";
    case tempFahrenheit: return "F";
    case tempKelvin: return "K";
    case tempRankine: return "R";
    }
    return "?";
}

std::string UnitLabel(EUnit unit, ETempType scale)
{
    std::string label = UnitToString(unit);
    if (IsTemperatureUnit(unit)) label += std::string(" [") + ScaleSymbol(scale) + "]";
    return label;
}

bool ParseFrameRange(const std::string& text, uint64_t numFrames, uint64_t& first, uint64_t& end)
{
    if (text.empty()) {
        first = 0;
        end = numFrames;
        return numFrames > 0;
    }
    size_t colon = text.find(':');
    if (colon == std::string::npos) {
        if (!ParseIndex(text, first)) return false;
        end = first + 1;
    } else {
        std::string a = text.substr(0, colon), b = text.substr(colon + 1);
        first = 0;
        end = numFrames;
        if (!a.empty() && !ParseIndex(a, first)) return false;
        if (!b.empty() && !ParseIndex(b, end)) return false;
    }
    return first < end && end <= numFrames;
}

bool SameFile(const std::string& a, const std::string& b)
{
    struct stat sa, sb;
    if (::stat(a.c_str(), &sa) != 0 || ::stat(b.c_str(), &sb) != 0) return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

bool RefuseOverwritingInput(const std::string& input, const std::string& output, const char* what)
{
    if (!SameFile(input, output)) return false;
    Fail("%s: %s %s is the input file; choose another name", input.c_str(), what, output.c_str());
    return true;
}

CTempOutput::CTempOutput(std::string finalPath) : m_final(std::move(finalPath))
{
    // Beside the target, so that the rename stays on one file system; the
    // extension is kept for libraries that look at it.
    size_t slash = m_final.find_last_of('/');
    std::string dir = slash == std::string::npos ? "" : m_final.substr(0, slash + 1);
    std::string name = slash == std::string::npos ? m_final : m_final.substr(slash + 1);
    m_temp = dir + ".tmp-" + std::to_string(::getpid()) + "-" + name;
}

CTempOutput::~CTempOutput()
{
    if (!m_committed) std::remove(m_temp.c_str());
}

bool CTempOutput::Commit()
{
    if (std::rename(m_temp.c_str(), m_final.c_str()) != 0) return false;
    m_committed = true;
    return true;
}

CProgress::CProgress(const char* what, uint64_t total)
    : m_what(what), m_total(total), m_start(Seconds()), m_tty(::isatty(2) == 1)
{
}

CProgress::~CProgress()
{
    if (m_drawn) std::fprintf(stderr, "\r\033[K");
}

void CProgress::Step(uint64_t done)
{
    if (!m_tty || m_total == 0) return;
    double elapsed = Seconds() - m_start;
    if (elapsed < 0.5) return;
    int percent = static_cast<int>(done * 100 / m_total);
    if (percent == m_lastPercent) return;
    m_lastPercent = percent;
    const int width = 30;
    int filled = percent * width / 100;
    char bar[width + 1];
    for (int i = 0; i < width; ++i) bar[i] = i < filled ? '#' : '.';
    bar[width] = 0;
    double rate = elapsed > 0 ? double(done) / elapsed : 0;
    std::fprintf(stderr, "\r%s [%s] %3d%% %llu/%llu frames, %.1f/s", m_what, bar, percent,
                 static_cast<unsigned long long>(done), static_cast<unsigned long long>(m_total), rate);
    std::fflush(stderr);
    m_drawn = true;
}

} // namespace orv::reduce::cli
