"""The package on fresh Debian 12 and 13 systems: a user with sudo makes it with the documented command, installs, uses,
upgrades, removes and purges it."""

import os
import re
import shutil
import sys

import pytest
from conftest import WORK, empty_folder, run
from fresh_machine import roots
from fresh_machine.machine import HOME, Machine
from fresh_machine.project import clone_into
from harness.child_process import ChildProcess
from harness.client_process import STATE_FILE, ClientProcess
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualDesktop
from harness.waiting import wait_until
from harness.walk_steps import Walk
from person import NUMBER, be_known_here, being_person

SUITES = (roots.BOOKWORM, roots.TRIXIE)
OLDER_ONLY = "usr/share/doc/tarnwick-client/only-in-the-older-version"

# The client uses the host's screen, the host's buses and a browser that records the addresses it should open.
START = """#!/bin/sh
exec chroot '{root}' setpriv --reuid={number} --regid={number} --clear-groups --pdeathsig=keep \\
    env --unset=FONTCONFIG_FILE PATH=/usr/bin:/bin HOME={home} BROWSER='{browser}' tarnwick-client
"""


@pytest.fixture(scope="module", autouse=True)
def machines_are_possible():
    reason = roots.why_not(*SUITES)
    if reason is not None:
        pytest.skip(reason)


@pytest.mark.parametrize("suite", SUITES)
def test_the_package_is_made_with_nothing_but_its_build_dependencies(suite):
    kept = empty_folder(f"made-on-{suite}")
    with Machine(suite, WORK / f"build-{suite}") as machine:
        clone = clone_into(machine)
        told = machine.run_as_person("tools/package", folder=clone, limit=900)
        package = machine.path(f"{clone}/{told.splitlines()[-1]}")

        # Another user in another folder with other settings makes an identical package.
        machine.run("cp", "--recursive", clone, "/opt/a-folder-with-another-name")
        make = "git clean -dfxq && umask 077 && dpkg-buildpackage --build=binary --no-sign"
        machine.run("sh", "-c", make, folder="/opt/a-folder-with-another-name", TZ="Pacific/Chatham", LC_ALL="C")
        assert machine.path(f"/opt/{package.name}").read_bytes() == package.read_bytes()

        machine.run("apt-get", "install", "--yes", "--no-install-recommends", "lintian", limit=600)
        made = [f"build/package/{path.name}" for path in package.parent.glob("*.changes")]
        assert machine.run_as_person("lintian", "--fail-on=error,warning", *made, folder=clone) == ""
        shutil.copy(package, kept)


@pytest.fixture(scope="module", name="desktop")
def persons_desktop():
    be_known_here()
    with being_person():
        desktop = VirtualDesktop()
    asked = ["dbus-send", "--session", "--print-reply=literal", "--dest=org.a11y.Bus", "/org/a11y/bus"]
    as_person = ["setpriv", f"--reuid={NUMBER}", f"--regid={NUMBER}", "--clear-groups"]
    # Root may use the accessibility bus, but not the session bus, which knows its address. So the user asks for it.
    told = run(*as_person, *asked, "org.a11y.Bus.GetAddress", env=desktop.environment)
    os.environ["AT_SPI_BUS_ADDRESS"] = told.strip()
    yield desktop
    desktop.close()


@pytest.fixture(scope="module", name="packages")
def newer_and_older_package():
    """The package made on Debian 12, and a copy with an older version number and one more file."""
    (newer,) = (WORK / f"made-on-{roots.BOOKWORM}").glob("*.deb")
    content = empty_folder("older") / "content"
    run("dpkg-deb", "--raw-extract", newer, content)
    control = content / "DEBIAN" / "control"
    text = control.read_text(encoding="utf-8")
    control.write_text(re.sub("^Version: .*$", "Version: 0.0.1", text, flags=re.MULTILINE), encoding="utf-8")
    (content / OLDER_ONLY).touch()
    run("dpkg-deb", "--root-owner-group", "--build", content, content.parent)
    return newer, next(content.parent.glob("*.deb"))


