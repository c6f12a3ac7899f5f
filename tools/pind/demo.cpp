// `pind demo`: each subsystem shows what it does on the sample data, in a scratch folder.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
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
    {"time", DemoTime},
    {"servertext", DemoServerText},
    {"profile", DemoProfile},
    {"curves", DemoCurves},
    {"format", DemoFormat},
    {"xml", DemoXml},
};

const char kDemoUsage[] =
    "usage: pind demo [--data DIR] [--keep]\n"
    "  runs every part of the library on the sample data in DIR (default: the data installed\n"
    "  with pind) in a scratch folder; --keep leaves the scratch folder's files in place.";

int g_demoFailures = 0;

// Where the data installed with the tool is: PIND_DATA_FROM_BIN is its path relative to the
// executable's folder, the same in the build tree and in an installed tree.
std::string InstalledDataDir() {
    char exe[4096];
    if (platform::ModuleFileName(exe, sizeof exe) == 0) {
        return std::string();
    }
    return (std::filesystem::path(exe).parent_path() / PIND_DATA_FROM_BIN)
        .lexically_normal()
        .generic_string();
}

// The sample data is known by one of its files; any other folder would only make every step fail.
bool HoldsSampleData(const std::string& dir) {
    std::error_code ec;
    return std::filesystem::is_regular_file(dir + "/ini/client.ini", ec);
}

}  // namespace

void DemoHeading(const char* title) { std::printf("\n== %s ==\n", title); }

void DemoFail(const std::string& what) {
    ++g_demoFailures;
    Fail("demo", what);
}

int RunDemo(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kDemoUsage);
    }
    DemoContext ctx;
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--data") == 0 && i + 1 < argc) {
            ctx.dataDir = argv[++i];
        } else if (std::strcmp(argv[i], "--keep") == 0) {
            keep = true;
        } else {
            return UsageError("demo", kDemoUsage, std::string(argv[i]) + ": unknown argument");
        }
    }
    if (ctx.dataDir.empty()) {
        ctx.dataDir = InstalledDataDir();
    }
    if (!HoldsSampleData(ctx.dataDir)) {
        return Fail("demo", (ctx.dataDir.empty() ? std::string("?") : ctx.dataDir) +
                                ": no sample data there (use --data DIR)");
    }
    std::error_code ec;
    const std::filesystem::path temp = std::filesystem::temp_directory_path(ec);
    const std::filesystem::path work =
        temp / ("pind-demo-" + std::to_string(platform::CurrentProcessId()));
    if (ec || (std::filesystem::create_directories(work, ec), ec)) {
        return Fail("demo",
                    work.generic_string() + ": cannot make a scratch folder: " + ec.message());
    }
    ctx.workDir = work.generic_string();
    std::printf("PindBase demo: sample data in %s, scratch files in %s\n", ctx.dataDir.c_str(),
                ctx.workDir.c_str());
    for (const DemoStep& step : kSteps) {
        step.run(ctx);
    }
    if (keep) {
        std::printf("\ndemo finished; its files are in %s\n", ctx.workDir.c_str());
    } else {
        std::filesystem::remove_all(ctx.workDir, ec);
        std::printf("\ndemo finished\n");
    }
    if (!FlushOut()) {
        return kExitFailure;
    }
    return g_demoFailures == 0 ? kExitOk
                               : Fail("demo", std::to_string(g_demoFailures) + " step(s) failed");
}

}  // namespace pind::tool
