"""The client, as a process of its own, started as a person starts it."""

import contextlib
import itertools
import json
import os

from gi.repository import GLib

from harness import waiting
from harness.child_process import ChildProcess
from harness.client_window import ClientWindow
from harness.waiting import wait_until

# What the toolkit prints when the desktop's accessibility registry is too slow to take a key event.
_SLOW_REGISTRY = ("QSpiApplication::keyEventError", "QSpiApplication::notifyKeyboardListenerCallback")

STATE_FILE = os.path.join("Library", "Application Support", "Tarnwick", "pc-client-state.json")
REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))

_run_numbers = itertools.count(1)


class _Window(ClientWindow):
    """Keeps the status text that was read last, for when there is nobody left to read it from."""

    def __init__(self, pid):
        super().__init__(pid)
        self.last_status = None
        self.status()

    def status(self):
        text = super().status()
        # A program that is just ending has no texts any more.
        self.last_status = text or self.last_status
        return text


class ClientProcess:
    """One run of the client in a HOME of its own. `start` opens the window, `window` reads it."""

    def __init__(self, program, desktop, home):
        self.home = os.path.abspath(home)
        self.state_file = os.path.join(self.home, STATE_FILE)
        self._program = os.path.abspath(program)
        self._desktop = desktop
        self.scale = None  # how much larger than usual everything is drawn
        self._process = None
        self._end_awaited = False
        self.window = None
        os.makedirs(self.home, exist_ok=True)

    def start(self):
        # From the repository's root, where the client finds the logo.
        self._process = ChildProcess([self._program], self._desktop.path(f"client-{next(_run_numbers)}.log"),
                                     environment=self._environment(), folder=REPOSITORY)
        self._end_awaited = False
        self.window = None
        # Before the window is looked for: that may be what fails.
        if self._report not in waiting.failure_reporters:
            waiting.failure_reporters.append(self._report)
        self.window = _Window(self._process.pid)
        return self.window

    def left_open(self):
        """Whether there is a run for whose end nobody has waited."""
        return self._process is not None and not self._end_awaited

    def exit_code(self):
        """None while the client runs."""
        return self._process.exit_code()

    def wait_for_end(self):
        """Waits until the client has ended by itself; returns its exit code."""
        code = self._process.wait_for_end()
        self._end_awaited = True
        return code

    def kill(self):
        """Ends the client from outside if it still runs. No failure from here on is about it."""
        if self._process is not None:
            self._process.end()
            self._end_awaited = True
        if self._report in waiting.failure_reporters:
            waiting.failure_reporters.remove(self._report)

    def printed(self):
        """Everything that the last run wrote on its standard output and error, but for two complaints of Qt's."""
        lines = self._process.text().splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith(_SLOW_REGISTRY))

    def state(self):
        with open(self.state_file, encoding="utf-8") as source:
            return json.load(source)

    def wait_for_state(self, fits, what):
        def look():
            try:
                return fits(self.state())
            except (FileNotFoundError, json.JSONDecodeError):
                return False
        wait_until(look, what)
        return self.state()

    def write_state(self, **state):
        os.makedirs(os.path.dirname(self.state_file), exist_ok=True)
        with open(self.state_file, "w", encoding="utf-8") as target:
            json.dump(state, target)

    def _environment(self):
        environment = dict(self._desktop.environment, HOME=self.home, QT_QPA_PLATFORM="xcb",
                           QT_ACCESSIBILITY="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_LOGGING_TO_CONSOLE="1")
        if self.scale is not None:
            environment["QT_SCALE_FACTOR"] = str(self.scale)
        environment["LSAN_OPTIONS"] = f"suppressions={self._suppressions()}:print_suppressions=0"
        return environment

    def _suppressions(self):
        """For a client that was built to find its own leaks: the font library's are not among them."""
        path = self._desktop.path("leaks-of-libraries")
        with open(path, "w", encoding="ascii") as target:
            target.write("leak:libfontconfig\n")
        return path

    def _report(self):
        code = self.exit_code()
        state = "runs" if code is None else f"has ended with {code}"
        return f"The client {state}. {self._seen()} It printed: {self.printed()!r}"

    def _seen(self):
        if self.window is None:
            return "It has shown no window."
        if self.exit_code() is None:
            with contextlib.suppress(GLib.Error):  # it may not answer
                return f"Its status text: '{self.window.status()}'."
        return f"Its last known status text: '{self.window.last_status}'."
