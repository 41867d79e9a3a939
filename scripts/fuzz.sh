#!/usr/bin/env bash
# Runs every fuzz target for a bounded time, each from the seeds kept in fuzz/seeds/<target>.
# Exits non-zero when a fuzzer finds a crash, a leak, a hang or an input that takes too much
# memory. FUZZ_SECONDS sets the time per target; FUZZ_TARGETS a subset ("decode tree").
#
# Inputs may reach 256 KiB and a target may take 1 GiB: enough for a document that nests
# deeply to show what it would cost (300 KB of nesting once gave 900 MB of XML).
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_FUZZ_BUILD_DIR:-$ROOT/build-fuzz}"
SECONDS_EACH="${FUZZ_SECONDS:-30}"
SEEDS="$ROOT/fuzz/seeds"
TARGETS="${FUZZ_TARGETS:-decode encode texture archive settings lists vdf xmltext tree tile consists markers}"

if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang++ is not installed; skipping" >&2
  exit 0
fi
cmake -S "$ROOT/fuzz" -B "$BUILD" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$BUILD" -j "$(nproc)"

for target in $TARGETS; do
  corpus="$BUILD/corpus-$target"
  mkdir -p "$corpus"
  if [ -d "$SEEDS/$target" ]; then
    cp "$SEEDS/$target"/* "$corpus"/
  fi
  rm -f "$BUILD"/crash-"$target"-* "$BUILD"/leak-"$target"-* "$BUILD"/timeout-"$target"-* "$BUILD"/oom-"$target"-*
  echo "fuzz: $target for ${SECONDS_EACH}s"
  status=0
  "$BUILD/fuzz_$target" "$corpus" -max_total_time="$SECONDS_EACH" -max_len=262144 -timeout=10 \
    -rss_limit_mb=1024 -malloc_limit_mb=1024 -print_final_stats=1 \
    -artifact_prefix="$BUILD/crash-$target-" >"$BUILD/fuzz-$target.log" 2>&1 || status=$?
  grep -E '^stat::number_of_executed_units|^stat::peak_rss_mb|^Done [0-9]+ runs' "$BUILD/fuzz-$target.log" || true
  if [ "$status" != 0 ] || ls "$BUILD"/crash-"$target"-* >/dev/null 2>&1; then
    tail -n 30 "$BUILD/fuzz-$target.log" >&2
    echo "fuzz: $target found a fault: $(ls "$BUILD"/crash-"$target"-* 2>/dev/null)" >&2
    exit 1
  fi
done
echo "fuzz: no crashes"
