// Writes the self-keyed scrambled INI form that CPindIni::LoadScrambled reads: each kept line
// XOR-ed with the caller's key as a length-prefixed record, the key itself in the header under a
// position-dependent XOR. Errors go, as GBK text, to a callback the caller installs.
//   CMyCrypto::Instance().SetErrorCallback(OnError);
//   CMyCrypto::Instance().EncryptFile("client.ini", "client.sini", "secret");
#ifndef PIND_CRYPTO_KEYCIPHER_H_
#define PIND_CRYPTO_KEYCIPHER_H_

#include <string>

#include "pind/platform/Export.h"

/// Writes scrambled INI files and reports errors to the installed callback.
class PIND_API CMyCrypto {
public:
    /// Receives each formatted error text ("source: message").
    using ErrorCallback = void (*)(const char* pszText);

    /// No callback, no source name.
    CMyCrypto();
    ///@{
    /// Copies the source name and the callback.
    CMyCrypto(const CMyCrypto& other);
    CMyCrypto& operator=(const CMyCrypto& other);
    ///@}
    virtual ~CMyCrypto();

    /// The process-wide instance, made on first use (thread-safe) and destroyed at exit.
    static CMyCrypto& Instance();

    /// Null turns the reports off.
    void SetErrorCallback(ErrorCallback pfnCallback);
    /// Passes "source: text" (cut to 511 bytes) to the callback; nothing without one or for null.
    void ReportError(const char* pszText);

    /// Writes the scrambled form of `pszSourceFile` to `pszTargetFile`; false for a null argument,
    /// a file that does not open (the other one is closed again) or a key of 128 bytes or more.
    /// Lines longer than 2047 bytes are split into several records.
    bool EncryptFile(const char* pszSourceFile, const char* pszTargetFile, const char* pszKey);

private:
    // Fields in the order the client's data model gives.
    std::string m_strSourceName;
    ErrorCallback m_pfnErrorCallback = nullptr;
};

#endif  // PIND_CRYPTO_KEYCIPHER_H_
