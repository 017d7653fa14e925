#include "reduce/families/marlowe/MarloweConverter.h"

#include <cmath>
#include <cstring>

#include "reduce/kernels/LUT.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

constexpr unsigned short kLow = 0;
constexpr unsigned short kHigh = CMrlConv::kMaxSignal;
constexpr int kByteTables = 256;

bool BadTypes(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}

TSharedPtr<CMarloweFactoryCalReduceObject> Calibration(CReduceObjectArray& objs, int preset)
{
    return objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, preset, false)
        .DynamicCast<CMarloweFactoryCalReduceObject>();
}

// A value form's float input as a signal: truncated to 16 bits; what has no
// 16-bit value (not a number, out of range) reads as 0.
unsigned short ToSignal(float in)
{
    return in >= 0.0f && in < 65536.0f ? static_cast<unsigned short>(in) : 0;
}

} // namespace

bool CMarloweConverter::Register()
{
    return converterFactory()->Register(kName, classID, &SupportedUnits,
                                        &TConverterCreator<CMarloweConverter>::Create,
                                        &TConverterCreator<CMarloweConverter>::Destroy);
}

bool CMarloweConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs)
{
    if (base != unitCounts) return false;
    if (!objs.HasObjectOfType(CMarloweFactoryCalReduceObject::typeID, true)) return false;
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info) return false;
    bool found = false;
    for (int i = 0; i < kPresets && !found; ++i) found = info->presets[i].available && Calibration(objs, i);
    if (!found) return false;
    units.add(unitCounts);
    units.add(unitRadianceFactory);
    units.add(unitTemperatureFactory);
    return true;
}

CMarloweConverter::~CMarloweConverter()
{
    for (int i = 0; i < kPresets; ++i) {
        delete[] lut[i];
        delete[] lutStatus[i];
    }
}

bool CMarloweConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out,
                               ETempType outTemp, bool* presets, unsigned char numPresets, unsigned int reserved)
{
    if (!IConverter::Update(base, baseTemp, objs, out, outTemp, presets, numPresets, reserved)) return false;
    TSharedPtr<CObjectParametersReduceObject> params = objs.GetObjectParameters(false);
    TSharedPtr<CSourceInfoReduceObject> info = objs.GetSourceInfo(false);
    if (!info) return false;
    CObjectParametersReduceObject defaults;
    const CObjectParametersReduceObject& p = params ? *params : defaults;
    for (int i = 0; i < kPresets; ++i) {
        lutValid[i] = false;
        present[i] = info->presets[i].available;
        TSharedPtr<CMarloweFactoryCalReduceObject> cal = Calibration(objs, i);
        if (!cal) {
            if (presetActive[i]) return false;
            present[i] = false;
            continue;
        }
        conv[i].Init(*cal, p);
        if (params) params->atmosphericTransmission = float(conv[i].getUsedAtmTao());
    }
    return true;
}

bool CMarloweConverter::ChangeObjectParameters(CObjectParametersReduceObject* params)
{
    if (!params) return false;
    for (int i = 0; i < kPresets; ++i) {
        if (!presetActive[i]) continue;
        conv[i].ReInit(*params);
        lutValid[i] = false;
    }
    return true;
}

int CMarloweConverter::Preset(unsigned char preset) const
{
    const unsigned p = preset >= 255 ? firstActivePreset : preset;
    return p < unsigned(kPresets) && presetActive[p] ? int(p) : -1;
}

bool CMarloweConverter::UpdateLUT(unsigned char preset)
{
    if (preset >= kPresets) return false;
    if (lutValid[preset]) return true;
    if (outputUnit != unitTemperatureFactory && outputUnit != unitRadianceFactory) return false;
    if (!lut[preset]) lut[preset] = new float[kLUTSize];
    if (!lutStatus[preset]) lutStatus[preset] = new unsigned char[kLUTSize];
    if (outputUnit == unitTemperatureFactory)
        conv[preset].SignalToTemperature(0, kHigh, lut[preset], lutStatus[preset], outputTempType);
    else
        conv[preset].SignalToRadiance(0, kHigh, lut[preset], lutStatus[preset]);
    lutValid[preset] = true;
    return true;
}

bool CMarloweConverter::SignalToOutput(unsigned short signal, float& out, unsigned char& status,
                                       unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    if (outputUnit == unitTemperatureFactory) {
        out = conv[p].SignalToTemperature(signal, &status, outputTempType);
        return true;
    }
    if (outputUnit == unitRadianceFactory) {
        out = conv[p].SignalToRadiance(signal, &status);
        return true;
    }
    return false;
}

