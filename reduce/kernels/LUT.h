#pragma once
// Look-up tables: a pixel value, taken as a table index, becomes a 32-bit
// float and a status byte. The index is the value limited to low .. high,
// float values also rounded half away from zero. PS forms pick the table by
// each pixel's preset. All return false for a type above 9.
#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/kernels/PixelRegion.h"
#include "reduce/kernels/Regions.h"
#include "reduce/kernels/Stats.h"

namespace orv::reduce {

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned int count, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned int const* indices,
              unsigned int count, float* lut, unsigned char* lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned int count, float** lut, unsigned char** lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned int const* indices, unsigned int count, float** lut, unsigned char** lutStatus,
              unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, float* lut, unsigned char* lutStatus, unsigned short low,
              unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, SArea area, float** lut, unsigned char** lutStatus,
              unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, TArray<SScanLine> const& lines, float* lut, unsigned char* lutStatus,
              unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, TArray<SScanLine> const& lines, float** lut,
              unsigned char** lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, SArea area, unsigned char const* mask,
              unsigned int maskStride, float** lut, unsigned char** lutStatus, unsigned short low,
              unsigned short high);

// Any region form: a frame and an index list through their own kernels,
// the other forms run by run through the frame kernel.
bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, const SPixelRegion& region, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high);
bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              const SPixelRegion& region, float** lut, unsigned char** lutStatus, unsigned short low,
              unsigned short high);

// Statistics of the mapped values (CStatsCalculator): positions in frame
// coordinates, indices as ordinals in region order.
bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, float* lut,
                 unsigned char* lutStatus, unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height,
                 unsigned int const* indices, unsigned int count, float* lut, unsigned char* lutStatus,
                 unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, SArea area,
                 float* lut, unsigned char* lutStatus, unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height,
                 TArray<SScanLine> const& lines, float* lut, unsigned char* lutStatus, unsigned short low,
                 unsigned short high);
bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, SArea area,
                 unsigned char const* mask, unsigned int maskStride, float* lut, unsigned char* lutStatus,
                 unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, float** lut, unsigned char** lutStatus, unsigned short low,
                 unsigned short high);
bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, unsigned int const* indices, unsigned int count, float** lut,
                 unsigned char** lutStatus, unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, SArea area, float** lut, unsigned char** lutStatus, unsigned short low,
                 unsigned short high);
bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, TArray<SScanLine> const& lines, float** lut, unsigned char** lutStatus,
                 unsigned short low, unsigned short high);
bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride,
                 float** lut, unsigned char** lutStatus, unsigned short low, unsigned short high);

} // namespace orv::reduce
