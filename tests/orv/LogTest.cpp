#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "orv/Log.h"

namespace {

struct SCapture {
    std::vector<std::string> lines;
};

void Collect(const char* line, void* context) { static_cast<SCapture*>(context)->lines.emplace_back(line); }

} // namespace

TEST(CLog, SinkReceivesFormattedLines)
{
    orv::CLog& log = orv::logger();
    SCapture capture;
    orv::CLog::Sink previous = log.SetSink(&Collect, &capture);
    log.Write("factory: cannot register \"%s\" (%d)", "Name", 3);
    log.Write("%s", "");
    EXPECT_EQ(log.SetSink(previous, nullptr), &Collect);
    ASSERT_EQ(capture.lines.size(), 2u);
    EXPECT_EQ(capture.lines[0], "factory: cannot register \"Name\" (3)");
    EXPECT_EQ(capture.lines[1], "");

    // Several threads write at once; the log hands the sink one line at a
    // time, so the sink needs no lock of its own.
    capture.lines.clear();
    log.SetSink(&Collect, &capture);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &log] {
            for (int i = 0; i < 500; ++i) log.Write("thread %d line %d", t, i);
        });
    for (auto& th : threads) th.join();
    log.SetSink(nullptr, nullptr);
    ASSERT_EQ(capture.lines.size(), 2000u);
    int fromThree = 0;
    for (const std::string& l : capture.lines) fromThree += l.rfind("thread 3 line ", 0) == 0;
    EXPECT_EQ(fromThree, 500);
}

TEST(CLog, StandardErrorGetsOneNewlinePerLine)
{
    orv::CLog& log = orv::logger();
    testing::internal::CaptureStderr();
    log.Write("first %d", 1);
    log.Write("second\n");
    std::string out = testing::internal::GetCapturedStderr();
    EXPECT_EQ(out, "first 1\nsecond\n");
}
