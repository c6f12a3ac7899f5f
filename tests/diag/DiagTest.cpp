// Diagnostics: the lock's exclusion and recursion, the log-message and assertion reports, and
// the string memory tracker with its +1 drift per add/remove pair (process-wide, so checks use
// differences).
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "pind/diag/LockCs.h"
#include "pind/diag/Report.h"
#include "pind/diag/StringMem.h"
#include "support/EngineLogCapture.h"
#include "support/RecordingClient.h"
#include "support/TempDir.h"

namespace pind::test {
namespace {

TEST(LockCs, TwoThreadsRunTheirGuardedSectionsOneAfterTheOther) {
    CMyLockCs lock;
    int inside = 0, overlaps = 0;
    auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            EXPECT_TRUE(lock.Lock());
            overlaps += ++inside != 1;  // unsynchronised except by the lock
            --inside;
            lock.Unlock();
        }
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    EXPECT_EQ(overlaps, 0);
}

// The owner may lock again; a copy, made while idle, is a lock of its own.
TEST(LockCs, OwnerLocksTwiceAndUnlocksTwiceAndACopyIsFree) {
    CMyLockCs lock;
    CMyLockCs copy;
    copy = lock;
    ASSERT_TRUE(lock.Lock());
    ASSERT_TRUE(lock.Lock());
    std::atomic<int> stage{0};
    std::thread other([&] {
        EXPECT_TRUE(copy.Lock());
        copy.Unlock();
        stage = 1;
        lock.Lock();
        stage = 2;
        lock.Unlock();
    });
    while (stage == 0) std::this_thread::yield();
    lock.Unlock();
    EXPECT_EQ(stage, 1);  // still held once
    lock.Unlock();
    other.join();
    EXPECT_EQ(stage, 2);
}

TEST(Report, LogMessageAndIfNotForwardNonEmptyTextCutAtTheBuffer) {
    EngineLogCapture log;
    LogMessage("VOFRead pack error, pack_name = %s", "ini/a.ini");
    LogMessage("%s", "");
    LogMessage(nullptr);
    LogMessage("100%%");
    const std::string big(kLogMessageCapacity + 100, 'x');
    LogMessage("%s", big.c_str());
    ReportIfNot("pszSection && pszIndex", "PindIni", 555);
    ReportIfNot(nullptr, nullptr, 0);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"VOFRead pack error, pack_name = ini/a.ini", "100%",
                                        big.substr(0, kLogMessageCapacity - 1),
                                        "IF_NOT(pszSection && pszIndex) in PindIni, 555",
                                        "IF_NOT() in , 0"}));
}

TEST(Report, AssertGoesToTheDebugObject) {
    EngineLogCapture log;
    RecordingDebug debug;
    ReportAssert("false", 120, "spline");
    EXPECT_EQ(debug.texts, std::vector<std::string>{"ASSERT(false) in 120 line of spline"});
    EXPECT_TRUE(log.Lines().empty());
}

// Report files are opened in text mode, which on Windows ends lines with "\r\n".
std::string Lf(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

TEST(StringMem, TotalFollowsAddsAndRemoves) {
    static char a[8], b[8];
    int32_t last = StringMemTotal();
    const auto change = [&last] {
        return StringMemTotal() - std::exchange(last, StringMemTotal());
    };
    StringMemAdd(a, "hello");
    StringMemRemove(a);
    EXPECT_EQ(change(), 1);  // an add counts the terminator, a remove does not
    StringMemAdd(a, static_cast<const char*>(nullptr));
    StringMemAdd(a, "");
    StringMemRemove(b);                    // never added
    EXPECT_EQ(StringMemCopyTag(b, a), b);  // nothing to copy from an untagged address
    EXPECT_EQ(change(), 0);
    StringMemAdd(a, std::string("abc"));
    StringMemAdd(a, "defgh");
    EXPECT_EQ(change(), 4 + 6);  // both count; the address keeps the last tag
    StringMemRetag(a, "xy");
    StringMemRetag(a, nullptr);   // keeps the tag
    EXPECT_EQ(change(), -5 + 3);  // a remove, then an add
    StringMemCopyTag(b, a);
    StringMemRemove(a);
    StringMemRemove(b);
    EXPECT_EQ(change(), 3 - 2 - 2);
}

TEST(StringMem, DumpListsTagsByAddress) {
    TempDir dir;
    ScopedCurrentDir cwd(dir.Path());
    static char buffer[2];
    StringMemAdd(&buffer[1], "second");
    StringMemAdd(&buffer[0], "\xb5\xf7 first");
    StringMemDump();
    const std::string text = Lf(dir.Read("profile/StringExMemory.txt"));
    char head[64];
    std::snprintf(head, sizeof head, "=====TotalSize: %d======\n", StringMemTotal());
    EXPECT_EQ(text.rfind(head, 0), 0u) << text;
    char lines[256];
    std::snprintf(lines, sizeof lines, "%p  =  8        \xb5\xf7 first\n%p  =  6        second\n",
                  static_cast<void*>(&buffer[0]), static_cast<void*>(&buffer[1]));
    EXPECT_NE(text.find(lines), std::string::npos) << text;  // in address order
    StringMemRemove(&buffer[0]);
    StringMemRemove(&buffer[1]);

    // A second dump replaces the file; one into a folder that cannot be made writes nothing.
    StringMemDump();
    EXPECT_EQ(Lf(dir.Read("profile/StringExMemory.txt")).find("second"), std::string::npos);
    TempDir other;
    other.Write("profile", "a file where the folder should be");
    ScopedCurrentDir cwd2(other.Path());
    StringMemDump();
    EXPECT_EQ(Lf(other.Read("profile")), "a file where the folder should be");
}

}  // namespace
}  // namespace pind::test
