#!/usr/bin/env python3
"""Writes LINES lines of mixed German text (about 60 bytes a line) for the sort benchmark.

usage: gen_german.py LINES OUT [utf8bom|ansi] [SEED]
The text mixes capitalised nouns, umlauts and sharp s, numbers, dates and a few underscores, so that the
collation's expansions and its case tie-break are exercised. The same seed gives the same file."""
import random
import sys

WORDS = """Haus Straße Müller Mueller Bäcker Bäckerei Öl Ölfeld Übung über Äpfel Apfel Zürich Köln München
Größe Grösse Maße Masse Fuß Fluss Schloß Schloss Gärten Garten Tür Türen Brücke Brücken Hügel Wald Wälder
Vermessung Grenzstein Flurstück Gemarkung Katasteramt Höhe Höhenpunkt Richtung Strecke Winkel Neigung Gefälle
Kreuzung Weg Wege Gasse Platz Plätze Ufer Bach Bäche Mühle Mühlen Schäfer Schäferei Förster Försterei
und oder aber nicht noch schon sehr ganz immer wieder dort hier heute morgen gestern später früher
der die das den dem des ein eine einer einem eines kein keine mit ohne für gegen durch um bei nach vor
schön groß klein älter jünger süß sauer weiß schwarz grün gelb rot blau grau braun hell dunkel
Änderung Ärger Öffnung Übergabe Übersicht Ähnlichkeit Ökologie Überfahrt Äußeres äußerst ähnlich
zeigen messen zählen prüfen ändern öffnen schließen fahren gehen laufen stehen liegen setzen legen
Zahl Zähler Nummer Punkt Punkte Linie Linien Fläche Flächen Grenze Grenzen Karte Karten Plan Pläne
Meier Maier Mayer Meyer Schmidt Schmitt Schneider Fischer Weber Wagner Becker Schulz Hoffmann Schäfer
Koch Bauer Richter Klein Wolf Schröder Neumann Schwarz Zimmermann Braun Krüger Hofmann Hartmann Lange
_intern _neu Ablage_alt Datei_1 Datei_10 Datei_2 Version_3""".split()


def line(rng):
    parts = []
    target = rng.randint(40, 80)
    length = 0
    while length < target:
        r = rng.random()
        if r < 0.06:
            w = str(rng.randint(0, 99999))
        elif r < 0.08:
            w = "%02d.%02d.%04d" % (rng.randint(1, 28), rng.randint(1, 12), rng.randint(1950, 2030))
        elif r < 0.10:
            w = "%d,%02d" % (rng.randint(0, 9999), rng.randint(0, 99))
        else:
            w = rng.choice(WORDS)
            if rng.random() < 0.05:
                w = w.upper()
            elif rng.random() < 0.05:
                w = w.lower()
        parts.append(w)
        length += len(w) + 1
    text = " ".join(parts)
    if rng.random() < 0.03:
        text = "  " + text
    return text


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    lines = int(sys.argv[1])
    out = sys.argv[2]
    form = sys.argv[3] if len(sys.argv) > 3 else "utf8bom"
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else 1
    rng = random.Random(seed)
    encoding = {"utf8bom": "utf-8-sig", "ansi": "cp1252"}[form]
    with open(out, "w", encoding=encoding, newline="\n") as f:
        chunk = []
        for _ in range(lines):
            chunk.append(line(rng))
            if len(chunk) == 10000:
                f.write("\n".join(chunk) + "\n")
                chunk = []
        if chunk:
            f.write("\n".join(chunk) + "\n")


if __name__ == "__main__":
    main()
