"""Worked values for the reference reading itself, figured by hand or taken from tables."""

import math
import os
import struct
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import capture
import reading
import temperament_file
from temperament_file import f32

EQUAL_RATIOS = [1.0, 1.0594630943592953, 1.122462048309373, 1.189207115002721,
                1.2599210498948732, 1.3348398541700344, 1.4142135623730951, 1.4983070768766815,
                1.5874010519681994, 1.681792830507429, 1.7817974362806785, 1.8877486253633868]  # fmt: skip


def captured(rate, callbacks, clock=1.0):
    """(blocks, the capture) after callbacks, each a list of (channels, samples) buffers."""
    blocks = []
    captures = capture.Capture(rate, blocks.append)
    for buffers in callbacks:
        captures.input_proc(buffers, clock)
    return blocks, captures


def sine(frequency, rate, frames, level=0.5, start=0):
    turn = 2 * math.pi * frequency / rate
    return [f32(level * math.sin(turn * (i + start))) for i in range(frames)]


def pulses(peaks, frames, height=0.5):
    """Silence below zero with one-sample positive peaks at the given places."""
    block = [-0.001] * frames
    for place in peaks:
        block[place] = height
    return block


class CaptureTest(unittest.TestCase):
    def test_block_lengths(self):
        table = {8000: 436, 22050: 1202, 44100: 2405, 48000: 2618, 96000: 5236, 192000: 10472}
        for rate, frames in table.items():
            self.assertEqual(capture.block_length(rate), frames, rate)

    def test_rates_without_a_block_store_nothing(self):
        for rate in (0.0, -44100.0, math.nan, 18.3):
            blocks, _ = captured(rate, [[(1, [0.5] * 100)]])
            self.assertEqual(blocks, [])
        self.assertEqual(capture.block_length(18.4), 1)

    def test_left_over_frames_start_the_next_block(self):
        blocks, captures = captured(44100, [[(1, [0.25] * 512)]] * 5)
        self.assertEqual([len(b) for b in blocks], [2405])
        self.assertEqual(len(captures.block), 155)

    def test_one_callback_may_hold_two_blocks(self):
        blocks, _ = captured(8000, [[(1, [i / 1024 for i in range(900)])]])
        self.assertEqual([len(b) for b in blocks], [436, 436])
        self.assertEqual(blocks[1][0], 436 / 1024)

    def test_duplicated_stereo_is_halved(self):
        blocks, _ = captured(8000, [[(2, [0.25, 0.25] * 436)]])
        self.assertEqual(set(blocks[0]), {0.25})

    def test_one_differing_frame_ends_the_halving(self):
        samples = [0.25, 0.25] * 436
        samples[-1] = 0.125
        blocks, _ = captured(8000, [[(2, samples)]])
        self.assertEqual(blocks[0], [0.5] * 435 + [0.375])

    def test_not_a_number_in_both_channels_ends_the_halving(self):
        blocks, _ = captured(8000, [[(2, [0.25, 0.25] * 435 + [math.nan] * 2)]])
        self.assertEqual(blocks[0][0], 0.5)
        self.assertTrue(math.isnan(blocks[0][-1]))

    def test_clipping_follows_the_halving(self):
        blocks, _ = captured(8000, [[(2, [0.9, 0.9, -3.0, -3.0] * 218)]])
        self.assertEqual(blocks[0][:2], [f32(f32(0.9 + 0.9) * 0.5), -1.0])
        blocks, _ = captured(8000, [[(2, [0.9, 0.8] * 436)]])
        self.assertEqual(set(blocks[0]), {1.0})

    def test_equal_buffers_are_summed_and_a_different_one_ignored(self):
        buffers = [(1, [0.25] * 436), (1, [0.125] * 436), (1, [0.5] * 435)]
        blocks, _ = captured(8000, [buffers])
        self.assertEqual(set(blocks[0]), {0.375})

    def test_a_new_rate_drops_the_open_block(self):
        blocks, captures = captured(44100, [[(1, [0.5] * 1000)]])
        captures.set_sample_rate(48000)
        captures.input_proc([(1, [0.25] * 2618)], 1.0)
        self.assertEqual(blocks, [[0.25] * 2618])

    def test_a_zero_input_time_stores_nothing(self):
        blocks, captures = captured(8000, [[(1, [0.5] * 1000)]], clock=0.0)
        self.assertEqual((blocks, captures.block), ([], []))

    def test_no_buffers_and_less_than_a_frame_store_nothing(self):
        for buffers in ([], [(4, [0.5] * 3)], [(0, [0.5] * 3)]):
            blocks, captures = captured(8000, [buffers])
            self.assertEqual((blocks, captures.block or []), ([], []))


