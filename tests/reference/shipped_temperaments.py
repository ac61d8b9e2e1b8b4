"""Works the shipped temperaments out from their definitions and compares.

Usage: shipped_temperaments.py CLI_PATH TEMPERAMENTS_FILE

Each entry of the file must be its definition's value to the last digit that the file keeps, each
tool tip of the program likewise, and no tuning may be there twice.
"""

import itertools
import json
import math
import subprocess
import sys
from fractions import Fraction

import temperament_file

FIFTH = 1200 * math.log2(3 / 2)
PYTHAGOREAN_COMMA = 1200 * math.log2(3**12 / 2**19)
SYNTONIC_COMMA = 1200 * math.log2(81 / 80)


def circle(pythagorean="", syntonic=""):
    """Cents above C by the fifths C-G, G-D, D-A, A-E, E-B, B-F#, F#-C#, C#-G#, G#-Eb, Eb-Bb, Bb-F
    and F-C, each pure but for these parts of the commas (negative: narrow)."""
    commas = [[Fraction(part) for part in parts.split() or ["0"] * 12] for parts in (pythagorean, syntonic)]
    assert [len(parts) for parts in commas] == [12, 12]
    assert [sum(parts) for parts in commas] == [-1, 0], "the circle closes"
    cents, at = [0.0] * 12, 0.0
    for i, (p, s) in enumerate(zip(*commas)):
        cents[7 * i % 12] = at
        at = (at + FIFTH + p * PYTHAGOREAN_COMMA + s * SYNTONIC_COMMA) % 1200
    return cents


def narrowed(unit, *counts):
    """The fifths in the same order, narrow by so many of a part of the Pythagorean comma."""
    return circle(" ".join(str(-count * Fraction(unit)) for count in counts))


def meantone(part):
    """Eleven fifths from Eb to G# narrow by a part of the syntonic comma."""
    part = Fraction(part)
    return circle("0 0 0 0 0 0 0 0 -1 0 0 0", " ".join(str(11 * part if i == 8 else -part) for i in range(12)))


def ratios(text):
    return [1200 * math.log2(Fraction(ratio)) for ratio in text.split()]


def lengths(*strings):
    """Of a monochord, from C upward."""
    return [1200 * math.log2(strings[0] / length) for length in strings]


DEFINITIONS = {
    "1/3-comma meantone (Salinas, 1577)": meantone("1/3"),
    "1/4-comma meantone (Aaron, 1523)": meantone("1/4"),
    "1/5-comma meantone (Verheijen, c. 1600)": meantone("1/5"),
    "1/6-comma meantone (syntonic comma)": meantone("1/6"),
    "2/7-comma meantone (Zarlino, 1558)": meantone("2/7"),
    "2/9-comma meantone (Rossi, 1666)": meantone("2/9"),
    "Barnes (1979)": narrowed("1/6", 1, 1, 1, 1, 0, 1, 0, 0, 0, 0, 0, 1),
    "Bendeler I (c. 1690)": narrowed("1/3", 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0),
    "Bendeler II (c. 1690)": narrowed("1/3", 1, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0),
    "Bendeler III (c. 1690)": narrowed("1/4", 1, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0),
    "d'Alembert (1752)": narrowed("1/12", 3, 3, 3, 3, 1, 1, 1, 1, -1, -1, -1, -1),
    "Grammateus (1518)": narrowed("1/2", 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0),
    "Just intonation (Ellis duodene)": ratios("1 16/15 9/8 6/5 5/4 4/3 45/32 3/2 8/5 5/3 9/5 15/8"),
    "Kellner (1977)": narrowed("1/5", 1, 1, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0),
    "Kirnberger I (1766)": circle("0 0 0 0 0 0 -1 0 0 0 0 0", "0 0 -1 0 0 0 1 0 0 0 0 0"),
    "Kirnberger II (1771)": circle("0 0 0 0 0 0 -1 0 0 0 0 0", "0 0 -1/2 -1/2 0 0 1 0 0 0 0 0"),
    "Kirnberger III (1779)": circle("0 0 0 0 0 0 -1 0 0 0 0 0", "-1/4 -1/4 -1/4 -1/4 0 0 1 0 0 0 0 0"),
    "Lambert (1774)": narrowed("1/7", 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 1),
    "Lehman (2005)": narrowed("1/12", 2, 2, 2, 2, 0, 0, 0, 1, 1, 1, -1, 2),
    "Neidhardt Big City (1724)": narrowed("1/12", 2, 2, 2, 1, 0, 1, 1, 1, 0, 1, 1, 0),
    "Neidhardt II (1724)": narrowed("1/12", 2, 2, 2, 1, 0, 1, 1, 1, 0, 0, 1, 1),
    "Neidhardt Small Town (1732)": narrowed("1/12", 2, 2, 2, 2, 1, 1, 0, 0, 1, 1, 0, 0),
    "Neidhardt Village (1732)": narrowed("1/12", 1, 2, 3, 3, 0, 1, 0, 1, 0, 0, 1, 0),
    "Pythagorean": narrowed("1", 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0),
    "Pythagorean (Arnaut, c. 1440)": narrowed("1", 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0),
    "Rameau (1726)": circle("0 0 0 0 0 0 0 0 -1/2 -1/2 0 0", "-1/4 -1/4 -1/4 -1/4 -1/4 0 0 0 7/8 7/8 -1/4 -1/4"),
    "Silbermann (1/6 Pythagorean comma)": narrowed("1/6", 1, 1, 1, 1, 1, 1, 1, 1, -5, 1, 1, 1),
    "Sorge (1758)": narrowed("1/12", 2, 2, 2, 1, 0, 1, 1, 0, 1, 1, 1, 0),
    "Vallotti": narrowed("1/6", 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 1),
    "Werckmeister III (1691)": narrowed("1/4", 1, 1, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0),
    "Werckmeister IV (1691)": narrowed("1/3", 1, 0, 1, 0, 1, 0, 1, 0, -1, -1, 1, 0),
    "Werckmeister V (1691)": narrowed("1/4", 0, 0, 1, 1, 0, 0, 1, 1, -1, 0, 0, 1),
    "Werckmeister VI, D 175 (1691)": lengths(196, 186, 175, 165, 156, 147, 139, 131, 124, 117, 110, 104),
    "Werckmeister VI, D 176 (1691)": lengths(196, 186, 176, 165, 156, 147, 139, 131, 124, 117, 110, 104),
    "Young I (1800)": circle("0 0 0 0 -1/4 -1/4 0 0 0 0 -1/4 -1/4",
                             "-3/16 -3/16 -3/16 -3/16 3/16 3/16 0 0 0 0 3/16 3/16"),
    "Young II (1800)": narrowed("1/6", 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0),
}  # fmt: skip


