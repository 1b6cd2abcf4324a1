"""Pairing that comes to nothing: the code is denied, or nobody approves it in time."""

import unittest

from harness.scenario import Scenario
from harness.waiting import wait_until


class PairingRefused(Scenario):
    needs_browser = True

    def test_a_code_denied_on_the_page_is_reported_and_leaves_the_window(self):
        window, code = self.show_a_code()
        self.browser.press("Deny")
        self.browser.wait_for_heading("Request denied")
        window.wait_for_status(f"Link code {code} was denied on the pairing page.")
        self.expect_no_code(window)

    def test_a_code_that_runs_out_is_reported_and_leaves_the_window(self):
        window, code = self.show_a_code()
        self.service.let_time_pass(minutes=10)
        window.wait_for_status(f"Link code {code} has expired. Generate a new one.")
        self.expect_no_code(window)
        self.browser.press("Approve")
        self.browser.wait_for_heading("This code has expired")

    def show_a_code(self):
        window = self.start_unlinked()
        window.press("Generate Link Code")
        code = wait_until(lambda: window.field("Link code").text(), "a link code")
        window.press("Open Public Pairing Page")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.value("Link code"), code)
        window.wait_for_status(lambda text: text.startswith("Waiting for approval."))
        return window, code

    def expect_no_code(self, window):
        self.assertEqual(window.field("Link code").text(), "")
        self.assertIn("Not linked yet", window.texts())
        self.assertTrue(window.button("Generate Link Code").enabled())
        self.close_window()
        self.assertNotIn("access_token", self.client.state())


if __name__ == "__main__":
    unittest.main()
