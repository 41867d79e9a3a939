#!/usr/bin/env bash
# Runs the codec's fuzz targets for a bounded time, seeded with the shared test documents.
# Exits non-zero when a fuzzer finds a crash. FUZZ_SECONDS sets the time per target.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_FUZZ_BUILD_DIR:-$ROOT/build-fuzz}"
SECONDS_EACH="${FUZZ_SECONDS:-30}"
TESTDATA="$ROOT/../shared/testdata/serz"

if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang++ is not installed; skipping" >&2
  exit 0
fi
cmake -S "$ROOT/fuzz" -B "$BUILD" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$BUILD" -j "$(nproc)"

for target in decode encode; do
  corpus="$BUILD/corpus-$target"
  mkdir -p "$corpus"
  if [ -d "$TESTDATA" ]; then
    if [ "$target" = decode ]; then
      cp "$TESTDATA"/*.bin "$TESTDATA"/*.proxybin "$corpus"/ 2>/dev/null || true
    else
      cp "$TESTDATA"/*.xml "$corpus"/ 2>/dev/null || true
    fi
  fi
  echo "fuzz: $target for ${SECONDS_EACH}s"
  "$BUILD/fuzz_$target" "$corpus" -max_total_time="$SECONDS_EACH" -max_len=65536 -timeout=10 \
    -print_final_stats=1 -artifact_prefix="$BUILD/crash-$target-" 2>&1 | tail -n 5
  if ls "$BUILD"/crash-"$target"-* >/dev/null 2>&1; then
    echo "fuzz: $target found a crash: $(ls "$BUILD"/crash-"$target"-*)" >&2
    exit 1
  fi
done
echo "fuzz: no crashes"
