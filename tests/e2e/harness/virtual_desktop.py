"""An invisible desktop: a screen, a window manager, and a session bus with the accessibility bus."""

import atexit
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from harness import waiting
from harness.child_process import ChildProcess, end_all
from harness.screen import screenshot


def _font_file(name):
    """The path of a font, which depends on the distribution."""
    return str(next(pathlib.Path("/usr/share/fonts").rglob(name), name))


# The same fonts on every machine, whatever else is installed, drawn in the same way.
TEXT_FONT = _font_file("DejaVuSans.ttf")
BOLD_FONT = _font_file("DejaVuSans-Bold.ttf")
_EMOJI_FONT = _font_file("NotoColorEmoji.ttf")
_FONTS = f"""<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <dir>{os.path.dirname(TEXT_FONT)}</dir>
  <dir>{os.path.dirname(_EMOJI_FONT)}</dir>
  <cachedir>{{cache}}</cachedir>
  <selectfont>
    <rejectfont><glob>*</glob></rejectfont>
    <acceptfont><glob>{TEXT_FONT}</glob><glob>{BOLD_FONT}</glob><glob>{_EMOJI_FONT}</glob></acceptfont>
  </selectfont>
  <match target="pattern">
    <edit name="family" mode="append" binding="strong">
      <string>DejaVu Sans</string><string>Noto Color Emoji</string>
    </edit>
  </match>
  <match target="font">
    <edit name="antialias" mode="assign"><bool>true</bool></edit>
    <edit name="hinting" mode="assign"><bool>true</bool></edit>
    <edit name="hintstyle" mode="assign"><const>hintslight</const></edit>
    <edit name="rgba" mode="assign"><const>none</const></edit>
    <edit name="lcdfilter" mode="assign"><const>lcdnone</const></edit>
  </match>
</fontconfig>
"""

_WINDOW_MANAGER = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <theme><keepBorder>no</keepBorder></theme>
  <keyboard><keybind key="A-F4"><action name="Close"/></keybind></keyboard>
  <applications>
    <application class="Tarnwick" type="normal">
      <decor>no</decor>
      <position force="yes"><x>0</x><y>0</y></position>
    </application>
  </applications>
</openbox_config>
"""

# The time limit for the start of the virtual screen, in seconds.
_START_LIMIT = 30


class VirtualScreen:
    """An empty screen. `file` always contains its current pixels."""

    def __init__(self, width=1280, height=1000):
        self.width = width
        self.height = height
        self.folder = tempfile.mkdtemp(prefix="tarnwick-screen-")
        atexit.register(self.close)
        self.file = self.path("Xvfb_screen0")
        self.environment = self._base_environment()
        self._start()

    def path(self, name):
        """A path in the screen's own folder, which is removed at its end."""
        return os.path.join(self.folder, name)

    def close(self):
        self._server.end()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.close()

    def _base_environment(self):
        """Of the user's environment, only the search path is kept: themes and settings would change the pictures."""
        os.mkdir(self.path("runtime"), 0o700)
        for font in (TEXT_FONT, BOLD_FONT, _EMOJI_FONT):
            if not os.path.exists(font):
                raise FileNotFoundError(f"Install fonts-dejavu-core and fonts-noto-color-emoji: there is no {font}")
        fonts = pathlib.Path(self.path("fonts.conf"))
        fonts.write_text(_FONTS.format(cache=self.path("font-cache")), encoding="utf-8")
        return {
            "PATH": os.environ.get("PATH", os.defpath),
            "LANG": "C.UTF-8",
            "HOME": self.folder,
            "TMPDIR": self.folder,
            "XDG_RUNTIME_DIR": self.path("runtime"),
            "FONTCONFIG_FILE": str(fonts),
            # Otherwise libraries would use the user's own bus.
            "DBUS_SESSION_BUS_ADDRESS": "disabled:",
        }

    def _start(self):
        # The X server chooses and prints a free number, so two screens cannot have the same one.
        command = f"Xvfb -displayfd 1 -screen 0 {self.width}x{self.height}x24 -dpi 96 -nocursor -nolisten tcp -noreset"
        command = [*command.split(), "-fbdir", self.folder]
        self._server = ChildProcess(command, self.path("screen.log"), self.environment)
        told = waiting.wait_until(
            lambda: re.search("^[0-9]+\n", self._server.text(), re.MULTILINE), "the virtual screen", _START_LIMIT
        )
        self.environment["DISPLAY"] = ":" + told[0].strip()


