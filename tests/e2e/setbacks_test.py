"""What can go wrong for a user: a code that is denied, a link that is revoked, a service that is stopped."""

import unittest

from harness.scenario import DEVICE, Scenario


class Setbacks(Scenario):
    needs_browser = True

    def test_a_code_denied_on_the_page_is_reported_and_leaves_the_window(self):
        window = self.start_unlinked()
        window.press("Generate Link Code")
        code = window.link_code()
        window.press("Open Public Pairing Page")
        self.browser.follow_desktop()
        self.assertEqual(self.browser.value("Link code"), code)
        self.browser.press("Deny")
        self.browser.wait_for_heading("Request denied")
        window.wait_for_status(f"Link code {code} was denied on the pairing page.")
        self.assertEqual(window.field("Link code").text(), "")
        self.assertIn("Not linked yet", window.texts())
        self.assertTrue(window.button("Generate Link Code").enabled())
        self.close_window()
        self.assertNotIn("access_token", self.client.state())

    def test_after_a_revocation_the_next_start_is_signed_out_and_says_what_the_service_says(self):
        window = self.start_linked()
        self.browser.open(self.service.address)
        self.browser.press(f"Revoke {DEVICE}")
        self.browser.wait_for_content("No desktop is linked.")
        # A running client is not notified and keeps its token.
        self.assertIn("Signed in as Robin Vale", window.texts())
        self.close_window()
        self.assertIn("access_token", self.client.state())

        window = self.start_again("The link of this desktop was revoked. Link it again.")
        self.assertIn("Not linked yet", window.texts())
        self.assertEqual(window.table().rows(), [])
        self.assertFalse(window.button("Unlink").enabled())
        self.close_window()
        self.assertNotIn("access_token", self.client.state())

    def test_refresh_says_why_it_failed_keeps_the_rows_and_works_again_later(self):
        window = self.start_linked()
        rows = window.table().rows()
        self.service.stop()
        window.press("Refresh")
        window.wait_for_status("Connection refused")
        self.assertEqual(window.table().rows(), rows)
        self.assertIn("Signed in as Robin Vale", window.texts())
        self.service.start()
        window.press("Refresh")
        window.wait_for_status("Loaded 2 Tarnwick project(s).")
        self.assertEqual(window.table().rows(), rows)


if __name__ == "__main__":
    unittest.main()
