// The current host objects: lazy do-nothing defaults, replacement and ownership.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/client/PindClient.h"
#include "support/RecordingClient.h"

namespace {

TEST(PindClient, DefaultIsMadeOnceAndPassesDefaultsAndTheCallersDataThrough) {
    SetClient(nullptr);
    IPindClient* c = GetClient();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(GetClient(), c);  // created once
    EXPECT_EQ(c->OpenFile("ini/a.ini", "r", true), nullptr);
    std::string path = "data/x.lua";
    c->TranslatePath("data/x.lua", path);
    EXPECT_EQ(path, "data/x.lua");  // the caller's path stays as it is
    EXPECT_EQ(c->Host12("s", "k", -77), -77);
    EXPECT_EQ(c->Host19(), 128);
    char line[256] = "unchanged";
    c->GetDescription(line);
    EXPECT_STREQ(line, "unchanged");
    SetClient(nullptr);
}

// A host's own object, even one derived from the default, has a type of its own.
struct OtherHost : IPindClientNone {
    int answers = 0;
    bool IsPackageInUse() override { return ++answers > 0; }
};

TEST(PindClient, HostObjectIsNeverDestroyedByTheLibrary) {
    GetClient();  // a default is current
    {
        pind::test::RecordingClient host;  // SetClient(&host) destroys that default
        EXPECT_EQ(GetClient(), &host);
        OtherHost other;
        EXPECT_EQ(SetClient(&other), &other);
        host.DebugText("still %s", "here");  // replacing the host left it alive
        EXPECT_EQ(host.debugTexts, std::vector<std::string>{"still here"});
        SetClient(&host);
        EXPECT_TRUE(other.IsPackageInUse());  // and the same for the second host
    }
    // The recording client uninstalled itself; a fresh default answers.
    EXPECT_EQ(GetClient()->OpenFile("a", "r", true), nullptr);
    SetClient(nullptr);
}

TEST(PindClient, DefaultDebugAnswersNeutrallyAndHostDebugIsKept) {
    SetDebug(nullptr);
    IPindDebug* d = GetDebug();
    EXPECT_FALSE(d->IsEnabled());
    EXPECT_EQ(d->Debug02(), 0);
    d->Debug07("text");
    d->DebugPrintf("%d", 1);
    {
        pind::test::RecordingDebug host;
        GetDebug()->DebugPrintf("x=%d", 5);
        EXPECT_EQ(host.texts, std::vector<std::string>{"x=5"});
    }
    EXPECT_NE(GetDebug(), nullptr);
    SetDebug(nullptr);
}

}  // namespace
