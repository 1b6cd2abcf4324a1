"""A first use without a mouse: Tab, Shift+Tab, Space and the arrow keys."""

import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.waiting import wait_until
from harness.web_browser import ENTER, TAB

LINK_CARD = ["Tarnwick URL", "Link code", "Generate Link Code", "Open Public Pairing Page"]
ACCOUNT_CARD = ["Refresh", "Unlink"]
LIST_PAGE = ["Your GDPS List", "Tarnwick projects"]
CREATE_FORM = ["GDPS Name", "Description", "Emoji", "Accent", "Tags", "Core", "Preset",
               "Show this GDPS in the public recent list", "Start this GDPS in maintenance mode", "Create GDPS"]


class KeyboardOnly(Scenario):
    needs_browser = True

    def test_tab_visits_every_control_in_reading_order_and_shift_tab_goes_back(self):
        window = self.start_linked()
        walker = FocusWalker(window, self.keyboard)
        self.expect_round_trip(walker, [*LINK_CARD, *ACCOUNT_CARD, *LIST_PAGE, "Open Selected Project"])
        walker.go_to("Your GDPS List")
        self.keyboard.press("Right")
        walker.go_to("Tarnwick URL")
        # The page's tab and the form's button bear the same name, so the walk stops twice at it.
        self.expect_round_trip(walker, [*LINK_CARD, *ACCOUNT_CARD, "Create GDPS", *CREATE_FORM])
        self.close_window()

    def test_tab_passes_over_what_an_unlinked_desktop_cannot_use(self):
        window = self.start_unlinked()
        walker = FocusWalker(window, self.keyboard)
        self.expect_round_trip(walker, [*LINK_CARD, *LIST_PAGE])
        walker.go_to("Your GDPS List")
        self.keyboard.press("Right")
        walker.go_to("Tarnwick URL")
        self.expect_round_trip(walker, [*LINK_CARD, "Create GDPS"])
        self.close_window()

    def test_a_first_use_needs_no_mouse(self):
        self.window = self.client.start()
        self.walker = FocusWalker(self.window, self.keyboard)
        code = self.generate_and_copy_a_code()
        self.approve_it_in_the_browser()
        self.open_the_second_project()
        self.create_a_gdps_named_after_what_was_copied(code)
        self.unlink()
        self.close_window()

    def expect_round_trip(self, walker, stops):
        self.assertEqual(walker.here(), ("text", stops[0]))
        self.assertEqual(walker.round_trip("Tab"), stops)
        self.assertEqual(walker.round_trip("shift+Tab"), [stops[0], *reversed(stops[1:])])

    def generate_and_copy_a_code(self):
        self.keyboard.press("ctrl+a")
        self.keyboard.type(self.service.address)
        self.walker.go_to("Generate Link Code")
        self.keyboard.press("space")
        code = wait_until(lambda: self.window.field("Link code").text(), "a link code")
        self.walker.go_to("Link code", "shift+Tab")
        self.keyboard.press("ctrl+a", "ctrl+c")
        return code

    def approve_it_in_the_browser(self):
        self.walker.go_to("Open Public Pairing Page")
        self.keyboard.press("space")
        self.browser.open(self.desktop.opened.next())
        for _stop in range(12):
            self.browser.press_key(TAB)
            if self.browser.focused() == "Approve":
                break
        self.browser.press_key(ENTER)
        self.browser.wait_for_heading("Desktop approved")
        self.window.wait_for_status("Loaded 2 Tarnwick project(s).")

    def open_the_second_project(self):
        self.walker.go_to("Tarnwick projects")
        self.keyboard.press("Down")
        self.walker.go_to("Open Selected Project")
        self.keyboard.press("space")
        self.assertEqual(self.desktop.opened.next(), self.service.address + "/gdps/cube-garden/manage")

    def create_a_gdps_named_after_what_was_copied(self, code):
        self.walker.go_to("Your GDPS List", "shift+Tab")
        self.keyboard.press("Right")
        self.walker.go_to("GDPS Name")
        self.keyboard.press("ctrl+v")
        wait_until(lambda: self.window.field("GDPS Name").text() == code, "the copied code in the name field")
        self.walker.go_to("Description")
        self.keyboard.type("Made by hand")
        self.walker.go_to("Core")
        self.keyboard.press("Down")
        self.walker.go_to("Preset")
        self.keyboard.press("Down", "Down")
        self.walker.go_to("Start this GDPS in maintenance mode")
        self.keyboard.press("space")
        self.assertEqual(self.walker.move(), ("push button", "Create GDPS"))
        self.keyboard.press("space")
        self.window.wait_for_projects("Neon Burst", "Cube Garden", code)
        self.assertEqual(self.window.table().rows()[2][2:], ["GDPS 2.1", "maintenance"])
        self.browser.open(f"{self.service.address}/gdps/{self.window.table().rows()[2][1]}")
        self.assertIn("Made by hand", self.browser.content())
        self.assertIn("Preset\nhardcore", self.browser.content())

    def unlink(self):
        self.walker.go_to("Unlink", "shift+Tab")
        self.keyboard.press("space")
        self.window.wait_for_status("Tarnwick desktop client unlinked.")
        self.walker.go_to("Tarnwick URL")


if __name__ == "__main__":
    unittest.main()
