// The zip CRC-32 of a byte run, as zlib's crc32 gives it, faster where the processor can multiply
// without carries: a whole entry's check then costs little next to inflating it.
//   uint32_t crc = pind::detail::Crc32(0, bytes.data(), bytes.size());
#ifndef PIND_SRC_FILES_CRC32_H_
#define PIND_SRC_FILES_CRC32_H_

#include <cstddef>
#include <cstdint>

namespace pind::detail {

/// zlib's crc32(crc, data, size): the CRC-32 of `size` bytes continued from `crc` (0 to start).
uint32_t Crc32(uint32_t crc, const uint8_t* pData, size_t nSize);

}  // namespace pind::detail

#endif  // PIND_SRC_FILES_CRC32_H_