class VirtualDesktop(VirtualScreen):
    """One per process, since the accessibility library connects to one desktop only. `failures` is the folder for
    pictures of failures.
    """

    def __init__(self, width=1280, height=1000, failures=None):
        super().__init__(width, height)
        self._failures = failures or os.environ.get("TARNWICK_E2E_RESULTS")
        self._failure_pictures = 0
        try:
            self.opened = OpenedAddresses(self)
            self._start_session_bus()
            self._start_window_manager()
        except BaseException:
            self.close()
            raise
        # The libraries of this process, mainly the accessibility library, have to find the desktop.
        os.environ.update(
            {key: self.environment[key] for key in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR")}
        )
        os.environ.pop("AT_SPI_BUS_ADDRESS", None)
        waiting.failure_reporters.append(self._report)

    def press(self, *keys):
        """Presses keys one after the other in the active window; 'shift+Tab' is a key combination."""
        self._xdotool("key", *keys)

    def type(self, text):
        self._xdotool("type", "--delay", "4", "--", text)

    def click(self, left, top):
        self._xdotool("mousemove", "--sync", left, top, "click", 1)

    def resize_window(self, width, height):
        """Resizes the client's window, in screen pixels, as a user would with the mouse."""
        window = "search", "--onlyvisible", "--name", "^Tarnwick Client$"
        self._xdotool(*window, "windowsize", width, height)
        waiting.wait_until(
            lambda: f"Geometry: {width}x{height}" in self._xdotool(*window, "getwindowgeometry"),
            f"a window of {width} × {height}",
        )

    def wait_until_drawn(self):
        """When the X server replies, it has drawn everything that it received before."""
        self._xdotool("getmouselocation")

    def failure_picture(self, save):
        """Saves a picture of a failure by a function that takes its path. Returns the path."""
        if not self._failures:
            return "no picture, since TARNWICK_E2E_RESULTS names no folder"
        self._failure_pictures += 1
        path = os.path.join(self._failures, f"{os.getpid()}-{self._failure_pictures}.png")
        save(path)
        return path

    def close(self):
        """Ends everything that was started on the desktop."""
        end_all()
        if self._report in waiting.failure_reporters:
            waiting.failure_reporters.remove(self._report)
        super().close()

    def _xdotool(self, *words):
        command = ["xdotool", *map(str, words)]
        done = subprocess.run(command, env=self.environment, check=True, timeout=30, capture_output=True, text=True)
        return done.stdout

    def _start_session_bus(self):
        # Not the user's own bus: this one starts the accessibility bus, on demand, for this screen.
        address = "unix:path=" + self.path("session-bus")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        ChildProcess(
            ["dbus-daemon", "--session", "--nofork", "--nosyslog", "--nopidfile", "--address=" + address],
            self.path("session-bus.log"),
            environment=self.environment,
        )
        waiting.wait_until(lambda: os.path.exists(self.path("session-bus")), "the session bus")

    def _start_window_manager(self):
        configuration = pathlib.Path(self.path("window-manager.xml"))
        configuration.write_text(_WINDOW_MANAGER)
        ready = self.path("window-manager-ready")
        ChildProcess(
            ["openbox", "--sm-disable", "--config-file", str(configuration), "--startup", f"touch {ready}"],
            self.path("window-manager.log"),
            environment=self.environment,
        )
        waiting.wait_until(lambda: os.path.exists(ready), "the window manager")

    def _report(self):
        return f"The screen at that moment: {self.failure_picture(screenshot(self).save)}"


class OpenedAddresses:
    """The web addresses that programs pass to the desktop: its xdg-open, in a folder of the search path, records each
    of them."""

    def __init__(self, desktop):
        self.folder = desktop.path("opener")
        self._record = pathlib.Path(desktop.path("opened-addresses"))
        self._record.touch()
        self._taken = 0
        os.mkdir(self.folder)
        # It also has to work on systems with nothing but a shell.
        opener = pathlib.Path(self.folder, "xdg-open")
        opener.write_text(f"#!/bin/sh\nprintf '%s\\n' \"$1\" >>'{self._record}'\n", encoding="utf-8")
        opener.chmod(0o755)
        desktop.environment["PATH"] = self.folder + os.pathsep + desktop.environment["PATH"]

    def next(self):
        """Waits for the next address and returns it."""
        waiting.wait_until(lambda: len(self._all()) > self._taken, "an address handed to the browser")
        self._taken += 1
        return self._all()[self._taken - 1]

    def _all(self):
        return [line[:-1] for line in self._record.read_text("utf-8").splitlines(keepends=True) if line.endswith("\n")]
