#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "orv/Log.h"

namespace {

void Collect(const char* line, void* context) { static_cast<std::vector<std::string>*>(context)->emplace_back(line); }

} // namespace

TEST(CLog, SinkReceivesFormattedLines)
{
    orv::CLog& log = orv::logger();
    std::vector<std::string> lines;
    orv::CLog::Sink previous = log.SetSink(&Collect, &lines);
    log.Write("factory: cannot register \"%s\" (%d)", "Name", 3);
    log.Write("%s", "");
    EXPECT_EQ(log.SetSink(previous, nullptr), &Collect);
    EXPECT_EQ(lines, (std::vector<std::string>{"factory: cannot register \"Name\" (3)", ""}));

    // Several threads write at once; the log hands the sink one line at a
    // time, so the sink needs no lock of its own.
    lines.clear();
    log.SetSink(&Collect, &lines);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &log] {
            for (int i = 0; i < 500; ++i) log.Write("thread %d line %d", t, i);
        });
    for (auto& th : threads) th.join();
    log.SetSink(nullptr, nullptr);
    ASSERT_EQ(lines.size(), 2000u);
    int fromThree = 0;
    for (const std::string& l : lines) fromThree += l.rfind("thread 3 line ", 0) == 0;
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
