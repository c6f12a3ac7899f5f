// Picks the client cipher's inner loop, so that tests can check each loop against the byte loop and
// benchmarks can time them side by side. Exported but not installed: only this tree's tests and
// benchmarks include it (from src/).
//   pind::detail::SetCryptorSimdLevel(0); ... pind::detail::SetCryptorSimdLevel(-1);
#ifndef PIND_SRC_CRYPTO_CRYPTORSIMD_H_
#define PIND_SRC_CRYPTO_CRYPTORSIMD_H_

#include "pind/platform/Export.h"

namespace pind::detail {

/// The cipher's inner loop: 0 the byte loop, 1 SSE2 (16 bytes a step), 2 AVX2 (32 bytes). Asks for
/// `level` and returns the level now in use, the highest the processor and build allow at or
/// below it; a negative level restores the automatic choice.
PIND_API int SetCryptorSimdLevel(int level);

}  // namespace pind::detail

#endif  // PIND_SRC_CRYPTO_CRYPTORSIMD_H_
