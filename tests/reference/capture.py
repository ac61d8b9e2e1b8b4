"""Recordings read plainly, and the folding of callbacks into mono blocks."""

import math
import struct

from temperament_file import f32


def read_wav(path):
    """(rate in Hz, channels, interleaved samples as Python floats) of a RIFF/WAVE file.

    32-bit float, 16-bit and 24-bit PCM; integers are scaled by their negative full scale.
    """
    with open(path, "rb") as file:
        data = file.read()
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        raise ValueError(f"{path}: not a RIFF/WAVE file")
    layout, body, at = None, None, 12
    while at + 8 <= len(data) and body is None:
        name, size = data[at : at + 4], struct.unpack_from("<I", data, at + 4)[0]
        chunk = data[at + 8 : at + 8 + size]
        if name == b"fmt ":
            code, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", chunk)
            if code == 0xFFFE:
                code = struct.unpack_from("<H", chunk, 24)[0]
            layout = (code, bits, channels, rate)
        elif name == b"data":
            body = chunk
        at += 8 + size + (size & 1)
    if layout is None or body is None:
        raise ValueError(f"{path}: no format or no data chunk")
    code, bits, channels, rate = layout
    if (code, bits) == (3, 32):
        samples = [s for (s,) in struct.iter_unpack("<f", body[: len(body) // 4 * 4])]
    elif (code, bits) == (1, 16):
        samples = [s / 32768.0 for (s,) in struct.iter_unpack("<h", body[: len(body) // 2 * 2])]
    elif (code, bits) == (1, 24):
        samples = [
            int.from_bytes(body[i : i + 3], "little", signed=True) / 8388608.0
            for i in range(0, len(body) // 3 * 3, 3)
        ]
    else:
        raise ValueError(f"{path}: unknown sample format {code}/{bits}")
    return rate, channels, samples[: len(samples) // channels * channels]


class Capture:
    """Folds callbacks into mono blocks of one and a half periods of 27.5 Hz."""

    def __init__(self, sample_rate, post):
        self.post = post
        self.block = None
        self.block_frames = 0
        self.set_sample_rate(sample_rate)

    def set_sample_rate(self, sample_rate):
        self.sample_rate = f32(sample_rate)
        self.invalid = True

    def input_proc(self, buffers, sample_time):
        """buffers: a list of (channel count, interleaved samples)."""
        if not buffers:
            return
        if self.invalid or self.block is None:
            self.invalid = False
            self.block_frames = block_length(self.sample_rate)
            self.block = []
        if not sample_time > 0.0 or self.block_frames == 0:
            return
        channels, first = buffers[0]
        size = 4 * len(first)
        per_channel = size // channels if channels else 0
        used = [buffers[0]]
        for other_channels, samples in buffers[1:]:
            if (4 * len(samples) // other_channels if other_channels else 0) != per_channel:
                break
            used.append((other_channels, samples))
        frames = size // 4 // channels if channels else 0
        halve = False
        if channels == 2 and len(used) == 1:
            halve = all(first[2 * f] == first[2 * f + 1] for f in range(frames))
        if channels > size // 4:
            return
        for f in range(frames):
            total = 0.0
            for count, samples in used:
                for sample in samples[f * count : (f + 1) * count]:
                    total = f32(total + sample)
            if halve:
                total = f32(total * 0.5)
            if total > 1.0:
                total = 1.0
            elif total < -1.0:
                total = -1.0
            self.block.append(total)
            if len(self.block) >= self.block_frames:
                self.post(self.block)
                self.block = []


def block_length(sample_rate):
    length = f32(sample_rate) / 27.5 * 1.5
    if not 0.0 < length < 4294967296.0:
        return 0
    return math.trunc(length)
