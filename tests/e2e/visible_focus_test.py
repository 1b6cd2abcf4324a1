"""Keyboard users must see which control has the focus."""

import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.screen import contrasting_pixels, screenshot, wait_for_stillness
from harness.waiting import wait_until

# The contrast that accessibility guidelines require between the focused and the unfocused look.
CONTRAST = 3
# A focus frame may be this far outside the control.
MARGIN = 4
# How far a focus frame extends beyond the control, and how much of the window is free below a page.
MARK, BORDER = 2, 20
# The initial size, and one that shows either page completely.
USUAL_SIZE, WHOLE_PAGE = (1220, 860), (1220, 1300)


class VisibleFocus(Scenario):
    width, height = 1280, 1320

    def test_every_control_of_the_list_page_shows_that_it_has_the_focus(self):
        self.open(self.start_linked(), WHOLE_PAGE)
        self.expect_marks(9)

    def test_every_control_of_the_create_page_shows_that_it_has_the_focus(self):
        self.open(self.start_linked(), WHOLE_PAGE, "Create GDPS")
        self.expect_marks(17)

    def test_the_link_code_shows_that_it_has_the_focus_while_there_is_no_code(self):
        self.open(self.start_unlinked(), USUAL_SIZE)
        self.expect_mark(wait_for_stillness(self.desktop, self.window.status))
        self.assertEqual(self.walker.here()[1], "Link code")

    def test_a_page_scrolls_to_the_control_that_gets_the_focus_and_its_mark(self):
        self.open(self.start_linked(), USUAL_SIZE, "Create GDPS")
        # Backwards first: the focus then enters the page at its end, which is not visible.
        for key in ("shift+Tab", "Tab"):
            places = set()
            for _stop in range(17):
                self.walker.move(key)
                control = self.walker.control()
                if control.extents()[1] > self.window.tabs().extents()[1]:
                    self.assertTrue(self.in_view(control), f"{control} at {control.extents()} is not in view whole.")
                    places.add(self.window.find("label", "Create a New GDPS").extents())
            self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))
            self.assertGreater(len(places), 1, "The page never scrolled.")

    def test_the_page_stays_where_it_is_under_a_mouse(self):
        self.open(self.start_linked(), USUAL_SIZE, "Create GDPS")
        description = self.window.field("Description")
        left, top, width, height = before = description.extents()
        self.assertFalse(self.in_view(description))
        self.assertLess(top + MARGIN, USUAL_SIZE[1] - BORDER)
        self.desktop.click(left + width // 2, top + height // 2)
        wait_until(description.focused, "the focus on the description")
        self.assertEqual(description.extents(), before)

    def open(self, window, size, tab=None):
        self.window = window
        if size != USUAL_SIZE:
            self.desktop.resize_window(*size)
        wait_until(lambda: window.frame.extents() == (0, 0, *size), f"a window of {size} that knows of it")
        if tab:
            window.open_tab(tab)
            wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        self.walker = FocusWalker(window, self.desktop)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))

    def expect_marks(self, stops):
        before = wait_for_stillness(self.desktop, self.window.status)
        for _stop in range(stops):
            before = self.expect_mark(before)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))

    def expect_mark(self, before):
        """Moves on, and expects a change around the next control: as much as a line of two pixels along its edge."""
        self.walker.move()
        control = self.walker.control()

        def marked():
            now = screenshot(self.desktop)
            return now if self.is_mark(control.extents(), before, now) else None

        return wait_until(marked, f"a visible focus on '{control.title()}'", limit=5)

    def in_view(self, control):
        """Whether the control and its focus frame are completely visible in the area of the pages."""
        _left, tabs_top, _width, tabs_height = self.window.tabs().extents()
        _left, top, _width, height = control.extents()
        return tabs_top + tabs_height <= top - MARK and top + height + MARK <= USUAL_SIZE[1] - BORDER

    def is_mark(self, box, before, now):
        """Whether at least the pixels of a line of two pixels along the box's edge have changed."""
        left, top, width, height = box
        left, top = max(left - MARGIN, 0), max(top - MARGIN, 0)
        around = left, top, min(width + 2 * MARGIN, self.width - left), min(height + 2 * MARGIN, self.height - top)
        return contrasting_pixels(before, now, around, CONTRAST) >= 2 * width


if __name__ == "__main__":
    unittest.main()
