"""The package as Debian's and the desktops' own checkers see it."""

import gzip
import re
import unittest
import urllib.parse
import xml.etree.ElementTree

from packaging_support import CLONE, complaints, main, needs, package, product, run, unpacked_package

# The first package of a program closes the report that asked Debian for it. Nobody asked.
TOLERATED_TAGS = "initial-upload-closes-no-bugs"


class PackageContent(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = unpacked_package("package-content")
        cls.share = cls.root / "usr" / "share"
        cls.id = product()["TARNWICK_APP_ID"]
        cls.metainfo = cls.share / "metainfo" / f"{cls.id}.metainfo.xml"

    def field(self, name):
        return run("dpkg-deb", "--field", package(), name).strip()

    def test_lintian_finds_nothing(self):
        needs("lintian")
        self.assertEqual(complaints("lintian", "--fail-on", "warning", "--suppress-tags", TOLERATED_TAGS,
                                    "--allow-root", package()), "")

    def test_the_desktop_entry_is_valid(self):
        needs("desktop-file-validate")
        self.assertEqual(complaints("desktop-file-validate", self.share / "applications" / f"{self.id}.desktop"), "")

    def test_the_metainfo_is_valid(self):
        needs("appstreamcli")
        run("appstreamcli", "validate", "--strict", "--no-net", self.metainfo)

    def test_every_picture_of_the_metainfo_is_in_the_tree_at_the_path_of_its_address(self):
        pictures = xml.etree.ElementTree.parse(self.metainfo).findall("screenshots/screenshot/image")
        self.assertEqual(len(pictures), 3)
        for picture in pictures:
            with self.subTest(address=picture.text):
                path = urllib.parse.urlsplit(picture.text).path
                self.assertTrue(path.startswith("/desktop-client/docs/"))
                self.assertEqual((CLONE / path.removeprefix("/desktop-client/")).read_bytes()[:8], b"\x89PNG\r\n\x1a\n")

    def test_the_manual_page_says_what_there_is_to_know(self):
        with gzip.open(self.share / "man" / "man1" / "tarnwick-client.1.gz", "rt", encoding="utf-8") as file:
            page = file.read().replace("\\-", "-")
        sections = dict(re.findall(r"^\.SH (.+)\n((?:(?!\.SH ).*\n)*)", page, re.MULTILINE))
        for section, wanted in (
                ("NAME", "tarnwick-client - desktop client for the Tarnwick hosting service"),
                ("OPTIONS", "The program has no options."),
                ("ENVIRONMENT", ".B HOME\nThe folder below which the state file is kept."),
                ("FILES", ".I $HOME/Library/Application Support/Tarnwick/pc-client-state.json\n"),
                ("FILES", "Deleting it while the client is closed unlinks the desktop"),
                ("DESCRIPTION", "To unlink, press \\(lqUnlink\\(rq: the token is forgotten on this computer.")):
            with self.subTest(section=section):
                self.assertIn(wanted, sections[section])

    def test_every_icon_has_the_size_of_its_folder(self):
        needs("identify")
        icons = self.share / "icons" / "hicolor"
        for size in (16, 22, 24, 32, 48, 64, 128, 256, 512):
            icon = icons / f"{size}x{size}" / "apps" / f"{self.id}.png"
            self.assertEqual(run("identify", "-format", "%m %wx%h", icon), f"PNG {size}x{size}")
        self.assertTrue((icons / "scalable" / "apps" / f"{self.id}.svg").exists())

    def test_everything_bears_the_one_identifier(self):
        entry = (self.share / "applications" / f"{self.id}.desktop").read_text(encoding="utf-8")
        self.assertIn(f"\nIcon={self.id}\n", entry)
        metainfo = self.metainfo.read_text(encoding="utf-8")
        self.assertIn(f"<id>{self.id}</id>", metainfo)
        self.assertIn(f">{self.id}.desktop</launchable>", metainfo)

    def test_dependencies_are_computed_and_extras_recommended(self):
        depends = {each.split()[0] for each in self.field("Depends").split(", ")}
        self.assertLessEqual({"libc6", "libqt6core6", "libqt6gui6", "libqt6network6", "libqt6widgets6"}, depends)
        self.assertEqual(self.field("Recommends"),
                         "ca-certificates, fonts-noto-color-emoji, qt6-wayland, xdg-utils")

    def test_it_is_described(self):
        self.assertEqual(self.field("Section"), "net")
        summary, *lines = self.field("Description").splitlines()
        self.assertEqual(summary, "desktop client for the Tarnwick hosting service")
        self.assertIn("pairs the desktop with a Tarnwick account by a one-time code", " ".join(lines))
        self.assertRegex(self.field("Maintainer"), r"^[^<>]+ <[^<>@]+@[^<>@]+>$")

    def test_its_size_is_the_same_on_every_file_system(self):
        plain = [path for path in self.root.rglob("*") if path.is_file() and not path.is_symlink()]
        others = len(list(self.root.rglob("*"))) - len(plain)
        size = sum(-(-path.stat().st_size // 1024) for path in plain) + others
        self.assertEqual(self.field("Installed-Size"), str(size))

    def test_the_license_is_in_it(self):
        copyright_text = (self.share / "doc" / "tarnwick-client" / "copyright").read_text(encoding="utf-8")
        self.assertIn("Permission is hereby granted, free of charge", copyright_text)

    def test_the_changelog_starts_with_this_version(self):
        with gzip.open(self.share / "doc" / "tarnwick-client" / "changelog.Debian.gz", "rt", encoding="utf-8") as log:
            self.assertEqual(log.readline(), f"tarnwick-client ({self.field('Version')}) stable; urgency=medium\n")

    def test_the_local_service_is_not_in_it(self):
        self.assertEqual([str(path) for path in self.root.rglob("*service*")], [])


if __name__ == "__main__":
    main()
