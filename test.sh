#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (GUI tests on the offscreen platform).
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
"$root/scripts/setup.sh"
build=${QUENDLE_BUILD_DIR:-$root/build}
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j"$(nproc)" "$@"
