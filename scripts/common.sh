# Shared settings for the build scripts (sourced, not run).
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
JOBS="$(nproc 2>/dev/null || echo 2)"
LAUNCHER=()
if command -v ccache >/dev/null 2>&1; then
  LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  export CCACHE_DIR="${CCACHE_DIR:-$HOME/.cache/chartcore-ccache}"
  export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-5G}"
fi
# configure DIR [cmake args...]: configures a Ninja build in DIR.
configure() {
  local dir="$1"; shift
  cmake -S "$ROOT" -B "$dir" -G Ninja "${LAUNCHER[@]}" "$@" >/dev/null
}
