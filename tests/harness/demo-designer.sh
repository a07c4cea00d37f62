#!/usr/bin/env bash
# The demo's automatic user designs a template in a copy of the shipped data
# folder (the designer writes its catalog there) and runs it.
#   demo-designer.sh <state-dir> <zemblax-host.exe> <data-dir> <out-dir>
set -eu
state=$1 host=$2 data=$3 out=$4
rm -rf "$out" && mkdir -p "$out"
cp -r "$data" "$out/data"
exec "$(dirname "$0")/wine-run.sh" "$state" "$host" --auto --design=Demo --data="$out/data" --out="$out"
