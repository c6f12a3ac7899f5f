// The conventions every pind command shares, checked on the built program for each command that
// `pind --help` lists.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "pind/Version.h"
#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// The command names in the "commands" part of `pind --help`'s text.
std::vector<std::string> Commands(const std::string& helpText) {
    std::istringstream help(helpText);
    std::vector<std::string> names;
    bool inList = false;
    for (std::string line; std::getline(help, line);) {
        if (inList && line.rfind("  ", 0) == 0) {
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
        inList = inList || line.rfind("commands", 0) == 0;
    }
    return names;
}

// The tool, the header and the loaded library must all report the version the build was made
// with: a stale library beside the tool would show here.
TEST(PindTool, VersionIsTheOneTheBuildWasMadeWith) {
    const std::string expected = std::to_string(PIND_VERSION_MAJOR) + "." +
                                 std::to_string(PIND_VERSION_MINOR) + "." +
                                 std::to_string(PIND_VERSION_PATCH);
    EXPECT_EQ(pind::Version(), expected);
    const auto run = RunPind({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "pind " + expected + "\n");
    EXPECT_EQ(run.err, "");
}

TEST(PindTool, EveryCommandHasHelpOnStdoutAndUsageErrorsOnStderr) {
    auto run = RunPind({"no-such-command"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("unknown command"), std::string::npos);
    run = RunPind({"--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::vector<std::string> commands = Commands(run.out);
    ASSERT_GE(commands.size(), 6u);
    for (const std::string& command : commands) {
        run = RunPind({command, "--help"});
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_EQ(run.out.rfind("usage: pind " + command, 0), 0u) << command << ": " << run.out;
        EXPECT_EQ(run.err, "") << command;

        if (command == "printf") {
            continue;  // its first argument is the format, whatever it looks like
        }
        run = RunPind({command, "--no-such-option"});
        EXPECT_EQ(run.status, 2) << command;
        EXPECT_EQ(run.out, "") << command;
        EXPECT_NE(run.err.find("usage: pind " + command), std::string::npos) << command;
    }
}

TEST(PindTool, AFullDiskIsAFailureWithAMessage) {
    TempDir dir;
    dir.Write("a.ini", "[s]\nk=v\n");
    dir.Write("pack/a.txt", "bytes");
    for (const char* args :
         {"ini show a.ini", "pack ls --dir pack", "pack cat --dir pack a.txt",
          "crypt 0701030905020406", "demo", "ini --help", "--help", "--version"}) {
        const auto run = RunPind(Words(args), "plain text", dir.Path(), {}, "/dev/full");
        EXPECT_EQ(run.status, 1) << args;
        EXPECT_NE(run.err.find("cannot write to standard output"), std::string::npos) << run.err;
    }
}

TEST(PindTool, DemoFindsTheDataBesideItselfAndRefusesOtherData) {
    TempDir dir;
    const auto run = RunPind({"demo"}, "", dir.Path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("demo finished"), std::string::npos);
    ExpectRuns({{"demo --data " + dir.Path(), 1, "", "no sample data there"}});
}

TEST(PindTool, CryptRoundTripsThroughStandardStreams) {
    const std::string plain(100000, 'p');
    const auto encrypted = RunPind({"crypt", "0701030905020406", "--change-code", "0x1234"}, plain);
    ASSERT_EQ(encrypted.status, 0) << encrypted.err;
    EXPECT_NE(encrypted.out, plain);
    const auto decrypted = RunPind(
        {"crypt", "0701030905020406", "--change-code", "0x1234", "--decrypt"}, encrypted.out);
    EXPECT_EQ(decrypted.out, plain);
}

}  // namespace
}  // namespace pind::test
