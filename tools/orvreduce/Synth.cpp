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
#include <cmath>
#include <cstdio>
#include <string>
#include <sys/stat.h>

#include "orv/PixelType.h"
#include "orv/RCalFile.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "tools/orvreduce/Common.h"
#include "reduce/filters/PixelTypes.h"
#include "tools/orvreduce/Synth.h"
#include "tools/orvreduce/SynthScene.h"

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
    auto info = objs.GetSourceInfo(true);
    auto params = objs.GetObjectParameters(true);
    auto rcal = objs.GetObjectOfType(CRCalReduceObject::typeID, -1, true).DynamicCast<CRCalReduceObject>();
    if (!info || !params || !rcal) return false;

    info->camera = "orvreduce synthetic scene";
    info->cameraModel = "Synthetic";
    info->adBits = 16;
    info->pixelType = pixelGrayscale;
    info->dataType = dtUInt16;
    info->baseUnit = unitCounts;
    info->baseTempType = tempCelsius;
    info->imageWidth = info->frameWidth = static_cast<uint16_t>(width);
    info->imageHeight = info->frameHeight = static_cast<uint16_t>(height);
    info->numPresets = 1;
    info->presets[0].available = true;
    info->presets[0].calibrated = true;
    info->presets[0].frameRate = 30.0f;
    info->presets[0].frameRateValid = true;
    info->presets[0].intTime = 0.001;
    info->presets[0].intTimeValid = true;
    info->presets[0].minTemp = kTableLow;
    info->presets[0].maxTemp = kTableHigh;
    info->bandpassStart = 8;
    info->bandpassEnd = 14;
    info->bandpassValid = true;
    info->time = CDateTime::Now();
    info->timeValid = true;
    info->valid = true;

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

} // namespace

uint16_t SynthSceneCounts(unsigned x, unsigned y, unsigned f, unsigned width, unsigned height, unsigned frames)
{
    return CountsOf(SceneCelsius(x, y, f, frames, width, height));
}

bool FillSynthObjects(CReduceObjectArray& objs, unsigned width, unsigned height)
{
    return FillObjects(objs, width, height);
}

bool CSynthFile::Start(CReduceObjectArray& objs, uint32_t frameSize)
{
    m_file = fileSystem()->Open(m_out.path().c_str(), unsigned(IFileSystem::modeRead) | unsigned(IFileSystem::openWrite));
    if (!m_file) return Fail("%s: cannot create the file", m_out.path().c_str()), false;
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info || !SaveInfoFile(m_file, objs, infoFileRecording) ||
        !WritePixelsHeader(m_file, info, info->pixelType, frameSize, true))
        return Fail("%s: writing the info blocks failed", m_path.c_str()), false;
    return true;
}

bool CSynthFile::AddFrame(const void* data, uint32_t size, unsigned index)
{
    if (!m_file->WriteBytes(data, size))
        return Fail("%s: writing frame %u failed (disk full?)", m_path.c_str(), index), false;
    return true;
}

bool CSynthFile::Finish(unsigned* counts)
{
    if (!FinishQRTFile(m_file, counts, true))
        return Fail("%s: finishing the recording failed", m_path.c_str()), false;
    m_file.reset();
    if (!m_out.Commit()) return Fail("%s: cannot rename the finished file into place", m_path.c_str()), false;
    return true;
}

int RunSynth(const std::string& path, unsigned width, unsigned height, unsigned frames, bool force)
{
    // A recording is data: replacing one takes a word from the user.
    struct stat st;
    if (!force && ::stat(path.c_str(), &st) == 0)
        return Fail("%s: the file exists; add --force to replace it", path.c_str());
    if (width < 8 || height < 8 || width > 65535 || height > 65535)
        return Fail("synth: the size must be at least 8x8 and at most 65535x65535, not %ux%u", width, height);
    if (frames == 0) return Fail("synth: at least one frame is needed");

    CReduceObjectArray objs;
    if (!FillObjects(objs, width, height)) return Fail("synth: could not build the calibration objects");

    return WriteSynthRecording(path, objs, width, height, frames,
                               [](double celsius, unsigned, unsigned, unsigned) { return CountsOf(celsius); });
}

