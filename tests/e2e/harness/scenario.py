"""What every end-to-end scenario has: a desktop, and for each test its own service and client."""

import functools
import os
import sys
import types
import unittest

from harness.client_process import REPOSITORY, ClientProcess
from harness.ordinary_user import become_ordinary
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualDesktop
from harness.waiting import leaving_an_account
from harness.web_browser import WebBrowser

DEVICE = "e2e-desktop"
CLIENT = os.environ.get("TARNWICK_CLIENT") or sys.exit("TARNWICK_CLIENT must name the program to test.")

become_ordinary([CLIENT, os.path.join(REPOSITORY, "tarnwick", "__main__.py")], os.environ.get("TARNWICK_E2E_RESULTS"))


class Scenario(unittest.TestCase):
    width, height = 1280, 1000
    needs_browser = False
    failures = None  # the folder for pictures of failures, if not the default one

    def __init__(self, method):
        super().__init__(method)
        self._failed = False
        setattr(self, method, types.MethodType(_watched(getattr(self, method)), self))

    @classmethod
    def setUpClass(cls):
        cls.desktop = VirtualDesktop(cls.width, cls.height, failures=cls.failures)
        cls.addClassCleanup(cls.desktop.close)
        if cls.needs_browser:
            with leaving_an_account():
                cls.browser = WebBrowser(cls.desktop)
            cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        with leaving_an_account():
            self.set_up_programs(self._testMethodName)

    def set_up_programs(self, name):
        """A new service with only its example projects, and a client without a state file."""
        folder = self.desktop.path(name)
        os.mkdir(folder)
        self.service = ServiceProcess(folder, os.path.join(folder, "service.log"))
        self.addCleanup(self.service.stop)
        self.client = ClientProcess(CLIENT, self.desktop, os.path.join(folder, "home"))
        self.addCleanup(self._end_client, self.client)

    def start_unlinked(self):
        """The window of a client with the service's address that is not linked yet."""
        self.client.write_state(origin=self.service.address, device_id=DEVICE)
        return self.start_again("Ready to link your Tarnwick account.")

    def start_linked(self):
        """The window of a client that was linked earlier, with its projects listed."""
        token = PageVisitor().link(self.service.address, DEVICE)
        self.client.write_state(origin=self.service.address, device_id=DEVICE, access_token=token)
        return self.start_again("Loaded 2 Tarnwick project(s).")

    def start_again(self, status):
        window = self.client.start()
        window.wait_for_status(status)
        return window

    def close_window(self):
        """Closes the window as a user would, and expects exit code 0 and no output."""
        self._close(self.client)

    def _close(self, client):
        self.assertIsNone(client.exit_code(), "The client ended by itself.")
        self.desktop.press("alt+F4")
        code = client.wait_for_end()
        self.assertEqual((code, client.printed()), (0, ""))

    def _end_client(self, client):
        """Closes a client that the test left open. It must still be running, unless the test has failed."""
        try:
            with leaving_an_account():
                if client.left_open() and self._failed:
                    self.assertEqual((client.exit_code(), client.printed()), (None, ""))
                elif client.left_open():
                    self._close(client)
        finally:
            client.kill()


def _watched(method):
    @functools.wraps(method)
    def watched(scenario):
        scenario._failed = True
        with leaving_an_account():
            method()
        scenario._failed = False

    return watched
