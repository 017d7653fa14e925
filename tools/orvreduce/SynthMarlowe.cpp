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

// Preset p's calibration and the temperatures the converter will compute from
// it, as a table to invert.
bool PresetTable(CMarloweFactoryCalReduceObject& cal, unsigned p, const CObjectParametersReduceObject& params,
                 std::vector<float>& table)
{
    MakeCalibration(cal, p);
    CMrlConv conv;
    conv.Init(cal, params);
    table.resize(CMrlConv::kMaxSignal + 1);
    conv.SignalToTemperature(0, CMrlConv::kMaxSignal, table.data(), nullptr, tempCelsius);
    return true;
}

} // namespace

int RunSynthMarlowe(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    return WriteSequencedRecording("Marlowe", path, width, height, frames, kPresets, kLow, kHigh, 0, &PresetTable);
}

} // namespace orv::reduce::cli
