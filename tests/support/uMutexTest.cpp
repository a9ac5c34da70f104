#include "common/source/source_utilities/uMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

using MORA_LUX::uMutex;

TEST(uMutex, RecursiveLockIsHeldUntilTheOutermostUnlockAndOnlyTheOwnerUnlocks)
{
    uMutex mutex;
    ASSERT_TRUE(mutex.Lock());
    ASSERT_TRUE(mutex.Lock());
    std::atomic<bool> acquired{false}, release{false};
    std::thread other([&] {
        mutex.Lock();
        acquired = true;
        while (!release)
            std::this_thread::yield();
        mutex.Unlock();
    });

    EXPECT_TRUE(mutex.Unlock());
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(acquired) << "one unlock of two must keep the lock";
    EXPECT_TRUE(mutex.Unlock());
    while (!acquired)
        std::this_thread::yield();

    EXPECT_FALSE(mutex.Unlock()) << "not the owner";
    EXPECT_TRUE(mutex.IsLocked());
    release = true;
    other.join();
    EXPECT_FALSE(mutex.IsLocked());
    EXPECT_FALSE(mutex.Unlock()) << "a free lock has no owner to match";
}
