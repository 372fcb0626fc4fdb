#!/usr/bin/env bash
# Builds the Debian package (cpack -G DEB) and proves that it installs and runs on a
# clean machine: a minimal Debian bookworm made with debootstrap in a scratch folder
# of the build tree, the package installed there by apt-get without recommended
# packages (so its declared dependencies alone must be enough), then quendle-cli
# --version and next, quendle started for a few seconds on the offscreen platform,
# and the menu entry's program found on the PATH.
#
# Needs root, debootstrap and Debian's mirror. Without them it says why and skips
# (exit 0), unless QUENDLE_PACKAGE_CHECK=required. Run it after ./test.sh has built.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${QUENDLE_BUILD_DIR:-$root/build}
mirror=${QUENDLE_DEBIAN_MIRROR:-http://deb.debian.org/debian}
started=$(date +%s)

say() { echo "check-package: $*"; }
skip() {
  if [ "${QUENDLE_PACKAGE_CHECK:-}" = required ]; then
    say "cannot check the package: $*" >&2
    exit 1
  fi
  say "skipped: $*"
  exit 0
}

cd "$build"
rm -f quendle_*.deb
cpack -G DEB >cpack.log 2>&1 || { cat cpack.log >&2; say "cpack failed" >&2; exit 1; }
deb=$(ls quendle_*.deb)
say "built $deb ($(du -k "$deb" | cut -f1) KB)"
depends=$(dpkg-deb -f "$deb" Depends)
for needed in libqt6core6 libqt6gui6 libqt6widgets6 libqt6svg6 libicu72 qt6-speech-speechd-plugin; do
  case ", $depends," in
    *", $needed"[\ ,]*) ;;
    *) say "the package does not depend on $needed: $depends" >&2; exit 1 ;;
  esac
done

[ "$(id -u)" -eq 0 ] || skip "not root (debootstrap and chroot need it)"
command -v debootstrap >/dev/null || skip "debootstrap is not installed"

target=$build/package-check
rm -rf "$target"
mkdir -p "$target"
trap 'rm -rf "$target"' EXIT
if ! debootstrap --variant=minbase bookworm "$target" "$mirror" >debootstrap.log 2>&1; then
  tail -5 debootstrap.log >&2
  skip "debootstrap of bookworm from $mirror failed (no mirror?)"
fi
say "clean bookworm ready after $(( $(date +%s) - started )) s"
cp /etc/resolv.conf "$target/etc/resolv.conf" 2>/dev/null || true
cp "$deb" "$target/tmp/"
in_target() { chroot "$target" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TZ=Australia/Sydney \
  LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
in_target apt-get update -qq >apt.log 2>&1 || { tail -5 apt.log >&2; skip "apt-get update in the clean system failed"; }
if ! in_target apt-get install -y -qq --no-install-recommends "/tmp/$deb" >>apt.log 2>&1; then
  tail -20 apt.log >&2
  say "the package does not install on a clean bookworm" >&2
  exit 1
fi
say "installed after $(( $(date +%s) - started )) s"

in_target quendle-cli --version
in_target quendle-cli --now 2026-11-24T07:30:00 --journey "Emu Plains|Central" next | tee next.log
grep -q "Emu Plains 7:3" next.log || { say "quendle-cli next showed no train" >&2; exit 1; }

entry=$target/usr/share/applications/org.quendle.Quendle.desktop
program=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$entry")
in_target sh -c 'command -v "$1"' sh "$program" || { say "the menu entry's program $program is not on the PATH" >&2; exit 1; }
[ -f "$target/usr/share/icons/hicolor/scalable/apps/quendle.svg" ] || { say "no icon" >&2; exit 1; }

# The strip keeps running until it is stopped: still running after 5 s is success.
status=0
in_target env QT_QPA_PLATFORM=offscreen timeout 5 "$program" >gui.log 2>&1 || status=$?
if [ "$status" -ne 124 ]; then
  cat gui.log >&2
  say "quendle ended with status $status within 5 s" >&2
  exit 1
fi
say "passed in $(( $(date +%s) - started )) s"
