// JsonParse over arbitrary bytes: no crash, no deep recursion; an accepted text prints, compact and
// pretty, to text that parses back to the same tree and prints the same again.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "pind/json/FmtJson.h"

namespace {

bool SameTree(const JsonNode* a, const JsonNode* b) {
    std::vector<std::pair<const JsonNode*, const JsonNode*>> todo{{a, b}};
    bool root = true;
    while (!todo.empty()) {
        const auto [x, y] = todo.back();
        todo.pop_back();
        if (x == nullptr || y == nullptr) {
            if (x != y) return false;
            continue;
        }
        const auto same = [](const char* s, const char* t) {
            return std::strcmp(s != nullptr ? s : "", t != nullptr ? t : "") == 0;
        };
        if (x->nType != y->nType || !same(x->pszName, y->pszName) ||
            !same(x->pszValue, y->pszValue) || x->nValue != y->nValue || x->llValue != y->llValue ||
            std::memcmp(&x->fValue, &y->fValue, sizeof(float)) != 0) {
            return false;
        }
        todo.push_back({x->pChild, y->pChild});
        if (!root) todo.push_back({x->pNext, y->pNext});
        root = false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    JsonNode* root = JsonParse(text, size, nullptr);
    // The zero-terminated form sees the bytes up to the first zero: it accepts what the counted
    // form accepts when there is none.
    const std::string upToZero(text, size);
    JsonNode* again = JsonParse(upToZero.c_str());
    if (std::strlen(upToZero.c_str()) == size && (root == nullptr) != (again == nullptr)) {
        std::abort();
    }
    JsonFree(again);
    if (root == nullptr) {
        return 0;
    }
    for (bool pretty : {false, true}) {
        const std::string printed = JsonPrint(root, pretty);
        JsonNode* reparsed = JsonParse(printed.c_str());
        if (reparsed == nullptr || !SameTree(root, reparsed) ||
            JsonPrint(reparsed, pretty) != printed) {
            std::abort();
        }
        JsonFree(reparsed);
    }
    JsonArraySize(root);
    JsonObjectMember(root, "a");
    JsonGetInt(JsonArrayItem(root, 1), 0);
    JsonFree(root);
    return 0;
}
