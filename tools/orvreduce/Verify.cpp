// verify: walks the block chain and recomputes every block's CRC.
#include <cstdio>
#include <string>

#include "reduce/store/VerifyRecording.h"
#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

int RunVerify(const std::string& path, bool quiet)
{
    if (!fileSystem()->Exists(path.c_str())) return Fail("%s: no such file", path.c_str());
    CRecordingVerifier verifier;
    const bool whole = verifier.Verify(CString(path.c_str()));
    const TArray<SBlockCheck>& blocks = verifier.blocks();
    for (size_t i = 0; i < blocks.size(); ++i) {
        const SBlockCheck& b = blocks[i];
        if (!b.ok && verifier.cutShort() && i + 1 == blocks.size())
            continue; // the summary below says where the file ends
        if (!b.ok)
            Fail("%s: block %zu \"%s\" at offset %llu: %s", path.c_str(), i, b.name.c_str(),
                 static_cast<unsigned long long>(b.offset), b.reason.c_str());
        else if (quiet)
            continue;
        else if (!b.crcChecked)
            std::printf("  ok   block %zu \"%s\" (frame data to the end of the file)\n", i, b.name.c_str());
        else
            std::printf("  ok   block %zu \"%s\", %llu bytes, CRC %08X\n", i, b.name.c_str(),
                        static_cast<unsigned long long>(b.size), b.computedCrc);
    }
    if (!whole) return Fail("%s: %s", path.c_str(), verifier.lastError().c_str());
    if (!quiet)
        std::printf("%s: ok, %zu blocks, %llu frames\n", path.c_str(), blocks.size(),
                    static_cast<unsigned long long>(verifier.numFrames()));
    return 0;
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
