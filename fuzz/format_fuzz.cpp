// The checked formatter over arbitrary format strings and arbitrary typed arguments: no crash, no
// read past the argument list, every failure a known code, and text only when nothing failed.
// Input: the format up to the first zero byte, then arguments, each a kind byte and its value.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "pind/format/StringFormat.h"

namespace {

std::vector<int> g_codes;

int Record(int nCode, const char*, const char*, int) {
    g_codes.push_back(nCode);
    return 0;
}

class Reader {
public:
    Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    bool Empty() const { return m_at >= m_size; }
    uint64_t Take(size_t bytes) {
        uint64_t value = 0;
        for (size_t i = 0; i < bytes && m_at < m_size; ++i) {
            value |= static_cast<uint64_t>(m_data[m_at++]) << (8 * i);
        }
        return value;
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

// Widths and precisions are kept small enough that a text cannot need gigabytes.
bool HasLongDigitRun(const std::string& format) {
    size_t run = 0;
    for (char c : format) {
        run = (c >= '0' && c <= '9') ? run + 1 : 0;
        if (run > 4) {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* begin = reinterpret_cast<const char*>(data);
    const void* zero = size != 0 ? std::memchr(begin, '\0', size) : nullptr;
    const size_t formatLength =
        zero != nullptr ? static_cast<size_t>(static_cast<const char*>(zero) - begin) : size;
    const std::string format(begin != nullptr ? begin : "", formatLength);
    if (HasLongDigitRun(format)) {
        return 0;
    }
    const bool hasStar = format.find('*') != std::string::npos;
    static const char* const kTexts[] = {"", "a", "hello world", "\xd6\xd0\xce\xc4"};
    int32_t targets[8] = {};
    size_t nextTarget = 0;

    g_codes.clear();
    const FormatErrorHandler previous = g_pfnFormatErrorHandler;
    g_pfnFormatErrorHandler = Record;
    {
        CStringFormatter f(format.c_str(), "format_fuzz", 1);
        const size_t rest = zero != nullptr ? formatLength + 1 : size;
        Reader in(data + rest, size - rest);
        while (!in.Empty()) {
            const uint64_t kind = in.Take(1) % 17;
            const uint64_t raw = in.Take(kind < 6 ? 4 : 8);
            // A '*' value becomes a width; keep it in the 16-bit range.
            const int32_t small = hasStar ? static_cast<int16_t>(raw) : static_cast<int32_t>(raw);
            double real;
            std::memcpy(&real, &raw, sizeof real);
            switch (kind) {
                case 0:
                    f.AddArg(small);
                    break;
                case 1:
                    f.AddArg(static_cast<uint32_t>(small));
                    break;
                case 2:
                    f.AddArg(static_cast<int16_t>(raw));
                    break;
                case 3:
                    f.AddArg(static_cast<uint16_t>(raw));
                    break;
                case 4:
                    f.AddArg(static_cast<signed char>(raw));
                    break;
                case 5:
                    f.AddArg(static_cast<unsigned char>(raw));
                    break;
                case 6:
                    f.AddArg(static_cast<long long>(raw));
                    break;
                case 7:
                    f.AddArg(static_cast<unsigned long long>(raw));
                    break;
                case 8:
                    f.AddArg(static_cast<float>(real));
                    break;
                case 9:
                    f.AddArg(real);
                    break;
                case 10:
                    f.AddArg(static_cast<long double>(real));
                    break;
                case 11:
                    f.AddArg(reinterpret_cast<const void*>(static_cast<uintptr_t>(raw)));
                    break;
                case 12:
                    f.AddArg(kTexts[raw % 4]);
                    break;
                case 13:
                    f.AddArg(reinterpret_cast<const char*>(uintptr_t{16}));
                    break;  // unreadable
                case 14:
                    f.AddArg(static_cast<const char*>(nullptr));
                    break;
                case 15:
                    f.AddArg(&targets[nextTarget++ % 8]);
                    break;
                default:
                    f.AddArg(nullptr);
                    break;
            }
        }
        CStringFormatter copy(f);
        const std::string text = f.GetResult();
        bool failed = false;
        for (int code : g_codes) {
            if (code != 1000 && code != 2000 && code != 2001 && code != 2002 && code != 2003 &&
                code != 3000) {
                std::abort();
            }
            failed = failed || code >= 2000;
        }
        if ((failed && !text.empty()) || copy.GetResult() != text) {
            std::abort();
        }
        for (int i = 0; i < f.GetFormatCount(); ++i) {
            if (f.GetFormatType(i) == nullptr) {
                std::abort();
            }
        }
    }
    g_pfnFormatErrorHandler = previous;
    return 0;
}
