#pragma once
// Binary records: one table of fields per record, shared by the reader, the
// writer, the copy and the tests.
//
// A record is a struct (or an object's own members) plus a table that binds
// each member to its offset in the stored bytes; the field's size comes from
// its codec (by default the member's own size):
//
//   using Table = TRecordTable<SHead, 64,
//       TConst<0, uint32_t, 64>,                        // record size, written, never read
//       TField<&SHead::magic, 4>,                       // uint32_t: 4 bytes as they lie
//       TField<&SHead::unit, 8, TAs<uint8_t>>,          // an enum kept in one byte
//       TField<&SHead::name, 9, TText<32>>,             // CString in 32 bytes, zero padded
//       TReserved<41, 23>>;                             // zero on write
//
//   Table::Read(bytes, head);  Table::Write(head, bytes);  Table::Copy(from, to);
//   Table::ReadAt(span, offset, head)   // false when the record passes the span's end
//
// TRecordView is the same over a camera's record of which we read only some
// fields: in order and apart, gaps allowed.
//
// Read, write and copy are one loop over the table. Compile-time checks: a
// member whose type is not its codec's type, or whose size is not the field's,
// does not compile; the fields must tile 0 to the record size without gap or
// overlap. For records kept as raw bytes (camera headers, a stored payload)
// `TAt<T>` names a typed field by offset, read and written with Get and Put,
// bounds-checked over a span with GetAt. Stored order is little-endian, which
// is the order in memory here; byte-swapped camera records are swapped first.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "orv/String.h"

namespace orv::reduce {

static_assert(std::endian::native == std::endian::little, "packed records are copied as they lie in memory");

// An untyped byte range of a record: its offset and size.
struct SRecordField {
    uint32_t offset;
    uint32_t size;
    constexpr uint32_t end() const { return offset + size; }
};

// A field of type T at a fixed offset of a raw record.
template <class T>
struct TAt {
    static_assert(std::is_trivially_copyable_v<T>);
    uint32_t offset;
    static constexpr uint32_t size = sizeof(T);
    constexpr operator SRecordField() const { return {offset, size}; }
};

template <class T>
inline T Get(const unsigned char* base, TAt<T> at)
{
    T value;
    std::memcpy(&value, base + at.offset, sizeof(T));
    return value;
}

template <class T>
inline void Put(unsigned char* base, TAt<T> at, std::type_identity_t<T> value)
{
    std::memcpy(base + at.offset, &value, sizeof(T));
}

// Reads the field from a span of bytes; false when it does not lie wholly in it.
template <class T>
inline bool GetAt(std::span<const unsigned char> bytes, size_t offset, T& value)
{
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return false;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return true;
}

// Older spelling of Get and Put for raw records; T must be the field's type.
template <class T, class U>
inline T GetRecordValue(const unsigned char* base, TAt<U> at)
{
    static_assert(std::is_same_v<T, U>, "the field holds another type");
    return Get(base, at);
}

template <class T, class U>
inline void PutRecordValue(unsigned char* base, TAt<U> at, T value)
{
    static_assert(std::is_same_v<T, U>, "the field holds another type");
    Put(base, at, value);
}

// Fixed text: the bytes up to the first zero, at most the field's size; a
// full field carries no terminator. Writing zeroes the field and cuts the text.
inline CString GetRecordString(const unsigned char* base, SRecordField field)
{
    const char* text = reinterpret_cast<const char*>(base + field.offset);
    size_t length = 0;
    while (length < field.size && text[length] != '\0') ++length;
    return CString(text, static_cast<int>(length));
}

inline void PutRecordString(unsigned char* base, SRecordField field, const CString& text)
{
    std::memset(base + field.offset, 0, field.size);
    size_t length = text.length() < field.size ? text.length() : field.size;
    std::memcpy(base + field.offset, text.c_str(), length);
}

// ---- Codecs: how one member is stored. Each names the member type it takes.

// The member's bytes as they lie (numbers, arrays of numbers, identifiers).
template <class T>
struct TRaw {
    static_assert(std::is_trivially_copyable_v<T>);
    using Type = T;
    static constexpr uint32_t size = sizeof(T);
    static void Get(const unsigned char* p, T& v) { std::memcpy(&v, p, size); }
    static void Put(unsigned char* p, const T& v) { std::memcpy(p, &v, size); }
};

// One byte, non-zero is true; a stored 2 must not make an invalid bool.
template <>
struct TRaw<bool> {
    using Type = bool;
    static constexpr uint32_t size = 1;
    static void Get(const unsigned char* p, bool& v) { v = *p != 0; }
    static void Put(unsigned char* p, const bool& v) { *p = v ? 1 : 0; }
};

// A member kept in a narrower or other stored type (enums in a byte); the
// conversion is a plain cast, chosen in the table where it can be seen.
template <class Stored>
struct TAs {
    template <class T>
    struct TCodec {
        using Type = T;
        static constexpr uint32_t size = sizeof(Stored);
        static void Get(const unsigned char* p, T& v) { v = static_cast<T>(Read(p)); }
        static void Put(unsigned char* p, const T& v) { TRaw<Stored>::Put(p, static_cast<Stored>(v)); }
        static Stored Read(const unsigned char* p)
        {
            Stored s;
            TRaw<Stored>::Get(p, s);
            return s;
        }
    };
};

// CString in N bytes; see GetRecordString.
template <uint32_t N>
struct TText {
    using Type = CString;
    static constexpr uint32_t size = N;
    static void Get(const unsigned char* p, CString& v) { v = GetRecordString(p, {0, N}); }
    static void Put(unsigned char* p, const CString& v) { PutRecordString(p, {0, N}, v); }
};

namespace priv {
template <class M>
struct TMemberOf;
template <class C, class T>
struct TMemberOf<T C::*> {
    using Type = T;
};
template <class Codec, class T>
struct TResolve {
    using Type = Codec;
};
template <class Stored, class T>
struct TResolve<TAs<Stored>, T> {
    using Type = typename TAs<Stored>::template TCodec<T>;
};
template <class T>
void CopyValue(const T& from, T& to)
{
    if constexpr (std::is_array_v<T>)
        std::copy(std::begin(from), std::end(from), std::begin(to));
    else
        to = from;
}
} // namespace priv

// ---- Fields of a table.

// A member bound to its offset, stored by Codec.
template <auto Member, uint32_t Offset, class Codec = TRaw<typename priv::TMemberOf<decltype(Member)>::Type>>
struct TField {
    using Member_t = typename priv::TMemberOf<decltype(Member)>::Type;
    using C = typename priv::TResolve<Codec, Member_t>::Type;
    static_assert(std::is_same_v<typename C::Type, Member_t>, "the member's type does not fit its field");
    static constexpr SRecordField field{Offset, C::size};
    template <class S>
    static void Read(const unsigned char* r, S& s) { C::Get(r + Offset, s.*Member); }
    template <class S>
    static void Write(const S& s, unsigned char* r) { C::Put(r + Offset, s.*Member); }
    template <class S>
    static void Copy(const S& from, S& to) { priv::CopyValue(from.*Member, to.*Member); }
    // The one field of a stored record, for patching it in place.
    template <class T = Member_t> // not for array members
    static T Get(const unsigned char* r)
    {
        T v{};
        C::Get(r + Offset, v);
        return v;
    }
    static void Put(unsigned char* r, const Member_t& v) { C::Put(r + Offset, v); }
};

// A constant (a record size, a count): written, never read into the struct.
template <uint32_t Offset, class Stored, Stored Value>
struct TConst {
    static constexpr SRecordField field{Offset, sizeof(Stored)};
    template <class S>
    static void Read(const unsigned char*, S&) {}
    template <class S>
    static void Write(const S&, unsigned char* r) { TRaw<Stored>::Put(r + Offset, Value); }
    template <class S>
    static void Copy(const S&, S&) {}
};

// A field that is written from the member but neither read nor copied by the
// table (the version, which readers compare before they trust the rest).
template <class Field>
struct TWriteOnly : Field {
    template <class S>
    static void Read(const unsigned char*, S&) {}
    template <class S>
    static void Copy(const S&, S&) {}
};

// Bytes that are zero when written and ignored when read.
template <uint32_t Offset, uint32_t Size>
struct TReserved {
    static constexpr SRecordField field{Offset, Size};
    template <class S>
    static void Read(const unsigned char*, S&) {}
    template <class S>
    static void Write(const S&, unsigned char* r) { std::memset(r + Offset, 0, Size); }
    template <class S>
    static void Copy(const S&, S&) {}
};

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

// True when the fields follow each other in order, without overlap, inside size.
template <size_t N>
constexpr bool RecordFieldsInOrder(const SRecordField (&fields)[N], uint32_t size)
{
    uint32_t next = 0;
    for (const SRecordField& f : fields) {
        if (f.offset < next) return false;
        next = f.end();
    }
    return next <= size;
}

namespace priv {
template <class S, uint32_t Size, class... Fields>
struct TTable {
    using Struct = S;
    static constexpr uint32_t kSize = Size;
    static constexpr SRecordField fields[] = {Fields::field...};

