#include "pind/client/Component.h"

namespace {
// Serial numbers: one counter per class, never reset, wrapping at 2^32.
uint32_t g_nParentSerial = 0;
uint32_t g_nChildSerial = 0;
}  // namespace

CCompParent::CCompParent() : m_nId(++g_nParentSerial) {}

CCompParent::~CCompParent() {
    for (CCompChild* child : m_setChildren) {
        child->m_setParents.erase(this);
        child->OnLinkDestroyed(this);
    }
}

void CCompParent::OnLinkDestroyed(CCompChild*) {}

void CCompParent::AddChild(CCompChild* child) {
    if (child == nullptr) {
        return;
    }
    m_setChildren.insert(child);
    child->AddParent(this);
}

void CCompParent::RemoveChild(CCompChild* child) {
    if (child != nullptr) {
        m_setChildren.erase(child);
    }
}

CCompChild::CCompChild() : m_nId(++g_nChildSerial) {}

CCompChild::~CCompChild() {
    for (CCompParent* parent : m_setParents) {
        parent->m_setChildren.erase(this);
        parent->OnLinkDestroyed(this);
    }
}

void CCompChild::OnLinkDestroyed(CCompParent*) {}

void CCompChild::AddParent(CCompParent* parent) {
    if (parent != nullptr) {
        m_setParents.insert(parent);
    }
}

void CCompChild::RemoveParent(CCompParent* parent) {
    if (parent != nullptr) {
        m_setParents.erase(parent);
    }
}
