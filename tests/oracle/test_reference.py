"""Checks of the second implementation itself, by hand and against sorting."""
import random
import unittest

import numpy as np

from reductions import Extremes
from reference import Switches, leading_number, number
from selection import ascending, descending, engineering_extreme, position, select


class SelectionTest(unittest.TestCase):
    def test_the_target_is_where_a_sort_would_put_it(self):
        chooser = random.Random(1)
        for count in list(range(0, 90)) + [200, 500]:
            for values in ([chooser.random() for _ in range(count)], [chooser.randrange(5) for _ in range(count)],
                           list(range(count)), list(range(count, 0, -1)), [7] * count):
                for before, ordered in ((ascending, sorted(values)), (descending, sorted(values, reverse=True))):
                    for target in {0, count // 3, count // 2, max(0, count - 1), count}:
                        moved = list(values)
                        select(moved, target, before)
                        self.assertEqual(sorted(moved), sorted(values))
                        if target < count:
                            self.assertEqual(moved[target], ordered[target])
                            self.assertFalse(any(before(moved[target], v) for v in moved[:target]))
                            self.assertFalse(any(before(v, moved[target]) for v in moved[target:]))

    def test_ten_percent_of_twenty_five_is_the_second(self):
        values = [float((i * 7) % 25 + 1) for i in range(25)]
        self.assertEqual(position(25, 10.0), 2)
        self.assertEqual(engineering_extreme(list(values), 10.0, ascending), 2.0)
        self.assertEqual(engineering_extreme(list(values), 10.0, descending), 24.0)

    def test_positions_stay_within_the_values(self):
        self.assertEqual(position(20, 3.0), 0)
        self.assertEqual(position(7, 50.0), 3)
        self.assertEqual(position(10, 250.0), 10)
        self.assertEqual(position(10, -5.0), 0)
        self.assertEqual(position(10, float("nan")), 0)

    def test_a_hundred_percent_reads_the_other_end(self):
        values = [3.0, 1.0, 2.0]
        self.assertEqual(engineering_extreme(list(values), 100.0, ascending), 3.0)
        self.assertEqual(engineering_extreme(list(values), 100.0, descending), 1.0)


class TextTest(unittest.TestCase):
    def test_numbers_have_six_digits_and_three_of_exponent(self):
        for value, text in ((0.000123456789, "0.000123457"), (123457.0, "123457"), (1234567.0, "1.23457e+006"),
                            (12345678.0, "1.23457e+007"), (4.5e-12, "4.5e-012"), (0.5, "0.5"), (100.0, "100"),
                            (-0.0, "-0"), (float("inf"), "inf"), (float("-inf"), "-inf"), (float("nan"), "nan"),
                            (-1.7976931348623157e308, "-1.79769e+308"), (0, "0"), (1e100, "1e+100")):
            self.assertEqual(number(value), text)

    def test_leading_numbers(self):
        for text, value in (("12.5", 12.5), (" 7%", 7.0), ("abc", 0.0), ("1e1", 10.0), (".5x", 0.5), ("-3", -3.0),
                            ("1e", 1.0), ("0x10", 0.0), ("nan", 0.0), ("12.5\r", 12.5), ("", 0.0)):
            self.assertEqual(leading_number(text), value)

    def test_switches_are_words_anywhere_behind_the_marker(self):
        switches = Switches("EXTRACT_MASS\nx ODB EXTRACTIONS y\nEXTRACT_FIELD_COMPONENTS\nX=3 PERCENTAGE=5\n")
        self.assertEqual((switches.mass, switches.field, switches.components, switches.percentage),
                         (False, True, True, 3.0))


class ExtremesTest(unittest.TestCase):
    def test_nan_replaces_nothing_and_of_equals_the_first_stays(self):
        extremes = Extremes.starting()
        extremes.take([float("nan"), -0.0, 0.0, float("nan")])
        self.assertEqual((str(extremes.max), str(extremes.min)), ("-0.0", "-0.0"))

    def test_lengths_are_those_of_single_precision(self):
        from reductions import row_lengths
        self.assertEqual(row_lengths(np.array([[3, 4, 0], [0, 0, 1]], "f4")), [5.0, 1.0])
        self.assertEqual(row_lengths(np.array([[4097, 1]], "f4")), [float(np.sqrt(np.float32(16785408)))])


if __name__ == "__main__":
    unittest.main()
