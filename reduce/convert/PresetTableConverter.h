#pragma once
// CPresetTableConverter: a converter whose frames go through a look-up
// table per preset, indexed by signal 0 .. high. The derived converter
// builds a preset's table (PresetTable) and says which preset serves a frame
// and which presets have a table of their own; the region forms then run the
// look-up kernel with that table, or with each pixel's own by its preset
// byte. TPresetTableStore adds tables the converter keeps itself, and
// TPresetTableConverter builds them through a virtual UpdateLUT.
#include "reduce/convert/ConverterFactory.h"

namespace orv::reduce {

class CPresetTableConverter : public IConverter {
public:
    using IConverter::BaseToOutput;
    bool ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst, unsigned char* status) override;
    // A preset byte names preset byte % presets; one without a table of its
    // own reads the table of the preset that serves the frame.
    bool ConvertRegion(STypedData src, const unsigned char* presetIndex, const SPixelRegion& region, STypedData dst,
                       unsigned char* status) override;
    // The signal OutputToSignal gives, as a float.
    bool OutputToBase(float in, float& out, unsigned char& status, unsigned char preset) override;

protected:
    // presets: how many presets a preset byte can name (at most 8); high:
    // the last signal a table holds.
    CPresetTableConverter(int presets, unsigned short high) : tablePresets(presets), tableHigh(high) {}

    // The preset whose table serves a frame; -1 for none.
    virtual int TablePreset() const { return firstActivePreset; }
    // Whether preset has a table of its own for the per-pixel preset form.
    virtual bool OwnTable(int) const { return true; }
    // The table of preset and its status bytes, built first if not up to
    // date; false when there is none for the output unit.
    virtual bool PresetTable(int preset, float*& table, unsigned char*& status) = 0;

    // A float value form's input as a signal: truncated to 16 bits; what has
    // no 16-bit value (not a number, out of range) reads as 0.
    static unsigned short TruncatedSignal(float in)
    {
        return in >= 0.0f && in < 65536.0f ? static_cast<unsigned short>(in) : 0;
    }

private:
    const int tablePresets;
    const unsigned short tableHigh;
};

// Tables the converter keeps itself: Size entries and as many status bytes
// for each of N presets, each built by the derived converter (BuildTable)
// when first needed after it was marked out of date.
template <int N, unsigned int Size>
class TPresetTableStore : public CPresetTableConverter {
public:
    static constexpr unsigned int kLUTSize = Size;

    ~TPresetTableStore() override
    {
        for (int i = 0; i < N; ++i) {
            delete[] lut[i];
            delete[] lutStatus[i];
        }
    }

    bool lutValid[N] = {};
    float* lut[N] = {};
    unsigned char* lutStatus[N] = {};

protected:
    TPresetTableStore() : CPresetTableConverter(N, static_cast<unsigned short>(Size - 1)) {}

    // fill(table, status) writes the table of preset unless it is up to
    // date; false for a preset beyond N or when fill fails.
    template <class F>
    bool BuildTable(unsigned char preset, F&& fill)
    {
        if (preset >= N) return false;
        if (lutValid[preset]) return true;
        if (!lut[preset]) lut[preset] = new float[Size];
        if (!lutStatus[preset]) lutStatus[preset] = new unsigned char[Size];
        if (!fill(lut[preset], lutStatus[preset])) return false;
        lutValid[preset] = true;
        return true;
    }

    // PresetTable's answer from the stored tables, given whether the derived
    // converter's UpdateLUT(preset) built that preset's.
    bool StoredTable(bool built, int preset, float*& table, unsigned char*& status)
    {
        if (!built) return false;
        table = lut[preset];
        status = lutStatus[preset];
        return true;
    }
};

// The same with UpdateLUT as every converter's way to a table.
template <int N, unsigned int Size>
class TPresetTableConverter : public TPresetTableStore<N, Size> {
public:
    // Builds the table of a preset if it is not up to date.
    virtual bool UpdateLUT(unsigned char preset) = 0;

protected:
    bool PresetTable(int preset, float*& table, unsigned char*& status) override
    {
        return this->StoredTable(UpdateLUT(static_cast<unsigned char>(preset)), preset, table, status);
    }
};

} // namespace orv::reduce
