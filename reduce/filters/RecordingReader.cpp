#include "reduce/filters/RecordingReader.h"
#include "reduce/objects/FrameInfoReduceObject.h"

#include "reduce/filters/GenericFilter.h"

#include <cstdarg>
#include <cstring>

#include "orv/PixelType.h"
#include "reduce/filters/FilterFactory.h"
#include "reduce/filters/GenericFilter.h"
#include "reduce/objects/SourceInfoReduceObject.h"

namespace orv::reduce {
namespace {

constexpr uint64_t kAllOnes = ~uint64_t(0);
// No frame layout makes more pixels than this of one byte of frame (raw
// layouts give at most one, compressed ones a few): a larger claim is damage,
// and a buffer sized from it would be backed by nothing in the file.
constexpr uint64_t kMaxPixelsPerFrameByte = 16;

const char* DataTypeText(EDataType type)
{
    switch (type) {
    case dtUInt8: return "unsigned 8-bit";
    case dtUInt16: return "unsigned 16-bit";
    case dtRGB24: return "24-bit RGB";
    case dtRGB48: return "48-bit RGB";
    case dtNoData: return "no pixels";
    default: return "this element type";
    }
}

} // namespace

bool CRecordingReader::Fail(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_error = CString::FromFormatV(format, args);
    va_end(args);
    return false;
}

bool CRecordingReader::Open(const CString& path)
{
    Close();
    TSharedPtr<IFile> file = fileSystem()->Open(path, IFileSystem::openRead);
    if (!file) return Fail("cannot open %s for reading", path.c_str());
    return Open(file);
}

void CRecordingReader::Close()
{
    m_file = nullptr;
    m_objects.Reset();
    m_blocks.clear();
    m_pixelsBlock = SInfoFileBlock{};
    m_header = SPixelsHeader{};
    m_pixelType = SGuid{};
    m_width = m_height = 0;
    m_dataStart = m_dataEnd = m_numFrames = m_trailing = m_declared = 0;
    m_filter = nullptr;
    m_frame.Destroy();
    m_error = CString();
    m_warning = CString();
}

bool CRecordingReader::Open(TSharedPtr<IFile> file)
{
    Close();
    if (!file) return Fail("no file to read");

    // LoadInfoFile leaves the block list untouched when the file header is
    // wrong and empties it once the header has passed, so a marker entry
    // tells the two failures apart.
    m_blocks.add(SInfoFileBlock{});
    file->SeekToBegin();
    if (!LoadInfoFile(file, m_objects, m_blocks, 0)) {
        const bool headerWrong = m_blocks.size() == 1 && m_blocks.get(0).dataOffset == 0;
        const unsigned long long intact = m_blocks.size();
        m_objects.Reset();
        m_blocks.clear();
        if (headerWrong) return Fail("not a recording: wrong file header (expected \"%s\", version %u)",
                                     kInfoFileName, kInfoFileVersion);
        return Fail("damaged recording: a block header is cut short after %llu intact blocks",
                    intact);
    }

    long pixelsIndex = -1;
    for (size_t i = 0; i < m_blocks.size(); ++i)
        if (m_blocks.get(i).typeID == guidPixels) {
            pixelsIndex = static_cast<long>(i);
            break;
        }
    if (pixelsIndex < 0) return Fail("not a recording: no \"%s\" block among %llu blocks", kPixelsBlockName,
                                     static_cast<unsigned long long>(m_blocks.size()));
    m_pixelsBlock = m_blocks.get(static_cast<size_t>(pixelsIndex));

    const long long length = file->GetLength();
    const uint64_t fileEnd = length > 0 ? static_cast<uint64_t>(length) : 0;
    if (!file->Seek(static_cast<long long>(m_pixelsBlock.dataOffset), IFile::seekBegin) ||
        !ReadPixelsHeader(file, m_pixelsBlock.version, m_header))
        return Fail("the \"%s\" block is cut short inside its header at offset %llu", kPixelsBlockName,
                    static_cast<unsigned long long>(m_pixelsBlock.dataOffset));

    const uint32_t headerBytes = m_pixelsBlock.version > 0x10000 ? kPixelsHeaderSize : kOldPixelsHeaderSize;
    if (m_header.dataOffset < headerBytes)
        return Fail("the \"%s\" header puts the frame data at %u, inside the header", kPixelsBlockName,
                    m_header.dataOffset);
    if (m_header.frameStride == 0) return Fail("the \"%s\" header gives a frame size of 0", kPixelsBlockName);

    // A "Pixels" block normally runs to the end of the file; one with a size
    // ends there.
    m_dataStart = m_pixelsBlock.dataOffset + m_header.dataOffset;
    m_dataEnd = fileEnd;
    if (m_pixelsBlock.size != kAllOnes && m_pixelsBlock.size < fileEnd - m_pixelsBlock.dataOffset)
        m_dataEnd = m_pixelsBlock.dataOffset + m_pixelsBlock.size;
    if (m_dataStart > m_dataEnd)
        return Fail("the \"%s\" header puts the frame data at %llu, beyond the end of the file", kPixelsBlockName,
                    static_cast<unsigned long long>(m_dataStart));
    m_numFrames = (m_dataEnd - m_dataStart) / m_header.frameStride;
    m_trailing = (m_dataEnd - m_dataStart) % m_header.frameStride;

    TSharedPtr<CSourceInfoReduceObject> info = sourceInfo();
    m_pixelType = m_header.pixelType;
    if (m_pixelType.isEmpty() && info) m_pixelType = info->pixelType;
    m_width = info && info->frameWidth ? info->frameWidth : m_header.frameWidth;
    m_height = info && info->frameHeight ? info->frameHeight : m_header.frameHeight;
    if (info)
        for (const SPresetInfo& p : info->presets) m_declared += p.numFrames;
    if (uint64_t(m_width) * m_height > uint64_t(m_header.frameStride) * kMaxPixelsPerFrameByte)
        return Fail("the frame size %ux%u disagrees with the frame stride: %llu pixels cannot come from %u bytes",
                    m_width, m_height, static_cast<unsigned long long>(uint64_t(m_width) * m_height),
                    m_header.frameStride);
    // Converters size per-pixel images by the source info's image: held to
    // the same bound.
    if (info && uint64_t(info->imageWidth) * info->imageHeight > uint64_t(m_header.frameStride) * kMaxPixelsPerFrameByte)
        return Fail("the image size %ux%u disagrees with the frame stride: %llu pixels cannot come from %u bytes",
                    info->imageWidth, info->imageHeight,
                    static_cast<unsigned long long>(uint64_t(info->imageWidth) * info->imageHeight),
                    m_header.frameStride);

    if (m_trailing != 0)
        m_warning = CString::FromFormat("the last frame is cut short: %llu of %u bytes",
                                        static_cast<unsigned long long>(m_trailing), m_header.frameStride);
    else if (m_declared != 0 && m_declared != m_numFrames)
        m_warning = CString::FromFormat("the source info declares %llu frames, the file holds %llu",
                                        static_cast<unsigned long long>(m_declared),
                                        static_cast<unsigned long long>(m_numFrames));

    m_filter = filterFactory()->CreateForPixelType(m_pixelType);
    m_file = file;
    return true;
}

TSharedPtr<CSourceInfoReduceObject> CRecordingReader::sourceInfo() { return m_objects.GetSourceInfo(false); }

uint64_t CRecordingReader::PixelBufferSize(EDataType type) const
{
    return static_cast<uint64_t>(m_width) * m_height * DataTypeSize(type);
}

bool CRecordingReader::ReadFrame(uint64_t index, void* buffer, uint64_t bufferSize)
{
    m_error = CString();
    if (!m_file) return Fail("no recording is open");
    const uint32_t stride = m_header.frameStride;
    if (index >= m_numFrames) {
        if (index == m_numFrames && m_trailing != 0)
            return Fail("frame %llu is cut short: %llu of %u bytes are in the file",
                        static_cast<unsigned long long>(index), static_cast<unsigned long long>(m_trailing), stride);
        return Fail("frame %llu is out of range: the recording holds %llu frames",
                    static_cast<unsigned long long>(index), static_cast<unsigned long long>(m_numFrames));
    }
    if (!buffer || bufferSize < stride)
        return Fail("a buffer of %llu bytes cannot hold frame %llu of %u bytes",
                    static_cast<unsigned long long>(buffer ? bufferSize : 0), static_cast<unsigned long long>(index),
                    stride);
    const uint64_t at = m_dataStart + index * stride;
    if (!m_file->Seek(static_cast<long long>(at), IFile::seekBegin) || !m_file->ReadBytes(buffer, stride))
        return Fail("frame %llu could not be read at offset %llu", static_cast<unsigned long long>(index),
                    static_cast<unsigned long long>(at));
    return true;
}

bool CRecordingReader::PixelsAsStored(STypedData pixels)
{
    // Only the generic filter stores grayscale pixels as they are, at the
    // start of the frame; with no offset, shift or mask, its copy is exact.
    if (!pixels.data || pixels.type != dtUInt16 || !dynamic_cast<CGenericFilter*>(m_filter.get())) return false;
    if (!IsPixelBaseType(m_pixelType, pixelGrayscale)) return false;
    TSharedPtr<CSourceInfoReduceObject> info = sourceInfo();
    if (!info || info->offset.left != 0 || info->offset.top != 0) return false;
    // The shift and mask as the filter computes them.
    const unsigned shift =
        (info->adBitShift < 0 ? 0u - static_cast<unsigned>(info->adBitShift) : static_cast<unsigned>(info->adBitShift));
    const unsigned mask = 65535u >> ((16u - static_cast<unsigned>(info->adBits)) & 31u);
    return (shift & 31u) == 0 && mask == 65535u && uint64_t(m_width) * m_height * 2 <= m_header.frameStride;
}

bool CRecordingReader::DecodeFrame(uint64_t index, STypedData pixels, uint64_t pixelsSize, uint8_t& preset)
{
    m_error = CString();
    if (!m_file) return Fail("no recording is open");
    if (!m_filter)
        return Fail("no filter decodes the pixel type %s of this recording", GuidToString(m_pixelType).c_str());
    if (pixels.data && pixelsSize < PixelBufferSize(pixels.type))
        return Fail("a pixel buffer of %llu bytes cannot hold a %ux%u frame of %s",
                    static_cast<unsigned long long>(pixelsSize), m_width, m_height, DataTypeText(pixels.type));
    // The frame must be in the file before its buffer is allocated.
    if (index >= m_numFrames) return ReadFrame(index, nullptr, 0);
    if (PixelsAsStored(pixels)) {
        // The filter's copy would change nothing: the pixels go straight
        // into the caller's buffer, and the filter sees the frame for its
        // objects alone.
        const uint64_t at = m_dataStart + index * m_header.frameStride;
        const unsigned bytes = unsigned(m_width) * m_height * 2;
        if (!m_file->Seek(static_cast<long long>(at), IFile::seekBegin) || !m_file->ReadBytes(pixels.data, bytes))
            return Fail("frame %llu could not be read at offset %llu", static_cast<unsigned long long>(index),
                        static_cast<unsigned long long>(at));
        if (!m_filter->ParseFrame(nullptr, m_pixelType, m_width, m_height, m_header.frameStride,
                                  STypedData(static_cast<void*>(nullptr), dtNoData), m_objects, preset))
            return Fail("the \"%s\" filter cannot decode frame %llu", m_filter->GetName(),
                        static_cast<unsigned long long>(index));
        SequencePreset(index, preset);
        return true;
    }
    m_frame.resize(m_header.frameStride);
    if (!ReadFrame(index, m_frame.data(), m_frame.size())) return false;
    if (!m_filter->ParseFrame(m_frame.data(), m_pixelType, m_width, m_height, m_header.frameStride, pixels,
                              m_objects, preset))
        return Fail("the \"%s\" filter cannot decode frame %llu into %s", m_filter->GetName(),
                    static_cast<unsigned long long>(index), DataTypeText(pixels.type));
    SequencePreset(index, preset);
    return true;
}

void CRecordingReader::SequencePreset(uint64_t index, uint8_t& preset)
{
    // A frame without a header of its own (the generic filter's) reports
    // preset 0; with preset sequencing declared, frames take the available
    // presets in turn, which is how such a camera writes them.
    TSharedPtr<CSourceInfoReduceObject> info = sourceInfo();
    if (preset == 0 && info && info->presetSequencing && m_filter->GetName() == CString(CGenericFilter::kName)) {
        uint8_t available[8];
        unsigned count = 0;
        for (uint8_t i = 0; i < 8; ++i)
            if (info->presets[i].available) available[count++] = i;
        if (count > 0) preset = available[index % count];
        // The filter filled preset 0's frame info; the frame's own preset
        // gets the same, so that frame info is found where the frame is.
        TSharedPtr<CFrameInfoReduceObject> from = m_objects.GetFrameInfo(0, false);
        TSharedPtr<CFrameInfoReduceObject> to = preset ? m_objects.GetFrameInfo(preset, true) : nullptr;
        if (from && to) {
            to->valid = from->valid;
            to->frame = from->frame;
            to->time = from->time;
            to->timeSource = from->timeSource;
            to->fresh = from->fresh;
            to->extra = from->extra;
        }
    }
}

} // namespace orv::reduce
