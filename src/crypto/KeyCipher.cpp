#include "pind/crypto/KeyCipher.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

#include "pind/files/PackFile.h"

namespace {

constexpr size_t kKeyBlockSize = 128;
constexpr int kLineCapacity = 2048;

// "加密Key需小于128位!"
constexpr const char kKeyTooLong[] =
    "\xbc\xd3\xc3\xdc"
    "Key\xd0\xe8\xd0\xa1\xd3\xda"
    "128"
    "\xce\xbb!";
// "Key加密失败!"
constexpr const char kKeyBlockFailed[] = "Key\xbc\xd3\xc3\xdc\xca\xa7\xb0\xdc!";
// "未能读取正确字节数!"
constexpr const char kShortWrite[] =
    "\xce\xb4\xc4\xdc\xb6\xc1\xc8\xa1\xd5\xfd\xc8\xb7\xd7\xd6"
    "\xbd\xda\xca\xfd!";

}  // namespace

CMyCrypto::CMyCrypto() = default;
CMyCrypto::CMyCrypto(const CMyCrypto& other) = default;
CMyCrypto& CMyCrypto::operator=(const CMyCrypto& other) = default;
CMyCrypto::~CMyCrypto() = default;

CMyCrypto& CMyCrypto::Instance() {
    static CMyCrypto s_instance;
    return s_instance;
}

void CMyCrypto::SetErrorCallback(ErrorCallback pfnCallback) { m_pfnErrorCallback = pfnCallback; }

void CMyCrypto::ReportError(const char* pszText) {
    if (m_pfnErrorCallback == nullptr || pszText == nullptr) {
        return;
    }
    char szText[512];
    std::snprintf(szText, sizeof szText, "%s: %s", m_strSourceName.c_str(), pszText);
    m_pfnErrorCallback(szText);
}

bool CMyCrypto::EncryptFile(const char* pszSourceFile, const char* pszTargetFile,
                            const char* pszKey) {
    if (pszSourceFile == nullptr || pszTargetFile == nullptr || pszKey == nullptr) {
        return false;
    }
    CPackFile* pSource = PackFOpen(pszSourceFile, "r");
    CPackFile* pTarget = PackFOpen(pszTargetFile, "wb");
    if (pSource == nullptr || pTarget == nullptr) {
        PackFClose(pSource);
        PackFClose(pTarget);
        return false;
    }
    const size_t nKeyLen = std::strlen(pszKey);
    if (nKeyLen >= kKeyBlockSize) {
        ReportError(kKeyTooLong);
        PackFClose(pSource);
        PackFClose(pTarget);
        return false;
    }
    m_strSourceName = pszSourceFile;
    const uint8_t header[7] = {0xFF, 0xFF, 0, static_cast<uint8_t>(kKeyBlockSize), 0, 0, 0};
    PackFWrite(header, 1, sizeof header, pTarget);
    uint8_t xorValue = static_cast<uint8_t>(PackFTell(pTarget));

    char* pBlock = new (std::nothrow) char[kKeyBlockSize];
    if (pBlock == nullptr) {
        PackFClose(pSource);
        PackFClose(pTarget);
        ReportError(kKeyBlockFailed);
        return false;
    }
    std::memset(pBlock, 0, kKeyBlockSize);
    std::memcpy(pBlock, pszKey, nKeyLen);
    for (size_t i = 0; i < kKeyBlockSize && pBlock[i] != '\0'; ++i) {
        pBlock[i] = static_cast<char>(pBlock[i] ^ xorValue++);
    }
    PackFWrite(pBlock, 1, kKeyBlockSize, pTarget);
    delete[] pBlock;

    char szLine[kLineCapacity];
    std::memset(szLine, 0, sizeof szLine);
    while (PackFGets(szLine, kLineCapacity, pSource) != nullptr) {
        if (IsCommentLine(szLine)) {
            continue;
        }
        size_t nLen = std::strlen(szLine);
        if (nLen > 0 && szLine[nLen - 1] == '\n') {
            szLine[--nLen] = '\0';
        }
        for (size_t i = 0; i < nLen && nKeyLen > 0; ++i) {
            szLine[i] = static_cast<char>(szLine[i] ^ pszKey[i % nKeyLen]);
        }
        const int32_t nRecord = static_cast<int32_t>(nLen);
        PackFWrite(&nRecord, sizeof nRecord, 1, pTarget);
        if (PackFWrite(szLine, 1, nLen, pTarget) < nLen) {
            ReportError(kShortWrite);
        }
    }
    PackFClose(pSource);
    PackFClose(pTarget);
    return true;
}
