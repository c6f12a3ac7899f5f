// CMyZipOperator and the two package backends over archives made here with the zip writer,
// including truncated, corrupt and lying ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "pind/files/ZipOperator.h"
#include "pind/files/ZipPackage.h"
#include "pind/files/ZipWriter.h"
#include "support/TempDir.h"

namespace {

using Handle = pind::platform::PackHandle;

std::string Pattern(size_t n) {
    // Sixteen letters in a pseudo-random order: deflates to about half.
    std::string bytes(n, '\0');
    uint32_t state = 12345;
    for (char& c : bytes) {
        state = state * 1103515245u + 12345u;
        c = static_cast<char>('a' + ((state >> 16) & 15));
    }
    return bytes;
}

// Rewrites the first entry's uncompressed size in both its local and its central header.
std::string WithDeclaredSize(std::string archive, uint32_t size) {
    std::memcpy(&archive[archive.find("PK\x03\x04") + 22], &size, 4);
    std::memcpy(&archive[archive.find("PK\x01\x02") + 24], &size, 4);
    return archive;
}

// Little-endian fields for the archives written by hand below.
std::string Le(uint64_t n, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; ++i, n >>= 8) {
        out += static_cast<char>(n & 0xFF);
    }
    return out;
}

uint32_t Crc32(const std::string& bytes) {
    uint32_t crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        }
    }
    return ~crc;
}

// One entry laid out as `zip -fz` writes it: 0xFFFFFFFF sizes in the local header and the central
// uncompressed size, the real ones in Zip64 extra fields, and a Zip64 end record.
std::string Zip64Archive(const std::string& name, const std::string& text, bool deflate) {
    std::string data = text;
    if (deflate) {  // zlib's stream without its 2-byte header and 4-byte trailer
        std::string z(pind::detail::ZlibCompressBound(text.size()), '\0');
        unsigned long n = z.size();
        pind::detail::ZlibCompress(reinterpret_cast<unsigned char*>(&z[0]), &n,
                                   reinterpret_cast<const unsigned char*>(text.data()),
                                   text.size());
        data = z.substr(2, n - 6);
    }
    const uint32_t crc = Crc32(text);
    const std::string method = Le(deflate ? 8 : 0, 2);
    std::string zip = "PK\x03\x04" + Le(45, 2) + Le(0, 2) + method + Le(0, 4) + Le(crc, 4) +
                      Le(0xFFFFFFFF, 4) + Le(0xFFFFFFFF, 4) + Le(name.size(), 2) + Le(20, 2) +
                      name + Le(1, 2) + Le(16, 2) + Le(text.size(), 8) + Le(data.size(), 8) + data;
    const size_t central = zip.size();
    zip += "PK\x01\x02" + Le(45, 2) + Le(45, 2) + Le(0, 2) + method + Le(0, 4) + Le(crc, 4) +
           Le(data.size(), 4) + Le(0xFFFFFFFF, 4) + Le(name.size(), 2) + Le(12, 2) + Le(0, 2) +
           Le(0, 4) + Le(0, 4) + Le(0, 4) + name + Le(1, 2) + Le(8, 2) + Le(text.size(), 8);
    const size_t end64 = zip.size();
    zip += "PK\x06\x06" + Le(44, 8) + Le(45, 2) + Le(45, 2) + Le(0, 8) + Le(1, 8) + Le(1, 8) +
           Le(end64 - central, 8) + Le(central, 8);
    zip += "PK\x06\x07" + Le(0, 4) + Le(end64, 8) + Le(1, 4);
    zip += "PK\x05\x06" + Le(0, 4) + Le(1, 2) + Le(1, 2) + Le(end64 - central, 4) + Le(central, 4) +
           Le(0, 2);
    return zip;
}

class Zip : public ::testing::Test {
protected:
    std::string Make(const std::string& name, const std::vector<pind::ZipSource>& entries) {
        EXPECT_TRUE(pind::WriteZipArchive(m_dir.File(name), entries));
        return m_dir.File(name);
    }
    pind::test::TempDir m_dir;
};

