// Conventions every pind command follows: `--help` prints the usage on stdout (exit 0); a usage
// error prints "usage: ..." on stderr (exit 2); a failure prints "pind: CMD: what" on stderr
// (exit 1); output to stdout is checked, so a full disk is a failure, not a success.
//   if (WantsHelp(argc, argv)) return PrintUsage(kTimeUsage);
#ifndef PIND_TOOLS_PIND_TOOLSUPPORT_H_
#define PIND_TOOLS_PIND_TOOLSUPPORT_H_

#include <cstddef>
#include <string>

#include "pind/client/PackFileClient.h"
#include "pind/platform/Package.h"

namespace pind::tool {

/// Exit statuses of every command.
enum ExitStatus : int { kExitOk = 0, kExitFailure = 1, kExitUsage = 2 };

/// True when the first argument after the command's name is --help or -h.
bool WantsHelp(int argc, char** argv);

/// Prints `usage` (the command's whole usage text, starting "usage: ") and a newline on stdout;
/// returns kExitOk, or kExitFailure when stdout cannot be written.
int PrintUsage(const char* usage);

/// Prints "pind: CMD: WHY" (when `why` is not empty) and then `usage` on stderr; returns
/// kExitUsage.
int UsageError(const char* command, const char* usage, const std::string& why = std::string());

/// Prints "pind: CMD: WHAT" and a newline on stderr; returns kExitFailure.
int Fail(const char* command, const std::string& what);

/// Writes bytes to stdout; false (and a message on stderr, once) when they cannot all be written.
bool WriteOut(const void* data, std::size_t size);
/// WriteOut of a whole string.
bool WriteOut(const std::string& text);
/// Flushes stdout and reports whether every earlier write reached it.
bool FlushOut();

/// Installs a CPackFileClient, and `package` when not null (package-first mode), for one scope.
class HostScope {
public:
    explicit HostScope(platform::IPindPackage* package = nullptr);
    ~HostScope();
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;
    CPackFileClient& Host() { return m_host; }

private:
    CPackFileClient m_host;
    platform::IPindPackage* m_previous;
};

/// A path in the same folder as `target` for a new version of it, so that a rename replaces the
/// target in one step; unique to this process.
std::string TempPathBeside(const std::string& target);

/// Renames `temp` over `target`. On failure removes `temp`, sets `why` and returns false.
bool ReplaceWith(const std::string& temp, const std::string& target, std::string* why);

/// Why `path` cannot hold a regular file to read: "" when it can be opened, else "no such file",
/// "is a folder", or the system's reason.
std::string UnreadableFileReason(const std::string& path);

}  // namespace pind::tool

#endif  // PIND_TOOLS_PIND_TOOLSUPPORT_H_
