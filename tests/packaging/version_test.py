"""One place says the version, and a version has its entry in the changelog."""

import re
import subprocess
import unittest

from packaging_support import CLONE, REPOSITORY, copy_sources, empty_folder, main, product, run, take_over_what_is_built

# Where a version might be repeated by mistake. Numbers of other things may look alike elsewhere.
SAYS_NO_VERSION = ("README.md", "CONTRIBUTING.md", "CMakeLists.txt", "CMakePresets.json", "client", "cmake", "docs",
                   "packaging", "tools", "tarnwick")

class Version(unittest.TestCase):
    def configured(self, name, version, changes):
        """A copy of the sources with another version and other changes, configured."""
        folder = empty_folder(name)
        copy_sources(folder)
        place = folder / "cmake" / "Product.cmake"
        said = place.read_text(encoding="utf-8")
        place.write_text(said.replace(f"TARNWICK_VERSION {product()['TARNWICK_VERSION']}",
                                      f"TARNWICK_VERSION {version}"), encoding="utf-8")
        (folder / "CHANGELOG.md").write_text(changes, encoding="utf-8")
        run("cmake", "--preset", "package", cwd=folder)
        return folder / "build" / "package"

    def test_the_changelog_starts_with_this_version(self):
        changes = (REPOSITORY / "CHANGELOG.md").read_text(encoding="utf-8")
        newest = re.search(r"^## (\S+) - \d{4}-\d{2}-\d{2}$", changes, re.MULTILINE)
        self.assertEqual(newest[1], product()["TARNWICK_VERSION"])

    def test_no_other_place_says_it(self):
        version = re.escape(product()["TARNWICK_VERSION"])
        said = re.compile(rf"(?<![\w.]){version}(?![\w.]*\w)".encode())
        places = [path for name in SAYS_NO_VERSION for path in sorted((CLONE / name).rglob("*") if
                  (CLONE / name).is_dir() else [CLONE / name]) if path.is_file()]
        self.assertEqual([str(path.relative_to(CLONE)) for path in places if said.search(path.read_bytes())],
                         ["cmake/Product.cmake"])

    def test_a_change_in_one_place_reaches_everything(self):
        build = self.configured("version-everywhere", "9.8.7", "# Changelog\n\n## Unreleased\n\n- Not yet.\n\n"
                                "## 9.8.7 - 2031-02-03\n\n- Faster & <better>; [see](docs/x.md),\n  on two lines.\n\n"
                                "## 9.8.6 - 2030-01-02\n\n- Older.\n")
        made = build / "packaging" / "linux"
        for name, wanted in (
                ("tarnwick-client.1", '"2031-02-03" "9.8.7"'),
                (f"{product()['TARNWICK_APP_ID']}.metainfo.xml", '<release version="9.8.7" date="2031-02-03">'),
                (f"{product()['TARNWICK_APP_ID']}.metainfo.xml", "<li>Faster &amp; &lt;better>, (see)(docs/x.md), on "),
                ("changelog.Debian", "tarnwick-client (9.8.7-1) stable; urgency=medium\n\n  * Faster & <better>"),
                ("changelog.Debian", "  Mon, 03 Feb 2031 00:00:00 +0000\n\ntarnwick-client (9.8.6-1) stable")):
            with self.subTest(name=name):
                self.assertIn(wanted, (made / name).read_text(encoding="utf-8"))
        self.assertNotIn("Not yet", (made / "changelog.Debian").read_text(encoding="utf-8"))
        self.assertIn('set(CPACK_PACKAGE_VERSION "9.8.7")', (build / "CPackConfig.cmake").read_text(encoding="utf-8"))

    def test_a_version_without_its_entry_makes_no_package(self):
        build = self.configured("version-unexplained", "9.8.7", "# Changelog\n\n## 9.8.6 - 2030-01-02\n\n- Older.\n")
        take_over_what_is_built(build)
        done = subprocess.run(["cpack"], cwd=build, capture_output=True, text=True, timeout=60, check=False)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("This is 9.8.7, but the newest release in CHANGELOG.md is 9.8.6",
                      " ".join(done.stderr.split()))


if __name__ == "__main__":
    main()
