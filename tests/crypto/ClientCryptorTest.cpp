// The stream cryptor against a plain byte-loop reference, on every inner loop the processor offers,
// over random keys, lengths, start positions and splits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "crypto/CryptorSimd.h"
#include "pind/crypto/ClientCryptor.h"

namespace {

using Bytes = std::vector<uint8_t>;

// The cipher written out from its definition, sharing nothing with the library.
struct Reference {
    uint8_t a[256], b[256];
    uint16_t pos = 0;

    explicit Reference(const uint8_t k[8]) {
        for (uint8_t* table : {a, b}) {
            const uint8_t* key = k + (table == a ? 0 : 4);  // multiplier, addend 1, addend 2, seed
            uint8_t x = key[3];
            for (int i = 0; i < 256; ++i) {
                table[i] = x;
                x = static_cast<uint8_t>(key[0] * x * x + key[1] * x + key[2]);
            }
        }
    }
    void ChangeCode(uint32_t code) {
        const uint32_t sa = (code & 0xFFFF) * (code & 0xFFFF), sb = (code >> 16) * (code >> 16);
        for (int i = 0; i < 256; ++i) {
            a[i] ^= static_cast<uint8_t>(sa >> (8 * (i % 4)));
            b[i] ^= static_cast<uint8_t>(sb >> (8 * (i % 4)));
        }
    }
    void Encrypt(uint8_t* p, size_t n) {
        for (size_t i = 0; i < n; ++i, ++pos) {
            const int lo = pos & 0xFF, hi = pos >> 8;
            uint8_t x = static_cast<uint8_t>((p[i] ^ a[lo]) + (a[lo] ^ b[lo]));
            x = static_cast<uint8_t>((x ^ b[hi]) + (a[hi] & b[hi]));
            p[i] = static_cast<uint8_t>((x << 4) | (x >> 4));
        }
    }
};

std::unique_ptr<CClientCryptor> Make(const Bytes& k) {
    return std::make_unique<CClientCryptor>(k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7]);
}

class ClientCryptorLevels : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override {
        if (pind::detail::SetCryptorSimdLevel(GetParam()) != GetParam()) {
            GTEST_SKIP() << "level " << GetParam() << " is not available here";
        }
    }
    void TearDown() override { pind::detail::SetCryptorSimdLevel(-1); }

    Bytes Random(size_t n) {
        Bytes out(n);
        for (uint8_t& x : out) x = static_cast<uint8_t>(m_rng());
        return out;
    }
    // Feeds `data` to fn in random pieces, some of them empty.
    template <typename Fn>
    void InPieces(Bytes& data, Fn fn) {
        for (size_t at = 0; at < data.size();) {
            const size_t left = data.size() - at;
            const size_t piece =
                std::min(left, m_rng() % 3 == 0 ? m_rng() % 40 : m_rng() % (left + 1));
            fn(data.data() + at, static_cast<int>(piece));
            at += piece;
        }
    }
    std::mt19937 m_rng{12345};
};

TEST_P(ClientCryptorLevels, MatchesTheByteLoopForEveryLengthStartAndSplit) {
    for (size_t length : {0, 1, 15, 16, 17, 31, 33, 255, 256, 257, 65535, 65536, 70000}) {
        for (int trial = 0; trial < 3; ++trial) {
            const Bytes key = trial == 0 ? Bytes(8, 0) : Random(8);  // zero: nibble swaps only
            auto cryptor = Make(key), peer = Make(key);
            Reference ref(key.data());
            // Reach a random start position through a prefix all three process.
            Bytes prefix = Random(m_rng() % 70000), refPrefix = prefix;
            cryptor->Encrypt(prefix.data(), static_cast<int>(prefix.size()));
            ref.Encrypt(refPrefix.data(), refPrefix.size());
            ASSERT_EQ(prefix, refPrefix);
            peer->Decrypt(prefix.data(), static_cast<int>(prefix.size()));

            const Bytes plain = Random(length);
            Bytes want = plain, got = plain;
            ref.Encrypt(want.data(), want.size());
            InPieces(got, [&](uint8_t* p, int n) { cryptor->Encrypt(p, n); });
            ASSERT_EQ(got, want) << "length " << length << " start " << prefix.size();
            EXPECT_EQ(cryptor->GetEncryptPosition(), ref.pos);
            InPieces(got, [&](uint8_t* p, int n) { peer->Decrypt(p, n); });
            ASSERT_EQ(got, plain) << "length " << length << " start " << prefix.size();
            EXPECT_EQ(peer->GetDecryptPosition(), ref.pos);
            EXPECT_EQ(peer->GetEncryptPosition(), 0);  // the directions are independent
        }
    }
}

TEST_P(ClientCryptorLevels, ChangeCodeThenDuplicateKeepsTheNewTables) {
    const Bytes key = Random(8), plain = Random(5000);
    auto cryptor = Make(key);
    Reference ref(key.data());
    Bytes warm(1234);  // only the position it leaves matters
    cryptor->Encrypt(warm.data(), 1234);
    ref.Encrypt(warm.data(), 1234);
    cryptor->ChangeCode(0x1234ABCD);
    ref.ChangeCode(0x1234ABCD);
    IEncryptor* copy = cryptor->Duplicate();
    Bytes viaCopy = plain, viaRef = plain;
    copy->Encrypt(viaCopy.data(), 5000);
    ref.Encrypt(viaRef.data(), 5000);
    EXPECT_EQ(viaCopy, viaRef);
    EXPECT_EQ(copy->Release(), 1);
}

std::string LevelName(const ::testing::TestParamInfo<int>& level) {
    static const char* const kNames[] = {"Bytes", "Sse2", "Avx2"};
    return kNames[level.param];
}

INSTANTIATE_TEST_SUITE_P(Loops, ClientCryptorLevels, ::testing::Values(0, 1, 2), LevelName);

TEST(ClientCryptor, EmptyCallsChangeNothingAndResetZeroesBothPositions) {
    CClientCryptor c(9, 8, 7, 6, 5, 4, 3, 2);
    uint8_t data[4] = {1, 2, 3, 4};
    c.Encrypt(data, 0);
    c.Encrypt(data, -5);
    c.Encrypt(nullptr, 4);
    EXPECT_EQ(std::memcmp(data, "\x01\x02\x03\x04", 4), 0);
    c.Decrypt(data, 3);
    c.EncryptEx(data, 2);
    CClientCryptor assigned(1, 2, 3, 4, 5, 6, 7, 8);
    assigned = c;                                 // tables and both positions
    EXPECT_EQ(assigned.GetEncryptPosition(), 2);  // EncryptEx moves the encrypting position
    EXPECT_EQ(assigned.GetDecryptPosition(), 3);
    EXPECT_EQ(std::memcmp(assigned.GetTable(0), c.GetTable(0), 256), 0);
    EXPECT_EQ(c.GetTable(4), nullptr);
    EXPECT_EQ(c.Reset(), 0);
    EXPECT_EQ(c.GetEncryptPosition() + c.GetDecryptPosition(), 0);
}

}  // namespace
