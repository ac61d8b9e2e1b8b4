"""Random recordings, temperament files and settings for the comparison.

A case follows from its seed and number alone, so a mismatch can be run again by itself.
"""

import math
import random
import struct

from temperament_file import f32

RATES = [8000] * 6 + [11025] * 4 + [16000] * 3 + [22050] * 2 + [32000, 44100, 44100, 48000, 48000,
         88200, 96000, 176400, 192000]  # fmt: skip
MOST_SAMPLES = 60000
NAMES = ["Werckmeister III", "werckmeister iii", "WERCKMEISTER III", "Vallotti", "Kirnberger", "Zarlino",
         "Just", "just", "1/4 Meantone", "Straße", "STRASSE", "strasse", "Éolien", "éolien", "Ünder", "Σίσυφος",
         "ΣΊΣΥΦΟΣ", "Жёлтый", "жёлтый", "純正律", "A♯", "a♭", 'say "A"', "back\\slash", "tab\there", "Z", "z",
         "𐐀𐐁", "𐐨𐐩", "𝄞 clef", "_$x", "10", "9", "a.b-c:d/e", "ǅ", "ǆ", "İ", "ı", "i", "I"]  # fmt: skip


class Case:
    """What one run of the program needs, and what the reference needs to do the same."""

    def __init__(self, seed, index):
        r = self.random = random.Random(f"{seed}:{index}")
        self.index = index
        self.rate = r.choice(RATES) if r.random() < 0.8 else int(8000 * 24 ** r.random())
        self.channels = r.choice([1, 1, 1, 2, 2, 2, 3, 4, 5, 6])
        seconds = r.uniform(0.3, 1.0) if r.random() < 0.8 else r.uniform(1.0, 4.0)
        self.frames = max(1, min(int(seconds * self.rate), MOST_SAMPLES // self.channels))
        if r.random() < 0.02:
            self.frames = r.randrange(1, 600)
        self.callback_frames = r.choice([64, 441, 512, 512, 1024, 4096, 20000, r.randrange(64, 20001)])
        self.tonic = r.randrange(12)
        self.transpose = r.randrange(-11, 12)
        self.reference_pitch = r.choice(["440", "349", "499.9", "442.0", "%.1f" % r.uniform(349, 499.9),
                                         "%.4f" % r.uniform(349, 499.8)])  # fmt: skip
        self.kind, mono = signal(r, self.rate, self.frames)
        self.layout, frames = spread(r, mono, self.channels)
        self.samples = [s for frame in frames for s in frame]
        self.bits = r.choice([32, 32, 32, 32, 16, 24])
        self.temperament_text, self.temperament_bytes = temperament_file(r)

    def write(self, sound_path, temperament_path):
        with open(sound_path, "wb") as file:
            file.write(wav(self.rate, self.channels, self.samples, self.bits))
        with open(temperament_path, "wb") as file:
            file.write(self.temperament_bytes)

    def describe(self):
        return (f"{self.kind}, {self.channels} channel(s) {self.layout}, {self.rate} Hz, "
                f"{self.frames} frames of {self.bits} bits")  # fmt: skip


# --- Sound -------------------------------------------------------------------------------


def wav(rate, channels, samples, bits):
    if bits == 32:
        body = struct.pack(f"<{len(samples)}f", *(f32(s) for s in samples))
    else:
        top = 2 ** (bits - 1)
        whole = [max(-top, min(top - 1, round(s * top))) if math.isfinite(s) else 0 for s in samples]
        body = b"".join(w.to_bytes(bits // 8, "little", signed=True) for w in whole)
    frame = channels * bits // 8
    layout = struct.pack("<HHIIHH", 3 if bits == 32 else 1, channels, rate, rate * frame, frame, bits)
    padded = body + b"\0" * (len(body) % 2)
    riff = b"WAVEfmt " + struct.pack("<I", len(layout)) + layout
    riff += b"data" + struct.pack("<I", len(body)) + padded
    return b"RIFF" + struct.pack("<I", len(riff)) + riff


def tone(r, rate, frames, lowest=27.5, highest=4200.0, harmonics=1, decay=0.0):
    frequency = lowest * (highest / lowest) ** r.random()
    level = 10 ** r.uniform(-1.5, 0.1) / harmonics**0.5
    parts = [(2 * math.pi * frequency * k / rate, level * r.uniform(0.2, 1) / k, r.uniform(0, 6.3))
             for k in range(1, harmonics + 1)]  # fmt: skip
    result = []
    for i in range(frames):
        envelope = math.exp(-decay * i / rate) if decay else 1.0
        result.append(envelope * sum(a * math.sin(w * i + p) for w, a, p in parts))
    return result


def chirp(r, rate, frames):
    low, high = r.uniform(20, 60), r.uniform(3000, 6000)
    phase, result = 0.0, []
    for i in range(frames):
        result.append(0.8 * math.sin(phase))
        phase += 2 * math.pi * low * (high / low) ** (i / frames) / rate
    return result


def melody(r, rate, frames):
    """Neighbouring notes and pauses, for the smoothing, the jumps and the hold."""
    frequency, phase, level, left, result = 440.0, 0.0, 0.5, 0, []
    for _ in range(frames):
        if left == 0:
            left = int(rate * r.uniform(0.08, 0.5))
            frequency *= r.choice([1.003, 0.997, 1.0099, 1.0101, 0.989, 2 ** (1 / 12), 2 ** (-5 / 12), 1.5])
            frequency = 220.0 if frequency > 3000 else max(frequency, 40.0)
            level = r.choice([0.0, 0.02, 0.1, 0.5, 1.0])
        left -= 1
        result.append(level * math.sin(phase))
        phase += 2 * math.pi * frequency / rate
    return result


def pulse_train(r, rate, frames):
    """Peaks at irregular whole distances, where the counting has to decide."""
    result, at = [-r.choice([0.0, 0.001, 0.02])] * frames, r.randrange(0, 50)
    base = r.randrange(3, max(4, rate // 60))
    while at < frames:
        result[at] = r.choice([0.5, 0.5, 0.5, 0.48, 0.46, 0.45, 0.44])
        at += max(2, base + r.choice([0, 0, 0, 0, 1, -1, 2, -(base // 20), base // 20, base // 20 + 1, base]))
    return result


def signal(r, rate, frames):
    kind = r.choice(["sine", "sine", "harmonics", "harmonics", "decay", "noise", "silence", "clipping", "offset",
                     "not numbers", "chirp", "melody", "melody", "pulses", "pulses", "pulses", "low", "high",
                     "threshold", "steps", "square", "noisy tone", "extremes"])  # fmt: skip
    if kind == "sine":
        return kind, tone(r, rate, frames)
    if kind == "harmonics":
        return kind, tone(r, rate, frames, 50, 1500, r.randrange(2, 6))
    if kind == "decay":
        return kind, tone(r, rate, frames, 50, 1000, 2, r.uniform(0.5, 30))
    if kind == "noise":
        level = 10 ** r.uniform(-4, 0)
        return kind, [r.uniform(-level, level) for _ in range(frames)]
    if kind == "silence":
        return kind, [r.choice([0.0, -0.0])] * frames
    if kind == "clipping":
        return kind, [s * 8 for s in tone(r, rate, frames)]
    if kind == "offset":
        shift = r.uniform(-0.7, 0.7)
        return kind, [s * 0.5 + shift for s in tone(r, rate, frames)]
    if kind == "not numbers":
        odd = [math.nan, math.inf, -math.inf]
        rarity = r.choice([0.0005, 0.01, 0.3])
        return kind, [r.choice(odd) if r.random() < rarity else s for s in tone(r, rate, frames, 50, 800)]
    if kind == "chirp":
        return kind, chirp(r, rate, frames)
    if kind == "melody":
        return kind, melody(r, rate, frames)
    if kind == "pulses":
        return kind, pulse_train(r, rate, frames)
    if kind == "low":
        return kind, tone(r, rate, frames, 18, 60)
    if kind == "high":
        return kind, tone(r, rate, frames, 2500, 6000)
    if kind == "threshold":
        # The loudest sample sits on, just below or just above the least level with a pitch.
        edge = r.choice([0.01, 0.00999999977, 0.0100000007, 0.0099, 0.0101])
        wave = tone(r, rate, frames, 50, 900)
        return kind, [max(-edge, min(edge, s)) for s in wave]
    if kind == "steps":
        steps = r.choice([4, 16, 100])
        return kind, [round(s * steps) / steps for s in tone(r, rate, frames, 40, 1000)]
    if kind == "square":
        return kind, [math.copysign(0.5, s) for s in tone(r, rate, frames, 40, 2000)]
    if kind == "noisy tone":
        return kind, [s + r.gauss(0, 0.02) for s in tone(r, rate, frames, 50, 1200, 2)]
    sizes = [1e-45, 1e-38, 1e-20, 1e-5, 1.0, 3e38]
    return kind, [r.choice(sizes) * r.uniform(-1, 1) for _ in range(frames)]


def spread(r, mono, channels):
    """The same sound over the channels, as chance has it: (what was done, frames)."""
    if channels == 1:
        return "", [(s,) for s in mono]
    layout = r.choice(["identical", "identical", "nearly identical", "weighted", "one silent", "opposite"])
    if layout == "identical":
        frames = [(s,) * channels for s in mono]
    elif layout == "nearly identical":
        frames = [(s,) * channels for s in mono]
        for _ in range(r.choice([1, 1, 3])):
            at = r.randrange(len(frames))
            frames[at] = (*frames[at][:-1], f32(frames[at][-1] * 0.999 + 1e-6))
    elif layout == "weighted":
        weights = [r.uniform(-0.2, 0.8) for _ in range(channels)]
        frames = [tuple(s * w for w in weights) for s in mono]
    elif layout == "one silent":
        frames = [(s,) + (0.0,) * (channels - 1) for s in mono]
    else:
        frames = [(s, -s * 0.5) + (0.0,) * (channels - 2) for s in mono]
    return layout, frames


# --- Temperament files -------------------------------------------------------------------


def quoted(r, text):
    units = []
    for c in text:
        if c in '"\\':
            units.append("\\" + c)
        elif c == "\t":
            units.append("\\t")
        elif r.random() < 0.1 and c in "ABCabcxyz":
            units.append("\\%03o" % ord(c))
        elif r.random() < 0.1 and ord(c) < 0xD800:
            units.append("\\U%04x" % ord(c))
        else:
            units.append(c)
    return '"' + "".join(units) + '"'


def entry_text(r, value):
    text = r.choice(["%.9f", "%.4f", "%g", "%.12g", "%.3e"]) % value
    wild = r.random()
    if wild < 0.05:
        return quoted(r, r.choice(["+", " ", "\t "]) + text.lstrip("-"))
    if wild < 0.1:
        return text.replace("+", "") + r.choice(["c", "x1", "e", "e-", ".5", "-1"])
    return text if "+" not in text else quoted(r, text)


def garbage(r):
    return r.choice(["x", "abc", '""', "-", ".", '"+-1"', "inf", "nan", "0x10", "1e40", "-1e99", "1e-46", "0",
                     "-0", '"1,5"', "$1", "-2.5", ".5", "5.", "1.17549435e-38", "1e-40", "16777217",
                     '"16777217.0000000001"', "3.4028235e38", "3.4028236e38"])  # fmt: skip


def entries(r):
    kind = r.choice(["ratios", "ratios", "cents", "cents", "scaled", "garbage", "mixed", "zeros"])
    ratios = [1.0] + [2 ** ((j + r.uniform(-0.3, 0.3)) / 12) for j in range(1, 12)]
    if kind == "ratios":
        values = ratios
    elif kind == "scaled":
        scale = r.choice([2.0, 261.6256, -1.0, 1e-30, 1e30, r.uniform(0.001, 1000)])
        values = [scale * v for v in ratios]
    elif kind == "zeros":
        values = [0.0] * 12
    else:
        values = [0.0] + [r.uniform(-40, 40) for _ in range(11)]
    texts = [entry_text(r, v) for v in values]
    if kind == "garbage":
        texts = [garbage(r) for _ in range(12)]
    elif kind == "mixed":
        for _ in range(r.randrange(1, 4)):
            texts[r.randrange(12)] = garbage(r)
    if r.random() < 0.15:
        texts = texts[: r.randrange(0, 12)]
    elif r.random() < 0.15:
        texts += [garbage(r) for _ in range(r.randrange(1, 4))]
    return texts


def temperament_file(r):
    def gap():
        return r.choice(["", "", " ", "\n", " /* a; \"b\" */ ", " // c { = ( \n", "\t", "\r\n", "\u2028"])

    text = r.choice(["", " ", "\n", "// temperaments\n", "/* x */"]) + "{" + gap()
    for name in r.sample(NAMES, r.choice([0, 1, 2, 3, 5, 8, 20]) if r.random() < 0.9 else len(NAMES)):
        bare = all(c.isascii() and (c.isalnum() or c in "_$.-") for c in name)
        text += (name if bare and r.random() < 0.7 else quoted(r, name)) + gap() + "=" + gap() + "("
        text += ",".join(gap() + e + (gap() if e.endswith('"') else " " + gap()) for e in entries(r))
        text += ")" + gap() + ";" + gap()
    text += "}" + gap()
    wild = r.random()
    if wild < 0.02:
        text = text[: text.rindex("}")]
    elif wild < 0.04:
        text = "{A = (1, 2;}"
    elif wild < 0.05:
        text = "{A = text;}"
    elif wild < 0.06:
        text = "(1, 2, 3)"
    mark, order = r.choice(["", "\ufeff"]), r.choice(["utf-16-le", "utf-16-be"])
    data = (mark + text).encode(order)
    wild = r.random()
    if wild < 0.02:
        data += b"\0"
    elif wild < 0.04:
        data += "\ud800 ".encode(order, "surrogatepass")
    return text, data
