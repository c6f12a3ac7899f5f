// The host's callback interfaces. The library reaches the game client only through the current
// IPindClient and IPindDebug objects; until the host installs its own, do-nothing defaults answer,
// so library code can always call through GetClient()/GetDebug() without testing for null.
//   class MyClient : public IPindClientNone { CPackFile* OpenFile(...) override; };
//   static MyClient client; SetClient(&client);
#ifndef PIND_CLIENT_PINDCLIENT_H_
#define PIND_CLIENT_PINDCLIENT_H_

#include <cstdint>
#include <map>
#include <string>

#include "pind/platform/Export.h"

class CPackFile;

/// The host client. 57 virtual slots in this order (slot 0 is the destructor); the client was built
/// against these positions, so none may move. Slots that no library code calls are the host's own
/// (named HostNN after their slot); the library only fixes their position and neutral default.
///
/// Slots the library calls:
///   1  IsPackageInUse      files: are packed resources in use at all
///   2  IsFileExist         files: the host's own existence check (PackFExist)
///   4  GetPackageMode      files: 1 = look in the package before the disk
///   5  GetPrimaryFolder    xml: first folder to load from
///   6  GetSecondaryFolder  xml: folder to load from when the first fails
///   7  TranslatePath       files: rewrites a path; the caller fills `translated` with the path first
///   8  OpenFile            ini: open a file object (flag 1 to read, 0 to write)
///   9  OpenFileEx          ini: the same with a further flag, always 1
///   13 IsProfileAllowed    profiler: may the profiler run now
///   14 CreateDir           profiler: create a folder for reports
///   20 FillRectangle       profiler overlay: colour 0xAARRGGBB
///   22 DrawString          profiler overlay: colour 0x00RRGGBB
///   41 GetDescription      profiler reports: fills a 256-byte buffer with the report's first line
///   45 GetBaseDir          files: folder tried when a relative path does not open
///   48 DebugText           debug text (look-up misses of the INI reader)
class PIND_API IPindClient {
public:
    /// Slot 0.
    virtual ~IPindClient();                                                           ///< 0
    /// Slot 1, files: are packed resources in use at all.
    virtual bool IsPackageInUse() = 0;                                                ///< 1
    /// Slot 2, files: the host's own existence check (PackFExist).
    virtual bool IsFileExist(const char* path) = 0;                                   ///< 2
    virtual bool Host03() = 0;                                                        ///< slot 3
    /// Slot 4, files: 1 = look in the package before the disk.
    virtual int GetPackageMode() = 0;                                                 ///< 4
    /// Slot 5, xml: first folder to load from.
    virtual const char* GetPrimaryFolder() = 0;                                       ///< 5
    /// Slot 6, xml: folder to load from when the first fails.
    virtual const char* GetSecondaryFolder() = 0;                                     ///< 6
    /// Slot 7, files: rewrites a path; the caller fills `translated` with the path first.
    virtual void TranslatePath(const char* path, std::string& translated) = 0;        ///< 7
    /// Slot 8, ini: open a file object (flag 1 to read, 0 to write).
    virtual CPackFile* OpenFile(const char* name, const char* mode, bool flag) = 0;   ///< 8
    /// Slot 9, ini: the same with a further flag, always 1.
    virtual CPackFile* OpenFileEx(const char* name, const char* mode, bool flag,
                                  bool flag2) = 0;                                    ///< 9
    virtual intptr_t Host10() = 0;                                                    ///< slot 10
    virtual intptr_t Host11() = 0;                                                    ///< slot 11
    virtual int Host12(const char* section, const char* key, int defaultValue) = 0;  ///< slot 12
    /// Slot 13, profiler: may the profiler run now.
    virtual bool IsProfileAllowed() = 0;                                              ///< 13
    /// Slot 14, profiler: create a folder for reports.
    virtual void CreateDir(const char* name) = 0;                                     ///< 14
    virtual std::string Host15() = 0;                                                 ///< slot 15
    virtual bool Host16() = 0;                                                        ///< slot 16
    virtual bool Host17() = 0;                                                        ///< slot 17
    virtual bool Host18() = 0;                                                        ///< slot 18
    virtual int Host19() = 0;                                                         ///< slot 19
    /// Slot 20, profiler overlay: colour 0xAARRGGBB.
    virtual void FillRectangle(int left, int top, int right, int bottom,
                               uint32_t argb) = 0;                                    ///< 20
    virtual bool Host21() = 0;                                                        ///< slot 21
    /// Slot 22, profiler overlay: colour 0x00RRGGBB.
    virtual void DrawString(int x, int y, uint32_t rgb, const char* text) = 0;        ///< 22
    virtual bool Host23() = 0;                                                        ///< slot 23
    virtual bool Host24() = 0;                                                        ///< slot 24
    virtual bool Host25() = 0;                                                        ///< slot 25
    virtual bool Host26() = 0;                                                        ///< slot 26
    virtual bool Host27() = 0;                                                        ///< slot 27
    virtual bool Host28() = 0;                                                        ///< slot 28
    virtual bool Host29() = 0;                                                        ///< slot 29
    virtual intptr_t Host30() = 0;                                                    ///< slot 30
    virtual intptr_t Host31() = 0;                                                    ///< slot 31
    virtual intptr_t Host32() = 0;                                                    ///< slot 32
    virtual intptr_t Host33() = 0;                                                    ///< slot 33
    virtual intptr_t Host34() = 0;                                                    ///< slot 34
    virtual std::map<std::string, std::string> Host35() = 0;                          ///< slot 35
    virtual std::string Host36() = 0;                                                 ///< slot 36
    virtual intptr_t Host37() = 0;                                                    ///< slot 37
    virtual intptr_t Host38() = 0;                                                    ///< slot 38
    virtual intptr_t Host39() = 0;                                                    ///< slot 39
    virtual bool Host40() = 0;                                                        ///< slot 40
    /// Slot 41, profiler reports: fills a 256-byte buffer with the report's first line.
    virtual void GetDescription(char* buffer) = 0;                                    ///< 41
    virtual void Host42() = 0;                                                        ///< slot 42
    virtual intptr_t Host43() = 0;                                                    ///< slot 43
    virtual intptr_t Host44() = 0;                                                    ///< slot 44
    /// Slot 45, files: folder tried when a relative path does not open.
    virtual const char* GetBaseDir() = 0;                                             ///< 45
    virtual bool Host46() = 0;                                                        ///< slot 46
    virtual void Host47() = 0;                                                        ///< slot 47
    /// Slot 48, debug text (look-up misses of the INI reader).
    virtual void DebugText(const char* format, ...) = 0;                              ///< 48
    virtual std::string Host49() = 0;                                                 ///< slot 49
    virtual std::string Host50() = 0;                                                 ///< slot 50
    virtual intptr_t Host51() = 0;                                                    ///< slot 51
    virtual intptr_t Host52() = 0;                                                    ///< slot 52
    virtual void Host53() = 0;                                                        ///< slot 53
    virtual void Host54() = 0;                                                        ///< slot 54
    virtual void Host55() = 0;                                                        ///< slot 55
    virtual void Host56() = 0;                                                        ///< slot 56
};

