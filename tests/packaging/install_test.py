"""Where `cmake --install` puts things, with the usual ways of saying where."""

import os
import pathlib
import subprocess
import unittest

from packaging_support import (LOGO, PACKAGE_BUILD, REPOSITORY, empty_folder, main, product, run,
                               take_over_what_is_built)


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir())


def staged(folder):
    return {**os.environ, "DESTDIR": str(folder)}


class Install(unittest.TestCase):
    def check_program(self, root, link="bin/tarnwick-client", private="libexec/tarnwick-client"):
        """The link leads to the executable, which has the logo beside it."""
        link = pathlib.Path(root, link)
        executable = pathlib.Path(root, private, "Tarnwick")
        self.assertTrue(link.is_symlink())
        self.assertFalse(os.path.isabs(os.readlink(link)))
        self.assertEqual(link.resolve(strict=True), executable.resolve(strict=True))
        self.assertTrue(os.access(executable, os.X_OK))
        self.assertEqual((executable.parent / LOGO.name).read_bytes(), LOGO.read_bytes())

    def configured(self, folder, *settings):
        build = folder / "build"
        run("cmake", "-S", REPOSITORY, "--preset", "package", "-B", build, *settings)
        take_over_what_is_built(build)
        return build

    def test_everything_is_below_the_prefix(self):
        prefix = empty_folder("install") / "prefix"
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", prefix)
        self.check_program(prefix)
        name = product()["TARNWICK_APP_ID"]
        sizes = ("128x128", "16x16", "22x22", "24x24", "256x256", "32x32", "48x48", "512x512", "64x64")
        self.assertEqual(files_below(prefix), sorted([
            "bin/tarnwick-client", "libexec/tarnwick-client/Tarnwick", "libexec/tarnwick-client/tarnwick-logo.png",
            f"share/applications/{name}.desktop", f"share/metainfo/{name}.metainfo.xml",
            "share/man/man1/tarnwick-client.1", "share/doc/tarnwick-client/changelog.Debian",
            "share/doc/tarnwick-client/copyright", f"share/icons/hicolor/scalable/apps/{name}.svg",
            *(f"share/icons/hicolor/{size}/apps/{name}.png" for size in sizes)]))

    def test_everything_that_is_installed_is_listed(self):
        folder = empty_folder("install-listed")
        build = self.configured(folder)
        run("cmake", "--install", build, "--prefix", folder / "prefix")
        listed = (build / "install_manifest.txt").read_text(encoding="utf-8").splitlines()
        self.assertEqual(sorted(listed), [f"{folder}/prefix/{name}" for name in files_below(folder / "prefix")])

    def test_a_stage_goes_before_the_prefix(self):
        stage = empty_folder("install-stage")
        run("cmake", "--install", PACKAGE_BUILD, env=staged(stage))
        self.check_program(stage / "usr")
        self.assertEqual([path.name for path in stage.iterdir()], ["usr"])

    def test_a_stage_goes_before_a_prefix_that_is_named_when_installing(self):
        stage = empty_folder("install-stage-and-prefix")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", "/opt/tarnwick", env=staged(stage))
        self.check_program(stage / "opt" / "tarnwick")
        self.assertEqual([path.name for path in stage.iterdir()], ["opt"])

    def test_a_prefix_may_be_named_from_where_one_stands(self):
        folder = empty_folder("install-relative")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", "dist/here", cwd=folder)
        self.check_program(folder / "dist" / "here")

    def test_installing_again_replaces_what_is_there(self):
        folder = empty_folder("install-again")
        (folder / "bin").mkdir()
        (folder / "bin" / "tarnwick-client").symlink_to("nowhere")
        for _ in range(2):
            run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder)
            self.check_program(folder)

    def test_a_folder_of_commands_may_really_be_elsewhere(self):
        folder = empty_folder("install-through-a-link")
        (folder / "far" / "away" / "commands").mkdir(parents=True)
        (folder / "prefix").mkdir()
        (folder / "prefix" / "bin").symlink_to(folder / "far" / "away" / "commands")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder / "prefix")
        self.check_program(folder / "prefix")

    def test_a_stripped_program_is_smaller(self):
        folder = empty_folder("install-stripped")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder / "whole")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder / "stripped", "--strip")
        program = pathlib.Path("libexec", "tarnwick-client", "Tarnwick")
        self.assertLess((folder / "stripped" / program).stat().st_size, (folder / "whole" / program).stat().st_size)

    def test_other_folders_are_taken_as_they_are_named(self):
        folder = empty_folder("install-folders")
        build = self.configured(
            folder, "-DCMAKE_INSTALL_BINDIR=commands/all", "-DCMAKE_INSTALL_LIBEXECDIR=private",
            "-DCMAKE_INSTALL_DATADIR=data", "-DCMAKE_INSTALL_MANDIR=manual", "-DCMAKE_INSTALL_DOCDIR=documents")
        run("cmake", "--install", build, "--prefix", folder / "prefix")
        self.check_program(folder / "prefix", "commands/all/tarnwick-client", "private/tarnwick-client")
        below = {name.split("/")[0] for name in files_below(folder / "prefix")}
        self.assertEqual(below, {"commands", "private", "data", "manual", "documents"})

    def test_folders_outside_of_the_prefix_are_taken_too(self):
        folder = empty_folder("install-outside")
        elsewhere = folder / "else" / "where"
        build = self.configured(
            folder, f"-DCMAKE_INSTALL_PREFIX={folder}/prefix", f"-DCMAKE_INSTALL_LIBEXECDIR={elsewhere}/private")
        run("cmake", "--install", build, "--strip")
        self.check_program(folder, "prefix/bin/tarnwick-client", "else/where/private/tarnwick-client")
        run("cmake", "--install", build, "--prefix", folder / "a" / "deeper" / "prefix")
        self.check_program(folder, "a/deeper/prefix/bin/tarnwick-client", "else/where/private/tarnwick-client")
        stage = folder / "stage"
        run("cmake", "--install", build, "--strip", env=staged(stage))
        self.check_program(f"{stage}{folder}", "prefix/bin/tarnwick-client", "else/where/private/tarnwick-client")

    def test_all_folders_may_be_outside_of_the_prefix(self):
        folder = empty_folder("install-nothing-inside")
        kinds = ("BINDIR", "LIBEXECDIR", "DATADIR", "MANDIR", "DOCDIR")
        build = self.configured(folder, *(f"-DCMAKE_INSTALL_{kind}={folder}/placed/{kind}" for kind in kinds))
        run("cmake", "--install", build, "--prefix", folder / "prefix")
        self.check_program(folder / "placed", "BINDIR/tarnwick-client", "LIBEXECDIR/tarnwick-client")
        self.assertEqual({name.split("/")[0] for name in files_below(folder / "placed")}, set(kinds))
        self.assertEqual(files_below(folder / "prefix"), [])

    def test_a_package_is_never_made_of_folders_outside_of_it(self):
        folder = empty_folder("install-no-package")
        build = self.configured(folder, f"-DCMAKE_INSTALL_LIBEXECDIR={folder}/outside")
        done = subprocess.run(["cpack"], cwd=build, capture_output=True, text=True, timeout=60, check=False)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("ABSOLUTE path INSTALL DESTINATION forbidden", done.stderr)
        self.assertFalse((folder / "outside").exists())


if __name__ == "__main__":
    main()
