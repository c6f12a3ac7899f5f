// `pind ini`: show, scramble and set INI files from the shell, and the INI step of the demo (a
// sample file scrambled with the key cipher, read back and queried).
#include <cstdio>
#include <cstring>
#include <string>

#include "Commands.h"
#include "pind/client/PindClient.h"
#include "pind/config/PindIni.h"
#include "pind/crypto/KeyCipher.h"
#include "pind/files/PackFile.h"

namespace pind::tool {
namespace {

// A host that opens every name from disk, relative to the current folder.
class DiskHost : public IPindClientNone {
public:
    CPackFile* OpenFile(const char* name, const char* mode, bool) override {
        return PackFOpen(name, mode);
    }
    CPackFile* OpenFileEx(const char* name, const char* mode, bool, bool) override {
        return PackFOpen(name, mode);
    }
};

// Installs a DiskHost for one scope.
class DiskHostScope {
public:
    DiskHostScope() { SetClient(&m_host); }
    ~DiskHostScope() { SetClient(nullptr); }
    DiskHostScope(const DiskHostScope&) = delete;
    DiskHostScope& operator=(const DiskHostScope&) = delete;

private:
    DiskHost m_host;
};

void PrintWalk(CPindIni& ini) {
    for (bool more = ini.FirstSection(); more; more = ini.NextSection()) {
        const CPindIni::SectionRecord* record = ini.GetCurrentSection();
        std::printf("[%s]\n", record->strName.c_str());
        if (record->pKeys != nullptr) {
            for (const auto& [key, value] : *record->pKeys) {
                std::printf("%s=%s\n", key.c_str(), value.c_str());
            }
        }
    }
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
            std::fprintf(stderr, "pind: ini: show: unexpected argument %s\n", argv[i]);
            return 2;
        }
    }
    if (file == nullptr) {
        std::fprintf(stderr,
                     "usage: pind ini show FILE [--key KEY | --scrambled] [--get SECTION KEY]\n");
        return 2;
    }
    DiskHostScope host;
    CPindIni ini;
    const bool loaded = scrambled ? ini.LoadScrambled(file) : ini.Load(file, key, false);
    if (!loaded) {
        std::fprintf(stderr, "pind: ini: %s: cannot load\n", file);
        return 1;
    }
    if (section != nullptr) {
        std::printf("%s\n", ini.GetString(section, getKey, ""));
    } else {
        PrintWalk(ini);
    }
    return 0;
}

void PrintCipherError(const char* text) { std::fprintf(stderr, "%s\n", text); }

int RunScramble(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: pind ini scramble SRC DST KEY\n");
        return 2;
    }
    CMyCrypto crypto;
    crypto.SetErrorCallback(PrintCipherError);
    if (!crypto.EncryptFile(argv[2], argv[3], argv[4])) {
        if (std::strlen(argv[4]) < 128) {
            std::fprintf(stderr, "pind: ini: scramble: %s or %s: cannot open\n", argv[2], argv[3]);
        }
        return 1;
    }
    return 0;
}

int RunSet(int argc, char** argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: pind ini set FILE SECTION KEY VALUE\n");
        return 2;
    }
    DiskHostScope host;
    CPindIni ini;
    if (!ini.SetValue(argv[2], argv[3], argv[4], argv[5])) {
        std::fprintf(stderr, "pind: ini: %s: cannot set [%s] %s\n", argv[2], argv[3], argv[4]);
        return 1;
    }
    return 0;
}

}  // namespace

int RunIni(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "show") == 0) {
        return RunShow(argc, argv);
    }
    if (argc >= 2 && std::strcmp(argv[1], "scramble") == 0) {
        return RunScramble(argc, argv);
    }
    if (argc >= 2 && std::strcmp(argv[1], "set") == 0) {
        return RunSet(argc, argv);
    }
    std::fprintf(stderr,
                 "usage: pind ini show FILE [--key KEY | --scrambled] [--get SECTION KEY]\n"
                 "       pind ini scramble SRC DST KEY\n"
                 "       pind ini set FILE SECTION KEY VALUE\n");
    return 2;
}

void DemoIni(const DemoContext& ctx) {
    DemoHeading("ini");
    const std::string plain = ctx.dataDir + "/ini/client.ini";
    const std::string scrambled = ctx.workDir + "/client.sini";
    CMyCrypto crypto;
    crypto.SetErrorCallback(PrintCipherError);
    if (!crypto.EncryptFile(plain.c_str(), scrambled.c_str(), "Pind#2024")) {
        std::printf("could not scramble %s\n", plain.c_str());
        return;
    }
    std::printf("scrambled ini/client.ini with the key \"Pind#2024\" into client.sini\n");

    DiskHostScope host;
    CPindIni ini;
    if (!ini.LoadScrambled(scrambled.c_str())) {
        std::printf("could not read %s back\n", scrambled.c_str());
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
