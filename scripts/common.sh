# Shared settings for the build scripts (sourced, not run).
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
JOBS="$(nproc 2>/dev/null || echo 2)"
LAUNCHER=()
if command -v ccache >/dev/null 2>&1; then
  LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  # Paths relative to the checkout, so a fresh clone elsewhere (CI) still
  # hits the cache that earlier builds on this machine filled.
  export CCACHE_BASEDIR="$ROOT"
  export CCACHE_NOHASHDIR=1
  export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-8G}"
fi
# configure DIR [cmake args...]: configures a Ninja build in DIR.
configure() {
  local dir="$1"; shift
  cmake -S "$ROOT" -B "$dir" -G Ninja "${LAUNCHER[@]}" "$@" >/dev/null
}
