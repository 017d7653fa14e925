// synth --family tessel: two presets of a Tessel camera with adjustment
// mode 2 and different gains, 14-bit image values, object parameters at 5 m
// in air of 50 % humidity. The frames carry no sensor readings, so the drift
// correction stays off (docs/tessel.md).
#include <vector>

#include "reduce/families/tessel/TesselConverter.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/SynthScene.h"

namespace orv::reduce::cli {

namespace {

constexpr unsigned kPresets = 2;
constexpr double kLow = -20.0, kHigh = 150.0;

void MakeCalibration(CTesselFactoryCalReduceObject& cal, unsigned preset)
{
    namespace rec = tesselRecord;
    // Object signal in image values, about 1800 at -20 C to 13000 at 120 C.
    const std::pair<TAt<float>, float> fields[] = {
        {rec::R, 500000.0f}, {rec::B, 1430.0f}, {rec::F, 1.0f}, {rec::alpha1, 0.006569f},
        {rec::alpha2, 0.01262f}, {rec::beta1, 0.0005f}, {rec::beta2, 0.001f}, {rec::X, 0.8f},
        {rec::clampHighTemp, 443.15f}, {rec::validHighTemp, 423.15f}, {rec::validLowTemp, 253.15f},
        {rec::clampLowTemp, 233.15f}, {rec::rangeHighTemp, 443.15f}, {rec::rangeLowTemp, 233.15f},
        {rec::gain, preset == 0 ? 1.1f : 1.25f}, {rec::offset, preset == 0 ? 200.0f : 900.0f}};
    for (const auto& [field, value] : fields) cal.SetFloat(field, value);
    PutRecordValue<uint16_t>(cal.record, rec::adjustMode, 2);
    cal.SetText(rec::cameraName, "orvreduce synthetic Tessel");
    cal.preset = static_cast<uint8_t>(preset);
    cal.valid = true;
}

// Preset p's calibration and the temperatures the converter will compute from
// it, as a table to invert.
bool PresetTable(CTesselFactoryCalReduceObject& cal, unsigned p, const CObjectParametersReduceObject& params,
                 std::vector<float>& table)
{
    MakeCalibration(cal, p);
    _adjust_par_t adjust;
    _cal_param_t calib;
    _tdrift_par_t drift;
    TesselRecords(cal, adjust, calib, drift);
    _object_par_t o;
    o.emissivity = params.emissivity;
    o.distance = params.distance;
    o.relativeHumidity = params.relativeHumidity;
    CTesMeasConv conv(&adjust, &o, &calib);
    conv.updateLUT();
    table.assign(conv.lutTemp, conv.lutTemp + CTesMeasConv::kLUTSize);
    table[0] = -273.15f; // never the nearest entry
    return true;
}

} // namespace

int RunSynthTessel(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    // Image value 0 means no image: never written.
    return WriteSequencedRecording("Tessel", path, width, height, frames, kPresets, kLow, kHigh, 1, &PresetTable);
}

} // namespace orv::reduce::cli
