// A ready-made host client for programs that are not the game (tools, tests, servers): it opens
// every name the library asks for through PackFOpen, from disk or, in package-first mode, from the
// installed package. Without a host like this the INI reader has no way to open a file.
//   CPackFileClient host; SetClient(&host); CPindIni ini("client.ini"); ... SetClient(nullptr);
#ifndef PIND_CLIENT_PACKFILECLIENT_H_
#define PIND_CLIENT_PACKFILECLIENT_H_

#include "pind/client/PindClient.h"
#include "pind/platform/Export.h"

/// A ready-made host client that opens files through the library's own CPackFile functions.
class PIND_API CPackFileClient : public IPindClientNone {
public:
    /// `bPackageFirst` false: packages are not in use and names open from disk; true: packages are
    /// in use and the installed package is looked at first (package mode 1).
    explicit CPackFileClient(bool bPackageFirst = false) : m_bPackageFirst(bPackageFirst) {}
    ~CPackFileClient() override;

    /// Switches between the two modes the constructor describes.
    void SetPackageFirst(bool bPackageFirst) { m_bPackageFirst = bPackageFirst; }
    bool IsPackageInUse() override { return m_bPackageFirst; }
    int GetPackageMode() override { return m_bPackageFirst ? 1 : 0; }
    /// PackFOpen(pszName, pszMode): null when the name opens nowhere.
    CPackFile* OpenFile(const char* pszName, const char* pszMode, bool bFlag) override;
    /// The same as OpenFile.
    CPackFile* OpenFileEx(const char* pszName, const char* pszMode, bool bFlag,
                          bool bFlag2) override;

private:
    bool m_bPackageFirst;
};

#endif  // PIND_CLIENT_PACKFILECLIENT_H_
