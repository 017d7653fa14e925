#pragma once
#include <atomic>

namespace orv {

// Thread-safe reference count shared by all copies of one TSharedPtr.
// Created with one reference; the Release that drops the last one deletes the
// counter and returns true, after which the holder destroys the object.
class CReferenceCounter {
public:
    static CReferenceCounter* Create() { return new CReferenceCounter(); }
    void AddRef() { m_count.fetch_add(1, std::memory_order_relaxed); }
    bool Release()
    {
        if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            Destroy(this);
            return true;
        }
        return false;
    }
    long count() const { return m_count.load(std::memory_order_relaxed); }

private:
    // Out of line on purpose: with the delete inlined, g++ 12 reports a
    // use-after-free (-Werror) in any loop that copies and drops a shared
    // pointer, since it cannot see that a live copy keeps the count above 0.
    [[gnu::noinline]] static void Destroy(CReferenceCounter* counter) { delete counter; }

    CReferenceCounter() = default;
    std::atomic<long> m_count{1};
};

} // namespace orv
