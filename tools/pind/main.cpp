// pind: the library from the shell. `pind demo` runs it end to end on the bundled sample data.
#include <cstdio>
#include <cstring>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/Version.h"

namespace {

struct Command {
    const char* name;
    const char* summary;  // one line for `pind --help`; the usage lives beside the command
    int (*run)(int argc, char** argv);
};

const Command kCommands[] = {
    {"demo", "run the library end to end on the sample data", pind::tool::RunDemo},
    {"crypt", "stream-cipher standard input to standard output", pind::tool::RunCrypt},
    {"log", "write one log record, or view log files (log view)", pind::tool::RunLog},
    {"zip", "write a zip archive's first entry to a file", pind::tool::RunZip},
    {"pack", "list or print packaged files", pind::tool::RunPack},
    {"ini", "read, scramble or edit an INI file", pind::tool::RunIni},
    {"time", "run a schedule check against a given server time and zone", pind::tool::RunTime},
    {"json", "check a JSON file or print it pretty or compact", pind::tool::RunJson},
    {"text", "convert a server string against a string table", pind::tool::RunText},
    {"profile", "profile a scripted scene: trace, overlay, call graph", pind::tool::RunProfile},
    {"curve", "interpolate or fit points from standard input", pind::tool::RunCurve},
    {"printf", "format typed arguments with the checked formatter", pind::tool::RunPrintf},
    {"xml", "check an XML file, or rewrite it in the library's layout", pind::tool::RunXml},
};

void PrintHelp(std::FILE* out) {
    std::fprintf(
        out,
        "usage: pind COMMAND [ARGS...]\n"
        "       pind --help | --version\n\ncommands (pind COMMAND --help for each one's usage):\n");
    for (const Command& c : kCommands) {
        std::fprintf(out, "  %-8s %s\n", c.name, c.summary);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        PrintHelp(stderr);
        return 2;
    }
    const char* name = argv[1];
    if (std::strcmp(name, "--help") == 0 || std::strcmp(name, "-h") == 0 ||
        std::strcmp(name, "help") == 0) {
        PrintHelp(stdout);
        return pind::tool::FlushOut() ? 0 : 1;
    }
    if (std::strcmp(name, "--version") == 0) {
        std::printf("pind %s\n", pind::Version());
        return pind::tool::FlushOut() ? 0 : 1;
    }
    for (const Command& c : kCommands) {
        if (std::strcmp(name, c.name) == 0) {
            return c.run(argc - 1, argv + 1);
        }
    }
    std::fprintf(stderr, "pind: %s: unknown command (see pind --help)\n", name);
    return 2;
}
