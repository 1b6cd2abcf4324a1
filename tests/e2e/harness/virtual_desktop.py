"""A desktop that nobody sees: a screen, a window manager, and a session bus with the accessibility bus."""

import atexit
import os
import select
import shutil
import tempfile

from harness import waiting
from harness.child_process import ChildProcess, end_all
from harness.fonts import write_font_configuration
from harness.opened_addresses import OpenedAddresses
from harness.screen import Screenshot

_WINDOW_MANAGER = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <theme><keepBorder>no</keepBorder></theme>
  <keyboard><keybind key="A-F4"><action name="Close"/></keybind></keyboard>
  <applications>
    <application class="Tarnwick" type="normal">
      <decor>no</decor>
      <position force="yes"><x>0</x><y>0</y></position>
      {maximized}
    </application>
  </applications>
</openbox_config>
"""

# How long the virtual screen may take to come up, in seconds.
_START_LIMIT = 30


class VirtualDesktop:
    """One per process, since the accessibility library connects to one desktop only.

    `fill` makes the client's window as large as the screen instead of the size it asks for.
    """

    def __init__(self, width=1280, height=1000, fill=False, failures=None):
        self.width = width
        self.height = height
        self.folder = tempfile.mkdtemp(prefix="tarnwick-e2e-")
        self._failures = failures or os.environ.get("TARNWICK_E2E_FAILURES")
        self._failure_pictures = 0
        atexit.register(self.close)
        try:
            self.opened = OpenedAddresses(self.folder)
            self.environment = self._base_environment()
            self._start_screen()
            self._start_session_bus()
            self._start_window_manager(fill)
            self._move_in()
        except BaseException:
            self.close()
            raise
        waiting.failure_reporters.append(self._report)

    def path(self, name):
        """A place in the desktop's own folder, which is removed at its end."""
        return os.path.join(self.folder, name)

    @property
    def screen_file(self):
        """Holds the screen's pixels at any moment."""
        return self.path("screen/Xvfb_screen0")

    def failure_picture(self, save):
        """Has a picture of a failure saved, by a function that takes its path. Returns the path."""
        if not self._failures:
            return "no picture, since TARNWICK_E2E_FAILURES names no folder"
        os.makedirs(self._failures, exist_ok=True)
        self._failure_pictures += 1
        path = os.path.join(self._failures, f"{os.getpid()}-{self._failure_pictures}.png")
        save(path)
        return path

    def close(self):
        """Ends everything that was started on the desktop."""
        end_all()
        if self._report in waiting.failure_reporters:
            waiting.failure_reporters.remove(self._report)
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.close()

    def _base_environment(self):
        """Nothing of the person who runs the tests but the search path: themes and settings would show."""
        runtime = self.path("runtime")
        os.mkdir(runtime, 0o700)
        return {
            "PATH": self.opened.folder + os.pathsep + os.environ.get("PATH", os.defpath),
            "LANG": "C.UTF-8",
            "HOME": self.folder,
            "TMPDIR": self.folder,
            "XDG_RUNTIME_DIR": runtime,
            "FONTCONFIG_FILE": write_font_configuration(self.folder),
        }

    def _start_screen(self):
        # The X server picks the number itself and tells it, so that two desktops never want the same one.
        os.mkdir(self.path("screen"))
        read_end, write_end = os.pipe()
        with os.fdopen(read_end) as number:
            try:
                ChildProcess(["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{self.width}x{self.height}x24",
                              "-dpi", "96", "-nocursor", "-fbdir", self.path("screen"), "-nolisten", "tcp", "-noreset"],
                             self.path("screen.log"), environment=self.environment, pass_fds=(write_end,))
            finally:
                os.close(write_end)
            told, _, _ = select.select([number], [], [], _START_LIMIT)
            display = number.readline().strip() if told else ""
        if not display:
            with open(self.path("screen.log"), encoding="utf-8") as log:
                raise RuntimeError("The virtual screen did not start: " + log.read())
        self.environment["DISPLAY"] = ":" + display

    def _start_session_bus(self):
        # Not the bus of whoever runs the tests: this one starts the accessibility bus, on demand, for this screen.
        address = "unix:path=" + self.path("session-bus")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        ChildProcess(["dbus-daemon", "--session", "--nofork", "--nosyslog", "--nopidfile", "--address=" + address],
                     self.path("session-bus.log"), environment=self.environment)
        waiting.wait_until(lambda: os.path.exists(self.path("session-bus")), "the session bus")

    def _move_in(self):
        """Lets the libraries of this process, the accessibility library above all, find the desktop."""
        for key in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
            os.environ[key] = self.environment[key]
        os.environ.pop("AT_SPI_BUS_ADDRESS", None)

    def _start_window_manager(self, fill):
        configuration = self.path("window-manager.xml")
        with open(configuration, "w", encoding="utf-8") as target:
            target.write(_WINDOW_MANAGER.format(maximized="<maximized>yes</maximized>" if fill else ""))
        ready = self.path("window-manager-ready")
        ChildProcess(["openbox", "--sm-disable", "--config-file", configuration, "--startup", f"touch {ready}"],
                     self.path("window-manager.log"), environment=self.environment)
        waiting.wait_until(lambda: os.path.exists(ready), "the window manager")

    def _report(self):
        return f"The screen at that moment: {self.failure_picture(lambda path: Screenshot(self).save(path))}"
