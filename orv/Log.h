#pragma once
#include <mutex>

#include "orv/String.h"

namespace orv {

// The process log. Lines go to standard error unless a sink is set; Write is
// safe to call from several threads.
class CLog {
public:
    using Sink = void (*)(const char* line, void* context);

    // Writes one line, printf style (a trailing newline is not doubled).
    void Write(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // Replaces the destination; null restores standard error. Returns the old sink.
    Sink SetSink(Sink sink, void* context);

private:
    std::mutex m_mutex;
    Sink m_sink = nullptr;
    void* m_context = nullptr;
};

CLog& logger();

} // namespace orv
