// synth --family ombria: the scene through an Ombria factory calibration.
// Counts are the image values whose temperature, after the measurement
// path (emissivity 0.95, 5 m of air at 40 % humidity), is the scene's.
#include <cmath>

#include "reduce/families/ombria/MeasConv.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "tools/orvreduce/Common.h"
#include "tools/orvreduce/SynthScene.h"

namespace orv::reduce::cli {

namespace {

// A long-wave camera: R, B, F near 8 to 14 um, an image offset and gain that
// put room temperature near a third of the count range, and limits from
// -40 to 200 C.
void FillCalibration(COmbriaFactoryCalReduceObject& cal)
{
    SAdjustParams& a = cal.adjust;
    a.offset = -1000;
    a.gain = 0.5f;
    a.imgLow = 10;
    a.imgHigh = 65000;
    SCalibParams& c = cal.calib;
    c.R = 500000.0f;
    c.B = 1400.0f;
    c.F = 1.0f;
    c.alpha1 = 0.006569f;
    c.alpha2 = 0.01262f;
    c.beta1 = -0.002276f;
    c.beta2 = -0.00667f;
    c.X = 1.9f;
    c.clampLowTemp = 223.15f;
    c.validLowTemp = 233.15f;
    c.validHighTemp = 473.15f;
    c.clampHighTemp = 483.15f;
    c.rangeLowTemp = 233.15f;
    c.rangeHighTemp = 473.15f;
    cal.valid = true;
}

} // namespace

int RunSynthOmbria(const std::string& path, unsigned width, unsigned height, unsigned frames)
{
    CReduceObjectArray objs;
    auto params = objs.GetObjectParameters(true);
    auto cal = objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, true)
                   .DynamicCast<COmbriaFactoryCalReduceObject>();
    if (!params || !cal || !FillSynthSourceInfo(objs, width, height, 1, -40.0, 200.0))
        return Fail("synth: could not build the Ombria objects");
    FillCalibration(*cal);
    params->emissivity = 0.95f;
    params->distance = 5.0f;
    params->reflectedTemp = params->atmosphereTemp = params->extOpticsTemp = 293.15f;
    params->extOpticsTransmission = 1.0f;
    params->estAtmosphericTransmission = 0.0f;
    params->relativeHumidity = 0.4f;
    params->source = true;
    params->valid = true;

    // The converter reads these same records.
    const SObjectParams o = ObjectParamsAs<SObjectParams>(*params);
    const CMeasConv meas(&cal->adjust, &o, &cal->calib);
    return WriteSynthRecording(path, objs, width, height, frames, [&](double celsius, unsigned, unsigned, unsigned) {
        return meas.tempToImg(celsius + 273.15);
    });
}

} // namespace orv::reduce::cli
