"""A loopback service that knows one account and sends a prepared list of projects when it is told to."""

import http.server
import json
import threading

SESSION = {"user": {"display_name": "Bench", "plan_name": "Free", "gdps_limit_label": "200000"},
           "available_cores": [{"key": "core", "label": "Core"}]}
_LIMIT = 60


def project_list(count):
    """A reply with that many projects, each as large as a project of the local service."""
    projects = [{
        "core_label": "Stable 2.2",
        "display_name": f"Neon Burst {number:06}",
        "manage_url": f"http://127.0.0.1:8765/gdps/neon-burst-{number:06}/manage",
        "public_url": f"http://127.0.0.1:8765/gdps/neon-burst-{number:06}",
        "slug": f"neon-burst-{number:06}",
        "status": "online" if number % 3 else "maintenance",
    } for number in range(count)]
    return json.dumps({"instances": projects}, separators=(",", ":")).encode()


class CannedService:
    """`hold` a list back, wait until it is asked for, `send` it."""

    def __init__(self):
        self._body = b""
        self._asked, self._open, self._sent = threading.Event(), threading.Event(), threading.Event()
        service = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                if self.path == "/api/pc/instances":
                    service._answer_list(self)
                else:
                    _answer(self, json.dumps(SESSION).encode())

            def log_message(self, *_arguments):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        self.address = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def hold(self, body):
        self._body = body
        for event in (self._asked, self._open, self._sent):
            event.clear()

    def wait_until_asked(self):
        self._wait_for(self._asked, "the request for the list")

    def send(self):
        """Returns when all of the list is on its way."""
        self._open.set()
        self._wait_for(self._sent, "the list to be taken")

    def close(self):
        self._open.set()
        self._server.shutdown()
        self._server.server_close()

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.close()

    def _answer_list(self, request):
        self._asked.set()
        self._wait_for(self._open, "the word to send the list")
        _answer(request, self._body)
        self._sent.set()

    def _wait_for(self, event, what):
        if not event.wait(_LIMIT):
            raise TimeoutError(f"waited in vain for {what}")


def _answer(request, body):
    request.send_response(200)
    request.send_header("Content-Type", "application/json")
    request.send_header("Content-Length", str(len(body)))
    request.end_headers()
    request.wfile.write(body)
