#pragma once
// COmbriaConverter: counts of an Ombria camera to object signal, radiance
// and temperature through CMeasConv. One calibration is in force for all
// presets, so every count maps to one value and frames go through one
// 65536-entry table.
#include "reduce/convert/NamedConverter.h"
#include "reduce/convert/PresetTableConverter.h"
#include "reduce/families/ombria/MeasConv.h"

namespace orv::reduce {

class COmbriaConverter : public TNamedConverter<COmbriaConverter, CPresetTableConverter> {
public:
    static constexpr const char* kName = "OmbriaConverter";
    static constexpr unsigned char kIDBytes[16] = {0xab, 0x93, 0x16, 0xe8, 0xb6, 0xb4, 0xc4, 0x4e,
                                                   0x85, 0xc0, 0xe8, 0x9d, 0x1c, 0x35, 0x06, 0x1e};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);
    static constexpr unsigned int kLUTSize = 0x10000;

    // Base 0 with an Ombria calibration: 0, 4, 3, 5.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    COmbriaConverter();
    ~COmbriaConverter() override;

    // False without a valid calibration object of preset 0, or with one
    // whose numbers are not finite.
    bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                bool* presets, unsigned char numPresets, unsigned int reserved) override;
    bool canChangeObjectParameters() override { return true; }
    bool canUseLUT() override { return true; }
    bool isReversable() override { return true; }
    bool needIndicies() const { return false; }
    // Takes only emissivity and distance from p.
    bool ChangeObjectParameters(CObjectParametersReduceObject* p) override;

    bool SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset) override;
    bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset) override;
    bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                        unsigned char preset) override;
    bool BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset) override;

    using IConverter::BaseToOutput;
    using CPresetTableConverter::ConvertRegion;
    // The preset bytes are dropped: one calibration is in force.
    bool ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region, STypedData dst,
                       unsigned char* status) override;

    // Fills the table for the output unit if it is not up to date; false for
    // a unit the table does not serve.
    bool UpdateLUT();

    CMeasConv meas{nullptr, nullptr, nullptr};
    float* lut = nullptr;
    unsigned char* lutStatus = nullptr;
    bool lutValid = false;

private:
    bool PresetUsable(unsigned char preset) const;
    // The one table, whichever preset asks.
    bool PresetTable(int preset, float*& table, unsigned char*& status) override;
};

} // namespace orv::reduce
