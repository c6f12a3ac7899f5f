// The conventions every pind command shares, checked on the built program for each command that
// `pind --help` lists.

#include <sstream>

#include "pind/Version.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// The tool, the header and the loaded library must all report the version the build was made
// with: a stale library beside the tool would show here.
TEST(PindTool, VersionIsTheOneTheBuildWasMadeWith) {
    EXPECT_EQ(pind::Version(), std::string(PIND_VERSION_STRING));
    ExpectRuns({{"--version", 0, "pind " PIND_VERSION_STRING "\n"}});
}

TEST(PindTool, EveryCommandHasHelpOnStdoutAndUsageErrorsOnStderr) {
    ExpectRuns({{"no-such-command", 2, "", "unknown command"}});
    auto run = RunPind({"--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    // The command names: the first word of each indented line after "commands".
    std::vector<std::string> commands;
    std::istringstream help(run.out.substr(run.out.find("\ncommands")));
    for (std::string line; std::getline(help, line);) {
        if (line.rfind("  ", 0) == 0) commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    ASSERT_GE(commands.size(), 6u);
    for (const std::string& command : commands) {
        run = RunPind({command, "--help"});
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_EQ(run.out.rfind("usage: pind " + command, 0), 0u) << command << ": " << run.out;
        EXPECT_EQ(run.err, "") << command;
        if (command != "printf") {  // its first argument is the format, whatever it looks like
            ExpectRuns({{command + " --no-such-option", 2, "", "usage: pind " + command}});
        }
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
    const auto encrypted = RunPind(Words("crypt 0701030905020406 --change-code 0x1234"), plain);
    ASSERT_EQ(encrypted.status, 0) << encrypted.err;
    EXPECT_NE(encrypted.out, plain);
    ExpectRuns(
        {{"crypt 0701030905020406 --change-code 0x1234 --decrypt", 0, plain, "", encrypted.out}});
}

}  // namespace
}  // namespace pind::test
