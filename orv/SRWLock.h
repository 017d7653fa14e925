#pragma once
#include <shared_mutex>

namespace orv {

// Reader-writer lock. Nothing in the library takes it on its own; callers
// that share an object between threads bracket their use with it.
class CSRWLock {
public:
    CSRWLock() = default;
    ~CSRWLock() = default;
    CSRWLock(const CSRWLock&) = delete;
    CSRWLock& operator=(const CSRWLock&) = delete;

    void ReadLock() { m_mutex.lock_shared(); }
    void ReadUnlock() { m_mutex.unlock_shared(); }
    void WriteLock() { m_mutex.lock(); }
    void WriteUnlock() { m_mutex.unlock(); }

private:
    std::shared_mutex m_mutex;
};

} // namespace orv
