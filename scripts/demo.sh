#!/usr/bin/env bash
# The main job on the demo install: builds Velmora, generates the demo simulator install once,
# and runs velmora-cli on it.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_BUILD_DIR:-$ROOT/build}"
DEMO="${VELMORA_DEMO_DIR:-$BUILD/demo-install}"
HOME_DIR="$BUILD/demo-home"

"$ROOT/scripts/setup.sh"
CLI="$BUILD/bin/velmora-cli"
if [ ! -f "$DEMO/RailWorks.exe" ]; then
  "$CLI" --home "$HOME_DIR" demo-install "$DEMO"
fi
exec "$CLI" --home "$HOME_DIR" --railworks "$DEMO" info "$@"
