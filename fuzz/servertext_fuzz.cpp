// Server strings over arbitrary bytes, with a string table whose texts carry stray braces, bad
// fields and references of their own: no crash, no runaway recursion, the buffer stays in bounds.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "pind/json/FmtJson.h"
#include "pind/platform/EngineLog.h"
#include "pind/servertext/ServerString.h"

namespace {

const char* LookUp(uint32_t id) {
    static const char* const kTexts[] = {
        "",     "{",   "}",          "{}{}",   "{0} {1}",  "{:d}",      "{:.2f} {}",
        "{{}}", "}{",  "{0",         "{:>{}}", "@@5",      "[\"@@1\"]", "{} [\"@@2\",1]",
        "{:s}", "{9}", "plain text", "{:%Y}",  "{:x}{:c}",
    };
    return kTexts[id % (sizeof kTexts / sizeof kTexts[0])];
}

void Quiet(const char*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool s_setUp = [] {
        SetStringIdCallback(LookUp);
        pind::platform::SetEngineLogSink(Quiet);
        return true;
    }();
    (void)s_setUp;
    const std::string bytes(reinterpret_cast<const char*>(data), size);

    std::string out;
    ConvertServerString(bytes, out);
    FormatServerStringToText(bytes.c_str());

    // A buffer of a size picked by the first byte, with a guard after it that must stay intact.
    const size_t capacity = size == 0 ? 1 : 1 + data[0] % 64 + (data[0] & 0x80 ? size : 0);
    std::unique_ptr<char[]> buffer(new char[capacity + 8]);
    std::memset(buffer.get() + capacity, 0x5A, 8);
    std::memcpy(buffer.get(), bytes.data(), std::min(capacity, size));
    if (size < capacity) {
        buffer[size] = '\0';
    }
    FormatServerString(buffer.get(), static_cast<int32_t>(capacity));
    for (size_t i = 0; i < 8; ++i) {
        if (buffer[capacity + i] != 0x5A) {
            std::abort();
        }
    }

    JsonNode* root = JsonParse(bytes.data(), bytes.size());
    FormatJsonServerString(root);
    JsonFree(root);
    return 0;
}