TEST_F(Zip, FirstFileGrowsTheBufferOnceThenReusesIt) {
    const std::string big = Pattern(3000000);
    const std::string a = Make("big.zip", {{"big.bin", big, true}, {"next.bin", "later", true}});
    const std::string b = Make("small.zip", {{"ten.bin", "0123456789", false}});
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    ASSERT_EQ(zip.ReadFirstFile(a.c_str(), &data), 3000000u);
    EXPECT_EQ(zip.GetCapacity(), 3000000u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), big.size()), big);
    const unsigned char* const buffer = zip.GetBuffer();

    ASSERT_EQ(zip.ReadFirstFile(b.c_str(), &data), 10u);
    EXPECT_EQ(data, buffer);
    EXPECT_EQ(zip.GetCapacity(), 3000000u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 11), std::string("0123456789\0", 11));
    EXPECT_TRUE(std::all_of(data + 10, data + 3000000, [](unsigned char c) { return c == 0; }));

    CMyZipOperator copy(zip);  // shares the buffer; both let go safely
    EXPECT_EQ(copy.GetBuffer(), buffer);
}

TEST_F(Zip, FirstFileFailuresLeaveDataAlone) {
    const std::string ok = Make("ok.zip", {{"a.txt", "hello", true}});
    CMyZipOperator zip;
    unsigned char sentinel = 0;
    unsigned char* data = &sentinel;
    // Empty and non-zip archives are rows of DamagedArchives.
    for (const std::string& path : {m_dir.File("missing.zip"), std::string()}) {
        EXPECT_EQ(zip.ReadFirstFile(path.c_str(), &data), 0u) << path;
    }
    EXPECT_EQ(zip.ReadFirstFile(nullptr, &data), 0u);
    EXPECT_EQ(zip.ReadFirstFile(ok.c_str(), nullptr), 0u);
    EXPECT_EQ(data, &sentinel);
    // By value: EXPECT_EQ binds a reference, and the DLL exports no address for this constant.
    EXPECT_EQ(zip.GetCapacity(), uint32_t{CMyZipOperator::kInitialCapacity});
    EXPECT_EQ(zip.ReadFirstFile(ok.c_str(), &data), 5u);
    EXPECT_STREQ(reinterpret_cast<char*>(data), "hello");
}

TEST_F(Zip, DamagedArchives) {
    const std::string text = Pattern(20000);
    Make("good.zip", {{"t.txt", text, true}});
    Make("empty.zip", {});
    const std::string good = m_dir.Read("good.zip");
    std::string corrupt = good;
    const size_t dataAt = good.find("PK\x03\x04") + 30 + 5;
    corrupt[dataAt + (good.find("PK\x01\x02") - dataAt) / 2] ^= 0x5A;  // mid deflated data
    std::string badCrc = good;  // the CRC-32 changed in both headers
    badCrc[good.find("PK\x03\x04") + 14] ^= 1;
    badCrc[good.find("PK\x01\x02") + 16] ^= 1;
    struct Case {
        const char* what;
        std::string bytes;
        unsigned int wantSize;  // ReadFirstFile's result
        size_t wantPrefix;      // leading bytes equal to the text
        bool packageOpens;      // CZipPackage serves the entry
    };
    const Case cases[] = {
        {"intact", good, 20000, 20000, true},
        {"empty archive", m_dir.Read("empty.zip"), 0, 0, false},
        {"not a zip", "not a zip", 0, 0, false},
        {"truncated", good.substr(0, good.size() - 30), 0, 0, false},
        {"cut in half", good.substr(0, good.size() / 2), 0, 0, false},
        {"declares more", WithDeclaredSize(good, 25000), 25000, 20000, true},
        {"declares less", WithDeclaredSize(good, 100), 100, 100, false},
        {"declares 4 GiB", WithDeclaredSize(good, 0xFFFFFFF0u), 0, 0, false},
        {"corrupt data", corrupt, 20000, 0, false},
        {"wrong CRC-32", badCrc, 20000, 20000, false},
    };
    for (const Case& c : cases) {
        const std::string path = m_dir.Write("case.zip", c.bytes);
        CMyZipOperator zip;
        unsigned char* data = nullptr;
        const unsigned int size = zip.ReadFirstFile(path.c_str(), &data);
        EXPECT_EQ(size, c.wantSize) << c.what;
        if (size > 0) {
            ASSERT_NE(data, nullptr);
            EXPECT_LE(size, zip.GetCapacity()) << c.what;
            EXPECT_EQ(std::memcmp(data, text.data(), c.wantPrefix), 0) << c.what;
        }
        CZipPackage pack(path);
        Handle handle = nullptr;
        const bool opened = pack.Open("t.txt", &handle) == 0;
        EXPECT_EQ(opened, c.packageOpens) << c.what;
        if (opened) {
            EXPECT_EQ(pack.GetLen(handle), text.size());
            pack.Close(handle);
        }
    }
}

