"""Makes the pictures of the documentation, from a real first use, and keeps those that look different now.

A change of looks therefore shows up as a changed file under docs/pictures.
"""

import os
import unittest

from harness.client_process import REPOSITORY
from harness.page_visitor import PageVisitor
from harness.picture_book import PictureBook
from harness.scenario import Scenario
from harness.screen import wait_for_stillness
from harness.text_width import text_width
from harness.waiting import wait_until
from harness.walk_steps import CODE_SHOWN, CREATED, FIRST_START, LINKED, Walk, fill_form
from harness.window_size import resize_window

DEVICE = "twqt-1f3a9c42d7e5"
LIST_SIZE = (1220, 1080)
FORM_SIZE = (1220, 1300)
# How much of a picture may be left out of the comparison.
MOST_LEFT_OUT = 0.01

CREATE_FORM = "create-form.png"
PAIRING_PAGE = "pairing-page.png"

# In pixels: the letters, their line, and the field's border and padding left of them.
FONT_SIZE, LINE_HEIGHT, FIELD_BORDER = 14, 18, 15
# What is the same in all codes, and the widest rest; the letter after the dash may reach over it.
CODE_START, WIDEST_REST = "TWPC", "-WWWWWW"
PICTURED_CODE = "TWPC-K7M4QX"


class Pictures(Scenario):
    width, height = FORM_SIZE
    needs_browser = True

    def test_the_pictures_of_the_documentation_are_up_to_date(self):
        self.book = PictureBook(os.path.join(REPOSITORY, "docs", "pictures"))
        self.kept = []
        self.folder = self.desktop.path("pictures")
        os.mkdir(self.folder)
        self.client.write_state(origin=self.service.address, device_id=DEVICE)
        Walk(self.desktop, self.client, PageVisitor(), self.folder, size=LIST_SIZE).all_steps()
        self.window = self.client.window

        port, code = self.port_place(), self.code_place()
        self.keep(FIRST_START, "first-start.png", [port])
        self.keep(CODE_SHOWN, "code-shown.png", [port, code, self.sentence_place()])
        self.keep(LINKED, "linked.png", [port, code])
        self.keep(CREATED, "created.png", [port, code])
        self.picture_the_form([port, code])
        self.picture_the_pairing_page()
        pictures = [name for name in os.listdir(self.book.folder) if name.endswith(".png")]
        self.assertEqual(sorted(pictures), sorted(self.kept))

    def port_place(self):
        return ink_place(self.window.field("Tarnwick URL").extents(), FIELD_BORDER, "http://127.0.0.1:", "00000")

    def code_place(self):
        return ink_place(self.window.field("Link code").extents(), FIELD_BORDER, CODE_START, WIDEST_REST)

    def sentence_place(self):
        return ink_place(self.window.status_label().extents(), 0, f"Waiting for approval. Code {CODE_START}",
                         f"{WIDEST_REST} is good for another 9 minutes 59 seconds.")

    def picture_the_form(self, changing_places):
        self.window.open_tab("Create GDPS")
        resize_window(self.desktop, *FORM_SIZE)
        fill_form(self.window)
        self.window.button("Create GDPS").take_focus()
        wait_until(lambda: self.window.focused().name == "Create GDPS", "the focus on the form's button")
        picture = wait_for_stillness(self.desktop, self.window.status)
        picture.save(os.path.join(self.folder, CREATE_FORM), FORM_SIZE)
        self.keep(CREATE_FORM, CREATE_FORM, changing_places)

    def picture_the_pairing_page(self):
        """With a code that is always the same and has all its time left, so that the whole page can be compared."""
        used = self.window.field("Link code").text()
        self.window.press("Generate Link Code")
        wait_until(lambda: self.window.field("Link code").text() != used, "a new link code")
        code = self.window.field("Link code").text()

        def open_page_at_once():
            self.service.make_new_again(code, PICTURED_CODE)
            self.browser.open(f"{self.service.address}/link/pc?code={PICTURED_CODE}")
            return "10 minutes" in self.browser.content().splitlines()

        wait_until(open_page_at_once, "a page with a new code")
        self.assertEqual(self.browser.value("Link code"), PICTURED_CODE)
        self.assertIn(DEVICE, self.browser.content())
        self.browser.save_picture(os.path.join(self.folder, PAIRING_PAGE))
        self.keep(PAIRING_PAGE, PAIRING_PAGE)

    def keep(self, picture, name, changing_places=()):
        self.kept.append(name)
        left_out = sum(width * height for _, _, width, height in changing_places)
        self.assertLess(left_out, MOST_LEFT_OUT * LIST_SIZE[0] * LIST_SIZE[1])
        if self.book.keep(os.path.join(self.folder, picture), name, changing_places):
            print(f"docs/pictures/{name} is new.")


def ink_place(box, border, known, changing):
    """Where, in a box with a line of text, what follows the known part of the text is drawn."""
    left, top, width, height = box
    start = left + border + round(text_width(known, FONT_SIZE)) + 1
    room = round(text_width(changing, FONT_SIZE)) + 4
    return start, top + (height - LINE_HEIGHT) // 2, min(room, left + width - start), LINE_HEIGHT


if __name__ == "__main__":
    unittest.main()
