"""What the packaging tests share: where things are, how a command is run, and how a test says that it was skipped."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
WORK = pathlib.Path(os.environ.get("TARNWICK_PACKAGING_WORK", REPOSITORY / "build" / "packaging-tests"))
PACKAGE_BUILD = REPOSITORY / "build" / "package"
LOGO = REPOSITORY / "tarnwick" / "static" / "tarnwick-logo.png"

# The exit code that ctest reads as "skipped".
SKIPPED = 77


def run(*command, limit=120, **options):
    """The command's standard output. A command that fails is a failed test, which shows what was printed."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=limit,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command[0]} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def needs(*programs):
    """Skips the test when one of the programs is not installed."""
    for program in programs:
        if shutil.which(program) is None:
            raise unittest.SkipTest(f"{program} is not installed")


def empty_folder(name):
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def copy_sources(folder):
    """Copies the files that a commit of everything would hold, and nothing that was built."""
    listed = run("git", "-C", REPOSITORY, "ls-files", "-z", "--cached", "--others", "--exclude-standard")
    for name in listed.split("\0"):
        if name and (REPOSITORY / name).is_file():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(REPOSITORY / name, folder / name)


def take_over_what_is_built(build):
    """Puts what was built for the package into another, configured build folder, so that it can be installed there."""
    icons = PACKAGE_BUILD / "packaging" / "linux" / "icons"
    shutil.copytree(icons, build / icons.relative_to(PACKAGE_BUILD), dirs_exist_ok=True)
    shutil.copy2(PACKAGE_BUILD / "client" / "TarnwickClient", build / "client")


def product():
    """The names and the version that cmake/Product.cmake sets."""
    text = (REPOSITORY / "cmake" / "Product.cmake").read_text(encoding="utf-8")
    return dict(re.findall(r"^set\((TARNWICK_\w+) (\S+)\)", text, re.MULTILINE))


def package(build=PACKAGE_BUILD):
    """The one Debian package in a build folder."""
    packages = list(build.glob("*.deb"))
    assert len(packages) == 1, f"One package was expected in {build}, there are {len(packages)}"
    return packages[0]


def unpacked_package(name):
    folder = empty_folder(name)
    run("dpkg-deb", "--extract", package(), folder)
    return folder


def use_e2e_harness():
    """Makes the end-to-end tests' harness importable."""
    sys.path.insert(0, str(REPOSITORY / "tests" / "e2e"))


def main():
    """Runs the calling file's tests. Each one that was skipped gets a line that says why."""
    program = unittest.main(verbosity=2, exit=False)
    skipped = program.result.skipped
    for test, reason in skipped:
        print(f"SKIPPED: {test}: {reason}", flush=True)
    if not program.result.wasSuccessful():
        sys.exit(1)
    sys.exit(SKIPPED if skipped and len(skipped) >= program.result.testsRun else 0)
