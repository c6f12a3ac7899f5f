// `pind ini`: show, scramble and set INI files from the shell, and the INI step of the demo (a
// sample file scrambled with the key cipher, read back and queried).
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/config/PindIni.h"
#include "pind/crypto/KeyCipher.h"
#include "pind/files/PackFile.h"

namespace pind::tool {
namespace {

const char kIniUsage[] =
    "usage: pind ini show FILE [--key KEY | --scrambled] [--get SECTION KEY]\n"
    "       pind ini scramble SRC DST KEY\n"
    "       pind ini set FILE SECTION KEY VALUE\n"
    "  show: prints every section and key (or one value) of a plain, keyed or scrambled file;\n"
    "  scramble: writes SRC's scrambled form to DST (replaced only when that succeeds);\n"
    "  set: stores one value in FILE (created when missing), rewriting the whole file.";

constexpr size_t kMaxScrambleKey = 127;

bool PrintWalk(CPindIni& ini) {
    bool ok = true;
    for (bool more = ini.FirstSection(); more && ok; more = ini.NextSection()) {
        const CPindIni::SectionRecord* record = ini.GetCurrentSection();
        ok = WriteOut("[" + record->strName + "]\n");
        if (record->pKeys != nullptr) {
            for (const auto& [key, value] : *record->pKeys) {
                ok = ok && WriteOut(key + "=" + value + "\n");
            }
        }
    }
    return ok;
}

int RunShow(int argc, char** argv) {
    const char* file = nullptr;
    const char* key = nullptr;
    const char* section = nullptr;
    const char* getKey = nullptr;
    bool scrambled = false;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--key") == 0 && i + 1 < argc && !scrambled) {
            key = argv[++i];
        } else if (std::strcmp(argv[i], "--scrambled") == 0 && key == nullptr) {
            scrambled = true;
        } else if (std::strcmp(argv[i], "--get") == 0 && i + 2 < argc) {
            section = argv[++i];
            getKey = argv[++i];
        } else if (file == nullptr && argv[i][0] != '-') {
            file = argv[i];
        } else {
            return UsageError("ini", kIniUsage, std::string(argv[i]) + ": unexpected argument");
        }
    }
    if (file == nullptr) {
        return UsageError("ini", kIniUsage);
    }
    const std::string reason = UnreadableFileReason(file);
    if (!reason.empty()) {
        return Fail("ini", std::string(file) + ": " + reason);
    }
    HostScope host;
    CPindIni ini;
    const bool loaded = scrambled ? ini.LoadScrambled(file) : ini.Load(file, key, false);
    if (!loaded) {
        return Fail("ini", std::string(file) +
                               (scrambled ? ": not in the scrambled form" : ": cannot load"));
    }
    const bool written = section != nullptr
                             ? WriteOut(std::string(ini.GetString(section, getKey, "")) + "\n")
                             : PrintWalk(ini);
    return written && FlushOut() ? kExitOk : kExitFailure;
}

void PrintCipherError(const char* text) { std::fprintf(stderr, "%s\n", text); }

// Why `path` cannot be replaced by a new file: its folder is missing or it is a folder or it cannot
// be written; "" when it can (a missing file can be).
std::string UnreplaceableReason(const std::string& path) {
    std::error_code ec;
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty() && !std::filesystem::is_directory(parent, ec)) {
        return parent.generic_string() + ": no such folder";
    }
    const std::filesystem::file_status status = std::filesystem::status(path, ec);
    if (status.type() == std::filesystem::file_type::not_found) {
        return std::string();
    }
    if (ec) {
        return ec.message();
    }
    if (status.type() == std::filesystem::file_type::directory) {
        return "is a folder";
    }
    std::FILE* f = std::fopen(path.c_str(), "r+b");  // asks for write access, changes nothing
    if (f == nullptr) {
        return std::strerror(errno);
    }
    std::fclose(f);
    return std::string();
}

int RunScramble(int argc, char** argv) {
    if (argc != 5) {
        return UsageError("ini", kIniUsage);
    }
    const std::string source = argv[2];
    const std::string target = argv[3];
    const char* key = argv[4];
    if (std::strlen(key) > kMaxScrambleKey) {
        return UsageError(
            "ini", kIniUsage,
            "scramble: the key may have at most " + std::to_string(kMaxScrambleKey) + " bytes");
    }
    std::string reason = UnreadableFileReason(source);
    if (!reason.empty()) {
        return Fail("ini", source + ": " + reason);
    }
    reason = UnreplaceableReason(target);
    if (!reason.empty()) {
        return Fail("ini", target + ": " + reason);
    }
    // The cipher truncates its target before it reads anything, so it writes a new file that
    // replaces the user's only once the whole of it is there.
    const std::string temp = TempPathBeside(target);
    CMyCrypto crypto;
    crypto.SetErrorCallback(PrintCipherError);
    if (!crypto.EncryptFile(source.c_str(), temp.c_str(), key)) {
        std::error_code ec;
        std::filesystem::remove(temp, ec);
        return Fail("ini", "scramble: " + target + ": cannot write");
    }
    std::error_code ec;
    const std::filesystem::file_status old = std::filesystem::status(target, ec);
    if (!ec && std::filesystem::exists(old)) {
        std::filesystem::permissions(temp, old.permissions(), ec);
    }
    if (!ReplaceWith(temp, target, &reason)) {
        return Fail("ini", target + ": " + reason);
    }
    return kExitOk;
}

