#!/usr/bin/env bash
# Sorts one million lines (about 60 MB of mixed German text) with `kw sort` and, in the same run, with
# GNU sort under each installed UTF-8 locale (C.UTF-8 and a language one) and with LC_ALL=C, and prints
# the times and the ratios (above 1: kw sort is faster).
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

# The UTF-8 locales for sort: C.UTF-8 (code-point collation) and a language one (German first), each
# that is installed. (A German one: localedef -i de_DE -f UTF-8 de_DE.UTF-8, or the locales-all package.)
locales=()
c8=$(locale -a 2>/dev/null | grep -iE '^C\.utf-?8$' | head -1 || true)
[ -n "$c8" ] && locales+=("$c8")
for lang in de_DE en_US en_GB; do
  l=$(locale -a 2>/dev/null | grep -iE "^$lang\.utf-?8$" | head -1 || true)
  if [ -n "$l" ]; then locales+=("$l"); break; fi
done
[ ${#locales[@]} -gt 0 ] || { echo "no UTF-8 locale at all (locale -a)" >&2; exit 1; }
[ ${#locales[@]} -gt 1 ] || echo "note: no language UTF-8 locale is installed; only ${locales[0]}"

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
  [ "$(wc -l <"$work/kw.out")" -eq "$lines" ] || { echo "kw sort lost lines" >&2; exit 1; }
  printf '%-28s %8s s wall %8s s cpu\n' "kw sort" "$kwT" "$kwC"
  for l in "${locales[@]}" C; do
    read -r t c < <(run env LC_ALL="$l" sort "$data" -o "$work/sort.out")
    printf '%-28s %8s s wall %8s s cpu   ratio sort/kw: %s wall, %s cpu\n' "sort (LC_ALL=$l)" "$t" "$c" \
      "$(awk -v a="$t" -v b="$kwT" 'BEGIN{printf "%.2f", a/b}')" "$(awk -v a="$c" -v b="$kwC" 'BEGIN{printf "%.2f", a/b}')"
  done
done
