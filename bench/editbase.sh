#!/usr/bin/env bash
# Loads a text file of about 200 MB into the text buffer (bench/editbase_bench), in UTF-8 and in CP1252,
# and runs `wc -l` and `iconv -t UTF-16LE` on the same files in the same run; prints MB/s and the ratio
# of the buffer's load time to iconv's. Then the buffer's lookups, line reads, insertion and the undo
# and redo of one million records. Times are CPU seconds (user + system) on both sides, so that other
# work on a shared machine does not enter the comparison.
# Usage: bench/editbase.sh [MEGABYTES]   (builds the release preset when needed)
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
megabytes="${1:-200}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

bench="$here/build/release/bench/editbase_bench"
if [[ ! -x "$bench" ]]; then
  (cd "$here" && cmake --preset release >/dev/null && cmake --build --preset release -j2 --target editbase_bench >/dev/null)
fi

# German text with CR LF line ends: the sample repeated with numbered lines until the size is reached.
sample="$here/samples/german-utf8-nobom.txt"
awk -v target=$((megabytes * 1000000)) '
  { sub(/\r$/, ""); lines[NR] = $0 }
  END { size = 0; n = 0
        while (size < target) { for (i = 1; i <= NR; i++) { line = (++n) " " lines[i]; printf "%s\r\n", line; size += length(line) + 2 } } }
' "$sample" > "$work/de.utf8"
iconv -f UTF-8 -t CP1252 "$work/de.utf8" > "$work/de.cp1252"
size() { stat -c %s "$1"; }
echo "data: $(size "$work/de.utf8") bytes UTF-8, $(size "$work/de.cp1252") bytes CP1252, $(wc -l < "$work/de.utf8") lines"

best_seconds() {  # command...: least CPU time (user + system) of three runs, output discarded
  local best=999999
  for _ in 1 2 3; do
    local t
    t=$( { /usr/bin/time -f "%U %S" "$@" > /dev/null; } 2>&1 | tail -1 | awk '{ print $1 + $2 }')
    best=$(awk -v t="$t" -v b="$best" 'BEGIN { print (t < b ? t : b) }')
  done
  echo "$best"
}
mbs() { awk -v n="$(size "$1")" -v t="$2" 'BEGIN { printf "%.1f", n / t / 1000000 }'; }

KW_BENCH_UTF8="$work/de.utf8" KW_BENCH_CP1252="$work/de.cp1252" "$bench" --benchmark_format=csv \
  2>/dev/null > "$work/bench.csv"
# A column of a benchmark's row.
col() { awk -F, -v name="\"$1" -v c="$2" '$1 ~ "^" name { print $c; exit }' "$work/bench.csv"; }

printf "%-8s %12s %12s %12s %16s\n" "file" "kw load MB/s" "wc -l MB/s" "iconv MB/s" "kw time / iconv"
for enc in utf8 cp1252; do
  file="$work/de.$enc"
  from=$([[ $enc == utf8 ]] && echo UTF-8 || echo CP1252)
  t_wc=$(best_seconds wc -l "$file")
  t_iconv=$(best_seconds iconv -f "$from" -t UTF-16LE "$file")
  name=$([[ $enc == utf8 ]] && echo BM_LoadUtf8 || echo BM_LoadCp1252)
  # cpu_time (column 4) is in milliseconds per load.
  t_kw=$(awk -v ms="$(col "$name" 4)" 'BEGIN { print ms / 1000 }')
  printf "%-8s %12s %12s %12s %15.2fx\n" "$enc" "$(mbs "$file" "$t_kw")" "$(mbs "$file" "$t_wc")" \
    "$(mbs "$file" "$t_iconv")" "$(awk -v a="$t_kw" -v b="$t_iconv" 'BEGIN { print a / b }')"
done
printf "random LineStart:        %10.3f us per lookup (CPU)\n" "$(col BM_RandomLineStart 4)"
printf "sequential TextOfLine:   %10.0f ms for all lines (CPU)\n" "$(col BM_SequentialLineReads 4)"
printf "insert+delete in middle: %10.3f us per pair (CPU)\n" "$(col BM_InsertInTheMiddle 4)"
printf "undo+redo 1M records:    %10.0f ms (CPU)\n" "$(col BM_UndoRedoMillionRecords 4)"
