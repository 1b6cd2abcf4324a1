"""Whoever uses the keyboard must see where they are."""

import unittest

from harness.client_window import takes_focus
from harness.focus_walker import FocusWalker
from harness.mouse import click
from harness.scenario import Scenario
from harness.screen import Screenshot, contrasting_pixels, wait_for_stillness
from harness.waiting import wait_until
from harness.window_size import resize_window

# What accessibility guidelines ask for between the look with the focus and the look without it.
CONTRAST = 3
# A mark may lie this far outside the control.
MARGIN = 4
# How far a mark reaches beyond the control, and how much of the window is free below a page.
MARK, BORDER = 2, 20
# As the window opens, and high enough for either page to be shown whole.
USUAL_SIZE, WHOLE_PAGE = (1220, 860), (1220, 1300)
# How many controls Tab visits on either page.
LIST_STOPS, FORM_STOPS = 9, 17
# The keyboard goes here while a control is looked at without the focus; this one does not scroll.
ELSEWHERE = "Open Public Pairing Page"


class VisibleFocus(Scenario):
    width, height = 1280, 1320

    def test_every_control_of_the_list_page_shows_that_it_has_the_focus(self):
        self.open(self.start_linked(), WHOLE_PAGE)
        self.expect_marks(LIST_STOPS)

    def test_every_control_of_the_create_page_shows_that_it_has_the_focus(self):
        self.open(self.start_linked(), WHOLE_PAGE, "Create GDPS")
        self.expect_marks(FORM_STOPS)

    def test_the_link_code_shows_that_it_has_the_focus_while_there_is_no_code(self):
        self.open(self.start_unlinked(), USUAL_SIZE)
        self.expect_mark(wait_for_stillness(self.desktop, self.window.status))
        self.assertEqual(self.walker.here()[1], "Link code")

    def test_the_list_page_scrolls_to_the_control_that_gets_the_focus_and_shows_it(self):
        self.open(self.start_linked(), USUAL_SIZE)
        self.expect_marks_in_view("shift+Tab", LIST_STOPS, "Your Tarnwick Projects")
        self.expect_marks_in_view("Tab", LIST_STOPS, "Your Tarnwick Projects")

    def test_the_create_page_scrolls_to_the_control_that_gets_the_focus_and_shows_it(self):
        self.open(self.start_linked(), USUAL_SIZE, "Create GDPS")
        # Backwards first: the focus then enters the page at its end, which is out of view.
        self.expect_marks_in_view("shift+Tab", FORM_STOPS, "Create a New GDPS")
        self.expect_marks_in_view("Tab", FORM_STOPS, "Create a New GDPS")

    def test_the_page_stays_where_it_is_under_a_mouse(self):
        self.open(self.start_linked(), USUAL_SIZE, "Create GDPS")
        description = self.window.field("Description")
        left, top, width, height = before = description.extents()
        self.assertFalse(self.in_view(description))
        self.assertLess(top + MARGIN, USUAL_SIZE[1] - BORDER)
        click(self.desktop, left + width // 2, top + height // 2)
        wait_until(lambda: takes_focus(description), "the focus on the description")
        self.assertEqual(description.extents(), before)

    def test_the_table_shows_which_cell_the_keyboard_is_on(self):
        self.open(self.start_linked(), WHOLE_PAGE)
        self.walker.go_to("Tarnwick projects")
        upper, lower = [[cell.extents() for cell in row] for row in self.window.table().cells()]
        start = wait_for_stillness(self.desktop, self.window.status)
        right = self.expect_mark_to_move(start, "Right", upper[:2], upper[2:] + lower)
        # The texts of a row that gets or loses the selection move a little, too.
        below = self.expect_mark_to_move(right, "Down", [upper[1], lower[1]], [])
        self.expect_mark_to_move(below, "Tab", [lower[1]], [lower[0], *lower[2:], *upper])

    def test_an_open_list_of_choices_shows_which_line_is_the_current_one(self):
        self.open(self.start_linked(), WHOLE_PAGE, "Create GDPS")
        for label in ("Core", "Preset"):
            self.walker.go_to(label)
            self.keyboard.press("space")
            lines = wait_until(lambda: self.open_lines(), f"the open list of {label}")
            first = wait_for_stillness(self.desktop, self.window.status)
            second = self.expect_mark_to_move(first, "Down", lines[:2], lines[2:])
            last = self.expect_mark_to_move(second, "Down", lines[1:], lines[:1])
            self.expect_mark_to_move(last, "Home", [lines[0], lines[2]], [lines[1]])
            self.keyboard.press("Escape")
            wait_until(lambda: self.walker.here()[0] == "combo box", f"the list of {label} to close")

    def open(self, window, size, tab=None):
        self.window = window
        if size != USUAL_SIZE:
            resize_window(self.desktop, *size)
        wait_until(lambda: window.frame.extents() == (0, 0, *size), f"a window of {size} that knows of it")
        if tab:
            window.open_tab(tab)
            wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        self.walker = FocusWalker(window, self.keyboard)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))

    def expect_marks(self, stops):
        before = wait_for_stillness(self.desktop, self.window.status)
        for _stop in range(stops):
            before = self.expect_mark(before)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))

    def expect_mark(self, before):
        """Moves on, and expects that the next control gets a mark: as much as a line of two pixels along its edge."""
        self.walker.move()
        control = self.walker.control()

        def marked():
            now = Screenshot(self.desktop)
            return now if self.is_mark(control.extents(), before, now) else None

        return wait_until(marked, f"a visible focus on '{control.title()}'", limit=5)

    def expect_marks_in_view(self, key, stops, heading):
        """Looks at the controls on the page, each of them with and without the focus where the page has scrolled to."""
        places, passed = set(), []
        for _stop in range(stops):
            self.walker.move(key)
            control = self.walker.control()
            passed.append(control)
            if self.on_page(control):
                self.assertTrue(self.in_view(control), f"{control} at {control.extents()} is not in view whole.")
                places.add(self.window.find("label", heading).extents())
                self.expect_mark_here(control)
                self.return_to_the_last_of(passed, key)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))
        self.assertGreater(len(places), 1, "The page never scrolled.")

    def expect_mark_here(self, control):
        focused = wait_for_stillness(self.desktop, self.window.status)
        self.window.button(ELSEWHERE).take_focus()
        wait_until(lambda: self.is_mark(control.extents(), focused, Screenshot(self.desktop)),
                   f"{control} to show whether it has the focus", limit=5)

    def return_to_the_last_of(self, passed, key):
        """Lists and tables cannot be told to take the focus: from the control before them it is one key press."""
        steps, start = next((steps, control) for steps, control in enumerate(reversed(passed))
                            if "SetFocus" in control.actions())
        start.take_focus()
        wait_until(lambda: takes_focus(start), "the focus back")
        for _step in range(steps):
            self.walker.move(key)
        self.assertEqual(self.walker.here(), (passed[-1].role, passed[-1].title()))

    def on_page(self, control):
        return control.extents()[1] > self.window.tabs().extents()[1]

    def in_view(self, control):
        """Whether all of it, with the mark around it, lies in the part of the window in which a page is shown."""
        _left, tabs_top, _width, tabs_height = self.window.tabs().extents()
        _left, top, _width, height = control.extents()
        return tabs_top + tabs_height <= top - MARK and top + height + MARK <= USUAL_SIZE[1] - BORDER

    def expect_mark_to_move(self, before, key, changed, unchanged):
        """Presses the key, and expects these boxes to get or to lose a mark, and those to look as before."""
        self.keyboard.press(key)
        wait_until(lambda: all(self.is_mark(box, before, Screenshot(self.desktop), margin=0) for box in changed),
                   f"a visible mark that moves with {key}", limit=5)
        now = wait_for_stillness(self.desktop, self.window.status)
        self.assertEqual([box for box in unchanged if contrasting_pixels(before, now, box, CONTRAST)], [])
        return now

    def open_lines(self):
        """The boxes of the lines of the list that is open, as much of each as is shown; none while no list is open."""
        lines = self.window.focused()
        left, _top, width, _height = lines.extents()
        return lines.role == "list" and [(left, line.extents()[1], width, line.extents()[3])
                                         for line in lines.children()]

    def is_mark(self, box, before, now, margin=MARGIN):
        """Whether at least as much differs there as a line of two pixels along the box's edge."""
        left, top, width, height = box
        left, top = max(left - margin, 0), max(top - margin, 0)
        around = left, top, min(width + 2 * margin, self.width - left), min(height + 2 * margin, self.height - top)
        return contrasting_pixels(before, now, around, CONTRAST) >= 2 * width


if __name__ == "__main__":
    unittest.main()
