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

TEST(BigInt, FromBitIndexSetsOneBitCountedFromOne) {
    for (int32_t n = -1; n <= 513; ++n) {
        const Bits want = n >= 1 && n <= 512 ? Bits().set(n - 1) : Bits();
        ASSERT_EQ(ToBits(Int512::FromBitIndex(n)), want) << n;
    }
}

}  // namespace
