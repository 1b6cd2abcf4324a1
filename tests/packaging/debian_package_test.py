"""The package from tools/package: what lintian and the validators report, and how its window identifies itself."""

import os
import re
import subprocess
import xml.etree.ElementTree

import pytest
from conftest import ID, LOGO, REPOSITORY, empty_folder, needs, run
from fresh_machine.project import snapshot
from harness.child_process import ChildProcess
from harness.virtual_desktop import VirtualDesktop
from harness.waiting import wait_until
from install_test import FILES


@pytest.fixture(scope="module", name="package")
def made_package():
    needs("dpkg-buildpackage", "dh", "git")
    clone = snapshot(empty_folder("package") / "clone")
    told = run(clone / "tools" / "package", limit=600)
    return clone / told.splitlines()[-1]


@pytest.fixture(scope="module", name="root")
def unpacked_package(package):
    folder = empty_folder("unpacked")
    run("dpkg-deb", "--extract", package, folder)
    return folder


def test_lintian_finds_nothing(package):
    needs("lintian")
    assert run("lintian", "--fail-on", "error,warning", "--allow-root", package) == ""


def test_it_holds_what_is_installed_and_debians_documents(root):
    documents = {f"share/doc/tarnwick-client/{name}" for name in ("changelog.gz", "copyright")}
    files = {str(path.relative_to(root / "usr")) for path in root.rglob("*") if not path.is_dir()}
    compressed = {f"{name}.gz" if name.startswith("share/man/") else name for name in FILES}
    assert files == compressed | documents


def test_the_desktop_entry_is_valid(root):
    needs("desktop-file-validate")
    assert run("desktop-file-validate", root / "usr/share/applications" / f"{ID}.desktop") == ""


def test_the_metainfo_is_valid(root):
    needs("appstreamcli")
    run("appstreamcli", "validate", "--strict", "--no-net", root / "usr/share/metainfo" / f"{ID}.metainfo.xml")


def test_the_metainfos_pictures_are_in_the_tree():
    metainfo = xml.etree.ElementTree.parse(REPOSITORY / "packaging" / "linux" / f"{ID}.metainfo.xml")
    pictures = [image.text.partition("/desktop-client/")[2] for image in metainfo.iter("image")]
    assert pictures and all((REPOSITORY / picture).is_file() for picture in pictures)


def test_everything_bears_one_identifier(root):
    entry = (root / "usr/share/applications" / f"{ID}.desktop").read_text(encoding="utf-8")
    metainfo = (root / "usr/share/metainfo" / f"{ID}.metainfo.xml").read_text(encoding="utf-8")
    assert f"\nIcon={ID}\n" in entry
    assert f"<id>{ID}</id>" in metainfo and f">{ID}.desktop</launchable>" in metainfo


@pytest.fixture(name="window_class")
def stated_window_class(root):
    entry = (root / "usr/share/applications" / f"{ID}.desktop").read_text(encoding="utf-8")
    return re.search(r"^StartupWMClass=(.*)$", entry, re.MULTILINE)[1]


@pytest.fixture(scope="module", name="desktop")
def virtual_desktop():
    needs("Xvfb", "openbox", "xprop", "weston", "convert")
    with VirtualDesktop() as desktop:
        yield desktop


def started(root, desktop, **environment):
    """Starts the client by its link, from a folder without a logo."""
    log = desktop.path(f"{environment['QT_QPA_PLATFORM']}.log")
    program = str(root / "usr" / "bin" / "tarnwick-client")
    return ChildProcess([program], log, folder="/", environment=desktop.environment | environment)


def test_its_window_under_x11_has_the_class_of_the_desktop_entry_and_the_logo_as_icon(root, desktop, window_class):
    client = started(root, desktop, QT_QPA_PLATFORM="xcb")

    def asked(window, *words):
        return run("xprop", *window, "-len", 2**30, *words, env=desktop.environment)

    window = wait_until(lambda: re.search("0x[0-9a-f]+", asked(["-root"], "_NET_CLIENT_LIST")), "the window")[0]
    assert asked(["-id", window], "WM_CLASS") == f'WM_CLASS(STRING) = "tarnwick-client", "{window_class}"\n'
    icon = asked(["-id", window], "-notype", "-f", "_NET_WM_ICON", "32c", "=$0+", "_NET_WM_ICON")
    assert_is_logo([int(number) & 0xFFFFFFFF for number in re.findall(r"-?\d+", icon)])
    client.end()


def assert_is_logo(icon):
    """Translucent pixels may differ by the rounding error of premultiplied alpha."""
    wanted = subprocess.run(["convert", LOGO, "-depth", "8", "BGRA:-"], capture_output=True, check=True).stdout
    width, height, *pixels = icon
    assert (width, height, len(pixels)) == (256, 256, len(wanted) // 4)
    given = b"".join(pixel.to_bytes(4, "little") for pixel in pixels)
    alpha = wanted[3::4]
    assert given[3::4] == alpha
    for channel in range(3):
        pairs = zip(given[channel::4], wanted[channel::4], alpha)
        assert all(abs(one - other) * opacity <= 2 * 255 for one, other, opacity in pairs)


def test_its_window_under_wayland_has_the_identifier_of_the_desktop_entry(root, desktop, window_class):
    desktop.environment["WAYLAND_DISPLAY"] = "wayland-test"
    weston = ["weston", "--backend=headless-backend.so", "--socket=wayland-test", "--idle-time=0", "--no-config"]
    compositor = ChildProcess(weston, desktop.path("weston.log"), environment=desktop.environment)
    socket = os.path.join(desktop.environment["XDG_RUNTIME_DIR"], "wayland-test")
    wait_until(lambda: os.path.exists(socket), "the Wayland compositor")
    client = started(root, desktop, QT_QPA_PLATFORM="wayland", WAYLAND_DEBUG="1")
    told = wait_until(lambda: re.search(r'set_app_id\("(.*)"\)', client.text()), "the window's identifier")
    assert told[1] == window_class
    client.end()
    compositor.end()
