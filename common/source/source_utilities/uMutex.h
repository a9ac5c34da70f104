// Re-entrant, thread-owned lock: a plain POSIX mutex plus an owner and a count.
#ifndef MORA_LUX_UMUTEX_H
#define MORA_LUX_UMUTEX_H

#include <pthread.h>
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
    int32_t m_count;
    pthread_t m_owner;
};

} // namespace MORA_LUX

#endif
