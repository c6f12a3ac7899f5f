// CPindIni: the line rules of the three forms, look-ups and their reports, the walk, the writers
// and SetValue. Files are served from a temp folder through the recording client.
// Not covered: a failing allocation in Create (no injection point for operator new).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "pind/client/PackFileClient.h"
#include "pind/config/PindIni.h"
#include "pind/crypto/KeyCipher.h"
#include "pind/files/MemoryPackage.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"
#include "support/EngineLogCapture.h"
#include "support/FakePackage.h"
#include "support/Printable.h"
#include "support/RecordingClient.h"
#include "support/TempDir.h"

namespace {

using pind::test::EngineLogCapture;
using pind::test::RecordingClient;
using pind::test::RecordingDebug;
using pind::test::TempDir;

// "[name]{k=v,...}" per record in walk order; "[name]null" for a section without a key table.
std::string Walk(CPindIni& ini) {
    std::string text;
    for (bool more = ini.FirstSection(); more; more = ini.NextSection()) {
        const CPindIni::SectionRecord* pRecord = ini.GetCurrentSection();
        text += "[" + pRecord->strName + "]";
        if (pRecord->pKeys == nullptr) {
            text += "null";
            continue;
        }
        text += "{";
        for (const auto& [key, value] : *pRecord->pKeys) {
            text += key + "=" + value + ",";
        }
        text += "}";
    }
    return text;
}

std::string Int32Bytes(int32_t n) {
    std::string bytes(4, '\0');
    std::memcpy(&bytes[0], &n, 4);
    return bytes;
}

// One record of the keyed form.
std::string Record(std::string line, const char* pszKey) {
    CPindIni::Scramble(&line[0], static_cast<int>(line.size()), pszKey);
    return Int32Bytes(static_cast<int32_t>(line.size())) + line;
}

class PindIniTest : public ::testing::Test {
protected:
    PindIniTest() { m_client.ServeFrom(m_dir.Path()); }

    RecordingClient m_client;
    TempDir m_dir;
};

TEST_F(PindIniTest, PlainLinesFollowTheLineRules) {
    // Text, section, key, value (null: the look-up misses). No CR LF "[]" row: Windows text mode
    // turns it into the LF one, while POSIX hands the CR to the line rules, by design.
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"[s]\na=b\n", "s", "a", "b"},
        {"[s]\na=b", "s", "a", "b"},
        {"[s]\na=\n", "s", "a", nullptr},
        {"[s]\nab=\n", "s", "ab", ""},
        {"[s]\r\nab=\r\n", "s", "ab", ""},
        {"[s]\r\nk=\r\n", "s", "k", nullptr},
        {"[s]\nkey\t\t=\t value \t# x\n", "s", "key", " value "},
        {"[s]\nkey = value\n", "s", "key ", " value"},
        {"[s]\n key=value\n", "s", " key", nullptr},
        {"[s]\n=value\n", "s", "", nullptr},
        {"[s]\n\\k=v\n", "s", "\\k", nullptr},
        {"[s]\n/k=v\n", "s", "/k", nullptr},
        {"[s]\n;k=v\n", "s", ";k", nullptr},
        {"[s]\n#k=v\n", "s", "#k", "v"},
        {"[s]\nkv\n", "s", "kv", nullptr},
        {"[s]\nk=v=w\n", "s", "k", "v=w"},
        {"[s]\nk=a b\tc\n", "s", "k", "a b"},
        {"[s]\nk=v\rw\n", "s", "k", "v"},
        {"[Name] trailing ]\nk=v\n", "Name] trailing ", "k", "v"},
        {"[s]\n[abc=5\n", "s", "[abc", "5"},
        {"[s\nk=v\n", "s", "k", nullptr},
        {"k=v\n[s]\nx=1\n", "s", "k", nullptr},
        {"[s]\n[]\nk=v\n", "s", "k", nullptr},
        {"[s]\nk=a\nk=b\n", "s", "k", "b"},
        {" [s]\nk=v\n", "s", "k", nullptr},
        {"//[s]\nk=v\n", "s", "k", nullptr},
        {"[\xd6\xd0]\n\xce\xc4=\xd7\xd6\n", "\xd6\xd0", "\xce\xc4", "\xd7\xd6"}};
    for (const auto& [text, section, key, want] : cases) {
        m_dir.Write("a.ini", text);
        CPindIni ini;
        ASSERT_TRUE(ini.Load("a.ini"));
        const char* got = ini.GetString(section, key, nullptr);
        EXPECT_EQ(got ? got : "(miss)", std::string(want ? want : "(miss)"))
            << pind::test::Printable(text) << " " << pind::test::Printable(key);
    }
}

