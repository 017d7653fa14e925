#pragma once
// CRecordingVerifier: walks a recording's block chain, recomputes every
// block's CRC and then checks that the frames are whole. Verify returns true
// only when all is well; either way blocks() lists every block reached with
// its header fields, the stored and the computed CRC and why it is not ok,
// and lastError() sums up the first problem (without the file name).
//
//     CRecordingVerifier v;
//     bool whole = v.Verify("scene.qrt");
//     for (const SBlockCheck& b : v.blocks())
//         printf("%s %s %s\n", b.ok ? "ok" : "BAD", b.name.c_str(), b.reason.c_str());
//     if (!whole) fail(v.lastError());
#include <cstdint>

#include "orv/Array.h"
#include "orv/File.h"
#include "orv/String.h"
#include "orv/Types.h"

namespace orv::reduce {

struct SBlockCheck {
    CString name;
    SGuid typeID;
    uint32_t version = 0;
    int preset = 0;
    uint64_t frame = 0;
    uint64_t offset = 0;        // of the block header
    uint64_t size = 0;          // payload bytes; all ones for frame data running to the end
    uint32_t storedCrc = 0;     // from the block header
    uint32_t computedCrc = 0;   // over the payload as read
    bool crcChecked = false;    // frame data running to the end carry no CRC
    bool ok = false;
    CString reason;             // empty when ok
};

class CRecordingVerifier {
public:
    bool Verify(const CString& path);
    // Reads and seeks file only.
    bool Verify(TSharedPtr<IFile> file);

    const TArray<SBlockCheck>& blocks() const { return m_blocks; }
    unsigned badBlocks() const { return m_bad; }
    // The chain ends inside the last block listed: nothing after it was
    // read, and lastError() says where.
    bool cutShort() const { return m_cutShort; }
    // Whole frames, once the blocks are sound.
    uint64_t numFrames() const { return m_numFrames; }
    const CString& lastError() const { return m_error; }

private:
    bool Fail(const char* format, ...) __attribute__((format(printf, 2, 3)));

    TArray<SBlockCheck> m_blocks;
    unsigned m_bad = 0;
    bool m_cutShort = false;
    uint64_t m_numFrames = 0;
    CString m_error;
};

} // namespace orv::reduce
