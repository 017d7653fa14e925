#pragma once
// CCorvaneConverter: counts of a Corvane camera to temperature, one curve
// per preset (CSpanFitConv), each served through a 65536-entry table. An
// active preset without a calibration keeps a curve that answers nothing:
// its pixels come out 0 and flagged, its value forms false. Each preset has
// a table of its own, so the per-pixel preset form flags the pixels of an
// inactive preset too.
#include "reduce/convert/NamedConverter.h"
#include "reduce/convert/PresetTableConverter.h"
#include "reduce/families/corvane/SpanFitConv.h"

namespace orv::reduce {

class CCorvaneConverter : public TNamedConverter<CCorvaneConverter, TPresetTableConverter<8, 0x10000>> {
public:
    static constexpr const char* kName = "CorvaneConverter";
    static constexpr unsigned char kIDBytes[16] = {0x7d, 0xf4, 0x1c, 0x62, 0xae, 0x1e, 0x68, 0x4d,
                                                   0xa3, 0xe5, 0x37, 0x9f, 0x1a, 0xd7, 0x6f, 0x62};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);

    // Base 0 with a Corvane calibration: 0, 5.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CCorvaneConverter() = default;

    bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                bool* presets, unsigned char numPresets, unsigned int reserved) override;
    bool canChangeObjectParameters() override { return true; }
    bool canUseLUT() override { return true; }
    bool isReversable() override { return true; }
    bool ChangeObjectParameters(CObjectParametersReduceObject* p) override;

    bool SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset) override;
    bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset) override;
    bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                        unsigned char preset) override;
    using IConverter::BaseToOutput;
    bool BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset) override;

    // Fills the table of a preset if it is not up to date; only for unit 5.
    bool UpdateLUT(unsigned char preset) override;

    CSpanFitConv span[8];

private:
    // Preset 255 and above mean the current preset; 8 when not active.
    unsigned char PresetOf(unsigned char preset) const;
};

} // namespace orv::reduce
