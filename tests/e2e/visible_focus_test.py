"""Whoever uses the keyboard must see where they are."""

import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.screen import Screenshot, contrasting_pixels
from harness.waiting import wait_until

# What accessibility guidelines ask for between the look with the focus and the look without it.
CONTRAST = 3
# A mark may lie this far outside the control.
MARGIN = 4


class VisibleFocus(Scenario):
    width, height, fill = 1220, 1300, True

    def test_every_control_of_the_list_page_shows_that_it_has_the_focus(self):
        self.expect_marks(self.start_linked(), stops=9)

    def test_every_control_of_the_create_page_shows_that_it_has_the_focus(self):
        window = self.start_linked()
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        self.expect_marks(window, stops=17)

    def test_the_link_code_shows_that_it_has_the_focus_while_there_is_no_code(self):
        window = self.start_unlinked()
        walker = FocusWalker(window, self.keyboard)
        self.assertEqual(walker.here()[1], "Tarnwick URL")
        self.expect_mark(walker, Screenshot(self.desktop))
        self.assertEqual(walker.here()[1], "Link code")

    def expect_marks(self, window, stops):
        walker = FocusWalker(window, self.keyboard)
        first = walker.here()
        before = Screenshot(self.desktop)
        for _stop in range(stops):
            before = self.expect_mark(walker, before)
        self.assertEqual(walker.here(), first)

    def expect_mark(self, walker, before):
        """Moves on, and expects that the next control gets a mark: as much as a line of two pixels along its edge."""
        walker.move()
        control = walker.control()
        left, top, width, height = control.extents()
        left, top = max(left - MARGIN, 0), max(top - MARGIN, 0)
        box = left, top, min(width + 2 * MARGIN, self.width - left), min(height + 2 * MARGIN, self.height - top)

        def marked():
            now = Screenshot(self.desktop)
            return now if contrasting_pixels(before, now, box, CONTRAST) >= 2 * width else None

        return wait_until(marked, f"a visible focus on '{control.title()}'", limit=5)


if __name__ == "__main__":
    unittest.main()
