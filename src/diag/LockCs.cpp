#include "pind/diag/LockCs.h"

CMyLockCs::CMyLockCs() = default;
CMyLockCs::~CMyLockCs() = default;

bool CMyLockCs::Lock() {
    m_cs.Enter();
    return true;
}

void CMyLockCs::Unlock() { m_cs.Leave(); }
