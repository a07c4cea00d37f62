#!/usr/bin/env bash
# Installs what is missing, builds both architectures and runs every test
# under Wine (CTest starts and stops its own Wine session and X server).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh
bash tests/harness/check-exports.sh build-i686/bin/Zemblax.dll i686-w64-mingw32-objdump
cd build
ctest --output-on-failure "$@"
