#include "pind/platform/Terminal.h"

#include <iconv.h>
#include <unistd.h>

#include <cerrno>

namespace pind::platform {

bool IsTerminal(std::FILE* stream) { return stream != nullptr && isatty(fileno(stream)) == 1; }

bool EnableTerminalColor(std::FILE* stream) { return IsTerminal(stream); }

size_t GbkToUtf8(const char* pText, size_t nLen, std::string* pOut) {
    if (nLen == 0) {
        return 0;
    }
    iconv_t cd = iconv_open("UTF-8", "GBK");
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        return 0;
    }
    char* in = const_cast<char*>(pText);  // iconv's signature; the input is not written
    size_t inLeft = nLen;
    char buf[1024];
    while (inLeft > 0) {
        char* out = buf;
        size_t outLeft = sizeof buf;
        const size_t r = iconv(cd, &in, &inLeft, &out, &outLeft);
        pOut->append(buf, static_cast<size_t>(out - buf));
        // E2BIG only asks for another round; EILSEQ and EINVAL stop at the offending byte.
        if (r == static_cast<size_t>(-1) && errno != E2BIG) {
            break;
        }
    }
    iconv_close(cd);
    return nLen - inLeft;
}

}  // namespace pind::platform
