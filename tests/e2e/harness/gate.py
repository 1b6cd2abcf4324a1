"""A gate between the client and the service, for looking at the window while a request is under way."""

import collections
import http.client
import http.server
import threading
import urllib.parse

# A request that waits longer than this was forgotten by its test.
_LIMIT = 60

_PASSED_ON = ("Authorization", "Content-Type")


class Gate:
    """Holds every request until the test lets one through to its path, and then passes on the service's answer."""

    def __init__(self, service):
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Handler)
        self._server.daemon_threads = True
        self._server.block_on_close = False
        self._server.service = urllib.parse.urlsplit(service).netloc
        self._server.passes = collections.defaultdict(lambda: threading.Semaphore(0))
        self._server.closed = False
        self._thread = threading.Thread(target=self._server.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True)
        self._thread.start()
        self.address = f"http://127.0.0.1:{self._server.server_port}"

    def let_through(self, path):
        """One request, which waits already or comes later."""
        self._server.passes[path].release()

    def close(self):
        """From now on nobody answers, not even the requests that wait: as when a service goes away."""
        if self._server.closed:
            return
        self._server.shutdown()
        self._server.server_close()
        self._server.closed = True
        for path in list(self._server.passes):
            self.let_through(path)


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self._pass_on()

    def do_POST(self):
        self._pass_on()

    def log_message(self, format, *arguments):
        pass

    def _pass_on(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        let_through = self.server.passes[urllib.parse.urlsplit(self.path).path].acquire(timeout=_LIMIT)
        if not let_through or self.server.closed:
            return
        status, headers, content = self._ask(body)
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(content)

    def _ask(self, body):
        service = http.client.HTTPConnection(self.server.service, timeout=_LIMIT)
        try:
            headers = {name: self.headers[name] for name in _PASSED_ON if name in self.headers}
            service.request(self.command, self.path, body or None, headers)
            answer = service.getresponse()
            return answer.status, [("Content-Type", answer.headers["Content-Type"])], answer.read()
        finally:
            service.close()
