"""What the bench computes and draws. What it measures is no matter of right or wrong."""

import unittest
import xml.etree.ElementTree

from curve import Chart, Line, apart, decades, picture
from figures import ratio, spread
from processes import parse_numbers, wake_ups_between
from report import Table, publish

SVG = "{http://www.w3.org/2000/svg}"


class Figures(unittest.TestCase):
    def test_the_middle_is_the_median_and_the_spread_the_quartiles(self):
        found = spread([5, 1, 4, 2, 3])
        self.assertEqual((found.low, found.median, found.high), (2, 3, 4))

    def test_one_value_is_everything_there_is(self):
        found = spread([7.5])
        self.assertEqual((found.low, found.median, found.high), (7.5, 7.5, 7.5))

    def test_nothing_measured_is_an_error(self):
        with self.assertRaises(ValueError):
            spread([])

    def test_a_ratio_compares_within_a_round(self):
        # In the second round the machine was half as fast, for both.
        found = ratio([15, 30, 15], [10, 20, 10])
        self.assertEqual((found.low, found.median, found.high), (1.5, 1.5, 1.5))

    def test_rounds_without_a_partner_are_an_error(self):
        with self.assertRaises(ValueError):
            ratio([1, 2], [1])

    def test_a_spread_reads_as_text(self):
        self.assertEqual(spread([1, 2, 3]).text(2), "2.00 (1.50–2.50)")


class Reports(unittest.TestCase):
    table = Table("Start", ["", "ms"], [["empty", "9.0"], ["client", "14.0"]], ["A remark."])

    def test_markdown_has_head_rows_and_remarks(self):
        self.assertEqual(self.table.as_markdown(),
                         "### Start\n\n|  | ms |\n| --- | ---: |\n| empty | 9.0 |\n| client | 14.0 |\n\nA remark.\n")

    def test_columns_of_the_text_stand_below_each_other(self):
        self.assertEqual(self.table.as_text().splitlines(),
                         ["", "Start", "", "          ms", "──────  ────", "empty    9.0", "client  14.0",
                          "A remark."])


    def test_results_replace_the_earlier_ones_in_the_document(self):
        begin, end = "<!-- results: written by ./bench --publish -->", "<!-- end of results -->"
        self.assertEqual(publish(f"a\n{begin}\nold\n{end}\nb\n", "new\n"), f"a\n{begin}\nnew\n{end}\nb\n")
        with self.assertRaises(ValueError):
            publish("no place", "new")


class Processes(unittest.TestCase):
    def test_numbers_are_read_and_texts_left_out(self):
        self.assertEqual(parse_numbers("Name:\tclient\nVmHWM:\t  120 kB\nPss: 7 kB\n"), {"VmHWM": 120, "Pss": 7})


    def test_a_thread_that_ended_or_came_counts_too(self):
        self.assertEqual(wake_ups_between({"1": 10, "2": 400}, {"1": 12, "3": 5}), 1 + 2 + 5)


class Curves(unittest.TestCase):
    def test_the_axes_enclose_the_values(self):
        self.assertEqual(decades([10, 200_000]), [1, 2, 3, 4, 5, 6])
        self.assertEqual(decades([10]), [1, 2])

    def test_names_at_the_ends_of_lines_do_not_touch(self):
        self.assertEqual(apart([100, 95, 40], 15), [100, 85, 40])

    def test_every_point_is_drawn_and_names_are_escaped(self):
        charts = [Chart("a < b", [Line("one", [(10, 1.0), (100, 2.0)]), Line("other", [(10, 3.0), (100, 4.0)])])]
        root = xml.etree.ElementTree.fromstring(picture(charts))
        self.assertEqual(len(list(root.iter(SVG + "circle"))), 4)
        self.assertIn("a < b", [text.text for text in root.iter(SVG + "text")])

    def test_larger_values_are_drawn_higher(self):
        root = xml.etree.ElementTree.fromstring(picture([Chart("", [Line("", [(10, 1.0), (1000, 50.0)])])]))
        first, last = root.iter(SVG + "circle")
        self.assertLess(float(last.get("cy")), float(first.get("cy")))
        self.assertGreater(float(last.get("cx")), float(first.get("cx")))


if __name__ == "__main__":
    unittest.main()
