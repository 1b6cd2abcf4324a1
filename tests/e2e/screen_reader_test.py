"""What a screen reader gets from the window's controls."""

import unittest

from harness.scenario import Scenario
from harness.waiting import wait_until

# Role and name of everything that takes the focus, in reading order. On this system a combo box bears its choice as
# its name, and the tabs that of the current one; what the combo box is for is said by its label.
ABOVE_THE_TABS = [
    ("text", "Tarnwick URL"),
    ("text", "Link code"),
    ("push button", "Generate Link Code"),
    ("push button", "Open Public Pairing Page"),
    ("push button", "Refresh"),
    ("push button", "Unlink"),
]
TABS = [("page tab", "Your GDPS List"), ("page tab", "Create GDPS")]
LIST_PAGE = [
    ("page tab list", "Your GDPS List"),
    ("table", "Tarnwick projects"),
    ("push button", "Open Selected Project"),
]
CREATE_PAGE = [
    ("page tab list", "Create GDPS"),
    ("text", "GDPS Name"),
    ("text", "Description"),
    ("text", "Emoji"),
    ("text", "Accent"),
    ("text", "Tags"),
    ("combo box", "GDPS 2.2"),
    ("combo box", "balanced"),
    ("check box", "Show this GDPS in the public recent list"),
    ("check box", "Start this GDPS in maintenance mode"),
    ("push button", "Create GDPS"),
]
# The role of the field that each form label stands for.
FORM_LABELS = [
    ("Tarnwick URL", "text"),
    ("Link code", "text"),
    ("GDPS Name", "text"),
    ("Description", "text"),
    ("Emoji", "text"),
    ("Accent", "text"),
    ("Tags", "text"),
    ("Core", "combo box"),
    ("Preset", "combo box"),
]


class ScreenReader(Scenario):
    def test_every_control_that_takes_the_focus_has_its_name_and_a_fitting_role(self):
        window = self.start_linked()
        self.assertEqual(focusable(window), sorted(ABOVE_THE_TABS + TABS + LIST_PAGE))
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        self.assertEqual(focusable(window), sorted(ABOVE_THE_TABS + TABS + CREATE_PAGE))

    def test_the_box_around_the_tabs_passes_the_focus_on_to_them(self):
        window = self.start_linked()
        boxes = [control for control in window.frame.descendants()
                 if control.role == "filler" and "focusable" in control.states()]
        self.assertEqual(len(boxes), 1)
        boxes[0].take_focus()
        wait_until(lambda: window.focused().role == "page tab list", "the tabs with the focus")

    def test_each_form_label_and_its_field_point_at_each_other(self):
        window = self.start_linked()
        pairs = []
        for label in window.frame.descendants():
            for field in label.relation("label-for"):
                self.assertEqual(label.role, "label")
                self.assertEqual([control.name for control in field.relation("labelled-by")], [label.name])
                pairs.append((label.name, field.role))
        self.assertEqual(sorted(pairs), sorted(FORM_LABELS))

    def test_each_cell_and_column_of_the_list_has_a_name(self):
        table = self.start_linked().table()
        headers = [child.name for child in table.children() if child.role == "table column header"]
        self.assertEqual(headers, ["GDPS", "Code", "Core", "Status"])
        self.assertEqual(table.rows(), [["Neon Burst", "neon-burst", "GDPS 2.2", "online"],
                                        ["Cube Garden", "cube-garden", "GDPS 2.1", "maintenance"]])


def focusable(window):
    """Role and name of all controls on which the focus can come to rest."""
    return sorted((control.role, control.name) for control in window.frame.descendants()
                  if {"focusable", "showing"} <= control.states() and control.role != "filler")


if __name__ == "__main__":
    unittest.main()
