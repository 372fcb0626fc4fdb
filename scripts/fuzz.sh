#!/usr/bin/env bash
# Builds the fuzz targets (fuzz/*.cpp) with clang, libFuzzer, ASan and UBSan into
# build-fuzz/ and runs each for a bounded time.
#
#   scripts/fuzz.sh                 every target, QUENDLE_FUZZ_SECONDS each (default 45)
#   scripts/fuzz.sh table dates     only these targets
#   QUENDLE_FUZZ_SECONDS=600 QUENDLE_FUZZ_JOBS=1 scripts/fuzz.sh table   one long run
#
# QUENDLE_FUZZ_JOBS targets run at once (default 2). Each run starts from the committed
# seeds in fuzz/corpus/<target>/ plus what earlier runs found (build-fuzz/corpus/<target>/,
# never committed by this script). A crash, a sanitizer report, a timeout or running out of
# memory fails the run; the input is kept in build-fuzz/artifacts/<target>/ and printed in
# base64 so it can be reproduced from a CI log:  build-fuzz/fuzz/fuzz-<target> FILE
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${QUENDLE_FUZZ_BUILD_DIR:-$root/build-fuzz}
seconds=${QUENDLE_FUZZ_SECONDS:-45}
jobs=${QUENDLE_FUZZ_JOBS:-2}

# Install what is missing and build only the fuzz targets (not the tests or the programs).
QUENDLE_BUILD_DIR=$build \
QUENDLE_CMAKE_ARGS="${QUENDLE_CMAKE_ARGS:-} -DCMAKE_CXX_COMPILER=clang++-14 -DQUENDLE_FUZZ=ON -DQUENDLE_TESTS=OFF -DQUENDLE_BENCH=OFF" \
  "$root/scripts/setup.sh" --target quendle-fuzz

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for src in "$root"/fuzz/*.cpp; do
    targets+=("$(basename "$src" .cpp)")
  done
fi

export TZ=Australia/Sydney LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

runone() {
  local t=$1
  local bin="$build/fuzz/fuzz-$t"
  local seeds="$root/fuzz/corpus/$t" work="$build/corpus/$t" art="$build/artifacts/$t"
  local log="$build/logs/$t.log"
  rm -f "$build/logs/$t.status"
  mkdir -p "$work" "$art" "$(dirname "$log")" "$seeds"
  # The pages the tests keep are seeds as well, taken from where they are, not copied here.
  case $t in
    trackworkpage) cp -n "$root/tests/data/trackwork.html" "$work/" || true ;;
    timetablepage) cp -n "$root"/tests/data/publisher/*.html "$work/" || true ;;
  esac
  local dict=()
  if [ -f "$root/fuzz/$t.dict" ]; then dict=(-dict="$root/fuzz/$t.dict"); fi
  local status=0
  "$bin" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2560 -max_len=65536 \
    -print_final_stats=1 -artifact_prefix="$art/" "${dict[@]}" "$work" "$seeds" >"$log" 2>&1 </dev/null \
    || status=$?
  local execs
  execs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || true)
  if [ "$status" -eq 0 ]; then
    echo "fuzz $t: ok, ${execs:-?} inputs in ${seconds}s, corpus $(ls "$work" | wc -l) + $(ls "$seeds" | wc -l) seeds"
  else
    echo "fuzz $t: FAILED (exit $status) after ${execs:-?} inputs; log: $log"
    grep -E 'ERROR|runtime error|SUMMARY|property failed|Test unit written' "$log" | head -20 || true
    for f in "$art"/*; do
      [ -f "$f" ] || continue
      echo "  input $f (base64):"
      head -c 4096 "$f" | base64 | sed 's/^/    /'
    done
  fi
  echo "$status" >"$build/logs/$t.status"
}

failed=0
ran=()
for t in "${targets[@]}"; do
  if [ ! -x "$build/fuzz/fuzz-$t" ]; then
    echo "fuzz $t: no such target (fuzz/$t.cpp)"
    failed=1
    continue
  fi
  while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do
    wait -n || true
  done
  runone "$t" &
  ran+=("$t")
done
wait
for t in "${ran[@]}"; do
  if [ "$(cat "$build/logs/$t.status" 2>/dev/null || echo 1)" != 0 ]; then failed=1; fi
done
exit $failed
