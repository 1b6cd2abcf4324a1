"""What a failed test tells: the client's last status text, and pictures of the screen and of the browser's page."""

import os
import re
import signal
import struct
import subprocess
import tempfile
import unittest

from harness.scenario import Scenario
from harness.screen import wait_for_stillness
from harness.waiting import WaitedInVain, wait_until

READY = "Ready to link your Tarnwick account."

# What the path of the screen's picture follows.
SCREEN = "The screen at that moment: "

# Fewer colours than either the client's window or a page of the service has on its letters' edges alone.
FEW_COLOURS = 50


class FailureAccount(Scenario):
    needs_browser = True

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tarnwick-failures-")
        cls.addClassCleanup(folder.cleanup)
        cls.failures = folder.name
        super().setUpClass()

    def test_a_wait_in_vain_tells_the_status_text_and_shows_the_screen(self):
        window = self.start_unlinked()
        wait_for_stillness(self.desktop, window.status)
        account = self.account_of_waiting_in_vain(lambda: window.wait_for_status("Never said.", limit=0.1))
        self.assertRegex(account, r"^Waited 0\.1 s in vain for the status text 'Never said\.'\.\n")
        self.assertIn(f"The client runs. Its status text: '{READY}'. It printed: ''", account)
        self.expect_picture(SCREEN, account, (self.width, self.height))

    def test_a_wait_for_the_browser_shows_its_page_as_well(self):
        self.browser.open(self.service.address)
        account = self.account_of_waiting_in_vain(lambda: wait_until(lambda: self.browser.value("No"), "a field", 0.1))
        self.assertIn("\nThe last look failed: the browser says: no such element", account)
        page = f"The browser was at {self.service.address}/. Its page: "
        self.expect_picture(page, account, self.browser.page_size())
        self.assertNotEqual(self.picture(page, account), self.picture(SCREEN, account))

    def test_a_client_that_ended_by_itself_is_quoted(self):
        window = self.start_unlinked()
        end_at_once(self.client)
        account = self.account_of_waiting_in_vain(lambda: window.wait_for_status("Never said.", limit=0.1))
        self.assertIn(f"The client has ended with -9. Its last known status text: '{READY}'.", account)
        self.client.kill()

    def test_a_client_that_its_user_closed_is_quoted(self):
        self.start_unlinked()
        self.close_window()
        account = self.account_of_waiting_in_vain(lambda: wait_until(lambda: False, "nothing", 0.1))
        self.assertIn(f"The client has ended with 0. Its last known status text: '{READY}'. It printed: ''", account)

    def test_an_expectation_that_fails_leaves_the_same_account(self):
        account = self.account_of_running("expects_too_much")
        self.assertIn("1 != 2", account)
        self.assertIn(f"The client runs. Its status text: '{READY}'.", account)
        self.expect_picture(SCREEN, account, (self.width, self.height))

    def test_a_client_that_ends_badly_after_its_test_leaves_the_same_account(self):
        account = self.account_of_running("leaves_a_dead_client")
        self.assertIn("The client ended by itself.", account)
        self.assertIn(f"The client has ended with -9. Its last known status text: '{READY}'.", account)
        self.assertTrue(os.path.exists(self.picture(SCREEN, account)))

    def account_of_waiting_in_vain(self, wait):
        with self.assertRaises(WaitedInVain) as caught:
            wait()
        return str(caught.exception)

    def account_of_running(self, name):
        """What the report on the one failure of another scenario says. It takes place on this one's desktop."""
        scenario = _Failing(name)
        scenario.desktop, scenario.keyboard = self.desktop, self.keyboard
        result = unittest.TestResult()
        scenario.run(result)
        self.assertEqual((len(result.failures), result.errors), (1, []))
        return result.failures[0][1]

    def picture(self, announced, account):
        """The path that follows these words in the account."""
        found = re.search(f"^{re.escape(announced)}(.+)$", account, re.MULTILINE)
        self.assertIsNotNone(found, f"'{announced}' is not in: {account}")
        return found[1]

    def expect_picture(self, announced, account, size):
        """The account names a picture of that size which shows something."""
        path = self.picture(announced, account)
        self.assertEqual(os.path.dirname(path), self.failures)
        with open(path, "rb") as source:
            head = source.read(24)
        self.assertEqual((head[:8], struct.unpack(">II", head[16:])), (b"\x89PNG\r\n\x1a\n", size))
        colours = subprocess.run(["identify", "-format", "%k", path], check=True, timeout=30, capture_output=True)
        self.assertGreater(int(colours.stdout), FEW_COLOURS)


class _Failing(Scenario):
    def expects_too_much(self):
        wait_for_stillness(self.desktop, self.start_unlinked().status)
        self.assertEqual(1, 2)

    def leaves_a_dead_client(self):
        self.start_unlinked()
        end_at_once(self.client)


def end_at_once(client):
    os.kill(client.window.application.get_process_id(), signal.SIGKILL)
    wait_until(lambda: client.exit_code() is not None, "the client's end")


if __name__ == "__main__":
    unittest.main()
