#!/bin/sh
# End to end, load and save included: `kw calc` (a column calculation into new columns) and
# `kw select --delete` (line selection with a logical term) over a 200 MB file of surveying points in
# fixed columns, beside mawk doing the same work with substr and writing a file, in the same run.
# Prints the best wall-clock seconds of three runs, the ratios (mawk / kw: above 1 means kw is faster)
# and whether both wrote the same bytes.
# Usage: bench/calc.sh [build-dir] [megabytes]   (defaults build/release, 200)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
megabytes=${2:-200}
command -v mawk >/dev/null || { echo "mawk is not installed" >&2; exit 1; }

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" --target kw -j2 >/dev/null
kw=$build/tools/kw/kw

work=$(mktemp -d /tmp/kw_calc_bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
data=$work/points.txt
python3 "$root/bench/gen_fixed_points.py" "$megabytes" "$data"
lines=$(wc -l <"$data")
bytes=$(wc -c <"$data")

# Best wall-clock seconds of three runs of a program.
seconds() {
  best=
  for _ in 1 2 3; do
    /usr/bin/time -f '%e' -o "$work/time" "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; exit 1; }
    t=$(tail -1 "$work/time")
    if [ -z "$best" ] || awk "BEGIN{exit !($t < $best)}"; then best=$t; fi
  done
  echo "$best"
}
# mawk writes its file through sh -c: PROGRAM DATA OUT.
mawk_to='mawk "$1" "$2" >"$3"'

# Height above 90 m into columns 49-57, the line first filled with blanks up to column 48.
calc_kw=$(seconds "$kw" calc "$data" --term '[33-41]-90' --into 49-57 --picture '####.###' -o "$work/calc.kw")
calc_awk=$(seconds sh -c "$mawk_to" sh '{printf "%-48s%9.3f\n", $0, substr($0,33,9)-90}' "$data" "$work/calc.awk")
# Lines with code GP deleted.
sel_kw=$(seconds "$kw" select "$data" --where "[44-46]='GP'" --delete -o "$work/select.kw")
sel_awk=$(seconds sh -c "$mawk_to" sh 'substr($0,44,3)!="GP"' "$data" "$work/select.awk")

same() { if cmp -s "$1" "$2"; then echo "same bytes"; else echo "OUTPUTS DIFFER"; fi; }
echo "$lines lines, $bytes bytes; best of three, wall clock, load and save included"
awk -v k="$calc_kw" -v m="$calc_awk" -v s="$(same "$work/calc.kw" "$work/calc.awk")" \
  'BEGIN{printf "calc   [33-41]-90 into 49-57    kw %6.2f s   mawk %6.2f s   mawk/kw %5.2f   %s\n", k, m, m/k, s}'
awk -v k="$sel_kw" -v m="$sel_awk" -v s="$(same "$work/select.kw" "$work/select.awk")" \
  'BEGIN{printf "select --delete [44-46]=GP      kw %6.2f s   mawk %6.2f s   mawk/kw %5.2f   %s\n", k, m, m/k, s}'