bool CMarloweConverter::OutputToSignal(float in, unsigned short& signal, unsigned char& status,
                                       unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    if (outputUnit == unitTemperatureFactory) {
        signal = conv[p].TemperatureToSignal(in, &status, outputTempType);
        return true;
    }
    if (outputUnit == unitRadianceFactory) {
        signal = conv[p].RadianceToSignal(in, &status);
        return true;
    }
    return false;
}

bool CMarloweConverter::SignalToOutput(unsigned short first, unsigned short last, float* out,
                                       unsigned char* status, unsigned char preset)
{
    const int p = Preset(preset);
    if (p < 0) return false;
    if (outputUnit != unitTemperatureFactory && outputUnit != unitRadianceFactory) return false;
    if (last < first) return true;
    const unsigned int span = unsigned(last) - first + 1u;
    // The table covers 0 to 16383: a valid one serves any range inside it,
    // and a long range is worth building it for.
    const bool inside = last <= kHigh;
    if (inside && (lutValid[p] || span >= kTableRange)) {
        if (!UpdateLUT(static_cast<unsigned char>(p))) return false;
        std::memcpy(out, lut[p] + first, span * sizeof(float));
        if (status) std::memcpy(status, lutStatus[p] + first, span);
        return true;
    }
    if (outputUnit == unitTemperatureFactory)
        conv[p].SignalToTemperature(first, last, out, status, outputTempType);
    else
        conv[p].SignalToRadiance(first, last, out, status);
    return true;
}

bool CMarloweConverter::BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset)
{
    return SignalToOutput(ToSignal(in), out, status, preset);
}

bool CMarloweConverter::OutputToBase(float in, float& out, unsigned char& status, unsigned char preset)
{
    unsigned short signal = 0;
    if (!OutputToSignal(in, signal, status, preset)) return false;
    out = float(signal);
    return true;
}

bool CMarloweConverter::Single(STypedData src, STypedData dst, float*& table, unsigned char*& tableStatus)
{
    if (BadTypes(src, dst)) return false;
    const unsigned char p = firstActivePreset;
    if (p >= kPresets || !UpdateLUT(p)) return false;
    table = lut[p];
    tableStatus = lutStatus[p];
    return true;
}

bool CMarloweConverter::PerPreset(STypedData src, STypedData dst, float** tables, unsigned char** statuses)
{
    if (BadTypes(src, dst)) return false;
    const unsigned char current = firstActivePreset;
    if (current >= kPresets || !UpdateLUT(current)) return false;
    for (unsigned char i = 0; i < kPresets; ++i)
        if (present[i] && !UpdateLUT(i)) return false;
    for (int b = 0; b < kByteTables; ++b) {
        const int k = present[b & 3] && lutValid[b & 3] ? (b & 3) : current;
        tables[b] = lut[k];
        statuses[b] = lutStatus[k];
    }
    return true;
}

bool CMarloweConverter::ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status)
{
    float* table = nullptr;
    unsigned char* tableStatus = nullptr;
    if (!Single(src, dst, table, tableStatus)) return false;
    return ApplyLUT(src, dst, status, region, table, tableStatus, kLow, kHigh);
}

bool CMarloweConverter::ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region,
                                     STypedData dst, unsigned char* status)
{
    float* tables[kByteTables];
    unsigned char* statuses[kByteTables];
    if (!PerPreset(src, dst, tables, statuses)) return false;
    return ApplyLUT(src, presetIndex, dst, status, region, tables, statuses, kLow, kHigh);
}

unsigned char CMarloweConverter::GuessPresetFromOutput(float value)
{
    const unsigned char current = firstActivePreset;
    if (outputUnit == unitCounts || current >= kPresets) return current;
    auto centre = [this](int i) {
        return outputUnit == unitRadianceFactory ? (conv[i].minRadiance() + conv[i].maxRadiance()) * 0.5
                                                 : (conv[i].minTemperature() + conv[i].maxTemperature()) * 0.5;
    };
    unsigned char best = current;
    double bestDistance = std::fabs(value - centre(current));
    for (int i = 0; i < kPresets; ++i) {
        if (!present[i]) continue;
        const double d = std::fabs(value - centre(i));
        if (d < bestDistance) {
            best = static_cast<unsigned char>(i);
            bestDistance = d;
        }
    }
    return best;
}

} // namespace orv::reduce
