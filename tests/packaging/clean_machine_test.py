"""The package on a Debian 12 with nothing else in it: installed, started, used, upgraded and removed."""

import os
import pathlib
import re
import subprocess
import unittest

from clean_machine import CleanMachine, enter_own_mounts, prepare_clean_machines
from packaging_support import LOGO, WORK, empty_folder, main, needs, package, run, use_e2e_harness

use_e2e_harness()

from harness.client_process import ClientProcess  # noqa: E402 (the path comes first)
from harness.keyboard import Keyboard  # noqa: E402
from harness.page_visitor import PageVisitor  # noqa: E402
from harness.service_process import ServiceProcess  # noqa: E402
from harness.virtual_desktop import VirtualDesktop  # noqa: E402
from harness.walk_steps import FIRST_START, Walk  # noqa: E402

HOME = "/home/person"
LEFT_BEHIND = "usr/share/doc/tarnwick-client/only-in-the-old-version"

# Nothing of this machine gets in but the screen, the accessibility bus and a browser that writes down what it opens.
START = """#!/bin/sh
exec chroot '{root}' /usr/bin/env --unset=FONTCONFIG_FILE PATH=/usr/bin:/bin HOME='{home}' BROWSER='{browser}' \\
    tarnwick-client
"""


def older_package():
    """The same package under an older version, with a file more."""
    folder = empty_folder("older-package")
    content = folder / "content"
    run("dpkg-deb", "--raw-extract", package(), content)
    control = content / "DEBIAN" / "control"
    text = control.read_text(encoding="utf-8")
    control.write_text(re.sub(r"^Version: .*$", "Version: 0.0.1-1", text, flags=re.MULTILINE), encoding="utf-8")
    (content / LEFT_BEHIND).write_text("Gone with the next version.\n", encoding="utf-8")
    run("dpkg-deb", "--root-owner-group", "--build", content, folder)
    return next(folder.glob("*.deb"))


class OnACleanMachine(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        prepare_clean_machines()
        needs("Xvfb", "openbox", "xdotool", "xprop", "convert", "compare")
        cls.desktop = VirtualDesktop()
        cls.addClassCleanup(cls.desktop.close)

    def machine(self, name):
        machine = CleanMachine(name)
        self.addCleanup(machine.remove)
        machine.show(self.desktop.folder)
        machine.path(HOME).mkdir()
        return machine

    def client(self, machine):
        """The client inside, started by the link among the machine's commands."""
        start = WORK / f"start-on-{machine.root.name}"
        start.write_text(START.format(root=machine.root, home=HOME, browser=f"{self.desktop.opened.folder}/xdg-open"),
                         encoding="utf-8")
        start.chmod(0o755)
        return ClientProcess(start, self.desktop, machine.path(HOME))

    def close(self, client):
        Keyboard(self.desktop).press("alt+F4")
        self.assertEqual(client.wait_for_end(), 0)
        self.assertEqual(client.printed(), "")

    def test_it_starts_with_nothing_but_what_it_depends_on(self):
        machine = self.machine("clean-machine-least")
        machine.path("/etc/apt/apt.conf.d/90least").write_text('APT::Install-Recommends "false";\n', encoding="utf-8")
        machine.install(package())
        client = self.client(machine)
        client.start().wait_for_status("Ready to link your Tarnwick account.")
        self.see_the_icon()
        self.close(client)

    def test_it_is_installed_used_upgraded_and_removed(self):
        machine = self.machine("clean-machine")
        service = ServiceProcess(os.environ["TARNWICK_SERVICE"], self.desktop.folder, self.desktop.path("service.log"))
        self.addCleanup(service.stop)
        machine.install(older_package())
        self.assertTrue(machine.path(LEFT_BEHIND).exists())
        client = self.client(machine)
        self.walk(client, service)
        state = self.upgrade_and_be_still_linked(machine, client)
        self.remove_without_a_rest(machine)
        self.assertEqual(pathlib.Path(client.state_file).read_bytes(), state)

    def walk(self, client, service):
        pictures = empty_folder("clean-machine-pictures")
        client.write_state(origin=service.address)
        Walk(self.desktop, client, PageVisitor(), pictures).all_steps()
        self.see_the_logo(pictures / FIRST_START)
        self.see_the_icon()
        self.close(client)

    def upgrade_and_be_still_linked(self, machine, client):
        """Returns the state file's content at the end."""
        machine.install(package())
        version = machine.run("dpkg-query", "--show", "--showformat", "${Version}", "tarnwick-client")
        self.assertEqual(version, run("dpkg-deb", "--field", package(), "Version").strip())
        self.assertFalse(machine.path(LEFT_BEHIND).exists())
        client.start().wait_for_status("Loaded 3 Tarnwick project(s).")
        self.close(client)
        return pathlib.Path(client.state_file).read_bytes()

    def remove_without_a_rest(self, machine):
        machine.run("apt-get", "remove", "--yes", "tarnwick-client")
        known = subprocess.run(["chroot", machine.root, "dpkg-query", "--show", "tarnwick-client"],
                               capture_output=True, check=False)
        self.assertNotEqual(known.returncode, 0)
        named = machine.run("find", "/", "-xdev", "-iname", "*tarnwick*", "-not", "-path", f"{HOME}/*",
                            "-not", "-path", f"{self.desktop.folder}*")
        self.assertEqual(named, "")

    def see_the_logo(self, picture):
        """The flame's heart, as large as the header shows the logo, is somewhere in the picture's upper left."""
        heart, corner = WORK / "logo-heart.png", WORK / "picture-corner.png"
        run("convert", LOGO, "-resize", "96x96", "-crop", "24x24+36+38", "+repage", "-alpha", "off", heart)
        run("convert", picture, "-crop", "320x220+0+0", "+repage", corner)
        done = subprocess.run(["compare", "-metric", "RMSE", "-subimage-search", corner, heart, "null:"],
                              capture_output=True, text=True, timeout=120, check=False)
        difference = re.search(r"\(([0-9.e-]+)\)", done.stderr)
        self.assertTrue(difference and float(difference[1]) < 0.05, f"No logo in {picture}: {done.stderr}")

    def see_the_icon(self):
        environment = self.desktop.environment
        window = run("xprop", "-root", "_NET_ACTIVE_WINDOW", env=environment).split()[-1]
        said = run("xprop", "-id", window, "-notype", "-f", "_NET_WM_ICON", "32c", "=$0,$1\\n", "_NET_WM_ICON",
                   env=environment)
        self.assertEqual(said, "_NET_WM_ICON=512,512\n")


if __name__ == "__main__":
    enter_own_mounts()
    main()
