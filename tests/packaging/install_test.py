"""Where `cmake --install` puts things, with the usual ways of saying where."""

import os
import pathlib
import unittest

from packaging_support import (LOGO, PACKAGE_BUILD, REPOSITORY, empty_folder, main, product, run,
                               take_over_what_is_built)


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir())


class Install(unittest.TestCase):
    def check_program(self, root, link="bin/tarnwick-client", private="libexec/tarnwick-client"):
        """The link leads to the executable, which has the logo beside it."""
        link = pathlib.Path(root, link)
        executable = pathlib.Path(root, private, "Tarnwick")
        self.assertTrue(link.is_symlink())
        self.assertFalse(os.path.isabs(os.readlink(link)))
        self.assertEqual(link.resolve(), executable.resolve())
        self.assertTrue(os.access(executable, os.X_OK))
        self.assertEqual((executable.parent / LOGO.name).read_bytes(), LOGO.read_bytes())

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

    def test_a_stage_goes_before_the_prefix(self):
        stage = empty_folder("install-stage")
        run("cmake", "--install", PACKAGE_BUILD, env={**os.environ, "DESTDIR": str(stage)})
        self.check_program(stage / "usr")
        self.assertEqual([path.name for path in stage.iterdir()], ["usr"])

    def test_a_stripped_program_is_smaller(self):
        folder = empty_folder("install-stripped")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder / "whole")
        run("cmake", "--install", PACKAGE_BUILD, "--prefix", folder / "stripped", "--strip")
        program = pathlib.Path("libexec", "tarnwick-client", "Tarnwick")
        self.assertLess((folder / "stripped" / program).stat().st_size, (folder / "whole" / program).stat().st_size)

    def test_other_folders_are_taken_as_they_are_named(self):
        folder = empty_folder("install-folders")
        build = folder / "build"
        run("cmake", "-S", REPOSITORY, "--preset", "package", "-B", build,
            "-DCMAKE_INSTALL_BINDIR=commands/all", "-DCMAKE_INSTALL_LIBEXECDIR=private",
            "-DCMAKE_INSTALL_DATADIR=data", "-DCMAKE_INSTALL_MANDIR=manual", "-DCMAKE_INSTALL_DOCDIR=documents")
        take_over_what_is_built(build)
        run("cmake", "--install", build, "--prefix", folder / "prefix")
        self.check_program(folder / "prefix", "commands/all/tarnwick-client", "private/tarnwick-client")
        below = {name.split("/")[0] for name in files_below(folder / "prefix")}
        self.assertEqual(below, {"commands", "private", "data", "manual", "documents"})

    def test_folders_outside_of_the_prefix_are_taken_too(self):
        folder = empty_folder("install-outside")
        build = folder / "build"
        run("cmake", "-S", REPOSITORY, "--preset", "package", "-B", build, f"-DCMAKE_INSTALL_PREFIX={folder}/prefix",
            f"-DCMAKE_INSTALL_LIBEXECDIR={folder}/elsewhere")
        take_over_what_is_built(build)
        run("cmake", "--install", build, "--strip")
        self.check_program(folder, "prefix/bin/tarnwick-client", "elsewhere/tarnwick-client")


if __name__ == "__main__":
    main()
