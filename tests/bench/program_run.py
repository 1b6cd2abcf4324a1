"""One run of a program on a virtual screen, observed from outside: through the X server and its pixels."""

import collections
import ctypes
import mmap
import os
import select
import shutil
import signal
import struct
import threading
import time

import processes
from harness.client_process import REPOSITORY
from Xlib import X, display, error
from Xlib.protocol.event import ClientMessage

# A colour that no program draws.
_ROOT_COLOUR = 0x0001FE03
# Splash screens, tips and invisible windows are smaller.
_LEAST_WIDTH, _LEAST_HEIGHT = 400, 300
# A shadow or a rounded corner may remain. The pixels are checked in a coarse grid, ten times a millisecond.
_WHOLE_PICTURE = 0.95
_GRID, _GLANCE = 32, 0.0001
_LIMIT = 70

_PR_SET_TIMERSLACK = 29
ctypes.CDLL(None).prctl(_PR_SET_TIMERSLACK, 1)


class ProgramRun:
    """Starts the program and waits until its window is completely drawn. `focus` then gives it the keyboard focus."""

    def __init__(self, screen, words, home=None, focus=False):
        self._screen = screen
        environment = screen.environment | {"QT_QPA_PLATFORM": "xcb"} | ({"HOME": str(home)} if home else {})
        self._display = display.Display(screen.environment["DISPLAY"])
        root = self._display.screen().root
        root.change_attributes(background_pixel=_ROOT_COLOUR, event_mask=X.SubstructureNotifyMask)
        root.clear_area()
        self._display.sync()
        program = shutil.which(str(words[0]))
        os.chdir(REPOSITORY)  # where the client finds the logo
        start = time.perf_counter_ns()
        self.pid = os.posix_spawn(
            program,
            [str(word) for word in words],
            environment,
            setpgroup=0,
            file_actions=[(os.POSIX_SPAWN_OPEN, number, os.devnull, os.O_RDWR, 0) for number in (0, 1, 2)],
        )
        try:
            self._wait_for_picture()
            self.first_frame_ms = (time.perf_counter_ns() - start) / 1e6
            self.first_frame_processor_ms = processes.processor_ms(self.pid)
        except BaseException:
            self.end()
            raise
        if focus:
            self._display.set_input_focus(self.window, X.RevertToParent, X.CurrentTime)
            self._display.sync()

    def end(self):
        os.killpg(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        self._display.close()

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.end()

    def ask_for_answers(self):
        """Starts pinging the window once a millisecond."""
        return AnswerWatch(self._screen.environment["DISPLAY"], self.window.id)

    def _wait_for_picture(self):
        end = time.monotonic() + _LIMIT
        self.window = None
        with open(self._screen.file, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as dump:
            # An X window dump: 25 big-endian numbers, then a colour map, then four bytes for each pixel.
            header = struct.unpack(">25I", dump[:100])
            first, line = (header[0] + header[19] * 12) // 4, header[12] // 4
            with memoryview(dump) as content, content.cast("I") as pixels:
                while not (self.window or self._find_window()) or self._painted(pixels[first:], line) < _WHOLE_PICTURE:
                    if time.monotonic() > end or os.waitid(os.P_PID, self.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT):
                        raise RuntimeError(f"no window of process {self.pid}")
                    time.sleep(_GLANCE)

    def _find_window(self):
        """The first main window. Later windows are ignored."""
        while self.window is None and self._display.pending_events():
            event = self._display.next_event()
            if event.type == X.MapNotify:
                try:
                    area = event.window.get_geometry()
                except error.BadDrawable:  # it has been closed already
                    continue
                if area.width >= _LEAST_WIDTH and area.height >= _LEAST_HEIGHT:
                    self.window, self._area = event.window, area
        return self.window

    def _painted(self, pixels, line):
        """The share of the window's area that no longer has the root window's colour."""
        left, right = max(self._area.x, 0) + 2, min(self._area.x + self._area.width, self._screen.width) - 2
        bottom = min(self._area.y + self._area.height, self._screen.height) - 2
        rows = range(max(self._area.y, 0) + 2, bottom, _GRID)
        points = [pixels[row * line + left : row * line + right : _GRID].tolist() for row in rows]
        free = sum(row.count(_ROOT_COLOUR) for row in points)
        return 1 - free / sum(map(len, points))


class AnswerWatch(threading.Thread):
    """Pings a window until `longest_ms` is called, as a window manager does before it says "not responding"."""

    def __init__(self, screen, window):
        super().__init__(daemon=True)
        self._display = display.Display(screen)
        self._window = self._display.create_resource_object("window", window)
        self._ending = threading.Event()
        self._longest = 0.0
        self.start()

    def longest_ms(self):
        """The longest time that the window took to answer a ping."""
        self._ending.set()
        self.join(_LIMIT)
        if self.is_alive():
            raise RuntimeError("the window did not answer")
        self._display.close()
        return self._longest * 1e3

    def run(self):
        protocols, ping = (self._display.intern_atom(name) for name in ("WM_PROTOCOLS", "_NET_WM_PING"))
        self._display.screen().root.change_attributes(event_mask=X.StructureNotifyMask | X.SubstructureNotifyMask)
        asked, due = collections.deque(), time.perf_counter()
        while asked or not self._ending.is_set():
            if not self._ending.is_set() and time.perf_counter() >= due:
                question = ping, len(asked) + 1, self._window.id, 0, 0
                self._window.send_event(ClientMessage(window=self._window, client_type=protocols, data=(32, question)))
                self._display.flush()
                asked.append(time.perf_counter())
                due += 0.001
            select.select(
                [self._display], [], [], max(due - time.perf_counter(), 0) if not self._ending.is_set() else 1
            )
            while self._display.pending_events():
                event = self._display.next_event()
                # Answers arrive in order.
                if event.type == X.ClientMessage and event.data[1][0] == ping and asked:
                    self._longest = max(self._longest, time.perf_counter() - asked.popleft())
