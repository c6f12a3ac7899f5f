#include "pind/client/PackFileClient.h"

#include "pind/files/PackFile.h"

CPackFileClient::~CPackFileClient() = default;

CPackFile* CPackFileClient::OpenFile(const char* pszName, const char* pszMode, bool) {
    return PackFOpen(pszName, pszMode);
}

CPackFile* CPackFileClient::OpenFileEx(const char* pszName, const char* pszMode, bool, bool) {
    return PackFOpen(pszName, pszMode);
}
