#!/usr/bin/env bash
# Fault drills of the write path, run by hand on a built tree (as root, for the tmpfs mount):
#   1. `velmora-cli save` of a 7 MB document killed with SIGKILL at random moments, N times:
#      the document must be the whole old file or the whole new one every time.
#   2. On a 2 MB tmpfs filled to the last byte: `save`, `assets use-in-scenarios`,
#      `assets remove-children`, `assets edit-rs mass`, `assets edit lod`, `assets sounds bogie`,
#      `assets clone-vehicle` and `ap unpack`
#      must fail with exit code 2 and leave every original byte for byte.
#   3. `velmora-cli ap unpack` of a route's archive killed at random moments, N times: every file
#      it unpacked is whole (as 7zz unpacks it), and no file that was there before is touched.
# Prints one line per drill and exits non-zero when any round went wrong.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BIN="${VELMORA_BUILD_DIR:-$ROOT/build}/bin"
ROUNDS="${ROUNDS:-40}"
WORK="$(mktemp -d /tmp/velmora-drills.XXXXXX)"
FULL="$WORK/full"
cleanup() {
  mountpoint -q "$FULL" 2>/dev/null && umount "$FULL"
  rm -rf "$WORK"
}
trap cleanup EXIT
failed=0

# A document of about 7 MB: many items with a name and a count.
awk 'BEGIN {
  printf "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<cBlueprintLoader xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n\t<Blueprint>\r\n"
  for (i = 0; i < 275000; i++)
    printf "\t\t<cItem d:id=\"%d\">\r\n\t\t\t<Name d:type=\"cDeltaString\">item %d of a long list of things that fills the document</Name>\r\n\t\t\t<Count d:type=\"sInt32\">%d</Count>\r\n\t\t</cItem>\r\n", 100000 + i, i % 30000, i
  printf "\t</Blueprint>\r\n</cBlueprintLoader>\r\n" }' >"$WORK/old.xml"
sed 's/of a long list/of a longer list/' "$WORK/old.xml" >"$WORK/new.xml"
"$BIN/velmora-serz" "$WORK/old.xml" "bin:$WORK/old.bin" >/dev/null
"$BIN/velmora-serz" "$WORK/new.xml" "bin:$WORK/new.bin" >/dev/null

# 1. Kills, at random moments over the time an undisturbed save takes.
mkdir -p "$WORK/kill"
cp "$WORK/old.bin" "$WORK/kill/Scenario.bin"
start=$(date +%s%N)
"$BIN/velmora-cli" --quiet --home "$WORK/home" save "$WORK/new.xml" --to "$WORK/kill/Scenario.bin" >/dev/null
span_ms=$((($(date +%s%N) - start) / 1000000 + 1))
old=0 new=0 neither=0
for ((i = 1; i <= ROUNDS; i++)); do
  rm -f "$WORK/kill/"* "$WORK/kill/".??* 2>/dev/null || true
  cp "$WORK/old.bin" "$WORK/kill/Scenario.bin"
  "$BIN/velmora-cli" --quiet --home "$WORK/home" save "$WORK/new.xml" --to "$WORK/kill/Scenario.bin" >/dev/null 2>&1 &
  pid=$!
  delay=$(((RANDOM * 32768 + RANDOM) % span_ms))
  sleep "$((delay / 1000)).$(printf '%03d' $((delay % 1000)))"
  kill -KILL "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  if cmp -s "$WORK/kill/Scenario.bin" "$WORK/old.bin"; then
    old=$((old + 1))
  elif cmp -s "$WORK/kill/Scenario.bin" "$WORK/new.bin"; then
    new=$((new + 1))
  else
    neither=$((neither + 1))
    echo "round $i: Scenario.bin is $(stat -c %s "$WORK/kill/Scenario.bin") bytes of neither" >&2
  fi
done
echo "kill drill: $ROUNDS kills within the ${span_ms} ms of a $(stat -c %s "$WORK/old.bin")-byte save: $old whole-old, $new whole-new, $neither broken"
((neither == 0)) || failed=1

# 3. Kills during an unpack (before the full disk, which may be skipped).
"$BIN/velmora-cli" --quiet --home "$WORK/home" demo-install "$WORK/demo" >/dev/null
ap="$(find "$WORK/demo/Content/Routes" -name MainContent.ap | head -1)"
7zz x -y -bso0 -bsp0 -o"$WORK/reference" "$ap" >/dev/null 2>&1 || true
mkdir -p "$WORK/unpack"
start=$(date +%s%N)
"$BIN/velmora-cli" --quiet --home "$WORK/home" ap extract "$ap" --to "$WORK/unpack/t" >/dev/null
span_ms=$((($(date +%s%N) - start) / 1000000 + 1))
broken=0 whole=0
for ((i = 1; i <= ROUNDS; i++)); do
  rm -rf "$WORK/unpack/t"
  mkdir -p "$WORK/unpack/t"
  echo keep >"$WORK/unpack/t/RouteProperties.xml"
  "$BIN/velmora-cli" --quiet --home "$WORK/home" ap extract "$ap" --to "$WORK/unpack/t" --mode skip >/dev/null 2>&1 &
  pid=$!
  delay=$(((RANDOM * 32768 + RANDOM) % span_ms))
  sleep "$((delay / 1000)).$(printf '%03d' $((delay % 1000)))"
  kill -KILL "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  [ "$(cat "$WORK/unpack/t/RouteProperties.xml")" = keep ] || { broken=$((broken + 1)); echo "round $i: a file there was touched" >&2; }
  while IFS= read -r f; do
    rel="${f#"$WORK/unpack/t/"}"
    [ "$rel" = RouteProperties.xml ] && continue
    if cmp -s "$f" "$WORK/reference/$rel"; then whole=$((whole + 1)); else
      broken=$((broken + 1))
      echo "round $i: $rel is not whole" >&2
    fi
  done < <(find "$WORK/unpack/t" -type f ! -name '*.velmora-tmp')
