#pragma once
// The regions of a list measured over the frames of a recording: per frame
// and per region the statistics, the centre value and, for line regions, the
// profile, each region in its own emissivity and distance when it sets them.
//
//     CRecordingReduction r;   // opened, unit set
//     CRoiList list;           // loaded
//     CRoiRecordingMeter meter;
//     if (!meter.Prepare(r, list)) fail(meter.lastError());
//     TArray<SRoiFigures> figures;
//     for (uint64_t i = 0; i < r.numFrames(); ++i)
//         if (!meter.Measure(i, figures)) fail(meter.lastError());
//         // figures[k] belongs to list.at(k); 0 is the whole frame
#include <cstdint>
#include <memory>
#include <vector>

#include "orv/Array.h"
#include "orv/String.h"
#include "reduce/roi/RoiMeasure.h"
#include "reduce/store/RecordingReduction.h"

namespace orv::reduce {

class CRoiRecordingMeter {
public:
    // Sizes the list to the recording's frames (rescaling every region from
    // its own image size) and takes its regions as they are then. emissivity
    // and distance are what regions that do not set their own are measured
    // in (below 0: the recording's own), and what every Measure restores.
    bool Prepare(CRecordingReduction& reduction, CRoiList& list, double emissivity = -1, double distance = -1);
    // The figures of every region over frame index, in list order.
    bool Measure(uint64_t index, TArray<SRoiFigures>& out);
    // The frame of the last Measure in the last object parameters used.
    const TArray<float>& values() const { return m_values; }
    const TArray<unsigned char>& status() const { return m_status; }
    const CRoiMeter& meter() const { return m_meter; }
    // Why the last call failed, without the file name.
    const CString& lastError() const { return m_error; }

private:
    bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Regions that share object parameters share one conversion of the
    // frame, by a twin of the reduction set to them once (group 0, the
    // caller's parameters, uses the reduction itself).
    struct SGroup {
        double emissivity = -1;
        double distance = -1;
        TArray<size_t> regions;
    };
    std::vector<std::unique_ptr<CRecordingReduction>> m_twins; // one per group from 1 on
    CRecordingReduction* m_reduction = nullptr;
    CRoiMeter m_meter;
    TArray<SGroup> m_groups;
    double m_emissivity = -1;
    double m_distance = -1;
    TArray<float> m_values;
    TArray<unsigned char> m_status;
    CString m_error;
};

} // namespace orv::reduce
