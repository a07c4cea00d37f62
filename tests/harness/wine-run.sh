#!/usr/bin/env bash
# Runs a Windows program inside the session that wine-session.sh started.
#   wine-run.sh <state-dir> <program.exe> [args...]
state=$1; shift
if [ ! -f "$state/env" ]; then
  echo "wine-run: no wine session in $state (run the whole suite through ctest)" >&2
  exit 1
fi
. "$state/env"
exe=$(readlink -f "$1"); shift
cd "$(dirname "$exe")" || exit 1
# The exit code is named: a program that ends before it prints anything
# leaves nothing else to go by.
wine "$exe" "$@" </dev/null
rc=$?
[ $rc -eq 0 ] || echo "wine-run: $(basename "$exe") ended with exit code $rc" >&2
exit $rc
