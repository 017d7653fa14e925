// orvreduce: look into thermal recordings, check them, and reduce their
// frames to calibrated values.
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "tools/orvreduce/Common.h"

namespace orv::reduce::cli {
int g_exitCode = 0;
}

int main(int argc, char** argv)
{
    using namespace orv::reduce::cli;
    CLI::App app{"orvreduce: inspect, verify and reduce thermal infrared recordings.\n"
                 "Start with 'orvreduce demo', or 'orvreduce synth scene.qrt' and then\n"
                 "'orvreduce info scene.qrt'. Every command has its own --help.",
                 "orvreduce"};
    app.require_subcommand(1);
    AddInfo(app);
    AddVerify(app);
    AddFrames(app);
    AddConvert(app);
    AddStats(app);
    AddRoi(app);
    AddSynth(app);
    AddDemo(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        // The library reports by return values; this is for allocation
        // failures and the array bounds checks.
        return Fail("%s", e.what());
    }
    return g_exitCode;
}