int RunSet(int argc, char** argv) {
    if (argc != 6) {
        return UsageError("ini", kIniUsage);
    }
    const std::string file = argv[2];
    const char* section = argv[3];
    const char* key = argv[4];
    const char* value = argv[5];
    if (*key == '\0') {
        return UsageError("ini", kIniUsage, "set: KEY must not be empty");
    }
    std::string reason = UnreplaceableReason(file);
    if (!reason.empty()) {
        return Fail("ini", file + ": " + reason);
    }
    // The edit happens on a copy, which replaces the file once the value reads back from it.
    const std::string temp = TempPathBeside(file);
    std::error_code ec;
    if (std::filesystem::exists(file, ec)) {
        std::filesystem::copy_file(file, temp, std::filesystem::copy_options::overwrite_existing,
                                   ec);
        if (ec) {
            return Fail("ini", temp + ": cannot write: " + ec.message());
        }
    }
    std::string stored;
    {
        HostScope host;
        bool saved = false;
        {
            CPindIni ini;  // its write file closes with it
            saved = ini.SetValue(temp.c_str(), section, key, value);
        }
        CPindIni check;
        if (saved && check.Load(temp.c_str())) {
            const char* text = check.GetString(section, key, nullptr);
            stored = text != nullptr ? text : "";
            saved = text != nullptr;
        } else {
            saved = false;
        }
        if (!saved) {
            std::filesystem::remove(temp, ec);
            return Fail("ini", file + ": cannot save [" + std::string(section) + "] " + key);
        }
    }
    if (stored != value) {
        std::filesystem::remove(temp, ec);
        return Fail("ini", file + ": the value does not survive a save (it reads back as \"" +
                               stored + "\"); file left as it was");
    }
    if (!ReplaceWith(temp, file, &reason)) {
        return Fail("ini", file + ": " + reason);
    }
    return kExitOk;
}

}  // namespace

int RunIni(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kIniUsage);
    }
    if (argc >= 2 && std::strcmp(argv[1], "show") == 0) {
        return RunShow(argc, argv);
    }
    if (argc >= 2 && std::strcmp(argv[1], "scramble") == 0) {
        return RunScramble(argc, argv);
    }
    if (argc >= 2 && std::strcmp(argv[1], "set") == 0) {
        return RunSet(argc, argv);
    }
    return UsageError("ini", kIniUsage,
                      argc >= 2 ? std::string(argv[1]) + ": unknown subcommand" : std::string());
}

void DemoIni(const DemoContext& ctx) {
    DemoHeading("ini");
    const std::string plain = ctx.dataDir + "/ini/client.ini";
    const std::string scrambled = ctx.workDir + "/client.sini";
    CMyCrypto crypto;
    crypto.SetErrorCallback(PrintCipherError);
    if (!crypto.EncryptFile(plain.c_str(), scrambled.c_str(), "Pind#2024")) {
        DemoFail("ini: could not scramble " + plain);
        return;
    }
    std::printf("scrambled ini/client.ini with the key \"Pind#2024\" into client.sini\n");

    HostScope host;
    CPindIni ini;
    if (!ini.LoadScrambled(scrambled.c_str())) {
        DemoFail("ini: could not read " + scrambled + " back");
        return;
    }
    std::printf("read back %d sections:", ini.GetSectionCount());
    for (bool more = ini.FirstSection(); more; more = ini.NextSection()) {
        std::printf(" [%s]", ini.GetCurrentSectionName());
    }
    std::printf("\n");
    std::printf("  Server.Host        = %s\n", ini.GetString("Server", "Host", "?"));
    std::printf("  Server.Port        = %d\n", ini.GetInt("Server", "Port", 0));
    std::printf("  Video.Gamma        = %.2f\n", ini.GetDouble("Video", "Gamma", 1.0));
    std::printf("  Video.Title        = \"%s\" (TAB-trimmed, spaces kept)\n",
                ini.GetString("Video", "Title", ""));
    std::printf("  Sound.Volume       = %d (missing: the default)\n",
                ini.GetInt("Sound", "Volume", 80));

    CPindIni copy;
    copy.Load(plain.c_str());
    std::printf(
        "plain load of the same file agrees on Server.Port: %s\n",
        copy.GetInt("Server", "Port", -1) == ini.GetInt("Server", "Port", 0) ? "yes" : "no");
    const std::string edited = ctx.workDir + "/edited.ini";
    copy.SetValue(edited.c_str(), "Video", "Width", "1920");
    copy.SetValue(edited.c_str(), "Audio", "Volume", "65");
    std::printf("SetValue twice on a new file gives:\n");
    CPindIni check;
    check.Load(edited.c_str());
    for (bool more = check.FirstSection(); more; more = check.NextSection()) {
        std::printf("  [%s]", check.GetCurrentSectionName());
        if (const CPindIni::KeyTable* keys = check.GetCurrentSection()->pKeys) {
            for (const auto& [key, value] : *keys) {
                std::printf(" %s=%s", key.c_str(), value.c_str());
            }
        }
        std::printf("\n");
    }
}

}  // namespace pind::tool
