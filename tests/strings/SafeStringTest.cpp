// The null-safe string helpers: neutral results and exact engine-log lines on misuse, silence and
// the runtime's results otherwise. The _itoa_s family itself is tested with the platform seams.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "pind/strings/SafeString.h"
#include "support/EngineLogCapture.h"

namespace {

const int32_t kI32 = 5;
const uint32_t kU32 = 5;

TEST(SafeString, NullGivesTheNeutralResultAndOneLogLine) {
    pind::test::EngineLogCapture log;
    auto expect = [&log](bool bNeutral, const char* pszMessage) {  // called after the call logged
        EXPECT_TRUE(bNeutral) << pszMessage;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{pszMessage});
        log.Clear();
    };
    expect(SafeStrlen(nullptr) == 0, "SafeStrlen param is null");
    expect(SafeStrstr(nullptr, "a") == nullptr, "SafeStrstr param is null");
    expect(SafeStrchr(nullptr, 'a') == nullptr, "SafeStrchr param is null");
    expect(SafeStrrchr(nullptr, 'a') == nullptr, "SafeStrrchr param is null");
    expect(SafeItoA(&kI32, nullptr, 8, 10) == -1, "SafeItoA param is null");
    expect(SafeStrtoul(nullptr, nullptr, 10) == 0, "SafeStrtoul param is null");
    expect(SafeStrtol(nullptr, nullptr, 10) == 0, "SafeStrtol param is null");
    expect(SafeAtoi64(nullptr) == 0, "SafeAtoi64 param is null or empty");
    expect(SafeAtoi64("") == 0, "SafeAtoi64 param is null or empty");
    expect(SafeStricmp("a", nullptr) == -1, "SafeStricmp param is null");
    expect(SafeStrnicmp(nullptr, "a", 1) == -1, "SafeStrnicmp param is null");
    // The companions and the bounded prints fail silently.
    const int64_t i64 = 5;
    const uint64_t u64 = 5;
    char buffer[8];
    EXPECT_EQ(SafeI64toA(&i64, nullptr, 8, 10) + SafeUi64toA(&u64, nullptr, 8, 10) +
                  SafeLtoA(&kI32, nullptr, 8, 10) + SafeUltoA(&kU32, nullptr, 8, 10),
              -4);
    EXPECT_FALSE(SafeSprintf(nullptr, 8, "x") || SafeSprintf(buffer, 8, nullptr) ||
                 SafeSprintf(buffer, 0, "x") || SafeUi64ToStr(nullptr, 8, &u64));
    EXPECT_FALSE(HasUtf8ThreeByte(nullptr) || HasGb2312Char(nullptr));
    EXPECT_TRUE(log.Lines().empty());
}

TEST(SafeString, ValidCallsGiveTheRuntimeResultSilently) {
    pind::test::EngineLogCapture log;
    char buffer[24];
    // strtol/strtoul compute with Windows' 32-bit long wherever the library runs.
    char* end = nullptr;
    EXPECT_EQ(SafeStrtoul("ff rest", &end, 16), 255u);
    EXPECT_STREQ(end, " rest");
    EXPECT_EQ(SafeStrtoul("-5", nullptr, 10), 0xFFFFFFFBu);
    EXPECT_EQ(SafeStrtoul("4294967296", nullptr, 10), 0xFFFFFFFFu);
    EXPECT_EQ(SafeStrtol("-2147483649", nullptr, 10), INT32_MIN);
    EXPECT_EQ(SafeStrtol("2147483648", nullptr, 10), INT32_MAX);
    // Bounded prints cut and terminate at the last byte.
    ASSERT_TRUE(SafeSprintf(buffer, 8, "%d-%s", 12, "abcdefgh"));
    EXPECT_STREQ(buffer, "12-abcd");
    std::memset(buffer, '#', sizeof buffer);
    const uint64_t max = UINT64_MAX;
    ASSERT_TRUE(SafeUi64ToStr(buffer, sizeof buffer, &max));
    EXPECT_EQ(std::string(buffer, 24), "18446744073709551615" + std::string(4, '\0'));
    ASSERT_TRUE(SafeUi64ToStr(buffer, 5, &max));
    EXPECT_STREQ(buffer, "1844");
    EXPECT_TRUE(log.Lines().empty());
}

TEST(SafeString, FileExtIsTheTextAfterTheLastDot) {
    const std::pair<const char*, const char*> cases[] = {{"a.txt", "txt"}, {"dir/a.tar.gz", "gz"},
                                                         {"a.b/c", "b/c"}, {"a.", ""},
                                                         {"noext", ""},    {"", ""}};
    for (const auto& [path, want] : cases) EXPECT_EQ(GetFileExt(path), want) << path;
}

TEST(SafeString, TextKindChecks) {
    // Text, HasUtf8ThreeByte, HasGb2312Char.
    const std::tuple<const char*, bool, bool> cases[] = {
        {"plain ascii", false, false},
        {"ab\xe4\xb8\xad", true, true},            // UTF-8 "中"; "\xe4\xb8" also fits GB2312
        {"\xd6\xd0\xce\xc4", false, true},         // GBK "中文": 110xxxxx leads skip two
        {"\xe6\x88\x91", true, false},             // UTF-8 "我"
        {"\xc3\xe4\xb8\xad", false, true},         // 110xxxxx skips into the sequence
        {"\xe0\x41\x41\xe4\xb8\xad", true, true},  // a tail-less 1110xxxx skips three...
        {"\xe0\x41\xe4\xb8\xad", false, true},     // ...over a lead at 2
        {"\xa1\xb0\xa1", false, true},             // pairs at odd offsets count too
        {"\xb0\xff", false, false}};
    for (const auto& [text, utf8, gb2312] : cases) {
        EXPECT_EQ(HasUtf8ThreeByte(text), utf8) << text;
        EXPECT_EQ(HasGb2312Char(text), gb2312) << text;
    }
}

}  // namespace
