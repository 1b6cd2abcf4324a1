"""The service's data, in one SQLite file."""

import hashlib
import os
import re
import secrets
import sqlite3
import time
from pathlib import Path

SCHEMA = Path(__file__).with_name("schema.sql")
# Must match schema.sql.
APPLICATION_ID = 0x54575043
SCHEMA_VERSION = 2

CODE_PREFIX = "TWPC"
CODE_CHARACTERS = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789"  # Without 0 and O, 1 and I, which look alike.

# All times are in milliseconds.
MINUTE = 60 * 1000
CODE_LIFE = 10 * MINUTE
CODE_MEMORY = 24 * 60 * MINUTE  # So that a user who comes back late reads "expired", not "unknown".

PROJECTS = "SELECT projects.*, cores.label AS core_label FROM projects JOIN cores ON cores.key = core_key"


def now():
    return time.time_ns() // 1_000_000


class Store:
    """One connection. A change of several statements takes SQLite's write lock at its start."""

    def __init__(self, path, clock=now):
        self.clock = clock
        if path != ":memory:":
            os.close(os.open(path, os.O_RDWR | os.O_CREAT, 0o600))  # SQLite would make it readable by others.
        self.db = sqlite3.connect(path, isolation_level=None, check_same_thread=False)
        self.db.row_factory = sqlite3.Row
        with self.change():
            self.prepare()
        if path != ":memory:":
            os.chmod(path, 0o600)  # Another program may have created it.

    def change(self):
        """A transaction, for a `with` statement."""
        self.db.execute("BEGIN IMMEDIATE")
        return self.db

    def prepare(self):
        if not self.one("SELECT * FROM sqlite_master"):
            for statement in SCHEMA.read_text("utf-8").split("\n\n"):
                self.db.execute(statement, {"now": self.clock()})
        marks = self.one("PRAGMA application_id")[0], self.one("PRAGMA user_version")[0]
        if marks != (APPLICATION_ID, SCHEMA_VERSION):
            raise sqlite3.DatabaseError("the file is a database of another program or version")

    def all(self, sql, *values):
        return self.db.execute(sql, values).fetchall()

    def one(self, sql, *values):
        return self.db.execute(sql, values).fetchone()

    def run(self, sql, *values):
        """Returns whether it changed any row."""
        return self.db.execute(sql, values).rowcount > 0

    # The account

    def account(self):
        return self.one("SELECT *, (SELECT count(*) FROM projects) AS gdps_count FROM account")

    def cores(self):
        return self.all("SELECT key, label FROM cores ORDER BY position")

    # Link codes

    def start_link(self, device_id):
        """A new code. It replaces the device's older one."""
        code = f"{CODE_PREFIX}-" + "".join(secrets.choice(CODE_CHARACTERS) for _ in range(6))
        with self.change():
            self.run("DELETE FROM link_codes WHERE created_at < ?", self.clock() - CODE_MEMORY)
            self.run(
                "UPDATE link_codes SET state = 'replaced' WHERE device_id = ? AND state IN ('pending', 'approved')",
                device_id,
            )
            self.run("INSERT INTO link_codes VALUES (?, ?, 'pending', ?)", code, device_id, self.clock())
        return code

    def link_code(self, code):
        """The row, with `left` for the time until it expires, and with the state `expired` after that."""
        row = self.one("SELECT * FROM link_codes WHERE code = ?", code)
        if row is None:
            return None
        left = max(0, row["created_at"] + CODE_LIFE - self.clock())
        is_over = left == 0 and row["state"] in ("pending", "approved")
        return {**row, "left": left, "state": "expired" if is_over else row["state"]}

    def settle(self, code, before, after):
        """Changes the state from before to after; returns whether it did. One statement: only one caller succeeds."""
        return self.run(
            "UPDATE link_codes SET state = ? WHERE code = ? AND state = ? AND created_at > ?",
            after,
            code,
            before,
            self.clock() - CODE_LIFE,
        )

    def collect_token(self, code):
        """Uses up an approved code and returns its new token; None if the code is no longer approved."""
        with self.change():
            if not self.settle(code, "approved", "used"):
                return None
            token = secrets.token_hex(32)
            device_id = self.link_code(code)["device_id"]
            self.run("UPDATE desktops SET revoked = TRUE WHERE device_id = ?", device_id)
            self.run(
                "INSERT INTO desktops (device_id, token_hash, linked_at, last_seen_at) VALUES (?, ?, ?, ?)",
                device_id,
                hashed(token),
                self.clock(),
                self.clock(),
            )
            return token

    # Linked desktops

    def desktops(self):
        return self.all("SELECT * FROM desktops WHERE NOT revoked ORDER BY id")

    def desktop_of(self, token):
        desktop = self.one("SELECT * FROM desktops WHERE token_hash = ?", hashed(token))
        # "Last seen" is shown in minutes, so most requests need not write.
        if desktop and self.clock() - desktop["last_seen_at"] >= MINUTE:
            self.run("UPDATE desktops SET last_seen_at = ? WHERE id = ?", self.clock(), desktop["id"])
        return desktop

    def revoke(self, desktop_id):
        return self.run("UPDATE desktops SET revoked = TRUE WHERE id = ? AND NOT revoked", desktop_id)

    # Projects

    def projects(self):
        return self.all(f"{PROJECTS} ORDER BY id")

    def recent_projects(self):
        return self.all(f"{PROJECTS} WHERE public_listing ORDER BY id DESC")

    def project(self, slug):
        return self.one(f"{PROJECTS} WHERE slug = ?", slug)

    def create_project(self, values):
        """Returns None if the plan's limit is reached."""
        with self.change():
            account = self.account()
            if account["gdps_count"] >= account["gdps_limit"]:
                return None
            slug = self.free_slug(values["display_name"])
            row = {**values, "slug": slug, "created_at": self.clock()}
            names = ", ".join(row)
            self.run(f"INSERT INTO projects ({names}) VALUES ({', '.join('?' * len(row))})", *row.values())
        return self.project(slug)

    def free_slug(self, name):
        stem = re.sub("[^a-z0-9]+", "-", name.lower())[:48].strip("-") or "gdps"
        slug, number = stem, 1
        while self.project(slug):
            number += 1
            slug = f"{stem}-{number}"
        return slug

    def set_status(self, slug, status):
        self.run("UPDATE projects SET status = ? WHERE slug = ?", status, slug)

    def delete_project(self, slug):
        self.run("DELETE FROM projects WHERE slug = ?", slug)


def hashed(token):
    return hashlib.sha256(token.encode()).hexdigest()
