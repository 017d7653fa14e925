#pragma once
// How the flat interface's handles map to the classes behind them. Both
// kinds are opaque to C: a direct handle is the object's own pointer, a
// shared handle is a heap-allocated TSharedPtr that owns one reference.
#include <bit>
#include <cstddef>
#include <utility>

#include "orv/SharedPtr.h"
#include "orv/String.h"
#include "reduce/capi/orvreduce.h"

namespace orv::reduce::priv {

template <class Handle>
struct SHandleOf; // the class a handle stands for; one specialisation per handle

template <class Handle>
using HandleObject = typename SHandleOf<Handle>::Object;

// A direct handle: the pointer itself.
template <class Handle>
HandleObject<Handle>* Direct(Handle* handle)
{
    return reinterpret_cast<HandleObject<Handle>*>(handle);
}
template <class Handle>
const HandleObject<Handle>* Direct(const Handle* handle)
{
    return reinterpret_cast<const HandleObject<Handle>*>(handle);
}

// A shared handle: a new reference, or null for a null pointer (a getter
// found nothing).
template <class Handle, class T>
Handle* NewShared(TSharedPtr<T> object)
{
    if (!object) return nullptr;
    return reinterpret_cast<Handle*>(new TSharedPtr<HandleObject<Handle>>(std::move(object)));
}
// The same, but a handle even for a null pointer: an _Alloc whose object is
// of another class still hands out a handle, which reads as empty.
template <class Handle, class T>
Handle* NewSharedAlways(TSharedPtr<T> object)
{
    return reinterpret_cast<Handle*>(new TSharedPtr<HandleObject<Handle>>(std::move(object)));
}
template <class Handle>
void FreeShared(Handle* handle)
{
    delete reinterpret_cast<TSharedPtr<HandleObject<Handle>>*>(handle); // null is ignored
}
template <class Handle>
HandleObject<Handle>* Shared(const Handle* handle)
{
    return handle ? reinterpret_cast<const TSharedPtr<HandleObject<Handle>>*>(handle)->get() : nullptr;
}

// Field reads and writes through a shared handle; an empty handle reads as
// the value-initialised type and takes no writes.
template <class Handle, class Field, class Class>
Field Read(const Handle* handle, Field Class::*field)
{
    const auto* object = Shared(handle);
    return object ? object->*field : Field{};
}
template <class Handle, class Field, class Class>
void Write(Handle* handle, Field Class::*field, Field value)
{
    if (auto* object = Shared(handle)) object->*field = value;
}
template <class Handle, class Class>
char* ReadText(const Handle* handle, CString Class::*field)
{
    const auto* object = Shared(handle);
    return object ? orvStrDup((object->*field).c_str()) : nullptr;
}

inline char* Copy(const CString& text) { return orvStrDup(text.c_str()); }

// Value types cross as their C twins, byte for byte.
template <class C, class Cpp>
C ToC(const Cpp& value)
{
    static_assert(sizeof(C) == sizeof(Cpp));
    return std::bit_cast<C>(value);
}
template <class Cpp, class C>
Cpp FromC(const C& value)
{
    static_assert(sizeof(C) == sizeof(Cpp));
    return std::bit_cast<Cpp>(value);
}

} // namespace orv::reduce::priv
