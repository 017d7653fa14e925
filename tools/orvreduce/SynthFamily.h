#pragma once
// A camera family's part in `orvreduce synth`: the objects of its recording
// (source info, object parameters, its calibrations) and the counts its
// calibration gives a scene temperature in each preset. Frames take the
// presets 0 to presets() - 1 in turn; the recording declares preset
// sequencing so that a reader knows which frame has which.
#include <cstdint>
#include <memory>

#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce::cli {

class ISynthFamily {
public:
    virtual ~ISynthFamily() = default;
    // Fills the objects of a width x height recording; false if one cannot
    // be made.
    virtual bool Fill(CReduceObjectArray& objs, unsigned width, unsigned height) = 0;
    virtual unsigned presets() const = 0;
    // The counts whose value in the preset lies nearest celsius.
    virtual uint16_t Counts(double celsius, unsigned preset) = 0;
};

// The source info all synthetic recordings share: 16-bit grey counts of
// adBits bits, presets 0 to presets - 1 sequenced, each measuring low to
// high Celsius.
void FillSyntheticSource(CReduceObjectArray& objs, unsigned width, unsigned height, unsigned adBits,
                         unsigned presets, double low, double high);

// The nearest entry of an increasing table of n values; what a family's
// Counts does with its table of signal values.
uint16_t NearestEntry(const float* table, unsigned n, double value);

std::unique_ptr<ISynthFamily> MakeUserSynth();
std::unique_ptr<ISynthFamily> MakeMarloweSynth();
std::unique_ptr<ISynthFamily> MakeTesselSynth();

} // namespace orv::reduce::cli
