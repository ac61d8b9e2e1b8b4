#!/usr/bin/env python3
"""Runs the terminal tuner and the reference on random cases; every field must agree exactly.

Usage: compare.py CLI_PATH [--cases N] [--seed S] [--only INDEX] [--resource FILE]
Exit 0 when all agree, 1 at the first mismatch (its files are kept) or when nothing was run.
"""

import argparse
import json
import math
import os
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
from decimal import Decimal

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import reading
import temperament_file
from cases import Case
from temperament_file import number_of

SINGLES = ("detected", "rawPeak", "frequency", "deviation", "idealFrequency", "difference")
INTEGERS = ("block", "peak", "peakHold", "cents")


class Mismatch(Exception):
    pass


class Number(str):
    """A JSON number as it was printed."""


def refuse(text):
    raise Mismatch(f"{text} is no JSON")


def json_lines(text):
    """(the line, what it says) of every line."""
    lines = []
    for line in text.splitlines():
        try:
            value = json.loads(line, parse_float=Number, parse_int=Number, parse_constant=refuse)
        except ValueError as error:
            raise Mismatch(f"not a JSON line: {line[:200]!r}: {error}") from None
        if not isinstance(value, dict):
            raise Mismatch(f"not a JSON object: {line[:200]!r}")
        lines.append((line, value))
    return lines


def bits(single):
    return struct.pack("<f", single)


def fewest_digits(single):
    """Digits of the shortest decimal that reads back to a finite single."""
    exact = Decimal(single)
    for digits in range(1, 10):
        step = Decimal(1).scaleb(exact.adjusted() - digits + 1)
        below = exact // step * step
        for candidate in (below, below + step.copy_sign(exact)):
            if bits(number_of(str(candidate))) == bits(single):
                return digits
    return 9


def shortest_length(single):
    """Characters of the shorter of the plain and the scientific form with the fewest digits."""
    if single == 0.0:
        return len("-0" if math.copysign(1.0, single) < 0 else "0")
    digits = fewest_digits(single)
    mantissa, exponent = (f"%.{digits - 1}e" % single).split("e")
    scientific = f"{mantissa}e{'-' if int(exponent) < 0 else '+'}{abs(int(exponent)):02d}"
    plain = format(Decimal(mantissa + "e" + exponent), "f")
    return min(len(scientific), len(plain))


def check_single(text, expected):
    if not math.isfinite(expected):
        return None if text is None else "null, for a value that is not finite"
    if not isinstance(text, Number) or bits(number_of(text)) != bits(expected):
        return f"{expected!r} ({expected.hex()})"
    # A large whole number may print all its digits: zeros in their place would be no shorter.
    if "." in text or "e" in text.lower():
        digits = re.sub(r"[eE].*", "", text).replace("-", "").replace(".", "").strip("0")
        if len(digits) > fewest_digits(expected):
            return f"{fewest_digits(expected)} digits"
    # A trailing ".0" marks a value as no integer and is let through.
    if len(text) > shortest_length(expected) + 2 * text.endswith(".0"):
        return f"a decimal of {shortest_length(expected)} characters"
    return None


def check_field(name, got, expected):
    """None when the field agrees, else what was expected."""
    if name in SINGLES and expected is not None:
        return check_single(got, expected)
    if name == "time":
        agrees = isinstance(got, Number) and float(got) == expected
    elif name == "cents" and expected is None:
        # No 32-bit integer holds the deviation; any integer will do.
        agrees = isinstance(got, Number) and re.fullmatch(r"-?\d+", got)
    elif name in INTEGERS:
        agrees = isinstance(got, Number) and re.fullmatch(r"-?\d+", got) and int(got) == expected
    else:
        agrees = type(got) is type(expected) and got == expected
    return None if agrees else repr(expected)


def check_readings(got, expected):
    for index, ((text, line), reference) in enumerate(zip(got, expected)):
        if set(line) != set(reference):
            raise Mismatch(f"reading {index}: fields {sorted(line)}, expected {sorted(reference)}")
        for name, value in reference.items():
            wanted = check_field(name, line[name], value)
            if wanted is not None:
                raise Mismatch(f"reading {index}: {name} is {line[name]!r}, expected {wanted}\n"
                               f"  program:   {text}\n"
                               f"  reference: {json.dumps(reference, ensure_ascii=False)}")  # fmt: skip
    if len(got) != len(expected):
        raise Mismatch(f"{len(got)} readings, expected {len(expected)}")


