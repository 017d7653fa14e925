#pragma once
// TArray<T>: the growable array every part of the system uses. Its growth,
// move and exception behaviour is part of the contract:
//  - adding one element needs size + 1; when that exceeds the capacity the new
//    capacity starts at the old one (1 if zero) and doubles until it covers it;
//  - capacity never shrinks, not even when the array is emptied;
//  - bitwise-movable elements grow by Realloc, others by Alloc + copy + Free;
//  - checked access throws "TArray: index out of range.".
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>

#include "orv/Memory.h"

namespace orv {

// Element types that may be moved with realloc. Trivially copyable types are;
// a type can opt in explicitly by specialising this trait.
template <class T>
struct TIsBitwiseMovable : std::bool_constant<std::is_trivially_copyable_v<T>> {};

template <class T>
class TArray {
public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    TArray() = default;
    TArray(std::initializer_list<T> values)
    {
        reserve(values.size());
        for (const T& v : values) add(v);
    }
    TArray(const TArray& other)
    {
        reserve(other.m_size);
        for (uint64_t i = 0; i < other.m_size; ++i) add(other.m_data[i]);
    }
    TArray(TArray&& other) noexcept
        : m_data(other.m_data), m_capacity(other.m_capacity), m_size(other.m_size)
    {
        other.m_data = nullptr;
        other.m_capacity = 0;
        other.m_size = 0;
    }
    TArray& operator=(const TArray& other)
    {
        if (this != &other) {
            clear();
            reserve(other.m_size);
            for (uint64_t i = 0; i < other.m_size; ++i) add(other.m_data[i]);
        }
        return *this;
    }
    TArray& operator=(TArray&& other) noexcept
    {
        if (this != &other) {
            Destroy();
            m_data = other.m_data;
            m_capacity = other.m_capacity;
            m_size = other.m_size;
            other.m_data = nullptr;
            other.m_capacity = 0;
            other.m_size = 0;
        }
        return *this;
    }
    virtual ~TArray() { Destroy(); }

    // --- size ---------------------------------------------------------------
    size_t size() const { return static_cast<size_t>(m_size); }
    size_t capacity() const { return static_cast<size_t>(m_capacity); }
    bool empty() const { return m_size == 0; }
    T* data() { return m_data; }
    const T* data() const { return m_data; }

    // --- element access -----------------------------------------------------
    // Checked: an index not below the size throws.
    T& operator[](size_t index)
    {
        if (index >= m_size) ThrowOutOfRangeException("TArray: index out of range.");
        return m_data[index];
    }
    const T& operator[](size_t index) const
    {
        if (index >= m_size) ThrowOutOfRangeException("TArray: index out of range.");
        return m_data[index];
    }
    T& at(size_t index) { return (*this)[index]; }
    const T& at(size_t index) const { return (*this)[index]; }
    // Unchecked, for loops whose bounds are already known.
    T& get(size_t index) { return m_data[index]; }
    const T& get(size_t index) const { return m_data[index]; }
    T& back() { return (*this)[m_size - 1]; }

    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }

    // --- modification -------------------------------------------------------
    // Appends one element; returns its index.
    size_t add(const T& value)
    {
        if (m_size + 1 > m_capacity) {
            // value may live inside this array: copy before the buffer moves.
            T copy(value);
            Grow(m_size + 1);
            new (m_data + m_size) T(std::move(copy));
        } else {
            new (m_data + m_size) T(value);
        }
        return static_cast<size_t>(m_size++);
    }
    size_t add(T&& value)
    {
        if (m_size + 1 > m_capacity) {
            T moved(std::move(value));
            Grow(m_size + 1);
            new (m_data + m_size) T(std::move(moved));
        } else {
            new (m_data + m_size) T(std::move(value));
        }
        return static_cast<size_t>(m_size++);
    }
    void push_back(const T& value) { add(value); }
    void push_back(T&& value) { add(std::move(value)); }

    // Inserts before index; index == size appends.
    void insert(size_t index, const T& value)
    {
        if (index > m_size) ThrowOutOfRangeException("TArray::insert: index out of range.");
        T copy(value);
        if (m_size + 1 > m_capacity) Grow(m_size + 1);
        if constexpr (TIsBitwiseMovable<T>::value) {
            std::memmove(static_cast<void*>(m_data + index + 1), m_data + index,
                         (m_size - index) * sizeof(T));
            new (m_data + index) T(std::move(copy));
        } else {
            if (index == m_size) {
                new (m_data + m_size) T(std::move(copy));
            } else {
                new (m_data + m_size) T(std::move(m_data[m_size - 1]));
                for (uint64_t i = m_size - 1; i > index; --i) m_data[i] = std::move(m_data[i - 1]);
                m_data[index] = std::move(copy);
            }
        }
        ++m_size;
    }

    // Removes the element at index; later elements move down one place.
    void remove(size_t index)
    {
        if (index >= m_size) ThrowOutOfRangeException("TArray::remove: index out of range.");
        if constexpr (TIsBitwiseMovable<T>::value) {
            m_data[index].~T();
            std::memmove(static_cast<void*>(m_data + index), m_data + index + 1,
                         (m_size - index - 1) * sizeof(T));
        } else {
            for (uint64_t i = index; i + 1 < m_size; ++i) m_data[i] = std::move(m_data[i + 1]);
            m_data[m_size - 1].~T();
        }
        --m_size;
    }

    // Destroys every element; the buffer and its capacity stay.
    void clear()
    {
        for (uint64_t i = 0; i < m_size; ++i) m_data[i].~T();
        m_size = 0;
    }

    // Empties the array and frees its buffer.
    void Destroy()
    {
        clear();
        Free(m_data);
        m_data = nullptr;
        m_capacity = 0;
    }

    // Makes room for at least n elements without changing the size.
    void reserve(size_t n)
    {
        if (n > m_capacity) Reallocate(n);
    }

    // Sets the size; new elements are value-initialised.
    void resize(size_t n)
    {
        if (n > m_capacity) Grow(n);
        for (uint64_t i = m_size; i < n; ++i) new (m_data + i) T();
        for (uint64_t i = n; i < m_size; ++i) m_data[i].~T();
        m_size = n;
    }

    // Linear search with operator==; -1 when absent.
    long find(const T& value) const
    {
        for (uint64_t i = 0; i < m_size; ++i)
            if (m_data[i] == value) return static_cast<long>(i);
        return -1;
    }
    bool contains(const T& value) const { return find(value) >= 0; }

private:
    void Grow(uint64_t needed)
    {
        uint64_t capacity = m_capacity ? m_capacity : 1;
        while (capacity < needed) capacity *= 2;
        Reallocate(capacity);
    }

    void Reallocate(uint64_t capacity)
    {
        if (capacity > SIZE_MAX / sizeof(T)) ThrowBadAllocException();
        if constexpr (TIsBitwiseMovable<T>::value) {
            void* p = Realloc(m_data, capacity * sizeof(T));
            if (!p) ThrowBadAllocException();
            m_data = static_cast<T*>(p);
        } else {
            T* p = static_cast<T*>(Alloc(capacity * sizeof(T)));
            if (!p) ThrowBadAllocException();
            for (uint64_t i = 0; i < m_size; ++i) {
                new (p + i) T(m_data[i]);
                m_data[i].~T();
            }
            Free(m_data);
            m_data = p;
        }
        m_capacity = capacity;
    }

    T* m_data = nullptr;
    uint64_t m_capacity = 0;
    uint64_t m_size = 0;
};

} // namespace orv
