"""The first use on screens with a larger scale factor."""

import re
import typing
import unittest

from harness.scenario import Scenario
from harness.screen import wait_for_stillness
from harness.shown_text import shown_controls, shown_texts
from harness.waiting import wait_until
from harness.walk_steps import Walk, fill_form

# In layout units: the initial size, and one that shows either page completely.
OPENING = 1220, 860
LARGE = 1220, 1300

# What is below the visible part of the list's page at the initial size.
BELOW_THE_EDGE = "Tarnwick projects", "Open Selected Project"

# What differs in each walk: a link code, and its remaining time.
CHANGING = re.compile(r"TWPC-[A-Z2-9]{6} is good for another .*")


class Station(typing.NamedTuple):
    """A moment of the walk at which the window is checked."""

    focused: str  # a button: something must have the focus, and its focus frame touches no text there
    size: tuple = OPENING
    hidden: tuple = BELOW_THE_EDGE  # what is scrolled out of the page


FIRST_START = Station("Generate Link Code")
CODE_SHOWN = Station("Open Public Pairing Page")
WHOLE_PAGE = Station("Refresh", LARGE, ())


class Scaling(Scenario):
    width, height = 2 * LARGE[0], 2 * LARGE[1]

    def test_a_larger_scale_shows_the_same_window_with_every_text_whole(self):
        usual = list(self.walk(1))
        for scale in (1.5, 2):
            self.assertEqual(list(self.walk(scale)), usual)

    def test_a_text_that_is_not_drawn_whole_is_noticed(self):
        window = self.start_linked()
        picture = wait_for_stillness(self.desktop, window.status)
        controls, _ = shown_controls(window)
        text = next(text for text in shown_texts(controls) if text.text == "Open Public Pairing Page")
        self.assertIsNone(text.fault(picture, 1))
        left, top, width, height = text.box
        for box in ((left, top, width // 2, height), (left, top, width, height // 2), (left, top + 12, width, 30)):
            self.assertIsNotNone(text._replace(box=box).fault(picture, 1), box)
        self.assertRegex(text._replace(text="Open Public Pairing Pages").fault(picture, 1), "are needed")
        self.assertEqual(text._replace(box=(0, 0, 15, 15)).fault(picture, 1), "nothing is drawn")

    def walk(self, scale):
        """Walks through a first use, and yields what the window looks like at each station."""
        self.set_up_programs(f"walk-{scale}")
        self.client.scale = scale
        self.client.write_state(origin=self.service.address)
        walk = Walk(self.desktop, self.client)
        walk.first_start()
        yield self.look(FIRST_START, scale)
        walk.generate_code()
        # From here on, the sentence's width does not change with every second.
        self.client.window.wait_for_status(lambda text: "another 9 minutes" in text)
        yield self.look(CODE_SHOWN, scale)
        walk.approve()
        self.desktop.resize_window(*(round(length * scale) for length in LARGE))
        walk.create()
        yield self.look(WHOLE_PAGE, scale)
        window = self.client.window
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        fill_form(window)
        yield self.look(WHOLE_PAGE, scale)
        self.close_window()

    def look(self, station, scale):
        """Role, name and place of all completely visible controls. Expects their texts to be drawn completely."""
        window = self.client.window
        self.assertEqual(window.frame.extents()[2:], station.size)
        window.button(station.focused).take_focus()
        wait_until(lambda: window.focused().name == station.focused, "the focus on a button")
        picture = wait_for_stillness(self.desktop, window.status)
        controls, hidden = shown_controls(window)
        self.assertEqual(tuple(control.name for control in hidden), station.hidden)
        faults = {(text.role, text.text): text.fault(picture, scale) for text in shown_texts(controls)}
        self.assertEqual({text: fault for text, fault in faults.items() if fault}, {})
        return [(control.role, CHANGING.sub("", control.name), control.extents()) for control in controls]


if __name__ == "__main__":
    unittest.main()