TEST_F(Zip, DamagedEntryKeepsTheWholeChunksReadBeforeTheDamage) {
    // A deflate stream by hand: stored blocks holding the text, then a block of the invalid type
    // 3. Written as a stored entry, then relabelled deflated.
    const std::string text = Pattern(150000);
    std::string stream;
    for (size_t at = 0; at < text.size(); at += 50000) {
        const auto n = static_cast<uint16_t>(std::min<size_t>(50000, text.size() - at));
        const uint16_t lengths[] = {n, static_cast<uint16_t>(~n)};
        stream += '\0';  // not the last block; stored
        stream.append(reinterpret_cast<const char*>(lengths), sizeof lengths);
        stream.append(text, at, n);
    }
    stream += '\x07';  // the last block; type 3
    Make("bad.zip", {{"t.txt", stream, false}});
    std::string bytes = WithDeclaredSize(m_dir.Read("bad.zip"), 200000);
    bytes[bytes.find("PK\x03\x04") + 8] = 8;
    bytes[bytes.find("PK\x01\x02") + 10] = 8;
    const std::string path = m_dir.Write("bad.zip", bytes);

    CMyZipOperator zip;
    unsigned char* data = nullptr;
    ASSERT_EQ(zip.ReadFirstFile(path.c_str(), &data), 200000u);
    // The read that met the bad block gives nothing: 18 whole chunks are kept.
    const size_t kept = 18 * CMyZipOperator::kChunkSize;
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), kept), text.substr(0, kept));
    EXPECT_TRUE(
        std::all_of(data + kept, data + zip.GetCapacity(), [](unsigned char c) { return c == 0; }));
}

TEST_F(Zip, Zip64SizesComeFromTheExtraField) {
    struct Case {
        const char* what;
        std::string archive;
        std::string text;
    };
    std::vector<Case> cases = {
        {"stored", Zip64Archive("a.txt", "hello zip64\n", false), "hello zip64\n"},
        {"deflated", Zip64Archive("a.txt", Pattern(100000), true), Pattern(100000)},
    };
    // The common zip tool's own output as well, where it is installed.
#ifndef _WIN32
    if (std::system("zip -v >/dev/null 2>&1") == 0) {
        m_dir.Write("in/a.txt", Pattern(70000));
        const std::string cmd = "cd '" + m_dir.File("in") + "' && zip -q -fz ../tool.zip a.txt";
        if (std::system(cmd.c_str()) == 0) {
            cases.push_back({"zip -fz", m_dir.Read("tool.zip"), Pattern(70000)});
        }
    }
#endif
    for (const Case& c : cases) {
        const std::string path = m_dir.Write("z64.zip", c.archive);
        CMyZipOperator zip;
        unsigned char* data = nullptr;
        ASSERT_EQ(zip.ReadFirstFile(path.c_str(), &data), c.text.size()) << c.what;
        EXPECT_EQ(std::string(reinterpret_cast<char*>(data), c.text.size()), c.text) << c.what;
        CZipPackage pack(path);
        void* dumped = nullptr;
        int32_t length = 0;
        ASSERT_EQ(pack.Dump("A.TXT", &dumped, &length, 0), 0) << c.what;
        EXPECT_EQ(std::string(static_cast<char*>(dumped), static_cast<size_t>(length)), c.text);
        pack.Undump(dumped);
    }
}

