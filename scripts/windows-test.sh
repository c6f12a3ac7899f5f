#!/usr/bin/env bash
# Builds PindBase.dll, its tests and pind.exe for 64-bit Windows with Debian's mingw-w64 and runs
# the tests under Wine. Installs what it needs from Debian; builds minizip (from zlib's source
# package), TinyXML and GoogleTest for mingw once into a cached prefix. Safe to run again: with
# everything built it only rebuilds what changed and reruns the tests.
#   scripts/windows-test.sh                 # everything
#   scripts/windows-test.sh -R Platform     # extra arguments go to ctest
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=${PIND_WIN_BUILD:-$root/build-win}
deps=${PIND_WIN_DEPS:-$root/build-win-deps}
prefix=$deps/prefix
toolchain=$root/cmake/mingw-w64-x86_64.cmake
jobs=$(nproc 2>/dev/null || echo 2)
triple=x86_64-w64-mingw32

# --- packages -------------------------------------------------------------------------------------
packages=(
    cmake ninja-build libfmt-dev dpkg-dev
    g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine wine64 googletest
)
missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
if [ ${#missing[@]} -gt 0 ]; then
    echo "windows-test: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# --- dependencies for mingw, cached by a stamp ----------------------------------------------------
# The stamp names the recipe and the compiler; change either and the prefix is rebuilt.
recipe="deps-1 $($triple-g++-posix -dumpfullversion) $(dpkg-query -W -f='${Version}' googletest)"
if [ "$(cat "$deps/stamp" 2>/dev/null)" != "$recipe" ]; then
    echo "windows-test: building minizip, TinyXML and GoogleTest for $triple"
    rm -rf "$deps"
    mkdir -p "$deps"
    tmp=$(mktemp -d)
    trap 'rm -rf "$tmp"' EXIT

    # Debian's source packages through a private deb-src list: nothing under /etc changes.
    . /etc/os-release
    mirror=http://deb.debian.org/debian
    system_list=/etc/apt/sources.list.d/debian.sources
    if [ -f "$system_list" ]; then
        uri=$(awk '/^URIs:/ && $2 ~ /debian\/?$/ { print $2; exit }' "$system_list")
        mirror=${uri:-$mirror}
    fi
    keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    echo "deb-src [signed-by=$keyring] $mirror ${VERSION_CODENAME:-bookworm} main" \
        >"$tmp/sources.list"
    mkdir -p "$tmp/lists/partial" "$tmp/cache/archives/partial" "$tmp/src"
    apt_private=(-o Dir::Etc::SourceList="$tmp/sources.list" -o Dir::Etc::SourceParts=/dev/null
                 -o Dir::State::Lists="$tmp/lists" -o Dir::Cache="$tmp/cache"
                 -o APT::Sandbox::User=root)
    apt-get "${apt_private[@]}" update -qq
    (cd "$tmp/src" && apt-get "${apt_private[@]}" source -qq zlib tinyxml >/dev/null 2>&1)
    zlibsrc=$(echo "$tmp"/src/zlib-*/)
    tinysrc=$(echo "$tmp"/src/tinyxml-*/)

    mkdir -p "$prefix/include/minizip" "$prefix/lib" "$tmp/obj/minizip" "$tmp/obj/tinyxml"
    # minizip as Debian builds it (ioapi, mztools, unzip, zip), plus the Win32 file functions.
    for c in ioapi mztools unzip zip iowin32; do
        $triple-gcc-posix -O2 -c "$zlibsrc/contrib/minizip/$c.c" -o "$tmp/obj/minizip/$c.o" &
    done
    # TinyXML as Debian builds it: with its std::string interface, without tinystr.
    for c in tinyxml tinyxmlparser tinyxmlerror; do
        $triple-g++-posix -O2 -DTIXML_USE_STL -c "$tinysrc/$c.cpp" -o "$tmp/obj/tinyxml/$c.o" &
    done
    wait
    $triple-ar rcs "$prefix/lib/libminizip.a" "$tmp"/obj/minizip/*.o
    $triple-ar rcs "$prefix/lib/libtinyxml.a" "$tmp"/obj/tinyxml/*.o
    for h in ioapi.h iowin32.h mztools.h unzip.h zip.h crypt.h; do
        cp "$zlibsrc/contrib/minizip/$h" "$prefix/include/minizip/"
    done
    cp "$tinysrc/tinyxml.h" "$prefix/include/"

    # GoogleTest from the googletest package's sources; Win32 threads, as its clients assume.
    cmake -S /usr/src/googletest -B "$tmp/gtest" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
          -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
          -Dgtest_disable_pthreads=ON -DBUILD_GMOCK=ON >/dev/null
    cmake --build "$tmp/gtest" -j"$jobs" >/dev/null
    cmake --install "$tmp/gtest" >/dev/null

    echo "$recipe" >"$deps/stamp"
    rm -rf "$tmp"
    trap - EXIT
fi

# --- build ----------------------------------------------------------------------------------------
cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DPIND_DEPS_PREFIX="$prefix" \
      -DCMAKE_BUILD_TYPE=Debug -DPIND_BUILD_BENCH=OFF -DPIND_BUILD_FUZZ=OFF >/dev/null
cmake --build "$build" -j"$jobs"

# --- run under Wine -------------------------------------------------------------------------------
# A private, headless Wine whose server stays up for the whole run: without it every test program
# waits for Wine's services to start (or hangs looking for a display).
export WINEPREFIX=$build/wine
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe=d"
export WINEARCH=win64
unset DISPLAY WAYLAND_DISPLAY
# Wine's daemons inherit the descriptors they are started with: keep them off our output.
if [ ! -f "$WINEPREFIX/system.reg" ]; then
    wineboot -i >/dev/null 2>&1
    wineserver -w
fi
wineserver -p >/dev/null 2>&1 || true  # already up from an earlier, interrupted run
trap 'wineserver -k >/dev/null 2>&1 || true' EXIT
wine cmd /c exit >/dev/null 2>&1 || true

ctest --test-dir "$build" --output-on-failure -j"$jobs" "$@"
if [ $# -eq 0 ]; then
    echo "windows-test: pind demo under Wine"
    (cd "$build" && wine bin/pind.exe demo >/dev/null)

    # The release zip must work on its own: unpacked elsewhere, with nothing of the build around.
    echo "windows-test: the zip package, unpacked, runs pind.exe demo"
    rm -f "$build"/PindBase-*-win64.zip
    (cd "$build" && cpack -G ZIP >/dev/null)
    zip=$(echo "$build"/PindBase-*-win64.zip)
    unpacked=$(mktemp -d)
    trap 'rm -rf "$unpacked"; wineserver -k >/dev/null 2>&1 || true' EXIT
    (cd "$unpacked" && cmake -E tar xf "$zip")
    dir=$(echo "$unpacked"/PindBase-*-win64)
    for f in bin/PindBase.dll bin/pind.exe lib/PindBase.dll.a include/pind/PindBase.h \
             include/pind/VersionNumbers.h lib/cmake/PindBase/PindBaseConfig.cmake \
             bin/libstdc++-6.dll bin/libgcc_s_seh-1.dll bin/libwinpthread-1.dll bin/zlib1.dll; do
        [ -f "$dir/$f" ] || { echo "windows-test: $f missing from $(basename "$zip")"; exit 1; }
    done
    version=$(sed -n "s/^CMAKE_PROJECT_VERSION:STATIC=//p" "$build/CMakeCache.txt")
    said=$(cd "$dir" && wine bin/pind.exe --version | tr -d '\r')
    [ "$said" = "pind $version" ] || { echo "windows-test: pind.exe --version says $said"; exit 1; }
    (cd "$dir" && wine bin/pind.exe demo >/dev/null)
    echo "windows-test: $(basename "$zip") ($(du -k "$zip" | cut -f1) KiB) works unpacked"
fi
