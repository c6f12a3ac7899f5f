// Shared exit-status, usage and checked-output helpers of the pind commands.
#include "ToolSupport.h"

#include <cstdio>
#include <cstring>

namespace pind::tool {

bool WantsHelp(int argc, char** argv) {
    return argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0);
}

int PrintUsage(const char* usage) {
    return WriteOut(usage) && WriteOut("\n", 1) && FlushOut() ? kExitOk : kExitFailure;
}

int UsageError(const char* command, const char* usage, const std::string& why) {
    if (!why.empty()) {
        std::fprintf(stderr, "pind: %s: %s\n", command, why.c_str());
    }
    std::fprintf(stderr, "%s\n", usage);
    return kExitUsage;
}

int Fail(const char* command, const std::string& what) {
    std::fprintf(stderr, "pind: %s: %s\n", command, what.c_str());
    return kExitFailure;
}

namespace {
bool g_outFailed = false;

void NoteOutFailure() {
    if (!g_outFailed) {
        g_outFailed = true;
        std::fprintf(stderr, "pind: cannot write to standard output\n");
    }
}
}  // namespace

bool WriteOut(const void* data, std::size_t size) {
    if (size != 0 && std::fwrite(data, 1, size, stdout) != size) {
        NoteOutFailure();
    }
    return !g_outFailed;
}

bool WriteOut(const std::string& text) { return WriteOut(text.data(), text.size()); }

bool FlushOut() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        NoteOutFailure();
    }
    return !g_outFailed;
}

}  // namespace pind::tool
