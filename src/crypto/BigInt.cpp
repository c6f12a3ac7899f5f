#include "pind/crypto/BigInt.h"

namespace {

uint64_t Widen(int32_t value) { return static_cast<uint64_t>(int64_t{value}); }

// Number of significant bits of a non-zero word (1 to 32).
uint32_t BitWidth(uint32_t word) {
    uint32_t bits = 0;
    while (word != 0) {
        ++bits;
        word >>= 1;
    }
    return bits;
}

void Put64(uint32_t* words, uint64_t value) {
    words[0] = static_cast<uint32_t>(value);
    words[1] = static_cast<uint32_t>(value >> 32);
}

void Put128(uint32_t* words, const Int128& value) {
    Put64(words, value.low);
    Put64(words + 2, value.high);
}

}  // namespace

// ---- Int128 ----------------------------------------------------------------------------------

Int128::Int128(uint32_t a, uint32_t b, uint32_t c, uint32_t d)
    : high((uint64_t{a} << 32) | b), low((uint64_t{c} << 32) | d) {}

Int128& Int128::operator=(int32_t nValue) {
    high = 0;
    low = Widen(nValue);
    return *this;
}

Int128& Int128::operator=(uint64_t u64Value) {
    high = 0;
    low = u64Value;
    return *this;
}

Int128 Int128::operator&(const Int128& other) const {
    return Int128(high & other.high, low & other.low);
}
Int128 Int128::operator&(uint64_t u64Value) const { return Int128(uint64_t{0}, low & u64Value); }
Int128 Int128::operator&(int32_t nValue) const { return *this & Widen(nValue); }
Int128 Int128::operator|(const Int128& other) const {
    return Int128(high | other.high, low | other.low);
}
Int128 Int128::operator~() const { return Int128(~high, ~low); }

Int128& Int128::operator&=(int32_t nValue) { return *this &= Widen(nValue); }
Int128& Int128::operator&=(uint64_t u64Value) {
    high = 0;
    low &= u64Value;
    return *this;
}
Int128& Int128::operator&=(const Int128& other) {
    high &= other.high;
    low &= other.low;
    return *this;
}
Int128& Int128::operator|=(int32_t nValue) { return *this |= Widen(nValue); }
Int128& Int128::operator|=(uint64_t u64Value) {
    low |= u64Value;
    return *this;
}
Int128& Int128::operator|=(const Int128& other) {
    high |= other.high;
    low |= other.low;
    return *this;
}

bool Int128::operator==(int32_t nValue) const { return *this == Widen(nValue); }
bool Int128::operator==(uint64_t u64Value) const { return high == 0 && low == u64Value; }
bool Int128::operator==(const Int128& other) const {
    return high == other.high && low == other.low;
}
bool Int128::operator!=(int32_t nValue) const { return !(*this == nValue); }
bool Int128::operator!=(uint64_t u64Value) const { return !(*this == u64Value); }
bool Int128::operator!=(const Int128& other) const { return !(*this == other); }

bool Int128::operator<(const Int128& other) const {
    if (high != other.high) {
        return static_cast<int64_t>(high) < static_cast<int64_t>(other.high);
    }
    return static_cast<int64_t>(low) < static_cast<int64_t>(other.low);
}

// ---- Int512 ----------------------------------------------------------------------------------

Int512::Int512(uint64_t u64Value) { Put64(words, u64Value); }

Int512::Int512(uint64_t u3, uint64_t u2, uint64_t u1, uint64_t u0) {
    Put64(words + 0, u0);
    Put64(words + 2, u1);
    Put64(words + 4, u2);
    Put64(words + 6, u3);
}

Int512::Int512(uint64_t u7, uint64_t u6, uint64_t u5, uint64_t u4, uint64_t u3, uint64_t u2,
               uint64_t u1, uint64_t u0) {
    const uint64_t parts[8] = {u0, u1, u2, u3, u4, u5, u6, u7};
    for (int i = 0; i < 8; ++i) {
        Put64(words + 2 * i, parts[i]);
    }
}

Int512::Int512(const Int128& v0) { Put128(words, v0); }

