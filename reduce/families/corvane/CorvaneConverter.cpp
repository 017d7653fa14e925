#include "reduce/families/corvane/CorvaneConverter.h"

#include "orv/ValueConvert.h"
#include "reduce/kernels/LUT.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {
bool BadTypes(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}
// Entries of the table arrays handed to the per-pixel preset look-up: one
// per value of a preset byte.
constexpr int kPresetTables = 256;
} // namespace

bool CCorvaneConverter::Register()
{
    return converterFactory()->Register(kName, classID, &SupportedUnits, &TConverterCreator<CCorvaneConverter>::Create,
                                        &TConverterCreator<CCorvaneConverter>::Destroy);
}

bool CCorvaneConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts) return false;
    if (!objs.HasObjectOfType(CCorvaneFactoryCalReduceObject::typeID, true)) return false;
    units.add(unitCounts);
    units.add(unitTemperatureFactory);
    return true;
}

CCorvaneConverter::~CCorvaneConverter()
{
    for (int i = 0; i < 8; ++i) {
        delete[] lut[i];
        delete[] lutStatus[i];
    }
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
    if (preset > 7) return false;
    if (lutValid[preset]) return true;
    if (outputUnit != unitTemperatureFactory) return false;
    if (!lut[preset]) lut[preset] = new float[kLUTSize];
    if (!lutStatus[preset]) lutStatus[preset] = new unsigned char[kLUTSize];
    span[preset].DLToTemp(0, 65535, lut[preset], lutStatus[preset], outputTempType);
    lutValid[preset] = true;
    return true;
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

bool CCorvaneConverter::OutputToBase(float in, float& out, unsigned char& status, unsigned char preset)
{
    unsigned short signal = 0;
    if (!OutputToSignal(in, signal, status, preset)) return false;
    out = float(signal);
    return true;
}

bool CCorvaneConverter::ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst,
                                      unsigned char* status)
{
    const unsigned char p = firstActivePreset;
    if (BadTypes(src, dst) || !UpdateLUT(p)) return false;
    return ApplyLUT(src, dst, status, region, lut[p], lutStatus[p], 0, 65535);
}

bool CCorvaneConverter::ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region,
                                      STypedData dst, unsigned char* status)
{
    if (BadTypes(src, dst)) return false;
    for (unsigned char p = 0; p < 8; ++p)
        if (!UpdateLUT(p)) return false;
    // Every byte value gets a table, that of its low three bits: a byte
    // beyond 7 reads no pointer outside the array. Inactive presets have
    // curves that answer nothing, so their pixels come out flagged.
    float* luts[kPresetTables];
    unsigned char* statuses[kPresetTables];
    for (int i = 0; i < kPresetTables; ++i) {
        luts[i] = lut[i & 7];
        statuses[i] = lutStatus[i & 7];
    }
    return ApplyLUT(src, presetIndex, dst, status, region, luts, statuses, 0, 65535);
}

} // namespace orv::reduce
