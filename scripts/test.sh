#!/usr/bin/env bash
# Builds and runs every test stage. Installs missing Debian packages first.
#   scripts/test.sh            all stages
#   scripts/test.sh STAGE...   some of them: native, sanitize, windows
# Stages:
#   native    GCC build of everything (benchmarks built, not run), every test
#             program run whole by CTest (the Qt tests offscreen), then a small
#             project built against the installed package;
#   sanitize  one Clang build with AddressSanitizer and UBSan serving the unit
#             tests and the fuzzers, each fuzzer run briefly (FUZZ_SECONDS, 20);
#   windows   MinGW-w64 build, the test programs run under Wine.
set -euo pipefail
source "$(dirname "$0")/common.sh"
stages=("$@")
[ ${#stages[@]} -eq 0 ] && stages=(native sanitize windows)

"$ROOT/scripts/deps.sh" core tool qt fuzz

run_native() {
  echo "== native: GCC build, unit tests"
  configure "$ROOT/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCHARTCORE_BUILD_BENCHMARKS=ON
  cmake --build "$ROOT/build" -j "$JOBS"
  # The comparison with the Windows system (label windows) runs in its own stage.
  ctest --test-dir "$ROOT/build" --output-on-failure -j "$JOBS" -LE windows
  if [ -x "$ROOT/scripts/consumer_check.sh" ]; then
    echo "== native: a consumer project against the installed package"
    "$ROOT/scripts/consumer_check.sh" "$ROOT/build"
  fi
}

run_sanitize() {
  echo "== sanitize: Clang with AddressSanitizer and UBSan"
  configure "$ROOT/build-asan" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
    -DCHARTCORE_SANITIZE=ON -DCHARTCORE_BUILD_FUZZERS=ON -DCHARTCORE_WITH_QT=OFF
  cmake --build "$ROOT/build-asan" -j "$JOBS"
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir "$ROOT/build-asan" --output-on-failure -j "$JOBS" -LE windows
  "$ROOT/scripts/fuzz.sh" "$ROOT/build-asan" "${FUZZ_SECONDS:-20}"
}

run_windows() {
  if [ -x "$ROOT/scripts/test_windows.sh" ]; then
    echo "== windows: MinGW-w64 build, tests under Wine"
    "$ROOT/scripts/test_windows.sh"
  fi
}

for s in "${stages[@]}"; do
  case "$s" in
    native) run_native ;;
    sanitize) run_sanitize ;;
    windows) run_windows ;;
    *) echo "test.sh: unknown stage '$s'" >&2; exit 2 ;;
  esac
done
echo "== test stages passed: ${stages[*]}"
