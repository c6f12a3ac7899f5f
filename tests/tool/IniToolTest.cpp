// `pind ini`: a failed scramble or set leaves the user's file as it was; show fails loudly.

#include <filesystem>
#include <iterator>

#include "tool/RunTool.h"

namespace pind::test {
namespace {

const char kIni[] = "[Server]\nHost=example.org\nPort=7000\n";

TEST(IniTool, ScrambleReplacesTheTargetOnlyWhenItSucceeds) {
    TempDir dir;
    dir.Write("client.ini", kIni);
    dir.Write("target", "precious");
    ExpectRuns({{"ini scramble missing.ini target k3y", 1, "", "missing.ini: no such file"},
                {"ini scramble client.ini target " + std::string(128, 'k'), 2, "", "usage:"}},
               dir.Path());
    EXPECT_EQ(dir.Read("target"), "precious");

    ExpectRuns({{"ini scramble client.ini target k3y", 0, "", ""},
                {"ini show target --scrambled --get Server Port", 0, "7000\n", ""}},
               dir.Path());
    const std::filesystem::directory_iterator files(dir.Path());
    EXPECT_EQ(std::distance(files, {}), 2) << "no temporary file is left behind";
}

TEST(IniTool, SetSavesOrSaysWhyNotAndShowFailsLoudly) {
    const ToolCase cases[] = {
        {"ini set new.ini Video Width 1920", 0, "", ""},
        {"ini set client.ini Server Port 7001", 0, "", ""},
        {"ini set nowhere/a.ini s k v", 1, "", "no such folder"},
        {"ini set sub s k v", 1, "", "is a folder"},
        {"ini set client.ini Server Host 'a\tb'", 1, "", "does not survive"},  // the reader cuts it
        {"ini show sub", 1, "", "pind: ini: sub"},
    };
    for (const ToolCase& c : cases) {
        TempDir dir;
        dir.Write("client.ini", kIni);
        std::filesystem::create_directory(dir.File("sub"));
        ExpectRuns({c}, dir.Path());
        const auto args = Words(c.args);
        if (c.status == 0) {
            ExpectRuns({{"ini show " + args[2] + " --get " + args[3] + " " + args[4], 0,
                         args[5] + "\n", ""}},
                       dir.Path());
        } else {
            EXPECT_EQ(dir.Read("client.ini"), kIni) << c.args;
        }
    }
}

}  // namespace
}  // namespace pind::test
