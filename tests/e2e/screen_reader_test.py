"""What a screen reader gets from the window."""

import unittest

from harness.announcements import Announcements
from harness.scenario import Scenario
from harness.waiting import wait_until

# Role and title of everything that takes the focus.
ABOVE_THE_TABS = {
    ("text", "Tarnwick URL"),
    ("text", "Link code"),
    ("push button", "Generate Link Code"),
    ("push button", "Open Public Pairing Page"),
    ("push button", "Refresh"),
    ("push button", "Unlink"),
}
TABS = {("page tab", "Your GDPS List"), ("page tab", "Create GDPS")}
LIST_PAGE = {
    ("page tab list", "Your GDPS List"),
    ("table", "Tarnwick projects"),
    ("push button", "Open Selected Project"),
}
FORM_FIELDS = {
    ("text", "GDPS Name"),
    ("text", "Description"),
    ("text", "Emoji"),
    ("text", "Accent"),
    ("text", "Tags"),
    ("combo box", "Core"),
    ("combo box", "Preset"),
}
CREATE_PAGE = FORM_FIELDS | {
    ("page tab list", "Create GDPS"),
    ("check box", "Show this GDPS in the public recent list"),
    ("check box", "Start this GDPS in maintenance mode"),
    ("push button", "Create GDPS"),
}
LABELLED = FORM_FIELDS | {("text", "Tarnwick URL"), ("text", "Link code")}


class ScreenReader(Scenario):
    def test_every_control_that_takes_the_focus_has_a_name_and_a_fitting_role(self):
        window = self.start_linked()
        self.assertEqual(focusable(window), ABOVE_THE_TABS | TABS | LIST_PAGE)
        window.open_tab("Create GDPS")
        wait_until(lambda: "showing" in window.field("Tags").states(), "the form")
        self.assertEqual(focusable(window), ABOVE_THE_TABS | TABS | CREATE_PAGE)

    def test_the_box_around_the_tabs_passes_the_focus_on_to_them(self):
        window = self.start_linked()
        boxes = [control for control in window.frame.descendants()
                 if control.role == "filler" and "focusable" in control.states()]
        self.assertEqual(len(boxes), 1)
        boxes[0].take_focus()
        wait_until(lambda: window.focused().role == "page tab list", "the tabs with the focus")

    def test_each_form_label_and_its_field_point_at_each_other(self):
        window = self.start_linked()
        pairs = set()
        for label in window.frame.descendants():
            for field in label.relation("label-for"):
                self.assertEqual([control.name for control in field.relation("labelled-by")], [label.name])
                pairs.add((field.role, label.name))
        self.assertEqual(pairs, LABELLED)

    def test_each_cell_and_column_of_the_list_has_a_name(self):
        table = self.start_linked().table()
        headers = [child.name for child in table.children() if child.role == "table column header"]
        self.assertEqual(headers, ["GDPS", "Code", "Core", "Status"])
        self.assertTrue(all(all(row) for row in table.rows()))

    def test_each_new_status_text_is_announced_while_pairing(self):
        window = self.start_unlinked()
        announcements = Announcements(window.status_label())
        self.service.pause()
        window.press("Generate Link Code")
        self.assertEqual(announcements.take(1), ["Requesting a new Tarnwick PC link code..."])
        self.service.resume()
        self.assertRegex(announcements.take(1)[0], "^Code TWPC-.{6} is ready")
        self.assertRegex(announcements.take(1)[0], "^Waiting for approval")

    def test_each_new_status_text_is_announced_from_session_check_to_unlinking(self):
        window = self.start_linked()
        announcements = Announcements(window.status_label())
        self.service.pause()
        window.press("Refresh")
        self.assertEqual(announcements.take(1), ["Refreshing your Tarnwick projects..."])
        self.service.resume()
        self.assertEqual(announcements.take(1), ["Loaded 2 Tarnwick project(s)."])

        window.open_tab("Create GDPS")
        window.press("Create GDPS")
        self.assertEqual(announcements.take(1), ["Enter a GDPS name first."])
        window.field("GDPS Name").set_text("Sunset Arcade")
        self.service.pause()
        window.press("Create GDPS")
        self.assertEqual(announcements.take(1), ["Creating your GDPS from the Tarnwick desktop client..."])
        self.service.resume()
        # The creation and the list that follows it.
        self.assertEqual(announcements.take(2)[1], "Loaded 3 Tarnwick project(s).")

        window.press("Unlink")
        self.assertEqual(announcements.take(1), ["Tarnwick desktop client unlinked."])
        self.assertEqual(announcements.rest(), [])


def focusable(window):
    return {(control.role, control.title()) for control in window.frame.descendants()
            if {"focusable", "showing"} <= control.states() and control.role != "filler"}


if __name__ == "__main__":
    unittest.main()
