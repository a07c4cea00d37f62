#!/usr/bin/env bash
# The main job: the demo host drives Zemblax.dll. With a display the host
# opens its window (F5 starts a run, its menu opens the designer); without one
# an automatic user first designs a template in the designer with the mouse,
# saves it as "Demo" and runs it, printing what it does; it leaves
# out/demo/designer.png and out/demo/layout.png.
#   scripts/demo.sh [--auto] [--template=NAME | --design=NAME] [--lang=1033]
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
  [[ " $* " == *" --template="* || " $* " == *" --design="* ]] || args+=(--design=Demo)
fi
set +e
for a in "$@"; do [ "$a" = --auto ] || args+=("$a"); done
bash tests/harness/wine-run.sh "$session" build/bin/zemblax-host.exe "${args[@]}"
rc=$?
set -e
for picture in designer layout; do
  if [ -f "$out/$picture.bmp" ]; then
    convert "$out/$picture.bmp" "$out/$picture.png" && echo "$picture picture: $out/$picture.png"
  fi
done
exit $rc
