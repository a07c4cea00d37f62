#!/usr/bin/env bash
# Measures Zemblax.dll as a host drives it (selection dialog, run, designer),
# each figure against a floor measured in the same run, and prints the table.
# Builds what it needs and runs in a Wine session of its own.
#   scripts/bench.sh [--quick] [--only=selection|run|designer]
# --quick: one repeat each, a smoke run; --only: one group of figures.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=${BUILD_DIR:-build}
bash scripts/setup.sh
[ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-x86_64.cmake -DZEMBLAX_TESTS=ON >/dev/null
ninja -C "$build" Zemblax zemblax-bench wine-keeper >/dev/null
session=$root/$build/bench-session
bash tests/harness/wine-session.sh start "$session" "$root/$build/bin/wine-keeper.exe" >/dev/null
trap 'bash tests/harness/wine-session.sh stop "$session" >/dev/null' EXIT
rm -rf "$build/bin/bench-data"
bash tests/harness/wine-run.sh "$session" "$build/bin/zemblax-bench.exe" \
    "Z:$(echo "$root/data/Template/Zemblax.ini" | tr / '\\')" "$@"
