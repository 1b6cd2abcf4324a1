"""Where a machine forbids what the clean machine needs, its test is skipped with one line that says why. Here it is
started with one of these rights taken away."""

import os
import pathlib
import shutil
import subprocess
import sys
import unittest

from packaging_support import SKIPPED, WORK, empty_folder, main, needs

TEST = pathlib.Path(__file__).with_name("clean_machine_test.py")
ORDINARY = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]

REFUSING_MOUNT = """#!/bin/sh
for word; do [ "$word" != '{kind}' ] || {{ echo Not today >&2; exit 32; }}; done
exec {mount} "$@"
"""


def without(right):
    return ["setpriv", f"--bounding-set=-{right}", f"--inh-caps=-{right}"]


def seen(*prefix):
    """How the test ends when it is started by these words: its exit code, and its lines about skipping."""
    done = subprocess.run([*prefix, sys.executable, "-B", TEST], capture_output=True, text=True, timeout=120,
                          check=False, env={**os.environ, "TARNWICK_PACKAGING_WORK": str(WORK / "forbidden")})
    return done.returncode, [line for line in done.stdout.splitlines() if line.startswith("SKIPPED:")]


class ForAnOrdinaryUser(unittest.TestCase):
    def test_the_clean_machine_is_skipped(self):
        needs("setpriv")
        prefix = ORDINARY if os.geteuid() == 0 else []
        if subprocess.run([*prefix, "test", "-r", TEST], check=False).returncode != 0:
            self.skipTest("other users cannot read this folder")
        self.assertEqual(seen(*prefix), (
            SKIPPED, ["SKIPPED: clean_machine_test: a clean Debian 12 can only be made by root"]))


class ForRootWithoutARight(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        needs("debootstrap", "setpriv", "unshare", "mount")
        if os.geteuid() != 0:
            raise unittest.SkipTest("only root has rights that can be taken away")

    def check(self, reason, *prefix):
        tried = subprocess.run([*prefix, "true"], capture_output=True, text=True, timeout=60, check=False)
        if tried.returncode != 0:
            self.skipTest(f"this machine does not even allow that: {tried.stderr.strip()}")
        code, lines = seen(*prefix)
        self.assertEqual((code, len(lines)), (SKIPPED, 1))
        self.assertRegex(lines[0], f"^SKIPPED: clean_machine_test: {reason}")

    def test_for_who_is_root_in_a_world_of_their_own_only(self):
        self.check("this machine does not allow", "unshare", "--user", "--map-root-user")

    def test_without_mounts(self):
        self.check("this machine does not allow mounts", *without("sys_admin"))

    def test_without_some_kind_of_mount(self):
        for kind, reason in (("proc", "mounts of /proc"), ("--bind", "folders to be mounted elsewhere")):
            with self.subTest(kind=kind):
                folder = empty_folder("refusing-mount")
                (folder / "mount").write_text(REFUSING_MOUNT.format(kind=kind, mount=shutil.which("mount")),
                                              encoding="utf-8")
                (folder / "mount").chmod(0o755)
                self.check(f"this machine does not allow ({reason}: Not today|device|mounts$)",
                           "env", f"PATH={folder}:{os.environ['PATH']}")

    def test_without_device_files(self):
        self.check("this machine does not allow", *without("mknod"))

    def test_without_another_root_folder(self):
        self.check("this machine does not allow", *without("sys_chroot"))

    def test_without_other_users(self):
        self.check("this machine does not allow", *without("setuid"))


if __name__ == "__main__":
    main()
