// Parent/child links and how destruction unlinks them.
#include "pind/client/Component.h"

#include <gtest/gtest.h>

#include <vector>

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
    Parent a;
    Parent b;
    Child c;
    Child d;
    EXPECT_EQ(b.GetId(), a.GetId() + 1);
    EXPECT_EQ(d.GetId(), c.GetId() + 1);
    Parent copy(a);  // copies share the id and take none
    EXPECT_EQ(copy.GetId(), a.GetId());
    Parent e;
    EXPECT_EQ(e.GetId(), b.GetId() + 1);
}

TEST(Component, AddChildTwiceLinksOnceOnEachSide) {
    Parent p;
    Child c;
    p.AddChild(&c);
    p.AddChild(&c);
    p.AddChild(nullptr);
    EXPECT_EQ(p.GetChildren().size(), 1u);
    EXPECT_EQ(c.GetParents().size(), 1u);
    p.RemoveChild(&c);
    c.RemoveParent(&p);
}

TEST(Component, DestroyingAParentUnlinksAndTellsEachChildOnce) {
    Child c1;
    Child c2;
    {
        Parent p;
        p.AddChild(&c1);
        p.AddChild(&c2);
        ASSERT_EQ(c1.GetParents().size(), 1u);
    }
    EXPECT_TRUE(c1.GetParents().empty());
    EXPECT_TRUE(c2.GetParents().empty());
    EXPECT_EQ(c1.lost.size(), 1u);
    EXPECT_EQ(c2.lost.size(), 1u);
}

TEST(Component, DestroyingAChildUnlinksAndTellsEachParent) {
    Parent p1;
    Parent p2;
    {
        Child c;
        p1.AddChild(&c);
        p2.AddChild(&c);
    }
    EXPECT_TRUE(p1.GetChildren().empty());
    EXPECT_TRUE(p2.GetChildren().empty());
    EXPECT_EQ(p1.lost.size(), 1u);
    EXPECT_EQ(p2.lost.size(), 1u);
}

TEST(Component, RemovalAndAddParentAreOneSided) {
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
}

TEST(Component, CopyIsNotKnownToCounterparts) {
    Child c;
    Parent p;
    p.AddChild(&c);
    {
        Parent copy(p);
        EXPECT_EQ(copy.GetId(), p.GetId());
        EXPECT_EQ(copy.GetChildren().size(), 1u);
        EXPECT_EQ(c.GetParents().count(&copy), 0u);
        // Destroying the copy erases it from the child's set (where it never was) and calls the
        // child's hook: the one-sided link reaches into the child, as the contract warns.
        c.lost.clear();
    }
    EXPECT_EQ(c.lost.size(), 1u);
    EXPECT_EQ(c.GetParents().count(&p), 1u);
    p.RemoveChild(&c);
    c.RemoveParent(&p);
}

}  // namespace