def compare_entries(name, entries, cents):
    """The texts of a list with the cents above C they stand for, to the last digit of the list; where
    a number has fewer, zeros were left out."""
    assert len(entries) == 12, name
    digits = max(len(entry.partition(".")[2]) for entry in entries)
    assert digits >= 6, name
    is_cents = float(entries[0]) == 0
    assert is_cents or float(entries[0]) == 1, name
    for degree, (entry, expected) in enumerate(zip(entries, cents)):
        value = expected - 100 * degree if is_cents else 2 ** (expected / 1200)
        error = abs(float(entry) - value)
        assert error <= 0.5001 * 10.0**-digits, f"{name}, degree {degree}: {entry} is not {value}"


def compare_tip(name, tip, cents):
    """The tool tip of the program, with A at zero. Its rows are single precision, which moves each
    of two degrees by up to 0.00012 cents."""
    shown = [float(x) for x in tip.removeprefix("cents = (").removesuffix(")").split(", ")]
    for degree, (value, expected) in enumerate(zip(shown, cents, strict=True)):
        offset = expected - 100 * degree - (cents[9] - 900)
        assert abs(value - offset) <= 0.0005 + 0.00024, f"{name}, degree {degree}: {value} is not {offset:.6f}"


def differ(a, b):
    return max(abs(x - y) for x, y in zip(a, b)) > 0.01


def main(cli, path):
    with open(path, "rb") as file:
        data = file.read()
    assert data[:2] == b"\xff\xfe", "UTF-16, little endian, with its mark"
    table = temperament_file.parse(temperament_file.decode(data))
    assert list(table) == sorted(table, key=str.casefold), "the file has the order of the menu"
    assert set(table) == set(DEFINITIONS), set(table) ^ set(DEFINITIONS)
    for name, entries in table.items():
        compare_entries(name, entries, DEFINITIONS[name])

    run = subprocess.run([cli, "temperaments", "--json", "--temperaments", path], capture_output=True, text=True)
    assert (run.returncode, run.stderr) == (0, ""), run.stderr
    shown = [json.loads(line) for line in run.stdout.splitlines()]
    assert [one["name"] for one in shown] == list(table)
    for one in shown:
        compare_tip(one["name"], one["toolTip"], DEFINITIONS[one["name"]])

    rows = {name: [1200 * math.log2(x) for x in row] for name, row, _ in temperament_file.load(path)}
    rows["Equal temperament"] = [100.0 * degree for degree in range(12)]
    for (a, row_a), (b, row_b) in itertools.combinations(rows.items(), 2):
        assert differ(row_a, row_b), f"{a} is {b}"
    print(f"{len(table)} temperaments")


if __name__ == "__main__":
    main(*sys.argv[1:])
