// `pind crypt`: the client stream cipher over standard input and output, and the demo of the
// strings, conversions, wide masks and cipher.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/crypto/BigInt.h"
#include "pind/crypto/ClientCryptor.h"
#include "pind/platform/EngineLog.h"
#include "pind/platform/System.h"
#include "pind/strings/Convert.h"
#include "pind/strings/SafeString.h"

namespace pind::tool {
namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
        return (c | 0x20) - 'a' + 10;
    }
    return -1;
}

bool ParseKey(const char* text, uint8_t key[8]) {
    if (std::strlen(text) != 16) {
        return false;
    }
    for (int i = 0; i < 8; ++i) {
        const int high = HexDigit(text[2 * i]);
        const int low = HexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        key[i] = static_cast<uint8_t>(high * 16 + low);
    }
    return true;
}

// A change code is a checked decimal or 0x-hexadecimal number that fits 32 bits.
bool ParseCode(const char* text, uint32_t* code) {
    const uint64_t value = SzToUInt64(text);
    const bool zeroText = text[0] != '\0' && std::strspn(text, "0x") == std::strlen(text);
    if ((value == 0 && !zeroText) || value > 0xFFFFFFFFu) {
        return false;
    }
    *code = static_cast<uint32_t>(value);
    return true;
}

std::string Hex(const uint8_t* bytes, size_t count) {
    std::string out;
    char cell[4];
    for (size_t i = 0; i < count; ++i) {
        SafeSprintf(cell, sizeof cell, "%02x ", bytes[i]);
        out += cell;
    }
    if (!out.empty()) {
        out.pop_back();
    }
    return out;
}

void PrintRows(const char* label, const std::vector<uint8_t>& bytes) {
    for (size_t at = 0; at < bytes.size(); at += 16) {
        const size_t n = bytes.size() - at < 16 ? bytes.size() - at : 16;
        std::printf("  %-9s %s\n", at == 0 ? label : "", Hex(bytes.data() + at, n).c_str());
    }
}

void PrintEngineLine(const char* text) { std::printf("    engine log: %s\n", text); }

void DemoStrings(const DemoContext& ctx) {
    DemoHeading("strings and conversions");
    const platform::EngineLogSink previous = platform::SetEngineLogSink(PrintEngineLine);
    std::printf("  SafeStrlen(null) = %zu\n", SafeStrlen(nullptr));
    std::printf("  SafeStricmp(\"GameSetup.INI\", \"gamesetup.ini\") = %d\n",
                SafeStricmp("GameSetup.INI", "gamesetup.ini"));
    std::printf("  SafeStricmp(\"a\", null) = %d\n", SafeStricmp("a", nullptr));
    platform::SetEngineLogSink(previous);
    char small[8];
    SafeSprintf(small, sizeof small, "%s-%d", "player", 1234);
    std::printf("  SafeSprintf(buf[8], \"%%s-%%d\", \"player\", 1234) -> \"%s\" (cut)\n", small);
    const int32_t value = -255;
    char digits[16];
    SafeItoA(&value, digits, sizeof digits, 16);
    std::printf("  SafeItoA(-255, radix 16) -> \"%s\"\n", digits);
    std::printf("  GetFileExt(\"a.b/c\") = \"%s\", GetFileExt(\"ui/main.lua\") = \"%s\"\n",
                GetFileExt("a.b/c").c_str(), GetFileExt("ui/main.lua").c_str());

    const std::string path = ctx.dataDir + "/strings/numbers.txt";
    std::ifstream in(path);
    if (!in) {
        DemoFail("strings: " + path + ": cannot open");
        return;
    }
    std::printf("  %s:\n  %-12s %10s %12s %22s %8s %10s\n", path.c_str(), "text", "StrToInt",
                "StrToUInt", "StrToUInt64", "SzToInt", "SzToDouble");
    for (std::string line; std::getline(in, line);) {
        std::printf("  %-12s %10d %12u %22llu %8d %10g\n", ("\"" + line + "\"").c_str(),
                    StrToInt(line), StrToUInt(line),
                    static_cast<unsigned long long>(StrToUInt64(line)), SzToInt(line.c_str()),
                    SzToDouble(line.c_str()));
    }

    const std::string utf8 = WideToUtf8(u"Pind \u4e2d\u6587");  // "Pind 中文"
    std::printf("  WideToUtf8(u\"Pind \\u4e2d\\u6587\") -> %s\n",
                Hex(reinterpret_cast<const uint8_t*>(utf8.data()), utf8.size()).c_str());
    const char* gbk = "\xd6\xd0\xce\xc4";  // "中文" in GBK
    std::printf("  GBK \"%s\": HasGb2312Char %d, HasUtf8ThreeByte %d; UTF-8: HasUtf8ThreeByte %d\n",
                Hex(reinterpret_cast<const uint8_t*>(gbk), 4).c_str(), HasGb2312Char(gbk),
                HasUtf8ThreeByte(gbk), HasUtf8ThreeByte(utf8.c_str()));
    char running[] = "ab";
    MaskRunning(running, 'a');
    std::printf("  MaskRunning(\"ab\", 'a') stops at the byte it zeroes: %02x %02x\n",
                static_cast<uint8_t>(running[0]), static_cast<uint8_t>(running[1]));
}

