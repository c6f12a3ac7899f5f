# Cross-compiles PindBase.dll and its programs for 64-bit Windows with Debian's mingw-w64, posix
# thread model (the win32 model has no std::thread or std::mutex in GCC 12). ctest runs the
# results under Wine. scripts/windows-test.sh is the usual way in:
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
#         -DPIND_DEPS_PREFIX=<prefix holding minizip, TinyXML and GoogleTest for mingw>
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(PIND_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${PIND_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PIND_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${PIND_MINGW_TRIPLE}-windres)

# Libraries and headers come only from the mingw sysroot (and the dependency prefix, which
# PindDependencies adds); programs such as pkg-config still come from the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${PIND_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian ships the 64-bit loader as /usr/lib/wine/wine64; /usr/bin/wine is a shell wrapper over it.
find_program(PIND_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(PIND_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PIND_WINE})
else()
    set(CMAKE_CROSSCOMPILING_EMULATOR wine)
endif()
