#include "base/threads/nxMutex.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "base/threads/nxMutexGuard.h"
#include "base/threads/nxSpinLockGuard.h"

namespace {

TEST(nxMutex, ThePlainOneRefusesItsHolderASecondLock)
{
    nxMutex mutex;
    {
        const nxMutexGuard guard(mutex);
        EXPECT_EQ(mutex.Lock(), nxError_LockFailed);
        {
            const nxMutexGuard second(mutex);
        }
        // The inner guard, refused, has left the lock to the outer one.
        EXPECT_TRUE(mutex.Unlock().IsSuccess());
        EXPECT_TRUE(mutex.Lock().IsSuccess());
    }
}

TEST(nxMutex, OnlyItsHolderUnlocks)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the thread sanitizer takes the refused unlocks for faults";
#endif
    nxMutex plain;
    nxMutex recursive(true);
    for (nxMutex* const mutex : {&plain, &recursive}) {
        EXPECT_EQ(mutex->Unlock(), nxError_UnlockFailed);
        EXPECT_TRUE(mutex->Lock().IsSuccess());
        if (mutex == &recursive) {
            EXPECT_TRUE(mutex->Lock().IsSuccess());
            EXPECT_TRUE(mutex->Unlock().IsSuccess());
        }
        std::thread([&] { EXPECT_EQ(mutex->Unlock(), nxError_UnlockFailed); }).join();
        EXPECT_TRUE(mutex->Unlock().IsSuccess());
        EXPECT_EQ(mutex->Unlock(), nxError_UnlockFailed);
    }
}

template <class Lock, class Guard>
void CheckExclusion()
{
    constexpr int threads = 4;
    constexpr int turns = 5000;
    Lock lock;
    long long count = 0;
    std::vector<std::thread> all;
    for (int i = 0; i < threads; ++i)
        all.emplace_back([&] {
            for (int turn = 0; turn < turns; ++turn) {
                const Guard guard(lock);
                count = count + 1;
            }
        });
    for (std::thread& thread : all)
        thread.join();
    EXPECT_EQ(count, threads * turns);
}

TEST(nxMutex, KeepsThreadsApart)
{
    CheckExclusion<nxMutex, nxMutexGuard>();
}
TEST(nxSpinLock, KeepsThreadsApart)
{
    CheckExclusion<nxSpinLock, nxSpinLockGuard>();
}

}  // namespace
