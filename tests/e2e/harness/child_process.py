"""Processes that the tests start. They never outlive the tests."""

import atexit
import contextlib
import os
import pathlib
import signal
import subprocess

from harness.waiting import wait_until

_running = []


class ChildProcess:
    """A program with its output in a file. It leads a process group, so that its own child processes end with it."""

    def __init__(self, arguments, output, environment=None, folder=None):
        self.name = os.path.basename(arguments[0])
        self._output = pathlib.Path(output)
        with open(output, "wb") as sink:
            # The program ends with the test, even if the test is killed.
            self._process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", *arguments],
                stdin=subprocess.DEVNULL,
                stdout=sink,
                stderr=subprocess.STDOUT,
                env=environment,
                cwd=folder,
                process_group=0,
            )
        self.pid = self._process.pid
        _running.append(self)

    def text(self):
        return self._output.read_text(encoding="utf-8", errors="replace")

    def exit_code(self):
        """None while the program runs."""
        return self._process.poll()

    def wait_for_line(self, prefix, limit=15.0):
        """The rest of the first complete line of its output that starts with the prefix."""

        def rest():
            for line in self.text().splitlines(keepends=True):
                if line.startswith(prefix) and line.endswith("\n"):
                    return line[len(prefix) :].strip()
            if self.exit_code() is not None:
                raise RuntimeError(f"{self.name} ended with {self.exit_code()}: {self.text()}")
            return None

        return wait_until(rest, f"a line '{prefix}' from {self.name}", limit)

    def wait_for_end(self, limit=15.0):
        """Returns its exit code."""
        wait_until(lambda: self.exit_code() is not None, f"the end of {self.name}", limit)
        self._forget()
        return self.exit_code()

    def end(self):
        """Asks it to end, and kills it if it does not."""
        if self not in _running:
            return
        self._process.terminate()
        try:
            self._process.wait(timeout=5)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait(timeout=5)
        self._forget()

    def _forget(self):
        with contextlib.suppress(ProcessLookupError, PermissionError):
            os.killpg(self.pid, signal.SIGKILL)  # child processes that it left behind
        if self in _running:
            _running.remove(self)


def end_all():
    """Ends every program that is still running, the newest first."""
    for process in reversed(list(_running)):
        process.end()


def _leave(_number, _frame):
    # A test runner does not treat this exception as a failed test.
    raise KeyboardInterrupt


atexit.register(end_all)
signal.signal(signal.SIGTERM, _leave)
signal.signal(signal.SIGHUP, _leave)
