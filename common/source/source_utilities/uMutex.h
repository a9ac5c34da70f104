// Re-entrant, thread-owned lock: a plain POSIX mutex plus an owner and a count.
#ifndef MORA_LUX_UMUTEX_H
#define MORA_LUX_UMUTEX_H

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace MORA_LUX {

class uMutex
{
public:
    uMutex();
    ~uMutex();
    uMutex(const uMutex&) = delete;
    uMutex& operator=(const uMutex&) = delete;

    /// Takes the lock, again and again on the owning thread. False when the
    /// POSIX lock fails; nothing changes then.
    bool Lock();
    /// Releases one level; the outermost release frees the lock. False when the
    /// calling thread is not the owner.
    bool Unlock();
    /// True while some thread holds the lock (a snapshot seen from other threads).
    bool IsLocked() const;
    /// The holding thread, 0 when free.
    pthread_t GetOwnerThreadHandle();

private:
    pthread_mutex_t m_mutex;
    // Atomic only so that the unlocked reads from other threads are defined;
    // relaxed order suffices because only the owner writes its own id.
    std::atomic<int32_t> m_count;
    std::atomic<pthread_t> m_owner;
};

/// Holds a uMutex for the lifetime of a scope.
class uMutexGuard
{
public:
    explicit uMutexGuard(uMutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~uMutexGuard() { m_mutex.Unlock(); }
    uMutexGuard(const uMutexGuard&) = delete;
    uMutexGuard& operator=(const uMutexGuard&) = delete;

private:
    uMutex& m_mutex;
};

} // namespace MORA_LUX

#endif
