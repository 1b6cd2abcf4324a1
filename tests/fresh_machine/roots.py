"""Fresh Debian systems in folders, made by debootstrap and kept for two weeks. Machines are copies of them."""

import contextlib
import fcntl
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

from . import mirror

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
ROOTS = pathlib.Path(os.environ.get("TARNWICK_ROOTS", REPOSITORY / "build" / "roots"))
BOOKWORM, TRIXIE = "bookworm", "trixie"

# What a user needs to clone a project: git, and sudo without a password.
_PACKAGES = "ca-certificates,git,sudo"
PERSON = "person"

_TWO_WEEKS = 14 * 24 * 3600
_OWN_NAMESPACES = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "--propagation", "private"]
_MARK = "TARNWICK_OWN_NAMESPACES"

# Tries everything that the host must allow for making and entering a machine.
_TRIED = """
mknod probe c 1 3 && : >probe || { echo "no device files"; exit 1; }
mkdir -p folder && mount --bind folder folder || { echo "no bind mounts"; exit 1; }
mount -t proc proc folder || { echo "no mounts of /proc"; exit 1; }
chroot / true || { echo "no other root folder"; exit 1; }
setpriv --reuid nobody --regid nogroup --clear-groups true || { echo "no other users"; exit 1; }
"""


def enter_own_namespaces():
    """Restarts this program in its own mount and process namespaces, so that its mounts and processes end with it."""
    if os.geteuid() == 0 and _MARK not in os.environ and shutil.which("unshare"):
        if subprocess.run([*_OWN_NAMESPACES, "true"], capture_output=True, check=False).returncode == 0:
            os.environ[_MARK] = "yes"
            os.execvp(_OWN_NAMESPACES[0], [*_OWN_NAMESPACES, sys.executable, *sys.argv])


def why_not(*suites):
    """Why this host cannot make or enter a root of the suites; None if it can."""
    if os.geteuid() != 0:
        return "only root can make a fresh Debian system"
    for program in ("debootstrap", "apt-get", "dpkg-deb", "setpriv", "git"):
        if shutil.which(program) is None:
            return f"{program} is not installed"
    if _MARK not in os.environ:
        return "mount namespaces are not allowed here"
    ROOTS.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(dir=ROOTS) as folder:
        command = [*_OWN_NAMESPACES, "sh", "-c", _TRIED]
        done = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return f"not allowed here: {' '.join((done.stdout or done.stderr).split())}"
    return next(filter(None, map(mirror.why_unreachable, suites)), None)


def base(suite):
    """The folder of the suite's root. Makes the root if there is none or it is too old."""
    folder = ROOTS / suite
    with locked(suite):
        if not folder.exists() or time.time() - folder.stat().st_mtime > _TWO_WEEKS:
            _make(suite, folder)
    return folder


def packages(suite):
    """The folder with all packages downloaded for the suite, laid out like a root."""
    folder = ROOTS / f"{suite}-packages"
    (folder / "var/cache/apt/archives").mkdir(parents=True, exist_ok=True)
    return folder


@contextlib.contextmanager
def locked(name):
    """Locks the root against other processes."""
    ROOTS.mkdir(parents=True, exist_ok=True)
    with open(ROOTS / f"{name}.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        yield


def _make(suite, folder):
    print(f"Making a root of {suite}", flush=True)
    unfinished = folder.with_name(f"{suite}-unfinished")
    shutil.rmtree(unfinished, ignore_errors=True)
    environment = dict(os.environ, **{f"{scheme}_proxy": value for scheme, value in mirror.proxies().items()})
    subprocess.run(
        ["debootstrap", "--variant=minbase", f"--include={_PACKAGES}", suite, unfinished, mirror.address()],
        env=environment,
        stdout=subprocess.DEVNULL,
        timeout=900,
        check=True,
    )
    _set_up(unfinished, suite)
    shutil.rmtree(folder, ignore_errors=True)
    unfinished.rename(folder)
    os.utime(folder)


def _set_up(root, suite):
    for name in ("resolv.conf", "hosts"):
        shutil.copy(pathlib.Path("/etc", name), root / "etc" / name)
    reach = mirror.settings() + 'Binary::apt::APT::Keep-Downloaded-Packages "true";\n'
    certificates = pathlib.Path("/etc/ssl/certs/ca-certificates.crt")
    if mirror.address().startswith("https:") and certificates.exists():
        shutil.copy(certificates, root / "etc/apt/mirror.crt")
        reach += 'Acquire::https::CAInfo "/etc/apt/mirror.crt";\n'
    (root / "etc/apt/sources.list").write_text(mirror.sources(suite), encoding="utf-8")
    (root / "etc/apt/apt.conf.d/90mirror").write_text(reach, encoding="utf-8")
    # This data may be lost, so do not wait for the disk.
    (root / "etc/dpkg/dpkg.cfg.d/unsafe-io").write_text("force-unsafe-io\n", encoding="utf-8")
    # No service may start in it.
    (root / "usr/sbin/policy-rc.d").write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")
    (root / "usr/sbin/policy-rc.d").chmod(0o755)
    subprocess.run(["chroot", root, "useradd", "--create-home", "--shell", "/bin/bash", PERSON], check=True)
    (root / "etc/sudoers.d" / PERSON).write_text(f"{PERSON} ALL=(ALL) NOPASSWD: ALL\n", encoding="utf-8")
    for archive in (root / "var/cache/apt/archives").glob("*.deb"):
        archive.unlink()
