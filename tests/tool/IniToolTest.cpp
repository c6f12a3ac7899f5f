// `pind ini`: a failed scramble or set leaves the user's file as it was; show fails loudly.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

const char kIni[] = "[Server]\nHost=example.org\nPort=7000\n";

TEST(IniTool, ScrambleReplacesTheTargetOnlyWhenItSucceeds) {
    TempDir dir;
    dir.Write("client.ini", kIni);
    dir.Write("target", "precious");
    auto run = RunPind({"ini", "scramble", "missing.ini", "target", "k3y"}, "", dir.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("missing.ini: no such file"), std::string::npos) << run.err;
    EXPECT_EQ(dir.Read("target"), "precious");

    run =
        RunPind({"ini", "scramble", "client.ini", "target", std::string(128, 'k')}, "", dir.Path());
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(dir.Read("target"), "precious");

    run = RunPind({"ini", "scramble", "client.ini", "target", "k3y"}, "", dir.Path());
    ASSERT_EQ(run.status, 0) << run.err;
    run = RunPind({"ini", "show", "target", "--scrambled", "--get", "Server", "Port"}, "",
                  dir.Path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "7000\n");
    int files = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dir.Path())) {
        ++files;
    }
    EXPECT_EQ(files, 2) << "no temporary file is left behind";
}

TEST(IniTool, SetSavesOrSaysWhyNotAndShowFailsLoudly) {
    struct Case {
        const char* label;
        std::vector<std::string> args;
        int status;
        const char* why;  // on stderr; "" for success
    };
    const std::vector<Case> cases = {
        {"new file", {"ini", "set", "new.ini", "Video", "Width", "1920"}, 0, ""},
        {"existing file", {"ini", "set", "client.ini", "Server", "Port", "7001"}, 0, ""},
        {"missing folder", {"ini", "set", "nowhere/a.ini", "s", "k", "v"}, 1, "no such folder"},
        {"a folder as the file", {"ini", "set", "sub", "s", "k", "v"}, 1, "is a folder"},
        {"value cut by the reader",
         {"ini", "set", "client.ini", "Server", "Host", "a\tb"},
         1,
         "does not survive"},
        {"empty key", {"ini", "set", "client.ini", "Server", "", "v"}, 2, "KEY"},
        {"show a folder", {"ini", "show", "sub"}, 1, "pind: ini: sub"},
        {"show a missing file", {"ini", "show", "missing.ini"}, 1, "pind: ini: missing.ini"},
    };
    for (const Case& c : cases) {
        TempDir dir;
        dir.Write("client.ini", kIni);
        std::filesystem::create_directory(dir.File("sub"));
        const auto run = RunPind(c.args, "", dir.Path());
        EXPECT_EQ(run.status, c.status) << c.label << ": " << run.err;
        if (c.status != 0) {
            EXPECT_NE(run.err.find(c.why), std::string::npos) << c.label << ": " << run.err;
            EXPECT_EQ(run.out, "") << c.label;
            EXPECT_EQ(dir.Read("client.ini"), kIni) << c.label;
            continue;
        }
        const std::string file = c.args[2];
        const auto show =
            RunPind({"ini", "show", file, "--get", c.args[3], c.args[4]}, "", dir.Path());
        EXPECT_EQ(show.out, c.args[5] + "\n") << c.label;
    }
}

}  // namespace
}  // namespace pind::test
