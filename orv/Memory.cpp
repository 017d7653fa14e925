#include "orv/Memory.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace orv {

void* Alloc(size_t size) { return std::malloc(size ? size : 1); }

void* Realloc(void* pointer, size_t size) { return std::realloc(pointer, size ? size : 1); }

void Free(void* pointer) { std::free(pointer); }

void ThrowBadAllocException() { throw CBadAllocException(); }

void ThrowOutOfRangeException(const char* format, ...)
{
    char buffer[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    throw COutOfRangeException(buffer);
}

} // namespace orv
