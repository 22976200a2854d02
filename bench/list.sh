#!/usr/bin/env bash
# Sorts one million survey-point rows (about 48 MB, ";"-separated UTF-8) through the list engine with
# `kw list` (read, sort, print the aligned report) by a number column and by a text column, and in the
# same run with `sort -t';' -k` on the same file (numbers: -k3,3n; text: -k5,5 under a UTF-8 locale
# and under LC_ALL=C), and prints the times and the ratios.
#
# usage: bench/list.sh [BUILD_DIR] [ROWS]     (BUILD_DIR defaults to build/release)
# Each command runs three times; the best wall-clock time counts, with the CPU time (user + system)
# of that run beside it. GNU sort uses its default number of threads; kw list uses one.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build/release}
rows=${2:-1000000}
kw=$build/tools/kw/kw
[ -x "$kw" ] || { echo "no kw at $kw (build the release preset first)" >&2; exit 1; }

utf8=$(locale -a 2>/dev/null | grep -iE '^(de_DE|en_US|en_GB)\.utf-?8$' | head -1 || true)
[ -n "$utf8" ] || utf8=$(locale -a 2>/dev/null | grep -iE '^C\.utf-?8$' | head -1 || true)
[ -n "$utf8" ] || { echo "no UTF-8 locale at all (locale -a)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
data=$work/points.csv
python3 "$here/gen_points.py" "$rows" "$data"
echo "== $rows rows, $(du -m "$data" | cut -f1) MB =="

# run COMMAND...: best of three wall-clock times; prints "seconds cpu-seconds".
run() {
  local best="" cpu="" out
  for _ in 1 2 3; do
    out=$( { /usr/bin/time -f "%e %U %S" "$@" >"$work/out"; } 2>&1 | tail -1)
    read -r real user sys <<<"$out"
    if [ -z "$best" ] || awk -v a="$real" -v b="$best" 'BEGIN{exit !(a<b)}'; then
      best=$real
      cpu=$(awk -v u="$user" -v s="$sys" 'BEGIN{printf "%.2f", u+s}')
    fi
  done
  echo "$best $cpu"
}

line() { printf '%-40s %7s s wall %7s s cpu\n' "$1" "$2" "$3"; }
ratio() { awk -v n="$1" -v a="$2" -v ac="$3" -v b="$4" -v bc="$5" 'BEGIN{printf "ratio %-33s %.2f wall, %.2f cpu\n", n, a/b, ac/bc}'; }

read -r kT kC < <(run "$kw" list "$data" --type 3=number --sort 3)
[ "$(wc -l <"$work/out")" -eq "$rows" ] || { echo "kw list lost rows" >&2; exit 1; }
read -r sT sC < <(run env LC_ALL=C sort -t';' -k3,3n "$data")
echo
echo "-- by a number column (height) --"
line "kw list --type 3=number --sort 3" "$kT" "$kC"
line "sort -t';' -k3,3n (LC_ALL=C)" "$sT" "$sC"
ratio "sort/kw:" "$sT" "$sC" "$kT" "$kC"

read -r kT kC < <(run "$kw" list "$data" --sort 5)
read -r uT uC < <(run env LC_ALL="$utf8" sort -t';' -k5,5 "$data")
read -r cT cC < <(run env LC_ALL=C sort -t';' -k5,5 "$data")
echo
echo "-- by a text column (collation; sort: locale order) --"
line "kw list --sort 5" "$kT" "$kC"
line "sort -t';' -k5,5 ($utf8)" "$uT" "$uC"
line "sort -t';' -k5,5 (LC_ALL=C)" "$cT" "$cC"
ratio "sort($utf8)/kw:" "$uT" "$uC" "$kT" "$kC"
ratio "sort(C)/kw:" "$cT" "$cC" "$kT" "$kC"

read -r kT kC < <(run "$kw" list "$data")
echo
line "kw list, no sort (read and print only)" "$kT" "$kC"
