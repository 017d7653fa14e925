#pragma once
// The known temperature scene of synth, and the writer that every family's
// synthetic recording shares: a family gives its objects and the counts of
// a temperature.
#include <cstdint>
#include <functional>
#include <string>

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

int RunSynthOmbria(const std::string& path, unsigned width, unsigned height, unsigned frames);
int RunSynthCorvane(const std::string& path, unsigned width, unsigned height, unsigned frames);

} // namespace orv::reduce::cli
