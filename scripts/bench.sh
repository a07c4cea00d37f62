#!/usr/bin/env bash
# Measures Zemblax.dll as a host drives it (selection dialog, run, designer),
# each figure against a floor measured in the same run, and prints the table.
# Builds what it needs and runs in a Wine session of its own.
#   scripts/bench.sh [--quick] [--only=selection|run|designer]
# --quick: one repeat each, a smoke run; --only: one group of figures.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/session.sh
build_and_start_session bench-session Zemblax zemblax-bench
rm -rf "$build/bin/bench-data"
bash tests/harness/wine-run.sh "$session" "$build/bin/zemblax-bench.exe" \
    "Z:$(echo "$root/data/Template/Zemblax.ini" | tr / '\\')" "$@"
