// Reads a Trace Event file back for tests with the library's strict JSON parser.
//   for (const JsonNode* e : TraceEvents(doc)) if (TraceText(e, "ph") == "X") ...
#ifndef PIND_TESTS_PROFILE_TRACEJSON_H_
#define PIND_TESTS_PROFILE_TRACEJSON_H_

#include <memory>
#include <string>
#include <vector>

#include "pind/json/FmtJson.h"

namespace pind::test {

using JsonDoc = std::unique_ptr<JsonNode, void (*)(JsonNode*)>;

inline JsonDoc ParseJson(const std::string& text) {
    return JsonDoc(JsonParse(text.data(), text.size()), JsonFree);
}

// The members of the top-level "traceEvents" array; empty when there is none.
inline std::vector<const JsonNode*> TraceEvents(const JsonDoc& doc) {
    std::vector<const JsonNode*> events;
    const JsonNode* array = JsonObjectMember(doc.get(), "traceEvents");
    if (array == nullptr || array->nType != JSON_ARRAY) return events;
    for (const JsonNode* e = array->pChild; e != nullptr; e = e->pNext) events.push_back(e);
    return events;
}

inline std::string TraceText(const JsonNode* event, const char* key) {
    return JsonGetString(JsonObjectMember(event, key), "");
}

}  // namespace pind::test

#endif  // PIND_TESTS_PROFILE_TRACEJSON_H_
