#!/usr/bin/env bash
# Builds PindBase and the pind tool, then runs `pind demo` on the bundled sample data.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc 2>/dev/null || echo 2)" --target pind
build/tools/pind/pind demo "$@"
