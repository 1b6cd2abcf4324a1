"""Shared by the service's tests: an application with a clock that tests can set, and clients for it."""

import threading
from concurrent.futures import ThreadPoolExecutor

import hypothesis
import pytest

from tarnwick.application import create_app
from tarnwick.store import MINUTE, Store

ADDRESS = "http://127.0.0.1:8765"
DEVICE = "twqt-4e94914f0000"
FORM_TOKEN = "0123456789abcdef" * 4

hypothesis.settings.register_profile("service", database=None, deadline=None, print_blob=True)
hypothesis.settings.load_profile("service")


class Clock:
    now = 1767323045000  # 2 January 2026, 03:04:05 UTC

    def advance(self, minutes=0, milliseconds=0):
        self.now += minutes * MINUTE + milliseconds


class Visitor:
    """A desktop client with `get` and `post`, and a web browser with `read` and `send`."""

    def __init__(self, store):
        self.client = create_app(store).test_client(use_cookies=False)

    def open(self, method, path, data=None, token=None, **options):
        if token:
            options["headers"] = {"Authorization": f"Bearer {token}"}
        return self.client.open(path, method=method, base_url=ADDRESS, data=data, **options)

    def get(self, path, token=None, **options):
        return self.open("GET", path, None, token, **options)

    def post(self, path, fields=None, token=None, **options):
        return self.open("POST", path, fields, token, **options)

    def read(self, path):
        return self.get(path).text

    def send(self, path, **fields):
        cookie = {"Cookie": f"tarnwick_form={FORM_TOKEN}"}
        return self.post(path, {"form_token": FORM_TOKEN, **fields}, headers=cookie)

    def start_link(self, device=DEVICE):
        return self.post("/api/pc/link/start", {"device_id": device}).json["code"]

    def decide(self, code, decision="approve"):
        return self.send("/link/pc", code=code, decision=decision)

    def poll(self, code, device=DEVICE):
        return self.get("/api/pc/link/poll", query_string={"code": code, "device_id": device})

    def link(self, device=DEVICE):
        """The token of a new desktop."""
        code = self.start_link(device)
        self.decide(code)
        return self.poll(code, device).json["access_token"]

    def create(self, token, **fields):
        return self.post("/api/pc/instances/create", {"display_name": "Star Field", **fields}, token)


def answer(reply):
    """Status and message of an API reply."""
    return reply.status_code, reply.json["message"]


def at_once(visitors, act):
    """Runs the same action for all visitors at the same time; returns the sorted statuses."""
    barrier = threading.Barrier(len(visitors))
    with ThreadPoolExecutor(len(visitors)) as pool:
        return sorted(pool.map(lambda visitor: [barrier.wait(), act(visitor).status_code][1], visitors))


@pytest.fixture
def clock():
    return Clock()


@pytest.fixture
def visitor(clock):
    return Visitor(Store(":memory:", lambda: clock.now))


@pytest.fixture
def visitors(tmp_path):
    """Eight, each with its own connection to one data file."""
    return [Visitor(Store(tmp_path / "service.sqlite")) for _ in range(8)]


@pytest.fixture
def token(visitor):
    return visitor.link()
