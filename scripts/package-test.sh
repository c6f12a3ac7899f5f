#!/usr/bin/env bash
# Makes the Debian package from the build in build/ (scripts/test.sh builds it) and checks it as its
# users would: installs it with dpkg, builds tests/consumer against the installed CMake package and
# the pkg-config file, runs the installed pind, then removes the package and checks it left nothing.
#   scripts/package-test.sh                      # dpkg -i into the system: a CI machine or container
#   PIND_DEB_ROOT=/tmp/deb scripts/package-test.sh   # unpacked into a fresh folder, system untouched
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
[ -f build/CMakeCache.txt ] || cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc 2>/dev/null || echo 2)"
rm -f build/libpindbase_*.deb
(cd build && cpack -G DEB >/dev/null)
deb=$(echo build/libpindbase_*.deb)
version=$(dpkg-deb -f "$deb" Version)
echo "package-test: $deb"
dpkg-deb -f "$deb" Package Version Depends

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
if [ -n "${PIND_DEB_ROOT:-}" ]; then
    # The dependencies must still be installable here, though nothing is installed.
    $sudo dpkg --no-act -i "$deb" >/dev/null
    rm -rf "$PIND_DEB_ROOT"
    dpkg -x "$deb" "$PIND_DEB_ROOT"
    usr=$(cd "$PIND_DEB_ROOT/usr" && pwd)
    export CMAKE_PREFIX_PATH=$usr LD_LIBRARY_PATH=$usr/lib
    export PKG_CONFIG_PATH=$usr/lib/pkgconfig
else
    $sudo dpkg -i "$deb"
    usr=/usr
fi

# Built as a client project would be: through find_package, and through pkg-config.
cmake -S tests/consumer -B "$work/consumer" -G Ninja >/dev/null
cmake --build "$work/consumer" >/dev/null
"$work/consumer/consumer"
# shellcheck disable=SC2046  # the flags are meant to split
c++ -std=c++17 -o "$work/consumer-pc" tests/consumer/main.cpp $(pkg-config --cflags --libs pindbase)
"$work/consumer-pc" >/dev/null

# The installed tool reports the package's version and finds its installed sample data.
[ "$("$usr/bin/pind" --version)" = "pind $version" ] || {
    echo "package-test: pind --version says $("$usr/bin/pind" --version), package is $version"
    exit 1
}
(cd "$work" && "$usr/bin/pind" demo >/dev/null)

if [ -z "${PIND_DEB_ROOT:-}" ]; then
    $sudo dpkg -r libpindbase
    for left in /usr/include/pind /usr/bin/pind /usr/share/pind "/usr/lib/cmake/PindBase"; do
        if [ -e "$left" ]; then
            echo "package-test: $left is still there after dpkg -r"
            exit 1
        fi
    done
fi
echo "package-test: libpindbase $version installs, builds a consumer and runs"
