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
            delete this;
            return true;
        }
        return false;
    }
    long count() const { return m_count.load(std::memory_order_relaxed); }

private:
    CReferenceCounter() = default;
    std::atomic<long> m_count{1};
};

} // namespace orv
