#pragma once
// Raw memory and the two exceptions of the base layer. Every allocation that
// TArray makes goes through Alloc/Realloc/Free so that growth is observable.
#include <cstddef>
#include <new>
#include <stdexcept>

namespace orv {

void* Alloc(size_t size);
void* Realloc(void* pointer, size_t size);
void Free(void* pointer);

// Raised by ThrowBadAllocException; a std::bad_alloc so that ordinary
// handlers catch it.
class CBadAllocException : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "orv: out of memory"; }
};

// Raised by ThrowOutOfRangeException with the formatted message.
class COutOfRangeException : public std::out_of_range {
public:
    explicit COutOfRangeException(const char* message) : std::out_of_range(message) {}
};

[[noreturn]] void ThrowBadAllocException();
[[noreturn]] void ThrowOutOfRangeException(const char* format, ...)
    __attribute__((format(printf, 1, 2)));

} // namespace orv
