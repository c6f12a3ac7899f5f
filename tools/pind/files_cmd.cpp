// `pind zip` and `pind pack`: the zip reader and the package backends from the shell, and the
// files step of the demo (one file read from disk, from a folder package and from a zip package).
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "pind/client/PindClient.h"
#include "pind/files/DirPackage.h"
#include "pind/files/FileCache.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipOperator.h"
#include "pind/files/ZipPackage.h"
#include "pind/files/ZipWriter.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

namespace pind::tool {
namespace {

// A host that keeps packed resources in use and looks in the package first.
class PackageHost : public IPindClientNone {
public:
    bool IsPackageInUse() override { return packageInUse; }
    int GetPackageMode() override { return 1; }
    bool packageInUse = true;
};

// Installs a host and a package for one scope.
class PackageScope {
public:
    explicit PackageScope(platform::IPindPackage* package) {
        SetClient(&m_host);
        m_previous = platform::SetPackage(package);
    }
    ~PackageScope() {
        platform::SetPackage(m_previous);
        SetClient(nullptr);
    }
    PackageScope(const PackageScope&) = delete;
    PackageScope& operator=(const PackageScope&) = delete;
    PackageHost& Host() { return m_host; }

private:
    PackageHost m_host;
    platform::IPindPackage* m_previous = nullptr;
};

int RunZipFirst(int argc, char** argv) {
    const char* archive = nullptr;
    const char* out = nullptr;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc) {
            out = argv[++i];
        } else if (archive == nullptr) {
            archive = argv[i];
        } else {
            std::fprintf(stderr, "pind: zip: unexpected argument %s\n", argv[i]);
            return 2;
        }
    }
    if (archive == nullptr || out == nullptr) {
        std::fprintf(stderr, "usage: pind zip first ARCHIVE -o OUT\n");
        return 2;
    }
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    const unsigned int size = zip.ReadFirstFile(archive, &data);
    if (size == 0) {
        const std::string why = CMyZipOperator::UnsupportedFirstEntry(archive);
        if (!why.empty()) {
            std::fprintf(stderr, "pind: zip: %s: %s\n", archive, why.c_str());
            return 1;
        }
        std::fprintf(stderr, "pind: zip: %s: no first entry read\n", archive);
        return 1;
    }
    std::FILE* f = std::fopen(out, "wb");
    if (f == nullptr) {
        std::fprintf(stderr, "pind: zip: %s: cannot write\n", out);
        return 1;
    }
    const bool ok = std::fwrite(data, 1, size, f) == size;
    if (std::fclose(f) != 0 || !ok) {
        std::fprintf(stderr, "pind: zip: %s: cannot write\n", out);
        return 1;
    }
    std::printf("%u\n", size);
    return 0;
}

// The package named by --dir DIR or --zip ARCHIVE at argv[i], or null with a message.
std::unique_ptr<platform::IPindPackage> OpenPackage(int argc, char** argv, int i,
                                                    std::vector<std::string>* names) {
    if (i + 1 >= argc) {
        return nullptr;
    }
    const std::string where = argv[i + 1];
    if (std::strcmp(argv[i], "--dir") == 0) {
        auto pack = std::make_unique<CDirPackage>(where);
        if (!pack->IsOpen()) {
            std::fprintf(stderr, "pind: pack: %s: not a folder\n", where.c_str());
            return nullptr;
        }
        *names = pack->List();
        return pack;
    }
    if (std::strcmp(argv[i], "--zip") == 0) {
        auto pack = std::make_unique<CZipPackage>(where);
        if (!pack->IsOpen()) {
            std::fprintf(stderr, "pind: pack: %s: cannot open the archive\n", where.c_str());
            return nullptr;
        }
        *names = pack->List();
        return pack;
    }
    return nullptr;
}

int RunPackCommand(int argc, char** argv) {
    const bool ls = argc >= 2 && std::strcmp(argv[1], "ls") == 0;
    const bool cat = argc >= 2 && std::strcmp(argv[1], "cat") == 0;
    if ((!ls && !cat) || argc != (ls ? 4 : 5) ||
        (std::strcmp(argv[2], "--dir") != 0 && std::strcmp(argv[2], "--zip") != 0)) {
        std::fprintf(stderr,
                     "usage: pind pack ls (--dir DIR | --zip ARCHIVE)\n"
                     "       pind pack cat (--dir DIR | --zip ARCHIVE) NAME\n");
        return 2;
    }
    std::vector<std::string> names;
    std::unique_ptr<platform::IPindPackage> pack = OpenPackage(argc, argv, 2, &names);
    if (!pack) {
        return 1;
    }
    if (ls) {
        for (const std::string& name : names) {
            std::printf("%s\n", name.c_str());
        }
        return 0;
    }
    PackageScope scope(pack.get());
    CPackFile* f = PackFOpen(argv[4], "rb");
    if (f == nullptr) {
        auto* zip = dynamic_cast<CZipPackage*>(pack.get());
        const std::string why = zip != nullptr ? zip->UnsupportedEntry(argv[4]) : std::string();
        if (!why.empty()) {
            std::fprintf(stderr, "pind: pack: %s: %s\n", argv[3], why.c_str());
            return 1;
        }
        std::fprintf(stderr, "pind: pack: %s: not found in %s\n", argv[4], argv[3]);
        return 1;
    }
    platform::SetBinaryMode(stdout);  // the file's bytes, untranslated
    char buf[8192];
    for (size_t n; (n = PackFRead(buf, 1, sizeof buf, f)) > 0;) {
        std::fwrite(buf, 1, n, stdout);
    }
    PackFClose(f);
    return 0;
}

