// A hostile recording through the library's reduction and verification, as
// the program and the Python module use them: verify every block, open for
// reduction, then reduce the first frames to every unit offered with the
// recording's own and with overridden parameters, and read their frame info.
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/store/RecordingReduction.h"
#include "reduce/store/VerifyRecording.h"

using namespace orv;
using namespace orv::reduce;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    CRecordingVerifier verifier;
    verifier.Verify(input.Open());

    CRecordingReduction reduction;
    if (!reduction.Open(input.Open())) return 0;
    const size_t n = reduction.pixels();
    if (n > (1u << 20)) return 0;
    std::vector<float> values(n);
    std::vector<unsigned char> status(n);
    const TArray<EUnit> units = reduction.units();
    for (size_t u = 0; u < units.size() && u < 6; ++u) {
        if (!reduction.SetUnit(units[u], ETempType(u % 4))) continue;
        for (double emissivity : {-1.0, 0.5}) {
            reduction.SetObjectParameters(emissivity, emissivity);
            for (uint64_t i = 0; i < reduction.numFrames() && i < 3; ++i) {
                reduction.Reduce(i, values.data(), status.data(), n);
                reduction.FrameInfo(i);
            }
        }
    }
    return 0;
}
