#!/usr/bin/env bash
# Runs the libFuzzer targets of a fuzz-enabled build, each for a given time.
#   scripts/fuzz.sh BUILD_DIR [SECONDS] [TARGET...]
# BUILD_DIR is a Clang build configured with -DCHARTCORE_BUILD_FUZZERS=ON and
# -DCHARTCORE_SANITIZE=ON
# (scripts/test.sh sanitize makes build-asan that way); SECONDS defaults to
# 20 (the CI run); TARGET names pick some of them (archive, profile, records,
# text_buffer, parse_line, wildcmp, price_format), default all built ones.
#
# The targets (fuzz/<name>_fuzz.cpp) and what each input is:
#   archive       archive reader: strings, counts, lines, scalars, object stream
#   profile       a profile (INI) file such as New_Function.dat
#   records       a definition record file, as each of the seven kinds and as
#                 an object stream
#   text_buffer   a formula text file in any encoding, loaded into the editor
#   parse_line    a script line with an incoming cookie, and the same text in
#                 the editor
#   wildcmp       a wildcard pattern and a text
#   price_format  a value, a format code and a typed price
# Each corpus starts from the seeds in fuzz/corpus/<name>/ (copied, so the
# checked-in seeds never change) and grows in BUILD_DIR/fuzz-corpus/<name>/.
# A finding stops the run: the input is written to
# BUILD_DIR/fuzz-findings/<name>-crash-<hash> (or -leak-, -timeout-, -oom-),
# the log to BUILD_DIR/fuzz-<name>.log. Reproduce it with
#   BUILD_DIR/fuzz/<name>_fuzz BUILD_DIR/fuzz-findings/<name>-crash-<hash>
# and shrink it with -minimize_crash=1 -runs=10000 on the same command. The
# profile and text_buffer targets write scratch files under $TMPDIR (or /tmp);
# a memory-backed TMPDIR such as /dev/shm makes them several times faster.
# One input may take at most 10 s and 2 GB; a single allocation above 1 GB is
# a finding (a count read from a file must never cause one).
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:?usage: fuzz.sh BUILD_DIR [SECONDS] [TARGET...]}"
secs="${2:-20}"
shift $(($# >= 2 ? 2 : $#))
shopt -s nullglob

bins=()
if [ $# -gt 0 ]; then
  for name in "$@"; do
    [ -x "$build/fuzz/${name}_fuzz" ] || { echo "fuzz: no target $name in $build/fuzz" >&2; exit 2; }
    bins+=("$build/fuzz/${name}_fuzz")
  done
else
  bins=("$build"/fuzz/*_fuzz)
fi
if [ ${#bins[@]} -eq 0 ]; then
  echo "fuzz: no fuzzers built in $build"
  exit 0
fi

mkdir -p "$build/fuzz-findings"
for bin in "${bins[@]}"; do
  name="$(basename "$bin" _fuzz)"
  work="$build/fuzz-corpus/$name"
  mkdir -p "$work"
  if [ -d "$ROOT/fuzz/corpus/$name" ]; then cp -n "$ROOT/fuzz/corpus/$name"/* "$work"/ 2>/dev/null || true; fi
  echo "== fuzz $name for ${secs}s"
  ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}" UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}" \
    "$bin" -max_total_time="$secs" -timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=1024 \
    -artifact_prefix="$build/fuzz-findings/$name-" -print_final_stats=1 "$work" 2>"$build/fuzz-$name.log" \
    || { tail -40 "$build/fuzz-$name.log"; echo "fuzz: $name failed; input in $build/fuzz-findings/" >&2; exit 1; }
  grep -E '^stat::(number_of_executed_units|average_exec_per_sec)' "$build/fuzz-$name.log" || true
done
