#!/usr/bin/env bash
# Converts about 100 MB of German text with the library (bench/codepages_bench) and with iconv in the same
# run and prints MB/s and the ratio for UTF-8 -> UTF-16, UTF-16 -> UTF-8 and CP1252 -> UTF-16.
# Usage: bench/codepages.sh [MEGABYTES]   (builds the release preset when needed)
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
megabytes="${1:-100}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

bench="$here/build/release/bench/codepages_bench"
if [[ ! -x "$bench" ]]; then
  (cd "$here" && cmake --preset release >/dev/null && cmake --build --preset release -j2 --target codepages_bench >/dev/null)
fi

# German text: the sample repeated with numbered lines until the size is reached.
sample="$here/samples/german-utf8-nobom.txt"
awk -v target=$((megabytes * 1000000)) '
  { lines[NR] = $0 }
  END { size = 0; n = 0
        while (size < target) { for (i = 1; i <= NR; i++) { line = (++n) " " lines[i]; print line; size += length(line) + 1 } } }
' "$sample" > "$work/de.utf8"
iconv -f UTF-8 -t UTF-16LE "$work/de.utf8" > "$work/de.utf16"
iconv -f UTF-8 -t CP1252 "$work/de.utf8" > "$work/de.cp1252"
size() { stat -c %s "$1"; }
echo "data: $(size "$work/de.utf8") bytes UTF-8, $(size "$work/de.utf16") bytes UTF-16, $(size "$work/de.cp1252") bytes CP1252"

# iconv: best of three runs, output discarded.
iconv_mbs() {  # from to file
  local best=999999
  for _ in 1 2 3; do
    local start end
    start=$(date +%s.%N)
    iconv -f "$1" -t "$2" "$3" > /dev/null
    end=$(date +%s.%N)
    best=$(awk -v s="$start" -v e="$end" -v b="$best" 'BEGIN { t = e - s; print (t < b ? t : b) }')
  done
  awk -v n="$(size "$3")" -v t="$best" 'BEGIN { printf "%.1f", n / t / 1000000 }'
}
i_u8=$(iconv_mbs UTF-8 UTF-16LE "$work/de.utf8")
i_u16=$(iconv_mbs UTF-16LE UTF-8 "$work/de.utf16")
i_cp=$(iconv_mbs CP1252 UTF-16LE "$work/de.cp1252")

"$bench" "$work/de.utf8" --benchmark_format=csv --benchmark_repetitions=3 \
  --benchmark_report_aggregates_only=true 2>/dev/null > "$work/bench.csv"
# bytes_per_second of the median row of a benchmark, in MB/s.
kw_mbs() { awk -F, -v name="\"$1_median\"" '$1 == name { printf "%.1f", $6 / 1000000 }' "$work/bench.csv"; }
k_u8=$(kw_mbs BM_Utf8ToUtf16)
k_u16=$(kw_mbs BM_Utf16ToUtf8)
k_cp=$(kw_mbs BM_Cp1252ToUtf16)
k_file=$(kw_mbs BM_KwFileReadUtf8)

printf "%-18s %12s %12s %8s\n" "direction" "kw MB/s" "iconv MB/s" "ratio"
row() { printf "%-18s %12.1f %12.1f %7.2fx\n" "$1" "$2" "$3" "$(awk -v a="$2" -v b="$3" 'BEGIN { print a / b }')"; }
row "UTF-8 -> UTF-16" "$k_u8" "$i_u8"
row "UTF-16 -> UTF-8" "$k_u16" "$i_u16"
row "CP1252 -> UTF-16" "$k_cp" "$i_cp"
printf "%-18s %12.1f   (KwFile::ReadBlock of the UTF-8 file, disk cache warm)\n" "KwFile UTF-8 read" "$k_file"
