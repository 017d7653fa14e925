#pragma once
// CTemperatureConverter: changes the scale of recordings that already hold
// temperatures (units 2 and 5); the unit itself stays.
#include "reduce/convert/ConverterFactory.h"
#include "reduce/convert/NamedConverter.h"

namespace orv::reduce {

class CTemperatureConverter : public TNamedConverter<CTemperatureConverter, IConverter> {
public:
    static constexpr const char* kName = "TemperatureConverter";
    static constexpr unsigned char kIDBytes[16] = {0x38, 0xab, 0x1f, 0xdc, 0x21, 0x05, 0xbb, 0x4a,
                                                   0x8e, 0xa1, 0x7e, 0xd6, 0xb6, 0xb8, 0x35, 0x92};
    static constexpr SGuid classID = GuidFromBytes(kIDBytes);

    // Base 2 or 5: offers the base unit itself.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    using IConverter::BaseToOutput;
    // No type check of its own: the scale conversion checks the types.
    bool BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n) override;
    bool BaseToOutput(STypedData src, const unsigned char* presetIndex, STypedData dst, unsigned char* status,
                      unsigned int n) override;
    bool BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                      unsigned char* status) override;
    bool BaseToOutput(STypedData src, const unsigned char* presetIndex, const unsigned int* indices, unsigned int n,
                      STypedData dst, unsigned char* status) override;
};

} // namespace orv::reduce
