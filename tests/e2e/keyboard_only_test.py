"""A first use without a mouse: Tab, Shift+Tab, Space and the arrow keys."""

import os
import unittest

from harness.focus_walker import FocusWalker
from harness.reading_order import reading_order
from harness.scenario import Scenario
from harness.waiting import wait_until
from harness.web_browser import SPACE, TAB

LINK_CARD = ["Tarnwick URL", "Link code", "Generate Link Code", "Open Public Pairing Page"]
ACCOUNT_CARD = ["Refresh", "Unlink"]
LIST_PAGE = ["Your GDPS List", "Tarnwick projects"]
CREATE_FORM = ["GDPS Name", "Description", "Emoji", "Accent", "Tags", "Core", "Preset",
               "Show this GDPS in the public recent list", "Start this GDPS in maintenance mode", "Create GDPS"]

# More stops than the pairing page has.
MOST_STOPS = 12


class KeyboardOnly(Scenario):
    needs_browser = True

    def test_tab_visits_every_control_in_reading_order_and_shift_tab_goes_back(self):
        self.walk_in(self.start_linked())
        # The page's tab and the form's button bear the same name, so the walk stops twice at it.
        self.expect_round_trips([*LINK_CARD, *ACCOUNT_CARD, *LIST_PAGE, "Open Selected Project"],
                                [*LINK_CARD, *ACCOUNT_CARD, "Create GDPS", *CREATE_FORM])

    def test_tab_passes_over_what_an_unlinked_desktop_cannot_use(self):
        self.walk_in(self.start_unlinked())
        self.expect_round_trips([*LINK_CARD, *LIST_PAGE], [*LINK_CARD, "Create GDPS"])

    def test_tab_goes_the_same_way_while_a_code_is_shown(self):
        self.walk_in(self.start_unlinked())
        self.walker.go_to("Generate Link Code")
        self.keyboard.press("space")
        wait_until(lambda: self.window.field("Link code").text(), "a link code")
        self.walker.go_to("Tarnwick URL")
        self.expect_round_trips([*LINK_CARD, *LIST_PAGE], [*LINK_CARD, "Create GDPS"])

    def test_tab_leaves_the_tabs_the_table_and_the_description_whatever_was_done_there(self):
        self.walk_in(self.start_linked())
        self.walker.go_to("Tarnwick projects")
        self.keyboard.press("Down", "Right", "Right")
        self.expect_way_out(("page tab list", "Your GDPS List"), ("table", "Tarnwick projects"),
                            ("push button", "Open Selected Project"))
        self.walker.go_to("Your GDPS List", "shift+Tab")
        self.walker.switch_page("Right", "Create GDPS")
        self.keyboard.press("Right")
        self.walker.switch_page("Left", "Your GDPS List")
        self.walker.switch_page("Right", "Create GDPS")
        self.expect_way_out(("push button", "Unlink"), ("page tab list", "Create GDPS"), ("text", "GDPS Name"))
        self.walker.go_to("Description")
        self.keyboard.type("One")
        self.keyboard.press("Return")
        self.keyboard.type("Two")
        self.keyboard.press("Up")
        self.expect_way_out(("text", "GDPS Name"), ("text", "Description"), ("text", "Emoji"))
        self.assertEqual(self.window.field("Description").text(), "One\nTwo")

    def test_an_open_list_of_choices_gives_the_focus_back(self):
        self.walk_in(self.start_linked())
        self.walker.go_to("Your GDPS List")
        self.walker.switch_page("Right", "Create GDPS")
        self.walker.go_to("Core")
        # Escape leaves the choice as it was; Tab neither chooses nor gets lost.
        for leave, choice in (("Escape", "GDPS 2.2"), ("Return", "GDPS 2.1")):
            self.keyboard.press("space")
            wait_until(lambda: self.window.focused().role == "list", "an open list")
            self.keyboard.press("Down", "Tab", leave)
            self.expect_way_out(("text", "Tags"), ("combo box", "Core"), ("combo box", "Preset"))
            self.assertEqual(self.window.field("Core").name, choice)

    def test_a_first_use_needs_no_mouse(self):
        self.start_without_any_state()
        self.generate_and_copy_a_code()
        self.approve_it_in_the_browser()
        self.see_account_cores_and_projects()
        self.open_the_second_project_in_the_browser()
        self.create_a_gdps_named_after_what_was_copied()
        self.close_window()
        self.start_again_and_be_still_linked()
        self.unlink()
        self.close_window()
        self.start_again_and_be_unlinked()

    def walk_in(self, window):
        self.window = window
        self.walker = FocusWalker(window, self.keyboard)

    def expect_round_trips(self, list_stops, form_stops):
        """Through the window with the one page, and with the other."""
        self.expect_round_trip(list_stops)
        self.walker.go_to("Your GDPS List")
        self.walker.switch_page("Right", "Create GDPS")
        self.walker.go_to("Tarnwick URL")
        self.expect_round_trip(form_stops)

    def expect_round_trip(self, stops):
        self.assertEqual(titles(reading_order(self.window.frame)), stops)
        self.assertEqual(self.walker.here(), ("text", stops[0]))
        self.assertEqual(titles(self.walker.round_trip("Tab")), stops)
        self.assertEqual(titles(self.walker.round_trip("shift+Tab")), [stops[0], *reversed(stops[1:])])

    def expect_way_out(self, before, here, behind):
        """From where the focus is, forwards, back and backwards."""
        wait_until(lambda: self.walker.here() == here, f"the focus on {here}")
        for key, stop in (("Tab", behind), ("shift+Tab", here), ("shift+Tab", before), ("Tab", here)):
            self.assertEqual(self.walker.move(key), stop)

    def start(self, status):
        self.walk_in(self.start_again(status))

    def start_without_any_state(self):
        self.assertFalse(os.path.exists(self.client.state_file))
        self.start("Ready to link your Tarnwick account.")
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))
        self.keyboard.press("ctrl+a")
        self.keyboard.type(self.service.address)

    def generate_and_copy_a_code(self):
        self.walker.go_to("Generate Link Code")
        self.keyboard.press("space")
        self.code = wait_until(lambda: self.window.field("Link code").text(), "a link code")
        self.device = self.client.state()["device_id"]
        self.walker.go_to("Link code", "shift+Tab")
        self.keyboard.press("ctrl+a", "ctrl+c")

    def approve_it_in_the_browser(self):
        self.walker.go_to("Open Public Pairing Page")
        self.keyboard.press("space")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Approve this desktop?")
        self.assertEqual(self.browser.value("Link code"), self.code)
        passed = []
        while not passed or passed[-1] != "Approve":
            self.assertLess(len(passed), MOST_STOPS, f"Tab does not lead to Approve: {passed}")
            self.browser.press_key(TAB)
            passed.append(self.browser.focused())
        self.browser.press_key(SPACE)
        self.browser.wait_for_approval()

    def see_account_cores_and_projects(self):
        self.window.wait_for_status("Loaded 2 Tarnwick project(s).")
        self.expect_account()
        self.assertEqual(self.window.field("Core").choices(), ["GDPS 2.2", "GDPS 2.1", "GDPS 1.9"])
        self.assertEqual(self.window.table().rows(), [["Neon Burst", "neon-burst", "GDPS 2.2", "online"],
                                                      ["Cube Garden", "cube-garden", "GDPS 2.1", "maintenance"]])

    def expect_account(self):
        texts = self.window.texts()
        for text in ("Signed in as Robin Vale", "Plan: Creator", "Limit: 2 of 5"):
            self.assertIn(text, texts)

    def open_the_second_project_in_the_browser(self):
        self.walker.go_to("Tarnwick projects")
        self.keyboard.press("Down")
        self.walker.go_to("Open Selected Project")
        self.keyboard.press("space")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Cube Garden")
        self.assertEqual(self.browser.address(), self.service.address + "/gdps/cube-garden/manage")

    def create_a_gdps_named_after_what_was_copied(self):
        self.walker.go_to("Your GDPS List", "shift+Tab")
        self.walker.switch_page("Right", "Create GDPS")
        self.fill_in_the_form()
        self.assertEqual(self.walker.move(), ("push button", "Create GDPS"))
        self.keyboard.press("space")
        self.window.wait_for_projects("Neon Burst", "Cube Garden", self.code)
        self.window.wait_for_status("Loaded 3 Tarnwick project(s).")
        name, slug, core, status = self.window.table().rows()[2]
        self.assertEqual((name, core, status), (self.code, "GDPS 2.1", "maintenance"))
        self.see_it_on_the_services_pages(slug)

    def fill_in_the_form(self):
        self.walker.go_to("GDPS Name")
        self.keyboard.press("ctrl+v")
        wait_until(lambda: self.window.field("GDPS Name").text() == self.code, "the copied code in the name field")
        self.walker.go_to("Description")
        self.keyboard.type("Made by hand")
        self.walker.go_to("Emoji")
        self.keyboard.press("ctrl+a")
        self.keyboard.type("<3")
        self.walker.go_to("Accent")
        self.keyboard.press("ctrl+a")
        self.keyboard.type("#76c95b")
        self.walker.go_to("Tags")
        self.keyboard.type("short, weekly")
        self.walker.go_to("Core")
        self.keyboard.press("Down")
        self.walker.go_to("Preset")
        self.keyboard.press("Down", "Down")
        self.walker.go_to("Show this GDPS in the public recent list")
        self.keyboard.press("space")
        self.walker.go_to("Start this GDPS in maintenance mode")
        self.keyboard.press("space")

    def see_it_on_the_services_pages(self, slug):
        self.browser.open(self.service.address)
        self.assertIn(self.code, self.browser.content())
        self.browser.open(f"{self.service.address}/gdps/{slug}/manage")
        self.assertEqual(self.browser.heading(), self.code)
        for text in ("<3", "Preset\nhardcore", "Accent\n#76c95b", "Listing\nNot listed"):
            self.assertIn(text, self.browser.content())
        self.browser.open(f"{self.service.address}/gdps/{slug}")
        for text in ("Made by hand", "short", "weekly"):
            self.assertIn(text, self.browser.content())

    def start_again_and_be_still_linked(self):
        self.start("Loaded 3 Tarnwick project(s).")
        self.assertIn("Signed in as Robin Vale", self.window.texts())
        self.assertEqual(self.window.field("Link code").text(), "")
        self.assertEqual(self.service.log().count("POST /api/pc/link/start"), 1)

    def unlink(self):
        self.walker.go_to("Unlink")
        self.keyboard.press("space")
        self.window.wait_for_status("Tarnwick desktop client unlinked.")
        self.assertIn("Not linked yet", self.window.texts())
        self.assertEqual(self.window.table().rows(), [])
        # The button that had the focus is disabled now, and the focus must not be lost with it.
        self.walker.go_to("Tarnwick URL")

    def start_again_and_be_unlinked(self):
        self.start("Ready to link your Tarnwick account.")
        self.assertIn("Not linked yet", self.window.texts())
        self.close_window()
        self.assertEqual(self.client.state(), {"origin": self.service.address, "device_id": self.device})


def titles(controls):
    return [control.title() for control in controls]


if __name__ == "__main__":
    unittest.main()
