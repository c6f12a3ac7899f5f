// The cipher on the client's network traffic. Eight key bytes from the host build four 256-byte
// tables; each direction keeps its own 16-bit position, so data may arrive in chunks of any length
// and sending and receiving through the same object do not disturb each other.
//   IEncryptor* c = CreateClientCryptor(7, 1, 3, 9, 5, 2, 4, 6);
//   c->Encrypt(buf, len);  ...  c->Release();
#ifndef PIND_CRYPTO_CLIENTCRYPTOR_H_
#define PIND_CRYPTO_CLIENTCRYPTOR_H_

#include <cstdint>

#include "pind/platform/Export.h"

/// The host's network layer calls through these nine slots in this order; the destructor is last.
class PIND_API IEncryptor {
public:
    /// Both positions back to 0; returns 0.
    virtual int Reset() = 0;
    /// Deletes the object; returns 1.
    virtual int Release() = 0;
    /// Transforms `nLength` bytes in place and advances the encrypt position by as many; a length
    /// of 0 or less does nothing.
    virtual void Encrypt(uint8_t* pBuffer, int nLength) = 0;
    /// The inverse of Encrypt, with the decrypt position.
    virtual void Decrypt(uint8_t* pBuffer, int nLength) = 0;
    /// Encrypt with a trailing flag of 0, which has no effect in this cipher.
    virtual void EncryptEx(uint8_t* pBuffer, int nLength) = 0;
    /// Does nothing.
    virtual void Reserved() = 0;
    /// XORs the tables with the squares of the code's halves; positions and key bytes are kept.
    virtual void ChangeCode(uint32_t dwCode) = 0;
    /// A new object with this one's whole state (tables, positions, key), or null when allocation
    /// fails. The caller ends it with Release.
    virtual IEncryptor* Duplicate() = 0;
    virtual ~IEncryptor() = default;
};

/// The cipher itself; CreateClientCryptor makes one for the host.
class PIND_API CClientCryptor : public IEncryptor {
public:
    /// Note the order: for each table the multiplier, the first and second addend, then the seed.
    CClientCryptor(uint8_t byMultiplierA, uint8_t byAddendA1, uint8_t byAddendA2, uint8_t bySeedA,
                   uint8_t byMultiplierB, uint8_t byAddendB1, uint8_t byAddendB2, uint8_t bySeedB);
    ///@{
    /// Copies the whole state: tables, positions and key.
    CClientCryptor(const CClientCryptor& other) = default;
    CClientCryptor& operator=(const CClientCryptor& other) = default;
    ///@}
    ~CClientCryptor() override = default;

    int Reset() override;
    int Release() override;
    void Encrypt(uint8_t* pBuffer, int nLength) override;
    void Decrypt(uint8_t* pBuffer, int nLength) override;
    void EncryptEx(uint8_t* pBuffer, int nLength) override;
    void Reserved() override;
    void ChangeCode(uint32_t dwCode) override;
    IEncryptor* Duplicate() override;

    /// Where Encrypt continues in the key stream (modulo 2^16).
    uint16_t GetEncryptPosition() const { return m_wEncryptPos; }
    /// Where Decrypt continues in the key stream (modulo 2^16).
    uint16_t GetDecryptPosition() const { return m_wDecryptPos; }
    /// The enabled word: 1 from construction on, carried by copies; the cipher itself ignores it.
    int32_t GetEnabled() const { return m_nEnabled; }
    /// Table A, B, P (A ^ B) or Q (A & B) by index 0-3; 256 bytes each.
    const uint8_t* GetTable(int nIndex) const;

private:
    /// The key bytes are stored multiplier, seed, first addend, second addend.
    struct Key {
        uint8_t byMultiplier;
        uint8_t bySeed;
        uint8_t byAddend1;
        uint8_t byAddend2;
    };

    void BuildTables();

    // Field order is the client's layout: tables, positions, key bytes, saved key, flag.
    uint8_t m_abyTableA[256];
    uint8_t m_abyTableB[256];
    uint8_t m_abyTableP[256];
    uint8_t m_abyTableQ[256];
    uint16_t m_wEncryptPos = 0;
    uint16_t m_wDecryptPos = 0;
    Key m_keyA;
    Key m_keyB;
    uint32_t m_adwSavedKeyA[2];  ///< carried by copies; read by nothing here
    int32_t m_nEnabled = 1;      ///< carried by copies; the cipher ignores it
};

/// A heap CClientCryptor with these key bytes, passed on in the constructor's order; null when
/// allocation fails. End it with Release.
PIND_API IEncryptor* CreateClientCryptor(uint8_t byMultiplierA, uint8_t byAddendA1,
                                         uint8_t byAddendA2, uint8_t bySeedA, uint8_t byMultiplierB,
                                         uint8_t byAddendB1, uint8_t byAddendB2, uint8_t bySeedB);

#endif  // PIND_CRYPTO_CLIENTCRYPTOR_H_
