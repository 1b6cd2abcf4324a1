"""The first use on screens where everything is drawn larger."""

import typing
import unittest

from harness.page_visitor import PageVisitor
from harness.scenario import Scenario
from harness.screen import wait_for_stillness
from harness.sharpness import sharpness
from harness.shown_text import shown_controls, shown_texts
from harness.waiting import wait_until
from harness.walk_steps import Walk, fill_form

# In the units in which the window is laid out; enough for either page to be shown whole.
WIDTH, HEIGHT = 1220, 1300

# What must be drawn in finer detail on a finer screen, on the list's page and on the form's.
LIST_DETAILS = [("image", ""), ("label", "Tarnwick Desktop Client"), ("label", "Signed in as Robin Vale"),
                ("push button", "Open Public Pairing Page"), ("page tab", "Your GDPS List"),
                ("table cell", "Sunset Arcade"), ("table column header", "Status")]
FORM_DETAILS = [("label", "Create a New GDPS"), ("text", "Description"), ("combo box", "balanced"),
                ("check box", "Start this GDPS in maintenance mode")]


class Page(typing.NamedTuple):
    """A page of the window as it was looked at: its picture, and role, name and place of all that is shown."""

    picture: str
    controls: list

    def place(self, what):
        return next(place for role, name, place in self.controls if (role, name) == what)


class Scaling(Scenario):
    width, height = 2 * WIDTH, 2 * HEIGHT
    usual = None  # the pages of a walk at the usual size

    def test_a_first_use_at_the_usual_size(self):
        self.usual_pages()

    def test_a_first_use_at_one_and_a_half_times_the_usual_size(self):
        self.expect_the_same_window_in_better_detail(1.5)

    def test_a_first_use_at_twice_the_usual_size(self):
        self.expect_the_same_window_in_better_detail(2)

    def test_a_text_that_is_not_drawn_whole_is_noticed(self):
        window = self.start_linked()
        screenshot = wait_for_stillness(self.desktop, window.status)
        texts = [text for text in shown_texts(shown_controls(window)) if text.text == "Open Public Pairing Page"]
        self.assertEqual([text.fault(screenshot, 1) for text in texts], [None])
        left, top, width, height = texts[0].box
        for box in ((left, top, width // 2, height), (left, top, width, height // 2), (left, top + 12, width, 30)):
            self.assertIsNotNone(texts[0]._replace(box=box).fault(screenshot, 1), box)
        for longer in ("Open Public Pairing Pages", "Open the Public Pairing Page"):
            self.assertRegex(texts[0]._replace(text=longer).fault(screenshot, 1), "are needed")
        self.assertEqual(texts[0]._replace(box=(0, 0, 15, 15)).fault(screenshot, 1), "nothing is drawn")

    def expect_the_same_window_in_better_detail(self, scale):
        for usual, large, details in zip(self.usual_pages(), self.walk(scale), (LIST_DETAILS, FORM_DETAILS)):
            self.assertEqual(large.controls, usual.controls)
            for what in details:
                place = inner(usual.place(what), 4)
                stretched = sharpness(usual.picture, place, enlarged=scale)
                self.assertGreater(sharpness(large.picture, scaled(place, scale)), 1.4 * stretched, what)

    def usual_pages(self):
        if Scaling.usual is None:
            Scaling.usual = self.walk(1)
        return Scaling.usual

    def walk(self, scale):
        """Walks from a first start up to unlinking; returns what the list's page and the form's look like."""
        self.set_up_programs(f"{self._testMethodName}-{scale}")
        self.client.scale = scale
        self.client.write_state(origin=self.service.address)
        Walk(self.desktop, self.client, PageVisitor(), size=scaled((WIDTH, HEIGHT), scale)).all_steps()
        pages = [self.look("list", scale)]
        self.open_a_project()
        pages.append(self.look_at_form(scale))
        self.start_again_and_unlink()
        return pages

    def look_at_form(self, scale):
        window = self.client.window
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        fill_form(window)
        return self.look("form", scale)

    def look(self, name, scale):
        """Takes a picture, and expects every text in it to be whole."""
        window = self.client.window
        # The focus must be somewhere, and its mark on this button touches no text.
        window.button("Refresh").take_focus()
        wait_until(lambda: window.focused().name == "Refresh", "the focus on a button")
        screenshot = wait_for_stillness(self.desktop, window.status)
        picture = self.desktop.path(f"{name}-{self._testMethodName}-{scale}.ppm")
        screenshot.save(picture, scaled((WIDTH, HEIGHT), scale))
        controls = shown_controls(window)
        faults = {(text.role, text.text): text.fault(screenshot, scale) for text in shown_texts(controls)}
        self.assertEqual({text: fault for text, fault in faults.items() if fault}, {})
        return Page(picture, [(control.role, control.name, control.extents()) for control in controls])

    def open_a_project(self):
        self.client.window.press("Open Selected Project")
        self.assertEqual(self.desktop.opened.next(), self.service.address + "/gdps/neon-burst/manage")

    def start_again_and_unlink(self):
        self.close_window()
        window = self.start_again("Loaded 3 Tarnwick project(s).")
        self.assertEqual(window.frame.extents()[2:], (1220, 860))
        self.assertIn("Signed in as Robin Vale", window.texts())
        window.press("Unlink")
        window.wait_for_status("Tarnwick desktop client unlinked.")
        self.assertEqual(window.table().rows(), [])
        self.close_window()


def inner(box, border):
    left, top, width, height = box
    return left + border, top + border, width - 2 * border, height - 2 * border


def scaled(values, scale):
    return tuple(round(value * scale) for value in values)


if __name__ == "__main__":
    unittest.main()
