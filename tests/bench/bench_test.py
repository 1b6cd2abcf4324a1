"""What the bench computes and draws. Its measurements cannot be tested."""

import pathlib
import sys
import tempfile
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))

from curve import draw  # noqa: E402 (the path comes first)
from processes import wake_ups_between  # noqa: E402
from report import ratio, spread  # noqa: E402


class Bench(unittest.TestCase):
    def test_the_middle_is_the_median_and_the_spread_the_quartiles(self):
        self.assertEqual(spread([5, 1, 4, 2, 3]), "3.0 (2.0–4.0)")
        self.assertEqual(spread([7.5]), "7.5 (7.5–7.5)")

    def test_a_ratio_compares_within_a_round(self):
        # In the second round the machine was half as fast, for both programs.
        self.assertEqual(ratio([15, 30, 15], [10, 20, 10]), "1.50 (1.50–1.50)")
        with self.assertRaises(ValueError):
            ratio([1, 2], [1])

    def test_a_thread_that_ended_or_came_counts_too(self):
        self.assertEqual(wake_ups_between({"1": 10, "2": 400}, {"1": 12, "3": 5}), 1 + 2 + 5)

    def test_larger_values_are_drawn_higher(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, "curve.svg")
            draw(file, {"a < b": {"one": [(10, 1.0), (1000, 50.0)], "other": [(10, 3.0), (1000, 4.0)]}})
            circles = list(xml.etree.ElementTree.parse(file).getroot().iter("{http://www.w3.org/2000/svg}circle"))
        places = sorted((float(circle.get("cx")), -float(circle.get("cy"))) for circle in circles)
        self.assertEqual(len(places), 4)
        low, high, middle, highest = (y for _x, y in places)
        self.assertTrue(low < high < middle < highest, places)


if __name__ == "__main__":
    unittest.main()
