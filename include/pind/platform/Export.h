// PIND_API marks the library's public entry points: exported from the shared library, imported by
// its clients, and nothing at all in a static build (PIND_STATIC).
//   class PIND_API CPindIni { ... };
#ifndef PIND_PLATFORM_EXPORT_H_
#define PIND_PLATFORM_EXPORT_H_

#if defined(PIND_STATIC)
#define PIND_API
#elif defined(_WIN32) || defined(__CYGWIN__)
#if defined(PIND_BUILDING_LIBRARY)
#define PIND_API __declspec(dllexport)
#else
#define PIND_API __declspec(dllimport)
#endif
#else
#define PIND_API __attribute__((visibility("default")))
#endif

// printf-style checking of the library's own variadic functions, where the compiler offers it.
#if defined(__GNUC__) || defined(__clang__)
#define PIND_PRINTF(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#define PIND_PRINTF(fmtIndex, firstArg)
#endif

#endif  // PIND_PLATFORM_EXPORT_H_
