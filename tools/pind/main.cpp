// pind: the library from the shell. `pind demo` runs it end to end on the bundled sample data.
#include <cstdio>
#include <cstring>

#include "Commands.h"
#include "pind/Version.h"

namespace {

struct Command {
    const char* name;
    const char* usage;
    int (*run)(int argc, char** argv);
};

const Command kCommands[] = {
    {"demo", "demo [--data DIR] [--keep]  run the library end to end on the sample data",
     pind::tool::RunDemo},
    {"crypt", "crypt KEYHEX [--decrypt] [--change-code N]  stream-cipher standard input to output",
     pind::tool::RunCrypt},
    {"log", "log [--level NAME] [--cate C] [--folder F] MESSAGE [key=value ...]  write one record",
     pind::tool::RunLog},
    {"zip", "zip first ARCHIVE -o OUT  write the archive's first entry to OUT", pind::tool::RunZip},
    {"pack", "pack (ls | cat) (--dir DIR | --zip ARCHIVE) [NAME]  list or print packaged files",
     pind::tool::RunPack},
    {"ini",
     "ini (show FILE [--key KEY | --scrambled] [--get SECTION KEY] | scramble SRC DST KEY | set "
     "FILE SECTION KEY VALUE)  read, scramble or edit an INI file",
     pind::tool::RunIni},
};

void PrintHelp(std::FILE* out) {
    std::fprintf(out,
                 "usage: pind COMMAND [ARGS...]\n"
                 "       pind --help | --version\n\ncommands:\n");
    for (const Command& c : kCommands) {
        std::fprintf(out, "  %s\n", c.usage);
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
        return 0;
    }
    if (std::strcmp(name, "--version") == 0) {
        std::printf("pind %s\n", pind::Version());
        return 0;
    }
    for (const Command& c : kCommands) {
        if (std::strcmp(name, c.name) == 0) {
            return c.run(argc - 1, argv + 1);
        }
    }
    std::fprintf(stderr, "pind: %s: unknown command (see pind --help)\n", name);
    return 2;
}
