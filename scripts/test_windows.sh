#!/usr/bin/env bash
# The Windows stage: builds chartcore (a DLL), its unit test programs and the
# chartcore tool with MinGW-w64 and runs the test programs under Wine through
# CTest, each program whole and once; then checks the framework layer against
# Windows itself (tests/windows: the same profile and format corpus answered
# by the library natively and by the system under Wine). Installs the cross
# compiler and Wine when missing.
#   scripts/test_windows.sh              build-windows/, native answers in build/
#   BUILD_DIR=... NATIVE_BUILD_DIR=... scripts/test_windows.sh
set -euo pipefail
source "$(dirname "$0")/common.sh"

"$ROOT/scripts/deps.sh" core tool windows

BUILD_DIR="${BUILD_DIR:-$ROOT/build-windows}"
NATIVE_BUILD_DIR="${NATIVE_BUILD_DIR:-$ROOT/build}"
export WINEDEBUG=-all
# No browser engine or .NET runtime in the prefix: nothing here needs them,
# and Wine would otherwise ask for their installers.
export WINEDLLOVERRIDES="mscoree,mshtml="

echo "== windows: MinGW-w64 build (Release)"
configure "$BUILD_DIR" -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-w64-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=Release -DCHARTCORE_WITH_QT=OFF
cmake --build "$BUILD_DIR" -j "$JOBS"

# One prefix per build, made before the tests run in parallel, so no test
# races Wine's first-run set-up. Code page 949 comes from the Korean locale.
prefix="$BUILD_DIR/wineprefix"
if [ ! -f "$prefix/system.reg" ]; then
  echo "== windows: creating the Wine prefix"
  WINEPREFIX="$prefix" LC_ALL=ko_KR.UTF-8 wineboot -i >/dev/null 2>&1
  WINEPREFIX="$prefix" wineserver -w
fi

echo "== windows: unit tests under Wine"
ctest --test-dir "$BUILD_DIR" --output-on-failure -j "$JOBS"

echo "== windows: the framework layer against the system's functions"
if [ ! -f "$NATIVE_BUILD_DIR/CMakeCache.txt" ]; then
  configure "$NATIVE_BUILD_DIR" -DCMAKE_BUILD_TYPE=RelWithDebInfo
else
  # Reconfigure: Wine may have been installed after the native build was set up.
  cmake "$NATIVE_BUILD_DIR" >/dev/null
fi
cmake --build "$NATIVE_BUILD_DIR" -j "$JOBS" --target chartcore_platform_answers chartcore_platform_answers_exe
ctest --test-dir "$NATIVE_BUILD_DIR" --output-on-failure -L windows
