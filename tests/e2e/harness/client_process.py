"""The client as a separate process, started as a user starts it."""

import itertools
import json
import os
import pathlib

from harness import waiting
from harness.child_process import ChildProcess
from harness.client_window import ClientWindow
from harness.control import unless_gone

# Printed by Qt when the desktop's accessibility registry is too slow to accept a key event.
_SLOW_REGISTRY = ("QSpiApplication::keyEventError", "QSpiApplication::notifyKeyboardListenerCallback")

STATE_FILE = os.path.join("Library", "Application Support", "Tarnwick", "pc-client-state.json")
REPOSITORY = str(pathlib.Path(__file__).resolve().parents[3])

_run_numbers = itertools.count(1)


def write_state(home, **state):
    """Writes a state file as an earlier run of the client would leave it."""
    file = pathlib.Path(home, STATE_FILE)
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps(state), encoding="utf-8")


class ClientProcess:
    """One run of the client with its own HOME. `start` opens the window, `window` reads it."""

    def __init__(self, program, desktop, home):
        self.home = os.path.abspath(home)
        self.state_file = os.path.join(self.home, STATE_FILE)
        self._program = os.path.abspath(program)
        self._desktop = desktop
        self.scale = 1  # the scale factor
        self._process = None
        self._end_awaited = False
        self.window = None
        os.makedirs(self.home, exist_ok=True)

    def start(self):
        # From the repository's root, where the client finds the logo.
        self._process = ChildProcess(
            [self._program],
            self._desktop.path(f"client-{next(_run_numbers)}.log"),
            environment=self._desktop.environment
            | {
                "HOME": self.home,
                "QT_QPA_PLATFORM": "xcb",
                "QT_ACCESSIBILITY": "1",
                "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                "QT_LOGGING_TO_CONSOLE": "1",
                "QT_SCALE_FACTOR": str(self.scale),
            },
            folder=REPOSITORY,
        )
        self._end_awaited = False
        self.window = None
        # Before the search for the window, which may fail.
        if self._report not in waiting.failure_reporters:
            waiting.failure_reporters.append(self._report)
        self.window = ClientWindow(self._process.pid)
        return self.window

    @property
    def pid(self):
        return self._process.pid

    def left_open(self):
        """Whether there is a run whose end has not been awaited."""
        return self._process is not None and not self._end_awaited

    def exit_code(self):
        """None while the client runs."""
        return self._process.exit_code()

    def wait_for_end(self):
        """Waits until the client has ended by itself. Returns its exit code."""
        code = self._process.wait_for_end()
        self._end_awaited = True
        return code

    def kill(self):
        """Kills the client if it still runs. Later failures do not report on it."""
        if self._process is not None:
            self._process.end()
            self._end_awaited = True
        if self._report in waiting.failure_reporters:
            waiting.failure_reporters.remove(self._report)

    def printed(self):
        """Everything that the last run wrote to standard output and error, except two warnings from Qt."""
        lines = self._process.text().splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith(_SLOW_REGISTRY))

    def state(self):
        with open(self.state_file, encoding="utf-8") as source:
            return json.load(source)

    def write_state(self, **state):
        write_state(self.home, **state)

    def _report(self):
        code = self.exit_code()
        if self.window is None:
            seen = "It has shown no window."
        elif code is None and (status := unless_gone(self.window.status)):  # it may not answer
            seen = f"Its status text: '{status}'."
        else:
            seen = f"Its last known status text: '{self.window.last_status}'."
        state = "runs" if code is None else f"has ended with {code}"
        return f"The client {state}. {seen} It printed: {self.printed()!r}"