class DetectorTest(unittest.TestCase):
    def detect(self, block, rate=44100, frames=2405):
        detector = reading.Detector()
        detector.detect_pitch(block, rate, frames)
        return detector

    def test_silence(self):
        detector = self.detect([0.0] * 2405)
        self.assertEqual((detector.peak, detector.raw_peak, detector.detected), (0, 0.0, None))
        detector = self.detect([])
        self.assertEqual((detector.peak, detector.raw_peak, detector.detected), (0, 0.0, None))

    def test_levels(self):
        self.assertEqual(reading.level_of(1.0), 96)
        self.assertEqual(reading.level_of(0.5), 89)
        self.assertEqual(reading.level_of(0.0), 0)
        self.assertEqual(reading.level_of(1.5 / 65535), 0)

    def test_a_peak_of_one_hundredth_has_a_level_but_no_pitch(self):
        # The nearest single to 0.01 lies below it; the next one up lies above.
        below, above = 0.00999999977648258209228515625, 0.0100000007078051567077636718750
        quiet = pulses(range(50, 2400, 100), 2405, below)
        self.assertIsNone(self.detect(quiet).detected)
        self.assertEqual(self.detect(quiet).raw_peak, below)
        self.assertEqual(self.detect(quiet).peak, 55)
        loud = pulses(range(50, 2400, 100), 2405, above)
        self.assertEqual(self.detect(loud).detected, 441.0)

    def test_two_or_three_spacings_go_by_the_second(self):
        self.assertEqual(reading.average_diffs([5, 801], 2405), 0.0)
        self.assertEqual(reading.average_diffs([5, 802], 2405), 802.0)
        self.assertEqual(reading.average_diffs([5, 802, 9], 2405), 802.0)
        self.assertEqual(reading.average_diffs([802], 2405), 0.0)
        self.assertEqual(reading.average_diffs([], 2405), 0.0)

    def test_spacings_without_repetition_have_no_pitch(self):
        self.assertEqual(reading.average_diffs([10, 20, 30, 40], 2405), 0.0)

    def test_a_tie_goes_to_the_smaller_spacing(self):
        self.assertEqual(reading.average_diffs([5, 100, 100, 101, 101], 2405), 100.5)
        # 107 would leave the other four outside its window and find no majority.
        self.assertEqual(reading.average_diffs([96, 98, 100, 100, 107, 107], 2405), 98.5)

    def test_the_smallest_spacing_never_leads(self):
        # 100 is the most common and the smallest, so 300 leads and has no majority.
        self.assertEqual(reading.average_diffs([100, 100, 100, 300], 2405), 0.0)

    def test_window_edges(self):
        # For 50: 47 (47.5 cut) to 53 (52.5 + 0.5 cut); 46 and 54 lie outside.
        spacings = [1, 46, 47, 50, 50, 50, 53, 54]
        self.assertEqual(reading.average_diffs(spacings, 2405), 50.0)
        self.assertEqual(reading.average_diffs([1, 46, 47, 47, 50, 50, 50, 54], 2405), f32(48.8))

    def test_pure_tones(self):
        self.assertLess(abs(self.detect(sine(440.0, 44100, 2405)).detected - 440.0), 1.5)
        # An eighth of a period in, so that both peaks are followed by their zero crossing.
        low = self.detect(sine(27.5, 44100, 2405, start=200))
        self.assertLess(abs(low.detected - 27.5), 0.1)

    def test_a_decaying_note_stops_below_nine_tenths(self):
        block = pulses([100], 1000, 0.5)
        block[200], block[300], block[400] = f32(0.46), f32(0.41), f32(0.45)
        # 0.46 sets the threshold to 0.414, so the third half-wave is skipped.
        self.assertEqual(reading.scan(block)[1], [100, 100, 200])
        block = pulses([100], 1000, 0.5)
        block[200], block[300] = f32(0.449), f32(0.451)
        self.assertEqual(reading.scan(block)[1], [100, 200])

    def test_the_later_of_equal_values_is_the_peak(self):
        self.assertEqual(reading.scan([-1.0, 0.5, 0.5, -0.5])[1], [2])

    def test_a_peak_at_the_start_counts_as_none(self):
        self.assertEqual(reading.scan([0.5, -0.25, 0.5, -0.25]), (0.5, [2]))
        self.assertEqual(reading.scan([0.5, -0.25, 0.25]), (0.25, []))

    def test_scanning_ends_at_the_128th_spacing(self):
        block = pulses(range(1, 1000, 2), 1000)
        block[257] = -1.0
        block[256] = -0.75
        magnitude, spacings = reading.scan(block)
        self.assertEqual((len(spacings), spacings[0], spacings[-1]), (128, 1, 2))
        self.assertEqual(magnitude, 0.5)


