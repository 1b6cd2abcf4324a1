"""The steps of a first use, with a picture after each."""

import os

from harness.page_visitor import PageVisitor
from harness.screen import part, wait_for_stillness

FIRST_START = "1-first-start.png"
CODE_SHOWN = "2-code-shown.png"
LINKED = "3-linked.png"
CREATED = "4-created.png"

GDPS = {
    "GDPS Name": "Sunset Arcade",
    "Description": "Short levels for a coffee break, with a new one every week.",
    "Tags": "short, weekly, friendly",
}


def fill_form(window):
    """Fills in the creation form; its page must be open."""
    for label, text in GDPS.items():
        window.field(label).set_text(text)


class Walk:
    """Takes a client that is not linked and has the service's address through its first use. `pictures` is the folder
    for the pictures, if they are needed. `size` is another size for the window, in screen pixels.
    """

    def __init__(self, desktop, client, pictures=None, say=lambda step: None, size=None):
        self._desktop = desktop
        self._client = client
        self._pictures = pictures
        self._say = say
        self._size = size
        self._window = None

    def all_steps(self):
        self.first_start()
        self.generate_code()
        self.approve()
        self.create()

    def first_start(self):
        self._window = self._client.start()
        self._window.wait_for_status("Ready to link your Tarnwick account.")
        if self._size is not None:
            self._desktop.resize_window(*self._size)
        # The next key press goes there, and a picture must not contain a blinking text cursor.
        self._window.button("Generate Link Code").take_focus()
        self._picture(FIRST_START, "Started: ready to link")

    def generate_code(self):
        self._window.press("Generate Link Code")
        code = self._window.link_code()
        self._window.wait_for_status(lambda text: text.startswith("Waiting for approval."))
        self._window.button("Open Public Pairing Page").take_focus()
        self._picture(CODE_SHOWN, f"Link code {code} shown")

    def approve(self):
        self._window.press("Open Public Pairing Page")
        PageVisitor().decide(self._desktop.opened.next(), "approve")
        self._window.wait_for_status("Loaded 2 Tarnwick project(s).")
        self._picture(LINKED, "Approved on the pairing page: linked, 2 projects listed")

    def create(self):
        self._window.open_tab("Create GDPS")
        fill_form(self._window)
        self._window.press("Create GDPS")
        self._window.open_tab("Your GDPS List")
        self._window.wait_for_status("Loaded 3 Tarnwick project(s).")
        self._window.wait_for_projects("Neon Burst", "Cube Garden", GDPS["GDPS Name"])
        self._window.button("Open Selected Project").take_focus()
        self._picture(CREATED, f"Created {GDPS['GDPS Name']}: 3 projects listed")

    def _picture(self, name, step):
        if self._pictures is not None:
            picture = wait_for_stillness(self._desktop, self._window.status)
            part(picture, self._window.frame.extents()).save(os.path.join(self._pictures, name))
        self._say(f"{step} ({name})")
