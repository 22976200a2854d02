#!/usr/bin/env python3
"""Writes surveying points in fixed columns, as samples/points.txt has them, for the end-to-end
benchmark of `kw calc` and `kw select` (bench/calc.sh).

Columns (from 1): 1-6 point number, 9-20 easting, 21-32 northing, 33-41 height, 44- code.
usage: gen_fixed_points.py MEGABYTES FILE
"""
import random
import sys

CODES = ["GP", "GP", "GP", "FP", "BP", "HP", "GEB", "MP"]


def main():
    megabytes, path = int(sys.argv[1]), sys.argv[2]
    rng = random.Random(7)
    limit = megabytes * 1000 * 1000
    written = 0
    number = 100000
    with open(path, "w", encoding="ascii", newline="\n") as out:
        while written < limit:
            rows = []
            for _ in range(10000):
                number = number + 1 if number < 999999 else 100001
                east = 3512400 + rng.uniform(-5000, 5000)
                north = 5403700 + rng.uniform(-5000, 5000)
                height = 112.0 + (east - 3512400) * 0.002 + rng.uniform(-2.5, 2.5)
                rows.append(f"{number:>6}  {east:>12.3f}{north:>12.3f}{height:>9.3f}  {rng.choice(CODES)}\n")
            block = "".join(rows)
            out.write(block)
            written += len(block)


if __name__ == "__main__":
    main()
