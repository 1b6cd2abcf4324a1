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
from harness.waiting import wait_until
from harness.walk_steps import CODE_SHOWN, CREATED, FIRST_START, LINKED, Walk, fill_form
from harness.window_size import resize_window

DEVICE = "twqt-1f3a9c42d7e5"
LIST_SIZE = (1220, 1080)
FORM_SIZE = (1220, 1300)
CREATE_FORM = "create-form.png"
PAIRING_PAGE = "pairing-page.png"


class Pictures(Scenario):
    width, height = FORM_SIZE
    needs_browser = True

    def test_the_pictures_of_the_documentation_are_up_to_date(self):
        self.book = PictureBook(os.path.join(REPOSITORY, "docs", "pictures"))
        self.folder = self.desktop.path("pictures")
        os.mkdir(self.folder)
        self.client.write_state(origin=self.service.address, device_id=DEVICE)
        Walk(self.desktop, self.client, PageVisitor(), self.folder, size=LIST_SIZE).all_steps()
        self.window = self.client.window

        url, code, status = (self.window.field("Tarnwick URL").extents(), self.window.field("Link code").extents(),
                             self.window.status_label().extents())
        self.keep("first-start.png", [url], FIRST_START)
        self.keep("code-shown.png", [url, code, status], CODE_SHOWN)
        self.keep("linked.png", [url, code], LINKED)
        self.keep("created.png", [url, code], CREATED)
        self.picture_the_form([url, code])
        self.picture_the_pairing_page()

    def picture_the_form(self, changing_places):
        self.window.open_tab("Create GDPS")
        resize_window(self.desktop, *FORM_SIZE)
        fill_form(self.window)
        self.window.button("Create GDPS").take_focus()
        wait_until(lambda: self.window.focused().name == "Create GDPS", "the focus on the form's button")
        picture = wait_for_stillness(self.desktop, self.window.status)
        picture.save(os.path.join(self.folder, CREATE_FORM), FORM_SIZE)
        self.keep(CREATE_FORM, changing_places)

    def picture_the_pairing_page(self):
        used = self.window.field("Link code").text()
        self.window.press("Generate Link Code")
        wait_until(lambda: self.window.field("Link code").text() != used, "a new link code")
        self.window.press("Open Public Pairing Page")
        self.browser.open(self.desktop.opened.next())
        self.assertIn(DEVICE, self.browser.content())
        self.browser.save_picture(os.path.join(self.folder, PAIRING_PAGE))
        self.keep(PAIRING_PAGE, [self.browser.place("//input[@id='code']"), self.browser.place("//dd[last()]")])

    def keep(self, name, changing_places, source=None):
        if self.book.keep(os.path.join(self.folder, source or name), name, changing_places):
            print(f"docs/pictures/{name} is new.")


if __name__ == "__main__":
    unittest.main()
