// JSON values: a strict parser (text -> JsonNode tree), a printer and small accessors. A parsed
// tree lives in one arena owned by its root: free it with JsonFree, never node by node.
//   JsonNode* root = JsonParse("[\"@@1203\", 5]");
//   int32_t n = JsonGetInt(JsonArrayItem(root, 1), 0);  // 5
//   JsonFree(root);
#ifndef PIND_JSON_FMTJSON_H_
#define PIND_JSON_FMTJSON_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "pind/platform/Export.h"

/// Node types, as the client numbers them.
enum JsonType : int32_t {
    JSON_FALSE = 0,
    JSON_TRUE = 1,
    JSON_NULL = 2,
    JSON_REAL = 3,  ///< a number with a fraction or exponent, or an integer beyond 64 bits
    JSON_STRING = 4,
    JSON_ARRAY = 5,
    JSON_OBJECT = 6,
    JSON_INT = 7,    ///< an integer below 2147483648 in magnitude
    JSON_INT64 = 8,  ///< a larger integer that fits a signed 64-bit value
};

/// One value of a tree. The fields are in the order the client's data model gives; the client
/// relies on the layout. Children of an array or object are a list: pChild, then pNext.
struct JsonNode {
    JsonNode* pNext;       ///< next sibling in the parent's list, or null
    JsonNode* pChild;      ///< first element or member of an array or object, or null
    int32_t nType;         ///< a JsonType
    const char* pszValue;  ///< JSON_STRING: the unescaped text, zero-terminated (in the arena)
    int32_t nValue;        ///< JSON_INT: the value
    int64_t llValue;       ///< JSON_INT and JSON_INT64: the value
    float fValue;          ///< every number: the value as the nearest float (infinite if too big)
    const char* pszName;   ///< object member: its unescaped name (in the arena); else null
};

/// Parses exactly one JSON value (RFC 8259) surrounded by optional whitespace; the tree, or null
/// on any error (trailing commas, leading zeros, comments, control characters in strings, invalid
/// escapes, unpaired surrogates, nesting deeper than 512, anything after the value). Bytes
/// 0x80-0xFF in strings are kept as they are; `\u` escapes become UTF-8. A `\u0000` escape ends the
/// stored text, since texts are zero-terminated. A null text gives null.
PIND_API JsonNode* JsonParse(const char* pszText);

/// Where and why a parse failed: the byte offset of the fault and a short lower-case reason.
struct JsonParseError {
    size_t nOffset = 0;        ///< the byte offset of the fault
    const char* pszWhat = "";  ///< the reason, a static text
};

/// JsonParse over `nLen` bytes that may contain zero bytes (which are never valid JSON); on
/// failure null, with the reason in `*pError` when it is given.
PIND_API JsonNode* JsonParse(const char* pText, size_t nLen, JsonParseError* pError = nullptr);

/// Frees a tree returned by JsonParse (the root only, never a node inside it); null does nothing.
/// Takes constant time in the depth: no recursion.
PIND_API void JsonFree(JsonNode* pRoot);

/// The JSON text of `pNode` and its children (not its siblings): compact, or indented by four
/// spaces per level when `bPretty`. Reals are the shortest text that reads back to the same float
/// (infinities as 1e999 and -1e999, a NaN as null), so JsonParse of the result gives the same
/// tree. A null node gives "null".
PIND_API std::string JsonPrint(const JsonNode* pNode, bool bPretty);

/// The number of elements or members of an array or object; 0 for anything else or null.
PIND_API int32_t JsonArraySize(const JsonNode* pNode);

/// The element or member at `nIndex` (from 0) of an array or object; null when out of range.
PIND_API JsonNode* JsonArrayItem(const JsonNode* pNode, int32_t nIndex);

/// The first member of an object named `pszName` (compared byte for byte); null when there is
/// none, or when the node is not an object.
PIND_API JsonNode* JsonObjectMember(const JsonNode* pNode, const char* pszName);

/// A number as int32: integers beyond the range and reals saturate, reals truncate toward zero,
/// true/false give 1/0; `nDefault` for other types, NaN or null.
PIND_API int32_t JsonGetInt(const JsonNode* pNode, int32_t nDefault);

/// A number as int64, with the same rules as JsonGetInt.
PIND_API int64_t JsonGetInt64(const JsonNode* pNode, int64_t llDefault);

/// A number as float; `fDefault` for other types or null.
PIND_API float JsonGetFloat(const JsonNode* pNode, float fDefault);

/// A string's text; `pszDefault` for other types or null.
PIND_API const char* JsonGetString(const JsonNode* pNode, const char* pszDefault);

/// true or false; `bDefault` for other types or null.
PIND_API bool JsonGetBool(const JsonNode* pNode, bool bDefault);

#endif  // PIND_JSON_FMTJSON_H_
