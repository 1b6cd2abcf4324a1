"""The local service, as a process of its own."""

import contextlib
import os
import sqlite3
import time

from harness.child_process import ChildProcess


class ServiceProcess:
    """Keeps its data file and its port over a restart, as a service that comes back does."""

    def __init__(self, program, folder, log):
        self.data_file = os.path.join(folder, "service.sqlite")
        self._program = os.path.abspath(program)
        self._log = log
        self._port = 0
        self._process = None
        self.address = None
        self.start()

    def start(self):
        self._process = ChildProcess([self._program, "--port", str(self._port), "--data", self.data_file], self._log)
        self.address = self._process.wait_for_line("Tarnwick service on ")
        self._port = int(self.address.rsplit(":", 1)[1])

    def let_time_pass(self, minutes):
        """Makes everything that waits for its end this much older, since nobody waits ten minutes for a test."""
        with contextlib.closing(sqlite3.connect(self.data_file, timeout=10)) as data, data:
            data.execute("UPDATE link_codes SET created_at = created_at - ?", (minutes * 60 * 1000,))

    def make_new_again(self, code, name):
        """Gives a link code another name and the age of one that was just made."""
        with contextlib.closing(sqlite3.connect(self.data_file, timeout=10)) as data, data:
            data.execute("UPDATE link_codes SET code = ?, created_at = ? WHERE code IN (?, ?)",
                         (name, time.time_ns() // 1_000_000, code, name))

    def stop(self):
        self._process.end()

    def log(self):
        return self._process.text()
