// synth --family corvane: the scene through Corvane curves, one per preset
// with integration times of 200, 100 and 50 us. Frames come through the
// generic filter, which reports preset 0, so the frames use preset 0's curve;
// the others ride along as a camera with several presets would store them.
#include <cmath>

#include "reduce/families/corvane/SpanFitConv.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/SynthScene.h"

namespace orv::reduce::cli {

namespace {

constexpr unsigned kPresets = 3;

// 1 / T = a + b ln((L + c) / s / f): b = -1 / 1400 K, about 300 K at level
// 20000 with 200 us; a halved time halves the level.
void FillCurve(CCorvaneFactoryCalReduceObject& cal, unsigned preset)
{
    cal.curveType = 2;
    cal.a = 0.016986f;
    cal.b = -1.0f / 1400.0f;
    cal.c = 150.0f;
    cal.d = 0.0f;
    cal.e = 0.0f;
    cal.f = 0.5f;
    cal.g = 0.0f;
    cal.minCounts = 200;
    cal.maxCounts = 64000;
    cal.minTemp = 233.15f;
    cal.maxTemp = 473.15f;
    cal.refValue = 0.0f;
    cal.integrationTime = 200.0f / float(1u << preset);
    cal.valid = true;
}

} // namespace

int RunSynthCorvane(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    CReduceObjectArray objs;
    auto params = objs.GetObjectParameters(true);
    if (!params || !FillSynthSourceInfo(objs, width, height, kPresets, -40.0, 200.0))
        return Fail("synth: could not build the Corvane objects");
    TSharedPtr<CCorvaneFactoryCalReduceObject> first;
    for (unsigned p = 0; p < kPresets; ++p) {
        auto cal = objs.GetObjectOfType(CCorvaneFactoryCalReduceObject::typeID, int(p), true)
                       .DynamicCast<CCorvaneFactoryCalReduceObject>();
        if (!cal) return Fail("synth: could not build the Corvane objects");
        FillCurve(*cal, p);
        if (p == 0) first = cal;
    }
    params->emissivity = 0.95f;
    params->reflectedTemp = params->atmosphereTemp = 293.15f;
    params->estAtmosphericTransmission = 0.0f; // counts as 1: no path loss
    params->source = true;
    params->valid = true;

    CSpanFitConv curve;
    curve.SetSpanFit(first);
    curve.SetObjectParameters(params);
    return WriteSynthRecording(path, objs, width, height, frames, [&](double celsius, unsigned, unsigned, unsigned) {
        float level = 0;
        unsigned char status = 0;
        if (!curve.TempToDL(float(celsius), level, status, tempCelsius, true)) return uint16_t(0);
        return uint16_t(std::fmin(std::fmax(std::nearbyint(level), 0.0), 65535.0));
    });
}

} // namespace orv::reduce::cli
