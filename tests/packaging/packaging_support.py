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
# The package comes from a clone of its own, so that nothing that is set in this folder's build shows in it.
CLONE = WORK / "clone"
PACKAGE_BUILD = CLONE / "build" / "package"
LOGO = REPOSITORY / "tarnwick" / "static" / "tarnwick-logo.png"
ICON = REPOSITORY / "packaging" / "icons" / "tarnwick-icon.png"

# The exit code that ctest reads as "skipped".
SKIPPED = 77


def run(*command, limit=120, **options):
    """The command's standard output. A command that fails is a failed test, which shows what was printed."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=limit,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command[0]} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def complaints(*command, limit=120):
    """Everything that a checker prints, on both of its outputs, and its exit code if that is not 0."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=limit, check=False)
    return done.stdout + (f"It ended with {done.returncode}.\n" if done.returncode != 0 else "")


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


def is_repository(folder=REPOSITORY):
    return (folder / ".git").exists() and shutil.which("git") is not None


def git(*words, folder=REPOSITORY):
    """Git without this person's settings, in a folder that may belong to somebody else."""
    settings = WORK / "git-settings"
    settings.parent.mkdir(parents=True, exist_ok=True)
    if not settings.exists():
        settings.write_text("[safe]\n\tdirectory = *\n", encoding="utf-8")
    return run("git", "-C", folder, *words, env={**os.environ, "GIT_CONFIG_GLOBAL": str(settings)})


def _source_names(folder):
    if is_repository(folder):
        return git("ls-files", "-z", "--cached", "--others", "--exclude-standard", folder=folder).split("\0")
    names = []
    for place, folders, files in os.walk(folder):
        folders[:] = [name for name in folders if name not in ("build", "__pycache__", ".cache", ".git")]
        names += [os.path.relpath(os.path.join(place, name), folder) for name in files]
    return names


def copy_sources(folder, source=REPOSITORY):
    """Copies the files that a commit of everything would hold, and nothing that was built."""
    for name in _source_names(source):
        if name and (source / name).is_file():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source / name, folder / name)


def fresh_clone(folder, source=REPOSITORY):
    """A clone with the changes that are not committed yet. Of a folder that is no repository it is a copy."""
    shutil.rmtree(folder, ignore_errors=True)
    if is_repository(source):
        git("clone", "--quiet", source, folder)
        for name in git("ls-files", "-z", "--deleted", folder=source).split("\0"):
            if name:
                (folder / name).unlink(missing_ok=True)
    copy_sources(folder, source)
    return folder


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
    result = unittest.main(verbosity=2, exit=False).result
    skipped_tests = set()
    for test, reason in result.skipped:
        which = ""
        # A test, or a part of one. Otherwise it is a whole class.
        if isinstance(test, unittest.TestCase):
            which = f", {test.id().rsplit('.', 1)[-1]}"
            skipped_tests.add(test.id().split(" ")[0])
        print(f"SKIPPED: {pathlib.Path(sys.argv[0]).stem}{which}: {reason}", flush=True)
    if not result.wasSuccessful():
        sys.exit(1)
    sys.exit(SKIPPED if result.skipped and result.testsRun == len(skipped_tests) else 0)
