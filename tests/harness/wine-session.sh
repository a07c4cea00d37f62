#!/usr/bin/env bash
# Owns the Wine environment of a test run: a private prefix, a headless X server
# when there is no display, a persistent wineserver and a keeper process that
# keeps Wine's desktop open between tests.
#   wine-session.sh start <state-dir> <keeper.exe>
#   wine-session.sh stop  <state-dir>
# Everything started here has its output away from the caller's pipes: CTest
# waits for every process that holds its pipe, and Wine's helpers live long.
set -u
cmd=$1 state=$2
mkdir -p "$state"
env_file=$state/env

start() {
  local keeper=$1
  export WINEPREFIX=$state/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  local display=${DISPLAY:-}
  if [ -z "$display" ] || ! xdpyinfo -display "$display" >/dev/null 2>&1; then
    local n=91
    while [ -e /tmp/.X11-unix/X$n ] || [ -e /tmp/.X$n-lock ]; do n=$((n + 1)); done
    setsid Xvfb :$n -screen 0 1280x1024x24 -nolisten tcp </dev/null >/dev/null 2>&1 &
    echo $! >"$state/xvfb.pid"
    display=:$n
    for _ in $(seq 100); do xdpyinfo -display $display >/dev/null 2>&1 && break; sleep 0.1; done
  fi
  export DISPLAY=$display
  {
    echo "export DISPLAY=$DISPLAY"
    echo "export WINEPREFIX=$WINEPREFIX"
    echo "export WINEDEBUG=-all"
    echo "export WINEDLLOVERRIDES='mscoree,mshtml='"
  } >"$env_file"
  wineserver -p </dev/null >/dev/null 2>&1
  wine cmd /c exit </dev/null >/dev/null 2>&1
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f </dev/null >/dev/null 2>&1
  setsid wine "$keeper" </dev/null >/dev/null 2>&1 &
  echo $! >"$state/keeper.pid"
  echo "wine session: DISPLAY=$DISPLAY WINEPREFIX=$WINEPREFIX"
}

stop() {
  [ -f "$env_file" ] && . "$env_file"
  for f in keeper; do
    [ -f "$state/$f.pid" ] && kill "$(cat "$state/$f.pid")" 2>/dev/null
    rm -f "$state/$f.pid"
  done
  [ -n "${WINEPREFIX:-}" ] && WINEPREFIX=$WINEPREFIX wineserver -k </dev/null >/dev/null 2>&1
  if [ -f "$state/xvfb.pid" ]; then
    kill "$(cat "$state/xvfb.pid")" 2>/dev/null
    rm -f "$state/xvfb.pid"
  fi
  rm -f "$env_file"
  echo "wine session stopped"
}

case $cmd in
  start) start "$3" ;;
  stop) stop ;;
  *) echo "usage: $0 start|stop <state-dir> [keeper.exe]" >&2; exit 2 ;;
esac
