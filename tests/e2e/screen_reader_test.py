"""What a screen reader gets from the window's controls."""

import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.waiting import wait_until

# Role and name of everything that takes the focus. On this system a combo box bears its choice as its name, and the
# tabs that of the current one; what the combo box is for is said by its label.
LINK_CARD = [
    ("text", "Tarnwick URL"),
    ("text", "Link code"),
    ("push button", "Generate Link Code"),
    ("push button", "Open Public Pairing Page"),
]
ACCOUNT_CARD = [
    ("push button", "Refresh"),
    ("push button", "Unlink"),
]
LIST_TAB = [("page tab list", "Your GDPS List")]
LIST = [("table", "Tarnwick projects")]
SELECTED_PROJECT = [("push button", "Open Selected Project")]
FORM_TAB = [("page tab list", "Create GDPS")]
FORM = [
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
# They say that they take the focus, too, though the list of tabs has it then.
PARTS = [("page tab", "Your GDPS List"), ("page tab", "Create GDPS")]
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
        self.expect_names(self.start_linked(), LINK_CARD + ACCOUNT_CARD + LIST_TAB + LIST + SELECTED_PROJECT,
                          LINK_CARD + ACCOUNT_CARD + FORM_TAB + FORM)

    def test_so_it_is_while_the_desktop_is_not_linked(self):
        self.expect_names(self.start_unlinked(), LINK_CARD + LIST_TAB + LIST, LINK_CARD + FORM_TAB)

    def test_so_it_is_while_a_code_is_shown(self):
        window = self.start_unlinked()
        window.press("Generate Link Code")
        code = wait_until(lambda: window.field("Link code").text(), "a link code")
        window.field("Tarnwick URL").take_focus()
        self.expect_names(window, LINK_CARD + LIST_TAB + LIST, LINK_CARD + FORM_TAB)
        self.assertEqual(window.field("Link code").text(), code)

    def test_an_open_list_of_choices_bears_the_name_of_its_field_and_each_choice_its_own(self):
        window = self.start_linked()
        walker = FocusWalker(window, self.keyboard)
        window.open_tab("Create GDPS")
        for label, choices in (("Core", ["GDPS 2.2", "GDPS 2.1", "GDPS 1.9"]),
                               ("Preset", ["balanced", "casual", "hardcore"])):
            walker.go_to(label)
            self.keyboard.press("space")
            wait_until(lambda: window.focused().role == "list", f"the open list of {label}")
            self.assertEqual(window.focused().name, label)
            lines = [(line.role, line.name) for line in window.focused().children()]
            self.assertEqual(lines, [("list item", choice) for choice in choices])
            self.keyboard.press("Escape")
            wait_until(lambda: window.focused().role == "combo box", "the focus back on the field")

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

    def expect_names(self, window, with_list, with_form):
        """Role and name of all that takes the focus by what it says of itself, and of all that the keyboard visits."""
        walker = FocusWalker(window, self.keyboard)
        for tab, names in (("Your GDPS List", with_list), ("Create GDPS", with_form)):
            window.open_tab(tab)
            wait_until(lambda: window.tabs().name == tab, f"the page '{tab}'")
            self.assertEqual(focusable(window), sorted(names + PARTS))
            self.assertEqual(names_of(walker.round_trip()), names)


def focusable(window):
    return sorted(names_of(control for control in window.frame.descendants()
                           if {"enabled", "focusable", "showing"} <= control.states() and control.role != "filler"))


def names_of(controls):
    return [(control.role, control.name) for control in controls]


if __name__ == "__main__":
    unittest.main()
