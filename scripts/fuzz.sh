#!/usr/bin/env bash
# Runs every fuzzer of a fuzz-enabled build for a given time each.
#   scripts/fuzz.sh BUILD_DIR [SECONDS]
# Corpora start from fuzz/corpus/<name>/ (copied, so the checked-in seeds are
# never changed); findings are written to BUILD_DIR/fuzz-findings/.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:?usage: fuzz.sh BUILD_DIR [SECONDS]}"
secs="${2:-20}"
shopt -s nullglob
found=0
for bin in "$build"/fuzz/*_fuzz; do
  name="$(basename "$bin" _fuzz)"
  work="$build/fuzz-corpus/$name"
  mkdir -p "$work" "$build/fuzz-findings"
  if [ -d "$ROOT/fuzz/corpus/$name" ]; then cp -n "$ROOT/fuzz/corpus/$name"/* "$work"/ 2>/dev/null || true; fi
  echo "== fuzz $name for ${secs}s"
  ASAN_OPTIONS=detect_leaks=1 "$bin" -max_total_time="$secs" -rss_limit_mb=2048 -malloc_limit_mb=1024 \
    -artifact_prefix="$build/fuzz-findings/$name-" -print_final_stats=1 "$work" 2>"$build/fuzz-$name.log" \
    || { tail -40 "$build/fuzz-$name.log"; echo "fuzz: $name failed" >&2; exit 1; }
  grep -E '^stat::number_of_executed_units' "$build/fuzz-$name.log" || true
  found=1
done
[ "$found" -eq 1 ] || echo "fuzz: no fuzzers built in $build"
