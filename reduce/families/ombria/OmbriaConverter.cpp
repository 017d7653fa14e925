#include "reduce/families/ombria/OmbriaConverter.h"

#include <cmath>

#include "orv/ValueConvert.h"
#include "reduce/convert/TemperatureScale.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

// A calibration with a NaN or an infinity would carry it into every pixel
// and every limit: refused instead.
bool Finite(const SAdjustParams& a, const SCalibParams& c)
{
    const float values[] = {a.gain,          a.nonLinearFactor, c.R,           c.B,           c.F,
                            c.alpha1,        c.alpha2,          c.beta1,       c.beta2,       c.X,
                            c.rangeHighTemp, c.rangeLowTemp,    c.clampHighTemp, c.clampLowTemp, c.validHighTemp,
                            c.validLowTemp};
    for (float v : values)
        if (!std::isfinite(v)) return false;
    return true;
}

} // namespace

bool COmbriaConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts) return false;
    if (!objs.HasObjectOfType(COmbriaFactoryCalReduceObject::typeID, true)) return false;
    units.add(unitCounts);
    units.add(unitRadianceFactory);
    units.add(unitObjectSignal);
    units.add(unitTemperatureFactory);
    return true;
}

COmbriaConverter::COmbriaConverter() : TNamedConverter(1, static_cast<unsigned short>(kLUTSize - 1)) {}

COmbriaConverter::~COmbriaConverter()
{
    delete[] lut;
    delete[] lutStatus;
}

bool COmbriaConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out,
                              ETempType outTemp, bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!IConverter::Update(base, baseTemp, objs, out, outTemp, presets, numPresets, reserved)) return false;
    lutValid = false;
    TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(false);
    // Preset 0 always: the family has one calibration whichever presets run.
    TSharedPtr<COmbriaFactoryCalReduceObject> cal =
        objs.GetObjectOfType(COmbriaFactoryCalReduceObject::typeID, 0, false).DynamicCast<COmbriaFactoryCalReduceObject>();
    if (!cal || !cal->valid || !Finite(cal->adjust, cal->calib)) return false;

    SAdjustParams adjust = cal->adjust;
    std::fill(std::begin(adjust.reserved), std::end(adjust.reserved), uint8_t(0));
    adjust.padding = 0;
    SCalibParams calib = cal->calib;
    std::fill(std::begin(calib.reserved), std::end(calib.reserved), uint8_t(0));
    SObjectParams object;
    if (params) {
        object = ObjectParamsAs<SObjectParams>(*params);
    } else {
        // The defaults of a recording without object parameters, which
        // differ from setDefObjPar in distance and humidity: intended.
        object.emissivity = 1.0f;
        object.distance = 2.0f;
        object.reflectedTemp = object.atmosphereTemp = object.extOpticsTemp = 293.15f;
        object.extOpticsTransmission = 1.0f;
        object.estAtmosphericTransmission = 0.0f;
        object.relativeHumidity = 0.3f;
    }
    meas.init(&adjust, &object, &calib);
    if (params) params->atmosphericTransmission = float(meas.getUsedAtmTao());
    return true;
}

bool COmbriaConverter::ChangeObjectParameters(CObjectParametersReduceObject* p)
{
    if (!p) return false;
    SObjectParams object;
    meas.getObjPar(&object);
    object.emissivity = p->emissivity;
    object.distance = p->distance;
    meas.setObjPar(&object);
    lutValid = false;
    return true;
}

bool COmbriaConverter::UpdateLUT()
{
    if (lutValid) return true;
    if (!lut) lut = new float[kLUTSize];
    if (!lutStatus) lutStatus = new unsigned char[kLUTSize];
    switch (outputUnit) {
    case unitTemperatureFactory: meas.imgToTemp(0, 65535, lut, lutStatus, outputTempType); break;
    case unitRadianceFactory: meas.imgToRadiance(0, 65535, lut, lutStatus); break;
    case unitObjectSignal: meas.imgToObjectSignal(0, 65535, lut, lutStatus); break;
    default: return false;
    }
    lutValid = true;
    return true;
}

bool COmbriaConverter::PresetUsable(unsigned char preset) const
{
    const unsigned p = preset == 255 ? firstActivePreset : preset;
    return p < 8 && presetActive[p];
}

bool COmbriaConverter::SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset)
{
    if (!PresetUsable(preset)) return false;
    switch (outputUnit) {
    case unitTemperatureFactory:
        out = float(priv::ConvertScale(meas.imgToTemp(signal, &status), tempKelvin, outputTempType));
        return true;
    case unitRadianceFactory: out = float(meas.imgToRadiance(signal, &status)); return true;
    case unitObjectSignal: out = float(meas.imgToObjectSignal(signal, &status)); return true;
    default: return false;
    }
}

bool COmbriaConverter::OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char)
{
    status = 0;
    switch (outputUnit) {
    case unitTemperatureFactory:
        signal = meas.tempToImg(priv::ConvertScale(double(in), outputTempType, tempKelvin));
        return true;
    case unitRadianceFactory: signal = meas.radToImg(in); return true;
    case unitObjectSignal: signal = meas.objSigToImg(in); return true;
    default: return false;
    }
}

bool COmbriaConverter::SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                                      unsigned char preset)
{
    if (!PresetUsable(preset)) return false;
    switch (outputUnit) {
    case unitTemperatureFactory: meas.imgToTemp(first, last, out, status, outputTempType); return true;
    case unitRadianceFactory: meas.imgToRadiance(first, last, out, status); return true;
    case unitObjectSignal: meas.imgToObjectSignal(first, last, out, status); return true;
    default: return false;
    }
}

bool COmbriaConverter::BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset)
{
    return SignalToOutput(ConvertValue<unsigned short>(in), out, status, preset);
}

bool COmbriaConverter::PresetTable(int, float*& table, unsigned char*& status)
{
    if (!UpdateLUT()) return false;
    table = lut;
    status = lutStatus;
    return true;
}

bool COmbriaConverter::ConvertRegion(STypedData src, const unsigned char*, const SPixelRegion& region, STypedData dst,
                                     unsigned char* status)
{
    return CPresetTableConverter::ConvertRegion(src, region, dst, status);
}

} // namespace orv::reduce
