"""What a screen reader gets from the window's controls, through the accessibility bus."""

import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.waiting import wait_until

# Role and name of every control that can have the focus. On this system, the name of a combo box is its current item,
# and that of the tabs is the current tab; a combo box's label says what it is for.
BOTH_PAGES = [
    ("text", "Tarnwick URL"),
    ("text", "Link code"),
    ("push button", "Generate Link Code"),
    ("push button", "Open Public Pairing Page"),
    ("push button", "Refresh"),
    ("push button", "Unlink"),
    # They report that they can have the focus, but the list of tabs has it.
    ("page tab", "Your GDPS List"),
    ("page tab", "Create GDPS"),
]
LIST_PAGE = [
    ("page tab list", "Your GDPS List"),
    ("table", "Tarnwick projects"),
    ("push button", "Open Selected Project"),
]
FORM_PAGE = [
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
FORM_LABELS = ["Tarnwick URL", "Link code", "GDPS Name", "Description", "Emoji", "Accent", "Tags", "Core", "Preset"]


class ScreenReader(Scenario):
    def test_every_control_that_takes_the_focus_has_its_name_and_a_fitting_role(self):
        window = self.start_linked()
        for tab, page in (("Your GDPS List", LIST_PAGE), ("Create GDPS", FORM_PAGE)):
            window.open_tab(tab)
            found = [
                (control.role, control.name)
                for control in window.frame.descendants()
                if {"enabled", "focusable", "showing"} <= control.states() and control.role != "filler"
            ]
            self.assertEqual(sorted(found), sorted(BOTH_PAGES + page))

    def test_an_open_list_of_choices_bears_the_name_of_its_field_and_each_choice_its_own(self):
        window = self.start_linked()
        walker = FocusWalker(window, self.desktop)
        window.open_tab("Create GDPS")
        for label, choices in (
            ("Core", ["GDPS 2.2", "GDPS 2.1", "GDPS 1.9"]),
            ("Preset", ["balanced", "casual", "hardcore"]),
        ):
            walker.go_to(label)
            self.desktop.press("space")
            wait_until(lambda: window.focused().role == "list", f"the open list of {label}")
            self.assertEqual(window.focused().name, label)
            lines = [(line.role, line.name) for line in window.focused().children()]
            self.assertEqual(lines, [("list item", choice) for choice in choices])
            self.desktop.press("Escape")
            wait_until(lambda: window.focused().role == "combo box", "the focus back on the field")

    def test_each_form_label_and_its_field_point_at_each_other(self):
        window = self.start_linked()
        labels = []
        for label in window.frame.descendants():
            for field in label.relation("label-for"):
                self.assertEqual([control.name for control in field.relation("labelled-by")], [label.name])
                labels.append(label.name)
        self.assertEqual(sorted(labels), sorted(FORM_LABELS))

    def test_each_column_of_the_list_has_a_name(self):
        headers = [part.name for part in self.start_linked().table().children() if part.role == "table column header"]
        self.assertEqual(headers, ["GDPS", "Code", "Core", "Status"])


if __name__ == "__main__":
    unittest.main()
