#!/usr/bin/env python3
"""Writes survey-point rows for the list benchmarks: number;east;height;code;text (UTF-8 with a mark).

usage: gen_points.py ROWS FILE
"""
import random
import sys

WORDS = ["Haus", "Straße", "Müller", "Mueller", "Bäckerei", "Öl", "Übung", "Zahl", "Größe", "Masse", "Maße",
         "Vermessung", "Grenzstein", "Fläche", "Köln", "Winkel", "Mauer", "Schacht"]
CODES = ["GP", "FP", "BP", "MP", "HP", "SP"]


def main():
    rows, path = int(sys.argv[1]), sys.argv[2]
    rng = random.Random(3)
    with open(path, "w", encoding="utf-8-sig", newline="\n") as out:
        for _ in range(rows):
            out.write(f"{rng.randint(1, 9999999)};{rng.uniform(512000, 514000):.3f};{rng.uniform(90, 120):.3f};"
                      f"{rng.choice(CODES)};{rng.choice(WORDS)} {rng.choice(WORDS)} {rng.randint(1, 999)}\n")


if __name__ == "__main__":
    main()
