"""A first use, from no state at all to unlinked again, with a real browser."""

import os
import re
import unittest

from harness.scenario import Scenario
from harness.waiting import wait_until


class FirstUse(Scenario):
    needs_browser = True

    def test_a_person_pairs_lists_creates_comes_back_and_unlinks(self):
        self.start_without_any_state()
        self.generate_a_code()
        self.approve_it_in_the_browser()
        self.see_account_cores_and_projects()
        self.open_a_project_in_the_browser()
        self.create_a_gdps()
        self.close_window()
        self.start_again_and_be_still_linked()
        self.unlink()
        self.close_window()
        self.start_again_and_be_unlinked()

    def start_without_any_state(self):
        self.assertFalse(os.path.exists(self.client.state_file))
        self.window = self.client.start()
        self.window.wait_for_status("Ready to link your Tarnwick account.")
        texts = self.window.texts()
        self.assertIn("Not linked yet", texts)
        self.assertEqual(self.window.field("Link code").text(), "")
        host = next(match[1] for match in map(re.compile(r"approve it at (.*)/link/pc\.").search, texts) if match)
        self.assertEqual(self.window.field("Tarnwick URL").text(), "https://" + host)
        self.window.field("Tarnwick URL").set_text(self.service.address)

    def generate_a_code(self):
        self.window.press("Generate Link Code")
        self.code = wait_until(lambda: self.window.field("Link code").text(), "a link code")
        self.assertRegex(self.code, r"^TWPC-[A-Z2-9]{6}$")
        self.window.wait_for_status(lambda text: text.startswith(f"Waiting for approval. Code {self.code} is good"))
        state = self.client.state()
        self.assertEqual(state["origin"], self.service.address)
        self.device = state["device_id"]

    def approve_it_in_the_browser(self):
        self.window.press("Open Public Pairing Page")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Approve this desktop?")
        self.assertEqual(self.browser.value("Link code"), self.code)
        self.assertIn(self.device, self.browser.content())
        self.browser.press("Approve")
        self.browser.wait_for_approval()

    def see_account_cores_and_projects(self):
        self.window.wait_for_status("Loaded 2 Tarnwick project(s).")
        for text in ("Signed in as Robin Vale", "Plan: Creator", "Limit: 2 of 5"):
            self.assertIn(text, self.window.texts())
        self.assertEqual(self.window.table().rows(), [["Neon Burst", "neon-burst", "GDPS 2.2", "online"],
                                                      ["Cube Garden", "cube-garden", "GDPS 2.1", "maintenance"]])
        self.assertEqual(self.window.field("Core").choices(), ["GDPS 2.2", "GDPS 2.1", "GDPS 1.9"])

    def open_a_project_in_the_browser(self):
        self.window.press("Open Selected Project")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.heading(), "Neon Burst")
        self.assertEqual(self.browser.address(), self.service.address + "/gdps/neon-burst/manage")

    def create_a_gdps(self):
        self.window.open_tab("Create GDPS")
        for label, text in (("GDPS Name", "Sunset Arcade"), ("Description", "Short levels."), ("Emoji", "🌅"),
                            ("Tags", "short, weekly")):
            self.window.field(label).set_text(text)
        self.window.check_box("Start this GDPS in maintenance mode").do("Toggle")
        self.window.press("Create GDPS")
        self.window.wait_for_projects("Neon Burst", "Cube Garden", "Sunset Arcade")
        self.window.wait_for_status("Loaded 3 Tarnwick project(s).")
        self.assertEqual(self.window.table().rows()[2], ["Sunset Arcade", "sunset-arcade", "GDPS 2.2", "maintenance"])
        self.assertEqual(self.window.field("GDPS Name").text(), "")
        self.browser.open(self.service.address)
        self.browser.press("Sunset Arcade")
        self.browser.wait_for_heading("Sunset Arcade")
        for text in ("🌅", "Listing\nShown in the public recent list"):
            self.assertIn(text, self.browser.content())

    def start_again_and_be_still_linked(self):
        self.window = self.start_again("Loaded 3 Tarnwick project(s).")
        self.assertIn("Signed in as Robin Vale", self.window.texts())
        self.assertEqual(self.window.field("Link code").text(), "")
        self.assertEqual(self.service.log().count("POST /api/pc/link/start"), 1)

    def unlink(self):
        self.window.press("Unlink")
        self.window.wait_for_status("Tarnwick desktop client unlinked.")
        self.assertEqual(self.window.table().rows(), [])
        for text in ("Not linked yet", "Plan: -", "Limit: -"):
            self.assertIn(text, self.window.texts())
        self.assertEqual(self.window.field("Core").choices(), ["No cores available"])
        self.assertFalse(self.window.button("Refresh").enabled())

    def start_again_and_be_unlinked(self):
        self.start_again("Ready to link your Tarnwick account.")
        self.close_window()
        self.assertEqual(self.client.state(), {"origin": self.service.address, "device_id": self.device})


if __name__ == "__main__":
    unittest.main()
