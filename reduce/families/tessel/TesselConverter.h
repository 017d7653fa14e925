#pragma once
// CTesselConverter: image values of a Tessel camera to "Radiance (Factory)",
// "Object Signal" and "Temperature (Factory)", four presets, each with its
// CTesMeasConv and its tables. Update takes the frame's sensor readings for
// the drift correction (docs/tessel.md), so a caller that updates per frame
// follows the camera's warm-up.
#include "orv/Array.h"
#include "reduce/convert/NamedConverter.h"
#include "reduce/convert/PresetTableConverter.h"
#include "reduce/families/tessel/TesMeasConv.h"

namespace orv::reduce {

class CTesselFactoryCalReduceObject;

// The frame info entries, in Kelvin, that carry the drift sensors.
inline constexpr const char* kTesselSensorKeys[3] = {"TempSens9", "TempSens10", "TempSens11"};

// The records of a calibration object.
void TesselRecords(const CTesselFactoryCalReduceObject& cal, _adjust_par_t& adjust, _cal_param_t& calib,
                   _tdrift_par_t& drift);

class CTesselConverter : public TNamedConverter<CTesselConverter, CPresetTableConverter> {
public:
    static constexpr const char* kName = "TesselConverter";
    static constexpr unsigned char kIDBytes[16] = {0x6e, 0x7a, 0xb9, 0x1d, 0x8b, 0x88, 0xd3, 0x45,
                                                   0xb2, 0x8d, 0x9c, 0x29, 0x58, 0x2e, 0x75, 0xe2};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);
    static constexpr int kPresets = 4;

    // Base 0 with a Tessel calibration: 0, 4, 3, 5.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CTesselConverter();
    ~CTesselConverter() override;

    // False when an active preset has no valid calibration.
    bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                bool* presets, unsigned char numPresets, unsigned int reserved) override;
    bool canChangeObjectParameters() override { return true; }
    bool canUseLUT() override { return true; }
    bool needIndicies() const { return false; }
    // Emissivity and distance only.
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    bool SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset) override;
    bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset) override;
    bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                        unsigned char preset) override;
    using IConverter::BaseToOutput;
    bool BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset) override;

    // Builds the tables of a preset if they are not up to date.
    bool UpdateLUT(unsigned char preset);

    CTesMeasConv* conv[kPresets] = {};
    bool present[kPresets] = {};
    bool lutValid[kPresets] = {};

private:
    int Preset(unsigned char preset) const;
    // The table of the output unit for a preset (built first).
    float* Table(int preset);
    // The tables live in each preset's CTesMeasConv; a preset without a
    // valid calibration has none, and its pixels read the current preset's.
    int TablePreset() const override { return Preset(255); }
    bool OwnTable(int preset) const override { return present[preset]; }
    bool PresetTable(int preset, float*& table, unsigned char*& status) override;
};

} // namespace orv::reduce
