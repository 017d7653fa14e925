#pragma once
// CUserConverter: Counts or Radiance (User) to Radiance (User) or Temperature
// (User) with a calibration the user made (CRCalReduceObject). With a scalar
// background every count maps to one value, so frames go through a
// 65536-entry table per preset; a per-pixel background makes the mapping
// depend on position, and frames are then computed directly.
#include "orv/Array.h"
#include "orv/SharedPtr.h"
#include "reduce/convert/NamedConverter.h"
#include "reduce/convert/PresetTableConverter.h"
#include "reduce/convert/TemperatureKernels.h"
#include "reduce/objects/RCalReduceObject.h"

namespace orv::reduce {

class CUserConverter : public TNamedConverter<CUserConverter, TPresetTableStore<8, 0x10000>> {
public:
    static constexpr const char* kName = "UserConverter";
    static constexpr unsigned char kIDBytes[16] = {0x62, 0xc0, 0xa4, 0x10, 0xd2, 0x25, 0xef, 0x4e,
                                                   0xa1, 0x1c, 0xba, 0x8f, 0x7c, 0xa0, 0x0b, 0x35};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);

    // Base 0 offers 0, 1, 2; base 1 offers 1, 2; both need a calibration with
    // coefficients.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CUserConverter();
    ~CUserConverter() override;

    // False only without a calibration object.
    bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                bool* presets, unsigned char numPresets, unsigned int reserved) override;
    bool canChangeObjectParameters() override { return true; }
    bool canUseLUT() override { return !usesBackgroundImage; }
    // Spelled so on purpose: the kernels need pixel positions.
    bool needIndicies() const { return usesBackgroundImage; }
    // Emissivity and transmission take effect at once; tables are rebuilt.
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    using IConverter::BaseToOutput;
    // The single value forms are not offered.
    bool SignalToOutput(unsigned short, float&, unsigned char&, unsigned char) override { return false; }
    bool BaseToOutput(float, float&, unsigned char&, unsigned char) override { return false; }
    bool OutputToBase(float, float&, unsigned char&, unsigned char) override { return false; }
    // Writes nothing and answers whether the preset is active: intended, the
    // callers use it as that question.
    bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset) override;
    // The values of counts first..last; preset 255 means the first active one.
    bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                        unsigned char preset) override;

    // Every array and region form comes here from the base class.
    bool ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status) override;
    bool ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region, STypedData dst,
                       unsigned char* status) override;

    // Builds the table of a preset if it is not up to date.
    bool UpdateLUT(unsigned char preset);

    TSharedPtr<CRCalReduceObject> rcal;
    double invTransmission = 1.0;
    double emissivity = 1.0;
    int polyOrder[8] = {};
    TArray<double> coefficients[8];
    double background[8] = {};
    bool hasBackgroundFile[8] = {};
    unsigned int backgroundCRC[8] = {};
    bool backgroundZero[8] = {};
    TArray<double> backgroundImage[8];
    int tempOrder[8] = {};
    TArray<double> tempCoefficients[8];
    TArray<double> lookupRadiance[8];
    TArray<double> lookupTemperature[8];
    double bandpassEnd = 0.0;
    double bandpassStart = 0.0;
    bool usesBackgroundImage = false;
    bool allHaveLookup = true;
    bool allHaveCoefficients = true;
    SRadianceParams radianceParams[8];
    STemperatureParams temperatureParams[8];
    SCommonParams commonParams;

private:
    bool UseLUT() { return baseUnit == unitCounts && canUseLUT(); }
    // The look-up kernel takes a pixel's table by its preset byte's low
    // three bits, as the direct path reads them; an inactive preset reads
    // the first active preset's.
    bool OwnTable(int preset) const override { return presetActive[preset]; }
    bool PresetTable(int preset, float*& table, unsigned char*& status) override
    {
        return StoredTable(UpdateLUT(static_cast<unsigned char>(preset)), preset, table, status);
    }
    // Whether the per-pixel backgrounds in use reach flat index end - 1: a
    // frame larger than the recording's would read past them.
    bool BackgroundCovers(size_t end) const;
    // The temperature step over all presets alike: table, else polynomial,
    // else Planck, decided by what every active preset has.
    bool TemperatureStep(STypedData dst, STypedData src, unsigned int n, unsigned char p);
    bool TemperatureStep(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n,
                         unsigned char p);
    // Radiance of the whole frame or an index list, with the preset's
    // per-pixel background when it has one.
    bool Radiance(STypedData dst, STypedData src, unsigned int n, unsigned char p);
    bool Radiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, unsigned char p);
};

} // namespace orv::reduce
