"""The first use, from a missing state file to unlinking, with the keyboard only and with a real browser."""

import os
import re
import unittest

from harness.focus_walker import FocusWalker
from harness.scenario import Scenario
from harness.waiting import wait_until
from harness.web_browser import SPACE, TAB

BOTH_PAGES = ["Tarnwick URL", "Link code", "Generate Link Code", "Open Public Pairing Page", "Refresh", "Unlink"]
LIST_PAGE = ["Your GDPS List", "Tarnwick projects", "Open Selected Project"]
# The page's tab and the form's button have the same name.
FORM_PAGE = ["Create GDPS", "GDPS Name", "Description", "Emoji", "Accent", "Tags", "Core", "Preset"] + [
    "Show this GDPS in the public recent list",
    "Start this GDPS in maintenance mode",
    "Create GDPS",
]


class FirstUse(Scenario):
    needs_browser = True

    def test_tab_visits_every_control_in_reading_order_and_shift_tab_goes_back(self):
        self.walk_in(self.start_linked())
        self.expect_round_trip(BOTH_PAGES + LIST_PAGE)
        self.open_form()
        self.walker.go_to("Tarnwick URL")
        self.expect_round_trip(BOTH_PAGES + FORM_PAGE)

    def test_a_person_pairs_lists_creates_comes_back_and_unlinks(self):
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
        self.walker = FocusWalker(window, self.desktop)
        self.assertEqual(self.walker.here(), ("text", "Tarnwick URL"))

    def expect_round_trip(self, stops):
        self.assertEqual(self.walker.round_trip("Tab"), stops)
        self.assertEqual(self.walker.round_trip("shift+Tab"), [stops[0], *reversed(stops[1:])])

    def press(self, name, key="Tab"):
        self.walker.go_to(name, key)
        self.desktop.press("space")

    def fill(self, name, text):
        self.walker.go_to(name)
        self.desktop.press("ctrl+a")
        self.desktop.type(text)

    def open_form(self):
        self.walker.go_to("Your GDPS List", "shift+Tab")
        self.walker.switch_page("Right", "Create GDPS")

    def start_without_any_state(self):
        self.assertFalse(os.path.exists(self.client.state_file))
        self.walk_in(self.start_again("Ready to link your Tarnwick account."))
        texts = self.window.texts()
        self.assertIn("Not linked yet", texts)
        self.assertEqual(self.window.field("Link code").text(), "")
        host = next(match[1] for match in map(re.compile(r"approve it at (.*)/link/pc\.").search, texts) if match)
        self.assertEqual(self.window.field("Tarnwick URL").text(), "https://" + host)
        self.fill("Tarnwick URL", self.service.address)

    def generate_and_copy_a_code(self):
        self.press("Generate Link Code")
        self.code = self.window.link_code()
        self.assertRegex(self.code, r"^TWPC-[A-Z2-9]{6}$")
        self.window.wait_for_status(lambda text: text.startswith(f"Waiting for approval. Code {self.code} is good"))
        self.assertEqual(self.client.state()["origin"], self.service.address)
        self.device = self.client.state()["device_id"]
        self.walker.go_to("Link code", "shift+Tab")
        self.desktop.press("ctrl+a", "ctrl+c")

    def approve_it_in_the_browser(self):
        self.press("Open Public Pairing Page")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Approve this desktop?")
        self.assertEqual(self.browser.value("Link code"), self.code)
        self.assertIn(self.device, self.browser.content())
        passed = []
        while not passed or passed[-1] != "Approve":
            self.assertLess(len(passed), 12, f"Tab does not lead to Approve: {passed}")
            self.browser.press_key(TAB)
            passed.append(self.browser.focused())
        self.browser.press_key(SPACE)
        # The browser loads the next page after the decision; the desktop may have fetched its token earlier.
        self.browser.wait_for_heading("Desktop approved", "Desktop linked")

    def see_account_cores_and_projects(self):
        self.window.wait_for_status("Loaded 2 Tarnwick project(s).")
        for text in ("Signed in as Robin Vale", "Plan: Creator", "Limit: 2 of 5"):
            self.assertIn(text, self.window.texts())
        self.assertEqual(self.window.field("Core").choices(), ["GDPS 2.2", "GDPS 2.1", "GDPS 1.9"])
        self.assertEqual(
            self.window.table().rows(),
            [
                ["Neon Burst", "neon-burst", "GDPS 2.2", "online"],
                ["Cube Garden", "cube-garden", "GDPS 2.1", "maintenance"],
            ],
        )

    def open_the_second_project_in_the_browser(self):
        self.walker.go_to("Tarnwick projects")
        self.desktop.press("Down")
        self.press("Open Selected Project")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Cube Garden")
        self.assertEqual(self.browser.address(), self.service.address + "/gdps/cube-garden/manage")

    def create_a_gdps_named_after_what_was_copied(self):
        self.open_form()
        self.walker.go_to("GDPS Name")
        self.desktop.press("ctrl+v")
        wait_until(lambda: self.window.field("GDPS Name").text() == self.code, "the copied code in the name field")
        self.fill("Description", "Made by hand")
        self.fill("Emoji", "<3")
        self.fill("Accent", "#76c95b")
        self.fill("Tags", "short, weekly")
        self.walker.go_to("Core")
        self.desktop.press("Down")
        self.walker.go_to("Preset")
        self.desktop.press("Down", "Down")
        self.press("Show this GDPS in the public recent list")
        self.press("Start this GDPS in maintenance mode")
        self.press("Create GDPS")
        self.window.wait_for_projects("Neon Burst", "Cube Garden", self.code)
        self.window.wait_for_status("Loaded 3 Tarnwick project(s).")
        name, slug, core, status = self.window.table().rows()[2]
        self.assertEqual((name, core, status), (self.code, "GDPS 2.1", "maintenance"))
        self.assertEqual(self.window.field("GDPS Name").text(), "")
        self.browser.open(f"{self.service.address}/gdps/{slug}/manage")
        self.assertEqual(self.browser.heading(), self.code)
        for text in ("<3", "Preset\nhardcore", "Accent\n#76c95b", "Listing\nNot listed"):
            self.assertIn(text, self.browser.content())
        self.browser.press("Public page")
        self.browser.wait_for_content("Made by hand")

    def start_again_and_be_still_linked(self):
        self.walk_in(self.start_again("Loaded 3 Tarnwick project(s)."))
        self.assertIn("Signed in as Robin Vale", self.window.texts())
        self.assertEqual(self.window.field("Link code").text(), "")
        self.assertEqual(self.service.log().count("POST /api/pc/link/start"), 1)

    def unlink(self):
        self.press("Unlink")
        self.window.wait_for_status("Tarnwick desktop client unlinked.")
        self.assertEqual(self.window.table().rows(), [])
        for text in ("Not linked yet", "Plan: -", "Limit: -"):
            self.assertIn(text, self.window.texts())
        self.assertEqual(self.window.field("Core").choices(), ["No cores available"])
        # The button that had the focus is disabled now; the focus must have moved to another control.
        self.walker.go_to("Tarnwick URL")

    def start_again_and_be_unlinked(self):
        self.start_again("Ready to link your Tarnwick account.")
        self.close_window()
        self.assertEqual(self.client.state(), {"origin": self.service.address, "device_id": self.device})


if __name__ == "__main__":
    unittest.main()
