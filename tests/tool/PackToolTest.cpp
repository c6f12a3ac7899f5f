// `pind pack ls --dir`: everything readable is listed, the rest is reported, and then it fails.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "support/TempDir.h"
#include "tool/RunTool.h"
#include "tool/ToolTestSupport.h"

namespace pind::test {
namespace {

TEST(PackTool, ListsEveryReadableFileSortedAndReportsTheRest) {
    TempDir dir;
    dir.Write("pack/b.txt", "b");
    dir.Write("pack/Ini/Items.txt", "i");
    dir.Write("pack/a/deep/z.lua", "z");
    auto run = RunPind({"pack", "ls", "--dir", dir.File("pack")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "Ini/Items.txt\na/deep/z.lua\nb.txt\n");

    std::filesystem::create_symlink("Loop", dir.File("pack/Loop"));  // resolves to nothing ever
    run = RunPind({"pack", "ls", "--dir", dir.File("pack")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "Ini/Items.txt\na/deep/z.lua\nb.txt\n");
    EXPECT_NE(run.err.find("Loop: cannot read"), std::string::npos) << run.err;
}

TEST(PackTool, AnUnreadableSubfolderIsReportedAndTheRestListed) {
    if (!PermissionsHold()) {
        GTEST_SKIP() << "root reads every folder";
    }
    TempDir dir;
    dir.Write("pack/a.txt", "a");
    dir.Write("pack/locked/secret.txt", "s");
    dir.Write("pack/z.txt", "z");
    chmod(dir.File("pack/locked").c_str(), 0);
    const auto run = RunPind({"pack", "ls", "--dir", dir.File("pack")});
    chmod(dir.File("pack/locked").c_str(), 0755);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "a.txt\nz.txt\n");
    EXPECT_NE(run.err.find("locked: cannot read"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace pind::test
