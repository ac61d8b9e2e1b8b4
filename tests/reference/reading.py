"""A second, independent implementation of the tuner's arithmetic, kept slow and plain on purpose.

It shares no code with the program and uses nothing beyond the standard library, so the two
can only agree by meaning the same thing. Every single-precision step is rounded explicitly
with f32(); everything else is double precision, as Python's own floats are.
"""

import math

import temperament_file
from capture import Capture, read_wav
from temperament_file import divide, f32, ieee_log2

LETTERS = "CCDEEFFGGABB"
ACCIDENTALS = " ♯ ♭  ♯ ♯ ♭ "
SPACING_LIMIT = 128


# --- Detection ---------------------------------------------------------------------------


class Detector:
    """raw_frequency keeps its value when a block yields none; `detected` is None then."""

    def __init__(self):
        self.raw_frequency = 0.0
        self.raw_peak = 0.0
        self.peak = 0
        self.detected = None

    def detect_pitch(self, block, sample_rate, block_frames):
        self.detected = None
        magnitude, spacings = scan(block)
        if magnitude > 0.01:
            average = average_diffs(spacings, block_frames)
            if average != 0.0:
                self.raw_frequency = divide(f32(sample_rate), average)
                self.detected = self.raw_frequency
        self.raw_peak = magnitude
        self.peak = level_of(magnitude)


def scan(block):
    """(peak magnitude, distances between accepted positive peaks)."""
    magnitude = 0.0
    threshold = 0.0
    peak_index = 0
    previous_index = 0
    spacings = []
    was_positive = False
    for i, x in enumerate(block):
        if x > 0.0:
            if x >= threshold:
                threshold = x
                peak_index = i
            was_positive = True
        else:
            if was_positive and peak_index != 0:
                if threshold > magnitude:
                    magnitude = threshold
                spacings.append(peak_index - previous_index)
                if len(spacings) >= SPACING_LIMIT:
                    break
                threshold = f32(threshold * 0.9)
                previous_index = peak_index
            if was_positive:
                peak_index = 0
            if -x > magnitude:
                magnitude = -x
            was_positive = False
    return magnitude, spacings


def level_of(magnitude):
    """Level 0..96, one step a decibel, quantised as a 16-bit sample would."""
    quantised = math.trunc(magnitude * 65535.0)
    if quantised == 0:
        return 0
    return math.trunc(20.0 * math.log10(quantised / 65535.0) + 96.0)


def average_diffs(spacings, block_frames):
    """Mean period in samples as a single, 0.0 for none."""
    count = len(spacings)
    if count <= 1:
        return 0.0
    if count <= 3:
        return f32(float(spacings[1])) if spacings[1] > block_frames // 3 else 0.0
    values, counts = [], []
    best, best_count = 0, 1
    for spacing in sorted(spacings):
        if values and values[-1] == spacing:
            counts[-1] += 1
            if counts[-1] > best_count:
                best, best_count = len(values) - 1, counts[-1]
        else:
            values.append(spacing)
            counts.append(1)
    reference = values[-1] if best == 0 else values[best]
    low = reference * 95 // 100
    high = (reference * 105 + 50) // 100
    total = weighted = 0
    for value, times in zip(values, counts):
        if low <= value <= high:
            weighted += times * value
            total += times
    if total <= count >> 1:
        return 0.0
    return divide(f32(float(weighted)), f32(float(total)))


# --- Note and cents ----------------------------------------------------------------------


class NoteDisplay:
    """What the tuner shows; row None is equal temperament, else twelve single ratios."""

    def __init__(self, reference_pitch=440.0, row=None, tonic=0, transpose=0):
        self.reference_pitch = f32(reference_pitch)
        self.row = row
        self.tonic = tonic
        self.transpose = transpose
        self.display_frequency = 0.0
        self.note = self.accidental = self.octave = ""
        self.deviation = self.ideal = self.difference = 0.0
        self.cents = 0

    def update(self, frequency):
        """True when the frequency maps to a showable note; nothing changes otherwise."""
        ratio = divide(frequency, self.reference_pitch)
        position = f32(12.0 * ieee_log2(ratio) + 57.5)
        octaves = f32(position / 12.0)
        octave = math.trunc(octaves)
        within = f32(f32(octaves - octave) * 12.0)
        pitch_class = math.trunc(within)
        above = within - pitch_class
        number = 12 * octave + pitch_class
        if number < 9 or number > 96:
            return False

        shown = f32(f32(position - f32(float(self.transpose))) / 12.0)
        shown_octave = math.trunc(shown)
        shown_class = math.trunc((shown - shown_octave) * 12.0)
        if shown_class < 0:
            shown_class += 12
        self.note = LETTERS[shown_class]
        self.accidental = ACCIDENTALS[shown_class]
        self.octave = "-" if shown_octave < 0 else str(shown_octave)

        if self.row is None:
            self.deviation = f32(above - 0.5)
            self.ideal = f32(self.reference_pitch * math.exp2((number - 57) / 12.0))
        else:
            self.ideal = self.tempered_ideal(pitch_class, octave)
            self.deviation = f32(12.0 * ieee_log2(divide(frequency, self.ideal)))
        self.cents = whole_cents(self.deviation)
        self.difference = f32(frequency - self.ideal)
        self.display_frequency = frequency
        return True

    def tempered_ideal(self, pitch_class, octave):
        """The scale is anchored on the tonic at or below A4."""
        tonic = self.tonic
        degree_of_a = (21 - tonic) % 12
        degree = (pitch_class + 12 - tonic) % 12
        if tonic < 10:
            correction = -1 if tonic > pitch_class else 0
        else:
            correction = 1 if tonic <= pitch_class else 0
        base = divide(self.reference_pitch, self.row[degree_of_a])
        return f32(f32(base * self.row[degree]) * 2.0 ** (octave + correction - 4))


