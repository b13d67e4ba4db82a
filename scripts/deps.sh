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
    windows) want+=(g++-mingw-w64-x86-64-posix wine wine64 locales) ;;
    fuzz) want+=(clang libclang-rt-dev) ;;
    valgrind) want+=(valgrind python3) ;;
    *) echo "deps.sh: unknown group '$group'" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${want[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
if [ ${#missing[@]} -gt 0 ]; then
  echo "deps.sh: installing ${missing[*]}" >&2
  $SUDO apt-get update -qq >/dev/null
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# The Windows programs run under Wine in a Korean locale (code page 949).
for group in "$@"; do
  if [ "$group" = windows ] && ! locale -a 2>/dev/null | grep -qi '^ko_KR\.utf-\?8$'; then
    echo "deps.sh: generating the ko_KR.UTF-8 locale" >&2
    $SUDO sed -i 's/^# *ko_KR.UTF-8 UTF-8/ko_KR.UTF-8 UTF-8/' /etc/locale.gen
    grep -q '^ko_KR.UTF-8 UTF-8' /etc/locale.gen || echo 'ko_KR.UTF-8 UTF-8' | $SUDO tee -a /etc/locale.gen >/dev/null
    $SUDO locale-gen >/dev/null
  fi
done
