#include "reduce/convert/Converter.h"

#include <strings.h>

#include <cstring>

#include "orv/ConvertArray.h"
#include "orv/Math.h"
#include "orv/ValueConvert.h"
#include "reduce/convert/TemperatureScale.h"

namespace orv::reduce {

namespace {
constexpr const char* kUnitTexts[] = {
    "Counts",       "Radiance (User)",   "Temperature (User)", "Object Signal", "Radiance (Factory)",
    "Temperature (Factory)", "RGB (24-bit)", "RGB (48-bit)",   "Red Channel",   "Green Channel",
    "Blue Channel", "RGB Average",
};
constexpr unsigned kUnitCount = sizeof(kUnitTexts) / sizeof(kUnitTexts[0]);
static_assert(kUnitCount == unsigned(unitError), "one text per unit below Error");
} // namespace

const char* UnitToString(EUnit unit)
{
    return unsigned(unit) < kUnitCount ? kUnitTexts[unsigned(unit)] : "Error";
}

EUnit ParseUnit(const char* text)
{
    if (!text) return unitError;
    for (unsigned i = 0; i < kUnitCount; ++i)
        if (strcasecmp(text, kUnitTexts[i]) == 0) return EUnit(i);
    return unitError;
}

bool IConverter::Update(EUnit base, ETempType baseTemp, CReduceObjectArray&, EUnit out, ETempType outTemp,
                        bool* presets, unsigned char numPresets, unsigned int)
{
    if (numPresets > 8) return false;
    baseUnit = base;
    baseTempType = baseTemp;
    outputUnit = out;
    outputTempType = outTemp;
    // The tail beyond numPresets is cleared here, unlike in the convert
    // context, which keeps it: intended.
    for (unsigned i = 0; i < 8; ++i) presetActive[i] = i < numPresets && presets && presets[i];
    firstActivePreset = 0;
    for (unsigned char i = 0; i < 8; ++i)
        if (presetActive[i]) {
            firstActivePreset = i;
            break;
        }
    return true;
}

bool IConverter::SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char)
{
    if (baseUnit != unitCounts || outputUnit != unitCounts) return false;
    out = float(signal);
    status = 0;
    return true;
}

bool IConverter::OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char)
{
    if (baseUnit != unitCounts || outputUnit != unitCounts) return false;
    // The element conversion rule: defined for negative, huge and NaN
    // values too, where a plain cast is not.
    signal = ConvertValue<unsigned short>(in);
    status = 0;
    return true;
}

bool IConverter::SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                                unsigned char)
{
    if (baseUnit != unitCounts || outputUnit != unitCounts) return false;
    if (last < first) return true;
    const unsigned n = unsigned(last) - first + 1u;
    if (status) std::memset(status, 0, n);
    for (unsigned i = 0; i < n; ++i) out[i] = float(first + i);
    return true;
}

bool IConverter::BaseToOutput(float in, float& out, unsigned char& status, unsigned char)
{
    if (baseUnit != outputUnit) return false;
    status = 0;
    out = IsTemperatureUnit(outputUnit) ? float(priv::ConvertScale(double(in), baseTempType, outputTempType)) : in;
    return true;
}

bool IConverter::OutputToBase(float in, float& out, unsigned char& status, unsigned char)
{
    if (baseUnit != outputUnit) return false;
    status = 0;
    out = IsTemperatureUnit(outputUnit) ? float(priv::ConvertScale(double(in), outputTempType, baseTempType)) : in;
    return true;
}

bool IConverter::ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status)
{
    if (region.kind != SPixelRegion::kindFrame && region.kind != SPixelRegion::kindIndices) {
        TArray<unsigned int> indices;
        region.BuildIndices(indices);
        return BaseToOutput(src, indices.data(), unsigned(indices.size()), dst, status);
    }
    // The list of an index form is dropped on purpose (see the declaration):
    // its first n elements go through the frame form, which a converter may
    // have overridden.
    const unsigned int n = region.count;
    if (region.kind == SPixelRegion::kindIndices) return BaseToOutput(src, dst, status, n);
    if (baseUnit != outputUnit) return false;
    if (status) std::memset(status, 0, n);
    if (IsTemperatureUnit(outputUnit)) return CMath::ConvertTemperature(dst, src, n, baseTempType, outputTempType);
    return ConvertArray(dst, src, n);
}

bool IConverter::ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region,
                               STypedData dst, unsigned char* status)
{
    switch (region.kind) {
    case SPixelRegion::kindFrame: return BaseToOutput(src, dst, status, region.count);
    case SPixelRegion::kindIndices: return BaseToOutput(src, presetIndex, dst, status, region.count);
    default: break;
    }
    TArray<unsigned int> indices;
    region.BuildIndices(indices);
    return BaseToOutput(src, presetIndex, indices.data(), unsigned(indices.size()), dst, status);
}

} // namespace orv::reduce
