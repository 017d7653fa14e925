#pragma once
// Packed little-endian records described by one table of fields (offset,
// size) that the reader, the writer and the tests share.
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "orv/String.h"

namespace orv::reduce {

static_assert(std::endian::native == std::endian::little, "packed records are copied as they lie in memory");

struct SRecordField {
    uint32_t offset;
    uint32_t size;
    constexpr uint32_t end() const { return offset + size; }
};

// Writes a number of exactly the field's size at base + field.offset.
template <class T>
inline void PutRecordValue(unsigned char* base, SRecordField field, T value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    if (sizeof(T) != field.size) return; // a type that does not fit the field writes nothing
    std::memcpy(base + field.offset, &value, sizeof(T));
}

template <class T>
inline T GetRecordValue(const unsigned char* base, SRecordField field)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (sizeof(T) == field.size) std::memcpy(&value, base + field.offset, sizeof(T));
    return value;
}

inline void PutRecordBool(unsigned char* base, SRecordField field, bool value)
{
    PutRecordValue<uint8_t>(base, field, value ? 1 : 0);
}

inline bool GetRecordBool(const unsigned char* base, SRecordField field)
{
    return GetRecordValue<uint8_t>(base, field) != 0;
}

// Fixed text field: the bytes up to the first zero, at most the field's size;
// a full field carries no terminator.
inline CString GetRecordString(const unsigned char* base, SRecordField field)
{
    const char* text = reinterpret_cast<const char*>(base + field.offset);
    size_t length = 0;
    while (length < field.size && text[length] != '\0') ++length;
    return CString(text, static_cast<int>(length));
}

// Zeroes the field and copies the text into it, cut to the field's size.
inline void PutRecordString(unsigned char* base, SRecordField field, const CString& text)
{
    std::memset(base + field.offset, 0, field.size);
    size_t length = text.length() < field.size ? text.length() : field.size;
    std::memcpy(base + field.offset, text.c_str(), length);
}

// True when the fields follow each other without gap or overlap from 0 to size.
template <size_t N>
constexpr bool RecordFieldsTile(const SRecordField (&fields)[N], uint32_t size)
{
    uint32_t next = 0;
    for (const SRecordField& f : fields) {
        if (f.offset != next) return false;
        next = f.end();
    }
    return next == size;
}

} // namespace orv::reduce
