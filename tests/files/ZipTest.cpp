// CMyZipOperator and the zip package backend over archives made here with the zip writer,
// including truncated, corrupt, lying and Zip64 ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
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
    for (int i = 0; i < bytes; ++i, n >>= 8) out += static_cast<char>(n & 0xFF);
    return out;
}

class Zip : public ::testing::Test {
protected:
    std::string Make(const std::string& name, const std::vector<pind::ZipSource>& entries) {
        EXPECT_TRUE(pind::WriteZipArchive(m_dir.File(name), entries));
        return m_dir.Read(name);
    }

    // The one entry of `plain` as `zip -fz` lays it out: 0xFFFFFFFF sizes in the local header and
    // the central uncompressed size, the real ones in Zip64 extra fields, and a Zip64 end record.
    std::string AsZip64(const std::string& plain, size_t size) {
        const size_t local = plain.find("PK\x03\x04");
        const std::string method = plain.substr(local + 8, 2), crc = plain.substr(local + 14, 4);
        size_t packed = 0, skip = 0;
        std::memcpy(&packed, &plain[local + 18], 4);  // little-endian hosts only
        std::memcpy(&skip, &plain[local + 26], 4);    // name and extra lengths
        const std::string data = plain.substr(local + 30 + (skip & 0xFFFF) + (skip >> 16), packed);
        const std::string name = "a.txt";
        std::string zip = "PK\x03\x04" + Le(45, 4) + method + Le(0, 4) + crc + Le(~uint64_t{0}, 8) +
                          Le(5, 2) + Le(20, 2) + name + Le(1, 2) + Le(16, 2) + Le(size, 8) +
                          Le(packed, 8) + data;
        const size_t central = zip.size();
        zip += "PK\x01\x02" + Le(45, 2) + Le(45, 4) + method + Le(0, 4) + crc + Le(packed, 4) +
               Le(0xFFFFFFFF, 4) + Le(5, 2) + Le(12, 2) + Le(0, 14) + name + Le(1, 2) + Le(8, 2) +
               Le(size, 8);
        const size_t end64 = zip.size();
        zip += "PK\x06\x06" + Le(44, 8) + Le(45, 2) + Le(45, 2) + Le(0, 8) + Le(1, 8) + Le(1, 8) +
               Le(end64 - central, 8) + Le(central, 8);
        zip += "PK\x06\x07" + Le(0, 4) + Le(end64, 8) + Le(1, 4);
        return zip + "PK\x05\x06" + Le(0, 4) + Le(1, 2) + Le(1, 2) + Le(end64 - central, 4) +
               Le(central, 4) + Le(0, 2);
    }

    pind::test::TempDir m_dir;
};

TEST_F(Zip, FirstFileGrowsTheBufferOnceThenReusesIt) {
    const std::string big = Pattern(3000000);
    Make("big.zip", {{"big.bin", big, true}, {"next.bin", "later", true}});
    Make("small.zip", {{"ten.bin", "0123456789", false}});
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    ASSERT_EQ(zip.ReadFirstFile(m_dir.File("big.zip").c_str(), &data), 3000000u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), big.size()), big);
    const unsigned char* const buffer = zip.GetBuffer();

    ASSERT_EQ(zip.ReadFirstFile(m_dir.File("small.zip").c_str(), &data), 10u);
    EXPECT_EQ(data, buffer);
    EXPECT_EQ(zip.GetCapacity(), 3000000u);
    EXPECT_STREQ(reinterpret_cast<char*>(data), "0123456789");
    EXPECT_TRUE(std::all_of(data + 10, data + 3000000, [](unsigned char c) { return c == 0; }));
    CMyZipOperator copy(zip);  // shares the buffer; both let go safely
    EXPECT_EQ(copy.GetBuffer(), buffer);
}

TEST_F(Zip, DamagedArchives) {
    const std::string text = Pattern(20000);
    const std::string good = Make("good.zip", {{"t.txt", text, true}});
    std::string corrupt = good;
    const size_t dataAt = good.find("PK\x03\x04") + 30 + 5;
    corrupt[dataAt + (good.find("PK\x01\x02") - dataAt) / 2] ^= 0x5A;  // mid deflated data
    std::string badCrc = good;  // the CRC-32 changed in both headers
    badCrc[good.find("PK\x03\x04") + 14] ^= 1;
    badCrc[good.find("PK\x01\x02") + 16] ^= 1;
    // What, the archive, ReadFirstFile's result, leading bytes equal to the text, whether
    // CZipPackage serves the entry.
    const std::tuple<const char*, std::string, unsigned int, size_t, bool> cases[] = {
        {"intact", good, 20000, 20000, true},
        {"empty archive", Make("empty.zip", {}), 0, 0, false},
        {"not a zip", "not a zip", 0, 0, false},
        {"truncated", good.substr(0, good.size() - 30), 0, 0, false},
        {"declares more", WithDeclaredSize(good, 25000), 25000, 20000, true},
        {"declares less", WithDeclaredSize(good, 100), 100, 100, false},
        {"declares 4 GiB", WithDeclaredSize(good, 0xFFFFFFF0u), 0, 0, false},
        {"corrupt data", corrupt, 20000, 0, false},
        {"wrong CRC-32", badCrc, 20000, 20000, false},
    };
    for (const auto& [what, bytes, wantSize, wantPrefix, packageOpens] : cases) {
        const std::string path = m_dir.Write("case.zip", bytes);
        CMyZipOperator zip;
        unsigned char sentinel = 0;
        unsigned char* data = &sentinel;
        const unsigned int size = zip.ReadFirstFile(path.c_str(), &data);
        EXPECT_EQ(size, wantSize) << what;
        if (size == 0) {
            EXPECT_EQ(data, &sentinel) << what;  // failures leave the caller's pointer alone
        } else {
            EXPECT_LE(size, zip.GetCapacity()) << what;
            EXPECT_EQ(std::memcmp(data, text.data(), wantPrefix), 0) << what;
        }
        CZipPackage pack(path);
        Handle handle = nullptr;
        EXPECT_EQ(pack.Open("t.txt", &handle) == 0, packageOpens) << what;
        EXPECT_EQ(pack.GetLen(handle), packageOpens ? text.size() : 0u) << what;
        pack.Close(handle);
    }
    unsigned char* data = nullptr;
    EXPECT_EQ(CMyZipOperator().ReadFirstFile(m_dir.File("missing.zip").c_str(), &data), 0u);
    EXPECT_EQ(CMyZipOperator().ReadFirstFile(nullptr, &data), 0u);
    EXPECT_EQ(CMyZipOperator().ReadFirstFile(m_dir.File("good.zip").c_str(), nullptr), 0u);
}

