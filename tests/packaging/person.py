"""Runs a desktop on the host as the user ID that the client has in the fresh machine."""

import contextlib
import os
import pathlib
import subprocess
import tempfile

from fresh_machine.roots import PERSON

NUMBER = 1000  # the user ID in a fresh machine


def be_known_here():
    """Adds the user to /etc/passwd, because a message bus refuses unknown users. Needs its own mount namespace."""
    accounts = pathlib.Path("/etc/passwd").read_text(encoding="utf-8")
    if f":{NUMBER}:" not in accounts:
        with tempfile.NamedTemporaryFile("w", encoding="utf-8") as known:
            known.write(f"{accounts}{PERSON}:x:{NUMBER}:{NUMBER}::/nonexistent:/bin/sh\n")
            known.flush()
            os.chmod(known.name, 0o644)
            subprocess.run(["mount", "--bind", known.name, "/etc/passwd"], check=True)


@contextlib.contextmanager
def being_person():
    """Runs the body as the user: files and processes that it creates belong to the user."""
    groups = os.getgroups()
    os.setgroups([])
    os.setresgid(NUMBER, NUMBER, 0)
    os.setresuid(NUMBER, NUMBER, 0)
    try:
        yield
    finally:
        os.setresuid(0, 0, 0)
        os.setresgid(0, 0, 0)
        os.setgroups(groups)