class NoteTest(unittest.TestCase):
    def shown(self, frequency, **settings):
        display = reading.NoteDisplay(**settings)
        self.assertTrue(display.update(f32(frequency)))
        return display

    def named(self, frequency, **settings):
        display = self.shown(frequency, **settings)
        return display.note + display.accidental.strip() + display.octave

    def test_the_reference_pitch_is_a4(self):
        display = self.shown(440.0)
        self.assertEqual((display.note, display.accidental, display.octave), ("A", " ", "4"))
        self.assertEqual((display.cents, display.ideal, display.difference), (0, 440.0, 0.0))
        # 57.5 / 12 has no exact single: 9.5 comes back two steps of 2^-20 short.
        self.assertEqual(display.deviation, -(2.0**-19))

    def test_names(self):
        names = ["C", "C♯", "D", "E♭", "E", "F", "F♯", "G", "G♯", "A", "B♭", "B"]
        fourth = [261.63, 277.18, 293.66, 311.13, 329.63, 349.23, 369.99, 392.0, 415.3, 440.0,
                  466.16, 493.88]  # fmt: skip
        for name, frequency in zip(names, fourth):
            self.assertEqual(self.named(frequency), name + "4")
            self.assertEqual(self.shown(frequency).cents, 0)

    def test_transposition_changes_the_name_only(self):
        self.assertEqual(self.named(440.0, transpose=2), "G4")
        self.assertEqual(self.named(440.0, transpose=-3), "C5")
        self.assertEqual(self.named(261.63, transpose=11), "C♯3")
        self.assertEqual(self.shown(440.0, transpose=2).ideal, 440.0)

    def test_a_shown_position_below_zero_has_octave_zero(self):
        # A0 is 9; with +11 the position is -1.5, eleven steps up from an octave below.
        self.assertEqual(self.named(27.5, transpose=11), "B0")
        self.assertEqual(self.named(27.5, transpose=9), "C0")

    def test_range(self):
        self.assertEqual(self.named(27.5), "A0")
        self.assertEqual(self.named(4186.009), "C8")
        display = reading.NoteDisplay()
        display.update(440.0)
        for frequency in (25.96, 26.7, 4310.0, 4434.9):
            self.assertFalse(display.update(f32(frequency)), frequency)
            self.assertEqual((display.note, display.display_frequency), ("A", 440.0))

    def test_half_way_belongs_to_the_upper_note(self):
        display = self.shown(440.0 * 2 ** (0.5 / 12) * (1 + 1e-6))
        self.assertEqual(display.note + display.accidental, "B♭")
        self.assertEqual(display.cents, -49)
        display = self.shown(440.0 * 2 ** (0.5 / 12) * (1 - 1e-6))
        self.assertEqual((display.note, display.cents), ("A", 49))

    def test_a4_keeps_the_reference_pitch_under_every_tonic(self):
        row = [1.0, 1.0666667, 1.125, 1.2, 1.25, 1.3333334, 1.40625, 1.5, 1.6, 1.6666666, 1.8, 1.875]
        row = [f32(r) for r in row]
        for tonic in range(12):
            display = self.shown(440.0, row=row, tonic=tonic)
            self.assertEqual((display.note, display.octave), ("A", "4"))
            self.assertLess(abs(display.ideal - 440.0), 1e-4)
            self.assertLess(abs(display.deviation), 1e-5)

    def test_tempered_notes_lie_near_their_equal_ones(self):
        # A wrong octave correction would be an octave out.
        row = [f32(r) for r in EQUAL_RATIOS]
        for tonic in range(12):
            for number in range(9, 97):
                frequency = 440.0 * 2.0 ** ((number - 57) / 12)
                display = self.shown(frequency, row=row, tonic=tonic)
                self.assertLess(abs(display.ideal / frequency - 1.0), 1e-6)

    def test_pythagorean_fifth(self):
        row = temperament_file.load("/nonexistent")[0][1]
        # In the scale on C, A is 27/16 and E is 81/64, so E lies at 3/4 of A.
        display = self.shown(330.0, row=row, tonic=0)
        self.assertEqual(display.note, "E")
        self.assertLess(abs(display.ideal - 330.0), 1e-4)

    def test_signed_texts(self):
        for value, text in ((0, "±0"), (7, "+7"), (-12, "-12")):
            self.assertEqual(reading.plus_minus_value_string(value), text)
        for value, text in ((0.04, "±0.0Hz"), (0.06, "+0.1Hz"), (-1.26, "-1.3Hz"),
                            (-0.04, "±0.0Hz"), (0.05, "+0.1Hz"), (0.0, "±0.0Hz")):  # fmt: skip
            self.assertEqual(reading.plus_minus_float_string(value), text)

    def test_spoken_names(self):
        self.assertEqual(reading.note_name(self.shown(440.0), 1), "ay   4")
        self.assertEqual(reading.note_name(self.shown(440.0), 0), "ay  ")
        self.assertEqual(reading.note_name(self.shown(466.16), 1), "B flat 4")
        display = self.shown(369.99)
        display.octave = "-"
        self.assertEqual(reading.note_name(display, 1), "F sharp")


