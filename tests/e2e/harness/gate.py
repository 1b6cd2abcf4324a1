"""A proxy between the client and the service, to check the window while a request is in flight."""

import collections
import contextlib
import http.client
import http.server
import json
import queue
import threading
import urllib.parse

# A test has forgotten a request that waits longer than this.
_LIMIT = 60


class Gate:
    """Holds every request until the test decides what happens to one with its path: to a waiting request, or to the
    next one that arrives.
    """

    def __init__(self, service):
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Handler)
        self._server.daemon_threads = True
        self._server.block_on_close = False
        self._server.service = urllib.parse.urlsplit(service).netloc
        self._server.verdicts = collections.defaultdict(queue.SimpleQueue)
        self._server.closed = False
        threading.Thread(target=self._server.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()
        self.address = f"http://127.0.0.1:{self._server.server_port}"

    def let_through(self, path):
        """The service replies."""
        self._server.verdicts[path].put(_Handler.ask)

    def answer(self, path, status, values):
        """The service does not get the request: the reply has this status and these values as JSON."""
        reply = status, "application/json", json.dumps(values).encode()
        self._server.verdicts[path].put(lambda _handler, _body: reply)

    def hang_up(self, path):
        """The connection closes without a reply."""
        self._server.verdicts[path].put(lambda _handler, _body: None)

    def close(self):
        """From now on no request gets a reply, not even a waiting one, as if the service had been stopped."""
        if self._server.closed:
            return
        self._server.shutdown()
        self._server.server_close()
        self._server.closed = True
        for path in list(self._server.verdicts):
            self.hang_up(path)


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        verdicts = self.server.verdicts[urllib.parse.urlsplit(self.path).path]
        # Either close() finds the queue of this path, or this request finds that the gate is closed.
        if self.server.closed:
            return
        with contextlib.suppress(queue.Empty):
            if reply := verdicts.get(timeout=_LIMIT)(self, body):
                status, kind, content = reply
                self.send_response(status)
                self.send_header("Content-Type", kind)
                self.end_headers()
                self.wfile.write(content)

    do_POST = do_GET

    def log_message(self, format, *arguments):
        pass

    def ask(self, body):
        """Status, type and content of the service's reply."""
        with contextlib.closing(http.client.HTTPConnection(self.server.service, timeout=_LIMIT)) as service:
            passed_on = {name: self.headers[name] for name in ("Authorization", "Content-Type") if name in self.headers}
            service.request(self.command, self.path, body or None, passed_on)
            answer = service.getresponse()
            return answer.status, answer.headers["Content-Type"], answer.read()
