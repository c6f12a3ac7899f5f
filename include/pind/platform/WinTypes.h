// The few Windows types that appear in public signatures. On Windows they are the real ones from
// <windows.h>; elsewhere they are stand-ins of the same size and signedness.
//   HWND hWnd = nullptr; POINT pt{10, 20};
#ifndef PIND_PLATFORM_WINTYPES_H_
#define PIND_PLATFORM_WINTYPES_H_

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <cstdint>

struct HWND__;
typedef HWND__* HWND;        ///< window handle
typedef void* HANDLE;        ///< kernel object handle (heap handles among them)
typedef uintptr_t WPARAM;    ///< UINT_PTR
typedef intptr_t LPARAM;     ///< LONG_PTR
typedef intptr_t LRESULT;    ///< LONG_PTR
typedef uint32_t UINT;       ///< 32-bit unsigned
typedef uint32_t DWORD;      ///< 32-bit unsigned
typedef int32_t LONG;        ///< 32-bit signed, as on Windows
typedef int BOOL;            ///< non-zero is true
/// A point in client or screen coordinates.
typedef struct tagPOINT {
    LONG x;  ///< from the left
    LONG y;  ///< from the top
} POINT;

#ifndef WM_USER
#define WM_USER 0x0400  ///< the first message number free for applications
#endif
#endif

#endif  // PIND_PLATFORM_WINTYPES_H_
