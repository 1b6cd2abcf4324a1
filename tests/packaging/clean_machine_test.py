"""The package on a Debian 12 with nothing else in it: installed, started, used, upgraded and removed. An ordinary user
sits before the screen; root only installs and removes."""

import json
import os
import re
import subprocess
import unittest

from clean_machine import HOME, CleanMachine, prepare_clean_machines
from clean_machine_needs import enter_own_mounts
from ordinary_account import ACCOUNT, AS_ACCOUNT, being_ordinary
from packaging_support import LOGO, WORK, empty_folder, main, needs, package, run, use_e2e_harness

use_e2e_harness()

from harness.client_process import STATE_FILE, ClientProcess  # noqa: E402 (the path comes first)
from harness.keyboard import Keyboard  # noqa: E402
from harness.page_visitor import PageVisitor  # noqa: E402
from harness.service_process import ServiceProcess  # noqa: E402
from harness.virtual_desktop import VirtualDesktop  # noqa: E402
from harness.walk_steps import FIRST_START, Walk  # noqa: E402

PACKAGE = "tarnwick-client"
LEFT_BEHIND = f"usr/share/doc/{PACKAGE}/only-in-the-old-version"

# Nothing of this machine gets in but the screen, the accessibility bus and a browser that writes down what it opens.
START = """#!/bin/sh
exec chroot '{root}' {account} /usr/bin/env --unset=FONTCONFIG_FILE PATH=/usr/bin:/bin HOME='{home}' \\
    BROWSER='{browser}' tarnwick-client
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
        needs("Xvfb", "openbox", "xdotool", "xprop", "convert", "compare", "dbus-send")
        with being_ordinary():
            cls.desktop = VirtualDesktop()
        cls.addClassCleanup(cls.desktop.close)
        # Of its two buses, the one for accessibility lets root in, too; the other one tells where that is.
        os.environ["AT_SPI_BUS_ADDRESS"] = run(
            *AS_ACCOUNT, "dbus-send", "--session", "--print-reply=literal", "--dest=org.a11y.Bus", "/org/a11y/bus",
            "org.a11y.Bus.GetAddress", env=cls.desktop.environment).strip()

    def machine(self, name):
        machine = CleanMachine(name)
        self.addCleanup(machine.remove)
        machine.show(self.desktop.folder)
        return machine

    def client(self, machine):
        """The client inside, started by the link among the machine's commands."""
        start = WORK / f"start-on-{machine.root.name}"
        start.write_text(START.format(root=machine.root, account=" ".join(AS_ACCOUNT), home=HOME,
                                      browser=f"{self.desktop.opened.folder}/xdg-open"), encoding="utf-8")
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
        self.state_of_person(machine)

    def test_it_is_installed_used_upgraded_and_removed(self):
        machine = self.machine("clean-machine")
        service = ServiceProcess(os.environ["TARNWICK_SERVICE"], self.desktop.folder, self.desktop.path("service.log"))
        self.addCleanup(service.stop)
        machine.install(older_package())
        self.assertTrue(machine.path(LEFT_BEHIND).exists())
        client = self.client(machine)
        self.walk(machine, client, service)
        self.upgrade(machine)
        self.be_still_linked_and_link_again(client)
        state = self.state_of_person(machine)
        self.remove_without_a_rest(machine, "remove")
        machine.install(package())
        self.remove_without_a_rest(machine, "purge")
        self.assertEqual(self.state_of_person(machine), state)

    def walk(self, machine, client, service):
        pictures = empty_folder("clean-machine-pictures")
        client.write_state(origin=service.address)
        machine.give_home_to_person()
        Walk(self.desktop, client, PageVisitor(), pictures).all_steps()
        self.see_the_logo(pictures / FIRST_START)
        self.see_the_icon()
        self.close(client)

    def upgrade(self, machine):
        machine.install(package())
        version = machine.run("dpkg-query", "--show", "--showformat", "${Version}", PACKAGE)
        self.assertEqual(version, run("dpkg-deb", "--field", package(), "Version").strip())
        self.assertFalse(machine.path(LEFT_BEHIND).exists())

    def be_still_linked_and_link_again(self, client):
        window = client.start()
        window.wait_for_status("Loaded 3 Tarnwick project(s).")
        before = client.state()
        window.press("Unlink")
        window.wait_for_status("Tarnwick desktop client unlinked.")
        window.press("Generate Link Code")
        window.wait_for_status(lambda text: text.startswith("Waiting for approval."))
        window.press("Open Public Pairing Page")
        PageVisitor().decide(self.desktop.opened.next(), "approve")
        window.wait_for_status("Loaded 3 Tarnwick project(s).")
        self.close(client)
        after = client.state()
        self.assertEqual(after["device_id"], before["device_id"])
        self.assertNotIn(after["access_token"], ("", before["access_token"]))

    def state_of_person(self, machine):
        """The state file as the person reads it, who alone may."""
        told = machine.run_as_person("stat", "--format", "%u %a", f"{HOME}/{STATE_FILE}")
        self.assertEqual(told, f"{ACCOUNT.pw_uid} 600\n")
        text = machine.run_as_person("cat", f"{HOME}/{STATE_FILE}")
        self.assertTrue(json.loads(text)["device_id"])
        return text

    def remove_without_a_rest(self, machine, how):
        places = machine.places_of(PACKAGE)
        self.assertLessEqual({f"/usr/bin/{PACKAGE}", f"/usr/libexec/{PACKAGE}", f"/usr/share/doc/{PACKAGE}"}, places)
        self.assertEqual({place for place in places if not os.path.lexists(machine.path(place))}, set())
        machine.run("apt-get", how, "--yes", PACKAGE)
        self.assertEqual({place for place in places if os.path.lexists(machine.path(place))}, set())
        known = subprocess.run(["chroot", machine.root, "dpkg-query", "--show", PACKAGE],
                               capture_output=True, check=False)
        self.assertNotEqual(known.returncode, 0)
        # And nothing that the package never told of.
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
        self.assertEqual(said, "_NET_WM_ICON=256,256\n")


if __name__ == "__main__":
    enter_own_mounts()
    main()
