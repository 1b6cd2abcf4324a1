"""The client's window, read and used through the accessibility bus."""

from harness.control import Atspi, Control, unless_gone
from harness.waiting import NotThere, wait_until

# The role of a card depends on the version of Qt.
_CARDS = ("frame", "panel")


class ClientWindow:
    """Finds controls by role and name, as a user distinguishes them."""

    def __init__(self, pid, limit=20.0):
        self.frame = wait_until(lambda: _window_of(pid), "the client's window on the accessibility bus", limit)
        wait_until(lambda: "active" in self.frame.states(), "the client's window in front", limit)
        self.status_label = wait_until(self._find_status_label, "the status card", limit)
        self.last_status = None
        self.status()

    def status(self):
        """The text in the status card."""
        text = self.status_label.name
        # A program that is about to end has no texts any more.
        self.last_status = text or self.last_status
        return text

    def wait_for_status(self, expected, limit=15.0):
        """Waits for a status text: a complete text, or a function that checks it."""
        fits = expected if callable(expected) else lambda text: text == expected
        what = "a fitting status text" if callable(expected) else f"the status text '{expected}'"
        wait_until(lambda: fits(self.status()), what, limit)

    def find(self, role, name):
        """The only control with that role and name."""
        return self._first(lambda control: control.role == role and control.name == name, f"no {role} named '{name}'")

    def button(self, name):
        return self.find("push button", name)

    def field(self, label):
        """The control of a form label."""
        fields = self.find("label", label).relation("label-for")
        if not fields:
            raise NotThere(f"no field labelled '{label}'")
        return fields[0]

    def tabs(self):
        return self._first(lambda control: control.role == "page tab list", "no tabs")

    def table(self):
        return self.find("table", "Tarnwick projects")

    def press(self, name):
        """Presses a button as soon as it is enabled. It also gets the focus, as with a mouse."""
        wait_until(lambda: self.button(name).enabled(), f"an enabled button '{name}'")
        self.button(name).take_focus()
        self.button(name).do("Press")

    def link_code(self):
        """Waits for a link code in its field."""
        return wait_until(lambda: self.field("Link code").text(), "a link code")

    def wait_for_projects(self, *names):
        """Waits until the table lists exactly these projects, in this order."""
        wait_until(lambda: [row[0] for row in self.table().rows()] == list(names), f"the projects {names}")

    def focused(self):
        """The control with the keyboard focus."""
        return self._first(Control.focused, "no control has the focus")

    def open_tab(self, name):
        self.find("page tab", name).do("Press")
        wait_until(lambda: self.tabs().name == name, f"the page '{name}'")

    def texts(self):
        """The texts of all labels."""
        names = [
            unless_gone(lambda control=control: control.name if control.role == "label" else None)
            for control in self.frame.descendants()
        ]
        return [name for name in names if name is not None]

    def _first(self, fits, otherwise):
        for control in self.frame.descendants():
            if unless_gone(lambda control=control: fits(control), False):
                return control
        raise NotThere(otherwise)

    def _find_status_label(self):
        """The status card is the only card with nothing but one label in it."""
        for control in self.frame.descendants():
            children = control.children() if control.role in _CARDS else []
            if len(children) == 1 and children[0].role == "label":
                return children[0]
        raise NotThere("no status card")


def _window_of(pid):
    """The visible window of a process; None if there is none."""
    desktop = Control(Atspi.get_desktop(0))
    for application in desktop.children():
        if unless_gone(application.accessible.get_process_id) == pid:
            for window in application.children():
                if window.role == "frame" and "showing" in window.states():
                    return window
    return None
