"""The local service as a separate process."""

import contextlib
import os
import sqlite3
import sys
import time

from harness.child_process import ChildProcess
from harness.client_process import REPOSITORY


class ServiceProcess:
    """Keeps its data file and its port over a restart."""

    def __init__(self, folder, log):
        self.data_file = os.path.abspath(os.path.join(folder, "service.sqlite"))
        self._log = os.path.abspath(log)
        self._port = "0"
        self.start()

    def start(self):
        command = [sys.executable, "-B", "-m", "tarnwick", "--port", self._port, "--data", self.data_file]
        self._process = ChildProcess(command, self._log, folder=REPOSITORY)
        self.address = self._process.wait_for_line("Tarnwick service on ")
        self._port = self.address.rpartition(":")[2]

    def let_time_pass(self, minutes):
        """Makes all link codes older, instead of waiting."""
        self._change("UPDATE link_codes SET created_at = created_at - ?", minutes * 60 * 1000)

    def make_new_again(self, code, name):
        """Gives a link code another name and makes it new."""
        now = time.time_ns() // 1_000_000
        self._change("UPDATE link_codes SET code = ?, created_at = ? WHERE code IN (?, ?)", name, now, code, name)

    def stop(self):
        self._process.end()

    def log(self):
        return self._process.text()

    def _change(self, statement, *values):
        with contextlib.closing(sqlite3.connect(self.data_file, timeout=10)) as data, data:
            data.execute(statement, values)
