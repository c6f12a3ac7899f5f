#!/usr/bin/env bash
# Builds PindBase with its tests and runs every test. The README's test command.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPIND_BUILD_BENCH=ON
cmake --build build -j"$jobs"
ctest --test-dir build --output-on-failure -j"$jobs"
