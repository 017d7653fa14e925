#pragma once
// CRGBConverter: one channel of colour pixels, or the mean of the three, as
// float. Sources are 24-bit RGB (three bytes) or 48-bit RGB (three unsigned
// 16-bit values), red first; values are not scaled.
#include "reduce/convert/ConverterFactory.h"
#include "reduce/convert/NamedConverter.h"

namespace orv::reduce {

class CRGBConverter : public TNamedConverter<CRGBConverter, IConverter> {
public:
    static constexpr const char* kName = "RGBConverter";
    static constexpr unsigned char kIDBytes[16] = {0x41, 0x47, 0xab, 0x40, 0xc8, 0xc1, 0xc4, 0x4e,
                                                   0xbc, 0x94, 0xca, 0x31, 0x31, 0xe3, 0xdc, 0xf6};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);

    // Base 6 or 7: red, green, blue and their average.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    // A single value has no channels.
    bool BaseToOutput(float, float&, unsigned char&, unsigned char) override { return false; }
    bool OutputToBase(float, float&, unsigned char&, unsigned char) override { return false; }

    using IConverter::BaseToOutput;
    bool BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n) override;
    bool BaseToOutput(STypedData src, const unsigned char* presetIndex, STypedData dst, unsigned char* status,
                      unsigned int n) override;
    bool BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                      unsigned char* status) override;
    bool BaseToOutput(STypedData src, const unsigned char* presetIndex, const unsigned int* indices, unsigned int n,
                      STypedData dst, unsigned char* status) override;
};

} // namespace orv::reduce
