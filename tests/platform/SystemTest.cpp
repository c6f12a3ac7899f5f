// Process and file-system services with the Windows functions' results.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "pind/platform/System.h"
#include "support/TempDir.h"

namespace pind::platform {
namespace {

TEST(System, ModuleFileNameIsThisProgramAndCutsLikeWindows) {
    char path[1024];
    const uint32_t n = ModuleFileName(path, sizeof path);
    EXPECT_EQ(std::strlen(path), n);
    EXPECT_NE(std::string(path).find("pind_platform_tests"), std::string::npos) << path;

    char small[8];
    EXPECT_EQ(ModuleFileName(small, sizeof small), sizeof small);  // cut: the size comes back
    EXPECT_EQ(std::string(small), std::string(path, sizeof small - 1));
}

TEST(System, PrivateProfileIntReadsLikeWindows) {
    test::TempDir dir;
    const std::string ini =
        dir.Write("GameSetup.ini",
                  "; comment\nStray=5\n[Other]\nProfile=9\n[ framerate ]\n  PROFILE = 1\n"
                  "ProfileInterval=0x14\nNegative=-5\nLetters=abc\nEmpty=\nQuoted=\"42\"\n"
                  "Binary=0b101\n");
    // Section, key, default, result.
    const std::tuple<const char*, const char*, int, uint32_t> cases[] = {
        {"FrameRate", "Profile", 0, 1},  // section and key ignore case and blanks
        {"FrameRate", "ProfileInterval", 10, 20},
        {"FrameRate", "Negative", 0, 0xFFFFFFFBu},
        {"FrameRate", "Letters", 7, 0},  // present but not a number: 0
        {"FrameRate", "Empty", 7, 7},    // empty: the default
        {"FrameRate", "Quoted", 0, 42},
        {"FrameRate", "Binary", 0, 5},
        {"FrameRate", "Stray", 8, 8},  // keys before any section belong to none
        {"Missing", "Profile", -1, 0xFFFFFFFFu},
        {"Other", "Profile", 0, 9},
    };
    for (const auto& [section, key, def, want] : cases) {
        EXPECT_EQ(PrivateProfileInt(section, key, def, ini.c_str()), want) << section << "/" << key;
    }
    EXPECT_EQ(PrivateProfileInt("FrameRate", "Profile", 4, dir.File("none.ini").c_str()), 4u);
    EXPECT_EQ(PrivateProfileInt(nullptr, "Profile", 4, ini.c_str()), 4u);
}

TEST(System, ThreadTimesGrowWithWork) {
    ThreadTimes before{}, after{};
    ASSERT_TRUE(GetThreadTimes(&before));
    // Busy until the thread's own clock moves (its tick may be coarse and a loaded machine may
    // give this thread little time), or for at most 10 s, which a frozen clock would hit.
    volatile double x = 1;
    const auto start = std::chrono::steady_clock::now();
    do {
        for (int i = 0; i < 100000; ++i) x = x * 1.0000001;
        ASSERT_TRUE(GetThreadTimes(&after));
    } while (after.user + after.kernel == before.user + before.kernel &&
             std::chrono::steady_clock::now() - start < std::chrono::seconds(10));
    EXPECT_GT(after.user + after.kernel, before.user + before.kernel);
    EXPECT_FALSE(GetThreadTimes(nullptr));
}

TEST(System, HeapWalkGivesWin32ShapedEntries) {
    HeapHandle handles[255];
    const uint32_t count = ProcessHeaps(255, handles);
    ASSERT_GE(count, 1u);
    for (uint32_t i = 0; i < count && i < 255; ++i) {
        std::vector<HeapEntry> entries;
        ASSERT_TRUE(WalkHeap(handles[i], &entries)) << i;
        // Every heap opens with a region whose first block lies past the heap's header, and the
        // entries lie in address order, as the heap report's arithmetic expects.
        EXPECT_NE(entries[0].flags & kHeapEntryRegion, 0);
        EXPECT_GT(entries[0].firstBlock, reinterpret_cast<uintptr_t>(handles[i]));
        for (size_t k = 1; k < entries.size(); ++k) {
            EXPECT_GE(entries[k].data, entries[k - 1].data) << i << "/" << k;
        }
    }
    EXPECT_FALSE(WalkHeap(handles[0], nullptr));
}

TEST(System, ReadableStringProbeFindsTextWhereverItLivesAndDoesNotFault) {
    EXPECT_FALSE(IsReadableString(nullptr, 1));
    EXPECT_FALSE(IsReadableString(reinterpret_cast<const char*>(uintptr_t{16}), 1));
    static const char s_static[] = "static";
    const std::string heap(100, 'h');
    std::vector<char> big(std::size_t{1} << 20, 'b');  // a block of its own mapping
    big.back() = '\0';
    auto probeAll = [&] {
        const char local[] = "stack";
        for (const char* text :
             {s_static, "literal", heap.c_str(), static_cast<const char*>(big.data()), &local[0]}) {
            EXPECT_TRUE(IsReadableString(text, big.size()));  // stops at the terminator
        }
    };
    probeAll();
    std::thread(probeAll).join();
}

}  // namespace
}  // namespace pind::platform
