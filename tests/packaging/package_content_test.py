"""The package as Debian's and the desktops' own checkers see it."""

import gzip
import unittest

from packaging_support import main, needs, package, product, run, unpacked_package

# The first package of a program closes the report that asked Debian for it. Nobody asked.
TOLERATED_TAGS = "initial-upload-closes-no-bugs"


class PackageContent(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = unpacked_package("package-content")
        cls.share = cls.root / "usr" / "share"
        cls.id = product()["TARNWICK_APP_ID"]

    def field(self, name):
        return run("dpkg-deb", "--field", package(), name).strip()

    def test_lintian_finds_nothing(self):
        needs("lintian")
        printed = run("lintian", "--fail-on", "warning", "--suppress-tags", TOLERATED_TAGS, "--allow-root", package())
        self.assertEqual(printed, "")

    def test_the_desktop_entry_is_valid(self):
        needs("desktop-file-validate")
        self.assertEqual(run("desktop-file-validate", self.share / "applications" / f"{self.id}.desktop"), "")

    def test_the_metainfo_is_valid(self):
        needs("appstreamcli")
        run("appstreamcli", "validate", "--strict", "--no-net", self.share / "metainfo" / f"{self.id}.metainfo.xml")

    def test_the_manual_page_names_the_state_file(self):
        with gzip.open(self.share / "man" / "man1" / "tarnwick-client.1.gz", "rt", encoding="utf-8") as page:
            self.assertIn("Library/Application Support/Tarnwick/pc\\-client\\-state.json", page.read())

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
        metainfo = (self.share / "metainfo" / f"{self.id}.metainfo.xml").read_text(encoding="utf-8")
        self.assertIn(f"<id>{self.id}</id>", metainfo)
        self.assertIn(f">{self.id}.desktop</launchable>", metainfo)

    def test_dependencies_are_computed_and_extras_recommended(self):
        depends = {each.split()[0] for each in self.field("Depends").split(", ")}
        self.assertLessEqual({"libc6", "libqt6core6", "libqt6gui6", "libqt6network6", "libqt6widgets6"}, depends)
        self.assertEqual(self.field("Recommends"),
                         "ca-certificates, fonts-noto-color-emoji, qt6-wayland, xdg-utils")
        self.assertEqual(self.field("Section"), "net")

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
