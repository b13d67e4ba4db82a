#!/usr/bin/env bash
# Runs the unit test programs (all but the Qt backend's) under valgrind's
# memcheck. Any invalid read or write, use of uninitialised memory, bad free
# or leak (definite, indirect or possible) fails the run; memory still
# reachable at exit (the fixed tables, GoogleTest's registry) does not.
# scripts/valgrind.supp silences what is not the code's fault (glibc's vector
# string compares and the loader reading past a block's end, tests that swap
# operator new); one test that needs a failing execve is left out (below).
#   scripts/valgrind.sh [BUILD_DIR] [TEST_REGEX]
# BUILD_DIR (default build-valgrind) is configured and built here: GCC,
# RelWithDebInfo, no sanitizers (valgrind and AddressSanitizer do not mix), no
# Qt. Each unit test program (CTest label "unit") runs with the environment
# and working folder CTest gives it; TEST_REGEX picks some by CTest name.
# Reports go to BUILD_DIR/valgrind/<test>.log, the program's output to
# <test>.out; a failing one's tail is printed. Exit code 99 of a program
# means memcheck found errors; any other failure is the test's own.
set -euo pipefail
source "$(dirname "$0")/common.sh"
build="${1:-$ROOT/build-valgrind}"
regex="${2:-.}"

"$ROOT/scripts/deps.sh" core valgrind
configure "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCHARTCORE_SANITIZE=OFF -DCHARTCORE_BUILD_FUZZERS=OFF \
  -DCHARTCORE_WITH_QT=OFF
cmake --build "$build" -j "$JOBS"

# One line per test: name, working folder, environment (VAR=value ...,
# separated by 0x1F) and command, separated by tabs.
tests="$(ctest --test-dir "$build" -L unit -LE qt -R "$regex" --show-only=json-v1 | python3 -c '
import json, sys
for t in json.load(sys.stdin)["tests"]:
    props = {p["name"]: p["value"] for p in t.get("properties", [])}
    print("\t".join([t["name"], props.get("WORKING_DIRECTORY", "."), "\x1f".join(props.get("ENVIRONMENT", [])),
                     "\x1f".join(t["command"])]))
')"
[ -n "$tests" ] || { echo "valgrind: no tests match '$regex' in $build" >&2; exit 2; }

# A program whose execve fails dies under valgrind instead of getting the
# error back, so the test that starts a broken viewer on purpose cannot pass
# here; it runs in the other stages.
skip="-ViewerLaunch.OpenersAndBrowsersInOrderWithTheirMessages"

mkdir -p "$build/valgrind"
failed=()
while IFS=$'\t' read -r name dir envs command; do
  IFS=$'\x1f' read -r -a env_list <<<"$envs"
  IFS=$'\x1f' read -r -a cmd_list <<<"$command"
  log="$build/valgrind/$name.log"
  echo "== valgrind $name"
  status=0
  (cd "$dir" && env "${env_list[@]}" GTEST_FILTER="$skip" valgrind --tool=memcheck --error-exitcode=99 --leak-check=full \
      --show-leak-kinds=definite,indirect,possible --errors-for-leak-kinds=definite,indirect,possible \
      --suppressions="$ROOT/scripts/valgrind.supp" --track-origins=yes --num-callers=40 --log-file="$log" \
      "${cmd_list[@]}") >"$build/valgrind/$name.out" 2>&1 || status=$?
  if [ "$status" -eq 0 ]; then
    grep -E 'ERROR SUMMARY' "$log" | tail -1 || true
  elif [ "$status" -eq 99 ]; then
    echo "valgrind: memcheck errors in $name; see $log" >&2
    grep -E -A12 '^==[0-9]+== (Invalid|Conditional|Use of|Syscall|Mismatched|Source and|[0-9,]+ bytes in)' "$log" | head -60 >&2 || true
    failed+=("$name")
  else
    echo "valgrind: $name failed (exit $status) under valgrind; see $build/valgrind/$name.out" >&2
    tail -30 "$build/valgrind/$name.out" >&2
    failed+=("$name")
  fi
done <<<"$tests"

if [ ${#failed[@]} -ne 0 ]; then
  echo "valgrind: failures in: ${failed[*]}" >&2
  exit 1
fi
echo "== valgrind: every test program clean"
