// synth: a recording made from a known temperature scene, so that every
// other command can be tried, and checked, without a camera.
//
// Scene, in degrees Celsius, frame f of N, image W x H:
//   background  20 + 15 * x / (W - 1)          (a left-to-right gradient)
//   hot body    120 inside a disc of radius min(W, H) / 8 centred at
//               (W / 4 + f * (W / 2) / max(1, N - 1), H / 2)
//   noise       a deterministic +-0.1 added to every pixel
// Calibration: radiance = -2 + 0.005 c + 2e-8 c^2 of the counts c; the
// temperature from a table of radiance per degree, -50 to 500 C, of a grey
// body that sees 30 % of the black-body exitance: 0.3 sigma T^4 / pi.
// Emissivity 0.95, so counts encode 0.95 times the table's radiance.
// With --family, the counts come from a camera family's factory calibration
// instead (SynthMarlowe.cpp, SynthTessel.cpp), several presets interleaved.
#include <cmath>
#include <cstdio>
#include <string>

#include "orv/PixelType.h"
#include "orv/RCalFile.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/SynthFamily.h"

namespace orv::reduce::cli {

namespace {

constexpr double kC0 = -2.0, kC1 = 0.005, kC2 = 2e-8;
constexpr double kEmissivity = 0.95;
constexpr int kTableLow = -50, kTableHigh = 500;

double TableRadiance(double celsius)
{
    const double sigma = 5.670374419e-8, pi = 3.14159265358979323846;
    double k = celsius + 273.15;
    return 0.3 * sigma * k * k * k * k / pi;
}

// The radiance the table gives for a temperature: its rows joined by straight
// lines, exactly what the converter's look-up inverts.
double RadianceOf(double celsius)
{
    double t = std::fmin(std::fmax(celsius, kTableLow), kTableHigh);
    double row = std::floor(t);
    if (row >= kTableHigh) row = kTableHigh - 1;
    double a = TableRadiance(row), b = TableRadiance(row + 1);
    return a + (b - a) * (t - row);
}

uint16_t CountsOf(double celsius)
{
    double radiance = kEmissivity * RadianceOf(celsius);
    // The larger root of c2 c^2 + c1 c + (c0 - radiance) = 0.
    double c = (-kC1 + std::sqrt(kC1 * kC1 - 4 * kC2 * (kC0 - radiance))) / (2 * kC2);
    c = std::nearbyint(c);
    return static_cast<uint16_t>(std::fmin(std::fmax(c, 0.0), 65535.0));
}

// A fixed hash to +-0.1, so two runs write the same bytes.
double Noise(unsigned x, unsigned y, unsigned f)
{
    uint32_t h = x * 73856093u ^ y * 19349663u ^ f * 83492791u;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    h ^= h >> 15;
    return (double(h & 0xffff) / 65535.0 - 0.5) * 0.2;
}

bool FillObjects(CReduceObjectArray& objs, unsigned width, unsigned height)
{
    FillSyntheticSource(objs, width, height, 16, 1, kTableLow, kTableHigh);
    auto info = objs.GetSourceInfo(false);
    auto params = objs.GetObjectParameters(true);
    auto rcal = objs.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
    if (!info || !params || !rcal) return false;

    params->emissivity = static_cast<float>(kEmissivity);
    params->distance = 5.0f;
    params->estAtmosphericTransmission = 0.0f; // no path loss
    params->source = true;
    params->valid = true;

    CRCalFile& cal = rcal->rcal;
    cal.DefaultCal();
    TArray<double> coefficients;
    coefficients.add(kC0);
    coefficients.add(kC1);
    coefficients.add(kC2);
    TArray<double> radiance, temperature;
    for (int t = kTableLow; t <= kTableHigh; ++t) {
        radiance.add(TableRadiance(t));
        temperature.add(t);
    }
    if (!cal.SetBandpass(8, 14) || !cal.SetCoefficients(0, 2, coefficients) ||
        !cal.SetLookup(0, radiance, temperature))
        return false;
    rcal->valid = true;
    return true;
}

class CUserSynth : public ISynthFamily {
public:
    bool Fill(CReduceObjectArray& objs, unsigned width, unsigned height) override
    {
        return FillObjects(objs, width, height);
    }
    unsigned presets() const override { return 1; }
    uint16_t Counts(double celsius, unsigned) override { return CountsOf(celsius); }
};

} // namespace

void FillSyntheticSource(CReduceObjectArray& objs, unsigned width, unsigned height, unsigned adBits,
                         unsigned presets, double low, double high)
{
    auto info = objs.GetSourceInfo(true);
    info->camera = "orvreduce synthetic scene";
    info->cameraModel = "Synthetic";
    info->adBits = static_cast<int32_t>(adBits);
    info->pixelType = pixelGrayscale;
    info->dataType = dtUInt16;
    info->baseUnit = unitCounts;
    info->baseTempType = tempCelsius;
    info->imageWidth = info->frameWidth = static_cast<uint16_t>(width);
    info->imageHeight = info->frameHeight = static_cast<uint16_t>(height);
    info->numPresets = static_cast<uint8_t>(presets);
    info->presetSequencing = presets > 1;
    for (unsigned i = 0; i < presets && i < 8; ++i) {
        SPresetInfo& p = info->presets[i];
        p.available = true;
        p.calibrated = true;
        p.frameRate = 30.0f;
        p.frameRateValid = true;
        p.intTime = 0.001;
        p.intTimeValid = true;
        p.minTemp = low;
        p.maxTemp = high;
    }
    info->bandpassStart = 8;
    info->bandpassEnd = 14;
    info->bandpassValid = true;
    info->time = CDateTime::Now();
    info->timeValid = true;
    info->valid = true;
}

uint16_t NearestEntry(const float* table, unsigned n, double value)
{
    unsigned lo = 0, hi = n - 1;
    while (lo < hi) {
        const unsigned mid = (lo + hi) / 2;
        if (table[mid] < value)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo > 0 && std::fabs(table[lo - 1] - value) <= std::fabs(table[lo] - value)) --lo;
    return static_cast<uint16_t>(lo);
}

std::unique_ptr<ISynthFamily> MakeUserSynth() { return std::make_unique<CUserSynth>(); }

int RunSynth(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    return RunSynth(path, width, height, frames, "user");
}

int RunSynth(const std::string& path, unsigned width, unsigned height, unsigned frames, const std::string& name)
{
    std::unique_ptr<ISynthFamily> family;
    if (name == "user") family = MakeUserSynth();
    else if (name == "marlowe") family = MakeMarloweSynth();
    else if (name == "tessel") family = MakeTesselSynth();
    else return Fail("synth: unknown family '%s'", name.c_str());

    if (width < 8 || height < 8 || width > 65535 || height > 65535)
        return Fail("synth: the size must be at least 8x8 and at most 65535x65535, not %ux%u", width, height);
    if (frames == 0) return Fail("synth: at least one frame is needed");

    CReduceObjectArray objs;
    if (!family->Fill(objs, width, height)) return Fail("synth: could not build the calibration objects");
    const unsigned presets = family->presets();

    CTempOutput out(path);
    TSharedPtr<IFile> file = fileSystem()->Open(out.path().c_str(), unsigned(IFileSystem::modeRead) | unsigned(IFileSystem::openWrite));
    if (!file) return Fail("%s: cannot create the file", out.path().c_str());
    if (!StartQRTFile(file, objs, true)) return Fail("%s: writing the info blocks failed", path.c_str());

    TArray<uint16_t> frame;
    frame.resize(size_t(width) * height);
    const double radius = std::fmin(width, height) / 8.0;
    CProgress progress("synth", frames);
    for (unsigned f = 0; f < frames; ++f) {
        double cx = width / 4.0 + f * (width / 2.0) / (frames > 1 ? frames - 1 : 1);
        double cy = height / 2.0;
        for (unsigned y = 0; y < height; ++y) {
            for (unsigned x = 0; x < width; ++x) {
                double dx = x - cx, dy = y - cy;
                double t = dx * dx + dy * dy <= radius * radius ? 120.0 : 20.0 + 15.0 * x / (width - 1);
                uint16_t c = family->Counts(t + Noise(x, y, f), f % presets);
                // Frames are little-endian on disk.
                unsigned char* p = reinterpret_cast<unsigned char*>(&frame[size_t(y) * width + x]);
                p[0] = static_cast<unsigned char>(c & 0xff);
                p[1] = static_cast<unsigned char>(c >> 8);
            }
        }
        if (!file->WriteBytes(frame.data(), static_cast<unsigned int>(frame.size() * 2)))
            return Fail("%s: writing frame %u failed (disk full?)", path.c_str(), f);
        progress.Step(f + 1);
    }
    unsigned int counts[4] = {};
    for (unsigned f = 0; f < frames; ++f) ++counts[(f % presets) & 3];
    if (!FinishQRTFile(file, counts, true)) return Fail("%s: finishing the recording failed", path.c_str());
    file.reset();
    if (!out.Commit()) return Fail("%s: cannot rename the finished file into place", path.c_str());
    return 0;
}

void AddSynth(CLI::App& app)
{
    struct SArgs {
        std::string path;
        std::string size = "320x256";
        unsigned frames = 10;
        std::string family = "user";
    };
    auto args = std::make_shared<SArgs>();
    CLI::App* cmd = app.add_subcommand("synth", "Write a synthetic recording of a known temperature scene");
    cmd->footer(
        "The recording holds 16-bit counts (pixel type Grayscale, base unit Counts), object\n"
        "parameters (emissivity 0.95) and a user calibration: radiance = -2 + 0.005 c + 2e-8 c^2,\n"
        "temperature from a radiance table. The scene, in Celsius: a background of\n"
        "20 + 15 x / (W - 1), a hot disc at 120 of radius min(W, H) / 8 moving from x = W/4\n"
        "to 3W/4 along y = H/2 over the frames, and deterministic noise of +-0.1.\n"
        "With --family marlowe or tessel the counts come from that camera family's factory\n"
        "calibration instead, its presets taking the frames in turn (preset sequencing), so that\n"
        "\"Temperature (Factory)\" gives the scene back.\n"
        "Example: orvreduce synth scene.qrt --size 640x512 --frames 100");
    cmd->add_option("FILE", args->path, "Recording to write")->required();
    cmd->add_option("--size", args->size, "Image size WxH")->capture_default_str();
    cmd->add_option("--frames", args->frames, "Number of frames")->capture_default_str();
    cmd->add_option("--family", args->family, "Calibration: user, marlowe, tessel")
        ->check(CLI::IsMember({"user", "marlowe", "tessel"}))
        ->capture_default_str();
    cmd->callback([args] {
        unsigned w = 0, h = 0;
        char tail = 0;
        if (std::sscanf(args->size.c_str(), "%ux%u%c", &w, &h, &tail) != 2)
            throw CLI::ValidationError("--size", "expected WxH, for example 640x512, not '" + args->size + "'");
        int rc = RunSynth(args->path, w, h, args->frames, args->family);
        if (rc == 0) std::printf("wrote %s: %ux%u, %u frames\n", args->path.c_str(), w, h, args->frames);
        g_exitCode = rc;
    });
}

} // namespace orv::reduce::cli
