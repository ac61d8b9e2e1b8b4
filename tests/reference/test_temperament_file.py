"""Worked values for the reference reading of temperament files."""

import math
import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import temperament_file
from temperament_file import f32

EQUAL_RATIOS = [1.0, 1.0594630943592953, 1.122462048309373, 1.189207115002721,
                1.2599210498948732, 1.3348398541700344, 1.4142135623730951, 1.4983070768766815,
                1.5874010519681994, 1.681792830507429, 1.7817974362806785, 1.8877486253633868]  # fmt: skip


class TemperamentTest(unittest.TestCase):
    def load(self, data):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "t.txt")
            with open(path, "wb") as file:
                file.write(data)
            return temperament_file.load(path)

    def load_text(self, text):
        return self.load(text.encode("utf-16-le"))

    PYTHAGOREAN_TIP = ("cents = (-5.865, 7.820, -1.955, -11.730, 1.955, -7.820, 5.865, -3.910, "
                       "9.775, 0.000, -9.775, 3.910)")  # fmt: skip

    def test_unusable_files_give_the_built_in_table(self):
        good = "{A = (1,2,3,4,5,6,7,8,9,10,11,12);}"
        for data in (b"{}", b"\x00", "{A = (1);".encode("utf-16"), "(1)".encode("utf-16"),
                     "{A = b;}".encode("utf-16"), good.encode("utf-16-le") + b"x",
                     good.encode("utf-16-le") + b"\x00\xd8", good.encode("utf-8")):  # fmt: skip
            table = self.load(data)
            self.assertEqual([(n, t) for n, _, t in table], [("Pythagorean", self.PYTHAGOREAN_TIP)])
        self.assertEqual(temperament_file.load("/nonexistent")[0][2], self.PYTHAGOREAN_TIP)

    def test_both_byte_orders_with_and_without_mark(self):
        text = '{"Zarlino ♯" = (1,2,3,4,5,6,7,8,9,10,11,12);}'
        for encoding in ("utf-16-le", "utf-16-be"):
            for mark in ("", "\ufeff"):
                self.assertEqual(self.load((mark + text).encode(encoding))[0][0], "Zarlino ♯")

    def test_an_empty_dictionary_has_no_temperaments(self):
        self.assertEqual(self.load_text("{}"), [])

    def test_names_are_ordered_without_case_and_stable(self):
        values = "= (1,2,3,4,5,6,7,8,9,10,11,12);"
        text = "{" + "".join(f'"{n}" {values}' for n in ("b", "É", "B", "a", "é", "C")) + "}"
        names = [n for n, _, _ in self.load_text(text)]
        self.assertEqual(names, ["a", "b", "B", "C", "É", "é"])

    def test_a_short_list_leaves_no_gap(self):
        text = "{a = (1,2,3); b = (2,4,6,8,10,12,14,16,18,20,22,24,99);}"
        table = self.load_text(text)
        self.assertEqual([(n, r) for n, r, _ in table], [("b", [float(i) for i in range(1, 13)])])

    def test_twelve_zeros_are_equal_temperament(self):
        _, row, tip = self.load_text("{e = (0,0,0,0,0,0,0,0,0,0,0,0);}")[0]
        self.assertEqual(row, [f32(r) for r in EQUAL_RATIOS])
        self.assertEqual(tip.replace("-0.000", "0.000"), "cents = (" + ", ".join(["0.000"] * 12) + ")")

    def test_a_first_entry_without_a_number_means_cents(self):
        _, row, _ = self.load_text("{e = (x,100,y,-300,0,0,0,0,0,0,0,0);}")[0]
        self.assertEqual(row[1:4], [f32(EQUAL_RATIOS[2]), f32(EQUAL_RATIOS[2]), 1.0])

    def test_a_later_entry_without_a_number_is_a_zero_ratio(self):
        _, row, _ = self.load_text("{e = (-2,x,1,0,0,0,0,0,0,1,0,0);}")[0]
        self.assertEqual((row[0], row[1], row[2]), (1.0, 0.0, -0.5))

    def test_numbers(self):
        cases = {"1.5": 1.5, " 2": 2.0, "-3e1x": -30.0, "1e": 1.0, "1.e1": 10.0, ".5": 0.5,
                 ".": 0.0, "": 0.0, "+4": 4.0, "+-4": 0.0, "0x10": 0.0, "inf": 0.0, "nan": 0.0,
                 "1,5": 1.0, "1e40": math.inf, "-1e999": -math.inf, "1e-999": 0.0,
                 "1.1": 1.10000002384185791015625, "16777217": 16777216.0,
                 "16777217.0000000001": 16777218.0, "1e-45": 2.0**-149}  # fmt: skip
        for text, value in cases.items():
            self.assertEqual(temperament_file.number_of(text), value, text)

    def test_property_list(self):
        text = '''// first
        { /* a */ "q \\"x\\" \\101\\U266f\\\\" = ( 1.5 , "two words", /* , */ c_$/:.-9, ); // x
          'single' = (); b=({k=v;},(1));}
        '''
        self.assertEqual(
            temperament_file.parse(text),
            {'q "x" A♯\\': ["1.5", "two words", "c_$/:.-9"], "single": [], "b": [{"k": "v"}, ["1"]]},
        )
        for bad in ("", "{", "{a=(1)}", "{a (1);}", "{=(1);}", "{a=(1,,2);}", '{"a=(1);}', "{} x",
                    "/* {}", "{a=(1);;}", "(" * 5000):  # fmt: skip
            with self.assertRaises(temperament_file.PropertyListError, msg=bad[:20]):
                temperament_file.parse(bad)


if __name__ == "__main__":
    unittest.main()
