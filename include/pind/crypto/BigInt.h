// Fixed-width 128- and 512-bit values for sets of flags too large for one word (owned items,
// unlocked features): bit operations, comparisons, one-bit masks and where the set bits are. No
// arithmetic except Int512's shift by one bit.
//   Int512 mask = Int512::FromBitIndex(40) | Int512::FromBitIndex(3);  mask.LowWordTopBit() == 3
#ifndef PIND_CRYPTO_BIGINT_H_
#define PIND_CRYPTO_BIGINT_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "pind/platform/Export.h"

/// A 128-bit mask in two 64-bit halves. An int32_t operand is widened to 64 bits with its sign,
/// wherever one is accepted; any scalar operand means the 128-bit value whose `high` half is zero.
class PIND_API Int128 {
public:
    /// Zero.
    Int128() = default;
    /// A copy.
    Int128(const Int128&) = default;
    /// Most significant first: high = a:b, low = c:d.
    Int128(uint32_t a, uint32_t b, uint32_t c, uint32_t d);
    /// The two halves as given.
    Int128(uint64_t u64High, uint64_t u64Low) : high(u64High), low(u64Low) {}
    ///@{
    /// The scalar in the low half, high zero (int32_t and int64_t sign-extended into low).
    Int128(uint64_t u64Value) : low(u64Value) {}  // NOLINT(google-explicit-constructor)
    Int128(int64_t n64Value) : low(static_cast<uint64_t>(n64Value)) {}           // NOLINT
    Int128(uint32_t u32Value) : low(u32Value) {}                                 // NOLINT
    Int128(int32_t n32Value) : low(static_cast<uint64_t>(int64_t{n32Value})) {}  // NOLINT
    ///@}
    virtual ~Int128() = default;

    ///@{
    /// Assigns the value (a scalar as its constructor would make it); returns *this.
    Int128& operator=(const Int128&) = default;
    Int128& operator=(int32_t nValue);
    Int128& operator=(uint64_t u64Value);
    ///@}

    /// Both halves masked.
    Int128 operator&(const Int128& other) const;
    /// high 0, low = low & value.
    Int128 operator&(uint64_t u64Value) const;
    /// high 0, low = low & the widened value.
    Int128 operator&(int32_t nValue) const;
    /// Both halves combined.
    Int128 operator|(const Int128& other) const;
    /// Every bit of both halves flipped.
    Int128 operator~() const;

    ///@{
    /// Masks the low half with the value; the high half is cleared.
    Int128& operator&=(int32_t nValue);
    Int128& operator&=(uint64_t u64Value);
    ///@}
    /// Both halves masked in place.
    Int128& operator&=(const Int128& other);
    ///@{
    /// low |= value; high unchanged.
    Int128& operator|=(int32_t nValue);
    Int128& operator|=(uint64_t u64Value);
    ///@}
    /// Both halves combined in place.
    Int128& operator|=(const Int128& other);

    ///@{
    /// Both halves equal (a scalar compares as the 128-bit value it widens to).
    bool operator==(int32_t nValue) const;
    bool operator==(uint64_t u64Value) const;
    bool operator==(const Int128& other) const;
    ///@}
    ///@{
    /// Not equal, by the same rule as operator==.
    bool operator!=(int32_t nValue) const;
    bool operator!=(uint64_t u64Value) const;
    bool operator!=(const Int128& other) const;
    ///@}
    /// Compares high as signed 64-bit, then low as signed 64-bit too, so a low half with its top
    /// bit set sorts below one without it; clients sort masks by this order.
    bool operator<(const Int128& other) const;

    uint64_t high = 0;  ///< the most significant 64 bits
    uint64_t low = 0;   ///< the least significant 64 bits
};

/// A 512-bit mask in sixteen 32-bit words. Bit n (1-based) is bit (n - 1) % 32 of
/// words[(n - 1) / 32]; word 0 is the least significant.
class PIND_API Int512 {
public:
    static constexpr int kWords = 16;  ///< the number of 32-bit words

    /// Zero.
    Int512() = default;
    /// A copy.
    Int512(const Int512&) = default;
    /// The value in words 0-1, the rest zero.
    Int512(uint64_t u64Value);  // NOLINT(google-explicit-constructor): words 0-1
    /// Most significant first: the last argument fills words 0-1, the first words 6-7.
    Int512(uint64_t u3, uint64_t u2, uint64_t u1, uint64_t u0);
    /// Most significant first: words 14-15 down to words 0-1.
    Int512(uint64_t u7, uint64_t u6, uint64_t u5, uint64_t u4, uint64_t u3, uint64_t u2,
           uint64_t u1, uint64_t u0);
    /// Each Int128, most significant first, gives four words: low's then high's.
    explicit Int512(const Int128& v0);
    /// Two Int128, most significant first: v0 fills words 0-3, v1 words 4-7.
    Int512(const Int128& v1, const Int128& v0);
    /// Four Int128, most significant first: v0 fills words 0-3, v3 words 12-15.
    Int512(const Int128& v3, const Int128& v2, const Int128& v1, const Int128& v0);
    /// The first min(nCount, 16) words, word 0 first; the rest zero. A null array gives zero.
    Int512(const uint32_t* pWords, size_t nCount);
    virtual ~Int512() = default;

    /// The single bit n (1-based) when 1 <= n <= 512; zero otherwise.
    static Int512 FromBitIndex(int32_t nBit);

    /// Assigns the value; returns *this.
    Int512& operator=(const Int512&) = default;

    /// Word by word AND.
    Int512 operator&(const Int512& other) const;
    /// Word by word OR.
    Int512 operator|(const Int512& other) const;
    /// Every bit flipped.
    Int512 operator~() const;
    /// Word by word AND in place.
    Int512& operator&=(const Int512& other);
    /// Word by word OR in place.
    Int512& operator|=(const Int512& other);
    /// Words 0-1 keep the masked value, the rest become zero.
    Int512 operator&(uint64_t u64Value) const;
    /// The masked value fills words 0-3; words 4-15 are zero.
    Int512 operator&(const Int128& value) const;

    /// Every word equal.
    bool operator==(const Int512& other) const;
    /// Some word differs.
    bool operator!=(const Int512& other) const;
    ///@{
    /// The scalar is widened with zero words.
    bool operator==(uint32_t u32Value) const;
    bool operator==(uint64_t u64Value) const;
    bool operator==(const Int128& value) const;
    ///@}
    /// Unsigned, from word 15 down; equal values are not less.
    bool operator<(const Int512& other) const;

    /// In place, one bit towards the top; what was the highest bit of word 15 drops off.
    void ShiftLeftOne();
    /// Significant bits of the highest non-zero word w plus 4 * w (not 32 * w: stored masks were
    /// keyed by this), which matches the 1-based position only while the bit is in word 0; 0 for
    /// zero.
    uint32_t HighBitIndex() const;
    /// 32 * w + 1 + the highest set bit of the lowest non-zero word w: the 1-based index of a
    /// single set bit. Zero gives 481, the value the search ends on.
    uint32_t LowWordTopBit() const;
    /// Empties both lists, then appends every 1-based position where the values differ, in
    /// increasing order, to the list of the side that has the bit set.
    void DiffBits(const Int512& other, std::vector<uint32_t>& vecInOtherOnly,
                  std::vector<uint32_t>& vecInThisOnly) const;

    uint32_t words[kWords] = {};  ///< word 0 is the least significant
};

#endif  // PIND_CRYPTO_BIGINT_H_
