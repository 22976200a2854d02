#!/usr/bin/env bash
# Area operations of the editor document over a large text (default 200 MB), and SortLines by a column
# range side by side with `sort -b -k2,2` (C and C.UTF-8 collation) on the same file in the same run.
#
# usage: bench/areaops.sh [BUILD_DIR] [MB]     (BUILD_DIR defaults to build/release)
# The benchmark program makes the text and writes it to a file; GNU sort then runs on that file three
# times, the best wall-clock time counts.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build/release}
mb=${2:-200}
bench=$build/bench/areaops_bench
[ -x "$bench" ] || { echo "no areaops_bench at $bench (build the release preset first)" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
data=$work/area.txt

KW_AREA_MB=$mb KW_AREA_FILE=$data "$bench" --benchmark_counters_tabular=true

size=$(du -m "$data" | cut -f1)
echo
echo "== sort -b -k2,2 on the same file ($size MB) =="
for loc in C C.UTF-8; do
  best=""
  for _ in 1 2 3; do
    t=$( { /usr/bin/time -f "%e" env LC_ALL=$loc sort -b -k2,2 "$data" -o "$work/sorted.txt"; } 2>&1 | tail -1)
    if [ -z "$best" ] || awk -v a="$t" -v b="$best" 'BEGIN{exit !(a<b)}'; then best=$t; fi
  done
  printf 'sort -b -k2,2 (LC_ALL=%-8s) %8s s wall  %8.1f ms/MB\n' "$loc" "$best" \
    "$(awk -v t="$best" -v m="$size" 'BEGIN{print t*1000/m}')"
done
