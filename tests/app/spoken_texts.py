#!/usr/bin/env python3
"""Prints what the tuner must say for shown states, one state a line, fields separated by tabs:
the letter, the accidental, the octave, the cents, the frequency, the reference pitch, the index of
the transposition, index and title of the tuning, the index of the tonic, the device, the level;
then the status, the report, and the continuous texts of the note, the frequency and both.

It knows nothing of how the tuner makes them: notes and tonics are looked up in lists of words."""
import itertools

NOTES = {
    ("C", " "): "C  ", ("C", "♯"): "C sharp", ("D", " "): "D  ", ("E", "♭"): "E flat",
    ("E", " "): "E  ", ("F", " "): "F  ", ("F", "♯"): "F sharp", ("G", " "): "G  ",
    ("G", "♯"): "G sharp", ("A", " "): "ay  ", ("B", "♭"): "B flat", ("B", " "): "B  ",
    # Never shown, but said as they stand.
    ("A", "♭"): "ay flat", ("A", "♯"): "ay sharp", ("", ""): " sharp",
}
OCTAVES = {"-": "", "0": " 0", "4": " 4", "8": " 8", "": " "}
CENTS = {
    "-50": "-50 cent", "-12": "-12 cent", "-3": "-3 cent", "-2": "in tune", "-1": "in tune",
    "±0": "in tune", "+1": "in tune", "+2": "in tune", "+3": "+3 cent", "+5": "+5 cent",
    "+49": "+49 cent", "+117": "+117 cent", "": "in tune",
}
HERTZ = {
    "440.0Hz": "440.0 hertz", "27.5Hz": "27.5 hertz", "466.2Hz": "466.2 hertz",
    "4186.0Hz": "4186.0 hertz", "1108.7Hz": "1108.7 hertz", "0.0Hz": "0.0 hertz",
    "": "0.0 hertz",
}
REFERENCES = ["440", "415", "349", "499.9", "442.5"]
TRANSPOSITIONS = [
    "-11", "-10", "-9", "-8", "-7", "-6", "-5", "-4", "-3", "-2", "-1", "off",
    "+1", "+2", "+3", "+4", "+5", "+6", "+7", "+8", "+9", "+10", "+11",
]
TUNINGS = [(0, "Equal temperament"), (2, "Just Intonation"), (3, "Werckmeister III"),
           (7, "%1 Größe %s")]
TONICS = ["C", "C sharp", "D", "E flat", "E", "F", "F sharp", "G", "G sharp", "ay", "B flat", "B"]
DEVICES = ["Mic", "Built-in Audio: Line In", "Mikrofon „Süd“ %2", "."]
LEVELS = {"-96dB": "-96", "-12dB": "-12", "0dB": "0", "-6dB": "-6", "": "0"}


def states():
    notes = itertools.cycle(NOTES)
    octaves = itertools.cycle(OCTAVES)
    frequencies = itertools.cycle(HERTZ)
    references = itertools.cycle(REFERENCES)
    tunings = itertools.cycle(TUNINGS)
    devices = itertools.cycle(DEVICES)
    levels = itertools.cycle(LEVELS)
    # Every transposition with every tonic; the rest at lengths that share no factor with these.
    cents = itertools.cycle(CENTS)
    for round_number in range(3):
        for transposition in range(23):
            for tonic in range(12):
                yield (next(notes), next(octaves), next(cents), next(frequencies),
                       next(references), transposition, next(tunings), tonic, next(devices),
                       next(levels))
        next(tunings), next(devices), next(notes)


def main():
    for (note, octave, cent, frequency, reference, transposition, (tuning, title), tonic, device,
         level) in states():
        words, deviation, hertz = NOTES[note], CENTS[cent], HERTZ[frequency]
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
