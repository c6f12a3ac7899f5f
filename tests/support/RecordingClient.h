// A host client for tests: opens the files of a folder the test names through PackFOpen (null
// until it names one), answers the file and profiler queries with settable values, and records
// what the library asks.
//   pind::test::TempDir dir; pind::test::RecordingClient client;  // installed while it lives
//   client.ServeFrom(dir.Path()); CPindIni ini("a.ini");
#ifndef PIND_TESTS_SUPPORT_RECORDINGCLIENT_H_
#define PIND_TESTS_SUPPORT_RECORDINGCLIENT_H_

#include <map>
#include <set>
#include <string>
#include <vector>

#include "pind/client/PindClient.h"

namespace pind::test {

class RecordingClient : public IPindClientNone {
public:
    /// Installs itself with SetClient; uninstalls on destruction.
    RecordingClient();
    ~RecordingClient() override;

    /// OpenFile(name, mode) then opens PackFOpen(folder + "/" + name, mode).
    void ServeFrom(const std::string& folder) { m_folder = folder; }

    // Answers.
    bool packageInUse = false;
    int packageMode = 0;
    std::string baseDir;
    std::set<std::string> existing;                   // IsFileExist answers true for these
    std::map<std::string, std::string> translations;  // TranslatePath rewrites these
    bool profileAllowed = true;
    std::string description;  // GetDescription's line
    std::string primaryFolder;
    std::string secondaryFolder;

    // Records.
    struct Open {
        std::string name;
        std::string mode;
        bool flag;
        bool extended;
    };
    std::vector<Open> opens;
    std::vector<std::string> debugTexts;
    std::vector<std::string> createdDirs;

    bool IsPackageInUse() override { return packageInUse; }
    bool IsFileExist(const char* path) override;
    int GetPackageMode() override { return packageMode; }
    const char* GetPrimaryFolder() override { return primaryFolder.c_str(); }
    const char* GetSecondaryFolder() override { return secondaryFolder.c_str(); }
    void TranslatePath(const char* path, std::string& translated) override;
    CPackFile* OpenFile(const char* name, const char* mode, bool flag) override;
    CPackFile* OpenFileEx(const char* name, const char* mode, bool flag, bool flag2) override;
    bool IsProfileAllowed() override { return profileAllowed; }
    void CreateDir(const char* name) override { createdDirs.emplace_back(name ? name : ""); }
    void GetDescription(char* buffer) override;
    const char* GetBaseDir() override { return baseDir.c_str(); }
    void DebugText(const char* format, ...) override;

private:
    CPackFile* Serve(const char* name, const char* mode);

    std::string m_folder;
};

/// A debug object that records DebugPrintf texts; installed while it lives.
class RecordingDebug : public IPindDebugNone {
public:
    RecordingDebug();
    ~RecordingDebug() override;
    void DebugPrintf(const char* format, ...) override;
    std::vector<std::string> texts;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_RECORDINGCLIENT_H_
