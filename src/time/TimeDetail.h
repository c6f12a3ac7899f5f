// Arithmetic the time object's checks share: wrapping sums, broken-down records from packed
// decimal forms, and the local-to-server zone correction.
#ifndef PIND_SRC_TIME_TIMEDETAIL_H_
#define PIND_SRC_TIME_TIMEDETAIL_H_

#include <cstdint>
#include <ctime>

namespace pind::detail {

/// a + b modulo 2^64: extreme inputs wrap instead of overflowing.
inline int64_t AddWrap(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

/// a - b modulo 2^64.
inline int64_t SubWrap(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

/// The low 32 bits of a value as a signed number.
inline int32_t Low32(int64_t v) { return static_cast<int32_t>(static_cast<uint32_t>(v)); }

/// A record for these wall-clock fields (month 1-12), daylight flag 0; fields that do not fit the
/// record's ints keep their low 32 bits.
std::tm TmFromFields(int64_t year, int64_t month, int64_t day, int64_t hour, int64_t minute,
                     int64_t second);
/// YYMMDDhhmm, year 2000 + YY, at the given second.
std::tm TmFromYYMMDDhhmm(uint32_t packed, int32_t second);
/// YYYYMMDDhhmm at second 0; a year of 1-999 gets 2000 added.
std::tm TmFromYYYYMMDDhhmm(int64_t packed);

/// `_mktime64` of the record (normalised in place), moved from the machine's zone to the server's:
/// the instant at which the server's wall clock shows those fields.
int64_t ToServerInstant(std::tm* tm, int32_t zoneOffset);

/// gmtime into one static record shared by every such result, as the runtime's own; null when the
/// runtime cannot break t down.
std::tm* GmRecord(int64_t t);

}  // namespace pind::detail

#endif  // PIND_SRC_TIME_TIMEDETAIL_H_