TEST_F(Zip, EntriesThatAreNotPlainAreRefused) {
    Make("plain.zip", {{"a.txt", "hello", false}});
    const std::string plain = m_dir.Read("plain.zip");
    struct Case {
        const char* what;
        int method;
        int flags;
        const char* reason;
    };
    const Case cases[] = {
        {"bzip2", 12, 0, "entry a.txt: compression method 12 (bzip2) is not supported"},
        {"LZMA", 14, 0, "entry a.txt: compression method 14 (LZMA) is not supported"},
        {"unknown", 77, 0, "entry a.txt: compression method 77 is not supported"},
        {"encrypted", 0, 1, "entry a.txt: encrypted entries are not supported"},
        {"encrypted, deflated", 8, 1, "entry a.txt: encrypted entries are not supported"},
    };
    for (const Case& c : cases) {
        std::string bytes = plain;
        for (const auto& [sig, at] : {std::pair<const char*, size_t>{"PK\x03\x04", 6},
                                      std::pair<const char*, size_t>{"PK\x01\x02", 8}}) {
            const size_t header = bytes.find(sig);
            bytes.replace(header + at, 4, Le(c.flags, 2) + Le(c.method, 2));
        }
        const std::string path = m_dir.Write("odd.zip", bytes);
        CMyZipOperator zip;
        unsigned char sentinel = 0;
        unsigned char* data = &sentinel;
        EXPECT_EQ(zip.ReadFirstFile(path.c_str(), &data), 0u) << c.what;
        EXPECT_EQ(data, &sentinel) << c.what;
        EXPECT_EQ(CMyZipOperator::UnsupportedFirstEntry(path.c_str()), c.reason);
        CZipPackage pack(path);
        Handle handle = nullptr;
        EXPECT_EQ(pack.Exist("a.txt", 0), 1) << c.what;
        EXPECT_EQ(pack.Open("a.txt", &handle), -1) << c.what;
        EXPECT_EQ(pack.UnsupportedEntry("a.txt"), c.reason);
    }
    const std::string ok = m_dir.Write("plain.zip", plain);
    EXPECT_EQ(CMyZipOperator::UnsupportedFirstEntry(ok.c_str()), "");
    EXPECT_EQ(CZipPackage(ok).UnsupportedEntry("a.txt"), "");
    EXPECT_EQ(CZipPackage(ok).UnsupportedEntry("missing.txt"), "");
}

// Names, paths and Read/Dump shared with the folder backend are in PackModesTest.cpp.
TEST_F(Zip, PackageListsOnlyPlainEntriesInsideTheArchive) {
    const std::string path = Make("p.zip", {{"Data/Items.TXT", "stored bytes", false},
                                            {"data/deflated.txt", Pattern(5000), true},
                                            {"../evil.txt", "outside", true},
                                            {"folder/", "", false},
                                            {"empty.txt", "", true}});
    CZipPackage pack(path);
    EXPECT_EQ(pack.List(),
              (std::vector<std::string>{"Data/Items.TXT", "data/deflated.txt", "empty.txt"}));
    for (const char* name : {"../evil.txt", "evil.txt", "folder"}) {
        EXPECT_EQ(pack.Exist(name, 0), 0) << name;
    }
    for (const auto& [name, text] :
         {std::pair<const char*, std::string>{"data/items.txt", "stored bytes"},
          {"DATA/DEFLATED.TXT", Pattern(5000)},
          {"empty.txt", ""}}) {
        void* dumped = nullptr;
        int32_t length = -1;
        ASSERT_EQ(pack.Dump(name, &dumped, &length, 0), 0) << name;
        EXPECT_EQ(std::string(static_cast<char*>(dumped), static_cast<size_t>(length)), text);
        pack.Undump(dumped);
    }
}

}  // namespace
