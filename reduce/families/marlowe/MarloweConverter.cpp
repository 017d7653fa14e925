#include "reduce/families/marlowe/MarloweConverter.h"

#include <cmath>
#include <cstring>

#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

namespace {

constexpr unsigned short kHigh = CMrlConv::kMaxSignal;
static_assert(CMarloweConverter::kLUTSize == kHigh + 1u);

TSharedPtr<CMarloweFactoryCalReduceObject> Calibration(CReduceObjectArray& objs, int preset)
{
    return objs.GetObjectOfType(CMarloweFactoryCalReduceObject::typeID, preset, false)
        .DynamicCast<CMarloweFactoryCalReduceObject>();
}

} // namespace

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
    return BuildTable(preset, [&](float* table, unsigned char* tableStatus) {
        if (outputUnit == unitTemperatureFactory)
            conv[preset].SignalToTemperature(0, kHigh, table, tableStatus, outputTempType);
        else if (outputUnit == unitRadianceFactory)
            conv[preset].SignalToRadiance(0, kHigh, table, tableStatus);
        else
            return false;
        return true;
    });
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
    return SignalToOutput(TruncatedSignal(in), out, status, preset);
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
