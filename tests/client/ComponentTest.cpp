// Parent/child links and how destruction unlinks them.
#include <gtest/gtest.h>

#include <vector>

#include "pind/client/Component.h"

namespace {

struct Parent : CCompParent {
    std::vector<CCompChild*> lost;
    void OnLinkDestroyed(CCompChild* child) override { lost.push_back(child); }
};

struct Child : CCompChild {
    std::vector<CCompParent*> lost;
    void OnLinkDestroyed(CCompParent* parent) override { lost.push_back(parent); }
};

TEST(Component, SerialNumbersCountPerClass) {
    Parent a, b;
    Child c, d;
    EXPECT_EQ(b.GetId(), a.GetId() + 1);
    EXPECT_EQ(d.GetId(), c.GetId() + 1);
    Parent copy(a);  // copies share the id and take none
    EXPECT_EQ(copy.GetId(), a.GetId());
    Parent e;
    EXPECT_EQ(e.GetId(), b.GetId() + 1);
}

TEST(Component, DestroyingEitherSideUnlinksAndTellsEachCounterpartOnce) {
    Child c1, c2;
    Parent p1, p2;
    {
        Parent p;
        p.AddChild(&c1);
        p.AddChild(&c1);  // twice: linked once on each side
        p.AddChild(nullptr);
        p.AddChild(&c2);
        ASSERT_EQ(p.GetChildren().size(), 2u);
        ASSERT_EQ(c1.GetParents().size(), 1u);
        Child c;
        p1.AddChild(&c);
        p2.AddChild(&c);
    }
    EXPECT_TRUE(c1.GetParents().empty() && c2.GetParents().empty());
    EXPECT_TRUE(p1.GetChildren().empty() && p2.GetChildren().empty());
    const std::vector<size_t> told = {c1.lost.size(), c2.lost.size(), p1.lost.size(),
                                      p2.lost.size()};
    EXPECT_EQ(told, std::vector<size_t>(4, 1));
}

TEST(Component, RemovalAddParentAndCopiesAreOneSided) {
    Parent p;
    Child c;
    p.AddChild(&c);
    p.RemoveChild(&c);
    EXPECT_TRUE(p.GetChildren().empty());
    EXPECT_EQ(c.GetParents().count(&p), 1u);  // the child keeps its side
    c.RemoveParent(&p);
    c.RemoveParent(nullptr);
    c.AddParent(&p);  // through the child alone: the parent does not learn of it
    EXPECT_EQ(c.GetParents().size(), 1u);
    EXPECT_TRUE(p.GetChildren().empty());
    c.RemoveParent(&p);

    p.AddChild(&c);
    c.lost.clear();
    {
        Parent copy(p);
        EXPECT_EQ(copy.GetChildren().size(), 1u);
        EXPECT_EQ(c.GetParents().count(&copy), 0u);
        // Destroying the copy erases it from the child's set (where it never was) and calls the
        // child's hook: the one-sided link reaches into the child, as the contract warns.
    }
    EXPECT_EQ(c.lost.size(), 1u);
    EXPECT_EQ(c.GetParents().count(&p), 1u);
    p.RemoveChild(&c);
    c.RemoveParent(&p);
}

}  // namespace