TEST_F(PindIniTest, WalkKeepsFileOrderDuplicatesAndNullTablesAndCopiesOwnThem) {
    m_dir.Write("w.ini", "x=0\n[a]\nx=1\n[b]\n[a]\ny=2\n[]\nz=3\n[c]\nk=v\n");
    CPindIni ini;
    ASSERT_TRUE(ini.Load("w.ini"));
    const std::string walk = "[a]{x=1,}[b]null[a]{y=2,}[c]{k=v,}";
    EXPECT_EQ(Walk(ini), walk);
    EXPECT_EQ(ini.GetSectionCount(), 4);
    EXPECT_TRUE(ini.HasSection("b"));
    EXPECT_EQ(ini.GetSection("b"), nullptr);
    EXPECT_FALSE(ini.HasKey("a", "x"));  // look-ups see the last [a]
    EXPECT_TRUE(ini.HasKey("a", "y"));
    EXPECT_FALSE(ini.HasKey(nullptr, "y"));

    ASSERT_TRUE(ini.FirstSection());
    EXPECT_STREQ(ini.GetCurrentValue("x"), "1");
    EXPECT_TRUE(ini.NextSection());
    EXPECT_STREQ(ini.GetCurrentValue("x"), "");
    auto* pSource = new CPindIni(ini);
    CPindIni copy(*pSource);
    CPindIni assigned;
    assigned = *pSource;
    delete pSource;
    for (CPindIni* p : {&copy, &assigned}) {
        EXPECT_STREQ(p->GetCurrentSectionName(), "b");
        EXPECT_EQ(p->GetInt("a", "y", 0), 2);
        EXPECT_EQ(Walk(*p), walk);
        EXPECT_STREQ(p->GetFileName(), "w.ini");
    }
    EXPECT_TRUE(ini.NextSection());
    EXPECT_TRUE(ini.NextSection());
    EXPECT_STREQ(ini.GetCurrentSectionName(), "c");
    EXPECT_FALSE(ini.NextSection());
    EXPECT_EQ(ini.GetCurrentSection(), nullptr);
    EXPECT_STREQ(ini.GetCurrentValue("k"), "");
    EXPECT_FALSE(ini.NextSection());  // past the end stays past the end

    EXPECT_FALSE(ini.Load("missing.ini"));  // a failed load leaves the reader empty
    EXPECT_FALSE(ini.FirstSection());
    EXPECT_STREQ(ini.GetFileName(), "missing.ini");
    m_dir.Write("empty.ini", "");
    EXPECT_TRUE(ini.Load("empty.ini"));
    const std::unique_ptr<CPindIni> pIni(CPindIni::Create("w.ini", true, nullptr));
    ASSERT_NE(pIni, nullptr);
    EXPECT_EQ(pIni->GetInt("a", "y", 0), 2);
}

TEST_F(PindIniTest, ConversionsFollowTheCRuntime) {
    m_dir.Write("n.ini",
                "[n]\nint=12abc\nneg=-7\nwide=9223372036854775807\nreal=1.5e2\ntext=abc\n");
    const CPindIni ini("n.ini", false);
    EXPECT_EQ(ini.GetInt("n", "int", 0), 12);
    EXPECT_EQ(ini.GetInt("n", "text", 5), 0);
    EXPECT_EQ(ini.GetUInt("n", "neg", 0), 4294967289u);
    EXPECT_EQ(ini.GetInt64("n", "wide", 0), INT64_MAX);
    EXPECT_DOUBLE_EQ(ini.GetDouble("n", "real", 0), 150.0);
}

