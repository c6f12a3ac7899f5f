// CMyCrypto: the scrambled file's exact bytes, the key-length limit and the GBK error texts.
// Not covered: a failing key-block allocation or a short write (no injection point).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "pind/crypto/KeyCipher.h"
#include "support/TempDir.h"

namespace {

std::vector<std::string> g_errors;

void RecordError(const char* pszText) { g_errors.emplace_back(pszText); }

std::string Int32Bytes(int32_t n) {
    std::string bytes(4, '\0');
    std::memcpy(&bytes[0], &n, 4);
    return bytes;
}

// The file's 135-byte header for `key`.
std::string Header(const std::string& key) {
    std::string block(128, '\0');
    for (size_t i = 0; i < key.size(); ++i) {
        block[i] = static_cast<char>(key[i] ^ static_cast<char>(7 + i));
    }
    return std::string("\xff\xff\x00", 3) + Int32Bytes(128) + block;
}

std::string Xored(std::string text, const std::string& key) {
    for (size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(text[i] ^ key[i % key.size()]);
    }
    return text;
}

class KeyCipherTest : public ::testing::Test {
protected:
    KeyCipherTest() {
        g_errors.clear();
        m_crypto.SetErrorCallback(RecordError);
    }

    bool Encrypt(const std::string& text, const std::string& key) {
        return m_crypto.EncryptFile(m_dir.Write("src.ini", text).c_str(),
                                    m_dir.File("dst.sini").c_str(), key.c_str());
    }

    pind::test::TempDir m_dir;
    CMyCrypto m_crypto;
};

TEST_F(KeyCipherTest, WritesHeaderKeyBlockAndOneRecordPerKeptLine) {
    ASSERT_TRUE(Encrypt("[s]\r\nk=v\n;c\n\n//x\n\r\n#h\na\nab\r\n\r", "ab"));
    const std::string want = Header("ab") + Int32Bytes(3) + Xored("[s]", "ab") + Int32Bytes(3) +
                             Xored("k=v", "ab") + Int32Bytes(2) + Xored("#h", "ab") +
                             Int32Bytes(1) + Xored("a", "ab") + Int32Bytes(2) + Xored("ab", "ab") +
                             Int32Bytes(1) + Xored("\r", "ab");
    EXPECT_EQ(m_dir.Read("dst.sini"), want);
    EXPECT_TRUE(g_errors.empty());
}

TEST_F(KeyCipherTest, CrLfAndLfGiveTheSameFile) {
    ASSERT_TRUE(Encrypt("[s]\nkey=value\n", "k"));
    const std::string lf = m_dir.Read("dst.sini");
    ASSERT_TRUE(Encrypt("[s]\r\nkey=value\r\n", "k"));
    EXPECT_EQ(m_dir.Read("dst.sini"), lf);
}

TEST_F(KeyCipherTest, EmptySourceGivesTheHeaderOnly) {
    ASSERT_TRUE(Encrypt("", "key"));
    EXPECT_EQ(m_dir.Read("dst.sini"), Header("key"));
    EXPECT_EQ(m_dir.Read("dst.sini").size(), 135u);
}

TEST_F(KeyCipherTest, LongLinesAreSplitAtTheLineBuffer) {
    ASSERT_TRUE(Encrypt("k=" + std::string(2100, 'x') + "\n", "q"));
    const std::string file = m_dir.Read("dst.sini");
    ASSERT_EQ(file.size(), 135u + 4 + 2047 + 4 + 55);
    EXPECT_EQ(file.substr(135, 4), Int32Bytes(2047));
    EXPECT_EQ(file.substr(135 + 4 + 2047, 4), Int32Bytes(55));
}

TEST_F(KeyCipherTest, KeyMustBeShorterThan128Bytes) {
    ASSERT_TRUE(Encrypt("[s]\n", std::string(127, 'k')));
    EXPECT_EQ(m_dir.Read("dst.sini").substr(0, 135), Header(std::string(127, 'k')));
    const std::string source = m_dir.File("src.ini");
    EXPECT_FALSE(Encrypt("[s]\n", std::string(128, 'k')));
    // The prefix names the source of the last call that got past the check.
    // "加密Key需小于128位!"
    EXPECT_EQ(g_errors, std::vector<std::string>{source + ": \xbc\xd3\xc3\xdc"
                                                          "Key\xd0\xe8\xd0\xa1\xd3\xda"
                                                          "128\xce\xbb!"});
    CMyCrypto fresh;
    fresh.SetErrorCallback(RecordError);
    EXPECT_FALSE(
        fresh.EncryptFile(source.c_str(), m_dir.File("x").c_str(), std::string(200, 'k').c_str()));
    EXPECT_EQ(g_errors.back().substr(0, 3), ": \xbc");
}

TEST_F(KeyCipherTest, NullArgumentsAndMissingFilesFail) {
    const std::string source = m_dir.Write("src.ini", "[s]\n");
    const std::string target = m_dir.File("dst.sini");
    EXPECT_FALSE(m_crypto.EncryptFile(nullptr, target.c_str(), "k"));
    EXPECT_FALSE(m_crypto.EncryptFile(source.c_str(), nullptr, "k"));
    EXPECT_FALSE(m_crypto.EncryptFile(source.c_str(), target.c_str(), nullptr));
    EXPECT_FALSE(m_crypto.EncryptFile(m_dir.File("none.ini").c_str(), target.c_str(), "k"));
    EXPECT_FALSE(m_crypto.EncryptFile(source.c_str(), m_dir.File("no/such/dir/x").c_str(), "k"));
    EXPECT_TRUE(g_errors.empty());
}

TEST_F(KeyCipherTest, ReportErrorPrefixesTheSourceAndCutsAt511Bytes) {
    m_crypto.ReportError("plain");
    m_crypto.ReportError(nullptr);
    m_crypto.ReportError(std::string(600, 'e').c_str());
    ASSERT_EQ(g_errors.size(), 2u);
    EXPECT_EQ(g_errors[0], ": plain");
    EXPECT_EQ(g_errors[1], ": " + std::string(509, 'e'));

    CMyCrypto copy(m_crypto);
    copy.ReportError("copied");
    EXPECT_EQ(g_errors.back(), ": copied");
    copy.SetErrorCallback(nullptr);
    copy.ReportError("silent");
    EXPECT_EQ(g_errors.size(), 3u);
}

TEST(KeyCipherInstance, IsOneObjectWithNoCallback) {
    CMyCrypto& a = CMyCrypto::Instance();
    EXPECT_EQ(&a, &CMyCrypto::Instance());
    g_errors.clear();
    a.ReportError("nobody listens");
    EXPECT_TRUE(g_errors.empty());
}

}  // namespace