class MeterTest(unittest.TestCase):
    def test_lamps(self):
        for deviation, centre, flat, sharp in (
            (0.0, "green", 0, 0), (-0.004, "green", 0, 0), (0.025, "green", 0, 1),
            (0.035, "blue", 0, 1), (0.02, "green", 0, 1), (0.11, "blue", 0, 1),
            (0.115, "blue", 0, 2), (-0.5, "blue", 5, 0),
        ):  # fmt: skip
            lamps = reading.tuning_lamps(deviation)
            flats = [k >= 5 - flat for k in range(5)]
            self.assertEqual(lamps, (centre, flats, [k < sharp for k in range(5)]), deviation)
        self.assertEqual(reading.whole_cents(f32(0.02)), 1)
        self.assertEqual(reading.whole_cents(f32(0.11)), 10)
        self.assertEqual(reading.whole_cents(f32(0.115)), 11)
        self.assertEqual(reading.whole_cents(-0.5), -50)

    def test_levels(self):
        gray = ["gray"] * 8
        self.assertEqual(reading.level_lamps(96, 96), (["green"] * 7 + ["red"], "0dB"))
        expected = ["green", "green", "gray", "gray", "gray", "gray", "yellow", "gray"]
        self.assertEqual(reading.level_lamps(70, 90), (expected, "-6dB"))
        self.assertEqual(reading.level_lamps(0, 0), (gray, "-96dB"))
        self.assertEqual(reading.level_lamps(63, 63), (gray, "-33dB"))
        self.assertEqual(reading.level_lamps(100, 0), (gray, "-96dB"))
        self.assertEqual(reading.level_lamps(95, 0)[0], ["green"] * 8)
        for level in range(64, 92):
            lit = (level - 60) // 4
            self.assertEqual(reading.level_lamps(level, 0)[0], ["green"] * lit + ["gray"] * (8 - lit))


