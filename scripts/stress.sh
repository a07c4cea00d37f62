#!/usr/bin/env bash
# Feeds Zemblax.dll hostile input as a careless or broken host would: random
# and truncated bitmaps on guard pages, the BMP suite as exposures and
# thumbnails, host calls in random order with invalid windows, and a soak of
# whole runs, counting GDI objects and heap blocks. Builds what it needs.
#   scripts/stress.sh [--seed=N] [--rounds=M] [--gtest_filter=...]
# The seed is printed first; a failure replays with the same --seed and --rounds.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/session.sh
build_and_start_session stress-session Zemblax stress-tests
suite=$root/../shared/testdata/bmpsuite
[ -d "$suite" ] || echo "stress: no BMP suite at $suite: its rounds will skip"
bash tests/harness/wine-run.sh "$session" "$build/bin/stress-tests.exe" --bmpsuite="$suite" "$@"