double SceneCelsius(unsigned x, unsigned y, unsigned f, unsigned frames, unsigned width, unsigned height)
{
    const double radius = std::fmin(width, height) / 8.0;
    const double cx = width / 4.0 + f * (width / 2.0) / (frames > 1 ? frames - 1 : 1);
    const double cy = height / 2.0;
    const double dx = x - cx, dy = y - cy;
    const double t = dx * dx + dy * dy <= radius * radius ? 120.0 : 20.0 + 15.0 * x / (width - 1);
    return t + Noise(x, y, f);
}

bool FillSynthSourceInfo(CReduceObjectArray& objs, unsigned width, unsigned height, unsigned presets, double minC,
                         double maxC)
{
    auto info = objs.GetSourceInfo(true);
    if (!info || presets == 0 || presets > 4) return false;
    info->camera = "orvreduce synthetic scene";
    info->cameraModel = "Synthetic";
    info->adBits = 16;
    info->pixelType = pixelGrayscale;
    info->dataType = dtUInt16;
    info->baseUnit = unitCounts;
    info->baseTempType = tempCelsius;
    info->imageWidth = info->frameWidth = static_cast<uint16_t>(width);
    info->imageHeight = info->frameHeight = static_cast<uint16_t>(height);
    info->numPresets = static_cast<uint8_t>(presets);
    for (unsigned p = 0; p < presets; ++p) {
        info->presets[p].available = true;
        info->presets[p].calibrated = true;
        info->presets[p].frameRate = 30.0f;
        info->presets[p].frameRateValid = true;
        info->presets[p].intTime = 0.001 / (1u << p);
        info->presets[p].intTimeValid = true;
        info->presets[p].minTemp = static_cast<float>(minC);
        info->presets[p].maxTemp = static_cast<float>(maxC);
    }
    info->time = CDateTime::Now();
    info->timeValid = true;
    info->valid = true;
    return true;
}

