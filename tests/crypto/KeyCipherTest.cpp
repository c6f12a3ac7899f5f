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
    for (size_t i = 0; i < key.size(); ++i) block[i] = static_cast<char>(key[i] ^ (7 + i));
    return std::string("\xff\xff\x00", 3) + Int32Bytes(128) + block;
}

// One record: the line's length, then the line xored with the cycled key.
std::string Record(std::string text, const std::string& key) {
    const std::string length = Int32Bytes(static_cast<int32_t>(text.size()));
    for (size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(text[i] ^ key[i % key.size()]);
    return length + text;
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
    const std::string ab = "ab", k127(127, 'k'), x2100(2100, 'x');
    const std::string cases[][3] = {
        // source, key, file
        {"", "key", Header("key")},
        {"[s]\r\nk=v\n;c\n\n//x\n\r\n#h\na\nab\r\n\r", ab,
         Header(ab) + Record("[s]", ab) + Record("k=v", ab) + Record("#h", ab) + Record("a", ab) +
             Record("ab", ab) + Record("\r", ab)},
        {"[s]\n", k127, Header(k127) + Record("[s]", k127)},
        // Lines longer than the line buffer are split into 2047-byte records.
        {"k=" + x2100 + "\n", "q",
         Header("q") + Record(("k=" + x2100).substr(0, 2047), "q") +
             Record(x2100.substr(2045), "q")}};
    for (const auto& [source, key, want] : cases) {
        ASSERT_TRUE(Encrypt(source, key)) << source;
        EXPECT_EQ(m_dir.Read("dst.sini"), want) << source;
    }
    EXPECT_TRUE(g_errors.empty());
}

TEST_F(KeyCipherTest, KeyMustBeShorterThan128Bytes) {
    ASSERT_TRUE(Encrypt("[s]\n", "k"));
    const std::string source = m_dir.File("src.ini");
    EXPECT_FALSE(Encrypt("[s]\n", std::string(128, 'k')));
    // The prefix names the source of the last call that got past the check.
    // "加密Key需小于128位!"
    EXPECT_EQ(g_errors, std::vector<std::string>{source + ": \xbc\xd3\xc3\xdc"
                                                          "Key\xd0\xe8\xd0\xa1\xd3\xda"
                                                          "128\xce\xbb!"});
    CMyCrypto fresh;  // no call got past the check yet: no source in the prefix
    fresh.SetErrorCallback(RecordError);
    EXPECT_FALSE(
        fresh.EncryptFile(source.c_str(), m_dir.File("x").c_str(), std::string(200, 'k').c_str()));
    EXPECT_EQ(g_errors.back().substr(0, 3), ": \xbc");
}

TEST_F(KeyCipherTest, NullArgumentsAndMissingFilesFailSilently) {
    const std::string source = m_dir.Write("src.ini", "[s]\n");
    const std::string target = m_dir.File("dst.sini");
    EXPECT_FALSE(m_crypto.EncryptFile(nullptr, target.c_str(), nullptr));
    EXPECT_FALSE(m_crypto.EncryptFile(m_dir.File("none.ini").c_str(), target.c_str(), "k"));
    EXPECT_FALSE(m_crypto.EncryptFile(source.c_str(), m_dir.File("no/such/dir/x").c_str(), "k"));
    EXPECT_TRUE(g_errors.empty());
}

TEST_F(KeyCipherTest, ReportErrorPrefixesTheSourceAndCutsAt511Bytes) {
    m_crypto.ReportError("plain");
    m_crypto.ReportError(nullptr);
    m_crypto.ReportError(std::string(600, 'e').c_str());
    CMyCrypto copy(m_crypto);
    copy.ReportError("copied");
    copy.SetErrorCallback(nullptr);
    copy.ReportError("silent");
    EXPECT_EQ(g_errors,
              (std::vector<std::string>{": plain", ": " + std::string(509, 'e'), ": copied"}));
}

}  // namespace
