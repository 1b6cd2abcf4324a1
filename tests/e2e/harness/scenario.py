"""What every end-to-end scenario has: a desktop, and for each test a service and a client of its own."""

import os
import sys
import unittest

from harness.client_process import ClientProcess
from harness.keyboard import Keyboard
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualDesktop
from harness.web_browser import WebBrowser

DEVICE = "e2e-desktop"


class Scenario(unittest.TestCase):
    """The programs come from the environment: TARNWICK_CLIENT and TARNWICK_SERVICE."""

    width, height, fill = 1280, 1000, False
    needs_browser = False

    @classmethod
    def setUpClass(cls):
        cls.desktop = VirtualDesktop(cls.width, cls.height, cls.fill)
        cls.addClassCleanup(cls.desktop.close)
        cls.keyboard = Keyboard(cls.desktop)
        if cls.needs_browser:
            cls.browser = WebBrowser(cls.desktop)
            cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.set_up_programs(self._testMethodName)

    def set_up_programs(self, name):
        """A new service without anything in it but its examples, and a client that has never run."""
        folder = self.desktop.path(name)
        os.mkdir(folder)
        self.service = ServiceProcess(_program("TARNWICK_SERVICE"), folder, os.path.join(folder, "service.log"))
        self.addCleanup(self.service.stop)
        self.client = ClientProcess(_program("TARNWICK_CLIENT"), self.desktop, os.path.join(folder, "home"))
        self.addCleanup(self._end_client, self.client)

    def start_unlinked(self):
        """The window of a client that knows the service and is not linked yet."""
        self.client.write_state(origin=self.service.address, device_id=DEVICE)
        window = self.client.start()
        window.wait_for_status("Ready to link your Tarnwick account.")
        return window

    def start_linked(self):
        """The window of a client that was linked at an earlier time, with its projects listed."""
        token = PageVisitor().link(self.service.address, DEVICE)
        self.client.write_state(origin=self.service.address, device_id=DEVICE, access_token=token)
        return self.start_again("Loaded 2 Tarnwick project(s).")

    def start_again(self, status):
        window = self.client.start()
        window.wait_for_status(status)
        return window

    def close_window(self):
        """Closes the window as its user does, and expects a clean and silent end."""
        self.keyboard.press("alt+F4")
        code = self.client.wait_for_end()
        self.assertEqual((code, self.client.printed()), (0, ""))

    def _end_client(self, client):
        if client.running():
            client.kill()
            self.assertEqual(client.printed(), "")


def _program(variable):
    path = os.environ.get(variable)
    if not path:
        sys.exit(f"{variable} must name the program to test.")
    return path