def check_temperaments(got, expected):
    # The sign of a not-a-number is the C library's own affair.
    listed = [(t.get("name"), str(t.get("toolTip")).replace("-nan", "nan")) for _, t in got]
    wanted = [(name, tip) for name, _, tip in expected]
    if listed != wanted:
        for index, pair in enumerate(zip(listed, wanted)):
            if pair[0] != pair[1]:
                raise Mismatch(f"temperament {index} is {pair[0]!r}, expected {pair[1]!r}")
        raise Mismatch(f"{len(listed)} temperaments, expected {len(wanted)}: {listed!r}, {wanted!r}")


def expected_log(path):
    """Beginnings of the lines that the file's own faults cause on standard error."""
    try:
        with open(path, "rb") as file:
            table = temperament_file.parse(temperament_file.decode(file.read()))
    except (OSError, UnicodeDecodeError, temperament_file.PropertyListError):
        return ["failed to read Temperaments.txt"]
    return ["*** Invalid Temperament Pitch Table. ***" for v in table.values() if len(v) < 12]


def run(command, log):
    result = subprocess.run(command, capture_output=True, timeout=120)
    errors = result.stderr.decode("utf-8", "replace").splitlines()
    if result.returncode != 0:
        raise Mismatch(f"exit {result.returncode}: {errors}")
    if len(errors) != len(log) or not all(wanted in line for wanted, line in zip(log, errors)):
        raise Mismatch(f"standard error is {errors}, expected {log}")
    return json_lines(result.stdout.decode("utf-8"))


def run_case(case, cli, folder, resource):
    """Number of readings compared; the command is left in `case.command` for the report."""
    sound, file = os.path.join(folder, "case.wav"), os.path.join(folder, "case.txt")
    case.write(sound, file)
    if resource and case.index % 4 == 0:
        shutil.copyfile(resource, file)
    table = reading.temperaments(file)
    log = expected_log(file)

    case.command = [cli, "temperaments", "--json", "--temperaments", file]
    check_temperaments(run(case.command, log), table)

    case.command = [cli, "analyze", sound, "--json", "--callback-frames", str(case.callback_frames),
                    "--temperaments", file, "--tonic", str(case.tonic),
                    "--transpose", str(case.transpose), "--reference-pitch", case.reference_pitch]  # fmt: skip
    row = None
    if table and case.random.random() < 0.8:
        name, row, _ = case.random.choice(table)
        case.command += ["--temperament", name]
    expected = reading.analyze(sound, case.callback_frames, number_of(case.reference_pitch), row,
                               case.tonic, case.transpose)  # fmt: skip
    check_readings(run(case.command, log), expected)
    return len(expected)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("cli", metavar="CLI_PATH")
    parser.add_argument("--cases", type=int, default=400, metavar="N")
    parser.add_argument("--seed", default="1", metavar="S")
    parser.add_argument("--only", type=int, metavar="INDEX", help="run this one case of the seed")
    parser.add_argument("--resource", metavar="FILE", help="also use this temperament file, in every fourth case")
    options = parser.parse_args()
    cases = readings = 0
    indices = range(options.cases) if options.only is None else [options.only]
    for index in indices:
        case = Case(options.seed, index)
        folder = tempfile.mkdtemp(prefix="reading-")
        try:
            readings += run_case(case, options.cli, folder, options.resource)
        except (Mismatch, subprocess.TimeoutExpired, UnicodeDecodeError) as mismatch:
            replay = f"{sys.argv[0]} {shlex.quote(options.cli)} --seed {shlex.quote(options.seed)} --only {index}"
            if options.resource:
                replay += f" --resource {shlex.quote(options.resource)}"
            print(f"MISMATCH in case {index}: {case.describe()}\n{mismatch}")
            print(f"command: {shlex.join(case.command)}\nreplay: {replay}\nfiles kept in {folder}")
            return 1
        shutil.rmtree(folder)
        cases += 1
    if not readings:
        print("nothing was compared")
        return 1
    print(f"{cases} cases, {readings} readings agree")
    return 0


if __name__ == "__main__":
    sys.exit(main())
