"""A real Chromium without a window, used through the WebDriver protocol."""

import base64
import json
import os
import shutil
import sys
import urllib.error
import urllib.request

from harness import open_tab, waiting
from harness.child_process import ChildProcess
from harness.waiting import NotThere, wait_until

_ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the protocol's own name for a reference to an element
_LIMIT = 30

TAB = "\ue004"
SPACE = " "

# Nothing but this machine is looked up or called, and nothing is left running behind the page.
_SWITCHES = [
    "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--no-proxy-server",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
    "--disable-default-apps", "--disable-extensions", "--mute-audio", "--hide-scrollbars",
    "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1",
]


class WebBrowser:
    """One browser, in which the desktop opens the addresses that it is handed, each in a new tab.

    It looks at one tab at a time. Elements are found by the texts that a person reads.
    """

    def __init__(self, desktop, width=1000, height=860):
        chromium = shutil.which("chromium")
        if chromium is None:
            raise FileNotFoundError("Install chromium and chromium-driver.")
        self._desktop = desktop
        profile = desktop.path("browser")
        self._driver = ChildProcess(["chromedriver", "--port=0"], desktop.path("webdriver.log"),
                                    environment=desktop.environment)
        port = self._driver.wait_for_line("ChromeDriver was started successfully on port ").rstrip(".")
        self._base = f"http://127.0.0.1:{port}/session"
        switches = [*_SWITCHES, f"--user-data-dir={profile}", f"--window-size={width},{height}"]
        options = {"binary": chromium, "args": switches}
        session = self._call("POST", "", {"capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}})
        self._base += "/" + session["sessionId"]
        self._known_tabs = set(self._tabs())
        desktop.opened.give_to(sys.executable, "-I", os.path.abspath(open_tab.__file__), profile)
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
        """Waits for the next address that the desktop is handed, and goes to the tab in which it opens by itself."""
        address = self._desktop.opened.next()
        tab = wait_until(lambda: set(self._tabs()) - self._known_tabs, f"a new tab for {address}").pop()
        self._known_tabs.add(tab)
        self._call("POST", "/window", {"handle": tab})
        wait_until(lambda: self.address() == address and self._loaded(), f"{address} in the new tab")

    def address(self):
        return self._call("GET", "/url")

    def heading(self):
        return self._text_of("//h1")

    def content(self):
        """Everything that the page says, as it is shown."""
        return self._text_of("//main")

    def value(self, label):
        """What the field with that label holds."""
        field = self._find(f"//input[@id = //label[normalize-space() = '{label}']/@for]")
        return self._call("GET", f"/element/{field}/property/value")

    def place(self, path):
        """Left, top, width and height of what the XPath finds."""
        place = self._call("GET", f"/element/{self._find(path)}/rect")
        return tuple(round(place[key]) for key in ("x", "y", "width", "height"))

    def page_size(self):
        """Width and height of what can be seen of a page at a time."""
        return tuple(self._run("return [innerWidth, innerHeight]"))

    def press(self, name):
        """Clicks the button or link of that name."""
        element = self._find(f"//*[self::button or self::a][normalize-space() = '{name}' or @aria-label = '{name}']")
        self._call("POST", f"/element/{element}/click", {})

    def press_key(self, key):
        """One key press in the page: a character, or one of the names above."""
        keyboard = {"type": "key", "id": "keyboard",
                    "actions": [{"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]}
        self._call("POST", "/actions", {"actions": [keyboard]})

    def focused(self):
        """The text of the element that the keyboard talks to."""
        element = self._call("GET", "/element/active")[_ELEMENT]
        return self._call("GET", f"/element/{element}/text")

    def wait_for_heading(self, *headings):
        """Waits for a page with one of these."""
        wait_until(lambda: self.heading() in headings, f"a page with the heading '{' or '.join(headings)}'")

    def wait_for_approval(self):
        """The page that follows is fetched after the decision; the desktop may have been quicker to ask for it."""
        self.wait_for_heading("Desktop approved", "Desktop linked")

    def wait_for_content(self, text):
        wait_until(lambda: text in self.content(), f"a page that says '{text}'")

    def save_picture(self, path):
        with open(path, "wb") as target:
            target.write(base64.b64decode(self._call("GET", "/screenshot")))

    def _tabs(self):
        return self._call("GET", "/window/handles")

    def _loaded(self):
        return self._run("return document.readyState") == "complete"

    def _run(self, script):
        return self._call("POST", "/execute/sync", {"script": script, "args": []})

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
