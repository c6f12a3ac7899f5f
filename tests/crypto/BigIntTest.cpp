// Int128 and Int512 against std::bitset on random values, and the quirks the client relies on.
#include <gtest/gtest.h>

#include <bitset>
#include <random>
#include <utility>
#include <vector>

#include "pind/crypto/BigInt.h"

namespace {

using Bits = std::bitset<512>;

Bits ToBits(const Int512& v) {
    Bits bits;
    for (int i = 0; i < 512; ++i) {
        bits[i] = (v.words[i / 32] >> (i % 32)) & 1;
    }
    return bits;
}
Bits ToBits(const Int128& v) { return (Bits(v.high) << 64) | Bits(v.low); }

// Sparse words as well as dense ones, so that zero words and single bits occur.
uint32_t RandomWord(std::mt19937_64& rng) {
    const uint32_t kind = rng() % 4;
    return kind == 0 ? 0 : kind == 1 ? uint32_t{1} << (rng() % 32) : static_cast<uint32_t>(rng());
}
uint64_t Random64(std::mt19937_64& rng) {
    return (uint64_t{RandomWord(rng)} << 32) | RandomWord(rng);
}

TEST(BigInt, Int512MatchesBitset) {
    std::mt19937_64 rng(20240601);
    for (int round = 0; round < 500; ++round) {
        uint32_t words[32];
        for (uint32_t& w : words) w = RandomWord(rng);
        const Int512 a(words, 16), b(words + 16, 16);
        const Bits ba = ToBits(a), bb = ToBits(b);
        ASSERT_EQ(ToBits(a & b), ba & bb);
        ASSERT_EQ(ToBits(a | b), ba | bb);
        ASSERT_EQ(ToBits(~a), ~ba);
        const Int128 m(Random64(rng), Random64(rng));
        ASSERT_EQ(ToBits(a & m), ba & ToBits(m));
        ASSERT_EQ(ToBits(a & m.low), ba & Bits(m.low));
        ASSERT_EQ(a == b, ba == bb);
        Int512 shifted = a;
        shifted.ShiftLeftOne();
        ASSERT_EQ(ToBits(shifted), ba << 1);

        int top = 511, lowest = 0;  // 0-based highest and lowest set bits
        while (top >= 0 && !ba[top]) --top;
        while (lowest < 512 && !ba[lowest]) ++lowest;
        ASSERT_EQ(a.HighBitIndex(), top < 0 ? 0u : uint32_t(top % 32 + 1 + 4 * (top / 32)));
        int topOfLowWord = lowest / 32 * 32 + 31;
        while (lowest < 512 && !ba[topOfLowWord]) --topOfLowWord;
        ASSERT_EQ(a.LowWordTopBit(), lowest == 512 ? 481u : uint32_t(topOfLowWord + 1));

        std::vector<uint32_t> otherOnly{99}, thisOnly{99}, wantOther, wantThis;
        a.DiffBits(b, otherOnly, thisOnly);
        for (uint32_t p = 1; p <= 512; ++p) {
            if (ba[p - 1] != bb[p - 1]) (ba[p - 1] ? wantThis : wantOther).push_back(p);
        }
        ASSERT_EQ(otherOnly, wantOther);  // 1-based, ascending, the old contents replaced
        ASSERT_EQ(thisOnly, wantThis);
        ASSERT_EQ(a < b, ba.to_string() < bb.to_string());  // unsigned, from the top word
    }
}

TEST(BigInt, Int128MatchesBitset) {
    std::mt19937_64 rng(7);
    for (int round = 0; round < 500; ++round) {
        const Int128 a(Random64(rng), Random64(rng)), b(Random64(rng), Random64(rng));
        const uint64_t s = Random64(rng);
        const auto n = static_cast<int32_t>(RandomWord(rng));
        const Bits ba = ToBits(a), bb = ToBits(b), bn(static_cast<uint64_t>(int64_t{n}));
        const Bits low64(UINT64_MAX);
        ASSERT_EQ(ToBits(a & b), ba & bb);
        ASSERT_EQ(ToBits(a | b), ba | bb);
        ASSERT_EQ(ToBits(~a), ~ba & (low64 << 64 | low64));
        ASSERT_EQ(ToBits(a & s), ba & Bits(s));
        ASSERT_EQ(ToBits(a & n), ba & bn);  // sign-extended to 64 bits only
        ASSERT_EQ(ToBits(Int128(a) |= n), ba | bn);
        ASSERT_EQ(ToBits(Int128(a) |= s), ba | Bits(s));
        ASSERT_EQ(ToBits(Int128(a) &= b), ba & bb);
        ASSERT_EQ(ToBits(Int128(a) |= b), ba | bb);
        ASSERT_EQ(a == b, ba == bb);
        // Both halves compare signed.
        ASSERT_EQ(a < b, std::make_pair(int64_t(a.high), int64_t(a.low)) <
                             std::make_pair(int64_t(b.high), int64_t(b.low)));
        ASSERT_TRUE(Int128(s) == s && Int128(uint64_t{1}, s) != s && Int128(n) == n);
    }
}

// Signed order of both halves is left to the random test, whose sparse words set top bits often.
TEST(BigInt, ConstructorsPlaceWords) {
    EXPECT_EQ(Int128(0x01020304u, 0x05060708u, 0x090A0B0Cu, 0x0D0E0F10u),
              Int128(uint64_t{0x0102030405060708}, uint64_t{0x090A0B0C0D0E0F10}));
    EXPECT_EQ(Int128(int64_t{-2}), Int128(uint64_t{0}, UINT64_MAX - 1));
    Int128 v(uint64_t{9}, uint64_t{9});
    EXPECT_TRUE((v = int32_t{-3}) == -3 && (v = uint64_t{7}) == uint64_t{7});
    const uint32_t eight[16] = {1, 1, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0};
    EXPECT_EQ(Int512(8, 7, 6, 5, 4, 3, 2, 0x100000001u), Int512(eight, 16));
    const Int128 hi(uint64_t{0xA}, uint64_t{0xB}), lo(uint64_t{0xC}, uint64_t{0xD});
    const uint32_t two[16] = {0xD, 0, 0xC, 0, 0xB, 0, 0xA, 0, 0xD, 0, 0xC, 0, 0xB, 0, 0xA, 0};
    EXPECT_EQ(Int512(hi, lo, hi, lo), Int512(two, 16));
    const uint32_t many[20] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
    EXPECT_EQ(Int512(many, 20).words[15], 16u);  // extra words are ignored
    EXPECT_TRUE(Int512(nullptr, 5) == 0u);
}

TEST(BigInt, FromBitIndexSetsOneBitCountedFromOne) {
    for (int32_t n = -1; n <= 513; ++n) {
        const Bits want = n >= 1 && n <= 512 ? Bits().set(n - 1) : Bits();
        ASSERT_EQ(ToBits(Int512::FromBitIndex(n)), want) << n;
    }
}

}  // namespace