void DemoMasks() {
    DemoHeading("wide bit masks");
    const Int512 owned =
        Int512::FromBitIndex(3) | Int512::FromBitIndex(40) | Int512::FromBitIndex(200);
    const Int512 wanted = Int512::FromBitIndex(40) | Int512::FromBitIndex(70);
    std::vector<uint32_t> missing, extra;
    owned.DiffBits(wanted, missing, extra);
    std::printf("  owned bits 3, 40, 200; wanted bits 40, 70\n");
    std::printf("  missing:");
    for (uint32_t bit : missing) {
        std::printf(" %u", bit);
    }
    std::printf("; extra:");
    for (uint32_t bit : extra) {
        std::printf(" %u", bit);
    }
    std::printf(
        "\n  owned.HighBitIndex() = %u (8 bits of word 6 + 4 per word), LowWordTopBit() = %u\n",
        owned.HighBitIndex(), owned.LowWordTopBit());
    const Int128 low(uint64_t{0}, uint64_t{0x8000000000000000});
    std::printf("  Int128 low half 0x8000000000000000 < 1: %s (the low half compares signed)\n",
                low < Int128(uint64_t{0}, uint64_t{1}) ? "true" : "false");
}

void DemoCipher(const DemoContext& ctx) {
    DemoHeading("stream cipher");
    const std::string path = ctx.dataDir + "/crypt/message.txt";
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        DemoFail("stream cipher: " + path + ": cannot open");
        return;
    }
    const std::vector<uint8_t> plain((std::istreambuf_iterator<char>(in)),
                                     std::istreambuf_iterator<char>());
    const uint8_t key[8] = {7, 1, 3, 9, 5, 2, 4, 6};
    std::printf("  key %s (multiplier, addend 1, addend 2, seed for A, then B)\n",
                Hex(key, 8).c_str());
    IEncryptor* client = CreateClientCryptor(7, 1, 3, 9, 5, 2, 4, 6);
    IEncryptor* server = CreateClientCryptor(7, 1, 3, 9, 5, 2, 4, 6);
    std::vector<uint8_t> wire = plain;
    const int first = 5;  // the client sends in two pieces, the server reads in one
    client->Encrypt(wire.data(), first);
    client->Encrypt(wire.data() + first, static_cast<int>(wire.size()) - first);
    PrintRows("plain", plain);
    PrintRows("encrypted", wire);
    server->Decrypt(wire.data(), static_cast<int>(wire.size()));
    std::printf("  the server decrypts %zu bytes: %s\n", wire.size(),
                wire == plain ? "same as sent" : "DIFFERENT");

    // Rekeyed, then duplicated: the copy carries the changed tables; the key bytes alone do not.
    client->ChangeCode(0x12345678);
    IEncryptor* copy = client->Duplicate();
    IEncryptor* fresh = CreateClientCryptor(7, 1, 3, 9, 5, 2, 4, 6);
    std::vector<uint8_t> skip(wire.size());
    fresh->Encrypt(skip.data(), static_cast<int>(skip.size()));
    std::vector<uint8_t> byClient(plain.begin(), plain.begin() + 16);
    std::vector<uint8_t> byCopy = byClient;
    std::vector<uint8_t> byFresh = byClient;
    client->Encrypt(byClient.data(), 16);
    copy->Encrypt(byCopy.data(), 16);
    fresh->Encrypt(byFresh.data(), 16);
    std::printf("  ChangeCode(0x12345678), then Duplicate; the next 16 bytes:\n");
    PrintRows("original", byClient);
    PrintRows("copy", byCopy);
    PrintRows("fresh key", byFresh);
    fresh->Release();
    copy->Release();
    server->Release();
    client->Release();
}

}  // namespace

const char kCryptUsage[] =
    "usage: pind crypt KEYHEX [--decrypt] [--change-code N]\n"
    "  passes standard input through the client's stream cipher to standard output. KEYHEX is\n"
    "  the eight key bytes as 16 hexadecimal digits; --change-code rekeys with the 32-bit N\n"
    "  (decimal or 0x-hexadecimal) first.";

int RunCrypt(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kCryptUsage);
    }
    const char* keyText = nullptr;
    bool decrypt = false;
    bool change = false;
    uint32_t code = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--decrypt") == 0) {
            decrypt = true;
        } else if (std::strcmp(argv[i], "--change-code") == 0 && i + 1 < argc) {
            if (!ParseCode(argv[++i], &code)) {
                return UsageError("crypt", kCryptUsage,
                                  std::string(argv[i]) + ": not a 32-bit change code");
            }
            change = true;
        } else if (keyText == nullptr && argv[i][0] != '-') {
            keyText = argv[i];
        } else {
            return UsageError("crypt", kCryptUsage, std::string(argv[i]) + ": unknown argument");
        }
    }
    uint8_t key[8];
    if (keyText == nullptr || !ParseKey(keyText, key)) {
        return UsageError("crypt", kCryptUsage, "KEYHEX must be 16 hexadecimal digits");
    }
    platform::SetBinaryMode(stdin);
    platform::SetBinaryMode(stdout);
    CClientCryptor cryptor(key[0], key[1], key[2], key[3], key[4], key[5], key[6], key[7]);
    if (change) {
        cryptor.ChangeCode(code);
    }
    std::vector<uint8_t> chunk(64 * 1024);
    size_t n = 0;
    while ((n = std::fread(chunk.data(), 1, chunk.size(), stdin)) > 0) {
        if (decrypt) {
            cryptor.Decrypt(chunk.data(), static_cast<int>(n));
        } else {
            cryptor.Encrypt(chunk.data(), static_cast<int>(n));
        }
        if (!WriteOut(chunk.data(), n)) {
            return kExitFailure;
        }
    }
    if (std::ferror(stdin)) {
        return Fail("crypt", "cannot read standard input");
    }
    return FlushOut() ? kExitOk : kExitFailure;
}

void DemoCrypt(const DemoContext& ctx) {
    DemoStrings(ctx);
    DemoMasks();
    DemoCipher(ctx);
}

}  // namespace pind::tool