Int512::Int512(const Int128& v1, const Int128& v0) {
    Put128(words, v0);
    Put128(words + 4, v1);
}

Int512::Int512(const Int128& v3, const Int128& v2, const Int128& v1, const Int128& v0) {
    Put128(words, v0);
    Put128(words + 4, v1);
    Put128(words + 8, v2);
    Put128(words + 12, v3);
}

Int512::Int512(const uint32_t* pWords, size_t nCount) {
    for (size_t i = 0; pWords != nullptr && i < nCount && i < static_cast<size_t>(kWords); ++i) {
        words[i] = pWords[i];
    }
}

Int512 Int512::FromBitIndex(int32_t nBit) {
    Int512 value;
    if (nBit >= 1 && (nBit - 1) / 32 < kWords) {
        value.words[(nBit - 1) / 32] = uint32_t{1} << ((nBit - 1) % 32);
    }
    return value;
}

Int512 Int512::operator&(const Int512& other) const { return Int512(*this) &= other; }
Int512 Int512::operator|(const Int512& other) const { return Int512(*this) |= other; }

Int512 Int512::operator~() const {
    Int512 result;
    for (int i = 0; i < kWords; ++i) {
        result.words[i] = ~words[i];
    }
    return result;
}

Int512& Int512::operator&=(const Int512& other) {
    for (int i = 0; i < kWords; ++i) {
        words[i] &= other.words[i];
    }
    return *this;
}

Int512& Int512::operator|=(const Int512& other) {
    for (int i = 0; i < kWords; ++i) {
        words[i] |= other.words[i];
    }
    return *this;
}

Int512 Int512::operator&(uint64_t u64Value) const { return *this & Int512(u64Value); }
Int512 Int512::operator&(const Int128& value) const { return *this & Int512(value); }

bool Int512::operator==(const Int512& other) const {
    for (int i = 0; i < kWords; ++i) {
        if (words[i] != other.words[i]) {
            return false;
        }
    }
    return true;
}
bool Int512::operator!=(const Int512& other) const { return !(*this == other); }
bool Int512::operator==(uint32_t u32Value) const { return *this == Int512(uint64_t{u32Value}); }
bool Int512::operator==(uint64_t u64Value) const { return *this == Int512(u64Value); }
bool Int512::operator==(const Int128& value) const { return *this == Int512(value); }

bool Int512::operator<(const Int512& other) const {
    for (int i = kWords - 1; i >= 0; --i) {
        if (words[i] != other.words[i]) {
            return words[i] < other.words[i];
        }
    }
    return false;
}

void Int512::ShiftLeftOne() {
    for (int i = kWords - 1; i > 0; --i) {
        words[i] = (words[i] << 1) | (words[i - 1] >> 31);
    }
    words[0] <<= 1;
}

uint32_t Int512::HighBitIndex() const {
    for (int w = kWords - 1; w >= 0; --w) {
        if (words[w] != 0) {
            return BitWidth(words[w]) + 4 * static_cast<uint32_t>(w);
        }
    }
    return 0;
}

uint32_t Int512::LowWordTopBit() const {
    uint32_t base = 0;
    for (int w = 0; w < kWords; ++w) {
        base = 32 * static_cast<uint32_t>(w) + 1;
        if (words[w] != 0) {
            return base + BitWidth(words[w]) - 1;
        }
    }
    return base;
}

void Int512::DiffBits(const Int512& other, std::vector<uint32_t>& vecInOtherOnly,
                      std::vector<uint32_t>& vecInThisOnly) const {
    vecInOtherOnly.clear();
    vecInThisOnly.clear();
    for (uint32_t w = 0; w < kWords; ++w) {
        const uint32_t diff = words[w] ^ other.words[w];
        for (uint32_t bit = 0; bit < 32 && (diff >> bit) != 0; ++bit) {
            if ((diff >> bit) & 1) {
                (((words[w] >> bit) & 1) ? vecInThisOnly : vecInOtherOnly)
                    .push_back(32 * w + bit + 1);
            }
        }
    }
}
