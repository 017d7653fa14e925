#pragma once
// IConverter: takes the pixels of a recording from its base unit to an output
// unit. The base class gives identity and scale-only behaviour. The ten array
// and region forms of BaseToOutput are one-line forwards to ConvertRegion, so
// that a converter implements one region-taking conversion (and its
// per-pixel preset variant) instead of ten.
#include "orv/Array.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/kernels/PixelRegion.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

class CReduceObjectArray;
class CObjectParametersReduceObject;

// Display text of a unit; "Error" for 12 and anything above.
const char* UnitToString(EUnit unit);
// Case-blind match against the twelve unit texts; unitError (12) for any
// other text, "Error" included.
EUnit ParseUnit(const char* text);
// Counts only temperatures (units 2 and 5) carry a meaningful ETempType.
inline bool IsTemperatureUnit(EUnit unit) { return unit == unitTemperatureUser || unit == unitTemperatureFactory; }

namespace priv {
// Whether a region lies inside a frame of width x height; an empty region
// (last row or column before the first) always does.
bool RegionInFrame(unsigned short width, unsigned short height, SArea area);
bool RegionInFrame(unsigned short width, unsigned short height, const TArray<SScanLine>& lines);
} // namespace priv

class IConverter {
public:
    IConverter() = default;
    IConverter(const IConverter&) = delete;
    IConverter& operator=(const IConverter&) = delete;
    virtual ~IConverter() = default;

    virtual CString name() = 0;
    virtual SGuid id() = 0;

    // Stores units and active presets; false for more than 8 presets.
    // Derived operations begin by calling this one.
    virtual bool Update(EUnit base, ETempType baseTemp, CReduceObjectArray& objs, EUnit out, ETempType outTemp,
                        bool* presets, unsigned char numPresets, unsigned int reserved);
    virtual bool canChangeObjectParameters() { return false; }
    virtual bool canUseLUT() { return false; }
    // Spelled so on purpose: the interface's own name.
    virtual bool isReversable() { return false; }
    virtual bool ChangeObjectParameters(CObjectParametersReduceObject*) { return false; }

    // Identity for Counts to Counts only.
    virtual bool SignalToOutput(unsigned short signal, float& out, unsigned char& status, unsigned char preset);
    virtual bool OutputToSignal(float in, unsigned short& signal, unsigned char& status, unsigned char preset);
    virtual bool SignalToOutput(unsigned short first, unsigned short last, float* out, unsigned char* status,
                                unsigned char preset);

    // Scale change only: false unless base and output unit are the same.
    virtual bool BaseToOutput(float in, float& out, unsigned char& status, unsigned char preset);
    virtual bool OutputToBase(float in, float& out, unsigned char& status, unsigned char preset);
    // The array and region forms, each a forward to ConvertRegion with its
    // region value.
    virtual bool BaseToOutput(STypedData src, STypedData dst, unsigned char* status, unsigned int n);
    virtual bool BaseToOutput(STypedData src, const unsigned char* presetIndex, STypedData dst,
                              unsigned char* status, unsigned int n);
    virtual bool BaseToOutput(STypedData src, const unsigned int* indices, unsigned int n, STypedData dst,
                              unsigned char* status);
    virtual bool BaseToOutput(STypedData src, const unsigned char* presetIndex, const unsigned int* indices,
                              unsigned int n, STypedData dst, unsigned char* status);
    virtual bool BaseToOutput(STypedData src, unsigned short width, unsigned short height, SArea area,
                              STypedData dst, unsigned char* status);
    virtual bool BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, STypedData dst, unsigned char* status);
    virtual bool BaseToOutput(STypedData src, unsigned short width, unsigned short height,
                              const TArray<SScanLine>& lines, STypedData dst, unsigned char* status);
    virtual bool BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, const TArray<SScanLine>& lines, STypedData dst,
                              unsigned char* status);
    virtual bool BaseToOutput(STypedData src, unsigned short width, unsigned short height, SArea area,
                              const unsigned char* mask, unsigned int maskWidth, STypedData dst,
                              unsigned char* status);
    virtual bool BaseToOutput(STypedData src, const unsigned char* presetIndex, unsigned short width,
                              unsigned short height, SArea area, const unsigned char* mask, unsigned int maskWidth,
                              STypedData dst, unsigned char* status);

    // The conversion of a region: values and status bytes go densely to dst
    // and status in region order. What a converter overrides.
    //
    // The base gives the scale change for a whole frame and, for an index
    // list, over its first n elements, ignoring the list: intended, a
    // fallback for converters that treat every pixel alike. A rectangle, scan
    // lines or a mask become an index list handed to the index list form
    // above, so that a converter that overrides only the array forms still
    // converts regions. The preset form drops the preset bytes and comes to
    // the plain forms alike.
    virtual bool ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status);
    virtual bool ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region,
                               STypedData dst, unsigned char* status);

    virtual unsigned char GuessPresetFromOutput(float) { return 0; }

    // Number of elements a region yields; width and height are not used.
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, SArea area);
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, TArray<SScanLine> const& lines);
    static unsigned int CalcNumPixels(unsigned short width, unsigned short height, SArea area,
                                      unsigned char const* mask, unsigned int maskWidth);

    // Flat indices of a region in walking order: rectangles row by row,
    // scan lines in list order, masks as rectangles skipping zero bytes.
    static void BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area);
    static void BuildIndices(TArray<unsigned int>& out, unsigned short width, const TArray<SScanLine>& lines);
    static void BuildIndices(TArray<unsigned int>& out, unsigned short width, SArea area, const unsigned char* mask,
                             unsigned int maskWidth);

    EUnit baseUnit = unitCounts;
    ETempType baseTempType = tempCelsius;
    EUnit outputUnit = unitCounts;
    ETempType outputTempType = tempCelsius;
    bool presetActive[8] = {false, false, false, false, false, false, false, false};
    unsigned char firstActivePreset = 0;
};

} // namespace orv::reduce
