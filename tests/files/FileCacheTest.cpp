// The file cache: handle numbering, the fallback to a file object, byte and line reads.
#include <gtest/gtest.h>

#include <string>

#include "pind/files/FileCache.h"
#include "pind/files/PackFile.h"
#include "support/FakePackage.h"
#include "support/TempDir.h"

namespace {

class FileCacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_pack.files["a.txt"] = "ab\ncd";
        m_pack.files["b.txt"] = std::string(100, 'x');
        m_pack.files["ff.txt"] = "\377x";
    }
    pind::test::RecordingClient m_client;
    pind::test::FakePackage m_pack;
    const uint64_t m_base = FileCacheInstance().nIssued;  // handles count on from earlier tests
};

TEST_F(FileCacheTest, MemoryHandlesCountUpAndAreNeverReused) {
    const uint64_t one = CacheOpen("a.txt", "r", 0);
    EXPECT_EQ(one, m_base + 1);
    EXPECT_EQ(CacheOpen("b.txt", "r", 0), m_base + 2);
    CacheClose(one);
    EXPECT_EQ(m_pack.undumps, 1);
    EXPECT_EQ(CacheOpen("a.txt", "r", 0), m_base + 3);
    CacheClose(one);  // unknown now: ignored
    EXPECT_EQ(m_pack.undumps, 1);
    CacheClose(m_base + 2);
    CacheClose(m_base + 3);
    EXPECT_EQ(CacheOpen("missing.txt", "r", 0), 0u);
}

TEST_F(FileCacheTest, ReadBoundComparesPositionPlusCount) {
    char buf[128];
    // Of 100 bytes: at 92, 92 + 10 > 100 copies the 8 left; at 60, 60 + 30 <= 100 asks for
    // 4×30 = 120 bytes, cut to the 40 left.
    for (const int at : {92, 60}) {
        const uint64_t h = CacheOpen("b.txt", "r", 0);
        EXPECT_EQ(CacheRead(buf, 1, at, h), at);
        EXPECT_EQ(CacheRead(buf, 4, at == 92 ? 10 : 30, h), 100 - at);
        EXPECT_EQ(CacheRead(buf, 1, 1, h), 0);
        EXPECT_EQ(CacheRead(buf, -1, 1, h), 0);
        CacheClose(h);
    }
    EXPECT_EQ(CacheRead(buf, 1, 1, 0), 0);
}

TEST_F(FileCacheTest, LinesAndTheFfByte) {
    const uint64_t h = CacheOpen("a.txt", "r", 0);
    char buf[16];
    EXPECT_STREQ(CacheGets(buf, sizeof buf, h), "ab\n");
    EXPECT_STREQ(CacheGets(buf, 2, h), "c");
    EXPECT_EQ(CacheGets(buf, 1, h), nullptr);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_STREQ(CacheGets(buf, sizeof buf, h), "d");
    EXPECT_EQ(CacheGets(buf, sizeof buf, h), nullptr);
    CacheClose(h);

    const uint64_t f = CacheOpen("ff.txt", "r", 0);
    EXPECT_EQ(CacheGets(buf, sizeof buf, f), nullptr);
    EXPECT_EQ(FileCacheInstance().mapEntries[f].nPos, 0);  // the position stays on the 0xFF
    CacheClose(f);
}

TEST_F(FileCacheTest, FallsBackToAFileObjectWhenThePackageWillNotDump) {
    pind::test::TempDir dir;
    const std::string path = dir.Write("disk.txt", "line 1\r\nline 2\n");
    m_pack.refuseDump = true;
    const uint64_t h = CacheOpen(path.c_str(), "rb", 0);
    EXPECT_EQ(FileCacheInstance().nIssued, m_base);  // no memory handle issued
    EXPECT_TRUE(FileCacheInstance().mapEntries[h].IsFallback());
    char buf[16] = {};
    EXPECT_STREQ(CacheGets(buf, sizeof buf, h), "line 1");  // the file object's line rules
    EXPECT_EQ(CacheRead(buf, 2, 3, h), 3);                  // items, not bytes
    CacheClose(h);
    EXPECT_EQ(FileCacheInstance().mapEntries.count(h), 0u);
    EXPECT_EQ(m_pack.undumps, 0);
    EXPECT_EQ(CacheOpen(dir.File("none.txt").c_str(), "rb", 0), 0u);
}

}  // namespace