/// Every slot neutral: no packages, no files, empty folders and texts, nothing drawn or printed.
/// Derive from it to answer only the slots a host needs.
class PIND_API IPindClientNone : public IPindClient {
public:
    ~IPindClientNone() override;
    bool IsPackageInUse() override { return false; }
    bool IsFileExist(const char*) override { return false; }
    bool Host03() override { return false; }
    int GetPackageMode() override { return 0; }
    const char* GetPrimaryFolder() override { return ""; }
    const char* GetSecondaryFolder() override { return ""; }
    void TranslatePath(const char*, std::string&) override {}
    CPackFile* OpenFile(const char*, const char*, bool) override { return nullptr; }
    CPackFile* OpenFileEx(const char*, const char*, bool, bool) override { return nullptr; }
    intptr_t Host10() override { return 0; }
    intptr_t Host11() override { return 0; }
    int Host12(const char*, const char*, int defaultValue) override { return defaultValue; }
    bool IsProfileAllowed() override { return true; }
    void CreateDir(const char*) override {}
    std::string Host15() override { return std::string(); }
    bool Host16() override { return false; }
    bool Host17() override { return false; }
    bool Host18() override { return false; }
    int Host19() override { return 128; }
    void FillRectangle(int, int, int, int, uint32_t) override {}
    bool Host21() override { return false; }
    void DrawString(int, int, uint32_t, const char*) override {}
    bool Host23() override { return false; }
    bool Host24() override { return false; }
    bool Host25() override { return false; }
    bool Host26() override { return false; }
    bool Host27() override { return false; }
    bool Host28() override { return false; }
    bool Host29() override { return false; }
    intptr_t Host30() override { return 0; }
    intptr_t Host31() override { return 0; }
    intptr_t Host32() override { return 0; }
    intptr_t Host33() override { return 0; }
    intptr_t Host34() override { return 0; }
    std::map<std::string, std::string> Host35() override { return {}; }
    std::string Host36() override { return std::string(); }
    intptr_t Host37() override { return 0; }
    intptr_t Host38() override { return 0; }
    intptr_t Host39() override { return 0; }
    bool Host40() override { return false; }
    void GetDescription(char*) override {}
    void Host42() override {}
    intptr_t Host43() override { return 0; }
    intptr_t Host44() override { return 0; }
    const char* GetBaseDir() override { return ""; }
    bool Host46() override { return false; }
    void Host47() override {}
    void DebugText(const char*, ...) override {}
    std::string Host49() override { return std::string(); }
    std::string Host50() override { return std::string(); }
    intptr_t Host51() override { return 0; }
    intptr_t Host52() override { return 0; }
    void Host53() override {}
    void Host54() override {}
    void Host55() override {}
    void Host56() override {}
};

