#include "common/source/source_utilities/uMutex.h"

namespace MORA_LUX {

uMutex::uMutex() : m_count(0), m_owner(pthread_t())
{
    pthread_mutex_init(&m_mutex, nullptr);
}

uMutex::~uMutex()
{
    pthread_mutex_destroy(&m_mutex);
}

bool uMutex::Lock()
{
    const pthread_t self = pthread_self();
    if (pthread_equal(self, m_owner.load(std::memory_order_relaxed))) {
        m_count.fetch_add(1, std::memory_order_relaxed);
        return true;
    }
    if (pthread_mutex_lock(&m_mutex) != 0)
        return false;
    m_owner.store(self, std::memory_order_relaxed);
    m_count.fetch_add(1, std::memory_order_relaxed);
    return true;
}

bool uMutex::Unlock()
{
    if (!pthread_equal(pthread_self(), m_owner.load(std::memory_order_relaxed)))
        return false;
    if (m_count.load(std::memory_order_relaxed) <= 0)
        return true;
    if (m_count.fetch_sub(1, std::memory_order_relaxed) - 1 > 0)
        return true;
    // Clear the owner before releasing, so no other thread can find itself there.
    m_owner.store(pthread_t(), std::memory_order_relaxed);
    pthread_mutex_unlock(&m_mutex);
    return true;
}

bool uMutex::IsLocked() const
{
    return m_count.load(std::memory_order_relaxed) > 0;
}

pthread_t uMutex::GetOwnerThreadHandle()
{
    return m_owner.load(std::memory_order_relaxed);
}

} // namespace MORA_LUX
