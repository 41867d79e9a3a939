#!/usr/bin/env bash
# The main job on the demo install: builds Velmora, generates the demo simulator install once,
# and runs the full route check of its "Demo Valley Line" with velmora-cli. Other velmora-cli
# arguments can be given instead: scripts/demo.sh route list, scripts/demo.sh info, ...
# The check exits with 1 because the demo route has deliberate faults; that is its result, so
# this script reports it and exits 0.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_BUILD_DIR:-$ROOT/build}"
DEMO="${VELMORA_DEMO_DIR:-$BUILD/demo-install}"
HOME_DIR="$BUILD/demo-home"

"$ROOT/scripts/setup.sh"
CLI="$BUILD/bin/velmora-cli"
if [ ! -f "$DEMO/manifest.json" ]; then
  rm -rf "$DEMO"
  "$CLI" --home "$HOME_DIR" demo-install "$DEMO"
fi
if [ "$#" -gt 0 ]; then
  exec "$CLI" --home "$HOME_DIR" --railworks "$DEMO" "$@"
fi
status=0
"$CLI" --home "$HOME_DIR" --railworks "$DEMO" route check "Demo Valley Line" --deep \
  --out "$BUILD/demo-reports" || status=$?
"$CLI" --quiet --home "$HOME_DIR" --railworks "$DEMO" route check "Demo Valley Line" --deep \
  --mark-archives --mark-case || true
case "$status" in
  0) echo "The route check found nothing missing." ;;
  1) echo "The route check found missing items (the demo install has them on purpose); reports in $BUILD/demo-reports." ;;
  *) exit "$status" ;;
esac
