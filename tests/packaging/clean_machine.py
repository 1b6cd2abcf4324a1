"""A Debian 12 system with nothing in it, in a folder of this machine, from the mirror that this machine uses itself.

The system is made by debootstrap once and kept as an archive, and so are the packages that it downloads. Every test
gets a fresh copy. What is mounted is mounted for this process only, so that nothing stays mounted however it ends.
"""

import os
import pathlib
import re
import shutil
import time

from clean_machine_needs import require_a_place_for_clean_machines
from debian_mirror import SUITE, apt_settings, main_mirror, mirrors, proxies
from ordinary_account import ACCOUNT, AS_ACCOUNT
from packaging_support import WORK, run

KEPT = WORK / "clean-machine-kept"
BASE = KEPT / f"{SUITE}.tar"
ARCHIVES = KEPT / "archives"
OLDEST_BASE = 14 * 24 * 3600

# A machine takes about a gigabyte.
_ENOUGH_MEMORY_KB = 4 * 1024 * 1024

# Who uses the machine.
PERSON = "person"
HOME = f"/home/{PERSON}"

_INSIDE = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"}


def prepare_clean_machines():
    """Makes the system that every test gets a copy of. Where this machine does not let anyone make one, the tests are
    skipped, with the reason."""
    require_a_place_for_clean_machines(KEPT)
    if not BASE.exists() or time.time() - BASE.stat().st_mtime > OLDEST_BASE:
        _make_base()


def _make_base():
    folder = KEPT / "base"
    shutil.rmtree(folder, ignore_errors=True)
    environment = dict(os.environ, **{f"{scheme}_proxy": value for scheme, value in proxies().items()})
    run("debootstrap", "--variant=minbase", SUITE, folder, main_mirror(), limit=600, env=environment)
    unfinished = BASE.with_suffix(".unfinished")
    run("tar", "-C", folder, "-cf", unfinished, ".")
    unfinished.rename(BASE)
    shutil.rmtree(folder)


def _free_memory_kb():
    told = pathlib.Path("/proc/meminfo").read_text(encoding="ascii")
    return int(re.search(r"^MemAvailable: +(\d+) kB$", told, re.MULTILINE)[1])


class CleanMachine:
    """One copy of the system, with one person who uses it. `run` runs a command inside as root."""

    def __init__(self, name):
        self.root = WORK / name
        self._mounts = []
        shutil.rmtree(self.root, ignore_errors=True)
        self.root.mkdir(parents=True)
        if _free_memory_kb() > _ENOUGH_MEMORY_KB:
            # Much faster than a disk, most of all when all of it is removed again.
            self._mount("tmpfs", "/", "-t", "tmpfs", "-o", "mode=755")
        run("tar", "-C", self.root, "-xpf", BASE)
        self._mount("proc", "/proc", "-t", "proc")
        ARCHIVES.mkdir(exist_ok=True)
        self.show(ARCHIVES, "/var/cache/apt/archives")
        self._set_up_apt()
        # The number is that of the account which the screen belongs to.
        self.run("useradd", "--create-home", "--home-dir", HOME, "--non-unique", "--uid", str(ACCOUNT.pw_uid),
                 "--gid", str(ACCOUNT.pw_gid), PERSON)

    def path(self, inside):
        return self.root / str(inside).lstrip("/")

    def run(self, *command, limit=300):
        return run("chroot", self.root, *command, limit=limit, env=_INSIDE)

    def run_as_person(self, *command):
        return self.run(*AS_ACCOUNT, "env", f"HOME={HOME}", *command)

    def give_home_to_person(self):
        self.run("chown", "--recursive", f"{ACCOUNT.pw_uid}:{ACCOUNT.pw_gid}", HOME)

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

    def places_of(self, package):
        """Every file of an installed package, and every folder that is there for this package alone."""
        listed = [name for name in self.run("dpkg", "--listfiles", package).splitlines() if name != "/."]
        owners = [line.split(": ", 1) for line in self.run("dpkg-query", "--search", *listed).splitlines()]
        places = {name for owner, name in owners if owner == package}
        assert {name for name in listed if not self.path(name).is_dir()} <= places
        return places

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
        lines = [f"deb {site} {release} {part}" for site, release, part in mirrors()]
        self.path("/etc/apt/sources.list").write_text("\n".join(lines) + "\n", encoding="utf-8")
        settings = apt_settings()
        certificates = pathlib.Path("/etc/ssl/certs/ca-certificates.crt")
        if any(site.startswith("https:") for site, _, _ in mirrors()) and certificates.exists():
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
