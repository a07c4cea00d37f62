#!/usr/bin/env bash
# Installs what building and testing Zemblax needs on a Debian machine; skips what is there.
set -euo pipefail
pkgs=(cmake ninja-build g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix binutils-mingw-w64
      mingw-w64-tools wine wine64 xvfb x11-utils xdotool imagemagick googletest python3)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
