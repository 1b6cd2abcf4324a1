"""Shared by the packaging tests. Run them with ctest, or `python3 -m pytest tests/packaging/icons_test.py`."""

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
# A folder for the tests' files, and a build folder with the built client.
WORK = pathlib.Path(os.environ.get("TARNWICK_PACKAGING_WORK", REPOSITORY / "build" / "packaging-tests"))
BUILD = pathlib.Path(os.environ.get("TARNWICK_BUILD", REPOSITORY / "build" / "dev"))
LOGO = REPOSITORY / "tarnwick" / "static" / "tarnwick-logo.png"
ID = "com.example.tarnwick.client"

_CTEST_SKIPPED = 77

sys.path[:0] = [str(REPOSITORY / "tests"), str(REPOSITORY / "tests" / "e2e")]


def run(*command, limit=120, **options):
    """Returns the command's output. If the command fails, the test fails and shows the output."""
    done = subprocess.run(
        [str(word) for word in command],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=limit,
        check=False,
        **options,
    )
    assert done.returncode == 0, f"{command[0]} ended with {done.returncode}:\n{done.stdout}"
    return done.stdout


def needs(*programs):
    """Skips the test if one of the programs is not installed."""
    for program in programs:
        if shutil.which(program) is None:
            pytest.skip(f"{program} is not installed", allow_module_level=True)


def empty_folder(name):
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def pytest_terminal_summary(terminalreporter):
    """Prints one line for each skipped test."""
    for report in terminalreporter.stats.get("skipped", []):
        print(f"SKIPPED: {report.nodeid.rpartition('/')[2]}: {report.longrepr[2].removeprefix('Skipped: ')}")


def pytest_sessionfinish(session):
    """Reports the whole file as skipped if no test has run."""
    reporter = session.config.pluginmanager.get_plugin("terminalreporter")
    if "skipped" in reporter.stats and not {"passed", "failed", "error"} & reporter.stats.keys():
        session.exitstatus = _CTEST_SKIPPED
