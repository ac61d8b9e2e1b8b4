"""The temperament file read plainly: UTF-16 text, a text property list, rows of twelve ratios."""

import ctypes
import math
import re
from fractions import Fraction

BUILT_IN = (
    "{Pythagorean = (1.0, 1.067871094, 1.125, 1.185185185, 1.265625, 1.333333333, 1.423828125, "
    "1.5, 1.601806641, 1.6875, 1.777777778, 1.8984375);}"
)
BARE = frozenset("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_$/:.-")
ESCAPES = {"a": "\a", "b": "\b", "f": "\f", "n": "\n", "r": "\r", "t": "\t", "v": "\v"}
DEEPEST = 100


def f32(x):
    """x rounded to the nearest single, as a Python float; too large becomes infinite."""
    return ctypes.c_float(x).value


def divide(a, b):
    """Single-precision quotient of two singles, with the zero and infinite cases of IEEE 754."""
    if b == 0.0:
        if a == 0.0 or math.isnan(a):
            return math.nan
        return math.copysign(math.inf, a) * math.copysign(1.0, b)
    return f32(a / b)


def ieee_log2(x):
    if math.isnan(x) or x < 0.0:
        return math.nan
    return -math.inf if x == 0.0 else math.log2(x)


def ieee_exp2(x):
    try:
        return math.exp2(x)
    except OverflowError:
        return math.inf


def number_of(text):
    """The leading decimal number of a text, rounded once to single precision; 0.0 for none."""
    match = re.match(r"[ \t\n\v\f\r]*([+-]?(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)", text)
    if match is None:
        return 0.0
    double = float(match[1])
    if double == 0.0 or math.isinf(double):
        return double
    exact = Fraction(match[1])
    single = f32(double)
    if math.isinf(single):
        largest = 2**128 - 2**103
        return single if abs(exact) >= largest else math.copysign(2.0**128 - 2.0**104, double)
    best = single
    # Going through a double rounds twice; the neighbours decide where that matters.
    for bits in (-1, 1):
        other = ctypes.c_uint32.from_buffer_copy(ctypes.c_float(single))
        other.value += bits
        neighbour = ctypes.c_float.from_buffer_copy(other).value
        if math.isfinite(neighbour) and abs(Fraction(neighbour) - exact) < abs(Fraction(best) - exact):
            best = neighbour
    return best


class PropertyListError(ValueError):
    pass


class Parser:
    """Dictionaries, lists, quoted and bare strings, both comment styles."""

    def __init__(self, text):
        self.text = text
        self.at = 0

    def fail(self, why):
        line = self.text.count("\n", 0, self.at) + 1
        column = self.at - (self.text.rfind("\n", 0, self.at) + 1) + 1
        raise PropertyListError(f"line {line}, column {column}: {why}")

    def skip(self):
        text = self.text
        while self.at < len(text):
            if text[self.at] in " \t\n\v\f\r\u2028\u2029":
                self.at += 1
            elif text.startswith("//", self.at):
                while self.at < len(text) and text[self.at] not in "\n\r\u2028\u2029":
                    self.at += 1
            elif text.startswith("/*", self.at):
                end = text.find("*/", self.at + 2)
                if end < 0:
                    self.fail("comment without end")
                self.at = end + 2
            else:
                return

    def peek(self):
        self.skip()
        return self.text[self.at] if self.at < len(self.text) else ""

    def expect(self, mark):
        if self.peek() != mark:
            self.fail(f"{mark} expected")
        self.at += 1

    def document(self):
        root = self.value(0)
        if self.peek():
            self.fail("text after the end")
        return root

    def value(self, depth):
        if depth > DEEPEST:
            self.fail("nested too deeply")
        mark = self.peek()
        if mark == "{":
            return self.dictionary(depth)
        if mark == "(":
            return self.list(depth)
        return self.string()

    def dictionary(self, depth):
        self.expect("{")
        result = {}
        while self.peek() != "}":
            key = self.string()
            self.expect("=")
            result[key] = self.value(depth + 1)
            self.expect(";")
        self.at += 1
        return result

    def list(self, depth):
        self.expect("(")
        result = []
        while self.peek() != ")":
            result.append(self.value(depth + 1))
            if self.peek() != ",":
                break
            self.at += 1
        self.expect(")")
        return result

    def string(self):
        mark = self.peek()
        if mark in ('"', "'") and mark:
            return self.quoted(mark)
        start = self.at
        while self.at < len(self.text) and self.text[self.at] in BARE:
            self.at += 1
        if self.at == start:
            self.fail("a value was expected")
        return self.text[start : self.at]

    def quoted(self, mark):
        self.at += 1
        units = []
        while True:
            if self.at >= len(self.text):
                self.fail("string without end")
            c = self.text[self.at]
            self.at += 1
            if c == mark:
                break
            units.append(self.escape() if c == "\\" else c)
        # Escapes name UTF-16 units, so a pair of them may be one character.
        try:
            return "".join(units).encode("utf-16-le", "surrogatepass").decode("utf-16-le")
        except UnicodeDecodeError:
            self.fail("lone surrogate")

    def escape(self):
        rest = self.text[self.at : self.at + 5]
        for pattern, base in ((r"([0-7]{1,3})", 8), (r"U([0-9A-Fa-f]{1,4})", 16)):
            match = re.match(pattern, rest)
            if match:
                self.at += match.end()
                return chr(int(match[1], base))
        if not rest:
            self.fail("string without end")
        self.at += 1
        return ESCAPES.get(rest[0], rest[0])


def decode(data):
    """UTF-16 by its mark; without one, by which byte of the first unit is zero."""
    if data[:2] == b"\xfe\xff":
        return data[2:].decode("utf-16-be")
    if data[:2] == b"\xff\xfe":
        return data[2:].decode("utf-16-le")
    return data.decode("utf-16-be" if data[:1] == b"\0" else "utf-16-le")


def parse(text):
    root = Parser(text).document()
    if not isinstance(root, dict) or not all(isinstance(v, list) for v in root.values()):
        raise PropertyListError("not a dictionary of lists")
    return root


def row_of(entries):
    """Twelve ratios to the tonic: cents where the first entry reads as zero, else a scale."""
    values = [number_of(e) if isinstance(e, str) else 0.0 for e in entries[:12]]
    row = [1.0]
    if values[0] == 0.0:
        accumulator = 100.0
        for value in values[1:]:
            row.append(f32(ieee_exp2(f32(value + accumulator) / 1200.0)))
            accumulator = f32(accumulator + 100.0)
    else:
        row += [divide(value, values[0]) for value in values[1:]]
    return row


def tool_tip(row):
    equal = [f32(math.exp2(j / 12.0)) for j in range(12)]
    logarithms = [ieee_log2(divide(r, e)) for r, e in zip(row, equal)]
    offsets = [1200.0 * x - 1200.0 * logarithms[9] for x in logarithms]
    offsets[9] = 0.0  # also where the formula has no value
    return "cents = (" + ", ".join("%.3f" % x for x in offsets) + ")"


def load(path):
    """(name, row, tool tip) in menu order; the built-in table where the file is not usable."""
    try:
        with open(path, "rb") as file:
            table = parse(decode(file.read()))
    except (OSError, UnicodeDecodeError, PropertyListError):
        table = parse(BUILT_IN)
    result = []
    for name in sorted(table, key=str.casefold):
        if len(table[name]) >= 12:
            row = row_of(table[name])
            result.append((name, row, tool_tip(row)))
    return result
