#include "reduce/families/corvane/CorvaneConverter.h"

#include "orv/ValueConvert.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

bool CCorvaneConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts) return false;
    if (!objs.HasObjectOfType(CCorvaneFactoryCalReduceObject::typeID, true)) return false;
    units.add(unitCounts);
    units.add(unitTemperatureFactory);
    return true;
}

bool CCorvaneConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out,
                               ETempType outTemp, bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!IConverter::Update(base, baseTemp, objs, out, outTemp, presets, numPresets, reserved)) return false;
    TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(false);
    for (unsigned char p = 0; p < 8; ++p) {
        lutValid[p] = false;
        // A preset without its calibration gets a curve that answers
        // nothing, never the curve of an earlier recording.
        span[p] = CSpanFitConv{};
        if (!presetActive[p]) continue;
        span[p].SetSpanFit(
            objs.GetObjectOfType(CCorvaneFactoryCalReduceObject::typeID, p, false).DynamicCast<CCorvaneFactoryCalReduceObject>());
        span[p].SetObjectParameters(params);
    }
    return true;
}

bool CCorvaneConverter::ChangeObjectParameters(CObjectParametersReduceObject* p)
{
    if (!p) return false;
    for (unsigned char i = 0; i < 8; ++i) {
        if (!presetActive[i]) continue;
        span[i].SetObjectParameters(p->emissivity, p->reflectedTemp, p->estAtmosphericTransmission, p->atmosphereTemp);
        lutValid[i] = false;
    }
    return true;
}

unsigned char CCorvaneConverter::PresetOf(unsigned char preset) const
{
    const unsigned char p = preset >= 8 ? firstActivePreset : preset;
    return presetActive[p] ? p : 8;
}

bool CCorvaneConverter::UpdateLUT(unsigned char preset)
{
    return BuildTable(preset, [&](float* table, unsigned char* tableStatus) {
        if (outputUnit != unitTemperatureFactory) return false;
        span[preset].DLToTemp(0, 65535, table, tableStatus, outputTempType);
        return true;
    });
}

bool CCorvaneConverter::SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset)
{
    const unsigned char p = PresetOf(preset);
    if (p > 7 || outputUnit != unitTemperatureFactory) return false;
    return span[p].DLToTemp(float(signal), out, status, outputTempType, true);
}

bool CCorvaneConverter::OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset)
{
    const unsigned char p = PresetOf(preset);
    if (p > 7 || outputUnit != unitTemperatureFactory) return false;
    float level = 0;
    if (!span[p].TempToDL(in, level, status, outputTempType, true)) return false;
    signal = ConvertValue<unsigned short>(level);
    return true;
}

bool CCorvaneConverter::SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                                       unsigned char preset)
{
    const unsigned char p = PresetOf(preset);
    if (p > 7 || outputUnit != unitTemperatureFactory || !span[p].Usable()) return false;
    span[p].DLToTemp(first, last, out, status, outputTempType);
    return true;
}

bool CCorvaneConverter::BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset)
{
    return SignalToOutput(ConvertValue<unsigned short>(in), out, status, preset);
}

} // namespace orv::reduce
