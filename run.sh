#!/usr/bin/env bash
# Installs what is missing, builds, and starts Quendle on its built-in Sydney Trains table.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
"$root/scripts/setup.sh"
build=${QUENDLE_BUILD_DIR:-$root/build}

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "No display found (neither DISPLAY nor WAYLAND_DISPLAY is set), so the strip cannot be shown."
  echo "Here is what it would show, from quendle-cli:"
  echo
  exec "$build/src/cli/quendle-cli" next "$@"
fi
exec "$build/src/gui/quendle" "$@"
