// A recording file to temperatures through CRecordingReduction, frame after
// frame: read, decode, convert with status. The recording is named by
// ORV_BENCH_RECORDING (bench/python_read.py makes one and runs this beside
// the Python module on the same file), so the two are timed on equal terms.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include "reduce/store/RecordingReduction.h"

namespace {

using namespace orv;
using namespace orv::reduce;

void BM_ReduceFrames(benchmark::State& state)
{
    const char* path = std::getenv("ORV_BENCH_RECORDING");
    CRecordingReduction r;
    if (!path || !r.Open(CString(path)) || !r.SetUnit(unitTemperatureUser, tempCelsius)) {
        state.SkipWithError("set ORV_BENCH_RECORDING to a recording with a user calibration");
        return;
    }
    const uint64_t frames = std::min<uint64_t>(r.numFrames(), uint64_t(state.range(0)));
    std::vector<float> values(r.pixels() * frames);
    std::vector<unsigned char> status(r.pixels() * frames);
    for (auto _ : state) {
        for (uint64_t i = 0; i < frames; ++i)
            if (!r.Reduce(i, values.data() + i * r.pixels(), status.data() + i * r.pixels(), r.pixels())) {
                state.SkipWithError(r.lastError().c_str());
                return;
            }
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations() * frames));
}
BENCHMARK(BM_ReduceFrames)->Arg(100)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
