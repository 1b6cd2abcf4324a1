"""A virtual screen with nothing on it: no window manager and no session bus, whose work would be measured too."""

import os
import select
import shutil
import tempfile

from harness.child_process import ChildProcess
from harness.fonts import write_font_configuration

_START_LIMIT = 30


class QuietScreen:
    """Keeps its pixels in a file that the watchers read. Nothing of the user's own settings gets in."""

    width, height = 1280, 1000

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="tarnwick-bench-")
        self.file = self.path("Xvfb_screen0")
        os.mkdir(self.path("runtime"), 0o700)
        self.environment = {
            "PATH": os.environ.get("PATH", os.defpath),
            "LANG": "C.UTF-8",
            "HOME": self.folder,
            "TMPDIR": self.folder,
            "XDG_RUNTIME_DIR": self.path("runtime"),
            "FONTCONFIG_FILE": write_font_configuration(self.folder),
            "QT_QPA_PLATFORM": "xcb",
            # Without a bus named, the library would start one.
            "DBUS_SESSION_BUS_ADDRESS": "disabled:",
        }
        self._server = self._start_server()

    def path(self, name):
        return os.path.join(self.folder, name)

    def close(self):
        self._server.end()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.close()

    def _start_server(self):
        read_end, write_end = os.pipe()
        with os.fdopen(read_end) as number:
            try:
                server = ChildProcess(
                    ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{self.width}x{self.height}x24",
                     "-dpi", "96", "-nocursor", "-fbdir", self.folder, "-nolisten", "tcp", "-noreset"],
                    self.path("screen.log"), environment=self.environment, pass_fds=(write_end,))
            finally:
                os.close(write_end)
            told, _, _ = select.select([number], [], [], _START_LIMIT)
            display = number.readline().strip() if told else ""
        if not display:
            raise RuntimeError("The virtual screen did not start: " + server.text())
        self.environment["DISPLAY"] = ":" + display
        return server
