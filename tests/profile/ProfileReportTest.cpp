// The statistics report's bytes for a fixed tree and fixed times, scopes from several threads, bad
// names and sizes, the Chrome trace read back with a JSON parser, and the object-count report with
// the heap sums.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "pind/json/FmtJson.h"
#include "pind/profile/ProfileObjects.h"
#include "pind/profile/Profiler.h"
#include "pind/time/TimeText.h"
#include "profile/ProfileTestSupport.h"

namespace pind::test {
namespace {

void Scene(FakeClock& clock) {
    PIND_PROFILE_SCOPE("CGame::Frame");
    clock.AdvanceMs(2);
    {
        PIND_PROFILE_SCOPE("CWorld::Update");
        clock.AdvanceMs(5);
    }
    {
        PIND_PROFILE_SCOPE("CScene::Draw[2]");
        clock.AdvanceMs(1);
        PIND_PROFILE_SCOPE("CTerrain::Draw");
        clock.AdvanceMs(3);
    }
}

struct TraceEvent {
    std::string ph, name;
    int64_t tid;
    float dur;
};

// The "traceEvents" of a trace file read with the library's strict JSON parser; none when it fails.
std::vector<TraceEvent> ReadTrace(const std::string& text) {
    std::vector<TraceEvent> events;
    JsonNode* doc = JsonParse(text.data(), text.size());
    const JsonNode* array = JsonObjectMember(doc, "traceEvents");
    for (const JsonNode* e = array != nullptr ? array->pChild : nullptr; e != nullptr;
         e = e->pNext) {
        events.push_back({JsonGetString(JsonObjectMember(e, "ph"), ""),
                          JsonGetString(JsonObjectMember(e, "name"), ""),
                          JsonGetInt64(JsonObjectMember(e, "tid"), -1),
                          JsonGetFloat(JsonObjectMember(e, "dur"), 0)});
    }
    JsonFree(doc);
    return events;
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST_F(ProfilerFixture, ReportMatchesExpectedBytes) {
    Enable(0);
    m_client.description = "PindBase test host";
    Scene(m_clock);
    Scene(m_clock);
    {
        PIND_PROFILE_SCOPE("Loader");
        m_clock.AdvanceMs(3);
    }
    ProfileAddClassifyTime(2, 1.5f);
    ProfileAddClassifyTime(-1, 0.25f);
    ProfileAddClassifyTime(2, 1.0f);
    ASSERT_TRUE(ProfileWriteReport("report.log"));

    std::ifstream in(
        std::string(PIND_EXAMPLES_DIR) + "/../../tests/profile/data/statistics_report.txt",
        std::ios::binary);
    std::string want(std::istreambuf_iterator<char>(in), {});
    ASSERT_NE(want.find("@TIME@"), std::string::npos);
    want.replace(want.find("@TIME@"), 6, ServerTimeText(4));
    EXPECT_EQ(Lf(m_dir.Read("report.log")), want);
}

TEST_F(ProfilerFixture, ScopesFromFourThreadsAllCount) {
    Enable(0);
    constexpr int kThreads = 4, kPerThread = 2000;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < kPerThread; ++i) {
                PIND_PROFILE_SCOPE("Worker");
                CProfileScope named(i % 2 == 0 ? "Even" : "Odd");
                ProfileAddClassifyTime(1, 0.0f);
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        PIND_PROFILE_SCOPE("MainLoop");
        char written = 0;
        ProfileFrame(&written);
    }
    for (std::thread& t : threads) t.join();
    ASSERT_TRUE(ProfileWriteReport("threads.log"));
    const std::string text = Lf(m_dir.Read("threads.log"));
    // Only the main thread's scopes form the tree.
    EXPECT_EQ(Count(text, "\tMainLoop"), 0u);
    EXPECT_EQ(Count(text, "-> Worker"), 0u);
    // No interval rolled over (the clock stood still), so counts are whole.
    EXPECT_NE(text.find("\xd7\xdc\xb9\xb2\xb5\xf7\xd3\xc3:8000 "), std::string::npos);
    EXPECT_EQ(Count(text, "\xd7\xdc\xb9\xb2\xb5\xf7\xd3\xc3:4000 "), 2u);  // Even, Odd
    ASSERT_TRUE(ProfileWriteChromeTrace("threads.json"));
    std::set<int64_t> tids;
    for (const TraceEvent& e : ReadTrace(m_dir.Read("threads.json"))) tids.insert(e.tid);
    EXPECT_EQ(tids.size(), kThreads + 1u);  // every thread's scopes, by its own id
}

TEST_F(ProfilerFixture, BadNamesAndSizesStayBounded) {
    Enable(0);
    // Names the dot graph and the JSON must survive.
    for (const char* name : {"A:B[1]", "quote\"d", "\xb5\xf7\xd3\xc3", "back\\slash", ""}) {
        PIND_PROFILE_SCOPE("Outer");
        CProfileScope scope(name);
        m_clock.AdvanceMs(1);
    }
    // 1,000 levels of recursion of one site.
    struct Recurse {
        static void Run(int depth) {
            PIND_PROFILE_SCOPE("Recurse");
            if (depth > 0) Run(depth - 1);
        }
    };
    Recurse::Run(1000);
    // 10,000 distinct names: all counted, though the tree stops growing at its node bound.
    for (int i = 0; i < 10000; ++i) {
        CProfileScope scope(("Section" + std::to_string(i)).c_str());
    }

    ASSERT_TRUE(ProfileWriteReport("bad.log"));
    const std::string text = Lf(m_dir.Read("bad.log"));
    EXPECT_EQ(Count(text, "--[Section"), 10000u);
    EXPECT_NE(text.find("\tOuter -> A_B_1_\n"), std::string::npos);
    EXPECT_NE(text.find("\tOuter -> \xb5\xf7\xd3\xc3\n"), std::string::npos);
    // The tree stops growing at its depth bound: far fewer edges than levels.
    const size_t recursion = Count(text, "Recurse -> Recurse");
    EXPECT_LT(recursion, 100u);

    ASSERT_TRUE(ProfileWriteChromeTrace("bad.json"));
    std::set<std::string> names;
    for (const TraceEvent& e : ReadTrace(m_dir.Read("bad.json"))) names.insert(e.name);
    EXPECT_EQ(names.count("quote\"d"), 1u);
    EXPECT_EQ(names.count("\xc2\xb5\xc3\xb7\xc3\x93\xc3\x83"), 1u);  // each GBK byte as U+00XX
}

TEST_F(ProfilerFixture, TraceKeepsTheLastFramesOnly) {
    Enable(0);
    ProfileSetTraceFrames(3);
    for (int frame = 0; frame < 10; ++frame) {
        Frame(1);
        PIND_PROFILE_SCOPE("Tick");
        m_clock.AdvanceMs(2);
    }
    ASSERT_TRUE(ProfileWriteChromeTrace("trace.json"));
    ProfileSetTraceFrames(300);
    int frames = 0, scopes = 0;
    for (const TraceEvent& e : ReadTrace(m_dir.Read("trace.json"))) {
        frames += e.ph == "i";
        if (e.ph == "X") {
            ++scopes;
            EXPECT_EQ(e.dur, 2000.0f);
        }
    }
    EXPECT_EQ(frames, 3);
    EXPECT_EQ(scopes, 3);  // the scopes of the kept frames: frame 8 and 9 ended; 7's too
    EXPECT_FALSE(ProfileWriteChromeTrace("no/such/dir/t.json"));
    EXPECT_FALSE(ProfileWriteChromeTrace(nullptr));
}

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
