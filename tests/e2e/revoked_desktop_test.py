"""A desktop whose link is revoked on the service's page."""

import unittest

from harness.scenario import DEVICE, Scenario


class RevokedDesktop(Scenario):
    needs_browser = True

    def test_the_next_start_is_signed_out_and_says_what_the_service_says(self):
        window = self.start_linked()
        self.browser.open(self.service.address)
        self.browser.press(f"Revoke {DEVICE}")
        self.browser.wait_for_content("No desktop is linked.")
        # Nobody tells a running client, and it keeps what it has.
        self.assertIn("Signed in as Robin Vale", window.texts())
        self.close_window()
        self.assertIn("access_token", self.client.state())

        window = self.start_again("The link of this desktop was revoked. Link it again.")
        self.assertIn("Not linked yet", window.texts())
        self.assertEqual(window.table().rows(), [])
        self.assertFalse(window.button("Unlink").enabled())
        self.client.wait_for_state(lambda state: "access_token" not in state, "a state file without the token")
        self.close_window()


if __name__ == "__main__":
    unittest.main()