    static void Read(const unsigned char* record, S& s) { (Fields::Read(record, s), ...); }
    static void Write(const S& s, unsigned char* record) { (Fields::Write(s, record), ...); }
    static void Copy(const S& from, S& to) { (Fields::Copy(from, to), ...); }
    // Reads the record at offset of bytes; false, with s untouched, if it passes the end.
    static bool ReadAt(std::span<const unsigned char> bytes, size_t offset, S& s)
    {
        if (offset > bytes.size() || bytes.size() - offset < Size) return false;
        Read(bytes.data() + offset, s);
        return true;
    }
};
} // namespace priv

// A stored record: its size and all of its fields in stored order.
template <class S, uint32_t Size, class... Fields>
struct TRecordTable : priv::TTable<S, Size, Fields...> {
    static_assert(RecordFieldsTile(priv::TTable<S, Size, Fields...>::fields, Size),
                  "the fields must tile the record without gap or overlap");
};

// A view of the fields we read from a camera's record, in order, with the
// bytes between them left alone: Write changes only the listed fields.
template <class S, uint32_t Size, class... Fields>
struct TRecordView : priv::TTable<S, Size, Fields...> {
    static_assert(RecordFieldsInOrder(priv::TTable<S, Size, Fields...>::fields, Size),
                  "the fields must be in order, apart and inside the record");
};

// N records of a nested table, one after another (the presets of a record).
template <class Table, size_t N>
struct TRecords {
    using Type = typename Table::Struct[N];
    static constexpr uint32_t size = Table::kSize * N;
    static void Get(const unsigned char* p, Type& v)
    {
        for (size_t i = 0; i < N; ++i) Table::Read(p + i * Table::kSize, v[i]);
    }
    static void Put(unsigned char* p, const Type& v)
    {
        for (size_t i = 0; i < N; ++i) Table::Write(v[i], p + i * Table::kSize);
    }
};

// The head that every persistent record starts with: its size, then its version.
inline constexpr TAt<uint32_t> kRecordSize{0};
inline constexpr TAt<uint32_t> kRecordVersion{4};

} // namespace orv::reduce
