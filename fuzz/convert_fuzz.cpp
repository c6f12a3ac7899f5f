// The checked parsers, text-kind checks and masks over arbitrary bytes: no crash, and the string
// object and zero-terminated forms agree wherever the text holds no zero byte.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "pind/strings/Convert.h"
#include "pind/strings/SafeString.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = bytes.c_str();  // up to the first zero byte

    const int32_t asInt = StrToInt(bytes);
    const uint32_t asUInt = StrToUInt(bytes);
    const uint64_t asUInt64 = StrToUInt64(bytes);
    const uint64_t szUInt64 = SzToUInt64(text.c_str());
    const int32_t szInt = SzToInt(text.c_str());
    const double szDouble = SzToDouble(text.c_str());
    if (text.size() == bytes.size() && asUInt64 != szUInt64) {
        std::abort();
    }
    // A text that fails the check gives 0 in every integer form.
    if (text.size() == bytes.size() && asUInt64 == 0 && (asInt != 0 || asUInt != 0)) {
        std::abort();
    }
    (void)szInt;
    (void)szDouble;

    HasUtf8ThreeByte(text.c_str());
    HasGb2312Char(text.c_str());
    GetFileExt(bytes);

    std::string masked = text;
    if (MaskRunning(masked.data(), static_cast<uint32_t>(size)) &&
        std::strlen(masked.c_str()) == text.size()) {
        MaskRunning(masked.data(), size);
        if (masked != text) {
            std::abort();
        }
    }
    std::string keyed = bytes;
    if (MaskWithKey(keyed.data(), static_cast<int32_t>(keyed.size()), "key")) {
        MaskWithKey(keyed.data(), static_cast<int32_t>(keyed.size()), "key");
        if (keyed != bytes) {
            std::abort();
        }
    }

    std::vector<char16_t> wide(size / 2 + 1, 0);
    for (size_t i = 0; i + 1 < size; i += 2) {
        wide[i / 2] = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    }
    try {
        WideToUtf8(wide.data());
    } catch (const std::range_error&) {
    }
    return 0;
}
