// synth --family marlowe: three presets of a long-wave Marlowe camera, each
// with its own counts-to-radiance form (quadratic, fifth order, and the
// linear form with a signal offset), 14-bit counts, object parameters at
// 5 m in air of 50 % humidity, so that transmission and path radiance play
// their part.
#include <vector>

#include "reduce/families/marlowe/MrlConv.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/SynthScene.h"

namespace orv::reduce::cli {

namespace {

constexpr unsigned kPresets = 3;
constexpr double kLow = -20.0, kHigh = 150.0;

void MakeCalibration(CMarloweFactoryCalReduceObject& cal, unsigned preset)
{
    const int orders[kPresets] = {2, 5, -1};
    cal.polyOrder = orders[preset];
    // About 1e-4 to 1.3e-3 W/(cm2 sr) over counts 1000 to 15000.
    const double c[7] = {1.4e-5, 8.6e-8, 1e-13, 0.0, 0.0, 1e-25, 0.0};
    for (int i = 0; i < 7; ++i) cal.coeffs[i] = preset == 1 || i < 3 ? c[i] : 0.0;
    if (cal.polyOrder == -1) {
        cal.signalOffset = 500.0;
        cal.coeffs[0] = 5.7e-5;
        cal.coeffs[2] = 0.0;
    }
    cal.rbfR = 0.032 * (1.0 + 0.05 * preset);
    cal.rbfB = 1400.0;
    cal.rbfF = 1.0;
    cal.atmX = 0.8;
    cal.atmA1 = 0.006569;
    cal.atmA2 = 0.01262;
    cal.atmB1 = 0.0005;
    cal.atmB2 = 0.001;
    cal.minTemperature = float(kLow);
    cal.maxTemperature = float(kHigh);
    cal.minRadiance = 1.2e-4f;
    cal.maxRadiance = 1.25e-3f;
    cal.minCounts = 1000;
    cal.maxCounts = 15000;
    cal.preset = static_cast<uint8_t>(preset);
    cal.valid = true;
}

} // namespace

int RunSynthMarlowe(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    CReduceObjectArray objs;
    std::vector<float> tables[kPresets];
    auto params = objs.GetObjectParameters(true);
    if (!params || !FillSynthSourceInfo(objs, width, height, kPresets, kLow, kHigh))
        return Fail("synth: could not build the Marlowe objects");
    params->emissivity = 0.95f;
    params->distance = 5.0f;
    params->relativeHumidity = 0.5f;
    params->estAtmosphericTransmission = 0.0f;
    params->source = true;
    params->valid = true;
    for (unsigned p = 0; p < kPresets; ++p) {
        auto cal = objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, int(p), true)
                       .DynamicCast<CMarloweFactoryCalReduceObject>();
        if (!cal) return Fail("synth: could not build the Marlowe objects");
        MakeCalibration(*cal, p);
        // What the converter will compute, as a table to invert.
        CMrlConv conv;
        conv.Init(*cal, *params);
        tables[p].resize(CMrlConv::kMaxSignal + 1);
        conv.SignalToTemperature(0, CMrlConv::kMaxSignal, tables[p].data(), nullptr, tempCelsius);
    }
    // The presets take the frames in turn; the reader learns so from here.
    objs.GetSourceInfo(false)->presetSequencing = true;
    return WriteSynthRecording(path, objs, width, height, frames, [&](double celsius, unsigned, unsigned, unsigned f) {
        const std::vector<float>& t = tables[f % kPresets];
        return NearestEntry(t.data(), unsigned(t.size()), celsius);
    });
}

} // namespace orv::reduce::cli