TEST_F(PindIniTest, MissesAreReportedOnlyWhenAsked) {
    m_dir.Write("r.ini", "[Empty]\n[s]\nk=1\n");
    for (const bool report : {false, true}) {
        m_client.debugTexts.clear();
        const CPindIni ini("r.ini", report);
        EXPECT_EQ(ini.GetInt("Empty", "k", 4), 4);
        EXPECT_EQ(ini.GetInt("s", "j", 5), 5);
        EXPECT_STREQ(ini.GetString("t", "k", "d"), "d");
        EXPECT_EQ(ini.GetSection("t"), nullptr);
        EXPECT_TRUE(ini.HasSection("Empty"));
        EXPECT_EQ(ini.GetInt("s", "k", 0), 1);
        const std::vector<std::string> want =
            report ? std::vector<std::string>{"section[Empty] not found in r.ini!",
                                              "section[s], index[j] not found in r.ini!",
                                              "section[t] not found in r.ini!",
                                              "section[t] not found in r.ini!"}
                   : std::vector<std::string>{};
        EXPECT_EQ(m_client.debugTexts, want) << "report=" << report;
    }
}

TEST_F(PindIniTest, TableLookUpsReportOnlyThroughTheReader) {
    m_dir.Write("t.ini", "[s]\nk=42\nw=-5000000000\n");
    const CPindIni ini("t.ini", true);
    const CPindIni::KeyTable* pTable = ini.GetSection("s");
    ASSERT_NE(pTable, nullptr);
    EXPECT_EQ(CPindIni::TableGetInt(pTable, "k", 0), 42);
    EXPECT_EQ(CPindIni::TableGetInt(pTable, "x", 7), 7);
    EXPECT_EQ(CPindIni::TableGetString(pTable, nullptr), nullptr);
    EXPECT_STREQ(CPindIni::TableGetString(pTable, "x", "d"), "d");
    EXPECT_EQ(ini.GetInt64(pTable, "w", 0), -5000000000);
    EXPECT_TRUE(m_client.debugTexts.empty());
    EXPECT_EQ(ini.GetInt(pTable, "x", 1), 1);
    EXPECT_EQ(ini.GetInt64(pTable, "x", 2), 2);
    EXPECT_STREQ(ini.GetString(pTable, "x", "d"), "d");
    EXPECT_EQ(ini.GetInt(static_cast<const CPindIni::KeyTable*>(nullptr), "x", 3), 3);
    ASSERT_EQ(m_client.debugTexts.size(), 4u);
    // The table's own bytes stand where the section name would.
    const std::string tail = "], index[x] not found in t.ini!";
    for (const std::string& text : m_client.debugTexts) {
        EXPECT_EQ(text.rfind("section[", 0), 0u) << text;
        EXPECT_EQ(text.substr(text.size() - tail.size()), tail) << text;
    }
    EXPECT_EQ(m_client.debugTexts[3], "section[(null)], index[x] not found in t.ini!");
}

