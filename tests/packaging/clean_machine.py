"""A Debian 12 system with nothing in it, in a folder of this machine, from the mirror that this machine uses itself.

The system is made by debootstrap once and kept as an archive, and so are the packages that it downloads. Every test
gets a fresh copy. What is mounted is mounted for this process only, so that nothing stays mounted however it ends.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import time
import unittest
import urllib.error
import urllib.request

from packaging_support import WORK, needs, run

SUITE = "bookworm"
KEPT = WORK / "clean-machine-kept"
BASE = KEPT / f"{SUITE}.tar"
ARCHIVES = KEPT / "archives"
OLDEST_BASE = 14 * 24 * 3600

_INSIDE = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"}


def enter_own_mounts():
    """Starts this program again where its mounts are its own."""
    if os.geteuid() == 0 and "TARNWICK_OWN_MOUNTS" not in os.environ and shutil.which("unshare"):
        words = ["unshare", "--mount", "--propagation", "private", "--"]
        if subprocess.run([*words, "true"], capture_output=True, check=False).returncode == 0:
            os.environ["TARNWICK_OWN_MOUNTS"] = "yes"
            os.execvp(words[0], [*words, sys.executable, *sys.argv])


def prepare_clean_machines():
    """Makes the system that every test gets a copy of. Where this machine does not let anyone make one, the tests are
    skipped, with the reason."""
    needs("debootstrap", "apt-get", "dpkg-deb")
    if os.geteuid() != 0:
        raise unittest.SkipTest("a clean Debian 12 can only be made by root")
    if "TARNWICK_OWN_MOUNTS" not in os.environ:
        raise unittest.SkipTest("this machine does not allow mounts")
    _require_device_files()
    _require_mirror()
    if not BASE.exists() or time.time() - BASE.stat().st_mtime > OLDEST_BASE:
        _make_base()


def _require_device_files():
    KEPT.mkdir(parents=True, exist_ok=True)
    probe = KEPT / "probe"
    probe.unlink(missing_ok=True)
    try:
        os.mknod(probe, 0o20600, os.makedev(1, 3))
        probe.write_bytes(b"")
    except OSError as error:
        raise unittest.SkipTest(f"this machine does not allow device files: {error.strerror}") from error
    finally:
        probe.unlink(missing_ok=True)


def _mirrors():
    """What this machine's apt reads of Debian 12: addresses, releases and components."""
    targets = run("apt-get", "indextargets", "--format", "$(SITE)|$(RELEASE)|$(COMPONENT)", "Created-By: Packages")
    sources = [line.split("|") for line in dict.fromkeys(targets.splitlines()) if line.count("|") == 2]
    return [source for source in sources if source[1].split("-")[0] == SUITE and source[2] == "main"]


def _main_mirror():
    return next((site for site, release, _ in _mirrors() if release == SUITE), None)


def _require_mirror():
    site = _main_mirror()
    if site is None:
        raise unittest.SkipTest("this machine's apt reads no Debian 12 mirror")
    request = urllib.request.Request(f"{site}/dists/{SUITE}/Release", method="HEAD")
    handler = urllib.request.ProxyHandler(_proxies() or None)
    try:
        urllib.request.build_opener(handler).open(request, timeout=20).close()
    except (urllib.error.URLError, OSError) as error:
        raise unittest.SkipTest(f"the Debian mirror does not answer: {error}") from error


def _apt_settings():
    """This machine's settings on how to reach a mirror."""
    return [line for line in run("apt-config", "dump").splitlines()
            if line.lower().startswith(("acquire::http::proxy", "acquire::https::", "acquire::check-"))]


def _proxies():
    values = dict(line.rstrip('";').split(' "', 1) for line in _apt_settings() if ' "' in line)
    return {scheme: values[f"Acquire::{scheme}::Proxy"] for scheme in ("http", "https")
            if values.get(f"Acquire::{scheme}::Proxy")}


def _make_base():
    folder = KEPT / "base"
    shutil.rmtree(folder, ignore_errors=True)
    environment = dict(os.environ, **{f"{scheme}_proxy": value for scheme, value in _proxies().items()})
    run("debootstrap", "--variant=minbase", SUITE, folder, _main_mirror(), limit=600, env=environment)
    unfinished = BASE.with_suffix(".unfinished")
    run("tar", "-C", folder, "-cf", unfinished, ".")
    unfinished.rename(BASE)
    shutil.rmtree(folder)


class CleanMachine:
    """One copy of the system. `run` runs a command inside."""

    def __init__(self, name):
        self.root = WORK / name
        self._mounts = []
        shutil.rmtree(self.root, ignore_errors=True)
        self.root.mkdir(parents=True)
        run("tar", "-C", self.root, "-xpf", BASE)
        self._mount("proc", "/proc", "-t", "proc")
        ARCHIVES.mkdir(exist_ok=True)
        self.show(ARCHIVES, "/var/cache/apt/archives")
        self._set_up_apt()

    def path(self, inside):
        return self.root / str(inside).lstrip("/")

    def run(self, *command, limit=300):
        return run("chroot", self.root, *command, limit=limit, env=_INSIDE)

    def show(self, folder, inside=None):
        """Makes a folder of this machine visible inside."""
        self._mount(folder, inside or folder, "--bind")

    def install(self, package):
        """Installs a package file as a person does. Returns what was printed."""
        target = self.path("/var/tmp") / package.name
        shutil.copy(package, target)
        try:
            return self.run("apt-get", "install", "--yes", f"/var/tmp/{package.name}", limit=600)
        finally:
            target.unlink()

    def remove(self):
        for mounted in reversed(self._mounts):
            run("umount", "--lazy", mounted)
        shutil.rmtree(self.root)

    def _mount(self, what, inside, *how):
        target = self.path(inside)
        target.mkdir(parents=True, exist_ok=True)
        run("mount", *how, what, target)
        self._mounts.append(target)

    def _set_up_apt(self):
        lines = [f"deb {site} {release} {part}" for site, release, part in _mirrors()]
        self.path("/etc/apt/sources.list").write_text("\n".join(lines) + "\n", encoding="utf-8")
        settings = _apt_settings()
        certificates = pathlib.Path("/etc/ssl/certs/ca-certificates.crt")
        if any(site.startswith("https:") for site, _, _ in _mirrors()) and certificates.exists():
            shutil.copy(certificates, self.path("/etc/apt/mirror.crt"))
            settings.append('Acquire::https::CAInfo "/etc/apt/mirror.crt";')
        self.path("/etc/apt/apt.conf.d/90mirror").write_text("\n".join(settings) + "\n", encoding="utf-8")
        # Nothing of this is worth waiting for a disk.
        self.path("/etc/dpkg/dpkg.cfg.d/unsafe-io").write_text("force-unsafe-io\n", encoding="utf-8")
        # A folder is no machine: no service may start in it.
        policy = self.path("/usr/sbin/policy-rc.d")
        policy.write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")
        policy.chmod(0o755)
        for name in ("resolv.conf", "hosts"):
            shutil.copy(pathlib.Path("/etc") / name, self.path("/etc") / name)
        self.run("apt-get", "update")
