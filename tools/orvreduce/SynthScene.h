#pragma once
// The known temperature scene of synth, and the writer that every family's
// synthetic recording shares: a family gives its objects and the counts of
// a temperature.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce::cli {

// Scene temperature in Celsius at pixel (x, y) of frame f of frames, image
// width x height, noise included (see Synth.cpp).
double SceneCelsius(unsigned x, unsigned y, unsigned f, unsigned frames, unsigned width, unsigned height);

// Source info of a 16-bit Counts recording with presets 0 .. presets - 1
// available and calibrated for minC .. maxC.
bool FillSynthSourceInfo(CReduceObjectArray& objs, unsigned width, unsigned height, unsigned presets, double minC,
                         double maxC);

// Writes info blocks and frames; counts(celsius, x, y, frame) gives a pixel.
// Returns the exit code, with a message on failure.
int WriteSynthRecording(const std::string& path, CReduceObjectArray& objs, unsigned width, unsigned height,
                        unsigned frames, const std::function<uint16_t(double, unsigned, unsigned, unsigned)>& counts);

// The entry of an increasing table of n values nearest value: a family's
// counts of a temperature from its table of signal values.
uint16_t NearestEntry(const float* table, unsigned n, double value);

// Makes the calibration object of preset p in objs and its table of Celsius
// by counts, as the converter will compute it under params; false when the
// object cannot be made.
using TSynthPresetTable = std::function<bool(CReduceObjectArray& objs, unsigned p,
                                             const CObjectParametersReduceObject& params, std::vector<float>& table)>;

// A recording of presets 0 .. presets - 1 calibrated for minC .. maxC that
// take the frames in turn (preset sequencing), the object seen at 5 m in air
// of 50 % humidity with emissivity 0.95. A pixel of frame f gets the counts
// of preset f % presets' table entry nearest the scene, at least lowest.
int WriteSequencedRecording(const char* family, const std::string& path, unsigned width, unsigned height,
                            unsigned frames, unsigned presets, double minC, double maxC, uint16_t lowest,
                            const TSynthPresetTable& presetTable);
// The same with a calibration object of type TCal for each preset, which
// presetTable fills before it makes the table.
template <class TCal>
int WriteSequencedRecording(const char* family, const std::string& path, unsigned width, unsigned height,
                            unsigned frames, unsigned presets, double minC, double maxC, uint16_t lowest,
                            bool (*presetTable)(TCal& cal, unsigned p, const CObjectParametersReduceObject& params,
                                                std::vector<float>& table))
{
    return WriteSequencedRecording(
        family, path, width, height, frames, presets, minC, maxC, lowest,
        [presetTable](CReduceObjectArray& objs, unsigned p, const CObjectParametersReduceObject& params,
                      std::vector<float>& table) {
            auto cal = objs.GetObjectOfType(TCal::typeID, int(p), true).template DynamicCast<TCal>();
            return cal && presetTable(*cal, p, params, table);
        });
}

int RunSynthOmbria(const std::string& path, unsigned width, unsigned height, unsigned frames);
int RunSynthCorvane(const std::string& path, unsigned width, unsigned height, unsigned frames);
int RunSynthMarlowe(const std::string& path, unsigned width, unsigned height, unsigned frames);
int RunSynthTessel(const std::string& path, unsigned width, unsigned height, unsigned frames);

} // namespace orv::reduce::cli
