"""What a screen reader hears of a label that changes its text."""

from harness.accessibility import Atspi
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

    def take(self, count):
        """Waits for that many changes, and returns the texts that were heard with them."""
        wait_until(lambda: len(self._heard) >= count, f"{count} announcements; so far {self._heard}")
        heard, self._heard = self._heard[:count], self._heard[count:]
        return heard

    def rest(self):
        """What has been heard and was not taken."""
        return list(self._heard)

    def _take_note(self, event):
        if event.source.path == self._path:
            self._heard.append(Control(event.source).name)
