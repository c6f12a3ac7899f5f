// Reading JSON files for the pind commands that take one (json, text and the server-text demo).
#ifndef PIND_TOOLS_PIND_JSONFILE_H_
#define PIND_TOOLS_PIND_JSONFILE_H_

#include <string>

#include "pind/json/FmtJson.h"

namespace pind::tool {

/// The file's bytes in `*bytes`; false with the reason in `*why` when it cannot be read.
bool ReadWholeFile(const char* path, std::string* bytes, std::string* why);

/// The file's JSON tree (free it with JsonFree); null with the reason in `*why` ("cannot open:
/// ...", or "not valid JSON: what at byte N (line L, column C)").
JsonNode* ParseJsonFile(const char* path, std::string* why);

}  // namespace pind::tool

#endif  // PIND_TOOLS_PIND_JSONFILE_H_
