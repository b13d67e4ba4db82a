#!/usr/bin/env bash
# Installs a chartcore build into a scratch prefix and builds a host project
# against it, as a consumer of the package would: CMake's find_package
# (tests/consumer) and pkg-config. Runs what it built and the installed tool.
#   scripts/consumer_check.sh BUILD_DIR     (an already built chartcore build)
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "${1:?usage: consumer_check.sh BUILD_DIR}" && pwd)"
work="$(mktemp -d "${TMPDIR:-/tmp}/chartcore-consumer.XXXXXX")"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null

echo "-- find_package(chartcore) from $prefix"
cmake -S "$ROOT/tests/consumer" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/cmake-build" >/dev/null
# The package must name the library and nothing of the build tree.
if grep -rq "$build\|chartcore_platform\|chartcore_packets" "$prefix/lib"*/cmake/chartcore/; then
  echo "consumer_check: the installed package refers to the build tree or its object libraries" >&2
  exit 1
fi
LD_LIBRARY_PATH="$prefix/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$work/cmake-build/consumer"
if [ -x "$work/cmake-build/consumer_qt" ]; then
  QT_QPA_PLATFORM=offscreen LD_LIBRARY_PATH="$prefix/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
    "$work/cmake-build/consumer_qt"
fi

echo "-- pkg-config chartcore"
pcdir="$(dirname "$(find "$prefix" -name chartcore.pc | head -n 1)")"
flags="$(PKG_CONFIG_PATH="$pcdir" pkg-config --cflags --libs chartcore)"
libdir="$(PKG_CONFIG_PATH="$pcdir" pkg-config --variable=libdir chartcore)"
# shellcheck disable=SC2086
"${CXX:-c++}" -std=c++17 "$ROOT/tests/consumer/main.cpp" -o "$work/consumer-pc" $flags -Wl,-rpath,"$libdir"
"$work/consumer-pc" | tail -n 1

echo "-- the installed tool"
"$prefix/bin/chartcore" --version
# It carries its own sample workspace: the tour runs from anywhere.
(cd "$work" && "$prefix/bin/chartcore" demo --color never | grep -q "489 bars") || {
  echo "consumer_check: the installed chartcore demo did not tour the sample" >&2
  exit 1
}
echo "consumer_check: ok"
