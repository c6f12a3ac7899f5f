// The engine's log sink (`LogMsg` of the graphic library). Library code calls PindLogMsg; the text
// goes to the installed sink, or by default to stderr (POSIX) or the engine's LogMsg (Windows).
//   pind::platform::SetEngineLogSink([](const char* text) { myLog(text); });
#ifndef PIND_PLATFORM_ENGINELOG_H_
#define PIND_PLATFORM_ENGINELOG_H_

#include "pind/platform/Export.h"

namespace pind::platform {

/// Receives one formatted engine-log line, without a trailing newline. Never null.
using EngineLogSink = void (*)(const char* text);

/// Installs `sink` (null restores the default) and returns the sink that was installed before
/// (null when it was the default).
PIND_API EngineLogSink SetEngineLogSink(EngineLogSink sink);

/// Formats like printf and passes the whole text to the current sink. A null format does nothing.
PIND_API void PindLogMsg(const char* format, ...) PIND_PRINTF(1, 2);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_ENGINELOG_H_
