"""A disposable Debian system in a folder, with a user who has sudo. Commands can run in it and change anything.

A program that makes machines calls roots.enter_own_namespaces() first.
"""

import os
import shutil
import signal
import subprocess
import sys
import threading
import time

from . import roots

HOME = f"/home/{roots.PERSON}"
_ARCHIVES = "var/cache/apt/archives"
_PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"


class Machine:
    """A copy of the suite's root in the folder `work`, for a `with` statement, which removes it at the end."""

    def __init__(self, suite, work):
        self.suite = suite
        self.work = work
        self.root = work / "root"
        self._mounted = []

    def __enter__(self):
        base = roots.base(self.suite)
        shutil.rmtree(self.work, ignore_errors=True)
        for name in ("changes", "overlay", "root"):
            (self.work / name).mkdir(parents=True)
        try:
            self._copy(roots.packages(self.suite), base)
            self._mount("-t", "proc", "proc", "proc")
            self._mount("-t", "tmpfs", "tmpfs", "dev/shm")
            self._mount("-t", "devpts", "-o", "newinstance,ptmxmode=0666,mode=0620", "devpts", "dev/pts")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if (self.root / _ARCHIVES).exists():
            self._keep_packages()
        for place in reversed(self._mounted):
            subprocess.run(["umount", "--lazy", place], check=True)
        self._mounted.clear()
        shutil.rmtree(self.work)

    def path(self, inside):
        """The path on the host of a path in the machine."""
        return self.root / str(inside).lstrip("/")

    def show(self, folder, inside):
        """Mounts a folder of the host in the machine."""
        self._mount("--bind", folder, inside)

    def run(self, *command, user="root", folder="/", limit=300, expected=0, **environment):
        """Runs a command in the machine, prints its output as it comes, and returns it. Fails if the command takes more
        than `limit` seconds or has another exit status than `expected`; None allows any exit status."""
        home = HOME if user == roots.PERSON else "/root" if user == "root" else "/nonexistent"
        variables = {"PATH": _PATH, "HOME": home, "LANG": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"} | environment
        enter = ["chroot", self.root, "setpriv", f"--reuid={user}", f"--regid={self._group(user)}", "--init-groups"]
        settings = [f"{name}={value}" for name, value in variables.items()]
        words = [*enter, "env", "--ignore-environment", f"--chdir={folder}", *settings, *command]
        started = time.monotonic()
        with subprocess.Popen(
            [str(word) for word in words],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            start_new_session=True,
        ) as process:
            guard = threading.Timer(limit, os.killpg, (process.pid, signal.SIGKILL))
            guard.start()
            printed = "".join(map(_shown, process.stdout))
        guard.cancel()
        if expected is not None and process.returncode != expected:
            ended = f"ended with {process.returncode} after {time.monotonic() - started:.0f} s"
            raise AssertionError(f"{' '.join(map(str, command))} {ended}:\n{printed[-4000:]}")
        return printed

    def run_as_person(self, *command, folder=HOME, **options):
        return self.run(*command, user=roots.PERSON, folder=folder, **options)

    def _group(self, user):
        lines = (line.split(":") for line in self.path("/etc/passwd").read_text(encoding="utf-8").splitlines())
        return next(fields[3] for fields in lines if fields[0] == user)

    def _copy(self, *layers):
        """Mounts an overlay on the layers; copies them where overlays are not allowed."""
        below = ":".join(map(str, layers))
        changes = f"lowerdir={below},upperdir={self.work / 'changes'},workdir={self.work / 'overlay'}"
        try:
            self._mount("-t", "overlay", "-o", changes, "overlay", "")
        except subprocess.CalledProcessError:
            for layer in reversed(layers):
                subprocess.run(["cp", "--archive", "--reflink=auto", f"{layer}/.", self.root], check=True)

    def _keep_packages(self):
        """Keeps downloaded packages for other machines."""
        kept = roots.packages(self.suite) / _ARCHIVES
        for package in (self.root / _ARCHIVES).glob("*.deb"):
            if not (kept / package.name).exists():
                unfinished = kept / f"{package.name}.{os.getpid()}"
                shutil.copy(package, unfinished)
                unfinished.rename(kept / package.name)

    def _mount(self, *words):
        """Calls mount with these words; the last one is a path in the machine."""
        place = self.path(words[-1])
        place.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", *words[:-1], place], capture_output=True, check=True)
        self._mounted.append(place)


def _shown(line):
    sys.stdout.write(f"  | {line}")
    sys.stdout.flush()
    return line
