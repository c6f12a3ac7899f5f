#!/usr/bin/env bash
# Installs what building and testing PindBase needs on Debian 12, and nothing that is already there.
# Safe to run again: with everything present it only checks and returns.
#   scripts/setup.sh            # build, test, benchmark and fuzz dependencies
set -euo pipefail

packages=(
    cmake ninja-build g++ clang pkg-config
    libfmt-dev zlib1g-dev libminizip-dev libtinyxml-dev
    libgtest-dev libgmock-dev libbenchmark-dev libclang-rt-14-dev
    libspdlog-dev libinih-dev rapidjson-dev libcjson-dev libpugixml-dev libtinyxml2-dev
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
