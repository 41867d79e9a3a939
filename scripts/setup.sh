#!/usr/bin/env bash
# Installs the Debian packages Velmora builds with (only those missing), then configures and
# builds everything into build/. Safe to run again: it does only what is left to do.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_BUILD_DIR:-$ROOT/build}"

PACKAGES=(
  build-essential cmake ninja-build pkg-config git
  qt6-base-dev qt6-charts-dev libqt6opengl6-dev libgl-dev
  libzip-dev 7zip imagemagick
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  SUDO=""
  if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# VELMORA_WARNINGS_AS_ERRORS=ON makes every warning an error (CI sets it through scripts/test.sh).
WERROR=()
if [ -n "${VELMORA_WARNINGS_AS_ERRORS:-}" ]; then
  WERROR=(-DVELMORA_WARNINGS_AS_ERRORS="$VELMORA_WARNINGS_AS_ERRORS")
fi
if [ ! -f "$BUILD/build.ninja" ]; then
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${WERROR[@]}"
elif ((${#WERROR[@]})); then
  cmake -S "$ROOT" -B "$BUILD" "${WERROR[@]}" >/dev/null
fi
cmake --build "$BUILD" -j "$(nproc)"
