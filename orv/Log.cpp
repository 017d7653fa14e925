#include "orv/Log.h"

#include <cstdarg>
#include <cstdio>

namespace orv {

void CLog::Write(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CString line = CString::FromFormatV(format, args);
    va_end(args);
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_sink) {
        m_sink(line.c_str(), m_context);
        return;
    }
    size_t n = line.length();
    std::fputs(line.c_str(), stderr);
    if (n == 0 || line.c_str()[n - 1] != '\n') std::fputc('\n', stderr);
}

CLog::Sink CLog::SetSink(Sink sink, void* context)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    Sink old = m_sink;
    m_sink = sink;
    m_context = context;
    return old;
}

CLog& logger()
{
    static CLog instance;
    return instance;
}

} // namespace orv
