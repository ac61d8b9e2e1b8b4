#!/usr/bin/env python3
"""What the terminal tuner says of whole recordings, worked out anew from its readings.

Usage: analysis.py CLI_PATH RECORDING
The summary, the comma-separated values and the drawing of RECORDING and of recordings rendered
here must follow from the readings as JSON. Exit 0 when they all do.
"""

import csv
import io
import json
import math
import os
import random
import re
import statistics
import subprocess
import sys
import tempfile
import unittest
import wave
import xml.etree.ElementTree as xml
from array import array

CLI = RECORDING = None
SVG = "{http://www.w3.org/2000/svg}"
LETTERS = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}
LEFT, RIGHT, TOP, BOTTOM = 56.0, 1172.0, 84.0, 384.0
MOST_COLUMNS = 1200


def run(*arguments):
    return subprocess.run([CLI, "analyze", *arguments], check=True, capture_output=True).stdout.decode()


def render(path, notes, rate=8000):
    """notes: (hertz at the start, hertz at the end, seconds); 0 hertz is silence."""
    samples = array("h")
    phase = 0.0
    for start, end, seconds in notes:
        count = int(seconds * rate)
        for i in range(count):
            hertz = start + (end - start) * i / count
            phase += 2.0 * math.pi * hertz / rate
            samples.append(int(20000 * math.sin(phase)) if hertz else 0)
    with wave.open(path, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def note_of(reading):
    return reading["note"] + reading["accidental"] + reading["octave"]


def pitch_of(reading):
    octave = -1 if reading["octave"] == "-" else int(reading["octave"])
    return 12 * octave + LETTERS[reading["note"]] + {"♯": 1, "♭": -1, "": 0}[reading["accidental"]]


def cents_of(reading):
    return 100.0 * reading["deviation"]


def look_of(cents):
    """The class and the direction of the mark: green within two whole cents, red from eleven on."""
    whole = abs(math.trunc(cents))
    if whole <= 2:
        return "tune", None
    return "near" if whole <= 10 else "far", cents > 0


def columns_of(readings):
    """(time, accepted readings) of the columns a drawing has."""
    width = 1
    while -(-len(readings) // width) > MOST_COLUMNS:
        width *= 2
    block = readings[-1]["time"] / len(readings)
    for first in range(0, len(readings), width):
        middle = (first + (width + 1) / 2) * block
        yield middle, [r for r in readings[first:first + width] if r["accepted"]]


def marks_of(panel):
    """(x, y, class, whether it points up; None for a dot), from left to right."""
    marks = []
    for path in panel.iter(SVG + "path"):
        if path.get("class") not in ("tune", "near", "far"):
            continue
        for x, y, shape in re.findall(r"M([\d.]+) ([\d.]+)(m[^M]*)", path.get("d")):
            if float(y) >= TOP:  # below the legend
                up = None if "a" in shape else shape.endswith("-5z")
                marks.append((float(x), float(y), path.get("class"), up))
    return sorted(marks)


class Analysis(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        chance = random.Random(7)
        path = lambda name: os.path.join(cls.folder.name, name)
        cls.plot = path("plot.svg")

        def tuned(semitones):
            return 440.0 * 2.0 ** (semitones / 12.0)

        scale = []
        for step in [0, 2, 4, 5, 7, 9, 11, 12, 11, 9, 7, 5, 4, 2, 0, -45, 39]:
            hertz = tuned(step - 9 + chance.uniform(-0.4, 0.4))
            scale += [(hertz, hertz, 0.7), (0, 0, 0.12)]
        drifting = [(tuned(-0.06), tuned(0.14), 90.0), (0, 0, 1.0), (tuned(2.0), tuned(2.1), 30.0)]
        cls.recordings = [(RECORDING, ["--temperament", "werckmeister iii", "--tonic", "D"])]
        for name, notes, options in [
            ("scale.wav", scale, []),
            ("<scale> & \"more\".wav", scale, ["--transpose", "-7", "--reference-pitch", "442.5"]),
            ("drifting.wav", drifting, []),
            ("dense.wav", [(tuned(k % 2 * 2), tuned(k % 2 * 2), 0.3) for k in range(100)], []),
            ("short.wav", [(300.0, 300.0, 0.13)], []),
            ("silence.wav", [(0, 0, 2.0)], []),
        ]:
            render(path(name), notes)
            cls.recordings.append((path(name), options))

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def each(self):
        for file, options in self.recordings:
            with self.subTest(file):
                lines = run(file, *options, "--json").splitlines()
                yield file, options, [json.loads(line) for line in lines]

    def test_the_summary_follows_from_the_readings(self):
        for file, options, readings in self.each():
            last = json.loads(run(file, *options, "--json", "--summary").splitlines()[-1])["summary"]
            accepted = [r for r in readings if r["accepted"]]
            names = sorted({pitch_of(r): note_of(r) for r in accepted}.items())
            self.assertEqual([note_of(n) for n in last["notes"]], [name for _, name in names])
            for note in last["notes"]:
                cents = [r["cents"] for r in accepted if note_of(r) == note_of(note)]
                self.assertEqual(note["readings"], len(cents))
                self.assertEqual(note["median"], statistics.median(cents))
                first, _, third = (statistics.quantiles(cents, n=4, method="inclusive")
                                   if len(cents) > 1 else (0, 0, 0))  # fmt: skip
                self.assertEqual(note["interquartileRange"], third - first)
            if len(accepted) < 2:
                self.assertIsNone(last["drift"])
            else:
                line = statistics.linear_regression([r["time"] for r in accepted],
                                                    [r["cents"] for r in accepted])  # fmt: skip
                self.assertAlmostEqual(last["drift"], 60.0 * line.slope, delta=1e-9 * (1 + abs(line.slope)))

    def test_the_drift_of_a_drifting_tone_is_the_one_it_was_made_with(self):
        path = os.path.join(self.folder.name, "drift.wav")
        # 20 cents in two minutes; the curve from one pitch to the other is nearly straight.
        render(path, [(440.0 * 2.0 ** (-4 / 1200), 440.0 * 2.0 ** (16 / 1200), 120.0)], rate=48000)
        summary = json.loads(run(path, "--json", "--summary").splitlines()[-1])["summary"]
        self.assertAlmostEqual(summary["drift"], 10.0, delta=0.5)
        self.assertAlmostEqual(summary["notes"][0]["median"], 6.0, delta=1.0)

    def test_comma_separated_values_are_those_of_json(self):
        text = lambda value: "" if value is None else json.dumps(value) if value in (True, False) else value
        for file, options, _ in self.each():
            lines = run(file, *options, "--json").splitlines()
            objects = [json.loads(line, parse_float=str, parse_int=str) for line in lines]
            rows = list(csv.DictReader(io.StringIO(run(file, *options, "--csv"))))
            self.assertEqual(rows, [{name: text(value) for name, value in o.items()} for o in objects])

    def test_several_recordings_are_told_apart_in_comma_separated_values(self):
        files = [file for file, _ in self.recordings]
        rows = list(csv.DictReader(io.StringIO(run(*files, "--csv"))))
        told = list(dict.fromkeys(row["file"] for row in rows))
        self.assertEqual(told, files)

    def test_each_reading_has_its_mark(self):
        for file, options, readings in self.each():
            run(file, *options, "--plot", self.plot)
            marks = marks_of(xml.parse(self.plot).getroot())
            columns = [(time, some) for time, some in columns_of(readings) if some]
            self.assertEqual(len(marks), len(columns))
            for (x, y, look, up), (time, some) in zip(marks, columns):
                mean = sum(map(cents_of, some)) / len(some)
                shown = max(-50.0, min(50.0, mean))
                self.assertAlmostEqual(x, LEFT + (RIGHT - LEFT) * time / readings[-1]["time"], delta=0.051)
                self.assertAlmostEqual(y, TOP + (BOTTOM - TOP) * (50.0 - shown) / 100.0, delta=0.051)
                if abs(abs(mean) - round(abs(mean))) > 1e-4:  # else rounding decides
                    self.assertEqual((look, up), look_of(mean))

    def test_notes_are_named_where_they_begin_and_never_over_each_other(self):
        for file, options, readings in self.each():
            run(file, *options, "--plot", self.plot)
            group = next(g for g in xml.parse(self.plot).getroot().iter(SVG + "g") if g.get("font-weight"))
            names = [(float(t.get("x")), t.text) for t in group]
            at = [(LEFT + (RIGHT - LEFT) * r["time"] / readings[-1]["time"] + 4.0, r)
                  for r in readings if r["accepted"]]  # fmt: skip
            free = 0.0
            for x, name in names:
                self.assertGreaterEqual(x, free)
                free = x + 8.0 * len(name)
                distance, reading = min((abs(place - x), r["block"]) for place, r in at)
                self.assertLess(distance, 2.0)
                begun = [note_of(r) for r in readings[max(0, reading - 2):reading + 3]]
                self.assertIn(name, begun)
            if "dense" in file:
                self.assertGreater(len(names), 20)
                self.assertLess(len(names), 60)
            if "scale" in file:
                held = [note_of(r) for _, r in at]
                order = [n for k, n in enumerate(held) if held[k:k + 5] == [n] * 5 and held[k - 1:k] != [n]]
                self.assertGreaterEqual(len(names), 15)
                self.assertEqual([n for _, n in names if n in order][:3], order[:3])

    def test_the_axes_are_labelled_where_their_values_are(self):
        for file, options, readings in self.each():
            run(file, *options, "--plot", self.plot)
            root = xml.parse(self.plot).getroot()
            cents = [t for g in root.iter(SVG + "g") if g.get("text-anchor") == "end" for t in g][:-1]
            self.assertEqual([t.text for t in cents],
                             "−50 −40 −30 −20 −10 0 +10 +20 +30 +40 +50".split())  # fmt: skip
            for label in cents:
                value = int(label.text.replace("−", "-"))
                self.assertAlmostEqual(float(label.get("y")) - 4.0, 234.0 - 3.0 * value, delta=0.051)
            times = [t for g in root.iter(SVG + "g") if g.get("text-anchor") == "middle" for t in g]
            self.assertGreaterEqual(len(times), 2)
            places = [float(t.get("x")) for t in times]
            self.assertGreaterEqual(min(b - a for a, b in zip(places, places[1:])), 69.9)
            for label in times:
                self.assertRegex(label.text, r"^\d+:[0-5]\d(\.\d)?$")
                minutes, seconds = label.text.split(":")
                time = 60 * int(minutes) + float(seconds)
                x = LEFT + (RIGHT - LEFT) * time / readings[-1]["time"]
                self.assertAlmostEqual(float(label.get("x")), x, delta=0.051)

    def test_everything_drawn_has_a_colour_for_the_dark(self):
        run(self.recordings[0][0], "--plot", self.plot)
        root = xml.parse(self.plot).getroot()
        dark = set(re.findall(r"\.(\w+)", root.find(SVG + "style").text))
        used = {e.get("class") for e in root.iter() if e.get("fill") not in (None, "none") or e.get("stroke")}
        self.assertLessEqual(used, dark)

    def test_the_drawing_says_what_it_shows(self):
        texts = {}
        for file, options, _ in self.each():
            run(file, *options, "--plot", self.plot)
            texts[os.path.basename(file)] = [t.text for t in xml.parse(self.plot).getroot().iter(SVG + "text")][:2]
        self.assertEqual(texts['<scale> & "more".wav'],
                         ['<scale> & "more".wav', "Equal temperament, A4 = 442.5 Hz, C = F (-7)"])  # fmt: skip
        self.assertRegex(texts[os.path.basename(RECORDING)][1], r"^Werckmeister III.* on D, A4 = 440 Hz$")

    def test_the_drawing_needs_nothing_besides_itself(self):
        files = [file for file, _ in self.recordings]
        run(*files, "--plot", self.plot)
        with open(self.plot, encoding="utf-8") as file:
            text = file.read()
        self.assertNotRegex(text, r"<script|href|url\(|@import|<!DOCTYPE|<image|<foreignObject")
        self.assertEqual(text.count("http"), 1)  # the name space
        self.assertIn("prefers-color-scheme:dark", text)
        panels = [g for g in xml.fromstring(text.encode()) if g.get("transform")]
        self.assertEqual(len(panels), len(files))

    def test_the_size_of_a_drawing_does_not_grow_with_the_recording(self):
        path = os.path.join(self.folder.name, "long.wav")
        with wave.open(path, "wb") as file:  # 5 h of changing notes
            file.setnchannels(1)
            file.setsampwidth(2)
            file.setframerate(400)
            period = lambda n: array("h", [int(20000 * math.sin(2 * math.pi * i / n)) for i in range(n)] * 60)
            file.writeframes((period(8) + period(7) + period(9)).tobytes() * 5000)
        run(path, "--plot", self.plot)
        self.assertLess(os.path.getsize(self.plot), 150_000)
        marks = marks_of(xml.parse(self.plot).getroot())
        self.assertGreaterEqual(len(marks), MOST_COLUMNS // 2)
        self.assertLessEqual(len(marks), MOST_COLUMNS)


if __name__ == "__main__":
    CLI, RECORDING = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
