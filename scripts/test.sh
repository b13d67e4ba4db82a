#!/usr/bin/env bash
# Builds and runs every test stage. Installs missing Debian packages first.
#   scripts/test.sh           all stages
#   scripts/test.sh native    only the GCC build and its tests (fast loop)
# Stages: native (GCC, tests, benchmarks built but not run), sanitize (one
# Clang build with ASan+UBSan serving the tests and the fuzzers, each fuzzer
# run briefly).
set -euo pipefail
source "$(dirname "$0")/common.sh"
stages="${1:-all}"

"$ROOT/scripts/deps.sh" core tool fuzz

run_native() {
  echo "== native: GCC build, unit tests"
  configure "$ROOT/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCHARTCORE_BUILD_BENCHMARKS=ON
  cmake --build "$ROOT/build" -j "$JOBS"
  ctest --test-dir "$ROOT/build" --output-on-failure -j "$JOBS"
}

run_sanitize() {
  echo "== sanitize: Clang with AddressSanitizer and UBSan"
  configure "$ROOT/build-asan" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
    -DCHARTCORE_SANITIZE=ON -DCHARTCORE_BUILD_FUZZERS=ON
  cmake --build "$ROOT/build-asan" -j "$JOBS"
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir "$ROOT/build-asan" --output-on-failure -j "$JOBS" -LE qt
  if [ -x "$ROOT/scripts/fuzz.sh" ]; then
    "$ROOT/scripts/fuzz.sh" "$ROOT/build-asan" "${FUZZ_SECONDS:-20}"
  fi
}

case "$stages" in
  native) run_native ;;
  sanitize) run_sanitize ;;
  all) run_native; run_sanitize ;;
  *) echo "test.sh: unknown stage '$stages'" >&2; exit 2 ;;
esac
echo "== all test stages passed"