TEST_F(PindIniTest, PreconditionsReportTheirLines) {
    EngineLogCapture log;
    RecordingDebug debug;
    CPindIni ini(true);
    const char* pszNull = nullptr;
    EXPECT_EQ(ini.GetInt(pszNull, "k", 1), 1);
    EXPECT_EQ(ini.GetUInt("s", nullptr, 2u), 2u);
    EXPECT_EQ(ini.GetInt64(pszNull, nullptr, 3), 3);
    EXPECT_STREQ(ini.GetString(pszNull, "k", "d"), "d");
    EXPECT_DOUBLE_EQ(ini.GetDouble(nullptr, "k", 4.0), 4.0);
    EXPECT_STREQ(ini.GetCurrentValue(nullptr), "");
    EXPECT_FALSE(ini.Load(nullptr));
    EXPECT_FALSE(ini.LoadScrambled(nullptr));
    EXPECT_EQ(CPindIni::Create(nullptr, false, nullptr), nullptr);
    m_dir.Write("p.ini", "[s]\nk=1\n");
    EXPECT_FALSE(ini.SetValue("p.ini", nullptr, "k", "v"));
    EXPECT_FALSE(ini.SetValue("p.ini", "s", "", "v"));
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                               "IF_NOT(pszSection && pszIndex) in PindIni, 555",
                               "IF_NOT(pszSection && pszIndex) in PindIni, 582",
                               "IF_NOT(pszSection && pszIndex) in PindIni, 641",
                               "IF_NOT(pszSection && pszIndex) in PindIni, 668",
                               "IF_NOT(pszIndex) in PindIni, 71",
                               "IF_NOT(pszIniFile) in PindIni, 278",
                               "IF_NOT(pszIniFile) in PindIni, 414",
                               "IF_NOT(pszIniFile) in PindIni, 726",
                               "IF_NOT(pszSection && pszKey) in PindIni, 898",
                           }));
    EXPECT_TRUE(m_client.debugTexts.empty());
    EXPECT_TRUE(debug.texts.empty());
}

TEST(PindIniNoClient, LoadingFailsUntilAHostServesFiles) {
    SetClient(nullptr);
    CPindIni ini;
    EXPECT_FALSE(ini.Load("ini/GameSetup.ini"));
    EXPECT_FALSE(ini.LoadEx("ini/GameSetup.ini", nullptr, false));
    EXPECT_FALSE(ini.LoadScrambled("ini/GameSetup.ini"));
    EXPECT_EQ(CPindIni::Create("ini/GameSetup.ini", false, nullptr), nullptr);
    EXPECT_STREQ(ini.GetFileName(), "ini/GameSetup.ini");
}

TEST_F(PindIniTest, OpensThroughTheRightSlotAndMode) {
    m_dir.Write("o.ini", "[s]\nk=1\n");
    CPindIni ini;
    ini.Load("o.ini");
    ini.Load("o.ini", "key", true);
    ini.LoadEx("o.ini", nullptr, false);
    ini.LoadScrambled("o.ini");
    ini.OpenForWrite("w.ini", false);
    ini.OpenForWrite("w.ini", true);
    std::vector<std::string> got;
    for (const RecordingClient::Open& open : m_client.opens) {
        got.push_back(open.name + " " + open.mode + (open.flag ? " flag" : "") +
                      (open.extended ? " extended" : ""));
    }
    EXPECT_EQ(got, (std::vector<std::string>{"o.ini r flag", "o.ini rb flag extended",
                                             "o.ini r flag extended", "o.ini rb flag", "w.ini wb",
                                             "w.ini wb extended"}));
}

// A packaged file is parsed in place rather than line by line through PackFGets; it must read as
// the line read would give it, up to and past 0x00 and 0xFF bytes and 2047-byte lines. Each text
// is read from disk as well, where the 0xFF byte is a plain byte.
TEST_F(PindIniTest, PackagedFilesReadAsTheLineReadGivesThem) {
    const std::string longValue(2045, 'x');
    // Text, walk, walk from disk (null: the same).
    const std::tuple<std::string, std::string, const char*> cases[] = {
        {"[s]\r\nk=v\r\nj=w", "[s]{j=w,k=v,}", nullptr},
        {"[s]\nk=v\rX\n\r\n", "[s]{k=v,}", nullptr},
        {"[s]\nk=a\nz\r\n[t]\nk=b\n[s]\n", "[s]{k=a,}[t]{k=b,}[s]null", nullptr},
        {std::string("[s]\nk=a\0b\nj=c\n", 15), "[s]{j=c,k=a,}", nullptr},
        {"[s]\nk=a\xffj=c\nq=1\n", "[s]{k=a,}", "[s]{k=a\xffj=c,q=1,}"},
        {"[s]\nk=" + longValue + "tail=1\n" + std::string(2047, 'a') + "q=2\n",
         "[s]{k=" + longValue + ",q=2,tail=1,}", nullptr},
    };
    CMemoryPackage package;
    pind::test::ScopedPackage packageScope(&package);
    CPackFileClient client(/*bPackageFirst=*/true);
    for (const auto& [text, want, wantFromDisk] : cases) {
        package.AddFile("m.ini", text);
        m_dir.Write("d.ini", text);
        CPindIni ini;
        SetClient(&client);
        ASSERT_TRUE(ini.Load("m.ini"));
        EXPECT_EQ(Walk(ini), want) << pind::test::Printable(text.c_str());
        SetClient(&m_client);
        ASSERT_TRUE(ini.Load("d.ini"));
        EXPECT_EQ(Walk(ini), wantFromDisk ? wantFromDisk : want)
            << pind::test::Printable(text.c_str());
    }
}

