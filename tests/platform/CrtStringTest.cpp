// The runtime's number-to-text and comparison functions, with the Windows runtime's results.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "pind/platform/CrtString.h"

namespace pind::platform {
namespace {

TEST(ToText, GivesTheRuntimesTextAndCode) {
    // Bits (32 signed, 33 unsigned 32, 64 signed, 65 unsigned 64), value, buffer size, radix,
    // error, and the buffer's text (first byte only when the call failed).
    const std::tuple<int, int64_t, size_t, int, int, const char*> cases[] = {
        {32, INT32_MIN, 12, 10, 0, "-2147483648"},
        {32, -1, 9, 16, 0, "ffffffff"},  // other radixes print two's complement
        {32, 35, 2, 36, 0, "z"},
        {32, 12345, 5, 10, kErrRange, ""},  // no room for the terminator
        {32, -5, 2, 10, kErrRange, ""},     // a negative needs three bytes
        {32, 5, 8, 37, kErrInvalid, ""},
        {33, 4294967295LL, 11, 10, 0, "4294967295"},
        {64, INT64_MIN, 21, 10, 0, "-9223372036854775808"},
        {65, -1, 21, 10, 0, "18446744073709551615"},
        {65, 255, 0, 10, kErrInvalid, "x"},  // an empty buffer is left alone
    };
    for (const auto& [bits, value, size, radix, error, text] : cases) {
        char buffer[80];
        std::fill(std::begin(buffer), std::end(buffer), 'x');
        buffer[1] = '\0';
        const int got = bits == 32   ? ItoaS(static_cast<int32_t>(value), buffer, size, radix)
                        : bits == 33 ? UltoaS(static_cast<uint32_t>(value), buffer, size, radix)
                        : bits == 64 ? I64toaS(value, buffer, size, radix)
                                     : Ui64toaS(static_cast<uint64_t>(value), buffer, size, radix);
        EXPECT_EQ(got, error) << bits << "-bit " << value << " size " << size;
        EXPECT_STREQ(buffer, text) << bits << "-bit " << value << " size " << size;
    }
    EXPECT_EQ(ItoaS(1, nullptr, 10, 10), kErrInvalid);
    char buffer[4];
    EXPECT_EQ(LtoaS(-7, buffer, sizeof buffer, 10), 0);
    EXPECT_STREQ(buffer, "-7");
}

// Strings that differ in case, in a byte (letters' neighbours '[', '@', '`' and high bytes
// included) or in length lie at every offset around a page end: the block-wise compare must give
// the byte-by-byte difference of the lowered bytes and never read into the next page.
TEST(Compare, LongStringsAtEveryAlignmentMatchBytewiseCompare) {
    EXPECT_EQ(Stricmp(nullptr, "a"), kNlsCompareError);
    EXPECT_EQ(Stricmp("a", nullptr), kNlsCompareError);
    EXPECT_EQ(Strnicmp(nullptr, "a", 0), kNlsCompareError);
    auto reference = [](const char* a, const char* b, size_t count) {
        for (; count > 0; ++a, ++b, --count) {
            const int f = (*a >= 'A' && *a <= 'Z') ? *a + 32 : static_cast<unsigned char>(*a);
            const int l = (*b >= 'A' && *b <= 'Z') ? *b + 32 : static_cast<unsigned char>(*b);
            if (count == 1 || f == 0 || f != l) {
                return f - l;
            }
        }
        return 0;
    };
    std::vector<char> pages(3 * 4096);
    const auto base = reinterpret_cast<uintptr_t>(pages.data());
    char* const pageEnd = pages.data() + (4096 - base % 4096) + 4096;  // a page boundary inside
    const std::string unit = "Interface/Config/GameSetup.ini?[]@`\xb0\xc1Zz";
    const std::string text = unit + unit + unit + unit;  // long enough for the widest loop
    uint32_t seed = 7;
    for (int round = 0; round < 8000; ++round) {
        seed = seed * 1103515245u + 12345u;
        std::string a = text.substr(0, seed % text.size() + 1);
        std::string b = a;
        for (char& c : b) {
            c = (c >= 'a' && c <= 'z' && (seed >> 20) % 2) ? static_cast<char>(c - 32) : c;
        }
        if (round % 3 == 1) {
            b[(seed >> 8) % b.size()] ^= static_cast<char>(1 + (seed >> 24) % 127);
        } else if (round % 3 == 2) {
            b.resize((seed >> 8) % (b.size() + 1));
        }
        // One string ends exactly at the page boundary, the other somewhere before it.
        char* pa = pageEnd - (a.size() + 1);
        char* pb = pages.data() + 4096 + (seed >> 12) % 2048;
        std::memcpy(pa, a.c_str(), a.size() + 1);
        std::memcpy(pb, b.c_str(), b.size() + 1);
        for (const auto& [x, y] : {std::pair<const char*, const char*>{pa, pb}, {pb, pa}}) {
            EXPECT_EQ(Stricmp(x, y), reference(x, y, SIZE_MAX)) << x << " / " << y;
            const size_t count = (seed >> 4) % 70;
            EXPECT_EQ(Strnicmp(x, y, count), reference(x, y, count)) << x << " / " << y;
        }
    }
}

TEST(Atoi64, ParsesLikeTheRuntime) {
    const std::pair<const char*, int64_t> cases[] = {
        {"  \t\n+42abc", 42},
        {"- 5", 0},
        {"9223372036854775808", INT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"-99999999999999999999", INT64_MIN},
        {"00000000000000000000000000001", 1},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(Atoi64(text), value) << '"' << text << '"';
    EXPECT_EQ(Atoi64(nullptr), 0);
}

}  // namespace
}  // namespace pind::platform
