"""Makes the pictures in the documents again by a real first use. A picture that has changed fails the test and is saved
in TARNWICK_E2E_RESULTS; to accept it, copy it to docs/pictures.
"""

import os
import pathlib
import platform
import re
import sys
import unittest

from harness.client_process import REPOSITORY
from harness.scenario import Scenario
from harness.screen import part, text_width, wait_for_stillness
from harness.virtual_desktop import TEXT_FONT
from harness.waiting import wait_until
from harness.walk_steps import CODE_SHOWN, CREATED, FIRST_START, LINKED, Walk, fill_form
from PIL import Image, ImageChops

DOCS = pathlib.Path(REPOSITORY, "docs")
KEPT = DOCS / "pictures"
CHANGED = pathlib.Path(os.environ.get("TARNWICK_E2E_RESULTS", ".")) / "changed-pictures"

# Other versions of Qt and of the browser draw differently.
DRAWN_ON = "Debian GNU/Linux 12 (bookworm)"
SKIPPED = 77  # the exit code that CTest treats as skipped

DEVICE = "twqt-1f3a9c42d7e5"
LIST_SIZE = (1220, 1080)
FORM_SIZE = (1220, 1300)
# Two per cent of each colour channel: a smaller difference is invisible.
SAME_COLOUR = 5

# In pixels: the font, its lines, and the field's border and padding on the left.
FONT_SIZE, LINE_HEIGHT, FIELD_BORDER = 14, 18, 15
# The constant part of all codes, and the widest rest, which may overlap the letter after the dash.
CODE_START, WIDEST_REST = "TWPC", "-WWWWWW"
PICTURED_CODE = "TWPC-K7M4QX"


class Pictures(Scenario):
    width, height = FORM_SIZE
    needs_browser = True

    def test_the_pictures_of_the_documentation_show_the_client_as_it_looks(self):
        for file in CHANGED.glob("*.png"):
            file.unlink()
        made = self.make_pictures()
        self.assertEqual(sorted(made), sorted(file.name for file in KEPT.glob("*.png")))
        port, code, sentence = self.changing_places()
        changing = {"first-start.png": [port], "code-shown.png": [port, code, sentence], "pairing-page.png": []}
        different = []
        for name, picture in made.items():
            if look_different(Image.open(KEPT / name).convert("RGB"), picture, changing.get(name, [port, code])):
                different.append(name)
                CHANGED.mkdir(exist_ok=True)
                picture.save(CHANGED / name)
        self.assertEqual(different, [], f"Look at them; then accept them: cp {CHANGED}/*.png docs/pictures/")

    def make_pictures(self):
        folder = pathlib.Path(self.desktop.path("pictures"))
        folder.mkdir()
        self.client.write_state(origin=self.service.address, device_id=DEVICE)
        Walk(self.desktop, self.client, folder, size=LIST_SIZE).all_steps()
        self.window = self.client.window
        self.picture_the_form(folder / "create-form.png")
        self.picture_the_pairing_page(folder / "pairing-page.png")
        stations = (FIRST_START, CODE_SHOWN, LINKED, CREATED)
        names = {name: re.sub("^[0-9]-", "", name) for name in (*stations, "create-form.png", "pairing-page.png")}
        return {names[file.name]: Image.open(file).convert("RGB") for file in folder.iterdir()}

    def changing_places(self):
        """What differs in every run: link codes are random, and a local service uses any free port."""
        fields = (self.window.field("Tarnwick URL").extents(), self.window.field("Link code").extents())
        waiting = f"Waiting for approval. Code {CODE_START}", f"{WIDEST_REST} is good for another 9 minutes 59 seconds."
        return (
            ink_place(fields[0], FIELD_BORDER, "http://127.0.0.1:", "00000"),
            ink_place(fields[1], FIELD_BORDER, CODE_START, WIDEST_REST),
            ink_place(self.window.status_label.extents(), 0, *waiting),
        )

    def picture_the_form(self, path):
        self.window.open_tab("Create GDPS")
        self.desktop.resize_window(*FORM_SIZE)
        fill_form(self.window)
        self.window.button("Create GDPS").take_focus()
        wait_until(lambda: self.window.focused().name == "Create GDPS", "the focus on the form's button")
        wait_for_stillness(self.desktop, self.window.status).save(path)

    def picture_the_pairing_page(self, path):
        """With a fixed code that has just been made, so that the whole page can be compared."""
        used = self.window.field("Link code").text()
        self.window.press("Generate Link Code")
        wait_until(lambda: self.window.link_code() != used, "a new link code")
        code = self.window.link_code()

        def open_page_at_once():
            self.service.make_new_again(code, PICTURED_CODE)
            self.browser.open(f"{self.service.address}/link/pc?code={PICTURED_CODE}")
            return "10 minutes" in self.browser.content().splitlines()

        wait_until(open_page_at_once, "a page with a new code")
        self.browser.save_picture(path)


class Comparison(unittest.TestCase):
    def test_what_can_be_seen_makes_a_difference_unless_it_changes_anyway(self):
        kept = Image.open(KEPT / "linked.png").convert("RGB")
        sentence = 39, 195, 210, 17
        moved = kept.copy()
        moved.paste(part(kept, sentence), (sentence[0] + 2, sentence[1]))
        self.assertFalse(look_different(kept, kept))
        self.assertFalse(look_different(kept, kept.point(lambda value: min(value + SAME_COLOUR, 255))))
        self.assertTrue(look_different(kept, kept.point(lambda value: min(value + SAME_COLOUR + 1, 255))))
        self.assertTrue(look_different(kept, moved))
        self.assertFalse(look_different(kept, moved, [(39, 195, 212, 17)]))
        self.assertTrue(look_different(kept, moved, [(39, 195, 106, 17)]))
        self.assertTrue(look_different(kept, kept.crop((0, 0, 1220, 1000))))

    def test_each_picture_is_shown_in_a_document_and_each_that_is_shown_exists(self):
        pages = [page.read_text("utf-8") for page in (*DOCS.glob("*.md"), *DOCS.parent.glob("*.md"))]
        shown = {name for page in pages for name in re.findall(r"!\[[^]]+\]\((?:docs/)?pictures/([^)]+)\)", page)}
        self.assertEqual(shown, {file.name for file in KEPT.iterdir()})


def look_different(kept, made, changing_places=()):
    """Whether any pixel outside the changing places has another colour."""
    if kept.size != made.size:
        return True
    kept = kept.copy()
    for box in changing_places:
        kept.paste(part(made, box), box[:2])
    return any(most > SAME_COLOUR for _least, most in ImageChops.difference(kept, made).getextrema())


def ink_place(box, border, known, changing):
    """In a box with a line of text: the place of the text after its known part."""
    left, top, width, height = box
    start = left + border + round(text_width(known, TEXT_FONT, FONT_SIZE)) + 1
    room = round(text_width(changing, TEXT_FONT, FONT_SIZE)) + 4
    return start, top + (height - LINE_HEIGHT) // 2, min(room, left + width - start), LINE_HEIGHT


if __name__ == "__main__":
    if (system := platform.freedesktop_os_release()["PRETTY_NAME"]) != DRAWN_ON:
        print(f"SKIPPED: pictures_test: the pictures were drawn on {DRAWN_ON}, this is {system}")
        sys.exit(SKIPPED)
    unittest.main()