// Large readers answer from an index once asked often; it must agree with the maps, follow
// SetValue, and step aside once a table went out writable.
TEST_F(PindIniTest, ManyLookUpsAgreeWithTheMapsAsTablesChange) {
    std::string text;
    for (int s = 0; s < 40; ++s) {
        text += "[s" + std::to_string(s) + "]\n";
        for (int k = 0; k < 5; ++k) {
            text += "k" + std::to_string(k) + "=" + std::to_string(s * 10 + k) + "\n";
        }
    }
    m_dir.Write("big.ini", text);
    CPindIni ini;
    ASSERT_TRUE(ini.Load("big.ini"));
    for (int round = 0; round < 3; ++round) {
        for (int s = 0; s < 40; ++s) {
            const std::string section = "s" + std::to_string(s);
            for (int k = 0; k < 6; ++k) {
                const std::string key = "k" + std::to_string(k);
                EXPECT_EQ(ini.GetInt(section.c_str(), key.c_str(), -1), k < 5 ? s * 10 + k : -1);
            }
            EXPECT_EQ(ini.GetInt((section + "x").c_str(), "k0", -1), -1);
        }
    }
    EXPECT_TRUE(ini.SetValue("big.ini", "s7", "k2", "changed"));
    EXPECT_TRUE(ini.SetValue("big.ini", "s7", "new", "added"));
    for (int i = 0; i < 300; ++i) {
        ASSERT_STREQ(ini.GetString("s7", "k2", ""), "changed");
        ASSERT_STREQ(ini.GetString("s7", "new", ""), "added");
    }
    CPindIni::KeyTable* pTable = ini.GetSection("s3");
    ASSERT_NE(pTable, nullptr);
    pTable->erase("k1");
    (*pTable)["k9"] = "nine";
    EXPECT_STREQ(ini.GetString("s3", "k1", "gone"), "gone");
    EXPECT_STREQ(ini.GetString("s3", "k9", ""), "nine");
    EXPECT_EQ(ini.GetInt("s39", "k4", -1), 394);
}

TEST_F(PindIniTest, KeyedRecordsAreUnscrambledWithTheCallersKey) {
    const char* pszKey = "k3y";
    const std::string longRecord = "big=" + std::string(3000, 'z');
    m_dir.Write("k.dat", Record("[s]\n", pszKey) + Record("a=1", pszKey) + Record(";b=2", pszKey) +
                             Record("c=\t3\r\n", pszKey) + Record(longRecord, pszKey) +
                             Record("d=4", pszKey) + Record("ab", pszKey) + Int32Bytes(0) +
                             Record("e=5", pszKey));
    CPindIni ini;
    ASSERT_TRUE(ini.Load("k.dat", pszKey));
    EXPECT_EQ(Walk(ini), "[s]{a=1,big=" + std::string(2044, 'z') + ",c=3,d=4,e=5,}");

    // A negative length ends the file; a short record is reported and parsed as far as it came.
    RecordingDebug debug;
    m_dir.Write("n.dat", Record("[s]", pszKey) + Record("a=1", pszKey) + Int32Bytes(-1) +
                             Record("b=2", pszKey));
    ASSERT_TRUE(ini.Load("n.dat", pszKey));
    EXPECT_EQ(Walk(ini), "[s]{a=1,}");
    EXPECT_TRUE(debug.texts.empty());
    std::string shortRecord = Record("[s]", pszKey) + Record("abc=defgh", pszKey);
    shortRecord.resize(shortRecord.size() - 3);
    m_dir.Write("s.dat", shortRecord);
    ASSERT_TRUE(ini.Load("s.dat", pszKey));
    // The missing bytes were zeros XOR-ed with the key: the key's own bytes.
    EXPECT_EQ(Walk(ini), "[s]{abc=dek3y,}");
    EXPECT_EQ(debug.texts, std::vector<std::string>{
                               "ASSERT(nLen == fread(szLine, sizeof(char), nLen, fp)) in 302 line "
                               "of PindIni"});
}

