#!/bin/sh
# Instructions per byte of XML for the whole converter process, both ways, counted by callgrind
# (the counts are the same from run to run, unlike times on a shared machine).
#   bench/serz/instructions.sh BUILD_DIR [DOCUMENT.bin]
# Without a document it takes the largest Tracks.bin of the scale-100 demo install the
# benchmarks generate in BUILD_DIR/bench-demo (run bench_routes or bench_assets once first).
set -eu
build=${1:?usage: instructions.sh BUILD_DIR [DOCUMENT.bin]}
serz="$build/bin/velmora-serz"
doc=${2:-}
if [ -z "$doc" ]; then
    doc=$(find "$build/bench-demo/scale-100/Content/Routes" -name Tracks.bin -printf '%s %p\n' | sort -n | tail -1 | cut -d' ' -f2-)
fi
[ -f "$doc" ] || { echo "no document: $doc" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$doc" "$work/in.bin"
"$serz" "$work/in.bin" "/xml:$work/in.xml" >/dev/null
count() { # output file, then the converter's arguments
    out=$1
    shift
    valgrind --tool=callgrind --callgrind-out-file="$out" "$serz" "$@" 2>&1 >/dev/null | sed -n 's/.*refs: *//p' | tr -d ,
}
dec=$(count "$work/dec.cg" "$work/in.bin" "/xml:$work/out.xml")
enc=$(count "$work/enc.cg" "$work/in.xml" "/bin:$work/out.bin")
cmp -s "$work/out.xml" "$work/in.xml" || { echo "the decoded XML differs" >&2; exit 1; }
cmp -s "$work/out.bin" "$work/in.bin" || echo "note: the encoded document differs from the input (game-written?)"
bin=$(stat -c %s "$work/in.bin")
xml=$(stat -c %s "$work/in.xml")
echo "document: $doc ($bin bytes, $xml bytes of XML)"
awk -v d="$dec" -v e="$enc" -v x="$xml" 'BEGIN {
    printf "decode: %d instructions, %.2f per byte of XML\n", d, d / x
    printf "encode: %d instructions, %.2f per byte of XML\n", e, e / x }'
