#pragma once
// TSharedPtr<T>: three words, in order: the object, its CReferenceCounter
// (null for a null pointer) and the destroy word. On the last release the
// destroy word decides: 0 deletes through the virtual destructor, all ones
// does nothing (object on the stack or owned elsewhere), anything else is a
// void (*)(T*) to call. Casts keep the counter and the destroy word.
#include <cstdint>
#include <type_traits>
#include <utility>

#include "orv/ReferenceCounter.h"

namespace orv {

// Tag for a shared pointer that never destroys its object.
struct SNoDestroy {};
inline constexpr SNoDestroy noDestroy{};

template <class T>
class TSharedPtr {
public:
    using DestroyFunction = void (*)(T*);
    static constexpr uintptr_t kDeleteWord = 0;
    static constexpr uintptr_t kNoDestroyWord = ~uintptr_t(0);

    TSharedPtr() = default;
    TSharedPtr(std::nullptr_t) {}
    // Owns p; deletes it through its virtual destructor on the last release.
    explicit TSharedPtr(T* p) : m_ptr(p), m_counter(p ? CReferenceCounter::Create() : nullptr) {}
    // Owns p; calls destroy(p) on the last release (null destroy = delete).
    TSharedPtr(T* p, DestroyFunction destroy)
        : m_ptr(p), m_counter(p ? CReferenceCounter::Create() : nullptr),
          m_destroy(reinterpret_cast<uintptr_t>(destroy))
    {
    }
    // Refers to p without ever destroying it.
    TSharedPtr(T* p, SNoDestroy)
        : m_ptr(p), m_counter(p ? CReferenceCounter::Create() : nullptr), m_destroy(kNoDestroyWord)
    {
    }
    TSharedPtr(const TSharedPtr& other) : m_ptr(other.m_ptr), m_counter(other.m_counter), m_destroy(other.m_destroy)
    {
        if (m_counter) m_counter->AddRef();
    }
    TSharedPtr(TSharedPtr&& other) noexcept
        : m_ptr(other.m_ptr), m_counter(other.m_counter), m_destroy(other.m_destroy)
    {
        other.m_ptr = nullptr;
        other.m_counter = nullptr;
        other.m_destroy = 0;
    }
    // Implicit up-cast from a derived class.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    TSharedPtr(const TSharedPtr<U>& other)
        : m_ptr(other.get()), m_counter(other.counter()), m_destroy(other.destroyWord())
    {
        if (m_counter) m_counter->AddRef();
    }
    ~TSharedPtr() { reset(); }

    TSharedPtr& operator=(const TSharedPtr& other)
    {
        TSharedPtr copy(other);
        swap(copy);
        return *this;
    }
    TSharedPtr& operator=(TSharedPtr&& other) noexcept
    {
        TSharedPtr moved(std::move(other));
        swap(moved);
        return *this;
    }
    TSharedPtr& operator=(std::nullptr_t)
    {
        reset();
        return *this;
    }

    void reset()
    {
        T* p = m_ptr;
        CReferenceCounter* c = m_counter;
        uintptr_t d = m_destroy;
        m_ptr = nullptr;
        m_counter = nullptr;
        m_destroy = 0;
        if (c && c->Release()) {
            if (d == kDeleteWord) delete p;
            else if (d != kNoDestroyWord) reinterpret_cast<DestroyFunction>(d)(p);
        }
    }
    void swap(TSharedPtr& other) noexcept
    {
        std::swap(m_ptr, other.m_ptr);
        std::swap(m_counter, other.m_counter);
        std::swap(m_destroy, other.m_destroy);
    }

    T* get() const { return m_ptr; }
    T* operator->() const { return m_ptr; }
    T& operator*() const { return *m_ptr; }
    explicit operator bool() const { return m_ptr != nullptr; }
    bool isNull() const { return m_ptr == nullptr; }
    long useCount() const { return m_counter ? m_counter->count() : 0; }

    // Checked down-cast: null when the object is not a U. Shares the counter.
    template <class U>
    TSharedPtr<U> DynamicCast() const
    {
        U* p = dynamic_cast<U*>(m_ptr);
        return p ? TSharedPtr<U>(p, m_counter, m_destroy) : TSharedPtr<U>();
    }
    template <class U>
    TSharedPtr<U> StaticCast() const
    {
        return m_ptr ? TSharedPtr<U>(static_cast<U*>(m_ptr), m_counter, m_destroy) : TSharedPtr<U>();
    }

    CReferenceCounter* counter() const { return m_counter; }
    uintptr_t destroyWord() const { return m_destroy; }

    // Adopts an existing counter (adds a reference); used by the casts.
    TSharedPtr(T* p, CReferenceCounter* counter, uintptr_t destroy)
        : m_ptr(p), m_counter(counter), m_destroy(destroy)
    {
        if (m_counter) m_counter->AddRef();
    }

private:
    T* m_ptr = nullptr;
    CReferenceCounter* m_counter = nullptr;
    uintptr_t m_destroy = kDeleteWord;
};

template <class T, class U>
bool operator==(const TSharedPtr<T>& a, const TSharedPtr<U>& b) { return a.get() == b.get(); }
template <class T>
bool operator==(const TSharedPtr<T>& a, std::nullptr_t) { return a.get() == nullptr; }

} // namespace orv