// Tricky plain files: plain Load and EncryptFile + LoadScrambled give the same walk but for key
// tables (null in the plain walk, empty in the scrambled one), and where a walk is given: the
// scrambled form drops lines shorter than three bytes, such as "[]\n", which the plain form keeps.
TEST_F(PindIniTest, ScrambledFileReadsAsThePlainOne) {
    const std::pair<std::string, const char*> corpus[] = {
        {"[s]\r\nk=v\r\n[t]\r\na\t\t=\t b \tc\r\n", nullptr},
        {"orphan=1\n[s]\nk = v\n k=skip\n\tk2=skip\n;c=1\n//d=1\n#e=1\nf=\n=g\n", nullptr},
        {"[s]\nk=1\n[s]\nk=2\nj=3\n[u]\n[v]\nx=1", nullptr},
        {"[a]b] x\nk=v\r\n[[c]\nk=w\n[d\nk=x\n", nullptr},
        {"\n\r\n\n[s]\n\n\nk=v\n\r\n", nullptr},
        {"[s]\nkey=" + std::string(180, '7') + "\n", nullptr},
        {"[\xd6\xd0\xce\xc4]\n\xbc\xfc=\xd6\xb5\n", nullptr},
        {"", nullptr},
        {"[s]\nk=1\n[]\nj=2\n[e]\n", "[s]{j=2,k=1,}[e]{}"},  // plain: "[s]{k=1,}[e]null"
    };
    CMyCrypto crypto;
    for (const auto& [text, want] : corpus) {
        const std::string plain = m_dir.Write("p.ini", text);
        ASSERT_TRUE(crypto.EncryptFile(plain.c_str(), m_dir.File("p.sini").c_str(), "Secret#1"));
        CPindIni plainIni;
        CPindIni scrambledIni;
        ASSERT_TRUE(plainIni.Load("p.ini"));
        ASSERT_TRUE(scrambledIni.LoadScrambled("p.sini"));
        std::string walk = Walk(plainIni);
        for (size_t at; (at = walk.find("null")) != std::string::npos;) {
            walk.replace(at, 4, "{}");
        }
        EXPECT_EQ(Walk(scrambledIni), want ? want : walk) << pind::test::Printable(text.c_str());
    }
}

TEST_F(PindIniTest, BrokenScrambledHeadersReadNothing) {
    // Marker, key length, key ("kd" XOR 7, 8), records.
    const auto file = [](const char* marker, int32_t length) {
        return std::string(marker, 3) + Int32Bytes(length) + "\x6c\x6c" + Record("[s]", "kd") +
               Record("a=1", "kd");
    };
    const std::tuple<const char*, std::string, bool> cases[] = {
        {"good", file("\xff\xff\x00", 2), true},
        {"marker", file("\xff\xfe\x00", 2), false},
        {"zero", file("\xff\xff\x01", 2), false},
        {"negative", file("\xff\xff\x00", -2), false},
        {"too long", file("\xff\xff\x00", 1000), false},
        {"cut", std::string("\xff\xff\x00", 3), false},
        {"no key", std::string("\xff\xff\x00", 3) + Int32Bytes(0) + "[s]", true}};
    m_dir.Write("x.ini", "[old]\nk=1\n");
    for (const auto& [name, bytes, ok] : cases) {
        m_dir.Write("h.sini", bytes);
        CPindIni ini;
        ASSERT_TRUE(ini.Load("x.ini"));
        EXPECT_EQ(ini.LoadScrambled("h.sini"), ok) << name;
        EXPECT_EQ(Walk(ini), ok && bytes.size() > 20 ? "[s]{a=1,}" : "") << name;
    }
}

