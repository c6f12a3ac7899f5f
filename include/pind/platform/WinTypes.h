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
typedef HWND__* HWND;        // window handle
typedef void* HANDLE;        // kernel object handle (heap handles among them)
typedef uintptr_t WPARAM;    // UINT_PTR
typedef intptr_t LPARAM;     // LONG_PTR
typedef intptr_t LRESULT;    // LONG_PTR
typedef uint32_t UINT;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef int BOOL;
typedef struct tagPOINT {
    LONG x;
    LONG y;
} POINT;

#ifndef WM_USER
#define WM_USER 0x0400
#endif
#endif

#endif  // PIND_PLATFORM_WINTYPES_H_
