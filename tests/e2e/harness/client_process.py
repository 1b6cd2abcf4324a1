"""The client, as a process of its own, started as a person starts it."""

import json
import os

from harness import waiting
from harness.child_process import ChildProcess
from harness.client_window import ClientWindow
from harness.waiting import wait_until

STATE_FILE = os.path.join("Library", "Application Support", "Tarnwick", "pc-client-state.json")
REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))


class ClientProcess:
    """One run of the client in a HOME of its own. `start` opens the window, `window` reads it."""

    def __init__(self, program, desktop, home):
        self.home = os.path.abspath(home)
        self.state_file = os.path.join(self.home, STATE_FILE)
        self._program = os.path.abspath(program)
        self._desktop = desktop
        self.scale = None  # how much larger than usual everything is drawn
        self._runs = 0
        self._process = None
        self.window = None
        os.makedirs(self.home, exist_ok=True)

    def start(self):
        self._runs += 1
        # From the repository's root, where the client finds the logo.
        self._process = ChildProcess([self._program], self._desktop.path(f"client-{self._runs}.log"),
                                     environment=self._environment(), folder=REPOSITORY)
        # Before the window is looked for: that may be what fails.
        if self._report not in waiting.failure_reporters:
            waiting.failure_reporters.append(self._report)
        self.window = ClientWindow(self._process.pid)
        return self.window

    def running(self):
        return self._process is not None and self._process.exit_code() is None

    def started(self):
        """Whether there is a run whose end nobody has seen to yet."""
        return self._report in waiting.failure_reporters

    def exit_code(self):
        """None while the client runs."""
        return self._process.exit_code()

    def wait_for_end(self):
        """Waits until the client has ended by itself; returns its exit code."""
        code = self._process.wait_for_end()
        self._gone()
        return code

    def kill(self):
        """Ends the client from outside."""
        self._process.end()
        self._gone()

    def printed(self):
        """Everything that the last run wrote on its standard output and error, but for one complaint of Qt's.

        The toolkit prints it when the desktop's accessibility registry is too slow to take a key event.
        """
        lines = self._process.text().splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith("QSpiApplication::keyEventError"))

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

    def _gone(self):
        if self._report in waiting.failure_reporters:
            waiting.failure_reporters.remove(self._report)
        self.window = None

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
        if not self.running():
            return f"The client has ended with {self._process.exit_code()}. It printed: {self.printed()!r}"
        if self.window is None:
            return f"The client has no window yet. It printed: {self.printed()!r}"
        return f"The client's status text: '{self.window.status()}'. It printed: {self.printed()!r}"
