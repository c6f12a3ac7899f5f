// Many-to-many parent/child links with no dangling ends: both sides remember whom they are linked
// to, and an object going away unlinks itself everywhere and calls OnLinkDestroyed on each object
// it was linked to.
//   class CUnit : public CCompParent { ... };  unit.AddChild(&buff);
#ifndef PIND_CLIENT_COMPONENT_H_
#define PIND_CLIENT_COMPONENT_H_

#include <cstdint>
#include <set>

#include "pind/platform/Export.h"

class CCompChild;

// The destructors are deliberately not virtual: the client's classes were built against a layout
// whose only virtual slot is OnLinkDestroyed. Copies share the source's id and links, and the
// counterparts do not learn of the copy.
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
#endif

/// The parent side of a many-to-many link between game objects, such as a unit and its buffs.
class PIND_API CCompParent {
public:
    /// Empty link set and the next parent serial number (the first parent gets 1).
    CCompParent();
    ///@{
    /// Copies the id and the links; the children do not learn of the copy.
    CCompParent(const CCompParent&) = default;
    CCompParent& operator=(const CCompParent&) = default;
    ///@}
    /// Each child, in set order, loses this parent and then gets OnLinkDestroyed(this).
    ~CCompParent();

    /// Called when a linked child is being destroyed; does nothing here.
    virtual void OnLinkDestroyed(CCompChild* child);

    /// The serial number given at construction.
    uint32_t GetId() const { return m_nId; }
    /// Null is ignored. Links both ways (inserting only where missing).
    void AddChild(CCompChild* child);
    /// Null is ignored. Unlinks this side only: the child keeps its pointer to this parent.
    void RemoveChild(CCompChild* child);
    /// The linked children, by address.
    const std::set<CCompChild*>& GetChildren() const { return m_setChildren; }

private:
    friend class CCompChild;
    std::set<CCompChild*> m_setChildren;
    uint32_t m_nId;
};

/// The child side of the link: what a parent holds.
class PIND_API CCompChild {
public:
    /// Empty link set and the next child serial number (the first child gets 1).
    CCompChild();
    ///@{
    /// Copies the id and the links; the parents do not learn of the copy.
    CCompChild(const CCompChild&) = default;
    CCompChild& operator=(const CCompChild&) = default;
    ///@}
    /// Each parent, in set order, loses this child and then gets OnLinkDestroyed(this).
    ~CCompChild();

    /// Called when a linked parent is being destroyed; does nothing here.
    virtual void OnLinkDestroyed(CCompParent* parent);

    /// The serial number given at construction.
    uint32_t GetId() const { return m_nId; }
    /// Null is ignored. Links this side only: the parent does not learn of it.
    void AddParent(CCompParent* parent);
    /// Null is ignored. Unlinks this side only.
    void RemoveParent(CCompParent* parent);
    /// The linked parents, by address.
    const std::set<CCompParent*>& GetParents() const { return m_setParents; }

private:
    friend class CCompParent;
    std::set<CCompParent*> m_setParents;
    uint32_t m_nId;
};

#if defined(__GNUC__) || defined(__clang__)
#pragma GCC diagnostic pop
#endif

#endif  // PIND_CLIENT_COMPONENT_H_