TEST_F(PindIniTest, ScrambledRecordsAreBoundedAndShortReadsReported) {
    RecordingDebug debug;
    const std::string header = std::string("\xff\xff\x00", 3) + Int32Bytes(1) + "\x6c";  // "k" ^ 7
    std::string bytes = header + Record("[s]", "k") + Record("a=" + std::string(1500, 'v'), "k") +
                        Record("b=2", "k") + Record("c=3456", "k");
    bytes.resize(bytes.size() - 2);
    m_dir.Write("b.sini", bytes);
    CPindIni ini;
    ASSERT_TRUE(ini.LoadScrambled("b.sini"));
    EXPECT_EQ(Walk(ini), "[s]{a=" + std::string(1022, 'v') + ",b=2,c=34kk,}");
    EXPECT_EQ(debug.texts, std::vector<std::string>{
                               "ASSERT(nLen == fread(szLine, sizeof(BYTE), nLen, fp)) in 462 line "
                               "of PindIni"});
}

TEST_F(PindIniTest, WritersSkipZeroesAndNeedAWriteFile) {
    {
        CPindIni ini;
        ini.WriteSection("ignored");  // no write file yet
        ASSERT_TRUE(ini.OpenForWrite("out.ini", false));
        EXPECT_TRUE(ini.IsWriteFileEmpty());
        ini.WriteSection("a");
        EXPECT_FALSE(ini.IsWriteFileEmpty());
        ini.WriteSection(-12);
        ini.WriteKey("k", "v");
        ini.WriteKey(nullptr, "v");
        ini.WriteKey("z", 0);
        ini.WriteKey("z", 0, true);
        ini.WriteKey("n", 7, false);
        ini.WriteNewLine();
    }
    EXPECT_EQ(m_dir.Read("out.ini"), "[a]\n[-12]\nk=v\n=v\nz=0\nn=7\n\n");
}

TEST_F(PindIniTest, SetValueRewritesInSectionNameOrder) {
    CPindIni ini;
    EXPECT_TRUE(ini.SetValue("new.ini", "s", "k", "v"));
    EXPECT_EQ(m_dir.Read("new.ini"), "[s]\nk=v\n");

    m_dir.Write("e.ini", "; comment\n[b]\nx=1\n[a]\ny=2\n\n[b]\nz=3\n[n]\n");
    EXPECT_TRUE(ini.SetValue("e.ini", "a", "k", "v", false));
    EXPECT_EQ(m_dir.Read("e.ini"), "[a]\nk=v\ny=2\n[b]\nz=3\n[n]\n");
    EXPECT_TRUE(ini.SetValue("e.ini", "a", "y", nullptr));
    EXPECT_TRUE(ini.SetValue("e.ini", "n", "q", nullptr));
    EXPECT_EQ(m_dir.Read("e.ini"), "[a]\nk=v\ny=2\n[b]\nz=3\n[n]\nq=\n");
    EXPECT_TRUE(ini.SetValue("e.ini", "c", "x", "1"));
    EXPECT_TRUE(ini.SetValue("e.ini", "b", "z", "4"));
    // "q=" was written but is too short to be read back by the next SetValue.
    EXPECT_EQ(m_dir.Read("e.ini"), "[a]\nk=v\ny=2\n[b]\nz=4\n[c]\nx=1\n[n]\n");
    EXPECT_EQ(ini.GetInt("b", "z", 0), 4);
}

TEST(PindIniScramble, XorsWithTheKeyCyclically) {
    char buffer[] = "abcdef";
    CPindIni::Scramble(buffer, 6, "\x01\x02");
    EXPECT_STREQ(buffer, "``bfdd");
    CPindIni::Scramble(buffer, 6, "");
    CPindIni::Scramble(buffer, 6, nullptr);
    CPindIni::Scramble(nullptr, 6, "k");
    EXPECT_STREQ(buffer, "``bfdd");
}

}  // namespace
