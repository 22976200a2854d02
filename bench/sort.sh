#!/usr/bin/env bash
# Sorts one million lines (about 60 MB of mixed German text) with `kw sort` and, in the same run, with
# GNU sort under a UTF-8 locale and with LC_ALL=C, and prints the times and the ratios.
#
# usage: bench/sort.sh [BUILD_DIR] [LINES]     (BUILD_DIR defaults to build/release)
# Each tool runs three times on the same file; the best wall-clock time counts, and the CPU time (user +
# system) of that run is shown beside it. GNU sort uses its default number of threads.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build/release}
lines=${2:-1000000}
kw=$build/tools/kw/kw
[ -x "$kw" ] || { echo "no kw at $kw (build the release preset first)" >&2; exit 1; }

# A UTF-8 locale for sort: a German or English one if installed, else C.UTF-8.
utf8=$(locale -a 2>/dev/null | grep -iE '^(de_DE|en_US|en_GB)\.utf-?8$' | head -1 || true)
if [ -z "$utf8" ]; then
  utf8=$(locale -a 2>/dev/null | grep -iE '^C\.utf-?8$' | head -1 || true)
  [ -n "$utf8" ] && echo "note: no language UTF-8 locale is installed; using $utf8 (code-point collation)"
fi
[ -n "$utf8" ] || { echo "no UTF-8 locale at all (locale -a)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# run NAME COMMAND...: best of three wall-clock times; prints "seconds cpu-seconds".
run() {
  local best="" cpu="" out
  for _ in 1 2 3; do
    out=$( { /usr/bin/time -f "%e %U %S" "$@" >/dev/null; } 2>&1 | tail -1)
    read -r real user sys <<<"$out"
    if [ -z "$best" ] || awk -v a="$real" -v b="$best" 'BEGIN{exit !(a<b)}'; then
      best=$real
      cpu=$(awk -v u="$user" -v s="$sys" 'BEGIN{printf "%.2f", u+s}')
    fi
  done
  echo "$best $cpu"
}

for form in utf8bom ansi; do
  data=$work/german-$form.txt
  python3 "$here/gen_german.py" "$lines" "$data" "$form"
  size=$(du -m "$data" | cut -f1)
  echo
  echo "== $lines lines, $size MB, $form =="
  read -r kwT kwC < <(run "$kw" sort "$data" -o "$work/kw.out")
  read -r uT uC < <(run env LC_ALL="$utf8" sort "$data" -o "$work/sort-utf8.out")
  read -r cT cC < <(run env LC_ALL=C sort "$data" -o "$work/sort-c.out")
  [ "$(wc -l <"$work/kw.out")" -eq "$lines" ] || { echo "kw sort lost lines" >&2; exit 1; }
  printf '%-28s %8s s wall %8s s cpu\n' "kw sort" "$kwT" "$kwC"
  printf '%-28s %8s s wall %8s s cpu\n' "sort ($utf8)" "$uT" "$uC"
  printf '%-28s %8s s wall %8s s cpu\n' "sort (LC_ALL=C)" "$cT" "$cC"
  awk -v k="$kwT" -v u="$uT" -v c="$cT" -v kc="$kwC" -v uc="$uC" -v cc="$cC" 'BEGIN{
    printf "ratio sort(%s)/kw: %.2f wall, %.2f cpu\n", "'"$utf8"'", u/k, uc/kc;
    printf "ratio sort(C)/kw:      %.2f wall, %.2f cpu\n", c/k, cc/kc }'
done
