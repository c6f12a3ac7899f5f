// `pind pack ls --dir`: everything readable is listed, the rest is reported, and then it fails.
#include <sys/stat.h>

#include <filesystem>

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(PackTool, ListsEveryReadableFileSortedAndReportsTheRest) {
    TempDir dir;
    dir.Write("pack/b.txt", "b");
    dir.Write("pack/Ini/Items.txt", "i");
    dir.Write("pack/a/deep/z.lua", "z");
    const std::string all = "Ini/Items.txt\na/deep/z.lua\nb.txt\n";
    ExpectRuns({{"pack ls --dir pack", 0, all, ""}}, dir.Path());
    std::filesystem::create_symlink("Loop", dir.File("pack/Loop"));  // resolves to nothing ever
    ExpectRuns({{"pack ls --dir pack", 1, all, "Loop: cannot read"}}, dir.Path());
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
    ExpectRuns({{"pack ls --dir pack", 1, "a.txt\nz.txt\n", "locked: cannot read"}}, dir.Path());
    chmod(dir.File("pack/locked").c_str(), 0755);
}

}  // namespace
}  // namespace pind::test
