#!/usr/bin/env bash
# The main job: builds the library and the chartcore tool, then runs the demo
# tour on the sample workspace. Installs missing Debian packages first.
set -euo pipefail
source "$(dirname "$0")/common.sh"
"$ROOT/scripts/deps.sh" core tool
configure "$ROOT/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCHARTCORE_BUILD_TESTS=OFF
cmake --build "$ROOT/build" -j "$JOBS" --target chartcore_cli >/dev/null
exec "$ROOT/build/tools/chartcore/chartcore" demo "$@"
