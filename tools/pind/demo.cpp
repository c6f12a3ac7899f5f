// `pind demo`: each subsystem shows what it does on the sample data, in a scratch folder.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "Commands.h"
#include "pind/platform/System.h"

namespace pind::tool {
namespace {

struct DemoStep {
    const char* name;
    void (*run)(const DemoContext& ctx);
};

const DemoStep kSteps[] = {
    {"client", DemoClient},
    {"crypt", DemoCrypt},
    {"logging", DemoLogging},
    {"files", DemoFiles},
    {"ini", DemoIni},
    {"xml", DemoXml},
};

std::string ScratchFolder() {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                      ("pind-demo-" + std::to_string(platform::CurrentProcessId()));
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    return dir.generic_string();
}

}  // namespace

void DemoHeading(const char* title) { std::printf("\n== %s ==\n", title); }

int RunDemo(int argc, char** argv) {
    DemoContext ctx;
    ctx.dataDir = PIND_EXAMPLES_DIR;
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--data") == 0 && i + 1 < argc) {
            ctx.dataDir = argv[++i];
        } else if (std::strcmp(argv[i], "--keep") == 0) {
            keep = true;
        } else {
            std::fprintf(stderr, "pind: demo: unknown argument %s\n", argv[i]);
            return 2;
        }
    }
    if (platform::FileAttributes(ctx.dataDir.c_str()) == platform::kInvalidFileAttributes) {
        std::fprintf(stderr, "pind: demo: %s: no sample data there (use --data DIR)\n",
                     ctx.dataDir.c_str());
        return 1;
    }
    ctx.workDir = ScratchFolder();
    std::printf("PindBase demo: sample data in %s, scratch files in %s\n", ctx.dataDir.c_str(),
                ctx.workDir.c_str());
    for (const DemoStep& step : kSteps) {
        step.run(ctx);
    }
    if (keep) {
        std::printf("\ndemo finished; its files are in %s\n", ctx.workDir.c_str());
    } else {
        std::error_code ec;
        std::filesystem::remove_all(ctx.workDir, ec);
        std::printf("\ndemo finished\n");
    }
    return 0;
}

}  // namespace pind::tool