class UpdateLoopTest(unittest.TestCase):
    BLOCK = [0.0] * 436

    def loop(self, current=440.0):
        loop = reading.UpdateLoop(reading.NoteDisplay())
        loop.frequency = f32(current)
        return loop

    def read(self, loop, frequency, now=1.0):
        loop.detector.raw_frequency = f32(frequency)
        return loop.tick(self.BLOCK, 8000, 436, now)[0]

    def test_the_limits_are_excluded(self):
        # The singles next to the limits: none equals its limit, so each lies on one side.
        for frequency, accepted in (
            (26.716999053955078125, False), (26.7170009613037109375, True), (27.5, True),
            (4186.0, True), (4311.759765625, True), (4311.76025390625, False),
        ):  # fmt: skip
            self.assertEqual(self.read(self.loop(), frequency), accepted, frequency)
        self.assertFalse(self.read(self.loop(), 26.7))
        self.assertFalse(self.read(self.loop(), 4311.8))

    def test_smoothing_and_jumps(self):
        for current, new, result in ((440.0, 443.0, 441.5), (440.0, 445.0, 445.0), (0.0, 300.0, 300.0)):
            loop = self.loop(current)
            self.assertTrue(self.read(loop, new))
            self.assertEqual(loop.frequency, result)
            self.assertEqual(loop.detector.raw_frequency, 0.0)

    def test_an_equal_reading_updates_nothing(self):
        loop = self.loop()
        self.read(loop, 440.0)
        self.assertEqual(loop.updates, 0)
        self.read(loop, 443.0)
        self.assertEqual(loop.updates, 1)

    def test_an_unshowable_frequency_is_tried_at_every_tick(self):
        loop = self.loop()
        loop.display.reference_pitch = f32(499.9)
        for now in (1.0, 2.0, 3.0):
            self.read(loop, 27.0 if now == 1.0 else 0.0, now)
        self.assertEqual((loop.updates, loop.display.note, loop.frequency), (3, "A", 27.0))

    def test_the_centre_lamp_grays_after_a_fifth_of_a_second(self):
        loop = self.loop()
        self.read(loop, 445.0, 1.0)
        for now, gray in ((1.1, False), (1.2, False), (1.25, True)):
            loop.tick(self.BLOCK, 8000, 436, now)
            self.assertEqual(loop.centre_gray, gray, now)
        self.assertEqual(loop.display.note, "A")

    def test_the_hold_lasts_a_second(self):
        loop = self.loop()
        loud = [-0.16] + [0.0] * 435  # 20 * log10(0.16) + 96 = 80.08
        quiet = [-0.01] + [0.0] * 435  # 56.0 less a step of the 16-bit scale
        self.assertEqual(loop.tick(loud, 8000, 436, 1.0)[1], 80)
        for now, held in ((1.5, 80), (2.0, 80), (2.1, 80), (2.2, 55)):
            self.assertEqual(loop.tick(quiet, 8000, 436, now)[1], held, now)

    def test_an_equal_level_holds_for_another_second(self):
        loop = self.loop()
        loud, quiet = [-0.16] + [0.0] * 435, [-0.01] + [0.0] * 435
        for now, block, held in ((1.0, loud, 80), (1.8, loud, 80), (2.5, quiet, 80), (2.9, quiet, 80),
                                 (3.0, quiet, 55)):  # fmt: skip
            self.assertEqual(loop.tick(block, 8000, 436, now)[1], held, now)


class RecordingTest(unittest.TestCase):
    def test_a_stereo_recording(self):
        mono = sine(440.0, 44100, 3 * 2405 + 1)
        data = b"".join(struct.pack("<ff", s, s) for s in mono)
        header = struct.pack("<HHIIHH", 3, 2, 44100, 44100 * 8, 8, 32)
        body = b"WAVEfmt " + struct.pack("<I", 16) + header + b"data" + struct.pack("<I", len(data)) + data
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a.wav")
            with open(path, "wb") as file:
                file.write(b"RIFF" + struct.pack("<I", len(body)) + body)
            readings = reading.analyze(path)
        self.assertEqual([r["block"] for r in readings], [0, 1, 2])
        self.assertEqual([r["time"] for r in readings], [n * 2405 / 44100 for n in (1, 2, 3)])
        for r in readings:
            self.assertEqual((r["note"], r["accidental"], r["octave"]), ("A", "", "4"))
            self.assertEqual((r["accepted"], r["peak"], r["peakHold"]), (True, 89, 89))


if __name__ == "__main__":
    unittest.main()
