// CMyLockCs: mutual exclusion between threads, recursion within one.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "pind/diag/LockCs.h"

namespace {

TEST(LockCs, TwoThreadsRunTheirGuardedSectionsOneAfterTheOther) {
    CMyLockCs lock;
    int inside = 0, overlaps = 0;
    long total = 0;
    auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            EXPECT_TRUE(lock.Lock());
            overlaps += ++inside != 1;
            total += 1;  // unsynchronised except by the lock
            --inside;
            lock.Unlock();
        }
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    EXPECT_EQ(overlaps, 0);
    EXPECT_EQ(total, 40000);
}

TEST(LockCs, OwnerLocksTwiceAndUnlocksTwiceThenAnotherThreadGetsIt) {
    CMyLockCs lock;
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    std::atomic<bool> acquired{false};
    std::thread other([&] {
        lock.Lock();
        acquired = true;
        lock.Unlock();
    });
    lock.Unlock();
    EXPECT_FALSE(acquired);  // still held once
    lock.Unlock();
    other.join();
    EXPECT_TRUE(acquired);
}

TEST(LockCs, CopiesOfAnIdleLockAreUsable) {
    CMyLockCs original;
    CMyLockCs copy(original);
    CMyLockCs assigned;
    assigned = original;
    for (CMyLockCs* l : {&original, &copy, &assigned}) {
        EXPECT_TRUE(l->Lock());
        l->Unlock();
    }
    // A copy held by this thread does not block the original on another.
    copy.Lock();
    std::atomic<bool> acquired{false};
    std::thread t([&] {
        original.Lock();
        acquired = true;
        original.Unlock();
    });
    t.join();
    copy.Unlock();
    EXPECT_TRUE(acquired);
}

}  // namespace
