"""The client's window, read and used through the accessibility bus."""

from harness.accessibility import application_of, unless_gone
from harness.control import Control
from harness.waiting import NotThere, wait_until

# The current tab and the current cell always claim the focus, and so does the tabs' box instead of its tab bar.
_FALSE_CLAIMS = ("page tab", "table cell", "filler")


def takes_focus(control):
    """Whether the keyboard talks to this control."""
    return control.role not in _FALSE_CLAIMS and control.focused()


class ClientWindow:
    """Controls are found by role and name, as their user tells them apart."""

    def __init__(self, pid, limit=20.0):
        self.application = wait_until(lambda: application_of(pid), "the client on the accessibility bus", limit)
        self.frame = wait_until(self._shown_frame, "the client's window", limit)
        wait_until(lambda: "active" in self.frame.states(), "the client's window in front", limit)
        self._status_label = wait_until(self._find_status_label, "the status card", limit)

    def status(self):
        """The sentence in the status card."""
        return self._status_label.name

    def status_label(self):
        return self._status_label

    def wait_for_status(self, expected, limit=15.0):
        """Waits for a status text: a text to match whole, or a function that judges one."""
        fits = expected if callable(expected) else lambda text: text == expected
        what = "a fitting status text" if callable(expected) else f"the status text '{expected}'"
        wait_until(lambda: fits(self.status()), what, limit)
        return self.status()

    def find(self, role, name):
        """The one control of that role and name."""
        return self._first(lambda control: control.role == role and control.name == name, f"no {role} named '{name}'")

    def button(self, name):
        return self.find("push button", name)

    def check_box(self, name):
        return self.find("check box", name)

    def field(self, label):
        """The control that a form label names."""
        fields = self.find("label", label).relation("label-for")
        if not fields:
            raise NotThere(f"no field labelled '{label}'")
        return fields[0]

    def tabs(self):
        return self._first(lambda control: control.role == "page tab list", "no tabs")

    def table(self):
        return self.find("table", "Tarnwick projects")

    def press(self, name):
        """Presses a button as soon as it may be pressed. The focus comes along, as it does under a mouse."""
        wait_until(lambda: self.button(name).enabled(), f"an enabled button '{name}'")
        self.button(name).take_focus()
        self.button(name).press()

    def wait_for_projects(self, *names):
        """Waits until the table lists just these projects, in this order."""
        wait_until(lambda: [row[0] for row in self.table().rows()] == list(names), f"the projects {names}")

    def focused(self):
        """The control that the keyboard talks to."""
        return self._first(takes_focus, "no control has the focus")

    def open_tab(self, name):
        self.find("page tab", name).press()

    def texts(self):
        """Every text that is shown on a label."""
        names = [unless_gone(lambda control=control: control.name if control.role == "label" else None)
                 for control in self.frame.descendants()]
        return [name for name in names if name is not None]

    def _first(self, fits, otherwise):
        for control in self.frame.descendants():
            if unless_gone(lambda control=control: fits(control), False):
                return control
        raise NotThere(otherwise)

    def _shown_frame(self):
        for index in range(self.application.get_child_count()):
            frame = Control(self.application.get_child_at_index(index))
            if frame.role == "frame" and "showing" in frame.states():
                return frame
        return None

    def _find_status_label(self):
        """The status card is the only card that holds one text and nothing else."""
        for control in self.frame.descendants():
            children = control.children() if control.role == "frame" else []
            if len(children) == 1 and children[0].role == "label":
                return children[0]
        raise NotThere("no status card")
