"""A service that goes away while the desktop is linked, and comes back."""

import unittest

from harness.scenario import Scenario


class ServiceOutage(Scenario):
    def test_refresh_says_why_it_failed_keeps_the_rows_and_works_again_later(self):
        window = self.start_linked()
        rows = window.table().rows()

        self.service.stop()
        window.press("Refresh")
        window.wait_for_status("Connection refused")
        self.assertEqual(window.table().rows(), rows)
        self.assertIn("Signed in as Robin Vale", window.texts())
        self.assertTrue(window.button("Refresh").enabled())

        self.service.start()
        window.press("Refresh")
        window.wait_for_status("Loaded 2 Tarnwick project(s).")
        self.assertEqual(window.table().rows(), rows)
        self.close_window()


if __name__ == "__main__":
    unittest.main()
