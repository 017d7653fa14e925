#pragma once
// What the synthetic recordings share: the known temperature scene, its
// calibration objects, and the writers of camera pixel types.
#include <cstdint>
#include <string>

#include "orv/Types.h"
#include "orv/File.h"
#include "reduce/store/ReduceObjectArray.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

// The scene of frame f of frames, in counts of the synthetic calibration.
uint16_t SynthSceneCounts(unsigned x, unsigned y, unsigned f, unsigned width, unsigned height, unsigned frames);
// Source info (16-bit grayscale counts), object parameters and calibration
// of the scene.
bool FillSynthObjects(CReduceObjectArray& objs, unsigned width, unsigned height);

struct SSynthRequest {
    std::string path;
    SGuid pixelType;
    unsigned width = 0, height = 0, frames = 0;
};

// A writer of camera recordings: Handles says which pixel types it writes,
// Write returns the exit code (printing why on failure).
struct SCameraSynth {
    bool (*Handles)(SGuid pixelType);
    int (*Write)(const SSynthRequest& request);
};

// V410, R7Q, Sarnet and MX515: camera blocks, compressed and colour frames
// (SynthFilters.cpp).
bool SynthV410Handles(SGuid pixelType);
int SynthV410(const SSynthRequest& request);
// TLK-RV and TLK-MX: the scene behind a camera header row (SynthTLK.cpp).
bool SynthTLKHandles(SGuid pixelType);
int SynthTLK(const SSynthRequest& request);
// The Bayer colour mosaics (SynthBayer.cpp).
bool SynthBayerHandles(SGuid pixelType);
int SynthBayer(const SSynthRequest& request);

// A recording written frame by frame into a temporary file that Finish
// renames into place. Each step prints why it failed and returns false.
class CSynthFile {
public:
    explicit CSynthFile(const std::string& path) : m_path(path), m_out(path) {}
    // The info blocks of objs and a "Pixels" header for frames of frameSize
    // bytes of the source info's pixel type.
    bool Start(CReduceObjectArray& objs, uint32_t frameSize);
    bool AddFrame(const void* data, uint32_t size, unsigned index);
    // counts: frames per preset, four of them.
    bool Finish(unsigned* counts);

private:
    std::string m_path;
    CTempOutput m_out;
    TSharedPtr<IFile> m_file;
};

} // namespace orv::reduce::cli
