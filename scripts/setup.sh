#!/usr/bin/env bash
# Shared set-up for run.sh and test.sh: install missing Debian packages, then
# configure and build into build/ (or $QUENDLE_BUILD_DIR).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${QUENDLE_BUILD_DIR:-$root/build}

packages=(
  cmake g++ make pkg-config
  qt6-base-dev qt6-svg-dev qt6-speech-dev qt6-declarative-dev qt6-speech-speechd-plugin qt6-qpa-plugins libgl-dev
  libicu-dev libgtest-dev libgmock-dev libbenchmark-dev libzip-dev
  xvfb xauth
  librsvg2-bin desktop-file-utils appstream groff-base dpkg-dev file debootstrap
  fonts-liberation2   # the strip's "Arial" and "Helvetica": metric-compatible Liberation Sans
  clang-14 libclang-rt-14-dev libfuzzer-14-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" </dev/null
fi

cmake_args=(-S "$root" -B "$build")
if [ -n "${QUENDLE_CMAKE_ARGS:-}" ]; then
  read -r -a extra <<<"$QUENDLE_CMAKE_ARGS"
  cmake_args+=("${extra[@]}")
fi
cmake "${cmake_args[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" "$@"
