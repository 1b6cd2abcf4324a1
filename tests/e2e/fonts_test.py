"""The fonts in which the desktop's programs write: the pinned ones, and no other."""

import re
import subprocess
import unittest
import unittest.mock

from harness import fonts
from harness.scenario import Scenario
from harness.screen import wait_for_stillness
from harness.shown_text import shown_controls, shown_texts
from harness.window_size import resize_window

# It is blue, as nothing else in the window is.
EMOJI = "💙"

# A font's file name as it ends.
FONT = re.compile(r"/.+\.(?:ttf|ttc|otf|pfb)$", re.MULTILINE)


class Fonts(Scenario):
    width, height = 1220, 1300

    def test_the_client_uses_the_pinned_files_only(self):
        window = self.start_unlinked()
        with open(f"/proc/{window.application.get_process_id()}/maps", encoding="utf-8") as memory:
            used = set(FONT.findall(memory.read()))
        self.assertEqual(used, {fonts.TEXT_FILE, fonts.BOLD_FILE, fonts.EMOJI_FILE})

    def test_texts_are_written_in_the_text_family(self):
        for wanted in ("sans-serif", "monospace", "Helvetica Neue", "A Family That Nobody Has"):
            self.assertEqual(self.match(wanted), fonts.TEXT_FAMILY)
        window = self.start_unlinked()
        screenshot = wait_for_stillness(self.desktop, window.status)
        controls, _ = shown_controls(window)
        texts = shown_texts(controls)
        self.assertGreater(len(texts), 20)
        # Another family's letters are not as wide.
        self.assertEqual([text for text in texts if text.fault(screenshot, 1)], [])

    def test_an_emoji_comes_from_the_emoji_family_in_its_colours(self):
        self.assertEqual(self.match(f":charset={ord(EMOJI):x}"), fonts.EMOJI_FAMILY)
        self.assertEqual(self.blue_pixels(""), 0)
        self.assertGreater(self.blue_pixels(EMOJI), 50)

    def test_without_the_emoji_family_an_emoji_has_no_colours(self):
        files = fonts.TEXT_FILE, fonts.BOLD_FILE
        configuration = fonts.write_font_configuration(self.desktop.path("no-emoji"), files)
        with unittest.mock.patch.dict(self.desktop.environment, FONTCONFIG_FILE=configuration):
            self.assertEqual(self.blue_pixels(EMOJI), 0)

    def match(self, wanted):
        """The family that the desktop's programs get when they ask for one."""
        return subprocess.run(["fc-match", "--format=%{family}", wanted], env=self.desktop.environment, check=True,
                              timeout=30, capture_output=True, text=True).stdout

    def blue_pixels(self, emoji):
        """How many pixels of the form's field for an emoji are blue when it holds that text."""
        window = self.client.window or self.open_form()
        field = window.field("Emoji")
        field.set_text(emoji)
        colours = wait_for_stillness(self.desktop, window.status).part(field.extents())
        return sum(colours[at + 2] > colours[at] + 60 for at in range(0, len(colours), 3))

    def open_form(self):
        window = self.start_unlinked()
        resize_window(self.desktop, self.width, self.height)
        window.open_tab("Create GDPS")
        # A text cursor would blink.
        window.button("Generate Link Code").take_focus()
        return window


if __name__ == "__main__":
    unittest.main()
