#!/usr/bin/env bash
# The main job: the demo host drives Zemblax.dll through an acquisition.
# With a display the host opens its window (F5 starts a run); without one an
# automatic user runs the full-mouth series headless, prints every delivered
# take and writes out/demo/layout.png.
#   scripts/demo.sh [--auto] [--template=NAME] [--lang=1033]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh >/dev/null
root=$PWD
out=$root/out/demo
rm -rf "$out" && mkdir -p "$out"
cp -r data "$out/data"   # the run may write its catalog: keep the shipped one clean
args=(--data="$out/data" --out="$out")
session=$root/build/demo-session
bash tests/harness/wine-session.sh start "$session" "$root/build/bin/wine-keeper.exe" >/dev/null
trap 'bash tests/harness/wine-session.sh stop "$session" >/dev/null' EXIT
# On a headless X server of our own nobody could answer the dialogs.
if [ -f "$session/xvfb.pid" ] || [[ " $* " == *" --auto "* ]]; then
  args+=(--auto)
fi
set +e
bash tests/harness/wine-run.sh "$session" build/bin/zemblax-host.exe "${args[@]}" \
  $(printf '%s\n' "$@" | grep -v '^--auto$')
rc=$?
set -e
if [ -f "$out/layout.bmp" ]; then
  convert "$out/layout.bmp" "$out/layout.png" && echo "layout picture: $out/layout.png"
fi
exit $rc
