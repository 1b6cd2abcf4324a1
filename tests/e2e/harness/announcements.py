"""What a screen reader hears of a label that changes its text."""

from harness.accessibility import Atspi, unless_gone
from harness.control import Control
from harness.waiting import wait_until


class Announcements:
    """Collects the change events of one label. An event says only that the text is new; the text is then asked for,
    so of two changes in a row both may be heard with the later text.
    """

    def __init__(self, label):
        self._path = label.accessible.path
        self._heard = []
        self._listener = Atspi.EventListener.new(self._take_note)
        self._listener.register("object:property-change:accessible-name")
        # When the program has answered once more, it knows that somebody listens.
        label.states()

    def next(self):
        """Waits for the next change, and returns the text that was heard with it."""
        wait_until(lambda: self._heard, "an announcement")
        return self._heard.pop(0)

    def _take_note(self, event):
        if unless_gone(lambda: event.source.path) == self._path:
            self._heard.append(unless_gone(lambda: Control(event.source).name, "a label that is gone"))
