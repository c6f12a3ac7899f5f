#include "pind/platform/Terminal.h"

#include <io.h>

#include "pind/platform/WinTypes.h"
#include "pind/strings/Convert.h"

namespace pind::platform {

bool IsTerminal(std::FILE* stream) { return stream != nullptr && _isatty(_fileno(stream)) != 0; }

bool EnableTerminalColor(std::FILE* stream) {
    HANDLE console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    if (console == INVALID_HANDLE_VALUE || !::GetConsoleMode(console, &mode)) {
        return false;
    }
    return ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

size_t GbkToUtf8(const char* pText, size_t nLen, std::string* pOut) {
    // One character at a time (one byte below 0x80, else a lead and a trail byte), so that the
    // conversion stops exactly at the first byte code page 936 rejects.
    size_t i = 0;
    while (i < nLen) {
        const unsigned char lead = static_cast<unsigned char>(pText[i]);
        const int width = lead < 0x80 ? 1 : 2;
        if (i + width > nLen) {
            break;
        }
        wchar_t wide[2];
        const int n = ::MultiByteToWideChar(936, MB_ERR_INVALID_CHARS, pText + i, width, wide, 2);
        if (n != 1 || (width == 2 && wide[0] < 0x80)) {
            break;
        }
        pOut->append(WideToUtf8(static_cast<char16_t>(wide[0])));
        i += static_cast<size_t>(width);
    }
    return i;
}

}  // namespace pind::platform
