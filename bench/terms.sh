#!/bin/sh
# Speed of compiled terms against mawk (substr over the same lines as a file) and, for arithmetic,
# muparser (fields read with strtod, the expression compiled once), all in one run. Prints lines per
# second (CPU time) and the ratios. Usage: bench/terms.sh [build-dir]   (default build/release)
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}

# muparser is installed here only, for the comparison; the library and CI do not need it.
if ! dpkg -s libmuparser-dev >/dev/null 2>&1; then
  if [ "$(id -u)" = 0 ]; then apt-get install -y libmuparser-dev >/dev/null || true
  else sudo apt-get install -y libmuparser-dev >/dev/null || true; fi
fi
command -v mawk >/dev/null || { echo "mawk is not installed" >&2; exit 1; }

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" --target terms_bench -j2 >/dev/null
bench=$build/bench/terms_bench

data=$(mktemp /tmp/terms_bench.XXXXXX)
json=$(mktemp /tmp/terms_bench.XXXXXX)
trap 'rm -f "$data" "$json"' EXIT
"$bench" --write-data "$data"
lines=$(wc -l <"$data")

"$bench" --benchmark_format=json --benchmark_repetitions=3 --benchmark_report_aggregates_only=true >"$json"

# CPU seconds (user + system) of a command, best of three.
cpu() {
  best=
  for _ in 1 2 3; do
    t=$( { /usr/bin/env time -f '%U %S' "$@" >/dev/null; } 2>&1 | tail -1 | awk '{print $1 + $2}')
    if [ -z "$best" ] || awk "BEGIN{exit !($t < $best)}"; then best=$t; fi
  done
  echo "$best"
}
# mawk reads the file ten times over, so that the timer's hundredths of a second do not matter.
files="$data $data $data $data $data $data $data $data $data $data"
mawk_math=$(cpu mawk '{s+=substr($0,10,10)*2+substr($0,21,10)} END{print s}' $files)
mawk_logi=$(cpu mawk '{if (substr($0,10,10)+0 > 500 && index(substr($0,42,9),"X")) n++} END{print n}' $files)

python3 - "$json" "$lines" "$mawk_math" "$mawk_logi" <<'PY'
import json, sys
data = json.load(open(sys.argv[1]))
lines, mawk_math, mawk_logi = 10 * int(sys.argv[2]), float(sys.argv[3]), float(sys.argv[4])
rate = {}
for b in data["benchmarks"]:
    if b.get("aggregate_name") == "median":
        rate[b["run_name"]] = b["lines/s"]
def mawk_rate(sec): return lines / sec if sec > 0 else float("inf")  # mawk read the lines ten times
m, l, mu = rate.get("BM_MathTerm"), rate.get("BM_LogiTerm"), rate.get("BM_MuParser")
print(f"arithmetic [10-19]*2+[21-30]        KwMathTerm {m/1e6:8.2f} M lines/s   mawk {mawk_rate(mawk_math)/1e6:8.2f}   ratio {m/mawk_rate(mawk_math):5.2f}")
if mu:
    print(f"                                     muparser   {mu/1e6:8.2f} M lines/s                 ratio {m/mu:5.2f}")
else:
    print("                                     muparser not installed: no comparison")
print(f"logical [10-19]>500 AND [42-50]='X' KwLogiTerm {l/1e6:8.2f} M lines/s   mawk {mawk_rate(mawk_logi)/1e6:8.2f}   ratio {l/mawk_rate(mawk_logi):5.2f}")
PY
