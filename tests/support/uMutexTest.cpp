#include "common/source/source_utilities/uMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using MORA_LUX::uMutex;

namespace {

// Gives a waiting thread time to (wrongly) get through.
void Pause()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

} // namespace

TEST(uMutex, ReentrantLockIsHeldUntilTheOutermostUnlock)
{
    uMutex mutex;
    EXPECT_FALSE(mutex.IsLocked());
    ASSERT_TRUE(mutex.Lock());
    ASSERT_TRUE(mutex.Lock());
    EXPECT_TRUE(pthread_equal(mutex.GetOwnerThreadHandle(), pthread_self()));

    std::atomic<bool> acquired{false};
    std::thread other([&] {
        mutex.Lock();
        acquired = true;
        mutex.Unlock();
    });

    EXPECT_TRUE(mutex.Unlock());
    Pause();
    EXPECT_FALSE(acquired) << "one unlock of two must keep the lock";
    EXPECT_TRUE(mutex.IsLocked());

    EXPECT_TRUE(mutex.Unlock());
    other.join();
    EXPECT_TRUE(acquired);
    EXPECT_FALSE(mutex.IsLocked());
    EXPECT_EQ(mutex.GetOwnerThreadHandle(), pthread_t());
}

TEST(uMutex, UnlockByNonOwnerLeavesTheHolderIntact)
{
    uMutex mutex;
    std::atomic<bool> held{false};
    std::atomic<bool> release{false};
    std::thread holder([&] {
        mutex.Lock();
        held = true;
        while (!release)
            std::this_thread::yield();
        mutex.Unlock();
    });
    while (!held)
        std::this_thread::yield();

    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(mutex.IsLocked());
    release = true;
    holder.join();

    EXPECT_FALSE(mutex.Unlock()) << "a free lock has no owner to match";
    EXPECT_TRUE(mutex.Lock());
    EXPECT_TRUE(mutex.Unlock());
}
