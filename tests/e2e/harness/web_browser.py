"""A real Chromium in headless mode, used through the WebDriver protocol."""

import base64
import json
import shutil
import urllib.error
import urllib.request

from harness import waiting
from harness.child_process import ChildProcess
from harness.waiting import NotThere, wait_until

_ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the protocol's name for a reference to an element
_LIMIT = 30

TAB = "\ue004"
SPACE = " "

# Uses no other host than this one, and nothing runs in the background.
SWITCHES = """--no-sandbox --disable-gpu --disable-quic --no-first-run --no-default-browser-check --no-proxy-server
    --disable-background-networking --disable-component-update --disable-sync --disable-dev-shm-usage
    --disable-default-apps --disable-extensions""".split() + [
    "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"
]


class WebBrowser:
    """Finds elements by the texts that a user reads."""

    def __init__(self, desktop, width=1000, height=860):
        self._desktop = desktop
        self._driver = ChildProcess(
            ["chromedriver", "--port=0"], desktop.path("webdriver.log"), environment=desktop.environment
        )
        port = self._driver.wait_for_line("ChromeDriver was started successfully on port ").rstrip(".")
        self._base = f"http://127.0.0.1:{port}/session"
        switches = [*SWITCHES, "--headless=new", "--mute-audio", "--hide-scrollbars", f"--window-size={width},{height}"]
        options = {
            "binary": shutil.which("chromium"),
            "args": [*switches, f"--user-data-dir={desktop.path('browser')}"],
        }
        session = self._call("POST", "", {"capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}})
        self._base += "/" + session["sessionId"]
        waiting.failure_reporters.append(self._report)

    def close(self):
        waiting.failure_reporters.remove(self._report)
        try:
            self._call("DELETE", "")
        finally:
            self._driver.end()

    def open(self, address):
        self._call("POST", "/url", {"url": address})

    def follow_desktop(self):
        """Waits for the next address that the desktop gets, and opens it."""
        self.open(self._desktop.opened.next())

    def address(self):
        return self._call("GET", "/url")

    def heading(self):
        return self._text_of("//h1")

    def content(self):
        """All text of the page, as shown."""
        return self._text_of("//main")

    def value(self, label):
        """The value of the field with that label."""
        field = self._find(f"//input[@id = //label[normalize-space() = '{label}']/@for]")
        return self._call("GET", f"/element/{field}/property/value")

    def press(self, name):
        """Clicks the button or link with that name."""
        element = self._find(f"//*[self::button or self::a][normalize-space() = '{name}' or @aria-label = '{name}']")
        self._call("POST", f"/element/{element}/click", {})

    def press_key(self, key):
        """One key press in the page: a character, or one of the names above."""
        presses = [{"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]
        self._call("POST", "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": presses}]})

    def focused(self):
        """The text of the element with the keyboard focus."""
        element = self._call("GET", "/element/active")[_ELEMENT]
        return self._call("GET", f"/element/{element}/text")

    def wait_for_heading(self, *headings):
        """Waits for a page with one of these headings."""
        wait_until(lambda: self.heading() in headings, f"a page with the heading '{' or '.join(headings)}'")

    def wait_for_content(self, text):
        wait_until(lambda: text in self.content(), f"a page that says '{text}'")

    def save_picture(self, path):
        with open(path, "wb") as target:
            target.write(base64.b64decode(self._call("GET", "/screenshot")))

    def _report(self):
        return f"The browser was at {self.address()}. Its page: {self._desktop.failure_picture(self.save_picture)}"

    def _text_of(self, path):
        return self._call("GET", f"/element/{self._find(path)}/text")

    def _find(self, path):
        return self._call("POST", "/element", {"using": "xpath", "value": path})[_ELEMENT]

    def _call(self, method, path, values=None):
        body = None if values is None else json.dumps(values).encode()
        request = urllib.request.Request(self._base + path, body, {"Content-Type": "application/json"}, method=method)
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=_LIMIT) as reply:
                return json.load(reply)["value"]
        except urllib.error.HTTPError as error:
            fault = json.load(error)["value"]
            raise NotThere(f"the browser says: {fault['error']}: {fault['message'].splitlines()[0]}") from None
