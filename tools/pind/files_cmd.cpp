// `pind zip` and `pind pack`: the zip reader and the package backends from the shell, and the
// files step of the demo (one file read from disk, from a folder package and from a zip package).
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
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

const char kZipUsage[] =
    "usage: pind zip first ARCHIVE -o OUT\n"
    "  writes the first entry of the zip ARCHIVE to the file OUT and prints its size";

const char kPackUsage[] =
    "usage: pind pack ls (--dir DIR | --zip ARCHIVE)\n"
    "       pind pack cat (--dir DIR | --zip ARCHIVE) NAME\n"
    "  ls: lists the files a folder or zip package holds; cat: writes one of them to stdout\n"
    "  (NAME matched ignoring case, as the game looks files up)";

int RunZipFirst(int argc, char** argv) {
    const char* archive = nullptr;
    const char* out = nullptr;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc) {
            out = argv[++i];
        } else if (archive == nullptr) {
            archive = argv[i];
        } else {
            return UsageError("zip", kZipUsage, std::string(argv[i]) + ": unexpected argument");
        }
    }
    if (archive == nullptr || out == nullptr) {
        return UsageError("zip", kZipUsage);
    }
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    const unsigned int size = zip.ReadFirstFile(archive, &data);
    if (size == 0) {
        // 0 is also the size of a plain empty entry, which is then written as it is.
        const std::string why = CMyZipOperator::FirstEntryFailure(archive);
        if (!why.empty()) {
            return Fail("zip", std::string(archive) + ": " + why);
        }
    }
    std::FILE* f = std::fopen(out, "wb");
    if (f == nullptr) {
        std::fprintf(stderr, "pind: zip: %s: cannot write\n", out);
        return 1;
    }
    const bool ok = size == 0 || std::fwrite(data, 1, size, f) == size;
    if (std::fclose(f) != 0 || !ok) {
        std::fprintf(stderr, "pind: zip: %s: cannot write\n", out);
        return 1;
    }
    return WriteOut(std::to_string(size) + "\n") && FlushOut() ? kExitOk : kExitFailure;
}

// Adds the regular files below `dir` (relative to `root`) to `names`; a folder or entry that
// cannot be read is reported on stderr and makes the result false, and the walk goes on.
bool ListFolder(const std::filesystem::path& root, const std::filesystem::path& dir,
                std::vector<std::string>* names) {
    std::error_code ec;
    std::filesystem::directory_iterator it(dir, ec);
    bool complete = !ec;
    if (ec) {
        Fail("pack", dir.generic_string() + ": cannot read: " + ec.message());
    }
    for (const std::filesystem::directory_iterator end; !ec && it != end; it.increment(ec)) {
        const std::filesystem::directory_entry& entry = *it;
        std::error_code entryEc;
        // Folder links are not followed, so a link cannot make the walk go round.
        if (entry.is_directory(entryEc) && !entry.is_symlink(entryEc)) {
            complete = ListFolder(root, entry.path(), names) && complete;
        } else if (entry.is_regular_file(entryEc)) {
            names->push_back(entry.path().lexically_relative(root).generic_string());
        } else if (entryEc) {
            Fail("pack", entry.path().generic_string() + ": cannot read: " + entryEc.message());
            complete = false;
        }
    }
    if (ec && complete) {
        Fail("pack", dir.generic_string() + ": cannot read: " + ec.message());
        complete = false;
    }
    return complete;
}