/// The host's debug interface: 12 slots (slot 0 the destructor). Slot 9, DebugPrintf, receives the
/// library's assertion reports.
class PIND_API IPindDebug {
public:
    /// Slot 0.
    virtual ~IPindDebug();                                    ///< 0
    /// Slot 1: is the host debugging at all.
    virtual bool IsEnabled() = 0;                             ///< 1
    virtual intptr_t Debug02() = 0;                           ///< slot 2, the host's own
    virtual intptr_t Debug03() = 0;                           ///< slot 3, the host's own
    virtual intptr_t Debug04() = 0;                           ///< slot 4, the host's own
    virtual intptr_t Debug05() = 0;                           ///< slot 5, the host's own
    virtual void Debug06() = 0;                               ///< slot 6, the host's own
    virtual void Debug07(std::string text) = 0;               ///< slot 7, the host's own
    virtual void Debug08(std::string text) = 0;               ///< slot 8, the host's own
    /// Slot 9: receives the library's assertion reports.
    virtual void DebugPrintf(const char* format, ...) = 0;    ///< 9
    virtual void Debug10() = 0;                               ///< slot 10, the host's own
    virtual void Debug11() = 0;                               ///< slot 11, the host's own
};

/// Every debug slot neutral: disabled, and reports go nowhere.
class PIND_API IPindDebugNone : public IPindDebug {
public:
    ~IPindDebugNone() override;
    bool IsEnabled() override { return false; }
    intptr_t Debug02() override { return 0; }
    intptr_t Debug03() override { return 0; }
    intptr_t Debug04() override { return 0; }
    intptr_t Debug05() override { return 0; }
    void Debug06() override {}
    void Debug07(std::string) override {}
    void Debug08(std::string) override {}
    void DebugPrintf(const char*, ...) override {}
    void Debug10() override {}
    void Debug11() override {}
};

/// The installed client, or a do-nothing IPindClientNone made and installed on the spot; never
/// null.
PIND_API IPindClient* GetClient();
/// Makes `client` current (null allowed: the next GetClient creates a default). A library-made
/// default that was current is destroyed; a host object that was current is left alone (the host
/// owns it). Returns `client`.
PIND_API IPindClient* SetClient(IPindClient* client);

/// The installed debug interface, or a do-nothing IPindDebugNone made on the spot; never null.
PIND_API IPindDebug* GetDebug();
/// Makes `debug` current, with the ownership rules of SetClient; returns `debug`.
PIND_API IPindDebug* SetDebug(IPindDebug* debug);

#endif  // PIND_CLIENT_PINDCLIENT_H_
