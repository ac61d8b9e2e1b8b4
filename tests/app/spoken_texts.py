#!/usr/bin/env python3
"""Prints what the tuner must say for shown states, one state a line, fields separated by tabs:
the letter, the accidental, the octave, the cents, the frequency, the reference pitch, the index of
the transposition, index and title of the tuning, the index of the tonic, the device, the level;
then the status, the report, and the continuous texts of the note, the frequency and both.

It knows nothing of how the tuner makes them: notes and tonics are looked up in lists of words."""
import itertools
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/reference"))
import temperament_file  # noqa: E402

NOTES = {
    ("C", " "): "C  ", ("C", "♯"): "C sharp", ("D", " "): "D  ", ("E", "♭"): "E flat",
    ("E", " "): "E  ", ("F", " "): "F  ", ("F", "♯"): "F sharp", ("G", " "): "G  ",
    ("G", "♯"): "G sharp", ("A", " "): "ay  ", ("B", "♭"): "B flat", ("B", " "): "B  ",
    # Never shown, but said as they stand.
    ("D", "♭"): "D flat", ("D", "♯"): "D sharp", ("G", "♭"): "G flat", ("A", "♭"): "ay flat",
    ("A", "♯"): "ay sharp", ("B", "♯"): "B sharp", ("", ""): " sharp",
}
OCTAVES = {"-": "", "0": " 0", "1": " 1", "2": " 2", "3": " 3", "4": " 4", "5": " 5", "6": " 6",
           "7": " 7", "8": " 8", "": " "}
WITHIN = {"-2", "-1", "±0", "+1", "+2", ""}
CENTS = [*(f"-{n}" for n in range(50, 0, -1)), "±0", *(f"+{n}" for n in range(1, 51)),
         "-61", "+117", ""]
HERTZ = {
    "440.0Hz": "440.0 hertz", "27.5Hz": "27.5 hertz", "466.2Hz": "466.2 hertz",
    "4186.0Hz": "4186.0 hertz", "1108.7Hz": "1108.7 hertz", "0.0Hz": "0.0 hertz",
    "26.7Hz": "26.7 hertz", "4311.7Hz": "4311.7 hertz", "100.0Hz": "100.0 hertz",
    "999.9Hz": "999.9 hertz", "1000.0Hz": "1000.0 hertz", "": "0.0 hertz",
}
REFERENCES = ["440", "415", "349", "499.9", "442.5", "440.05", ""]
TRANSPOSITIONS = [
    "-11", "-10", "-9", "-8", "-7", "-6", "-5", "-4", "-3", "-2", "-1", "off",
    "+1", "+2", "+3", "+4", "+5", "+6", "+7", "+8", "+9", "+10", "+11",
]
# Behind equal temperament and a divider.
SHIPPED = list(enumerate(
    (row[0] for row in temperament_file.load(ROOT / "resources/Temperaments.txt")), start=2))
TUNINGS = [(0, "Equal temperament"), *SHIPPED, (7, "%1 Größe %s")]
TONICS = ["C", "C sharp", "D", "E flat", "E", "F", "F sharp", "G", "G sharp", "ay", "B flat", "B"]
DEVICES = ["Mic", "Built-in Audio: Line In", "Mikrofon „Süd“ %2", ".", "", " two  blanks ",
           '"Quoted" & <b>bold</b>', "100 % %@ %d %n", "日本語 マイク", "♯♭ \\n \\t", "🎤", "'"]
LEVELS = {"": "0", **{f"-{n}dB": f"-{n}" for n in range(1, 97)}, "0dB": "0"}


def states():
    # Every transposition with every tonic, every note in every octave, and the rest in turn.
    pitches = itertools.cycle(itertools.product(NOTES, OCTAVES))
    others = [itertools.cycle(values)
              for values in (CENTS, HERTZ, REFERENCES, TUNINGS, DEVICES, LEVELS)]
    for transposition, tonic in list(itertools.product(range(23), range(12))) * 3:
        note, octave = next(pitches)
        cent, frequency, reference, tuning, device, level = map(next, others)
        yield (note, octave, cent, frequency, reference, transposition, tuning, tonic, device,
               level)


def main():
    for (note, octave, cent, frequency, reference, transposition, (tuning, title), tonic, device,
         level) in states():
        words, hertz = NOTES[note], HERTZ[frequency]
        deviation = "in tune" if cent in WITHIN else cent + " cent"
        status = f"{words}, {deviation}, {hertz}"
        report = (f"{words}{OCTAVES[octave]}, {deviation}, {hertz}. "
                  f"Reference Pitch: {reference} hertz. "
                  f"Transpose: {TRANSPOSITIONS[transposition]}. "
                  f"Tuning: {title}. "
                  + (f"Tonic: {TONICS[tonic]}. " if title != "Equal temperament" else "")
                  + f"Input Device: {device}. "
                  f"Input Peak Level: {LEVELS[level]} dB. ")
        print(note[0], note[1], octave, cent, frequency, reference, transposition, tuning, title,
              tonic, device, level, status, report, f"{words}, {deviation}", hertz,
              f"{words}, {deviation} {hertz}", sep="\t")


if __name__ == "__main__":
    main()
