"""Moves through a window with the keyboard and keeps track of the focus."""

from harness.control import Atspi, Control, unless_gone
from harness.waiting import wait_until

# More than any page has; after so many, the focus is going round in circles.
_MOST_STOPS = 30


class FocusWalker:
    def __init__(self, window, desktop):
        self._window = window
        self._desktop = desktop
        self._latest = None
        self._listener = Atspi.EventListener.new(self._take_note)
        self._listener.register("object:state-changed:focused")

    def control(self):
        """The control that has the focus."""
        return wait_until(self._focused, "a control with the focus")

    def here(self):
        """Its role and title."""
        return wait_until(self._place, "a control with the focus")

    def move(self, key="Tab"):
        """Presses the key, waits until the focus is somewhere else, and returns where."""
        before = self.here()
        self._desktop.press(key)
        return wait_until(lambda: self._elsewhere(before), f"the focus to leave {before} after {key}")

    def round_trip(self, key="Tab"):
        """The titles of all controls from here until the focus is back."""
        start = self.here()
        stops = [start]
        while len(stops) < _MOST_STOPS:
            stop = self.move(key)
            if stop == start:
                return [title for _role, title in stops]
            stops.append(stop)
        raise AssertionError(f"{key} does not lead back to {start}: {stops}")

    def go_to(self, title, key="Tab"):
        """Presses the key until the control with that title has the focus."""
        passed = [self.here()]
        while passed[-1][1] != title:
            if len(passed) > _MOST_STOPS:
                raise AssertionError(f"{key} does not lead to '{title}': {passed}")
            passed.append(self.move(key))

    def switch_page(self, key, title):
        """Presses an arrow key on the tabs, and waits until the page with that title is the current one."""
        self._desktop.press(key)
        wait_until(lambda: self._place() == ("page tab list", title), f"the page '{title}' after {key}")

    def _place(self):
        control = self._focused()
        return control.role, control.title()

    def _elsewhere(self, before):
        here = self._announced()
        place = here and (here.role, here.title())
        return place if place != before else None

    def _focused(self):
        # Asking the control that was announced last is much faster than asking every control of the window.
        return self._announced() or self._window.focused()

    def _announced(self):
        """The last control that was announced as focused, if it still has the focus."""
        latest = self._latest
        return latest if latest is not None and unless_gone(latest.focused, False) else None

    def _take_note(self, event):
        if event.detail1:
            self._latest = Control(event.source)
