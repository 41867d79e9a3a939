#!/usr/bin/env bash
# The whole test suite: builds Velmora and runs every test program, then the fuzzers for a
# bounded time. Exits non-zero when anything fails.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_BUILD_DIR:-$ROOT/build}"

# Warnings are errors here, and only here: CI must not let one in.
VELMORA_WARNINGS_AS_ERRORS=ON "$ROOT/scripts/setup.sh"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$BUILD" --output-on-failure -j "$(nproc)" --timeout 600

if [ -x "$ROOT/scripts/fuzz.sh" ] && [ "${VELMORA_SKIP_FUZZ:-0}" != 1 ]; then
  "$ROOT/scripts/fuzz.sh"
fi