done
echo "unpack kill drill: $ROUNDS kills within the ${span_ms} ms of an unpack: $whole files whole, $broken broken"
((broken == 0)) || failed=1

# 2. A full disk.
mkdir -p "$FULL"
if ! mount -t tmpfs -o size=2m tmpfs "$FULL" 2>/dev/null; then
  echo "full-disk drill: skipped (cannot mount a tmpfs here; run as root)"
  exit "$failed"
fi
RW="$FULL/rw"
mkdir -p "$RW/Assets/DemoRail/Class66Pack" "$RW/Content/Routes"
touch "$RW/RailWorks.exe"
cp -r "$WORK/demo/Assets/DemoRail/Class66Pack/RailVehicles" "$RW/Assets/DemoRail/Class66Pack/"
engine="$(cd "$RW/Assets" && find DemoRail -path '*Engine*' -name '*.bin' | head -1)"
# A scenery blueprint not yet offered in scenarios, and a 1 MB document to save over.
"$BIN/velmora-cli" --quiet --home "$WORK/home" open "$WORK/demo/Assets/DemoRail/Class66Pack/Scenery/Buildings/SignalBox.bin" \
  --xml "$WORK/box.xml" >/dev/null
sed 's/>eTrue</>eFalse</' "$WORK/box.xml" >"$WORK/hidden.xml"
mkdir -p "$RW/Assets/DemoRail/Class66Pack/Scenery"
"$BIN/velmora-serz" "$WORK/hidden.xml" "bin:$RW/Assets/DemoRail/Class66Pack/Scenery/Hidden.bin" >/dev/null
head -c 1096718 "$WORK/old.bin" >"$FULL/Big.bin"
"$BIN/velmora-cli" --quiet --home "$WORK/home" open "$FULL/Big.bin" --xml "$WORK/big.xml" >/dev/null 2>&1 ||
  cp "$WORK/old.xml" "$WORK/big.xml"
mkdir -p "$RW/Assets/Heritage/SteamDays"
cp "$WORK/demo/Assets/Heritage/SteamDays/SteamDaysAssets.ap" "$RW/Assets/Heritage/SteamDays/"
dd if=/dev/zero of="$FULL/filler" bs=4k 2>/dev/null || true
(cd "$FULL" && find . -type f -exec sha256sum {} + | sort) >"$WORK/before.sums"
child="$("$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets children "$engine" 2>/dev/null | head -1 || true)"

run_full() {
  local what="$1"
  shift
  set +e
  "$@" >"$WORK/out.txt" 2>"$WORK/err.txt"
  local code=$?
  set -e
  (cd "$FULL" && find . -type f -exec sha256sum {} + | sort) >"$WORK/after.sums"
  local leftovers
  leftovers="$(find "$FULL" -name '*.velmora-tmp' | wc -l)"
  if [ "$code" = 2 ] && cmp -s "$WORK/before.sums" "$WORK/after.sums" && [ "$leftovers" = 0 ]; then
    echo "full-disk drill: $what: exit 2, every original byte for byte: $(head -1 "$WORK/err.txt")"
  else
    echo "full-disk drill: $what: FAILED (exit $code, $leftovers temporary files left)" >&2
    diff "$WORK/before.sums" "$WORK/after.sums" >&2 || true
    cat "$WORK/err.txt" >&2
    failed=1
  fi
}
run_full "save" "$BIN/velmora-cli" --home "$WORK/home" save "$WORK/new.xml" --to "$FULL/Big.bin"
run_full "use-in-scenarios" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets use-in-scenarios \
  "DemoRail/Class66Pack/Scenery/Hidden.bin"
if [ -n "$child" ]; then
  run_full "remove-children" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets remove-children \
    "$engine" "$child" --as Stripped
else
  echo "full-disk drill: remove-children: skipped (the engine lists no child entries)"
fi
run_full "edit-rs mass" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets edit-rs mass \
  "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin" "$engine" --mass 12.5 --capacity 40
run_full "edit lod" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets edit lod \
  "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin" "$engine" --min 20 --max 3000
run_full "sounds bogie" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" assets sounds bogie \
  "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin" "$engine" --bogie BG_Steam
run_full "clone-vehicle" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" --yes assets clone-vehicle \
  "$engine" --as DemoRail/Class66Pack/RailVehicles/Diesel/Class66Copy
run_full "ap unpack" "$BIN/velmora-cli" --home "$WORK/home" --railworks "$RW" ap unpack \
  "$RW/Assets/Heritage/SteamDays/SteamDaysAssets.ap"

exit "$failed"
