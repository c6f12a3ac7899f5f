// What a program that prints text for people needs from the system: whether a stream is a
// terminal (to colour it), and the game's GBK text as UTF-8 (to show it on a UTF-8 terminal).
//   std::string utf8; size_t used = pind::platform::GbkToUtf8(text, len, &utf8);
#ifndef PIND_PLATFORM_TERMINAL_H_
#define PIND_PLATFORM_TERMINAL_H_

#include <cstddef>
#include <cstdio>
#include <string>

#include "pind/platform/Export.h"

namespace pind::platform {

/// True when `stream` writes to a terminal (a console on Windows); false for files, pipes and null.
PIND_API bool IsTerminal(std::FILE* stream);

/// Asks the terminal behind `stream` to obey colour escapes (Windows consoles need this); true
/// when they will be obeyed. Call only when IsTerminal(stream).
PIND_API bool EnableTerminalColor(std::FILE* stream);

/// Appends to `*pOut` the UTF-8 of the longest GBK-valid start of the `nLen` bytes at `pText`, and
/// returns how many bytes that start holds: `nLen` when all of it is GBK, less at the first byte
/// that does not begin a valid character (or begins one the text cuts off).
PIND_API size_t GbkToUtf8(const char* pText, size_t nLen, std::string* pOut);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_TERMINAL_H_
