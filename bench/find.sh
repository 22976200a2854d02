#!/usr/bin/env bash
# Finds a rare literal (case exact and case-blind), counts its matches and replaces all of them in a
# 200 MB text file held in memory as a document (find_bench), and in the same run does the same with
# `grep -c`, `grep -ci` and `sed` on the file; prints GB/s of the file side by side.
#
# usage: bench/find.sh [BUILD_DIR] [MEGABYTES]     (BUILD_DIR defaults to build/release, MEGABYTES to 200)
# Two more rows show the other search paths on the same text (backwards over the chunks, and the line
# search that marked-lines-only takes) beside grep -ci.
# grep and sed run three times each (best wall-clock time), with LC_ALL=C; the file is in the page cache.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build/release}
mb=${2:-200}
bench=$build/bench/find_bench
[ -x "$bench" ] || { echo "no find_bench at $bench (build the release preset first)" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
file=$work/text.txt

# Lines of random words; the needle in varying case about once per megabyte.
python3 - "$file" "$mb" <<'PY'
import random, sys
random.seed(3)
words = ["alpha", "beta", "gamma", "delta", "Vermessung", "Grenze", "punkt", "12.5", "x", "Zyxwvu"]
block = "".join(" ".join(random.choice(words) for _ in range(9)) + "\r\n" for _ in range(20000)).encode()
with open(sys.argv[1], "wb") as f:
    size = 0
    i = 0
    while size < int(sys.argv[2]) * 1000000:
        cut = block.index(b"\r\n", (i * 7919) % (len(block) - 100)) + 2
        needle = b"Zyxwvut " if i % 2 else b"zYXwvUT "
        part = block[:cut] + needle + block[cut:]
        f.write(part)
        size += len(part)
        i += 1
PY
bytes=$(stat -c %s "$file")
cat "$file" >/dev/null

best() {  # best wall-clock seconds of three runs of a command
  local b=""
  for _ in 1 2 3; do
    local s e
    s=$(date +%s.%N); "$@" >/dev/null; e=$(date +%s.%N)
    b=$(awk -v a="$s" -v z="$e" -v b="$b" 'BEGIN{t=z-a; if (b=="" || t<b) b=t; printf "%.4f", b}')
  done
  echo "$b"
}
export LC_ALL=C
g=$(best grep -c Zyxwvut "$file" || true)
gi=$(best grep -ci zyxwvut "$file" || true)
s=$(best sed 's/Zyxwvut/Replaced!/g' "$file")
echo "matches: grep -c $(grep -c Zyxwvut "$file"), grep -ci $(grep -ci zyxwvut "$file")"

json=$work/bench.json
KW_FIND_FILE=$file "$bench" --benchmark_format=json --benchmark_out="$json" --benchmark_out_format=json \
  --benchmark_repetitions=3 --benchmark_report_aggregates_only=true >/dev/null
python3 - "$json" "$bytes" "$g" "$gi" "$s" <<'PY'
import json, sys
data = json.load(open(sys.argv[1]))
size = int(sys.argv[2])
peer = {"grep -c": float(sys.argv[3]), "grep -ci": float(sys.argv[4]), "sed s///g": float(sys.argv[5])}
ours = {}
for b in data["benchmarks"]:
    if b.get("aggregate_name") != "median":  # run_name carries no suffix in newer versions
        continue
    t = b["real_time"] / 1000.0  # milliseconds
    ours[b["run_name"].replace("/real_time", "")] = (t, b.get("matches", b.get("replaced", 0)))
rows = [("find, case exact, count", "BM_FindCount/matchCase:1", "grep -c"),
        ("find, case-blind, count", "BM_FindCount/matchCase:0", "grep -ci"),
        ("replace all", "BM_ReplaceAll", "sed s///g"),
        ("case-blind, backwards", "BM_FindCountOther/markedLines:0", "grep -ci"),
        ("case-blind, marked lines", "BM_FindCountOther/markedLines:1", "grep -ci")]
print(f"file: {size/1e6:.0f} MB; GB/s of the file (kw document in memory / peer tool on the cached file)")
print(f"{'task':26} {'kw GB/s':>8} {'matches':>8} {'peer':>10} {'peer GB/s':>10} {'ratio':>6}")
for name, key, p in rows:
    t, m = ours[key]
    kw = size / t / 1e9
    pg = size / peer[p] / 1e9
    print(f"{name:26} {kw:8.2f} {int(m):8d} {p:>10} {pg:10.2f} {kw/pg:6.2f}")
PY
