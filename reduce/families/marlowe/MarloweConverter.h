#pragma once
// CMarloweConverter: counts of a Marlowe camera to "Radiance (Factory)" and
// "Temperature (Factory)", four presets, each with its CMrlConv. Frames go
// through a 16384-entry table per preset, built when first needed after any
// Update or change of object parameters.
#include "orv/Array.h"
#include "reduce/convert/NamedConverter.h"
#include "reduce/convert/PresetTableConverter.h"
#include "reduce/families/marlowe/MrlConv.h"

namespace orv::reduce {

class CMarloweConverter : public TNamedConverter<CMarloweConverter, TPresetTableConverter<4, 16384>> {
public:
    static constexpr const char* kName = "MarloweConverter";
    static constexpr unsigned char kIDBytes[16] = {0x00, 0xb3, 0x05, 0x38, 0x34, 0x18, 0x64, 0x4f,
                                                   0xbc, 0x35, 0x1f, 0x7e, 0xd0, 0x90, 0xaf, 0x1f};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);
    static constexpr int kPresets = 4;
    // A range of at least this many signals is served from the table.
    static constexpr unsigned int kTableRange = 8193;

    // Base 0 with a calibration for a preset the source info marks
    // available: 0, 4, 5.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CMarloweConverter() = default;

    // False without source info, or when an active preset has no
    // calibration (earlier presets stay updated).
    bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                bool* presets, unsigned char numPresets, unsigned int reserved) override;
    bool canChangeObjectParameters() override { return true; }
    bool canUseLUT() override { return true; }
    bool needIndicies() const { return false; }
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    bool SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset) override;
    bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset) override;
    bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                        unsigned char preset) override;
    using IConverter::BaseToOutput;
    bool BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset) override;

    unsigned char GuessPresetFromOutput(float value) override;

    // Builds the table of a preset if it is not up to date; false for a
    // unit other than 4 and 5.
    bool UpdateLUT(unsigned char preset) override;

    CMrlConv conv[kPresets];
    bool present[kPresets] = {};

private:
    // The preset a value form means: 255 and above the current one; -1 for
    // one that is not there.
    int Preset(unsigned char preset) const;
    // A preset without a calibration has no table: its pixels read the
    // current preset's.
    bool OwnTable(int preset) const override { return present[preset]; }
};

} // namespace orv::reduce