TEST_F(Zip, DamagedEntryKeepsTheWholeChunksReadBeforeTheDamage) {
    // A deflate stream by hand: stored blocks holding the text, then a block of the invalid type
    // 3. Written as a stored entry, then relabelled deflated.
    const std::string text = Pattern(150000);
    std::string stream;
    for (size_t at = 0; at < text.size(); at += 50000) {
        const uint16_t lengths[] = {50000, static_cast<uint16_t>(~50000u)};
        stream += '\0';  // not the last block; stored
        stream.append(reinterpret_cast<const char*>(lengths), sizeof lengths);
        stream.append(text, at, 50000);
    }
    stream += '\x07';  // the last block; type 3
    std::string bytes = WithDeclaredSize(Make("bad.zip", {{"t.txt", stream, false}}), 200000);
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
    for (const bool deflate : {false, true}) {
        const std::string text = Pattern(deflate ? 100000 : 12);
        const std::string path =
            m_dir.Write("z64.zip", AsZip64(Make("a.zip", {{"a.txt", text, deflate}}), text.size()));
        CMyZipOperator zip;
        unsigned char* data = nullptr;
        ASSERT_EQ(zip.ReadFirstFile(path.c_str(), &data), text.size()) << deflate;
        EXPECT_EQ(std::string(reinterpret_cast<char*>(data), text.size()), text) << deflate;
        void* dumped = nullptr;
        int32_t length = 0;
        CZipPackage pack(path);
        ASSERT_EQ(pack.Dump("A.TXT", &dumped, &length, 0), 0) << deflate;
        EXPECT_EQ(std::string(static_cast<char*>(dumped), static_cast<size_t>(length)), text);
        pack.Undump(dumped);
    }
}

TEST_F(Zip, EntriesThatAreNotPlainFilesInsideTheArchiveAreRefused) {
    const std::string plain = Make("plain.zip", {{"a.txt", "hello", false},
                                                 {"../evil.txt", "outside", true},
                                                 {"folder/", "", false},
                                                 {"empty.txt", "", true}});
    // Method, flags, reason.
    const std::tuple<int, int, const char*> cases[] = {
        {12, 0, "entry a.txt: compression method 12 (bzip2) is not supported"},
        {77, 0, "entry a.txt: compression method 77 is not supported"},
        {8, 1, "entry a.txt: encrypted entries are not supported"},
        {0, 0, ""},
    };
    for (const auto& [method, flags, reason] : cases) {
        std::string bytes = plain;
        bytes.replace(bytes.find("PK\x03\x04") + 6, 4, Le(flags, 2) + Le(method, 2));
        bytes.replace(bytes.find("PK\x01\x02") + 8, 4, Le(flags, 2) + Le(method, 2));
        const std::string path = m_dir.Write("odd.zip", bytes);
        unsigned char* data = nullptr;
        EXPECT_EQ(CMyZipOperator().ReadFirstFile(path.c_str(), &data), *reason ? 0u : 5u);
        EXPECT_EQ(CMyZipOperator::UnsupportedFirstEntry(path.c_str()), reason);
        CZipPackage pack(path);
        Handle handle = nullptr;
        EXPECT_EQ(pack.Exist("a.txt", 0), 1) << method;
        EXPECT_EQ(pack.Open("a.txt", &handle), *reason ? -1 : 0) << method;
        pack.Close(handle);
        EXPECT_EQ(pack.UnsupportedEntry("a.txt"), reason);
        EXPECT_EQ(pack.UnsupportedEntry("missing.txt"), "");
    }
    // Names, paths and Read/Dump shared with the folder backend are in PackModesTest.cpp; only
    // entries inside the archive that are files are listed and served.
    CZipPackage pack(m_dir.File("plain.zip"));
    EXPECT_EQ(pack.List(), (std::vector<std::string>{"a.txt", "empty.txt"}));
    for (const char* name : {"../evil.txt", "evil.txt", "folder"}) {
        EXPECT_EQ(pack.Exist(name, 0), 0) << name;
    }
    void* dumped = nullptr;
    int32_t length = -1;
    ASSERT_EQ(pack.Dump("EMPTY.TXT", &dumped, &length, 0), 0);  // an empty entry is still a file
    EXPECT_EQ(length, 0);
    pack.Undump(dumped);
}

}  // namespace
