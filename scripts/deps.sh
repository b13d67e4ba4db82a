#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those missing. Quiet when
# everything is present; idempotent.
#   scripts/deps.sh core      compilers, CMake, GoogleTest, Benchmark, iconv
#   scripts/deps.sh tool      + what the chartcore tool needs
#   scripts/deps.sh qt        + Qt 6 Widgets and a Korean font
#   scripts/deps.sh windows   + MinGW-w64 and Wine
#   scripts/deps.sh fuzz      + Clang's sanitizer and fuzzer runtimes
set -euo pipefail

want=()
for group in "$@"; do
  case "$group" in
    core) want+=(build-essential g++ clang cmake ninja-build ccache pkg-config
                 libgtest-dev libgmock-dev libbenchmark-dev locales) ;;
    tool) want+=(libcli11-dev nlohmann-json3-dev) ;;
    qt) want+=(qt6-base-dev libgl-dev fonts-nanum) ;;
    windows) want+=(g++-mingw-w64-x86-64-posix wine wine64) ;;
    fuzz) want+=(clang libclang-rt-14-dev) ;;
    valgrind) want+=(valgrind) ;;
    *) echo "deps.sh: unknown group '$group'" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${want[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "deps.sh: installing ${missing[*]}" >&2
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq >/dev/null
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
