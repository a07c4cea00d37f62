#!/usr/bin/env bash
# Builds Zemblax.dll, the demo host and the tests for x86_64 (build/) and the
# DLL for i686 (build-i686/).
set -euo pipefail
cd "$(dirname "$0")/.."
for arch in x86_64 i686; do
  dir=build; tests=ON
  [ $arch = i686 ] && { dir=build-i686; tests=OFF; }
  [ -f $dir/build.ninja ] || cmake -S . -B $dir -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-$arch.cmake -DZEMBLAX_TESTS=$tests >/dev/null
  ninja -C $dir
done
