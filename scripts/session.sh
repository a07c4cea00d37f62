# Sourced by the scripts that run one Windows program of the build under Wine:
#   build_and_start_session <session name> <ninja targets...>
# builds the targets for x86_64 (configuring $BUILD_DIR, default build, when
# needed), starts a Wine session of its own and stops it when the script ends.
# Sets root, build and session.
build_and_start_session() {
  local name=$1; shift
  root=$PWD
  build=${BUILD_DIR:-build}
  bash scripts/setup.sh
  [ -f "$build/build.ninja" ] || cmake -S . -B "$build" -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-x86_64.cmake -DZEMBLAX_TESTS=ON >/dev/null
  ninja -C "$build" "$@" wine-keeper >/dev/null
  session=$root/$build/$name
  bash tests/harness/wine-session.sh start "$session" "$root/$build/bin/wine-keeper.exe" >/dev/null
  trap 'bash tests/harness/wine-session.sh stop "$session" >/dev/null' EXIT
}
