// Object counts and the heap report: the table's rows and totals, the UTC + 8 stamp that is not
// wrapped, the heap sums over a scripted walk, and reports that cannot be opened.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/profile/ProfileObjects.h"
#include "profile/ProfileTestSupport.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace pind::test {
namespace {

using ProfileObjects = ProfilerFixture;

std::string ObjectReport(const TempDir& dir) {
    PrintfProfileObjectCountInfo();
    return Lf(dir.Read("Profile/PrintfProfileObjectCountInfo.txt"));
}

TEST_F(ProfileObjects, CountsLiveObjectsAndKeepsTheFirstSize) {
    m_dir.Write("Profile/.keep", "");
    m_clock.SetUnixTimeMs(1715113800000);  // 2024-05-07 20:30:00 UTC
    for (int i = 0; i < 3; ++i) AddProfileObject("CUnitObjTest", 48);
    AddProfileObject("CBigObjTest", 4096);
    AddProfileObject("CBigObjTest", 1);  // size of the first registration stays
    RemoveProfileObject("CUnitObjTest");
    RemoveProfileObject("CNeverAddedObjTest");
    RemoveProfileObject(nullptr);
    AddProfileObject(nullptr, 8);

    const std::string text = ObjectReport(m_dir);
    EXPECT_EQ(
        text.rfind("==========PrintfProfileObjectCountInfo[2024-5-7 28:30:0]=============\n", 0),
        0u)
        << text;
    // In byte order, "CNever..." absent from between them.
    EXPECT_NE(text.find("ClassName[CBigObjTest     ], Size[4096    B], Count[2       ],  "
                        "UseMemory[8       k]\n"
                        "ClassName[CUnitObjTest    ], Size[48      B], Count[2       ],  "
                        "UseMemory[0       k]\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(ObjectReport(m_dir), text + text);  // appended, not replaced
}

TEST_F(ProfileObjects, ReportsGoNowhereWithoutTheirFolder) {
    AddProfileObject("CNoFolderObjTest", 8);
    PrintfProfileObjectCountInfo();
    PrintHeapInfo();
    EXPECT_EQ(Lf(m_dir.Read("Profile/PrintfProfileObjectCountInfo.txt")), "");
}

platform::HeapEntry Entry(uintptr_t data, uint32_t size, uint16_t flags, uintptr_t first = 0) {
    return platform::HeapEntry{data, size, 0, 0, flags, 0, 0, first, 0};
}

TEST(HeapSums, AddEachKindOfEntryAsTheReportDoes) {
    const uintptr_t base = 0x10000;
    const auto sums = [](const std::vector<platform::HeapEntry>& entries) {
        const HeapTotals t = SumHeapEntries(reinterpret_cast<platform::HeapHandle>(base), entries);
        return std::vector<int64_t>{t.nTotal, t.nCommitted, t.nUncommitted};
    };
    const platform::HeapEntry header = Entry(base, 0, platform::kHeapEntryRegion, base + 0x400);
    EXPECT_EQ(sums({}), (std::vector<int64_t>{0, 0, 0}));
    // A busy block spans to the next entry; the last entry adds its own size.
    EXPECT_EQ(sums({header, Entry(base + 0x400, 16, platform::kHeapEntryBusy),
                    Entry(base + 0x500, 64, 0)}),
              (std::vector<int64_t>{0x400 + 0x100 + 64, 0x400 + 0x100 + 64, 0}));
    EXPECT_EQ(sums({header, Entry(base + 0x8000, 0x2000, platform::kHeapEntryUncommitted)}),
              (std::vector<int64_t>{0x400 + 0x2000, 0x400, 0x2000}));
}

}  // namespace
}  // namespace pind::test
