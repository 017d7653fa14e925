// A recording file: CRecordingReader's open (info file, "Pixels" header,
// frame layout) and its frame reads and decodes through the recording's
// filter; then the pixels header read on its own in both forms, and the
// frame-count patch of a finished recording, on a copy.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "reduce/filters/RecordingReader.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/PixelsHeader.h"

using namespace orv;
using namespace orv::reduce;

namespace {

// A caller would not offer a frame buffer beyond this.
constexpr uint64_t kMaxBuffer = uint64_t(1) << 24;

void ReadFrames(CRecordingReader& reader)
{
    const uint64_t count = reader.numFrames();
    const uint64_t indices[] = {0, 1, count ? count - 1 : 0, count, count + 1};
    std::vector<uint8_t> raw(std::min<uint64_t>(reader.frameSize(), kMaxBuffer));
    for (uint64_t index : indices) {
        reader.ReadFrame(index, raw.data(), raw.size());
        for (EDataType type : {dtNoData, dtUInt8, dtUInt16, dtFlt32, dtRGB24}) {
            const uint64_t bytes = reader.PixelBufferSize(type);
            if (bytes > kMaxBuffer) continue;
            std::vector<uint8_t> pixels(bytes);
            uint8_t preset = 0;
            STypedData target(type == dtNoData || pixels.empty() ? nullptr : pixels.data(), type);
            reader.DecodeFrame(index, target, pixels.size(), preset);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::CInput input(data, size);
    {
        CRecordingReader reader;
        if (reader.Open(input.Open())) ReadFrames(reader);
    }
    for (unsigned int version : {kPixelsBlockVersion, 0x10000u}) {
        SPixelsHeader header{};
        ReadPixelsHeader(input.Open(), version, header);
    }
    // The patch writes, so it works on its own copy.
    CMemFile copy;
    copy.Create();
    if (size) copy.Write(data, static_cast<unsigned long>(size));
    unsigned int frames[4] = {1, 2, 3, 4};
    UpdateInfoFile(TSharedPtr<IFile>(&copy, noDestroy), frames, size % 2 == 0);
    return 0;
}
