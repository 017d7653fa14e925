#pragma once
// CFrameReducer: one recording's frames in a wanted unit, through the
// recording's filter and a CConvertContext.
#include <cstdint>
#include <string>

#include "orv/Array.h"
#include "reduce/convert/ConvertContext.h"
#include "reduce/filters/RecordingReader.h"

namespace orv::reduce::cli {

class CFrameReducer {
public:
    // Prints why and returns false when the recording cannot be shown in the
    // unit. emissivity and distance below 0 keep the recording's own.
    bool Open(const std::string& path, EUnit unit, ETempType scale, double emissivity, double distance);
    // Frame index into values (width x height floats) and status bytes.
    bool Reduce(uint64_t index, float* values, unsigned char* status);
    // Only reads and decodes frame index.
    bool Decode(uint64_t index);

    CRecordingReader& reader() { return m_reader; }
    unsigned width() const { return m_reader.frameWidth(); }
    unsigned height() const { return m_reader.frameHeight(); }
    size_t pixels() const { return size_t(width()) * height(); }
    EUnit unit() const { return m_unit; }
    // The last decoded frame in the filter's element type (RGB triples for
    // colour recordings).
    const void* raw() const { return m_raw.data(); }
    EDataType rawType() const { return m_rawType; }
    ETempType scale() const { return m_scale; }

private:
    bool Activate(uint8_t preset);

    std::string m_path;
    CRecordingReader m_reader;
    CConvertContext m_context;
    EUnit m_unit = unitCounts;
    ETempType m_scale = tempCelsius;
    int m_activePreset = -1;
    // The measurement parameters asked for on the command line, handed to
    // converters that change them on the fly after each Update.
    bool m_changeParameters = false;
    CObjectParametersReduceObject m_wanted;
    TArray<unsigned char> m_raw; // decoded pixels in the filter's type
    EDataType m_rawType = dtUInt16;
};

} // namespace orv::reduce::cli