int RunPackCommand(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kPackUsage);
    }
    const bool ls = argc >= 2 && std::strcmp(argv[1], "ls") == 0;
    const bool cat = argc >= 2 && std::strcmp(argv[1], "cat") == 0;
    if ((!ls && !cat) || argc != (ls ? 4 : 5) ||
        (std::strcmp(argv[2], "--dir") != 0 && std::strcmp(argv[2], "--zip") != 0)) {
        return UsageError("pack", kPackUsage);
    }
    const bool isDir = std::strcmp(argv[2], "--dir") == 0;
    const std::string where = argv[3];
    std::unique_ptr<platform::IPindPackage> pack;
    std::vector<std::string> names;
    bool complete = true;
    if (isDir) {
        auto dir = std::make_unique<CDirPackage>(where);
        if (!dir->IsOpen()) {
            return Fail("pack", where + ": not a folder");
        }
        if (ls) {
            complete = ListFolder(where, where, &names);
            std::sort(names.begin(), names.end());
        }
        pack = std::move(dir);
    } else {
        auto zip = std::make_unique<CZipPackage>(where);
        if (!zip->IsOpen()) {
            return Fail("pack", where + ": cannot open the archive");
        }
        names = zip->List();
        pack = std::move(zip);
    }
    if (ls) {
        bool written = true;
        for (const std::string& name : names) {
            written = written && WriteOut(name + "\n");
        }
        if (!(written && FlushOut())) {
            return kExitFailure;
        }
        return complete ? kExitOk : Fail("pack", where + ": some entries could not be read");
    }
    HostScope scope(pack.get());
    CPackFile* f = PackFOpen(argv[4], "rb");
    if (f == nullptr) {
        auto* zip = dynamic_cast<CZipPackage*>(pack.get());
        const std::string why = zip != nullptr ? zip->UnsupportedEntry(argv[4]) : std::string();
        if (!why.empty()) {
            std::fprintf(stderr, "pind: pack: %s: %s\n", argv[3], why.c_str());
            return 1;
        }
        if (pack->Exist(argv[4], 0) != 0) {
            return Fail("pack", std::string(argv[4]) + ": in " + argv[3] +
                                    " but cannot be read (damaged data or a failed checksum)");
        }
        std::fprintf(stderr, "pind: pack: %s: not found in %s\n", argv[4], argv[3]);
        return 1;
    }
    platform::SetBinaryMode(stdout);  // the file's bytes, untranslated
    char buf[8192];
    bool written = true;
    for (size_t n; written && (n = PackFRead(buf, 1, sizeof buf, f)) > 0;) {
        written = WriteOut(buf, n);
    }
    PackFClose(f);
    return written && FlushOut() ? kExitOk : kExitFailure;
}

// Prints every line of `name` through PackFGets, with the terminators each line had.
void ShowLines(const char* how, const char* name) {
    CPackFile* f = PackFOpen(name, "rb");
    if (f == nullptr) {
        DemoFail(std::string("files: ") + how + ": " + name + " did not open");
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
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kZipUsage);
    }
    if (argc >= 2 && std::strcmp(argv[1], "first") == 0) {
        return RunZipFirst(argc, argv);
    }
    return UsageError("zip", kZipUsage);
}

int RunPack(int argc, char** argv) { return RunPackCommand(argc, argv); }

void DemoFiles(const DemoContext& ctx) {
    DemoHeading("files: disk, folder package, zip package");
    const std::string folder = ctx.dataDir + "/pack";
    const std::string archive = ctx.workDir + "/pack.zip";

    {
        HostScope scope;
        ShowLines("disk", (folder + "/Ini/Items.txt").c_str());
    }

    CDirPackage dir(folder);
    {
        HostScope scope(&dir);
        std::printf("  folder package over %s (names matched ignoring case)\n", folder.c_str());
        ShowLines("folder", "ini/items.txt");
        CPackFile* f = PackFOpen("./script/main.lua", "r");
        std::printf("  \"./script/main.lua\" is looked up as \"%s\" in package-first mode: %s\n",
                    f != nullptr ? f->GetName().c_str() : "?", f != nullptr ? "found" : "missing");
        PackFClose(f);
    }

    if (!ZipFolder(folder, archive)) {
        DemoFail("files: could not zip " + folder);
        return;
    }
    CZipPackage zip(archive);
    std::printf("  zipped the folder into %s:", archive.c_str());
    for (const std::string& name : zip.List()) {
        std::printf(" %s", name.c_str());
    }
    std::printf("\n");
    {
        HostScope scope(&zip);
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
