// Turns server strings into display text: "@@ID" references to the client's string table, JSON
// arrays ["@@ID", args...] whose table text has {fmt} placeholders, and such arrays inside text.
//   SetStringIdCallback(LookUp);                       // the client's string table
//   FormatServerStringToText("[\"@@1203\", 5]");     // LookUp(1203) with {} filled by 5
#ifndef PIND_SERVERTEXT_SERVERSTRING_H_
#define PIND_SERVERTEXT_SERVERSTRING_H_

#include <cstdint>
#include <string>

#include "pind/platform/Export.h"

struct JsonNode;

/// The client's string table: the text of a string ID, zero-terminated.
using StringIdCallback = const char* (*)(uint32_t nStrId);

/// Installs the string-table lookup, replacing any earlier one (null removes it; lookups then
/// give empty texts, as does a lookup that returns null).
PIND_API void SetStringIdCallback(StringIdCallback pfnLookup);

/// The table text of the ID written in decimal in `strId` (read like the C++ runtime's stoul with
/// a 32-bit unsigned long); on a text that is not a number or out of range, an empty `strOut` and
/// "TryGetStringFromStrID %s\n" in the engine log.
PIND_API void TryGetStringFromStrID(std::string& strOut, const std::string& strId);

/// Converts the zero-terminated server string in `pszStrBuf` in place. Text without '@' is left
/// alone. A result shorter than `nCapacity` replaces the text (the whole buffer zeroed first);
/// a longer one leaves the buffer as it was and logs "FormatServerString: [Buf Too Short!],
/// pszStrBuf=%s". Reads stop at `nCapacity` bytes; a null buffer or capacity <= 0 does nothing.
PIND_API void FormatServerString(char* pszStrBuf, int32_t nCapacity);

/// The display text of a server string; empty for null. A failure logs "FormatServerString %s\n".
PIND_API std::string FormatServerStringToText(const char* pszServerStr);

/// The conversion behind both: a bare "@@ID" reference (and what follows it), a whole JSON array,
/// arrays embedded in text, or the text unchanged. Throws only std::bad_alloc.
PIND_API void ConvertServerString(const std::string& strSource, std::string& strOut);

/// Formats one parsed array: ["@@ID", args...] fills the table text's {} fields (empty on a
/// formatting error or when fields exist but no arguments); otherwise the elements' texts are
/// joined, with a space when the first element is a "@@#" marker. Empty for a non-array or null.
PIND_API std::string FormatJsonServerString(const JsonNode* pNode);

#endif  // PIND_SERVERTEXT_SERVERSTRING_H_
