// demo: a tour of the program on a synthetic recording.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>

#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {

static int RunDemo(std::string dir)
{
    if (dir.empty()) {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/orvreduce-demo-XXXXXX";
        if (!::mkdtemp(pattern.data())) return Fail("%s: cannot make a scratch folder", pattern.c_str());
        dir = pattern;
    } else if (::mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST) {
        return Fail("%s: cannot make the folder", dir.c_str());
    }
    const std::string qrt = dir + "/scene.qrt", png = dir + "/frame0.png", tiff = dir + "/frame0.tiff";
    auto step = [](const char* title) { std::printf("\n== %s\n", title); std::fflush(stdout); };

    step("orvreduce synth scene.qrt --size 320x256 --frames 20");
    // The tour's own file: a second tour in the same folder replaces it.
    if (int rc = RunSynth(qrt, 320, 256, 20, true)) return rc;
    std::printf("wrote %s\n", qrt.c_str());
    step("orvreduce info scene.qrt");
    if (int rc = RunInfo(qrt, false)) return rc;
    step("orvreduce verify scene.qrt");
    if (int rc = RunVerify(qrt, false)) return rc;

    SConvertOptions c;
    c.input = qrt;
    c.frames = "0";
    c.output = png;
    step("orvreduce convert scene.qrt --unit temperature --frames 0 -o frame0.png");
    if (int rc = RunConvert(c)) return rc;
    c.output = tiff;
    step("orvreduce convert scene.qrt --unit temperature --frames 0 -o frame0.tiff");
    if (int rc = RunConvert(c)) return rc;

    SStatsOptions s;
    s.input = qrt;
    s.frames = "0:5";
    step("orvreduce stats scene.qrt --frames 0:5 (whole frame)");
    if (int rc = RunStats(s)) return rc;
    s.rect = "0,0,40,40";
    step("orvreduce stats scene.qrt --frames 0:5 --rect 0,0,40,40 (a corner of the background)");
    if (int rc = RunStats(s)) return rc;

    std::printf("\nThe files are in %s:\n  %s\n  %s   (look at this one)\n  %s\n  %s\n", dir.c_str(), qrt.c_str(),
                png.c_str(), tiff.c_str(), (dir + "/frame0.status.tiff").c_str());
    return 0;
}

void AddDemo(CLI::App& app)
{
    auto dir = std::make_shared<std::string>();
    CLI::App* cmd = app.add_subcommand("demo", "Make a synthetic recording and run info, verify, convert and stats on it");
    cmd->footer("Example: orvreduce demo --dir /tmp/demo");
    cmd->add_option("--dir", *dir, "Folder for the files; a new scratch folder by default");
    cmd->callback([dir] { g_exitCode = RunDemo(*dir); });
}

} // namespace orv::reduce::cli
