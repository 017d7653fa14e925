#include "reduce/convert/PresetTableConverter.h"

#include "reduce/kernels/LUT.h"

namespace orv::reduce {

namespace {

bool BadTypes(STypedData src, STypedData dst)
{
    return unsigned(src.type) > dtFlt64 || unsigned(dst.type) > dtFlt64;
}

// The per-pixel preset kernel takes a table for every value of a preset
// byte, so that no byte reads a pointer outside its arrays.
constexpr int kByteTables = 256;

} // namespace

bool CPresetTableConverter::ConvertRegion(STypedData src, const SPixelRegion& region, STypedData dst,
                                          unsigned char* status)
{
    if (BadTypes(src, dst)) return false;
    const int p = TablePreset();
    float* table = nullptr;
    unsigned char* tableStatus = nullptr;
    if (p < 0 || !PresetTable(p, table, tableStatus)) return false;
    return ApplyLUT(src, dst, status, region, table, tableStatus, 0, tableHigh);
}

bool CPresetTableConverter::ConvertRegion(STypedData src, const unsigned char* presetIndex,
                                          const SPixelRegion& region, STypedData dst, unsigned char* status)
{
    if (BadTypes(src, dst)) return false;
    const int current = TablePreset();
    float* currentTable = nullptr;
    unsigned char* currentStatus = nullptr;
    if (current < 0 || !PresetTable(current, currentTable, currentStatus)) return false;
    float* own[8];
    unsigned char* ownStatus[8];
    for (int i = 0; i < tablePresets; ++i) {
        own[i] = currentTable;
        ownStatus[i] = currentStatus;
        if (OwnTable(i) && !PresetTable(i, own[i], ownStatus[i])) return false;
    }
    float* tables[kByteTables];
    unsigned char* statuses[kByteTables];
    for (int b = 0; b < kByteTables; ++b) {
        tables[b] = own[b % tablePresets];
        statuses[b] = ownStatus[b % tablePresets];
    }
    return ApplyLUT(src, presetIndex, dst, status, region, tables, statuses, 0, tableHigh);
}

bool CPresetTableConverter::OutputToBase(float in, float& out, unsigned char& status, unsigned char preset)
{
    unsigned short signal = 0;
    if (!OutputToSignal(in, signal, status, preset)) return false;
    out = float(signal);
    return true;
}

} // namespace orv::reduce
