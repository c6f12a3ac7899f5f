// The pind tool's subcommands and demo steps. Each family lives in its own file and is listed once
// in main.cpp (commands) or demo.cpp (demo steps).
#ifndef PIND_TOOLS_PIND_COMMANDS_H_
#define PIND_TOOLS_PIND_COMMANDS_H_

#include <string>

namespace pind::tool {

/// What every demo step gets: where the sample data is and a scratch folder of its own to write in.
struct DemoContext {
    std::string dataDir;
    std::string workDir;
};

/// Prints a demo section heading.
void DemoHeading(const char* title);
/// Reports a demo step that could not do its work ("pind: demo: WHAT" on stderr); the demo then
/// exits 1 after the other steps have run.
void DemoFail(const std::string& what);

// Demo steps, in the order the demo runs them.
void DemoClient(const DemoContext& ctx);
void DemoCrypt(const DemoContext& ctx);
void DemoLogging(const DemoContext& ctx);
void DemoFiles(const DemoContext& ctx);
void DemoIni(const DemoContext& ctx);
void DemoTime(const DemoContext& ctx);
void DemoServerText(const DemoContext& ctx);
void DemoProfile(const DemoContext& ctx);
void DemoCurves(const DemoContext& ctx);
void DemoFormat(const DemoContext& ctx);
void DemoXml(const DemoContext& ctx);

// Subcommands: argv[0] is the subcommand's name; return the process exit status.
int RunDemo(int argc, char** argv);
int RunCrypt(int argc, char** argv);
int RunLog(int argc, char** argv);
int RunZip(int argc, char** argv);
int RunPack(int argc, char** argv);
int RunIni(int argc, char** argv);
int RunTime(int argc, char** argv);
int RunJson(int argc, char** argv);
int RunText(int argc, char** argv);
int RunProfile(int argc, char** argv);
int RunCurve(int argc, char** argv);
int RunPrintf(int argc, char** argv);
int RunXml(int argc, char** argv);

}  // namespace pind::tool

#endif  // PIND_TOOLS_PIND_COMMANDS_H_