// Prints every line of `name` through PackFGets, with the terminators each line had.
void ShowLines(const char* how, const char* name) {
    CPackFile* f = PackFOpen(name, "rb");
    if (f == nullptr) {
        std::printf("  %s: %s did not open\n", how, name);
        return;
    }
    std::printf("  %s: %s opened in %s mode, %d bytes\n", how, name,
                f->IsDiskMode() ? "disk" : "memory", PackFGetLen(f));
    char line[256];
    while (PackFGets(line, sizeof line, f) != nullptr) {
        const int ends = f->GetLineEnds();
        TrimLineEnd(line);
        std::printf("    %-32s (%d line-end byte%s%s)\n", line, ends, ends == 1 ? "" : "s",
                    IsCommentLine(line) ? ", comment or blank" : "");
    }
    std::printf("    PackFEof now gives %d\n", PackFEof(f));
    PackFClose(f);
}

}  // namespace

int RunZip(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "first") == 0) {
        return RunZipFirst(argc, argv);
    }
    std::fprintf(stderr, "usage: pind zip first ARCHIVE -o OUT\n");
    return 2;
}

int RunPack(int argc, char** argv) { return RunPackCommand(argc, argv); }

void DemoFiles(const DemoContext& ctx) {
    DemoHeading("files: disk, folder package, zip package");
    const std::string folder = ctx.dataDir + "/pack";
    const std::string archive = ctx.workDir + "/pack.zip";

    {
        PackageScope scope(nullptr);
        scope.Host().packageInUse = false;
        ShowLines("disk", (folder + "/Ini/Items.txt").c_str());
    }

    CDirPackage dir(folder);
    {
        PackageScope scope(&dir);
        std::printf("  folder package over %s (names matched ignoring case)\n", folder.c_str());
        ShowLines("folder", "ini/items.txt");
        CPackFile* f = PackFOpen("./script/main.lua", "r");
        std::printf("  \"./script/main.lua\" is looked up as \"%s\" in package-first mode: %s\n",
                    f != nullptr ? f->GetName().c_str() : "?", f != nullptr ? "found" : "missing");
        PackFClose(f);
    }

    if (!ZipFolder(folder, archive)) {
        std::printf("  could not zip %s\n", folder.c_str());
        return;
    }
    CZipPackage zip(archive);
    std::printf("  zipped the folder into %s:", archive.c_str());
    for (const std::string& name : zip.List()) {
        std::printf(" %s", name.c_str());
    }
    std::printf("\n");
    {
        PackageScope scope(&zip);
        ShowLines("zip", "INI/ITEMS.TXT");
        CPackFile* f = PackFOpen("ini/items.txt", "rb");
        int id = 0, price = 0;
        char name[32] = {};
        int fields = PackFScanf(f, "%d %d %31s", &id, &price, name);
        std::printf("  PackFScanf on the comment line converts %d fields and stays at %d\n", fields,
                    PackFTell(f));
        PackFGets(name, sizeof name, f);
        fields = PackFScanf(f, "%d %d %31s", &id, &price, name);
        std::printf("  past it, PackFScanf skips the blank line: %d fields, id %d price %d %s\n",
                    fields, id, price, name);
        PackFClose(f);

        const uint64_t handle = CacheOpen("readme.txt", "r", 0);
        char line[128];
        std::printf("  file cache handle %llu: %s", static_cast<unsigned long long>(handle),
                    CacheGets(line, sizeof line, handle) != nullptr ? line : "(nothing)\n");
        CacheClose(handle);
    }

    CMyZipOperator reader;
    unsigned char* data = nullptr;
    const unsigned int size = reader.ReadFirstFile(archive.c_str(), &data);
    std::printf("  ReadFirstFile: first entry is %u bytes, starting \"%.20s\"\n", size,
                size > 0 ? reinterpret_cast<const char*>(data) : "");
}

}  // namespace pind::tool
