"""The bundle for macOS, as far as another system can judge it: built by CMake's rules for macOS with this system's
compiler and libraries."""

import os
import pathlib
import plistlib
import re
import struct
import unittest

from packaging_support import ICON, LOGO, REPOSITORY, WORK, empty_folder, main, needs, product, run, use_e2e_harness

use_e2e_harness()

from harness.child_process import ChildProcess  # noqa: E402 (the path comes first)
from harness.virtual_desktop import VirtualDesktop  # noqa: E402
from harness.waiting import wait_until  # noqa: E402

PNG_SIZES = {"ic11": 32, "ic12": 64, "ic07": 128, "ic13": 256, "ic08": 256, "ic14": 512, "ic09": 512}


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        needs("clang++")
        cls.folder = empty_folder("macos-bundle")
        cls.build = WORK / "macos-bundle-build"
        cls.deployed = cls.folder / "deployed.txt"
        run("cmake", "-S", REPOSITORY, "-B", cls.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
            f"--toolchain={REPOSITORY / 'tests' / 'packaging' / 'macos' / 'apple_rules.cmake'}",
            f"-DMACDEPLOYQT_EXECUTABLE={cls.recorder()}", "-DBUILD_TESTING=OFF", "-DTARNWICK_STAND_IN=OFF")
        run("cmake", "--build", cls.build, limit=300)
        run("cmake", "--install", cls.build, "--prefix", cls.folder / "Applications")
        cls.bundle = cls.folder / "Applications" / "Tarnwick.app"
        cls.contents = cls.bundle / "Contents"

    @classmethod
    def recorder(cls):
        """Stands in for Qt's deployment tool and writes down what it is told."""
        program = cls.folder / "macdeployqt"
        program.write_text(f'#!/bin/sh\nprintf "%s\\n" "$PWD" "$@" >"{cls.deployed}"\n', encoding="utf-8")
        program.chmod(0o755)
        return program

    def test_the_tree_is_a_bundle(self):
        files = {str(path.relative_to(self.bundle)) for path in self.bundle.rglob("*") if path.is_file()}
        self.assertEqual(files, {"Contents/Info.plist", "Contents/MacOS/Tarnwick", "Contents/Resources/Tarnwick.icns",
                                 "Contents/Resources/tarnwick-logo.png"})
        self.assertEqual([path.name for path in (self.folder / "Applications").iterdir()], ["Tarnwick.app"])
        self.assertEqual((self.contents / "Resources" / LOGO.name).read_bytes(), LOGO.read_bytes())

    def test_the_property_list_says_what_it_has_to(self):
        needs("plistutil")
        converted = self.folder / "Info.binary"
        run("plistutil", "-i", self.contents / "Info.plist", "-o", converted)
        said = plistlib.loads(converted.read_bytes())
        version = product()["TARNWICK_VERSION"]
        for key, value in {
                "CFBundleIdentifier": product()["TARNWICK_APP_ID"], "CFBundleName": "Tarnwick",
                "CFBundleExecutable": "Tarnwick", "CFBundleIconFile": "Tarnwick.icns", "CFBundlePackageType": "APPL",
                "CFBundleShortVersionString": version, "CFBundleVersion": version, "NSHighResolutionCapable": True,
                "NSPrincipalClass": "NSApplication", "LSMinimumSystemVersion": "11.0"}.items():
            self.assertEqual(said[key], value, key)
        self.assertNotIn("", said.values())

    def test_the_icon_file_opens_and_shows_the_logo(self):
        needs("icns2png", "compare")
        run("icns2png", "-x", "-o", self.folder, self.contents / "Resources" / "Tarnwick.icns")
        for size in (16, 32, 256, 512):
            wanted = self.folder / f"wanted-{size}.png"
            run(self.build / "client" / "icon_maker", ICON, "png", size, wanted)
            given = self.folder / f"Tarnwick_{size}x{size}x32.png"
            # Colours do not count where nothing is seen of them.
            run("compare", "-metric", "AE", "-background", "black", "-alpha", "background", given, wanted, "null:")

    def test_every_size_of_the_icon_file_is_what_its_type_says(self):
        data = (self.contents / "Resources" / "Tarnwick.icns").read_bytes()
        self.assertEqual(struct.unpack(">4sI", data[:8]), (b"icns", len(data)))
        found, place = {}, 8
        while place < len(data):
            kind, length = struct.unpack(">4sI", data[place:place + 8])
            found[kind.decode()] = data[place + 8:place + length]
            place += length
        self.assertEqual(set(found), {"is32", "s8mk", "il32", "l8mk", *PNG_SIZES})
        for kind, size in PNG_SIZES.items():
            self.assertEqual(found[kind][:8], b"\x89PNG\r\n\x1a\n", kind)
            self.assertEqual(struct.unpack(">II", found[kind][16:24]), (size, size), kind)

    def test_installing_has_qt_deployed_into_the_bundle(self):
        folder, *words = self.deployed.read_text(encoding="utf-8").splitlines()
        self.assertEqual((pathlib.Path(folder) / words[0]).resolve(), self.bundle.resolve())

    def test_the_program_in_the_bundle_finds_the_logo(self):
        needs("xprop")
        with VirtualDesktop() as desktop:
            ChildProcess([str(self.contents / "MacOS" / "Tarnwick")], desktop.path("client.log"), folder="/",
                         environment=dict(desktop.environment, QT_QPA_PLATFORM="xcb"))

            def window():
                printed = run("xprop", "-root", "_NET_CLIENT_LIST", env=desktop.environment)
                return re.findall(r"0x[0-9a-f]+", printed)
            icon = run("xprop", "-id", wait_until(window, "the client's window")[0], "-notype", "-f", "_NET_WM_ICON",
                       "32c", "=$0,$1\\n", "_NET_WM_ICON", env=desktop.environment)
            self.assertEqual(icon, "_NET_WM_ICON=256,256\n")

    def test_the_client_built_by_itself_is_a_bundle_with_the_logo_too(self):
        build = self.folder / "client" / "build"
        run("cmake", "-S", REPOSITORY / "client", "-B", build, "-G", "Ninja",
            f"--toolchain={REPOSITORY / 'tests' / 'packaging' / 'macos' / 'apple_rules.cmake'}")
        target = os.path.join("Tarnwick.app", "Contents", "Resources", LOGO.name)
        run("cmake", "--build", build, "--target", target)
        self.assertEqual((build / target).read_bytes(), LOGO.read_bytes())


if __name__ == "__main__":
    main()
