"""The first use on screens where everything is drawn larger."""

import re
import typing
import unittest

from harness.page_visitor import PageVisitor
from harness.scenario import Scenario
from harness.screen import Screenshot, wait_for_stillness
from harness.sharpness import sharpness
from harness.shown_text import shown_controls, shown_texts
from harness.waiting import wait_until
from harness.walk_steps import Walk, fill_form
from harness.window_size import resize_window

# In the units in which the window is laid out: the size that it opens with, and one that shows either page whole.
OPENING = 1220, 860
LARGE = 1220, 1300

# What the page of the list has below its edge when the window has just opened.
BELOW_THE_EDGE = ["Tarnwick projects", "Open Selected Project"]

# What is another one in each walk: a link code, and the time that it has left.
CHANGING = re.compile(r"TWPC-[A-Z2-9]{6} is good for another .*")

LOGO = "image", ""
# Less than this, and the logo was made of too few pixels, whatever it looks like at the usual size.
LOGO_SHARPNESS = 0.016


class Station(typing.NamedTuple):
    """A moment of the walk at which the window is looked at."""

    focused: str  # a button: the focus has to be somewhere, and its mark touches no text there
    details: list  # what must be drawn in finer detail on a finer screen
    size: tuple = OPENING
    hidden: list = BELOW_THE_EDGE  # what is scrolled out of its page


FIRST_START = Station("Generate Link Code", [
    LOGO, ("label", "Tarnwick Desktop Client"), ("label", "Not linked yet"),
    ("push button", "Open Public Pairing Page")])
CODE_SHOWN = Station("Open Public Pairing Page", [
    LOGO, ("label", "Link code"), ("push button", "Generate Link Code")])
LIST = Station("Refresh", [
    LOGO, ("label", "Tarnwick Desktop Client"), ("label", "Signed in as Robin Vale"),
    ("push button", "Open Public Pairing Page"), ("page tab", "Your GDPS List"), ("table cell", "Sunset Arcade"),
    ("table column header", "Status")], LARGE, [])
FORM = Station("Refresh", [
    ("label", "Create a New GDPS"), ("text", "Description"), ("combo box", "balanced"),
    ("check box", "Start this GDPS in maintenance mode")], LARGE, [])
STILL_LINKED = Station("Refresh", [
    LOGO, ("label", "Signed in as Robin Vale"), ("table cell", "Sunset Arcade")])
UNLINKED = Station("Generate Link Code", [
    LOGO, ("label", "Not linked yet"), ("table column header", "Status")])
STATIONS = FIRST_START, CODE_SHOWN, LIST, FORM, STILL_LINKED, UNLINKED


class Page(typing.NamedTuple):
    """A station as it looked: the screen, and role, name and place of all that can be seen whole."""

    screenshot: Screenshot
    controls: list

    def place(self, what):
        return next(place for role, name, place in self.controls if (role, name) == what)


class Scaling(Scenario):
    width, height = 2 * LARGE[0], 2 * LARGE[1]
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
        controls, _ = shown_controls(window)
        texts = [text for text in shown_texts(controls) if text.text == "Open Public Pairing Page"]
        self.assertEqual([text.fault(screenshot, 1) for text in texts], [None])
        left, top, width, height = texts[0].box
        for box in ((left, top, width // 2, height), (left, top, width, height // 2), (left, top + 12, width, 30)):
            self.assertIsNotNone(texts[0]._replace(box=box).fault(screenshot, 1), box)
        for longer in ("Open Public Pairing Pages", "Open the Public Pairing Page"):
            self.assertRegex(texts[0]._replace(text=longer).fault(screenshot, 1), "are needed")
        self.assertEqual(texts[0]._replace(box=(0, 0, 15, 15)).fault(screenshot, 1), "nothing is drawn")

    def expect_the_same_window_in_better_detail(self, scale):
        for station, usual, large in zip(STATIONS, self.usual_pages(), self.walk(scale), strict=True):
            self.assertEqual(large.controls, usual.controls)
            for what in station.details:
                place = inner(usual.place(what), 4)
                found = sharpness(large.screenshot, scaled(place, scale))
                self.assertGreater(found, 1.4 * sharpness(usual.screenshot, place, enlarged=scale), what)
                if what == LOGO:
                    self.assertGreater(found, LOGO_SHARPNESS)

    def usual_pages(self):
        if Scaling.usual is None:
            Scaling.usual = list(self.walk(1))
        return Scaling.usual

    def walk(self, scale):
        """Walks from a first start to unlinked again, and yields what each station looks like."""
        self.set_up_programs(f"{self._testMethodName}-{scale}")
        self.client.scale = scale
        self.client.write_state(origin=self.service.address)
        walk = Walk(self.desktop, self.client, PageVisitor())
        walk.first_start()
        yield self.look(FIRST_START, scale)
        walk.generate_code()
        # From here on, another second takes no other room in the sentence.
        self.client.window.wait_for_status(lambda text: "another 9 minutes" in text)
        yield self.look(CODE_SHOWN, scale)
        device = self.client.state()["device_id"]
        walk.approve()
        resize_window(self.desktop, *scaled(LARGE, scale))
        walk.create()
        yield self.look(LIST, scale)
        self.open_a_project()
        self.fill_the_form()
        yield self.look(FORM, scale)
        self.close_window()
        window = self.start_again("Loaded 3 Tarnwick project(s).")
        yield self.look(STILL_LINKED, scale)
        window.press("Unlink")
        window.wait_for_status("Tarnwick desktop client unlinked.")
        self.close_window()
        self.start_again("Ready to link your Tarnwick account.")
        yield self.look(UNLINKED, scale)
        self.close_window()
        self.assertEqual(self.client.state(), {"origin": self.service.address, "device_id": device})

    def open_a_project(self):
        self.client.window.press("Open Selected Project")
        self.assertEqual(self.desktop.opened.next(), self.service.address + "/gdps/neon-burst/manage")

    def fill_the_form(self):
        window = self.client.window
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        fill_form(window)

    def look(self, station, scale):
        """Looks at the window, and expects every text in it to be whole."""
        window = self.client.window
        self.assertEqual(window.frame.extents()[2:], station.size)
        window.button(station.focused).take_focus()
        wait_until(lambda: window.focused().name == station.focused, "the focus on a button")
        screenshot = wait_for_stillness(self.desktop, window.status)
        controls, hidden = shown_controls(window)
        self.assertEqual([control.name for control in hidden], station.hidden)
        faults = {(text.role, text.text): text.fault(screenshot, scale) for text in shown_texts(controls)}
        self.assertEqual({text: fault for text, fault in faults.items() if fault}, {})
        return Page(screenshot, [(control.role, CHANGING.sub("", control.name), control.extents())
                                 for control in controls])


def inner(box, border):
    left, top, width, height = box
    return left + border, top + border, width - 2 * border, height - 2 * border


def scaled(values, scale):
    return tuple(round(value * scale) for value in values)


if __name__ == "__main__":
    unittest.main()
