"""A loopback service with one account that sends a prepared list of projects on demand."""

import http.server
import json
import threading

_SESSION = {
    "user": {"display_name": "Bench", "plan_name": "Free", "gdps_limit_label": "200000"},
    "available_cores": [{"key": "core", "label": "Core"}],
}
_LIMIT = 60


def project_list(count):
    """A reply with this many projects, each as large as a project of the local service."""
    projects = [
        {
            "core_label": "Stable 2.2",
            "display_name": f"Neon Burst {number:06}",
            "manage_url": f"http://127.0.0.1:8765/gdps/neon-burst-{number:06}/manage",
            "public_url": f"http://127.0.0.1:8765/gdps/neon-burst-{number:06}",
            "slug": f"neon-burst-{number:06}",
            "status": "online" if number % 3 else "maintenance",
        }
        for number in range(count)
    ]
    return json.dumps({"instances": projects}, separators=(",", ":")).encode()


class CannedService(http.server.ThreadingHTTPServer):
    """Usage: `hold` a list, wait until it is requested, `send` it."""

    daemon_threads = True

    def __init__(self):
        super().__init__(("127.0.0.1", 0), _Handler)
        self.body = b""
        self.asked, self.open, self.sent = threading.Event(), threading.Event(), threading.Event()
        self.address = f"http://127.0.0.1:{self.server_port}"
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def hold(self, body):
        self.body = body
        for event in (self.asked, self.open, self.sent):
            event.clear()

    def wait_until_asked(self):
        wait_for(self.asked, "the request for the list")

    def send(self):
        """Returns when the whole list has been sent."""
        self.open.set()
        wait_for(self.sent, "the list to be taken")


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        if self.path != "/api/pc/instances":
            self._answer(json.dumps(_SESSION).encode())
            return
        self.server.asked.set()
        wait_for(self.server.open, "the call of send")
        self._answer(self.server.body)
        self.server.sent.set()

    def log_message(self, *_arguments):
        pass

    def _answer(self, body):
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)


def wait_for(event, what):
    if not event.wait(_LIMIT):
        raise TimeoutError(f"timed out waiting for {what}")