def whole_cents(deviation):
    """Whole cents toward zero; None where no 32-bit integer can hold them."""
    cents = deviation * 100.0
    if not -2147483649.0 < cents < 2147483648.0:
        return None
    return math.trunc(cents)


def plus_minus_value_string(value):
    return ("-" if value < 0 else "+" if value > 0 else "±") + str(abs(value))


def plus_minus_float_string(value):
    magnitude = abs(f32(value))
    if magnitude < 0.05:
        return "±0.0Hz"
    return ("-" if value < 0 else "+") + "%.1fHz" % magnitude


def note_name(display, with_octave):
    letter = "ay" if display.note == "A" else display.note
    accidental = {" ": " ", "♭": "flat"}.get(display.accidental, "sharp")
    words = [letter, accidental]
    if with_octave and display.octave != "-":
        words.append(display.octave)
    return " ".join(words)


# --- Meters ------------------------------------------------------------------------------


def tuning_lamps(deviation):
    """(centre lamp, five flat lamps outermost first, five sharp lamps innermost first)."""
    cents = whole_cents(f32(deviation))
    centre = "green" if -2 <= cents <= 2 else "blue"
    flats = [cents <= limit for limit in (-41, -31, -21, -11, -1)]
    sharps = [cents >= limit for limit in (1, 11, 21, 31, 41)]
    return centre, flats, sharps


def level_lamps(peak, hold):
    """(eight colours from quiet to loud, text of the held level)."""
    slots = ["gray"] * 8
    lit = (9 * peak - 540) // 36 if peak > 60 else 0
    if 1 <= lit <= 8:
        slots[:lit] = ["green"] * lit
    elif lit == 9:
        slots = ["green"] * 7 + ["red"]
    if hold >= 64:
        marker = min((9 * hold - 540) // 36, 8)
        slots[marker - 1] = "red" if 9 * hold - 540 > 323 else "yellow"
    return slots, f"{hold - 96}dB"


# --- The update loop ---------------------------------------------------------------------


class UpdateLoop:
    def __init__(self, display):
        self.display = display
        self.detector = Detector()
        self.frequency = display.reference_pitch
        self.next_tuner_update = 0.0
        self.peak_hold = 0
        self.next_peak_hold = 0.0
        self.centre_gray = False
        self.updates = 0
        display.update(self.frequency)

    def tick(self, block, sample_rate, block_frames, now):
        """One block; returns (accepted, the hold before its release)."""
        self.detector.detect_pitch(block, sample_rate, block_frames)
        accepted = self.accept(now)
        if self.display.display_frequency != self.frequency:
            self.updates += 1
            if self.display.update(self.frequency):
                self.centre_gray = False
        if self.next_tuner_update < now:
            self.centre_gray = True
            self.next_tuner_update = now + 0.2
        return accepted, self.hold_peak(now)

    def accept(self, now):
        reading = self.detector.raw_frequency
        if not 26.717 < reading < 4311.76:
            return False
        ratio = divide(reading, self.frequency)
        if f32(0.99) < ratio < f32(1.01):
            self.frequency = f32(f32(reading + self.frequency) * 0.5)
        else:
            self.frequency = reading
        self.detector.raw_frequency = 0.0
        self.next_tuner_update = now + 0.2
        return True

    def hold_peak(self, now):
        if self.detector.peak >= self.peak_hold:
            self.peak_hold = self.detector.peak
            self.next_peak_hold = now + 1.0
        held = self.peak_hold
        if self.next_peak_hold < now:
            self.peak_hold = 0
            self.next_peak_hold = now + 1.0
        return held


def analyze(path, callback_frames=512, reference_pitch=440.0, row=None, tonic=0, transpose=0):
    """The readings of a recording, one dictionary a block."""
    rate, channels, samples = read_wav(path)
    display = NoteDisplay(reference_pitch, row, tonic, transpose)
    loop = UpdateLoop(display)
    readings = []

    def post(block):
        now = float(capture.block_frames * (len(readings) + 1)) / rate
        accepted, held = loop.tick(block, capture.sample_rate, capture.block_frames, now)
        readings.append(
            {
                "block": len(readings),
                "time": now,
                "detected": loop.detector.detected,
                "accepted": accepted,
                "rawPeak": loop.detector.raw_peak,
                "peak": loop.detector.peak,
                "peakHold": held,
                "frequency": loop.frequency,
                "note": display.note,
                "accidental": display.accidental.strip(),
                "octave": display.octave,
                "cents": display.cents,
                "deviation": display.deviation,
                "idealFrequency": display.ideal,
                "difference": display.difference,
            }
        )

    capture = Capture(rate, post)
    clock = 1.0
    step = callback_frames * channels
    for at in range(0, len(samples), step):
        part = samples[at : at + step]
        capture.input_proc([(channels, part)], clock)
        clock += len(part) // channels
    return readings


def temperaments(path):
    """(name, twelve single-precision ratios, tool tip) of every temperament in menu order."""
    return temperament_file.load(path)
