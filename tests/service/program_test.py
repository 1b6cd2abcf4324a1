"""The program: first line, options, exit status, data file."""

import re
import select
import signal
import socket
import sqlite3
import stat
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing
from functools import cached_property
from http.client import HTTPConnection
from pathlib import Path
from urllib.parse import urlencode

import pytest
from conftest import Visitor

from tarnwick.store import Store

ROOT = Path(__file__).parents[2]
FORM = {"Content-Type": "application/x-www-form-urlencoded"}


class Program(subprocess.Popen):
    def __init__(self, *options):
        command = [sys.executable, "-m", "tarnwick", *map(str, options)]
        super().__init__(command, cwd=ROOT, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def __exit__(self, *_):
        self.kill()
        self.communicate()

    @cached_property
    def port(self):
        """From the first line. Without one in 20 seconds the test fails."""
        (output,), _, _ = select.select([self.stdout], [], [], 20)
        return int(re.fullmatch(r"Tarnwick service on http://127\.0\.0\.1:(\d+)\n", output.readline())[1])

    def connect(self, sent):
        connection = socket.create_connection(("127.0.0.1", self.port), timeout=10)
        connection.sendall(sent)
        return connection

    def status(self, method, path, fields=()):
        with closing(HTTPConnection("127.0.0.1", self.port, timeout=10)) as connection:
            connection.request(method, path, urlencode(fields), FORM)
            return connection.getresponse().status

    def outcome(self, number=0):
        """Exit code, output and errors, after sending the signal unless it is 0."""
        with self:
            self.send_signal(number)
            output, errors = self.communicate(timeout=20)
        return self.returncode, output, errors


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_a_signal_ends_it_cleanly_with_open_connections(number):
    with Program() as program, program.connect(b""), program.connect(b"POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\nx"):
        assert program.status("GET", "/") == 200
        assert program.outcome(number) == (0, "GET / 200\n", "")


def test_a_wrong_option_is_a_usage_error():
    for options in (["--wat"], ["--port"], ["--port", "65536"], ["--data"], ["extra"]):
        code, output, errors = Program(*options).outcome()
        assert (code, output) == (2, "") and "\npython3 -m tarnwick: error: " in errors


def test_a_port_in_use_is_a_failure_of_one_line():
    with Program() as first:
        line = f"tarnwick: cannot listen on port {first.port}; is it in use?\n"
        assert Program("--port", first.port).outcome() == (1, "", line)
        assert first.status("GET", "/") == 200


def test_an_unusable_data_file_is_left_alone_and_a_failure_of_one_line(tmp_path):
    (tmp_path / "letter").write_text("This is a letter and not a database, as its first line tells already.")
    notes = sqlite3.connect(tmp_path / "notes")
    notes.execute("CREATE TABLE notes (text TEXT)")
    Store(tmp_path / "newer").run("PRAGMA user_version = 3")
    for name in ("no folder/file", ".", "letter", "notes", "newer"):
        code, output, errors = Program("--data", tmp_path / name).outcome()
        assert (code, output) == (1, "") and re.fullmatch("tarnwick: cannot use the data file: .+\n", errors)
    assert notes.execute("SELECT name FROM sqlite_master").fetchall() == [("notes",)]


def test_what_was_answered_survives_a_kill_and_the_rest_is_whole_or_absent(tmp_path):
    path = tmp_path / "service.sqlite"
    token = Visitor(Store(path)).link()
    assert stat.S_IMODE(path.stat().st_mode) == 0o600 and token.encode() not in path.read_bytes()
    path.chmod(0o644)
    body = urlencode({"display_name": "Torn", "description": "d" * 3000})
    outcomes = set()
    for patience in (0.0001, 0.002, 0.004, 0.008, 10):
        with Program("--data", path) as program, closing(HTTPConnection("127.0.0.1", program.port)) as connection:
            connection.request("POST", "/api/pc/instances/create", body, FORM | {"Authorization": f"Bearer {token}"})
            is_answered = bool(select.select([connection.sock], [], [], patience)[0])
            program.outcome(signal.SIGKILL)
        outcomes.add(is_answered)
        visitor = Visitor(Store(path))
        assert stat.S_IMODE(path.stat().st_mode) == 0o600
        instances = visitor.get("/api/pc/instances", token).json["instances"]
        assert len(instances) in ((3,) if is_answered else (2, 3))
        assert all(each["description"] == "d" * 3000 for each in instances[2:])
        visitor.send("/gdps/torn/delete", confirm="yes")
    assert outcomes == {True, False}


def test_limits_and_hosts_hold_on_the_wire():
    with Program() as program:
        for more, status in ((0, 200), (1, 413)):
            fields = {"device_id": "d", "rest": "x" * (64 * 1024 - len("device_id=d&rest=") + more)}
            assert program.status("POST", "/api/pc/link/start", fields) == status
        with pytest.raises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.2", program.port), timeout=10)
        with ThreadPoolExecutor(8) as pool:
            starts = pool.map(lambda _: program.status("POST", "/api/pc/link/start", {"device_id": "d"}), range(80))
            assert set(starts) == {200}
        assert [program.status("GET", "/" + "a" * length) for length in (15000, 17000)] == [404, 431]
        for hosts in (b"", b"Host: localhost\r\nHost: evil.example\r\n"):
            with program.connect(b"GET / HTTP/1.1\r\n" + hosts + b"\r\n") as connection:
                assert connection.recv(100).startswith(b"HTTP/1.1 421 ")
        assert program.outcome(signal.SIGTERM)[2] == ""
