#include "reduce/store/VerifyRecording.h"

#include <algorithm>
#include <cstdarg>

#include "reduce/filters/RecordingReader.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"

namespace orv::reduce {

namespace {

constexpr uint64_t kToTheEnd = ~uint64_t(0);

// The payload's CRC in pieces, so that a large block costs no large buffer.
bool PayloadCrc(IFile& file, uint64_t offset, uint64_t size, unsigned int& crc)
{
    unsigned char chunk[65536];
    crc = 0;
    if (!file.Seek(static_cast<long long>(offset), IFile::seekBegin)) return false;
    while (size) {
        const unsigned long n = static_cast<unsigned long>(std::min<uint64_t>(size, sizeof chunk));
        if (file.Read(chunk, n) != n) return false;
        crc = CalcCRC32(crc, chunk, n);
        size -= n;
    }
    return true;
}

} // namespace

bool CRecordingVerifier::Fail(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_error = CString::FromFormatV(format, args);
    va_end(args);
    return false;
}

bool CRecordingVerifier::Verify(const CString& path)
{
    m_blocks.clear();
    m_bad = 0;
    m_numFrames = 0;
    m_cutShort = false;
    TSharedPtr<IFile> file = fileSystem()->Open(path, IFileSystem::openRead);
    if (!file) return Fail("cannot open %s for reading", path.c_str());
    return Verify(file);
}

bool CRecordingVerifier::Verify(TSharedPtr<IFile> file)
{
    m_blocks.clear();
    m_bad = 0;
    m_numFrames = 0;
    m_cutShort = false;
    m_error = CString();
    if (!file) return Fail("no file to read");
    TArray<SInfoFileBlock> chain;
    file->SeekToBegin();
    if (!ScanInfoFile(file, chain))
        return Fail("not a recording: the file header is not \"%s\" or a block header is cut short", kInfoFileName);
    const long long signedLength = file->GetLength();
    const uint64_t length = signedLength > 0 ? static_cast<uint64_t>(signedLength) : 0;
    bool sawPixels = false;
    for (size_t i = 0; i < chain.size(); ++i) {
        const SInfoFileBlock& b = chain[i];
        SBlockCheck& c = m_blocks[m_blocks.add(SBlockCheck{})];
        c.name = CString(b.name);
        c.typeID = b.typeID;
        c.version = b.version;
        c.preset = b.preset;
        c.frame = b.frame;
        c.offset = b.headerOffset;
        c.size = b.size;
        c.storedCrc = b.crc;
        if (b.size == kToTheEnd) {
            // The frame data run to the end of the file and carry no CRC.
            sawPixels = true;
            c.ok = true;
            continue;
        }
        if (b.dataOffset > length || b.size > length - b.dataOffset) {
            // Nothing after it can be found: the walk ends here.
            const CString where = CString::FromFormat(
                "holds %llu bytes, the file ends %llu bytes into it", static_cast<unsigned long long>(b.size),
                static_cast<unsigned long long>(length - std::min(length, b.dataOffset)));
            c.reason = CString::FromFormat("cut short: %s", where.c_str());
            ++m_bad;
            m_cutShort = true;
            return Fail("cut short: block %zu \"%s\" at offset %llu %s", i, b.name,
                        static_cast<unsigned long long>(b.headerOffset), where.c_str());
        }
        if (!PayloadCrc(*file, b.dataOffset, b.size, c.computedCrc)) {
            c.reason = CString("reading its payload failed");
            ++m_bad;
            continue;
        }
        c.crcChecked = true;
        if (c.computedCrc != b.crc) {
            c.reason = CString::FromFormat("CRC %08X, the header says %08X", c.computedCrc, b.crc);
            ++m_bad;
            continue;
        }
        if (b.typeID == guidPixels) sawPixels = true;
        c.ok = true;
    }
    if (m_bad) return Fail("%u bad block%s", m_bad, m_bad == 1 ? "" : "s");
    if (!sawPixels) return Fail("the chain ends without a \"Pixels\" block: the file is cut short or not a recording");

    // The frames themselves: whole frames only, a cut one is reported.
    CRecordingReader reader;
    if (!reader.Open(file)) return Fail("%s", reader.lastError().c_str());
    m_numFrames = reader.numFrames();
    if (reader.trailingBytes())
        return Fail("the last frame is cut short: %llu of %u bytes",
                    static_cast<unsigned long long>(reader.trailingBytes()), reader.frameSize());
    if (!reader.warning().empty()) return Fail("%s", reader.warning().c_str());
    return true;
}

} // namespace orv::reduce
