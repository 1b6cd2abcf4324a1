"""What a failed test reports: the client's last status text, and pictures of the screen and of the browser's page."""

import os
import re
import signal
import tempfile
import unittest

from harness.scenario import Scenario
from harness.waiting import WaitedInVain, wait_until
from PIL import Image

READY = "Ready to link your Tarnwick account."
SCREEN = r"The screen at that moment: (.+\.png)"


class FailureAccount(Scenario):
    needs_browser = True

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tarnwick-failures-")
        cls.addClassCleanup(folder.cleanup)
        cls.failures = folder.name
        super().setUpClass()

    def test_a_wait_in_vain_tells_the_status_text_and_shows_screen_and_page(self):
        self.start_unlinked()
        self.browser.open(self.service.address)
        with self.assertRaises(WaitedInVain) as caught:
            wait_until(lambda: self.browser.value("No"), "a field", 0.1)
        account = str(caught.exception)
        self.assertRegex(account, r"^Waited 0\.1 s for a field\.\nThe last look failed: the browser says: no such")
        self.assertIn(f"The client runs. Its status text: '{READY}'. It printed: ''", account)
        self.assertEqual(self.picture(SCREEN, account).size, (self.width, self.height))
        self.assertGreater(self.picture(r"Its page: (.+\.png)", account).width, 0)

    def test_an_expectation_that_fails_leaves_the_same_account(self):
        account = self.account_of("expects_too_much")
        self.assertIn("1 != 2", account)
        self.assertIn(f"The client runs. Its status text: '{READY}'.", account)
        self.picture(SCREEN, account)

    def test_a_client_that_ends_badly_after_its_test_fails_it(self):
        account = self.account_of("leaves_a_dead_client")
        self.assertIn("The client ended by itself.", account)
        self.assertIn(f"The client has ended with -9. Its last known status text: '{READY}'.", account)

    def account_of(self, name):
        """The report on the one failure of another scenario, which runs on this one's desktop."""
        scenario = _Failing(name)
        scenario.desktop = self.desktop
        result = unittest.TestResult()
        scenario.run(result)
        self.assertEqual((len(result.failures), result.errors), (1, []))
        return result.failures[0][1]

    def picture(self, pattern, account):
        """The picture that the account names. It must not be empty."""
        self.assertRegex(account, pattern)
        with Image.open(re.search(pattern, account)[1]) as picture:
            self.assertIsNone(picture.getcolors(50), "hardly any colour")
            return picture


class _Failing(Scenario):
    def expects_too_much(self):
        self.start_unlinked()
        self.assertEqual(1, 2)

    def leaves_a_dead_client(self):
        self.start_unlinked()
        os.kill(self.client.pid, signal.SIGKILL)
        wait_until(lambda: self.client.exit_code() is not None, "the client's end")


if __name__ == "__main__":
    unittest.main()
