"""The first use on screens where everything is drawn larger."""

import os
import unittest

from harness.page_visitor import PageVisitor
from harness.scenario import Scenario
from harness.screen import Screenshot
from harness.sharpness import sharpness
from harness.walk_steps import FIRST_START, Walk

# In the units in which the window is laid out; enough for the whole project list.
WIDTH, HEIGHT = 1220, 1080


class Scaling(Scenario):
    width, height = 2 * WIDTH, 2 * HEIGHT
    usual = None  # what the walk at the usual size gave

    def test_a_first_use_at_one_and_a_half_times_the_usual_size(self):
        self.expect_the_same_window_in_better_detail(1.5)

    def test_a_first_use_at_twice_the_usual_size(self):
        self.expect_the_same_window_in_better_detail(2)

    def expect_the_same_window_in_better_detail(self, scale):
        usual, usual_places, usual_reach = self.usual_walk()
        large, large_places, large_reach = self.walk(scale)
        self.assertEqual(large_places, usual_places)
        self.assertEqual(large_reach.keys(), usual_reach.keys())
        for text, reach in large_reach.items():
            # Letters keep to whole pixels, so a long line may grow or shrink a little.
            for now, usually in zip(reach, usual_reach[text]):
                self.assertAlmostEqual(now, usually, delta=2 + usually / 100, msg=text)

        for what in (("label", "Tarnwick Desktop Client"), ("image", "")):
            place = inner(usual_places[what], 4)
            stretched = sharpness(usual, place, enlarged=scale)
            self.assertGreater(sharpness(large, scaled(place, scale)), 1.4 * stretched, what)

    def usual_walk(self):
        if Scaling.usual is None:
            Scaling.usual = self.walk(1)
        return Scaling.usual

    def walk(self, scale):
        """Walks through a first use; returns the first picture, and where controls and texts are after the last."""
        self.set_up_programs(f"{self._testMethodName}-{scale}")
        pictures = self.desktop.path(f"pictures-{self._testMethodName}-{scale}")
        os.mkdir(pictures)
        self.client.scale = scale
        self.client.write_state(origin=self.service.address)
        Walk(self.desktop, self.client, PageVisitor(), pictures,
             size=(round(WIDTH * scale), round(HEIGHT * scale))).all_steps()
        places, reach = self.places(), self.reach_of_texts(scale)
        self.close_window()
        return os.path.join(pictures, FIRST_START), places, reach

    def places(self):
        """Where everything is that is shown, in the units of the layout."""
        return {(control.role, control.name): control.extents() for control in self.client.window.frame.descendants()
                if "showing" in control.states() and control.role in ("label", "push button", "image", "text", "table")}

    def reach_of_texts(self, scale):
        """How far each text reaches to the right and down inside its label."""
        screenshot = Screenshot(self.desktop)
        texts = [control for control in self.client.window.frame.descendants()
                 if control.role in ("label", "push button") and "showing" in control.states()]
        # A line along the edge may belong to the focus frame.
        boxes = {text.name: scaled(inner(text.extents(), 1), scale) for text in texts}
        return {name: [reach / scale for reach in screenshot.ink(box)] for name, box in boxes.items()}


def inner(box, border):
    left, top, width, height = box
    return left + border, top + border, width - 2 * border, height - 2 * border


def scaled(box, scale):
    return tuple(round(value * scale) for value in box)


if __name__ == "__main__":
    unittest.main()
