#pragma once
// CRecordingReader: reads a recording file frame by frame.
//
// Our own addition to the interface: applications used to put this together
// themselves from LoadInfoFile, ReadPixelsHeader and a filter. A recording is
// an info file whose last block, "Pixels", holds an SPixelsHeader; the frames
// follow that header back to back, frameStride bytes each, from the header's
// dataOffset (counted from the start of the header) to the end of the file.
//
// Every failure leaves a reason in lastError(), worded for a person: which
// frame, which block, and what was wrong. The reader never writes to the
// file, reads only inside it, and allocates no more than one frame, and that
// only after the file has shown to hold the frame.
#include <cstdint>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/filters/Filter.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

class CSourceInfoReduceObject;

class CRecordingReader {
public:
    CRecordingReader() = default;
    CRecordingReader(const CRecordingReader&) = delete;
    CRecordingReader& operator=(const CRecordingReader&) = delete;

    // Opens a recording through fileSystem(), for reading only.
    bool Open(const CString& path);
    // Uses an open file; the reader only reads and seeks it.
    bool Open(TSharedPtr<IFile> file);
    void Close();
    bool isOpen() const { return static_cast<bool>(m_file); }

    // Why the last operation failed; empty after a success.
    const CString& lastError() const { return m_error; }
    // Set by Open when the file and its source info disagree on the frame
    // count (a recording cut short, or one that was never finished); the
    // recording is still readable. Empty otherwise.
    const CString& warning() const { return m_warning; }

    // The recording's objects; decoding a frame updates its per-frame ones.
    CReduceObjectArray& reduceObjs() { return m_objects; }
    const TArray<SInfoFileBlock>& blocks() const { return m_blocks; }
    const SInfoFileBlock& pixelsBlock() const { return m_pixelsBlock; }
    const SPixelsHeader& pixelsHeader() const { return m_header; }
    // Null when the recording has none.
    TSharedPtr<CSourceInfoReduceObject> sourceInfo();

    // The header's type, or the source info's when the header has none.
    SGuid pixelType() const { return m_pixelType; }
    uint16_t frameWidth() const { return m_width; }
    uint16_t frameHeight() const { return m_height; }
    uint32_t frameSize() const { return m_header.frameStride; }
    // File offset of frame 0.
    uint64_t dataOffset() const { return m_dataStart; }
    // Whole frames in the file.
    uint64_t numFrames() const { return m_numFrames; }
    // Bytes after the last whole frame: a frame cut short.
    uint64_t trailingBytes() const { return m_trailing; }
    // Frames the source info declares over all presets; 0 when unknown.
    uint64_t declaredFrames() const { return m_declared; }

    // The filter of the recording's pixel type; null when no filter claims it.
    TSharedPtr<IFilter> filter() const { return m_filter; }

    // Copies frame index's frameSize() raw bytes into buffer.
    bool ReadFrame(uint64_t index, void* buffer, uint64_t bufferSize);
    // Bytes a pixel buffer of this type needs for one decoded frame.
    uint64_t PixelBufferSize(EDataType type) const;
    // Reads frame index and decodes it with the filter into pixels (which may
    // be null, with dtNoData, for the objects alone), updating reduceObjs().
    // Pixels stored as they are decoded are read straight into pixels.
    // pixelsSize is the size of the pixel buffer in bytes.
    bool DecodeFrame(uint64_t index, STypedData pixels, uint64_t pixelsSize, uint8_t& preset);

private:
    // The preset of a headerless frame in a recording that declares preset sequencing.
    void SequencePreset(uint64_t index, uint8_t& preset);
    bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // Whether the decoded pixels are the frame's first bytes unchanged.
    bool PixelsAsStored(STypedData pixels);

    TSharedPtr<IFile> m_file;
    CReduceObjectArray m_objects;
    TArray<SInfoFileBlock> m_blocks;
    SInfoFileBlock m_pixelsBlock{};
    SPixelsHeader m_header{};
    SGuid m_pixelType;
    uint16_t m_width = 0;
    uint16_t m_height = 0;
    uint64_t m_dataStart = 0;
    uint64_t m_dataEnd = 0;
    uint64_t m_numFrames = 0;
    uint64_t m_trailing = 0;
    uint64_t m_declared = 0;
    TSharedPtr<IFilter> m_filter;
    TArray<unsigned char> m_frame; // one raw frame for DecodeFrame
    CString m_error;
    CString m_warning;
};

} // namespace orv::reduce