int WriteSynthRecording(const std::string& path, CReduceObjectArray& objs, unsigned width, unsigned height,
                        unsigned frames, const std::function<uint16_t(double, unsigned, unsigned, unsigned)>& counts)
{
    CTempOutput out(path);
    TSharedPtr<IFile> file = fileSystem()->Open(out.path().c_str(), unsigned(IFileSystem::modeRead) | unsigned(IFileSystem::openWrite));
    if (!file) return Fail("%s: cannot create the file", out.path().c_str());
    if (!StartQRTFile(file, objs, true)) return Fail("%s: writing the info blocks failed", path.c_str());

    TArray<uint16_t> frame;
    frame.resize(size_t(width) * height);
    CProgress progress("synth", frames);
    for (unsigned f = 0; f < frames; ++f) {
        for (unsigned y = 0; y < height; ++y) {
            for (unsigned x = 0; x < width; ++x) {
                uint16_t c = counts(SceneCelsius(x, y, f, frames, width, height), x, y, f);
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
    // With preset sequencing the frames take the available presets in turn.
    unsigned int counts4[4] = {frames, 0, 0, 0};
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (info && info->presetSequencing) {
        unsigned available[8], n = 0;
        for (unsigned p = 0; p < 8; ++p)
            if (info->presets[p].available) available[n++] = p;
        if (n > 0) {
            counts4[0] = 0;
            for (unsigned f = 0; f < frames; ++f)
                if (available[f % n] < 4) ++counts4[available[f % n]];
        }
    }
    if (!FinishQRTFile(file, counts4, true)) return Fail("%s: finishing the recording failed", path.c_str());
    file.reset();
    if (!out.Commit()) return Fail("%s: cannot rename the finished file into place", path.c_str());
    return 0;
}

int WriteSequencedRecording(const char* family, const std::string& path, unsigned width, unsigned height,
                            unsigned frames, unsigned presets, double minC, double maxC, uint16_t lowest,
                            const TSynthPresetTable& presetTable)
{
    CReduceObjectArray objs;
    std::vector<std::vector<float>> tables(presets);
    auto params = objs.GetObjectParameters(true);
    if (!params || !FillSynthSourceInfo(objs, width, height, presets, minC, maxC))
        return Fail("synth: could not build the %s objects", family);
    params->emissivity = 0.95f;
    params->distance = 5.0f;
    params->relativeHumidity = 0.5f;
    params->estAtmosphericTransmission = 0.0f;
    params->source = true;
    params->valid = true;
    for (unsigned p = 0; p < presets; ++p)
        if (!presetTable(objs, p, *params, tables[p])) return Fail("synth: could not build the %s objects", family);
    // The presets take the frames in turn; the reader learns so from here.
    objs.GetSourceInfo(false)->presetSequencing = true;
    return WriteSynthRecording(path, objs, width, height, frames, [&](double celsius, unsigned, unsigned, unsigned f) {
        const std::vector<float>& t = tables[f % presets];
        const uint16_t c = NearestEntry(t.data(), unsigned(t.size()), celsius);
        return c < lowest ? lowest : c;
    });
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

namespace {
// The calibration families synth can write, each in a file of its own.
int RunSynthFamily(const std::string& family, const std::string& path, unsigned w, unsigned h, unsigned frames,
                   bool force)
{
    if (family == "user") return RunSynth(path, w, h, frames, force);
    struct stat st;
    if (!force && ::stat(path.c_str(), &st) == 0)
        return Fail("%s: the file exists; add --force to replace it", path.c_str());
    if (w < 8 || h < 8 || w > 65535 || h > 65535)
        return Fail("synth: the size must be at least 8x8 and at most 65535x65535, not %ux%u", w, h);
    if (frames == 0) return Fail("synth: at least one frame is needed");
    if (family == "ombria") return RunSynthOmbria(path, w, h, frames);
    if (family == "corvane") return RunSynthCorvane(path, w, h, frames);
    if (family == "marlowe") return RunSynthMarlowe(path, w, h, frames);
    if (family == "tessel") return RunSynthTessel(path, w, h, frames);
    return Fail("synth: unknown family '%s'; known: user, ombria, corvane, marlowe, tessel", family.c_str());
}
// Camera pixel types that synth writes; each writer keeps its own file.
const SCameraSynth kCameraSynths[] = {
    {&SynthV410Handles, &SynthV410},
    {&SynthTLKHandles, &SynthTLK},
    {&SynthBayerHandles, &SynthBayer},
};

// A pixel type by the name the tree knows it by, or by the symbol of the
// table ("guidTLKRV"), letter case aside.
bool FindPixelType(const std::string& name, SGuid& type)
{
    for (const SPixelTypeRow& row : pixelTypeTable) {
        if (scasecmp(name.c_str(), row.name) == 0 || scasecmp(name.c_str(), row.symbol) == 0) {
            type = row.id;
            return true;
        }
    }
    return false;
}

int RunSynthCamera(const std::string& path, const std::string& typeName, unsigned width, unsigned height,
                   unsigned frames, bool force)
{
    SSynthRequest request{path, SGuid{}, width, height, frames};
    if (!FindPixelType(typeName, request.pixelType)) return Fail("synth: unknown pixel type '%s'", typeName.c_str());
    struct stat st;
    if (!force && ::stat(path.c_str(), &st) == 0)
        return Fail("%s: the file exists; add --force to replace it", path.c_str());
    if (width < 8 || height < 8 || width > 4096 || height > 4096)
        return Fail("synth: the size must be at least 8x8 and at most 4096x4096, not %ux%u", width, height);
    if (frames == 0) return Fail("synth: at least one frame is needed");
    for (const SCameraSynth& synth : kCameraSynths)
        if (synth.Handles(request.pixelType)) return synth.Write(request);
    std::string known;
    for (const SPixelTypeRow& row : pixelTypeTable)
        for (const SCameraSynth& synth : kCameraSynths)
            if (synth.Handles(row.id)) known += std::string(known.empty() ? "" : ", ") + "\"" + row.name + "\"";
    return Fail("synth: no synthetic recording of pixel type '%s'; known: %s", typeName.c_str(), known.c_str());
}

} // namespace

void AddSynth(CLI::App& app)
{
    struct SArgs {
        std::string path;
        std::string size = "320x256";
        unsigned frames = 10;
        bool force = false;
        std::string family = "user";
        std::string pixelType;
    };
    auto args = std::make_shared<SArgs>();
    CLI::App* cmd = app.add_subcommand("synth", "Write a synthetic recording of a known temperature scene");
    cmd->footer(
        "The recording holds 16-bit counts (pixel type Grayscale, base unit Counts), object\n"
        "parameters (emissivity 0.95) and a user calibration: radiance = -2 + 0.005 c + 2e-8 c^2,\n"
        "temperature from a radiance table. The scene, in Celsius: a background of\n"
        "20 + 15 x / (W - 1), a hot disc at 120 of radius min(W, H) / 8 moving from x = W/4\n"
        "to 3W/4 along y = H/2 over the frames, and deterministic noise of +-0.1.\n"
        "With --family, the same scene goes through a camera family's factory calibration\n"
        "instead, to be read in \"Temperature (Factory)\". Marlowe and Tessel recordings declare\n"
        "preset sequencing, and their frames take the presets in turn, each with its own\n"
        "calibration.\n"
        "With --pixel-type the frames are those of a camera: \"TLK-RV\" and \"TLK-MX\" carry the\n"
        "scene behind a camera header row (IRIG time, sensor temperatures, both lens block\n"
        "versions), \"BayerRG8\", \"BayerGR8\", \"BayerGB8\", \"BayerBG8\" and \"BayerGRBG\" a colour\n"
        "scene as a Bayer mosaic. The V410, R7Q, Sarnet and MX515 types store it with their\n"
        "camera blocks (both byte orders, a GigE prefix), JPEG-LS or JPEG compressed, or as\n"
        "BGR and YUV colour video, for example \"V410 IR (GigE)\" or guidMJLSIR.\n"
        "Example: orvreduce synth scene.qrt --size 640x512 --frames 100");
    cmd->add_option("FILE", args->path, "Recording to write")->required();
    cmd->add_option("--size", args->size, "Image size WxH")->capture_default_str();
    cmd->add_option("--frames", args->frames, "Number of frames")->capture_default_str();
    cmd->add_flag("--force", args->force, "Replace FILE when it exists");
    cmd->add_option("--pixel-type", args->pixelType,
                    "Write frames of a camera pixel type (\"TLK-RV\", \"BayerRG8\" ...), with its headers");
    cmd->add_option("--family", args->family,
                    "Calibration: user (a user calibration), or the factory calibration of a camera family: "
                    "ombria, corvane, marlowe, tessel")
        ->capture_default_str();
    cmd->callback([args] {
        unsigned w = 0, h = 0;
        char tail = 0;
        if (std::sscanf(args->size.c_str(), "%ux%u%c", &w, &h, &tail) != 2)
            throw CLI::ValidationError("--size", "expected WxH, for example 640x512, not '" + args->size + "'");
        int rc = args->pixelType.empty()
                     ? RunSynthFamily(args->family, args->path, w, h, args->frames, args->force)
                     : RunSynthCamera(args->path, args->pixelType, w, h, args->frames, args->force);
        if (rc == 0) std::printf("wrote %s: %ux%u, %u frames\n", args->path.c_str(), w, h, args->frames);
        g_exitCode = rc;
    });
}

} // namespace orv::reduce::cli
