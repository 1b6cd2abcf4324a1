"""What the installed program's window tells the desktop: its class, its identifier, its icon."""

import os
import re
import subprocess
import tempfile
import unittest

from packaging_support import LOGO, main, needs, product, run, unpacked_package, use_e2e_harness

use_e2e_harness()

from harness.child_process import ChildProcess  # noqa: E402 (the path comes first)
from harness.virtual_desktop import VirtualDesktop  # noqa: E402
from harness.waiting import wait_until  # noqa: E402


class WindowIdentity(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        root = unpacked_package("window-identity") / "usr"
        cls.link = root / "bin" / "tarnwick-client"
        entry = root / "share" / "applications" / (product()["TARNWICK_APP_ID"] + ".desktop")
        cls.stated = re.search(r"^StartupWMClass=(.*)$", entry.read_text(encoding="utf-8"), re.MULTILINE)[1]

    def setUp(self):
        needs("xprop", "weston", "convert")
        self.desktop = VirtualDesktop()
        self.addCleanup(self.desktop.close)

    def start(self, **environment):
        """Starts the client by its link, from a folder without any logo."""
        return ChildProcess([str(self.link)], self.desktop.path("client.log"), folder="/",
                            environment=dict(self.desktop.environment, **environment))

    def property(self, window, *words):
        return run("xprop", "-id", window, "-len", 2 ** 30, *words, env=self.desktop.environment)

    def window(self):
        def managed():
            printed = run("xprop", "-root", "_NET_CLIENT_LIST", env=self.desktop.environment)
            return re.findall(r"0x[0-9a-f]+", printed)
        return wait_until(managed, "the client's window")[0]

    def test_the_class_is_the_one_that_the_desktop_entry_states(self):
        self.start(QT_QPA_PLATFORM="xcb")
        self.assertIn(f'= "tarnwick-client", "{self.stated}"\n', self.property(self.window(), "WM_CLASS"))

    def test_the_icon_is_the_logo(self):
        self.start(QT_QPA_PLATFORM="xcb")
        printed = self.property(self.window(), "-notype", "-f", "_NET_WM_ICON", "32c", "=$0+", "_NET_WM_ICON")
        width, height, *pixels = (int(number) & 0xffffffff for number in re.findall(r"-?\d+", printed))
        self.assertEqual((width, height, len(pixels)), (256, 256, 256 * 256))
        wanted = subprocess.run(["convert", LOGO, "-depth", "8", "RGBA:-"], capture_output=True, check=True).stdout
        different = sum(_unlike(pixel, wanted[4 * place:4 * place + 4]) for place, pixel in enumerate(pixels))
        self.assertLess(different, 0.001 * len(pixels))

    def test_the_identifier_under_wayland_is_the_one_that_the_desktop_entry_states(self):
        with tempfile.TemporaryDirectory(prefix="tarnwick-") as runtime:
            os.chmod(runtime, 0o700)
            environment = {"XDG_RUNTIME_DIR": runtime, "WAYLAND_DISPLAY": "test-screen"}
            compositor = ChildProcess(
                ["weston", "--backend=headless-backend.so", "--socket=test-screen", "--idle-time=0", "--no-config"],
                self.desktop.path("weston.log"), environment=dict(self.desktop.environment, **environment))
            self.addCleanup(compositor.end)
            wait_until(lambda: os.path.exists(os.path.join(runtime, "test-screen")), "the Wayland screen")
            client = self.start(QT_QPA_PLATFORM="wayland", WAYLAND_DEBUG="1", **environment)
            self.addCleanup(client.end)
            told = wait_until(lambda: re.search(r'set_app_id\("(.*)"\)', client.text()), "the window's identifier")
            self.assertEqual(told[1], self.stated)


def _unlike(pixel, wanted):
    """Pixels may differ by what is lost when a see-through colour is multiplied and divided again."""
    red, green, blue, alpha = wanted
    given = ((pixel >> 16) & 0xff, (pixel >> 8) & 0xff, pixel & 0xff)
    if alpha != pixel >> 24:
        return True
    return any(abs(one - other) * alpha > 2 * 255 for one, other in zip(given, (red, green, blue)))


if __name__ == "__main__":
    main()
