"""Scenarios as an ordinary user runs them on a machine without a network, from a tree that is not theirs."""

import json
import os
import pwd
import shutil
import subprocess
import sys
import tempfile
import unittest

from harness import cut_off
from harness.child_process import ChildProcess
from harness.client_process import REPOSITORY
from harness.waiting import WaitedInVain

# The exit code that ctest reads as "skipped".
SKIPPED = 77

# In seconds.
LIMIT = 80

if os.geteuid() == 0:
    # An account that the machine knows: a message bus serves nobody else.
    NOBODY = pwd.getpwnam("nobody")
    USER, GROUP = NOBODY.pw_uid, NOBODY.pw_gid
    OWN_NETWORK = ["unshare", "--net"]
else:
    USER, GROUP = os.geteuid(), os.getegid()
    OWN_NETWORK = ["unshare", "--user", "--map-current-user", "--keep-caps", "--net"]


class OrdinaryUser(unittest.TestCase):
    def setUp(self):
        """Copies what the scenarios need to where everybody may read it."""
        folder = tempfile.TemporaryDirectory(prefix="tarnwick-ordinary-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        for part in ("tests/e2e", "tarnwick/static"):
            shutil.copytree(os.path.join(REPOSITORY, part), os.path.join(self.folder, part))
        for variable in ("TARNWICK_CLIENT", "TARNWICK_SERVICE"):
            shutil.copy(os.environ[variable], self.copied(variable))
        subprocess.run(["chmod", "-R", "u=rwX,go=rX", self.folder], check=True, timeout=30)
        self.own = os.path.join(self.folder, "own")
        os.mkdir(self.own)
        os.chown(self.own, USER, GROUP)

    def test_a_first_use_with_a_browser(self):
        self.expect_success("first_use_test.py")

    def test_a_service_that_goes_away(self):
        self.expect_success("service_outage_test.py")

    def test_what_a_screen_reader_gets(self):
        self.expect_success("screen_reader_test.py")

    def expect_success(self, test):
        python = sys.executable, "-B"
        run = ChildProcess([*OWN_NETWORK, *python, os.path.abspath(cut_off.__file__), str(USER), str(GROUP),
                            *python, os.path.join(self.folder, "tests", "e2e", test)],
                           os.path.join(self.folder, "output"), environment=self.environment(), folder=self.folder)
        self.addCleanup(run.end)
        try:
            code = run.wait_for_end(LIMIT)
        except WaitedInVain as hanging:
            run.end()
            self.fail(f"{hanging}\n{self.with_kept_pictures(run.text())}")
        self.assertEqual(code, 0, self.with_kept_pictures(run.text()))
        first, _, output = run.text().partition("\n")
        about = json.loads(first)
        self.assertEqual(about["user"], USER)
        self.assertNotEqual(USER, 0)
        self.assertLessEqual(set(about["ways"]), {"lo"})
        self.assertRegex(output, r"\nRan [1-9][0-9]* tests? in .*\n\nOK\n$")

    def environment(self):
        return {
            "PATH": os.environ.get("PATH", os.defpath),
            "LANG": "C.UTF-8",
            "HOME": self.own,
            "TMPDIR": self.own,
            "TARNWICK_CLIENT": self.copied("TARNWICK_CLIENT"),
            "TARNWICK_SERVICE": self.copied("TARNWICK_SERVICE"),
            "TARNWICK_E2E_FAILURES": os.path.join(self.own, "failures"),
        }

    def copied(self, variable):
        """Where the program's copy is."""
        return os.path.join(self.folder, os.path.basename(os.environ[variable]))

    def with_kept_pictures(self, output):
        """Copies the pictures of failures to where they are wanted, which need not be open to everybody."""
        made, wanted = self.environment()["TARNWICK_E2E_FAILURES"], os.environ.get("TARNWICK_E2E_FAILURES")
        if not wanted or not os.path.exists(made):
            return output
        shutil.copytree(made, wanted, dirs_exist_ok=True)
        return output.replace(made, wanted)


def obstacle():
    """Why this machine cannot run these tests; None when it can."""
    try:
        tried = subprocess.run([*OWN_NETWORK, "true"], capture_output=True, text=True, timeout=30, check=False)
    except FileNotFoundError:
        return "unshare is not installed"
    if tried.returncode == 0:
        return None
    return f"this machine does not allow a network of its own: {tried.stderr.strip()}"


if __name__ == "__main__":
    if reason := obstacle():
        print(f"SKIPPED: {os.path.splitext(os.path.basename(__file__))[0]}: {reason}", flush=True)
        sys.exit(SKIPPED)
    unittest.main()
