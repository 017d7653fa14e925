#pragma once
// CRecordingReduction: the road from a recording file to frames in a wanted
// unit. Open a recording, choose the unit and scale (SetUnit), optionally
// replace its emissivity and distance (SetObjectParameters), then call
// Reduce(index, values, status, pixels) for float32 values and one status
// byte per pixel. Every false leaves the reason in lastError(), without the
// file name, which the caller adds. Callers that convert only part of a frame
// call Decode and hand raw() to context().Convert themselves. One instance
// holds one file position and one convert context, so it serves one thread
// at a time; Clone() opens an independent twin with the same settings for
// the next thread.
//
//     CRecordingReduction r;
//     if (!r.Open("scene.qrt") || !r.SetUnit(unitTemperatureUser, tempCelsius)) fail(r.lastError());
//     std::vector<float> v(r.pixels());
//     std::vector<unsigned char> s(r.pixels());
//     for (uint64_t i = 0; i < r.numFrames(); ++i)
//         if (!r.Reduce(i, v.data(), s.data(), r.pixels())) fail(r.lastError());
#include <cstdint>
#include <functional>
#include <memory>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/convert/ConvertContext.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"

namespace orv::reduce {

class CRecordingReduction {
public:
    CRecordingReduction() = default;
    CRecordingReduction(const CRecordingReduction&) = delete;
    CRecordingReduction& operator=(const CRecordingReduction&) = delete;

    // Opens a recording that a filter can decode into one numeric value per
    // pixel and that holds at least one whole frame. The unit starts as the
    // recording's base unit and scale.
    bool Open(const CString& path);
    // Uses an open file; it cannot be cloned, having no path to open again.
    bool Open(TSharedPtr<IFile> file);
    void Close();
    bool isOpen() const { return m_reader.isOpen(); }

    // An independent instance over the same file (its own file position,
    // decoded frame and convert context) with this one's unit, scale and
    // parameters; null when it cannot be opened. OpenClone keeps the reason.
    std::unique_ptr<CRecordingReduction> Clone() const;
    bool OpenClone(const CRecordingReduction& source);

    // Why the last operation failed; empty after a success.
    const CString& lastError() const { return m_error; }
    // The reader's note on a recording that is readable but not whole.
    const CString& warning() const { return m_reader.warning(); }

    // The units the recording can be shown in: its base unit first, then
    // those its converters offer.
    const TArray<EUnit>& units() const { return m_units; }
    bool offersUnit(EUnit unit) const;
    // False, keeping the previous unit, when the recording does not offer it.
    bool SetUnit(EUnit unit, ETempType scale);
    // Replaces the recording's emissivity and object distance (metres) for
    // the following frames; a value below 0 keeps the recording's own, so
    // (-1, -1) restores them. Emissivity must lie in (0, 1].
    bool SetObjectParameters(double emissivity, double distance);

    EUnit unit() const { return m_unit; }
    ETempType scale() const { return m_scale; }
    unsigned width() const { return m_reader.frameWidth(); }
    unsigned height() const { return m_reader.frameHeight(); }
    size_t pixels() const { return size_t(width()) * height(); }
    uint64_t numFrames() const { return m_reader.numFrames(); }
    const CString& path() const { return m_path; }

    // Reads and decodes frame index and readies the converter for its
    // preset; raw() then holds its pixels in the filter's type.
    bool Decode(uint64_t index);
    // Decode and convert into values and status, each holding at least
    // capacity pixels (pixels() are written).
    bool Reduce(uint64_t index, float* values, unsigned char* status, size_t capacity);
    // Receives a block of reduced frames: frames first .. first + count - 1,
    // their values and status bytes frame after frame, pixels() each. The
    // buffers are lent for the call. Returning false stops the reduction.
    using TFrameBlockSink =
        std::function<bool(uint64_t first, uint64_t count, const float* values, const unsigned char* status)>;
    // Reduces frames first .. end - 1 on up to threads threads (0: as many
    // as the machine has cores) and hands them to sink in frame order, a
    // block at a time, from one thread at a time. Each thread reduces with
    // its own clone of this instance (file position and convert context);
    // an instance opened from a file without a path works alone. A few
    // blocks are in memory at once, whatever the number of frames. False
    // with the reason in lastError() at the first frame, in frame order,
    // that fails, or when sink returns false; the blocks before it have
    // then been handed on. Results do not depend on the number of threads.
    // blockFrames fixes the frames of a block; 0 sizes blocks by memory.
    bool ReduceFrames(uint64_t first, uint64_t end, unsigned threads, const TFrameBlockSink& sink,
                      uint64_t blockFrames = 0);
    // Where a block is reduced to: room for count frames' values and status
    // bytes, pixels() each, frame after frame, from frame first on. Called
    // from the reducing threads at once, blocks in any order; a null values
    // (or status) pointer leaves that part to buffers of the reduction's own.
    // The sink then receives the same pointers, in frame order.
    using TFrameBlockTarget =
        std::function<void(uint64_t first, uint64_t count, float*& values, unsigned char*& status)>;
    // ReduceFrames reducing each block straight into the caller's memory (a
    // whole array, a mapped output file): no copy, and every thread writes.
    bool ReduceFrames(uint64_t first, uint64_t end, unsigned threads, const TFrameBlockSink& sink,
                      uint64_t blockFrames, const TFrameBlockTarget& target);
    // The per-frame objects of frame index (time, frame number, preset),
    // decoded without its pixels; null with a reason on failure.
    TSharedPtr<CFrameInfoReduceObject> FrameInfo(uint64_t index);

    // After Decode: the frame's raw pixels, its preset, the frame index.
    STypedData raw() { return STypedData(m_raw.data(), m_rawType); }
    uint8_t preset() const { return m_preset; }
    uint64_t decodedFrame() const { return m_decoded; }

    CRecordingReader& reader() { return m_reader; }
    CConvertContext& context() { return *m_context; }

private:
    bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool Prepare();
    bool Activate(uint8_t preset);

    CString m_path;
    CRecordingReader m_reader;
    // Made anew before the reader lets go of the objects it points into, and
    // declared after the reader, so that it never holds them last.
    std::unique_ptr<CConvertContext> m_context = std::make_unique<CConvertContext>();
    TArray<EUnit> m_units;
    EUnit m_unit = unitCounts;
    ETempType m_scale = tempCelsius;
    double m_emissivity = -1;
    double m_distance = -1;
    CObjectParametersReduceObject m_saved; // the recording's own, while overridden
    int m_activePreset = -1;               // -1: Update before the next frame
    TArray<unsigned char> m_raw;
    EDataType m_rawType = dtUInt16;
    uint8_t m_preset = 0;
    uint64_t m_decoded = ~uint64_t(0);
    CString m_error;
};

} // namespace orv::reduce
