// verify: walks the block chain and recomputes every block's CRC.
#include <algorithm>
#include <cstdio>
#include <string>

#include "reduce/store/InfoFile.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

int RunVerify(const std::string& path, bool quiet)
{
    if (!fileSystem()->Exists(path.c_str())) return Fail("%s: no such file", path.c_str());
    TSharedPtr<IFile> file = fileSystem()->Open(path.c_str(), IFileSystem::openRead);
    if (!file) return Fail("%s: cannot open the file for reading", path.c_str());
    TArray<SInfoFileBlock> blocks;
    if (!ScanInfoFile(file, blocks)) {
        return Fail("%s: not a recording: the file header is not \"%s\" or a block header is cut short",
                    path.c_str(), kInfoFileName);
    }
    const uint64_t length = static_cast<uint64_t>(file->GetLength());
    unsigned bad = 0;
    bool sawPixels = false;
    TArray<unsigned char> payload;
    for (size_t i = 0; i < blocks.size(); ++i) {
        const SInfoFileBlock& b = blocks[i];
        const bool last = b.size == ~uint64_t(0);
        if (last) {
            // The frame data run to the end of the file and carry no CRC.
            sawPixels = true;
            if (!quiet) std::printf("  ok   block %zu \"%s\" (frame data to the end of the file)\n", i, b.name);
            continue;
        }
        if (b.dataOffset > length || b.size > length - b.dataOffset) {
            // Nothing after it can be checked: one message says it all.
            return Fail("%s: cut short: block %zu \"%s\" at offset %llu holds %llu bytes, the file ends %llu bytes "
                        "into it",
                        path.c_str(), i, b.name, static_cast<unsigned long long>(b.headerOffset),
                        static_cast<unsigned long long>(b.size),
                        static_cast<unsigned long long>(length - std::min(length, b.dataOffset)));
        }
        payload.resize(b.size);
        file->Seek(static_cast<long long>(b.dataOffset), IFile::seekBegin);
        if (b.size && file->Read(payload.data(), static_cast<unsigned long>(b.size)) != b.size) {
            Fail("%s: block %zu \"%s\": reading its payload failed", path.c_str(), i, b.name);
            ++bad;
            continue;
        }
        unsigned int crc = CalcCRC32(0, payload.data(), static_cast<unsigned long>(b.size));
        if (crc != b.crc) {
            Fail("%s: block %zu \"%s\" at offset %llu: CRC %08X, the header says %08X", path.c_str(), i, b.name,
                 static_cast<unsigned long long>(b.headerOffset), crc, b.crc);
            ++bad;
        } else if (!quiet) {
            std::printf("  ok   block %zu \"%s\", %llu bytes, CRC %08X\n", i, b.name,
                        static_cast<unsigned long long>(b.size), crc);
        }
    }
    if (!sawPixels) {
        Fail("%s: the chain ends without a \"Pixels\" block: the file is cut short or not a recording", path.c_str());
        ++bad;
    }
    if (bad == 0) {
        // The frames themselves: whole frames only, a cut one is reported.
        CRecordingReader reader;
        if (!reader.Open(CString(path.c_str()))) {
            return Fail("%s: %s", path.c_str(), reader.lastError().c_str());
        }
        if (reader.trailingBytes())
            return Fail("%s: the last frame is cut short: %llu of %u bytes", path.c_str(),
                        static_cast<unsigned long long>(reader.trailingBytes()), reader.frameSize());
        if (!reader.warning().empty()) return Fail("%s: %s", path.c_str(), reader.warning().c_str());
        if (!quiet)
            std::printf("%s: ok, %zu blocks, %llu frames\n", path.c_str(), blocks.size(),
                        static_cast<unsigned long long>(reader.numFrames()));
        return 0;
    }
    return Fail("%s: %u bad block%s", path.c_str(), bad, bad == 1 ? "" : "s");
}

void AddVerify(CLI::App& app)
{
    struct SArgs {
        std::string path;
        bool quiet = false;
    };
    auto args = std::make_shared<SArgs>();
    CLI::App* cmd = app.add_subcommand("verify", "Check a recording's block chain and every block's CRC");
    cmd->footer("Exit code 0 only when every block is whole, every CRC matches and no frame is cut short.\n"
                "Example: orvreduce verify scene.qrt");
    cmd->add_option("FILE", args->path, "Recording to check")->required();
    cmd->add_flag("-q,--quiet", args->quiet, "Print only problems");
    cmd->callback([args] { g_exitCode = RunVerify(args->path, args->quiet); });
}

} // namespace orv::reduce::cli
