"""What a machine has to allow for a clean Debian 12 to be made on it. Each thing is tried; where one is forbidden, the
tests are skipped with the reason."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import urllib.error
import urllib.request

from debian_mirror import SUITE, main_mirror, proxies
from packaging_support import needs


def enter_own_mounts():
    """Starts this program again where its mounts are its own."""
    if os.geteuid() == 0 and "TARNWICK_OWN_MOUNTS" not in os.environ and shutil.which("unshare"):
        words = ["unshare", "--mount", "--propagation", "private", "--"]
        if subprocess.run([*words, "true"], capture_output=True, check=False).returncode == 0:
            os.environ["TARNWICK_OWN_MOUNTS"] = "yes"
            os.execvp(words[0], [*words, sys.executable, *sys.argv])


def require_a_place_for_clean_machines(folder):
    """Skips the test unless clean machines can be made in the folder."""
    if os.geteuid() != 0:
        raise unittest.SkipTest("a clean Debian 12 can only be made by root")
    needs("debootstrap", "apt-get", "dpkg-deb", "setpriv")
    if "TARNWICK_OWN_MOUNTS" not in os.environ:
        raise unittest.SkipTest("this machine does not allow mounts")
    folder.mkdir(parents=True, exist_ok=True)
    _require_device_files(folder)
    with tempfile.TemporaryDirectory(dir=folder, prefix="tried-") as tried:
        _require("mounts of /proc", "mount", "-t", "proc", "proc", tried)
        _require("mounts to be undone", "umount", tried)
        _require("folders to be mounted elsewhere", "mount", "--bind", folder, tried)
        _require("mounts to be undone", "umount", tried)
    _require("another root folder", "chroot", "/", "true")
    _require("other users", "setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups", "true")
    _require_mirror()


def _require(what, *command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60, check=False)
    if done.returncode != 0:
        raise unittest.SkipTest(f"this machine does not allow {what}: {' '.join(done.stdout.split())}")


def _require_device_files(folder):
    probe = folder / "probe"
    probe.unlink(missing_ok=True)
    try:
        os.mknod(probe, 0o20600, os.makedev(1, 3))
        probe.write_bytes(b"")
    except OSError as error:
        raise unittest.SkipTest(f"this machine does not allow device files: {error.strerror}") from error
    finally:
        probe.unlink(missing_ok=True)


def _require_mirror():
    site = main_mirror()
    if site is None:
        raise unittest.SkipTest("this machine's apt reads no Debian 12 mirror")
    request = urllib.request.Request(f"{site}/dists/{SUITE}/Release", method="HEAD")
    handler = urllib.request.ProxyHandler(proxies() or None)
    try:
        urllib.request.build_opener(handler).open(request, timeout=20).close()
    except (urllib.error.URLError, OSError) as error:
        raise unittest.SkipTest(f"the Debian mirror does not answer: {error}") from error