class Person:
    """The user of a fresh machine, with the host's virtual desktop."""

    def __init__(self, machine, desktop):
        self.machine = machine
        self.desktop = desktop
        machine.show(desktop.folder, desktop.folder)
        self._start = WORK / f"start-{machine.suite}"
        browser = f"{desktop.opened.folder}/xdg-open"
        text = START.format(root=machine.root, number=NUMBER, home=HOME, browser=browser)
        self._start.write_text(text, encoding="utf-8")
        self._start.chmod(0o755)
        self.client = ClientProcess(self._start, desktop, machine.path(HOME))

    def install(self, package, *options):
        shutil.copy(package, self.machine.path(HOME))
        command = ["sudo", "apt-get", "install", "--yes", *options, f"./{package.name}"]
        self.machine.run_as_person(*command, limit=600)

    def remove(self, how):
        """Removes the package; no file of it and no file with its name may remain."""
        files = self.machine.run("dpkg", "--listfiles", "tarnwick-client").splitlines()
        files = [name for name in files if not os.path.isdir(self.machine.path(name))]
        assert "/usr/bin/tarnwick-client" in files
        self.machine.run_as_person("sudo", "apt-get", how, "--yes", "tarnwick-client")
        assert not [name for name in files if os.path.lexists(self.machine.path(name))]
        outside = ["-not", "-path", f"{HOME}/*", "-not", "-path", f"{self.desktop.folder}*"]
        assert self.machine.run("find", "/", "-xdev", "-iname", "*tarnwick*", *outside) == ""

    def state(self):
        """The content of the state file, which only its owner may read."""
        assert self.machine.run_as_person("stat", "--format=%U %a", STATE_FILE) == f"{roots.PERSON} 600\n"
        return self.machine.run_as_person("cat", STATE_FILE)

    def close_client(self):
        self.desktop.press("alt+F4")
        assert (self.client.wait_for_end(), self.client.printed()) == (0, "")

    def told_under_wayland(self):
        """The application ID that the client gives to a Wayland compositor."""
        weston = ["weston", "--backend=headless-backend.so", "--socket=wayland-test", "--idle-time=0", "--no-config"]
        log = self.desktop.path(f"wayland-{self.machine.suite}.log")
        environment = self.desktop.environment | {"WAYLAND_DISPLAY": "wayland-test"}
        with being_person():
            compositor = ChildProcess(weston, self.desktop.path("weston.log"), environment=environment)
            wait_until(lambda: os.path.exists(self.desktop.path("runtime/wayland-test")), "the Wayland compositor")
        environment |= {"QT_QPA_PLATFORM": "wayland", "WAYLAND_DEBUG": "1"}
        client = ChildProcess([str(self._start)], log, environment=environment)
        told = wait_until(lambda: re.search(r'set_app_id\("(.*)"\)', client.text()), "the window's identifier")[1]
        client.end()
        compositor.end()
        return told


@pytest.mark.parametrize("suite", SUITES)
def test_it_is_installed_used_upgraded_removed_and_purged(suite, desktop, packages, tmp_path):
    newer, older = packages
    service = ServiceProcess(tmp_path, desktop.path(f"service-{suite}.log"))
    with Machine(suite, WORK / f"use-{suite}") as machine:
        person = Person(machine, desktop)
        person.install(older, "--no-install-recommends")
        assert machine.path(OLDER_ONLY).exists()

        person.client.write_state(origin=service.address)
        machine.run("chown", "--recursive", f"{roots.PERSON}:", HOME)
        Walk(desktop, person.client).all_steps()
        person.close_client()
        state = person.state()

        person.install(newer)
        assert not machine.path(OLDER_ONLY).exists()
        person.client.start().wait_for_status("Loaded 3 Tarnwick project(s).")
        person.close_client()
        assert person.state() == state

        person.remove("remove")
        person.install(newer)
        assert person.told_under_wayland() == "Tarnwick"
        person.remove("purge")
        assert person.state() == state
    service.stop()


if __name__ == "__main__":
    roots.enter_own_namespaces()
    sys.exit(pytest.main(["-q", __file__, *sys.argv[1:]]))
